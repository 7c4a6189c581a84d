#!/usr/bin/env python3
"""Which alarms have been, as `sorvaned alarms` tells it, and how a script acknowledges them.

    sorvaned_alarms_test.py PATH_OF_KALVEX_RUN PATH_OF_SORVANED [unittest arguments]
"""
import json
import signal
import subprocess
import time

from server_and_run import LIMIT_SECONDS, PASSWORD, ServerAndRun, main

PLANT = """[[access]]
write = "0"
acknowledge = "0"
[[variable]]
name = "Z1.P"
value = 0
h = 10
hh = 20
[[variable]]
name = "Łąka"
type = "int"
value = 0
l = 0
"""
SUPERVISORY = 32768  # of what scripts write
SCRIPT = ["REMOTE x srv@Z1.P", "REMOTE l srv@Łąka", "LOCAL u = x", "LOCAL w = l"]


ALARMED = ["LOCAL s = 0", "SET x = 12.5", "SET l = -1"]


class Alarms(ServerAndRun):
    def setUp(self):
        super().setUp()
        self.configure(PLANT)
        self.begin = int(time.time())
        self.server = self.start_server()

    def call(self, *arguments, stdin=""):
        done = subprocess.run([self.SERVER, "--config", self.configuration, *arguments], input=stdin,
                              capture_output=True, encoding="utf-8", timeout=LIMIT_SECONDS, cwd=self.folder,
                              env=self.environment)
        return done.returncode, done.stdout, done.stderr

    def alarms(self, *arguments):
        return self.call("alarms", *arguments)

    def rows(self, *arguments):
        code, out, err = self.alarms(*arguments, "--json")
        self.assertEqual((code, err), (0, ""))
        return [json.loads(line) for line in out.splitlines()]

    def run_lines(self, *lines):
        run = self.run_script("\n".join([*SCRIPT, *lines, ""]))
        self.assertEqual(run.code, 0, run.log)

    def await_rows(self, count, acknowledged=False):
        """The store has them within a second or so."""
        while [row["acknowledged"] is not None for row in self.rows()] != [acknowledged] * count:
            pass

    def await_status(self, bits):
        """Lines that wait for what only the server gives x."""
        status = SUPERVISORY + bits
        label = f"s{status}"
        return [f":{label}", "SET s = STATUS x", f"IF s < {status} GOTO {label}", f"IF s > {status} GOTO {label}"]

    def end_server(self):
        self.server.send(signal.SIGTERM)
        self.assertEqual(self.server.process.wait(), 0)

    def test_journal_of_a_server_that_runs(self):
        self.run_lines("LOCAL s = 0", "SET x = 12.5", "SET l = -1", "SET x = 25", "SET x = 3",
                       *self.await_status(16384))
        self.end_server()
        self.server = self.start_server()
        rows = self.rows()
        self.assertEqual([(row["variable"], row["stage"], row["value"], row["ended"] is None) for row in rows],
                         [("Z1.P", "H", 12.5, False), ("Łąka", "L", -1, True), ("Z1.P", "HH", 25, False)])
        self.assertEqual([(row["acknowledged"], row["who"]) for row in rows], [(None, None)] * 3)
        for row in rows:
            self.assertLessEqual(self.begin, row["began"])
        self.assertEqual([row["stage"] for row in self.rows("Z?.*")], ["H", "HH"])
        self.assertEqual(self.rows("--from", "2124-03-10 07:00:00"), [])
        self.assertEqual(self.rows("--to", "2024-03-10 07:00:00"), [])
        self.assertEqual(len(self.rows("--from", "2024-03-10 07:00:00", "--to", "2124-03-10 07:00:00")), 3)

    def test_script_acknowledges_by_the_status(self):
        self.run_lines("LOCAL s = 0", "SET x = 12.5", *self.await_status(16388), "ADD_STATUS x CONFIRMED_ALARM",
                       *self.await_status(12))
        self.end_server()
        code, out, err = self.alarms("--active")
        self.assertEqual((code, err), (0, ""))
        fields = out.rstrip("\n").split("\t")
        self.assertEqual([*fields[:2], fields[3], fields[4], *fields[6:]],
                         ["Z1.P", "H", "12.50", "-", "NOBODY", "Kalvex", "-"])
        for moment in (fields[2], fields[5]):
            self.assertLessEqual(self.begin, time.mktime(time.strptime(moment, "%Y-%m-%d %H:%M:%S")))

    def test_command_acknowledges_by_name(self):
        self.run_lines(*ALARMED, *self.await_status(16388))
        self.assertEqual(self.call("acknowledge", "Łąka"), (0, "Łąka\n", ""))
        self.assertEqual(self.call("values", "Łąka")[1].split("\t")[2], "ALARM CONFIRMED_ALARM SUPERVISORY")
        # What is acknowledged already may be so again.
        self.assertEqual(self.call("acknowledge", "Łąka", "--json"), (0, '{"variable":"Łąka"}\n', ""))
        self.end_server()
        self.assertEqual([(row["variable"], row["who"]) for row in self.rows()],
                         [("Z1.P", None), ("Łąka", {"user": "NOBODY", "client": "sorvaned acknowledge",
                                                    "address": ""})])

    def test_command_acknowledges_by_pattern_what_is_not_acknowledged(self):
        self.run_lines(*ALARMED, *self.await_status(16388))
        self.await_rows(2)
        self.assertEqual(self.call("acknowledge", "BRAK*"), (0, "", ""))
        self.assertEqual(self.call("acknowledge", "*", "?1.P"), (0, "Z1.P\nŁąka\n", ""))
        self.await_rows(2, acknowledged=True)
        self.assertEqual(self.call("acknowledge", "*"), (0, "", ""))

    def test_acknowledgement_that_is_refused_is_told(self):
        self.run_lines(*ALARMED)
        missing = "alarmy niepotwierdzone (brak zmiennej albo danych)\n"
        self.assertEqual(self.call("acknowledge", "BRAK", "Z1.P"), (1, "Z1.P\n", f"BRAK: {missing}"))
        self.assertEqual(self.call("acknowledge", "Z1.P", "--user", "adam", stdin="x\n"),
                         (1, "", "Serwer srv odmawia zalogowania (brak uprawnień)\n"))
        self.end_server()
        fault = f"Serwer srv jest nieosiągalny: nie ma gniazda {self.folder}/run/srv (czy serwer jest uruchomiony?)\n"
        self.assertEqual(self.call("acknowledge", "Z1.P"), (1, "", fault))
        (self.folder / "data/store.sqlite").unlink()
        self.assertEqual(self.call("acknowledge", "Z*"),
                         (1, "", f"{self.folder}/data/store.sqlite: unable to open database file\n"))

    def test_right_to_acknowledge_is_a_users(self):
        self.end_server()
        self.configure(PLANT.replace('acknowledge = "0"', 'acknowledge = "50"'))
        self.add_user("adam", 50)
        self.server = self.start_server()
        self.run_lines(*ALARMED)
        self.assertEqual(self.call("acknowledge", "Z1.P"), (1, "", "Z1.P: alarmy niepotwierdzone (brak dostępu)\n"))
        self.assertEqual(self.call("acknowledge", "Z1.P", "--user", "adam", stdin=PASSWORD + "\n"), (0, "Z1.P\n", ""))

    def test_what_cannot_be_told(self):
        self.assertEqual(self.alarms("--from", "wczoraj"),
                         (2, "", "sorvaned: --from: expected YYYY-MM-DD HH:MM:SS\n"))
        self.assertEqual(self.alarms("--to", "jutro"), (2, "", "sorvaned: --to: expected YYYY-MM-DD HH:MM:SS\n"))
        self.assertEqual(self.alarms("BRAK*"), (0, "", ""))
        (self.folder / "data/store.sqlite").unlink()
        self.assertEqual(self.alarms(), (1, "", f"{self.folder}/data/store.sqlite: unable to open database file\n"))


if __name__ == "__main__":
    main()
