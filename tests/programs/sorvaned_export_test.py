#!/usr/bin/env python3
"""What `sorvaned export` tells of the store of a server that runs or does not.

    sorvaned_export_test.py PATH_OF_KALVEX_RUN PATH_OF_SORVANED [unittest arguments]
"""
import json
import pathlib
import resource
import subprocess

from server_and_run import LIMIT_SECONDS, main
from sorvaned_tools import DAY, HOUR, START, ToolsTest

RANGE = ("--from", "2024-03-10 07:00:00", "--to", "2024-03-10 08:00:00")
AUTUMN = 1729987200  # 2024-10-27 2:00 for the first time


class Export(ToolsTest):
    def setUp(self):
        super().setUp()
        self.make_store()

    def fill(self):
        with self.database() as database:
            self.put(database, "A.P", [(START - 1, 1.0), (START, 20.5), (START + 60, -0.25, 4), (START + 120, None, 1),
                                       (START + 3600, 1e20, 32 + 1024), (START + 3601, 2.0)])
            self.put(database, "A.L", [(START, 7)])
            self.put(database, "B.OPIS, długi", [(START, 'ze "znakiem"\ti\nwierszem'), (START + 1, ""),
                                                 (START + 2, " żółć;")])
            self.put(database, "A.P", [(START, 3.5, 128)], HOUR)
            self.put(database, "A.P", [(START - 7 * 3600, 4.5, 160)], DAY)

    def test_values_are_told_by_variable_and_time(self):
        self.fill()
        rows = ["A.P\tARCH\t2024-03-10 07:00:00\t20.50\t-", "A.P\tARCH\t2024-03-10 07:01:00\t-0.25\tALARM",
                "A.P\tARCH\t2024-03-10 07:02:00\t-\tUNKNOWN",
                "A.P\tARCH\t2024-03-10 08:00:00\t1e+20\tSET_BY_USER 1024"]
        self.assertEqual(self.printed("export", "A.P", *RANGE).splitlines(), rows)
        self.assertEqual(self.printed("export", "A.?", "A.P", *RANGE).splitlines(),
                         ["A.L\tARCH\t2024-03-10 07:00:00\t7\t-", *rows])
        self.start_server()
        self.assertEqual(self.printed("export", "A.P", *RANGE).splitlines(), rows)

    def test_reports_have_their_kinds(self):
        self.fill()
        self.assertEqual(self.printed("export", "A.P", *RANGE, "--kind", "hour"),
                         "A.P\tHREP\t2024-03-10 07:00:00\t3.50\tREPORT_LOADED\n")
        self.assertEqual(self.printed("export", "A.P", "--from", "2024-03-10 00:00:00", "--to", "2024-03-10 00:00:00",
                                      "--kind", "day"),
                         "A.P\tDREP\t2024-03-10 00:00:00\t4.50\tSET_BY_USER REPORT_LOADED\n")
        self.assertEqual(self.printed("export", "A.P", *RANGE, "--kind", "month"), "")

    def test_csv_keeps_each_character(self):
        self.fill()
        self.assertEqual(self.printed("export", "B*", "A.P", *RANGE, "--csv"), "\r\n".join([
            "variable,kind,time,value,status", "A.P,ARCH,2024-03-10 07:00:00,20.50,",
            "A.P,ARCH,2024-03-10 07:01:00,-0.25,ALARM", "A.P,ARCH,2024-03-10 07:02:00,,UNKNOWN",
            "A.P,ARCH,2024-03-10 08:00:00,1e+20,SET_BY_USER 1024",
            '"B.OPIS, długi",ARCH,2024-03-10 07:00:00,"ze ""znakiem""\ti\nwierszem",',
            '"B.OPIS, długi",ARCH,2024-03-10 07:00:01,,', '"B.OPIS, długi",ARCH,2024-03-10 07:00:02," żółć;",', ""]))
        self.assertEqual(self.printed("export", "A.L", "--csv", "--from", "2020-01-01 00:00:00", "--to",
                                      "2020-01-01 00:00:00"), "variable,kind,time,value,status\r\n")

    def test_json_is_an_object_a_line(self):
        self.fill()
        rows = [json.loads(line) for line in self.printed("export", "A.P", "B*", *RANGE, "--json").splitlines()]
        self.assertEqual(rows[0], {"variable": "A.P", "kind": "ARCH", "time": START, "value": 20.5, "status": 0})
        self.assertEqual((rows[2]["value"], rows[2]["status"]), (None, 1))
        self.assertEqual(rows[4]["value"], 'ze "znakiem"\ti\nwierszem')

    def test_hour_that_comes_twice_has_its_offsets(self):
        with self.database() as database:
            self.put(database, "A.L", [(AUTUMN + 1800, 1), (AUTUMN + 5400, 2), (AUTUMN + 7200, 3)])
        self.assertEqual(
            self.printed("export", "A.L", "--from", "2024-10-27 02:30:00+02:00", "--to", "2024-10-27 03:00:00"),
            "A.L\tARCH\t2024-10-27 02:30:00+02:00\t1\t-\nA.L\tARCH\t2024-10-27 02:30:00+01:00\t2\t-\n"
            "A.L\tARCH\t2024-10-27 03:00:00\t3\t-\n")
        self.assertEqual(self.call("export", "A.L", "--from", "2024-10-27 02:30:00", "--to", "2024-10-27 03:00:00"),
                         (2, "", "sorvaned: --from: clocks show this time twice, put the offset behind it, such as "
                                 "+02:00\n"))

    def test_what_cannot_be_exported(self):
        self.assertEqual(self.call("export", "A.P", "BRAK*", *RANGE), (1, "", "BRAK*: nie ma takiej zmiennej\n"))
        self.assertEqual(self.call("export", "BRAK", *RANGE, LANGUAGE="en"), (1, "", "BRAK: there is no such variable\n"))
        self.configure(self.PLANT + '[[variable]]\nname = "NOWA"\n')
        self.assertEqual(self.call("export", "NOWA", *RANGE), (0, "", ""))
        self.store.unlink()
        self.assertEqual(self.call("export", "A.P", *RANGE), (1, "", f"{self.store}: unable to open database file\n"))

    def test_very_much_is_told_in_little_memory(self):
        if b"__asan_" in pathlib.Path(self.SERVER).read_bytes():
            self.skipTest("a sanitized program keeps what it has freed")
        count = 400_000
        with self.database() as database:
            self.put(database, "A.P", [(START + second, second / 4) for second in range(count)])

        def largest():
            """Of all processes that the test has started so far."""
            return resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss

        self.assertEqual(self.printed("export", "A*", *RANGE).count("\n"), 3601)
        before = largest()
        with subprocess.Popen(self.arguments_of("export", "A*", "--from", "2024-03-10 07:00:00", "--to",
                                                "2030-01-01 00:00:00"),
                              stdout=subprocess.PIPE, env=self.environment) as started:
            self.assertEqual(sum(1 for _ in started.stdout), count)
        self.assertEqual(started.returncode, 0)
        # All of it has eighteen megabytes as text, and twice that as values.
        self.assertLess(largest() - before, 8 * 1024)

    def test_reader_that_goes_away_ends_it(self):
        with self.database() as database:
            self.put(database, "A.P", [(START + second, 0.5) for second in range(100_000)])
        arguments = self.arguments_of("export", "A.P", "--from", "2024-03-10 07:00:00", "--to", "2030-01-01 00:00:00")
        started = subprocess.Popen(arguments, stdout=subprocess.PIPE, stderr=subprocess.PIPE, env=self.environment)
        with started:
            self.assertEqual(started.stdout.readline(), b"A.P\tARCH\t2024-03-10 07:00:00\t0.50\t-\n")
            started.stdout.close()
            self.assertEqual(started.stderr.read(), b"")
        self.assertEqual(started.returncode, 0)
        with open("/dev/full", "wb") as full:
            done = subprocess.run(arguments, stdout=full, stderr=subprocess.PIPE, env=self.environment,
                                  timeout=LIMIT_SECONDS)
        self.assertEqual((done.returncode, done.stderr.decode()),
                         (1, "Nie można pisać na wyjście (No space left on device)\n"))


if __name__ == "__main__":
    main()
