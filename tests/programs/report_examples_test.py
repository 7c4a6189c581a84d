#!/usr/bin/env python3
"""The examples of reports against a data server: processes that speak over a local socket."""
import json
import os
import pathlib
import signal
import subprocess
import sys
import tempfile
import unittest

SORVANED, RUNNER = map(os.path.abspath, sys.argv[1:3])
del sys.argv[1:3]

EXAMPLES = pathlib.Path(__file__).resolve().parents[2] / "examples"
TIME_LIMIT = 60
STATIONS = {"ZIELONA": "Z1.LICZNIK", "RZECZNA": "Z2.LICZNIK", "POLNA": "Z3.LICZNIK", "LEŚNA": "Z4.LICZNIK"}

PLANT = """
[server]
name = "Gaz"
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

DECLARED = "".join(f"REMOTE {name} Gaz@{variable}\n" for name, variable in STATIONS.items())


def hours(station, amount, begin, end):
    """Lines that write the same amount for each hour from begin to end."""
    return (f"REMOVE_ALL L\nSET OD = MAKE_TIME {begin}\nSET DO = MAKE_TIME {end}\n"
            f"FILL_IN_LIST L {amount} 0 OD DO HREP\nMPUT {station} HREP L\n")


class ReportExamples(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.environment = os.environ | {
            "SORVANE_RUNTIME_DIR": str(self.folder / "run"),
            "SORVANE_COMMON_PROFILE": str(self.folder / "sorvane.ini"),
            "TZ": "Europe/Warsaw",
        }
        (self.folder / "plant.toml").write_text(PLANT, encoding="utf-8")
        (self.folder / "sorvane.ini").touch()
        (self.folder / "Kalvex.ini").touch()
        server = subprocess.Popen([SORVANED, "--config", self.folder / "plant.toml", "--log-level", "2"],
                                  stderr=subprocess.PIPE,
                                  encoding="utf-8", env=self.environment)
        self.addCleanup(server.stderr.close)
        self.addCleanup(server.wait)
        self.addCleanup(server.kill)
        self.server = server
        self.expect_line("Nasłuchiwanie")

    def expect_line(self, words):
        """Passes over the server's log up to a line with these words."""
        for line in self.server.stderr:
            if words in line:
                return
        self.fail(words)

    def command(self, script, *options):
        return [RUNNER, "--profile", self.folder / "Kalvex.ini", *options, script]

    def run_example(self, script, *options):
        """The record of a script that came to its end."""
        done = subprocess.run(self.command(script, "--json", *options), capture_output=True, encoding="utf-8",
                              timeout=TIME_LIMIT, env=self.environment, cwd=self.folder)
        self.assertEqual((done.returncode, done.stderr), (0, ""), done.stdout)
        return json.loads(done.stdout)

    def run_text(self, text):
        path = self.folder / "skrypt.kx"
        text = "PRIORITY 1\n" + text
        path.write_bytes(text.replace("\n", "\r\n").encode("cp1250"))
        return self.run_example(path)

    def prepare(self, text):
        """Writes on the server; a read behind the writes tells that they are done."""
        return self.run_text(DECLARED + "LIST L\nLOCAL OD\nLOCAL DO\nLOCAL STAN = ZIELONA\n" + text +
                             "GET ZIELONA MREP 1980 1\n:a\nIF NOT READY ZIELONA.MREP GOTO a\n")

    def slots(self, result, name):
        variables = result["scripts"][0]["variables"]
        return next(variable for variable in variables if variable["name"] == name)["slots"]

    def value(self, result, name, slot="CURDATA"):
        return self.slots(result, name)[slot]["value"]

    def text(self, result, name):
        return self.slots(result, name)["CURDATA"]["text"]

    def on_march_10(self, example):
        """The time stands in the past; the run takes as many ticks as the server needs."""
        return self.run_example(EXAMPLES / example, "--clock", "2024-03-10 07:00:00", "--ticks", "1000000000")

    def test_balance_of_the_network(self):
        amounts = {"ZIELONA": 100, "RZECZNA": 50, "POLNA": 25, "LEŚNA": 10}
        self.prepare("".join(hours(name, amount, "2024 3 9 5", "2024 3 10 6") for name, amount in amounts.items()))
        result = self.on_march_10("bilans_sieci.kx")
        self.assertEqual(self.text(result, "OCENA"), "zapisano")
        self.assertEqual(self.value(result, "SUMA"), 185 * 24)
        self.assertEqual(self.value(result, "BRAKI"), 0)
        # SET_BY_USER from the server, SUPERVISORY from the module
        self.assertEqual(self.slots(result, "BILANS")["DREP"]["status"], 32 + 32768)

    def test_corrected_hour(self):
        self.prepare(hours("ZIELONA", 100, "2024 3 8 6", "2024 3 9 5") + "PUT ZIELONA HREP 2024 3 9 4 98765.4\n"
                     "INIT_LOAD ZIELONA DREP 2024 3 8\n")
        result = self.on_march_10("poprawka_godziny.kx")
        self.assertEqual(self.text(result, "OCENA"), "poprawiono")
        self.assertEqual(self.value(result, "BYŁO"), 98765.4)
        self.assertEqual(self.value(result, "JEST"), 2400.5)
        self.assertEqual(self.value(result, "DOBA"), 23 * 100 + 2400.5)
        month = self.run_text(DECLARED + "LOCAL STAN = ZIELONA\nGET ZIELONA MREP 2024 3\n:a\n"
                              "IF NOT READY ZIELONA.MREP GOTO a\nLOCAL M = ZIELONA.MREP\n")
        self.assertEqual(self.value(month, "M"), 23 * 100 + 2400.5)
        written = (self.folder / "poprawki.txt").read_bytes().decode("cp1250")
        self.assertIn("BYŁO:98765.40\r\nJEST:2400.50\r\nDOBA:4700.50\r\n", written)

    def test_sum_at_each_change(self):
        example = subprocess.Popen(self.command(EXAMPLES / "przeliczenie.kx", "--log-level", "2", "--json"),
                                   stdout=subprocess.PIPE, encoding="utf-8", env=self.environment, cwd=self.folder)
        self.addCleanup(example.stdout.close)
        self.addCleanup(example.wait)
        self.addCleanup(example.kill)
        self.expect_line("Rejestracja użytkownika")
        # The example has logged in and may not have asked for the changes yet, so they go on until it has seen one.
        expected = None
        for amount in range(100, 100 + TIME_LIMIT):
            writes = "".join(f"PUT {name} HREP 2024 3 10 6 {amount}.25\n" for name in STATIONS)
            result = self.prepare("REMOTE SIEĆ Gaz@BILANS.GODZINA\n" + writes +
                                  "LOCAL PRÓBA = 0\n:od_nowa\nSLEEP 1\nSET PRÓBA = PRÓBA + 1\n"
                                  "GET SIEĆ HREP 2024 3 10 6\n:b\nIF NOT READY SIEĆ.HREP GOTO b\n"
                                  "LOCAL WYNIK = 0\nIF NOT UNKNOWN SIEĆ.HREP THEN\nSET WYNIK = SIEĆ.HREP\nENDIF\n"
                                  f"IF WYNIK == {4 * amount + 1} GOTO jest\nIF PRÓBA < 5 GOTO od_nowa\n:jest\n")
            expected = 4 * amount + 1
            if self.value(result, "WYNIK") == expected:
                break
        self.assertEqual(self.value(result, "WYNIK"), expected)
        example.send_signal(signal.SIGINT)
        result = json.loads(example.communicate(timeout=TIME_LIMIT)[0])
        self.assertEqual(example.returncode, 3)
        self.assertGreaterEqual(self.value(result, "PRZELICZONE"), 1)
        self.assertEqual(self.value(result, "SUMA"), expected)
        self.assertEqual(self.text(result, "OSTATNIA"), "2024-03-10 06:00")

    def test_export_of_an_archive(self):
        self.prepare("REMOTE P Gaz@Z1.CISNIENIE_WY\nSET OD = MAKE_TIME 2024 3 8 23\nSET DO = MAKE_TIME 2024 3 10\n"
                     "FILL_IN_LIST L 0.4 0 OD DO HREP\nMPUT P ARCH L\n")
        result = self.on_march_10("eksport_archiwum.kx")
        self.assertEqual(self.value(result, "GODZIN"), 24)
        self.assertEqual(self.value(result, "BEZ_DANYCH"), 0)
        written = (self.folder / "archiwum.txt").read_bytes().decode("cp1250")
        content = "ILE:1\r\nNAJMNIEJ:0.40\r\nNAJWIĘCEJ:0.40\r\nŚREDNIA:0.40\r\nWARTOŚCI:0.40\r\n"
        self.assertEqual(written, "".join(f"[2024-03-09_{hour:02}_CET]\r\n" + content for hour in range(24)))


if __name__ == "__main__":
    unittest.main()
