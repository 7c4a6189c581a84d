#!/usr/bin/env python3
"""The examples of reports at the data server sorvaned, over a local socket.

    report_examples_test.py PATH_OF_KALVEX_RUN PATH_OF_SORVANED [unittest arguments]
"""
import pathlib
import signal

from server_and_run import LIMIT_SECONDS, ServerAndRun, main

EXAMPLES = pathlib.Path(__file__).resolve().parents[2] / "examples"
STATIONS = {"ZIELONA": "Z1.LICZNIK", "RZECZNA": "Z2.LICZNIK", "POLNA": "Z3.LICZNIK", "LEŚNA": "Z4.LICZNIK"}
DECLARED = "".join(f"REMOTE {name} Gaz@{variable}\n" for name, variable in STATIONS.items())


def hours(station, amount, begin, end):
    """Lines that write the same amount for each hour from begin to end."""
    return (f"REMOVE_ALL L\nSET OD = MAKE_TIME {begin}\nSET DO = MAKE_TIME {end}\n"
            f"FILL_IN_LIST L {amount} 0 OD DO HREP\nMPUT {station} HREP L\n")


def example(name):
    return (EXAMPLES / name).read_bytes().decode("cp1250").replace("\r\n", "\n")


class ReportExamples(ServerAndRun):
    NAME = "Gaz"
    PLANT = """
[reports]
day-start = 6
[[access]]
write = "0"
[[variable]]
name = "Z1.CISNIENIE_WY"
at = 32
value = 0.4
[[variable]]
name = "BILANS.DOBA"
rt = 4
[[variable]]
name = "BILANS.GODZINA"
rt = 2
""" + "".join(f'[[variable]]\nname = "{name}"\nrt = 14\nreport = "sum"\nvalue = 1\n' for name in STATIONS.values())

    def setUp(self):
        super().setUp()
        self.write_profile(f"[Konfiguracja]\r\nKatalog główny={self.folder}\r\n")
        self.start_server()

    def run_to_end(self, text, *options):
        run = self.run_script(text, *options)
        self.assertEqual(run.code, 0, run.log)
        return run

    def prepare(self, text):
        """Writes on the server; a read behind the writes tells that they are done."""
        return self.run_to_end(DECLARED + "LIST L\nLOCAL OD\nLOCAL DO\nLOCAL STAN = ZIELONA\n" + text +
                               "GET ZIELONA MREP 1980 1\n:a\nIF NOT READY ZIELONA.MREP GOTO a\n")

    def run_on_march_10(self, name):
        """The time stands in the past; the run takes as many ticks as the server needs."""
        return self.run_to_end(example(name), "--clock", "2024-03-10 07:00:00", "--ticks", "1000000000")

    def written(self, name):
        return (self.folder / name).read_bytes().decode("cp1250")

    def test_balance_of_the_network(self):
        amounts = {"ZIELONA": 100, "RZECZNA": 50, "POLNA": 25, "LEŚNA": 10}
        self.prepare("".join(hours(name, amount, "2024 3 9 5", "2024 3 10 6") for name, amount in amounts.items()))
        run = self.run_on_march_10("bilans_sieci.kx")
        self.assertEqual(run.cell("OCENA")["text"], "zapisano")
        self.assertEqual((run.value("SUMA"), run.value("BRAKI")), (185 * 24, 0))
        # SET_BY_USER from the server, SUPERVISORY from the module
        self.assertEqual(run.cell("BILANS", "DREP")["status"], 32 + 32768)

    def test_corrected_hour(self):
        self.prepare(hours("ZIELONA", 100, "2024 3 8 6", "2024 3 9 5") + "PUT ZIELONA HREP 2024 3 9 4 98765.4\n"
                     "INIT_LOAD ZIELONA DREP 2024 3 8\n")
        run = self.run_on_march_10("poprawka_godziny.kx")
        self.assertEqual(run.cell("OCENA")["text"], "poprawiono")
        self.assertEqual((run.value("BYŁO"), run.value("JEST")), (98765.4, 2400.5))
        self.assertEqual(run.value("DOBA"), 23 * 100 + 2400.5)
        month = self.run_to_end(DECLARED + "LOCAL STAN = ZIELONA\nGET ZIELONA MREP 2024 3\n:a\n"
                                "IF NOT READY ZIELONA.MREP GOTO a\nLOCAL M = ZIELONA.MREP\n")
        self.assertEqual(month.value("M"), 23 * 100 + 2400.5)
        self.assertIn("BYŁO:98765.40\r\nJEST:2400.50\r\nDOBA:4700.50\r\n", self.written("poprawki.txt"))

    def test_sum_at_each_change(self):
        following = self.follow(example("przeliczenie.kx"), "przeliczenie.kx")
        following.await_line("Nawiązanie połączenia z Gaz")
        # The server may not know yet that the example wants to hear of changes, so they go on until one is seen.
        for amount in range(100, 100 + LIMIT_SECONDS // 5):
            expected = 4 * amount + 1
            writes = "".join(f"PUT {name} HREP 2024 3 10 6 {amount}.25\n" for name in STATIONS)
            seen = self.prepare("REMOTE SIEĆ Gaz@BILANS.GODZINA\n" + writes + "LOCAL PRÓBA = 0\n:od_nowa\nSLEEP 1\n"
                                "SET PRÓBA = PRÓBA + 1\nGET SIEĆ HREP 2024 3 10 6\n:b\nIF NOT READY SIEĆ.HREP GOTO b\n"
                                "LOCAL WYNIK = 0\nIF NOT UNKNOWN SIEĆ.HREP THEN\nSET WYNIK = SIEĆ.HREP\nENDIF\n"
                                f"IF WYNIK == {expected} GOTO jest\nIF PRÓBA < 5 GOTO od_nowa\n:jest\n")
            if seen.value("WYNIK") == expected:
                break
        self.assertEqual(seen.value("WYNIK"), expected)
        following.send(signal.SIGINT)
        self.assertEqual(following.end(), 3)
        self.assertEqual(float(following.value("SUMA")), expected)
        self.assertGreaterEqual(float(following.value("PRZELICZONE")), 1)

    def test_export_of_an_archive(self):
        self.prepare("REMOTE P Gaz@Z1.CISNIENIE_WY\nSET OD = MAKE_TIME 2024 3 8 23\nSET DO = MAKE_TIME 2024 3 10\n"
                     "FILL_IN_LIST L 0.4 0 OD DO HREP\nMPUT P ARCH L\n")
        run = self.run_on_march_10("eksport_archiwum.kx")
        self.assertEqual((run.value("GODZIN"), run.value("BEZ_DANYCH")), (24, 0))
        content = "ILE:1\r\nNAJMNIEJ:0.40\r\nNAJWIĘCEJ:0.40\r\nŚREDNIA:0.40\r\nWARTOŚCI:0.40\r\n"
        self.assertEqual(self.written("archiwum.txt"),
                         "".join(f"[2024-03-09_{hour:02}_CET]\r\n" + content for hour in range(24)))


if __name__ == "__main__":
    main()
