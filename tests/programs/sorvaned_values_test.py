#!/usr/bin/env python3
"""What `sorvaned values` tells of a server that runs, once or as long as it is watched.

    sorvaned_values_test.py PATH_OF_KALVEX_RUN PATH_OF_SORVANED [unittest arguments]
"""
import json
import os
import pty
import re
import signal
import subprocess

from server_and_run import LIMIT_SECONDS, PASSWORD, die_with_the_test, main
from sorvaned_tools import ToolsTest

TIME = r"\d{4}-\d\d-\d\d \d\d:\d\d:\d\d"
HEARD = "Serwer srv odpowiada ({})"


class Watch:
    """`sorvaned values --watch` as it goes on."""

    def __init__(self, test, *arguments):
        self.process = subprocess.Popen(test.arguments_of("values", *arguments, "--watch"), env=test.environment,
                                        stdout=subprocess.PIPE, stderr=subprocess.PIPE, stdin=subprocess.DEVNULL,
                                        encoding="utf-8", preexec_fn=die_with_the_test)
        for stream in (self.process.stdout, self.process.stderr):
            test.addCleanup(stream.close)
        test.addCleanup(self.process.wait)
        test.addCleanup(self.process.kill)

    def line(self):
        """Without its time."""
        return self.process.stdout.readline().rpartition("\t")[0]

    def await_line(self, expected):
        lines = []
        for line in self.process.stdout:
            lines.append(line.rpartition("\t")[0])
            if lines[-1] == expected:
                return lines
        raise AssertionError(f"no line {expected!r} in {lines}")


