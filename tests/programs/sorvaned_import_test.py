#!/usr/bin/env python3
"""What `sorvaned import` finds in files, and what it writes by way of a server that runs.

    sorvaned_import_test.py PATH_OF_KALVEX_RUN PATH_OF_SORVANED [unittest arguments]
"""
import contextlib
import json
import signal
import sqlite3
import subprocess

from server_and_run import LIMIT_SECONDS, PASSWORD, main
from sorvaned_tools import HOUR, START, ToolsTest

MANY = 100_000
HEAD = "variable,kind,time,value,status\r\n"
ALWAYS = ("--from", "2024-01-01 00:00:00", "--to", "2025-01-01 00:00:00")
AUTUMN = 1729987200  # 2024-10-27 2:00 for the first time
AGAIN = "Import niedokończony; można go powtórzyć, to co zapisane pozostanie bez zmian\n"


class Import(ToolsTest):
    def setUp(self):
        super().setUp()
        self.file = self.folder / "dane.csv"
        self.absent = (f"Serwer srv jest nieosiągalny: nie ma gniazda {self.folder}/run/srv (czy serwer jest "
                       "uruchomiony?)\n")

    def give(self, *rows, head=HEAD):
        self.file.write_bytes((head + "".join(row + "\r\n" for row in rows)).encode())
        return "dane.csv"

    def counts(self, *arguments, **more):
        return [line.split("\t") for line in self.printed("import", "dane.csv", *arguments, **more).splitlines()]

    def faults(self, *rows, head=HEAD):
        """What is told of each of these rows."""
        code, out, err = self.call("import", self.give(*rows, head=head))
        self.assertEqual((code, out), (1, ""))
        told = [line.split(":", 2) for line in err.splitlines()]
        self.assertEqual([name for name, _, _ in told], ["dane.csv"] * len(told))
        return {int(line): reason[1:] for _, line, reason in told}

    def test_dry_run_counts_and_writes_nothing(self):
        self.make_store()
        with self.database() as database:
            self.put(database, "A.P", [(START, 1.5), (START + 60, 2.5, 4), (START + 120, None, 1)])
            self.put(database, "A.P", [(START, 3.5, 128), (START + 3600, 4.5, 160)], HOUR)
        self.give("A.P,ARCH,2024-03-10 07:00:00,1.5,", "A.P,ARCH,2024-03-10 07:01:00,2.5,",
                  "A.P,ARCH,2024-03-10 07:02:00,,UNKNOWN", "A.P,ARCH,2024-03-10 07:03:00,7,",
                  "A.P,HREP,2024-03-10 07:00:00,3.5,REPORT_LOADED", "A.P,HREP,2024-03-10 08:00:00,4.6,REPORT_LOADED",
                  "A.L,ARCH,2024-03-10 07:00:00,-3,SET_BY_USER 1024")
        expected = [["A.P", "HREP", "0", "1", "1"], ["A.P", "ARCH", "1", "1", "2"], ["A.L", "ARCH", "1", "0", "0"]]
        before = self.store.read_bytes()
        self.assertEqual(self.counts(), expected)
        self.assertEqual(self.store.read_bytes(), before)
        self.assertEqual([json.loads(line) for line in self.printed("import", "dane.csv", "--json").splitlines()][0],
                         {"variable": "A.P", "kind": "HREP", "new": 0, "changed": 1, "unchanged": 1})
        self.assertEqual(self.call("import", "dane.csv", "--write"), (1, "", self.absent))

    def test_each_fault_is_told_with_its_line(self):
        self.make_store()
        self.assertEqual(self.faults(
            "BRAK,ARCH,2024-03-10 07:00:00,1,", "TAJNE,ARCH,2024-03-10 07:00:00,1,",
            "CZYT,ARCH,2024-03-10 07:00:00,1,", "BEZ,ARCH,2024-03-10 07:00:00,1,", "BEZ,HREP,2024-03-10 07:00:00,1,",
            "A.P,CURDATA,2024-03-10 07:00:00,1,", "A.P,ARCH,2024-03-10 07:00,1,", "A.P,ARCH,2024-10-27 02:30:00,1,",
            "A.P,ARCH,2024-03-31 02:30:00,1,", "A.P,ARCH,1960-01-01 00:00:00,1,", "A.P,HREP,2024-03-10 07:30:00,1,",
            "A.P,ARCH,2024-03-10 07:00:00,x1,", "A.P,ARCH,2024-03-10 07:00:00,\"1,5\",",
            "A.P,ARCH,2024-03-10 07:00:00,1000.5,", "A.P,ARCH,2024-03-10 07:00:00,,", "A.L,ARCH,2024-03-10 07:00:00,1.5,",
            "A.L,ARCH,2024-03-10 07:00:00,3000000000,", "A.P,ARCH,2024-03-10 07:00:00,1,ALARM ALRM",
            "A.P,ARCH,2024-03-10 07:00:00", "A.P,ARCH,2024-03-10 07:00:00,1,,", "A.P,ARCH,2024-03-10 07:00:00,\"1\"x,",
            '"B.OPIS, długi",ARCH,2024-03-10 07:00:00,日本,', "A.P,ARCH,2024-03-10 07:00:00,nan,"), {
                2: "nie ma takiej zmiennej", 3: "brak prawa do odczytu i zapisu", 4: "brak prawa do zapisu",
                5: "zmienna nie ma archiwum", 6: "zmienna nie ma takiego raportu", 7: "nieznany rodzaj danych",
                8: "niezrozumiały czas, oczekiwano YYYY-MM-DD HH:MM:SS: 2024-03-10 07:00",
                9: "zegar pokazuje ten czas dwa razy, potrzebne jest za nim przesunięcie, jak +02:00: 2024-10-27 02:30:00",
                10: "zegar pomija ten czas: 2024-03-31 02:30:00", 11: "czas spoza zakresu",
                12: "czas nie jest początkiem raportu: 2024-03-10 07:30:00", 13: "oczekiwano liczby: x1",
                14: "oczekiwano liczby: 1,5", 15: "wartość poza granicami zmiennej: 1000.5",
                16: "brak wartości bez statusu UNKNOWN", 17: "wartość nie mieści się w typie zmiennej: 1.5",
                18: "wartość nie mieści się w typie zmiennej: 3000000000", 19: "nieznane słowo statusu: ALRM",
                20: "komórek jest 3, a kolumn 5", 21: "komórek jest 6, a kolumn 5",
                22: "komórka w cudzysłowie nie ma końca albo coś za nią stoi, albo wiersz jest za długi",
                23: "tekst ma znaki spoza Windows-1250: 日本", 24: "oczekiwano liczby: nan"})

    def test_rows_that_come_twice_are_told(self):
        self.make_store()
        self.give("A.P,ARCH,2024-03-10 07:00:00,1,", "A.P,ARCH,2024-03-10 07:00:01,1,",
                  "A.P,ARCH,2024-03-10 07:00:00,2,", "A.P,ARCH,2024-03-10 07:00:00+01:00,1,")
        double = "ta sama wartość stoi już w wierszu 2"
        self.assertEqual(self.call("import", "dane.csv"),
                         (1, "A.P\tARCH\t2\t0\t0\n", f"dane.csv:4: {double}\ndane.csv:5: {double}\n"))
        self.assertEqual(self.call("import", "dane.csv", "--write"),
                         (1, "", f"dane.csv:4: {double}\ndane.csv:5: {double}\n"
                                 "dane.csv: błędnych wierszy 2, niczego nie zapisano\n"))

    def test_head_is_wanted(self):
        self.make_store()
        fault = {1: "w pierwszym wierszu muszą stać nazwy kolumn: variable, kind, time, value, status"}
        for head in ("", "variable,kind,time,value\r\n", "variable,kind,time,value,value\r\n", "a\r\n"):
            self.assertEqual(self.faults("A.P,ARCH,2024-03-10 07:00:00,1,", head=head), fault, head)
        self.assertEqual(self.faults(head=""), fault)
        self.give("2024-03-10 07:00:00;;1.5;ARCH;A.P", head="time;status;value;kind;variable\n")
        self.assertEqual(self.counts(), [["A.P", "ARCH", "1", "0", "0"]])
        self.give()
        self.assertEqual(self.counts(), [])

    def test_file_that_cannot_be_read_is_told(self):
        self.make_store()
        self.assertEqual(self.call("import", "brak.csv"), (1, "", "brak.csv: No such file or directory\n"))
        self.assertEqual(self.call("import", "data"), (1, "", "data: Is a directory\n"))
        self.give()
        self.assertEqual(self.call("import", "dane.csv", "--user", "nikt"),
                         (1, "", "Brak użytkownika o tej nazwie\n"))
        self.file.write_bytes(HEAD.encode() + b"A.P,ARCH,2024-03-10 07:00:00,1,\xb3\r\n")
        self.assertEqual(self.call("import", "dane.csv"), (1, "", "dane.csv:2: wiersz nie jest w UTF-8\n"))
        self.store.unlink()
        self.assertEqual(self.call("import", "dane.csv"), (1, "", f"{self.store}: unable to open database file\n"))

    def test_nothing_is_written_when_one_row_has_a_fault(self):
        self.start_server()
        self.give("A.P,ARCH,2024-03-10 07:00:00,1,", "A.P,ARCH,2024-03-10 07:00:01,x,")
        self.assertEqual(self.call("import", "dane.csv", "--write"),
                         (1, "", "dane.csv:3: oczekiwano liczby: x\ndane.csv: błędnych wierszy 1, niczego nie zapisano\n"))
        self.assertEqual(self.printed("export", "A.P", *ALWAYS), "")

    def everything(self):
        return "".join(self.printed("export", "A.*", "B.*", *ALWAYS, "--csv", "--kind", kind)
                       for kind in ("archive", "hour"))

    def test_data_of_one_server_stand_in_another_as_they_were(self):
        self.make_store()
        texts = ['ze "znakiem"\ti\r\nwierszem', "", " żółć;", "#nie uwaga", "x" * 20000, "12,5"]
        with self.database() as database:
            self.put(database, "A.P", [(AUTUMN - 7200 + 5 * step, step / 7, (0, 4, 48)[step % 3]) for step in range(5000)])
            self.put(database, "A.P", [(START + 7, None, 1), (START + 8, 1e-9, 34)])
            self.put(database, "A.L", [(START + step, step - 9) for step in range(20)])
            self.put(database, "B.OPIS, długi", [(START + second, text) for second, text in enumerate(texts)])
            self.put(database, "B.OPIS, długi", [(START + 99, None, 3)])
            self.put(database, "A.P", [(START + 3600 * hour, hour + 0.25, 160) for hour in range(500)], HOUR)
        before = self.everything()
        rows = before.split(HEAD)
        (self.folder / "data").rename(self.folder / "stare")
        server = self.start_server()
        for part in rows[1:]:
            self.file.write_bytes((HEAD + part).encode())
            dry = self.counts()
            self.assertEqual([row[3:] for row in dry], [["0", "0"]] * len(dry))
            self.assertEqual(self.counts("--write"), dry)
            self.assertEqual([row[2:] for row in self.counts("--write")], [["0", "0", row[2]] for row in dry])
        self.assertEqual(self.everything(), before)
        self.stop(server)
        self.assertEqual(self.everything(), before)

    def test_writer_is_the_user_of_the_import(self):
        self.add_user("adam", 90)
        self.start_server()
        self.give("TAJNE,ARCH,2024-03-10 07:00:00,1.5,", "A.P,HREP,2024-03-10 07:00:00,2.5,")
        self.assertEqual(self.counts("--user", "adam", "--write", stdin=PASSWORD + "\n"),
                         [["A.P", "HREP", "1", "0", "0"], ["TAJNE", "ARCH", "1", "0", "0"]])
        told = self.printed("history", "TAJNE", "--at", "2024-03-10 07:00:00", TZ="Europe/Warsaw").split("\t")
        self.assertEqual(told[:2] + told[3:], ["ARCH", "2024-03-10 07:00:00", "adam", "sorvaned import", "-", "1.50",
                                               "-\n"])
        self.assertEqual(self.printed("export", "A.P", *ALWAYS, "--kind", "hour"),
                         "A.P\tHREP\t2024-03-10 07:00:00\t2.50\tSET_BY_USER\n")
        self.assertEqual(self.call("import", "dane.csv", "--user", "adam", "--write", stdin="inne\n"),
                         (1, "", "Serwer srv odmawia zalogowania (brak uprawnień)\n"))

    def test_server_that_has_other_rights_by_now_refuses(self):
        self.start_server()
        self.configure(self.PLANT.replace('variables = "CZYT*"\n', 'variables = "NIC"\n'))
        self.give("CZYT,ARCH,2024-03-10 07:00:00,1.5,")
        self.assertEqual(self.call("import", "dane.csv", "--write"),
                         (1, "", f"CZYT: odmowa: zapis ARCH (brak dostępu)\n{AGAIN}"))
        self.give("CZYT,HREP,2024-03-10 07:00:00,1.5,")
        self.assertEqual(self.call("import", "dane.csv", "--write"),
                         (1, "", f"CZYT: odmowa: zapis HREP (brak dostępu)\n{AGAIN}"))

    def give_many(self, count):
        with open(self.file, "w", encoding="utf-8") as file:
            file.write(HEAD)
            for second in range(count):
                file.write(f"A.P,ARCH,2024-03-{10 + second // 86400:02} {second // 3600 % 24:02}:"
                           f"{second // 60 % 60:02}:{second % 60:02},{second % 999}.5,\n")

    @contextlib.contextmanager
    def stalled_import(self, server):
        """An import that has logged in at a server that cannot commit anything."""
        self.give_many(MANY)
        database = sqlite3.connect(self.store, isolation_level=None)
        database.execute("BEGIN IMMEDIATE")
        process = subprocess.Popen(self.arguments_of("import", "dane.csv", "--write"), stdout=subprocess.PIPE,
                                   stderr=subprocess.PIPE, encoding="utf-8", env=self.environment, cwd=self.folder)
        with process:
            server.await_line("Rejestracja użytkownika NOBODY z sorvaned import")
            yield process, database
        database.close()

    def test_import_goes_on_when_the_server_comes_back(self):
        server = self.start_server()
        with self.stalled_import(server) as (process, database):
            server.kill()
            self.assertEqual(process.stderr.readline(),
                             "Połączenie z serwerem srv przerwane (utrata połączenia)\n")
            database.execute("ROLLBACK")
            self.start_server()
            self.assertEqual(process.stdout.read(), f"A.P\tARCH\t{MANY}\t0\t0\n")
            process.stderr.read()
        self.assertEqual(process.returncode, 0)
        self.assertEqual(self.counts(), [["A.P", "ARCH", "0", "0", str(MANY)]])

    def test_interrupted_import_is_repeated(self):
        server = self.start_server()
        with self.stalled_import(server) as (process, database):
            process.send_signal(signal.SIGINT)
            self.assertEqual(process.communicate(timeout=LIMIT_SECONDS), ("", AGAIN))
            database.execute("ROLLBACK")
        self.assertEqual(process.returncode, 1)
        new, changed, unchanged = map(int, self.counts("--write")[0][2:])
        self.assertEqual((new + unchanged, changed), (MANY, 0))
        self.assertEqual(self.counts("--write"), [["A.P", "ARCH", "0", "0", str(MANY)]])


if __name__ == "__main__":
    main()
