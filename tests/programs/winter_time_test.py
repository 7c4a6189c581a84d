#!/usr/bin/env python3
"""Winter time against the rules of the time zone database, which the programs do not read: all zones, 1970 to 2037.

    winter_time_test.py PATH_OF_KALVEX_RUN [unittest arguments]
"""
import bisect
import calendar
import concurrent.futures
import datetime
import json
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

RUNNER = None
SOURCE = pathlib.Path("/usr/share/zoneinfo/tzdata.zi")
DAY = 86400
HALF_YEAR = 30 * 7 * DAY
FIRST = DAY // 2  # noon of GMT, so that an offset of whole minutes shows in the hour
STEP = 31 * DAY
COUNT = 800
TIME_LIMIT_SECONDS = 60

# Where what the clocks showed does not tell what the rules say.
EXCEPTIONS = {
    # A summer begins as the zone moves on by half an hour.
    "Pacific/Rarotonga": ("1978-11-12", "1979-03-04"),
    # The last winter saving ended as usual; that there was none any more was said a year later.
    "Africa/Windhoek": ("2017-09-03", "2018-04-08"),
}

SCRIPT = """PRIORITY 1
LIST W
LOCAL T = {first}
LOCAL N = 0
:w
ADD W T.WINTERHOUR
SET T = T + {step}
SET N = N + 1
IF N < {count} GOTO w
""".format(first=FIRST, step=STEP, count=COUNT)

MONTHS = [name.lower() for name in calendar.month_name]
WEEKDAYS = [name.lower() for name in calendar.day_name]


def by_beginning(names, text):
    return next(i for i, name in enumerate(names) if name and name.startswith(text.lower()))


def seconds(text):
    text = text.rstrip("wsugz")
    hours, minutes, rest = ([int(part or 0) for part in text.lstrip("-").split(":")] + [0, 0])[:3]
    return (hours * 3600 + minutes * 60 + rest) * (-1 if text.startswith("-") else 1)


def day_of(year, month, text):
    if text.isdigit():
        return datetime.date(year, month, int(text))
    if text.startswith("last"):
        weekday, day, step = text[4:], calendar.monthrange(year, month)[1], -1
    else:
        sign = ">=" if ">=" in text else "<="
        weekday, number = text.split(sign)
        day, step = int(number), 1 if sign == ">=" else -1
    date = datetime.date(year, month, day)
    while date.weekday() != by_beginning(WEEKDAYS, weekday):
        date += datetime.timedelta(step)
    return date


def instant(date, clock):
    return (date - datetime.date(1970, 1, 1)).days * DAY + clock


class Database:
    """Zone lines and rules. Instants are rough by the offset, so nothing is said within three days of a change."""

    def __init__(self, path):
        self.rules, self.zones = {}, {}
        zone = None
        for line in path.read_text(encoding="utf-8").splitlines():
            fields = line.split()
            if not fields or line.startswith("#") or fields[0] == "L":
                continue
            if fields[0] == "R":
                self.rules.setdefault(fields[1], []).append(fields[2:])
                continue
            if fields[0] == "Z":
                zone, fields = fields[1], fields[2:]
                self.zones[zone] = []
            self.zones[zone].append((self.end_of(fields), seconds(fields[0]), fields[1]))
        self.changes = {name: self.changes_by(rows) for name, rows in self.rules.items()}

    @staticmethod
    def end_of(fields):
        if len(fields) < 4:
            return float("inf")
        month = by_beginning(MONTHS, fields[4]) if len(fields) > 4 else 1
        date = day_of(int(fields[3]), month, fields[5] if len(fields) > 5 else "1")
        return instant(date, seconds(fields[6]) if len(fields) > 6 else 0)

    @staticmethod
    def changes_by(rows):
        changes = []
        for first, last, _, month, day, clock, save, *_ in rows:
            years = {"o": int(first)}.get(last[0]) or (2040 if last.startswith("ma") else int(last))
            for year in range(int(first), min(years, 2040) + 1):
                date = day_of(year, by_beginning(MONTHS, month), day)
                changes.append((instant(date, seconds(clock)), seconds(save)))
        return sorted(changes)

    def winter_offset(self, zone, time):
        """The offset without daylight saving, or with it where it is saved in winter; None near a change."""
        begin = float("-inf")
        for end, standard, rule in self.zones[zone]:
            if time < end:
                break
            begin = end
        if min(abs(end - time), abs(begin - time)) < 3 * DAY:
            return None
        if rule not in self.changes:
            return standard
        changes = [change for change in self.changes[rule] if begin <= change[0] < end]
        if any(abs(at - time) < 3 * DAY for at, _ in changes):
            return None
        here = bisect.bisect(changes, (time, 0))
        near = [save for at, save in changes if abs(at - time) < HALF_YEAR]
        in_force = [changes[here - 1][1]] if here > 0 else []
        return standard + min([0, *near, *in_force])


class WinterTime(unittest.TestCase):
    def hours(self, zone):
        environment = {**os.environ, "TZ": zone}
        done = subprocess.run(
            [RUNNER, "--json", "--minimised", "--clock", "2024-03-10 07:00:00", self.script],
            env=environment, capture_output=True, timeout=TIME_LIMIT_SECONDS, check=True,
        )
        variables = json.loads(done.stdout)["scripts"][0]["variables"]
        return zone, [element["value"] for element in variables[0]["elements"]]

    def test_all_zones(self):
        database = Database(SOURCE)
        wrong, compared = [], 0
        with tempfile.TemporaryDirectory(prefix="kalvex-") as folder:
            self.script = pathlib.Path(folder) / "zima.kx"
            self.script.write_bytes(SCRIPT.replace("\n", "\r\n").encode("cp1250"))
            zones = sorted(zone for zone in database.zones if zone != "Factory")
            with concurrent.futures.ThreadPoolExecutor(2) as pool:
                answers = list(pool.map(self.hours, zones))
        for zone, hours in answers:
            self.assertEqual(len(hours), COUNT, zone)
            exception = EXCEPTIONS.get(zone, ("", ""))
            for i, hour in enumerate(hours):
                time = FIRST + i * STEP
                date = datetime.datetime.fromtimestamp(time, datetime.timezone.utc).date().isoformat()
                offset = database.winter_offset(zone, time)
                if offset is None or exception[0] <= date <= exception[1]:
                    continue
                compared += 1
                if hour != (time + offset) // 3600 % 24:
                    wrong.append(f"{zone} {date}: {hour}, offset {offset}")
        self.assertEqual(wrong, [])
        self.assertGreater(compared, 200_000)


if __name__ == "__main__":
    RUNNER = sys.argv[1]
    if not SOURCE.exists():
        print(f"{SOURCE} is not there")
        sys.exit(77)
    unittest.main(argv=sys.argv[:1] + sys.argv[2:])