class Values(ToolsTest):
    def setUp(self):
        super().setUp()
        self.socket = self.folder / "run/srv"

    def rows(self, *arguments, **more):
        """The lines without their times, whose form is held."""
        rows = []
        for line in self.printed("values", *arguments, **more).splitlines():
            row, _, time = line.rpartition("\t")
            self.assertRegex(time, f"^({TIME}|-)$")
            rows.append(row)
        return rows

    def write(self, line):
        run = self.run_script("\n".join(["REMOTE l srv@A.L", "REMOTE bez srv@BEZ", "LOCAL u = bez",
                                         line, ""]))
        self.assertEqual(run.code, 0, run.log)

    def test_values_of_all_that_may_be_seen(self):
        self.start_server()
        everything = ["A.P\t-\tUNKNOWN", "A.L\t-\tUNKNOWN", 'B.OPIS, długi\t"dobry"\t-', "CZYT\t-\tUNKNOWN",
                      "BEZ\t3.00\t-"]
        self.assertEqual(self.rows(), everything)
        self.assertEqual(self.rows("*"), everything)
        self.assertEqual(self.rows("A.?"), everything[:2])
        self.assertEqual(self.rows("B*"), [everything[2], everything[4]])
        self.assertEqual(self.rows("BEZ"), [everything[4]])
        self.write("SET l = -7")
        self.assertEqual(self.rows("A.L"), ["A.L\t-7\tSUPERVISORY"])

    def test_json_is_an_object_a_line(self):
        self.start_server()
        rows = [json.loads(line) for line in self.printed("values", "B*", "--json").splitlines()]
        self.assertEqual([(row["variable"], row["value"], row["status"]) for row in rows],
                         [("B.OPIS, długi", "dobry", 0), ("BEZ", 3.0, 0)])
        self.assertGreater(rows[0]["time"], 1700000000)
        self.assertEqual(json.loads(self.printed("values", "A.P", "--json")),
                         {"variable": "A.P", "value": None, "status": 1, "time": None})

    def test_what_fits_nothing_is_told(self):
        self.start_server()
        for name in ("BRAK", "BRAK*", "TAJNE", "a.p"):
            self.assertEqual(self.call("values", name), (1, "", f"{name}: nie ma takiej zmiennej\n"))

    def test_server_without_variables_has_no_values(self):
        self.configure("")
        self.start_server()
        self.assertEqual(self.rows(), [])

    def test_server_that_does_not_run_is_told(self):
        fault = f"Serwer srv jest nieosiągalny: nie ma gniazda {self.socket} (czy serwer jest uruchomiony?)\n"
        self.assertEqual(self.call("values"), (1, "", fault))
        self.assertEqual(self.call("values", "--watch"), (1, "", fault))

    def test_user_sees_what_the_rights_let_him(self):
        self.add_user("adam", 90)
        self.start_server()
        self.assertEqual(self.rows("T*", "--user", "adam", stdin=PASSWORD + "\n"), ["TAJNE\t-\tUNKNOWN"])
        self.assertEqual(self.call("values", "T*", "--user", "adam", stdin="inne\n"),
                         (1, "", "Serwer srv odmawia zalogowania (brak uprawnień)\n"))
        self.assertEqual(self.call("values", "T*", "--user", "adam"), (1, "", ""))
        self.assertEqual(self.call("values", "--user", "nikt", stdin="x\n", LANGUAGE="en")[2],
                         "The server srv refuses the login (brak uprawnień)\n")

    def test_terminal_asks_once_for_the_password(self):
        self.add_user("adam", 90)
        self.start_server()
        ours, theirs = pty.openpty()
        process = subprocess.Popen(self.arguments_of("values", "TAJNE", "--user", "adam"), env=self.environment,
                                   stdin=theirs, stdout=subprocess.PIPE, stderr=theirs, preexec_fn=os.setsid)
        with process:
            os.close(theirs)
            shown = b""
            while not shown.endswith("Hasło: ".encode()):
                shown += os.read(ours, 100)
            os.write(ours, PASSWORD.encode() + b"\n")
            self.assertEqual(process.stdout.read(), b"TAJNE\t-\tUNKNOWN\t-\n")
        self.assertEqual(process.returncode, 0)
        os.close(ours)

    def test_hundred_thousand_values_come_whole(self):
        (self.folder / "wiele.csv").write_text("name;value\n" + "".join(f"V{i};{i}\n" for i in range(100_000)))
        self.configure('[[variables]]\nfile = "wiele.csv"\n')
        self.start_server()
        rows = self.rows("V*")
        self.assertEqual((len(rows), rows[0], rows[-1]), (100_000, "V0\t0.00\t-", "V99999\t99999.00\t-"))
        with subprocess.Popen(self.arguments_of("values"), stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                              env=self.environment) as process:
            self.assertRegex(process.stdout.readline().decode(), "^V0\t0.00\t-\t" + TIME + "\n$")
            process.stdout.close()
            self.assertEqual(process.stderr.read(), b"")
        self.assertEqual(process.returncode, 0)

    def test_watch_goes_on_with_changes_until_a_signal(self):
        self.start_server()
        for number in (signal.SIGINT, signal.SIGTERM):
            self.write("SET l = 1")
            watch = Watch(self, "*")
            self.assertEqual([watch.line() for _ in range(5)][1], "A.L\t1\tSUPERVISORY")
            self.write("SET l = 2")
            self.assertEqual(watch.line(), "A.L\t2\tSUPERVISORY")
            self.write("SET bez = 0.25")
            self.assertEqual(watch.line(), "BEZ\t0.25\tSUPERVISORY")
            watch.process.send_signal(number)
            self.assertEqual((watch.process.communicate(timeout=LIMIT_SECONDS), watch.process.returncode), (("", ""), 0))
            self.write("SET bez = 3")

    def test_watch_ends_when_nobody_reads_it(self):
        self.start_server()
        watch = Watch(self, "BEZ")
        self.assertEqual(watch.line(), "BEZ\t3.00\t-")
        watch.process.stdout.close()
        self.assertEqual(watch.process.stderr.read(), "")
        self.assertEqual(watch.process.wait(LIMIT_SECONDS), 0)

    def test_watch_that_waits_for_its_reader_ends_by_a_signal(self):
        (self.folder / "wiele.csv").write_text("name;value\n" + "".join(f"V{i};{i}\n" for i in range(10_000)))
        self.configure('[[variables]]\nfile = "wiele.csv"\n')
        self.start_server()
        watch = Watch(self)
        # From here on nobody reads, and a pipe does not hold the rest.
        self.assertEqual(watch.process.stdout.readline()[:3], "V0\t")
        watch.process.send_signal(signal.SIGTERM)
        self.assertEqual(watch.process.wait(LIMIT_SECONDS), 0)

    def test_watch_comes_back_when_the_server_does(self):
        server = self.start_server()
        watch = Watch(self, "BEZ")
        self.assertEqual(watch.line(), "BEZ\t3.00\t-")
        server.kill()
        self.assertEqual(watch.process.stderr.readline(), "Połączenie z serwerem srv przerwane (utrata połączenia)\n")
        self.start_server()
        for line in watch.process.stderr:
            if line == HEARD.format(self.socket) + "\n":
                break
        self.write("SET bez = 5")
        self.assertEqual(watch.await_line("BEZ\t5.00\tSUPERVISORY")[-1], "BEZ\t5.00\tSUPERVISORY")

    def test_variables_that_go_and_come_are_told(self):
        server = self.start_server()
        watch = Watch(self, "BEZ")
        self.assertEqual(watch.line(), "BEZ\t3.00\t-")
        self.configure("")
        server.send(signal.SIGHUP)
        self.assertEqual(watch.line(), "BEZ\t-\tUNKNOWN")
        self.configure(self.PLANT)
        server.send(signal.SIGHUP)
        self.assertEqual(watch.line(), "BEZ\t3.00\t-")


if __name__ == "__main__":
    main()
