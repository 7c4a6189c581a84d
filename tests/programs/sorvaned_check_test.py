#!/usr/bin/env python3
"""What `sorvaned check` finds in stores that are sound, have gaps, or are damaged on purpose.

    sorvaned_check_test.py PATH_OF_KALVEX_RUN PATH_OF_SORVANED [unittest arguments]
"""
import json
import sqlite3

from server_and_run import main
from sorvaned_tools import DAY, HOUR, START, ToolsTest


class Check(ToolsTest):
    def setUp(self):
        super().setUp()
        self.make_store()

    def fill(self):
        minutes = [*range(0, 10), 11, *range(30, 40)]
        with self.database() as database:
            self.put(database, "A.P", [(START + 60 * minute, 0.5) for minute in minutes])
            self.put(database, "A.P", [(START, 3.5), (START + 3600, 3.5)], HOUR)
            self.put(database, "A.P", [(START - 7 * 3600, 3.5)], DAY)
            self.put(database, "B.OPIS, długi", [(START, "x" * 1000), (START + 9000, "żó")])
            database.execute("INSERT INTO versions VALUES (?, 2, ?, 1, 171, 0, 3.0, 0, 0)", (self.numbers["A.P"], START))

    def lines(self):
        return {line.split("\t")[0]: line.split("\t")[1:] for line in self.printed("check").splitlines()[:-1]}

    def faults(self, sql, *expected):
        """What is told of a store that this has been done to."""
        with self.database() as database:
            database.executescript(sql)
        self.assertEqual(self.call("check"), (1, "", "".join(f"{self.store}: {line}\n" for line in expected)))

    def test_sound_store_has_a_line_for_each_variable(self):
        self.fill()
        lines = self.lines()
        self.assertEqual(sorted(lines), ["A.L", "A.P", "B.OPIS, długi", "BEZ", "CZYT", "TAJNE"])
        self.assertEqual(lines["A.P"], ["21", "3", "1", "900", "2", "2024-03-10 07:11:00", "2024-03-10 07:30:00"])
        self.assertEqual(lines["B.OPIS, długi"], ["2", "0", "0", "1060", "-", "-", "-"])
        self.assertEqual(lines["A.L"], ["0", "0", "0", "0", "-", "-", "-"])
        summary = ("bez błędów; zmiennych 6, wartości archiwalnych 23, raportów 3, wersji 1, bajtów 1960, przerw 2")
        self.assertEqual(self.printed("check").splitlines()[-1], f"{self.store}: {summary}")
        self.assertEqual(self.printed("check", LANGUAGE="en").splitlines()[-1],
                         f"{self.store}: no faults; variables 6, archive values 23, reports 3, versions 1, bytes 1960, "
                         "gaps 2")

    def test_json_is_an_object_a_line(self):
        self.fill()
        rows = [json.loads(line) for line in self.printed("check", "--json").splitlines()]
        self.assertEqual(rows[1], {"variable": "A.P", "archive": 21, "reports": 3, "versions": 1, "bytes": 900,
                                   "gaps": 2, "longest": {"from": START + 660, "to": START + 1800}})
        self.assertEqual((rows[0]["gaps"], rows[0]["longest"]), (None, None))
        self.assertEqual(rows[-1], {"store": str(self.store), "variables": 6, "archive": 23, "reports": 3, "versions": 1,
                                    "bytes": 1960, "gaps": 2})

    def test_estimated_bytes_are_near_those_of_the_file(self):
        with self.database() as database:
            self.put(database, "A.P", [(START + second, second / 3) for second in range(100_000)])
        bytes_told = int(self.lines()["A.P"][3])
        self.assertLess(abs(bytes_told / self.store.stat().st_size - 1), 0.3)

    def test_server_that_runs_goes_on_writing(self):
        self.fill()
        self.start_server()
        self.assertEqual(self.lines()["B.OPIS, długi"][0], "2")
        self.assertEqual(self.run_script("REMOTE x srv@BEZ\nLOCAL a = x\nSET x = 8\n:w\nIF x <> 8 GOTO w").code, 0)

    def test_rows_that_belong_to_nothing_are_told(self):
        self.fill()
        self.faults("DELETE FROM variables WHERE name LIKE 'B.%';",
                    "last_values: wiersze bez zmiennej w tabeli variables: 1",
                    "history: wiersze bez zmiennej w tabeli variables: 2")

    def test_versions_and_late_reports_of_nothing_are_told(self):
        self.faults("INSERT INTO versions VALUES (1, 6, 5, 1, 171, 0, 1.5, 0, 0), (99, 2, 5, 1, 171, 0, 1.5, 0, 0);"
                    "INSERT INTO alarms VALUES (1, 99, 4, 5, 21.5, 6, 7, 44), (2, 1, 4, 5, 21.5, NULL, NULL, NULL);"
                    "INSERT INTO late (kind, time, variable, rule, day_start, chained) VALUES (2, 5, 99, 0, 0, 0), "
                    "(6, 5, 1, 0, 0, 0);",
                    "versions: wiersze bez zmiennej w tabeli variables: 1",
                    "versions: wiersze bez wartości w tabeli history: 2",
                    "alarms: wiersze bez zmiennej w tabeli variables: 1",
                    "alarms: wiersze bez autora w tabeli writers: 1",
                    "late: wiersze bez zmiennej w tabeli variables: 1", "late: wiersze nieznanego rodzaju danych: 1")

    def test_rollups_of_other_values_are_told(self):
        self.fill()
        hour = START // 3600 * 3600
        rows = [(99, 3600, hour, 1), (1, 3600, hour, 3), (1, 3600, hour + 3600, 5), (1, 60, hour, 7)]
        self.faults("".join(f"INSERT INTO rollups (variable, span, time, count, numbers) VALUES {row + (0,)};"
                            for row in rows) + f"INSERT INTO rollup_marks VALUES ({hour + 3600}, 1), ({hour}, 98);",
                    "rollups: wiersze bez zmiennej w tabeli variables: 1",
                    "rollups: wiersze z inną liczbą wartości niż w tabeli history: 2",
                    "rollup_marks: wiersze bez zmiennej w tabeli variables: 1")

    def test_values_that_cannot_be_are_told(self):
        self.fill()
        self.faults("UPDATE history SET value = 'tekst' WHERE kind = 3; UPDATE history SET type = 33 WHERE kind = 2;"
                    "INSERT INTO history VALUES (1, 7, 5, 171, 0, 1.5, 0, 0), (1, 6, -5, 171, 0, 1.5, 44, 0), "
                    "(1, 6, 5, 171, 65536, 1.5, 0, 0), (1, 6, 6, 150, 0, 1.5, 0, 0), (1, 6, 7, 171, 0, NULL, 0, 0);"
                    "UPDATE last_values SET writer = 45;",
                    "last_values: wiersze bez autora w tabeli writers: 2",
                    "history: wiersze bez autora w tabeli writers: 1",
                    "history: wiersze z wartością innego typu niż podany: 5",
                    "history: wiersze nieznanego rodzaju danych: 1", "history: wiersze z czasem spoza zakresu: 1")

    def test_damaged_page_is_told(self):
        self.fill()
        database = sqlite3.connect(self.store)
        page_size, = database.execute("PRAGMA page_size").fetchone()
        root, = database.execute("SELECT rootpage FROM sqlite_schema WHERE name = 'progress'").fetchone()
        database.close()
        content = bytearray(self.store.read_bytes())
        content[(root - 1) * page_size:root * page_size] = bytes(page_size)
        self.store.write_bytes(content)
        self.assertEqual(self.call("check"),
                         (1, "", f"{self.store}: Page {root}: btreeInitPage() returns error code 11\n"))

    def test_index_without_its_row_is_told(self):
        self.fill()
        with self.database() as database:
            root, = database.execute("SELECT rootpage FROM sqlite_schema WHERE name LIKE 'sqlite_autoindex_variables%'"
                                     ).fetchone()
            page_size, = database.execute("PRAGMA page_size").fetchone()
        content = bytearray(self.store.read_bytes())
        place = content.index(b"TAJNE", (root - 1) * page_size)
        content[place:place + 5] = b"TAJNA"
        self.store.write_bytes(content)
        code, out, err = self.call("check")
        self.assertEqual((code, out), (1, ""))
        self.assertEqual(err, f"{self.store}: row 5 missing from index sqlite_autoindex_variables_1\n")

    def test_what_is_no_store_is_told(self):
        self.store.write_bytes(b"to nie jest baza danych" * 100)
        self.assertEqual(self.call("check"), (1, "", f"{self.store}: file is not a database\n"))
        self.store.unlink()
        self.assertEqual(self.call("check"), (1, "", f"{self.store}: unable to open database file\n"))
        self.make_store()
        with self.database() as database:
            database.execute("DROP TABLE late")
        self.assertEqual(self.call("check"), (1, "", f"{self.store}: no such table: late\n"))
        with self.database() as database:
            database.execute("PRAGMA user_version = 9")
        self.assertEqual(self.call("check"), (1, "", f"{self.store}: Plik danych jest z innej wersji programu\n"))

    def test_configuration_is_checked_by_the_option(self):
        self.store.unlink()
        self.assertEqual(self.call("--check"), (0, "", ""))


if __name__ == "__main__":
    main()
