#!/usr/bin/env python3
"""Who wrote a value, as `sorvaned history` tells it of a server that runs.

    sorvaned_history_test.py PATH_OF_KALVEX_RUN PATH_OF_SORVANED [unittest arguments]
"""
import json
import signal
import subprocess

from server_and_run import LIMIT_SECONDS, ServerAndRun, main

PLANT = """[reports]
day-start = 6
[[access]]
write = "0"
[[variable]]
name = "X"
at = 32
rt = 14
[[variable]]
name = "Łąka"
type = "text"
"""
SIX, SEVEN, DAY = 1710046800, 1710050400, 1709938800  # 2024-03-10 6:00 and 7:00, 2024-03-09


class History(ServerAndRun):
    def setUp(self):
        super().setUp()
        self.configure(PLANT)

    def history(self, *arguments):
        done = subprocess.run([self.SERVER, "--config", self.configuration, "history", *arguments],
                              capture_output=True, encoding="utf-8", timeout=LIMIT_SECONDS, cwd=self.folder,
                              env=self.environment | {"TZ": "Europe/Warsaw"})
        return done.returncode, done.stdout, done.stderr

    def lines(self, *arguments):
        """The fields of each line, but for the moment of writing."""
        code, out, err = self.history(*arguments)
        self.assertEqual((code, err), (0, ""))
        rows = [line.split("\t") for line in out.splitlines()]
        return [row[:2] + row[3:] for row in rows]

    def write(self, *lines):
        """By a client that comes and goes, at a server that comes and goes, too."""
        server = self.start_server()
        run = self.run_script("\n".join(['REMOTE x srv@X', 'REMOTE l srv@Łąka', "LOCAL u = x.UNIT", *lines, ""]))
        self.assertEqual(run.code, 0, run.log)
        server.send(signal.SIGTERM)
        self.assertEqual(server.process.wait(), 0)

    def test_corrected_hour_tells_its_versions(self):
        for value in ("41.5", "42.25"):
            self.write(f"PUT x HREP 2024 3 10 6 {value}", "GET x HREP 2024 3 10 6", ":w", "IF NOT READY x.HREP GOTO w")
        standing = ["HREP", "2024-03-10 06:00:00", "NOBODY", "Kalvex", "-", "42.25", "SET_BY_USER SUPERVISORY"]
        before = [*standing[:5], "41.50", "SET_BY_USER SUPERVISORY"]
        self.assertEqual(self.lines("X", "--at", "2024-03-10 06:30:00"), [standing])
        self.assertEqual(self.lines("X", "--at", "2024-03-10 06:30:00", "--versions"), [standing, before])
        self.assertEqual(self.lines("X", "--at", "2024-03-10 07:00:00"), [])
        code, out, _ = self.history("X", "--at", "2024-03-10 06:00:00", "--versions", "--json")
        rows = [json.loads(line) for line in out.splitlines()]
        self.assertEqual([(row["kind"], row["time"], row["value"], row["status"]) for row in rows],
                         [("HREP", SIX, 42.25, 32800), ("HREP", SIX, 41.5, 32800)])
        self.assertEqual(rows[0]["writer"], {"user": "NOBODY", "client": "Kalvex", "address": ""})
        self.assertLessEqual(rows[1]["written"], rows[0]["written"])

    def test_current_value_tells_the_one_before(self):
        self.write('SET l = "zażółć"', "SET x = 7", ":w", "IF x < 7 GOTO w")
        self.write("SET x = 8.5", ":w", "IF x < 8 GOTO w")
        self.assertEqual([row[2:] for row in self.lines("Łąka")], [["NOBODY", "Kalvex", "-", '"zażółć"', "SUPERVISORY"]])
        self.assertEqual([row[2:] for row in self.lines("X", "--versions")],
                         [["NOBODY", "Kalvex", "-", number, "SUPERVISORY"] for number in ("8.50", "7.00")])

    def test_what_cannot_be_told(self):
        self.start_server()
        self.assertEqual(self.history("BRAK"), (1, "", "BRAK: nie ma takiej zmiennej\n"))
        self.assertEqual(self.history("X", "--at", "wczoraj"),
                         (2, "", "sorvaned: --at: expected YYYY-MM-DD HH:MM:SS\n"))
        (self.folder / "data/store.sqlite").unlink()
        self.assertEqual(self.history("X"), (1, "", f"{self.folder}/data/store.sqlite: unable to open database file\n"))


if __name__ == "__main__":
    main()
