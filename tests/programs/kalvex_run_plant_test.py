#!/usr/bin/env python3
"""kalvex-run with data servers that are not there, or are those of a server's own configuration.

    kalvex_run_plant_test.py PATH_OF_KALVEX_RUN [unittest arguments]
"""
import json
import math
import pathlib
import re
import unittest

from kalvex_run_process import CLOCK, START, VIRTUAL, RunnerTest

EXAMPLES = pathlib.Path(__file__).resolve().parents[2] / "examples"

PLANT = """
[server]
name = "Gaz"
data = "nie/ma"
nobody = "never"

[network]
address = "0.0.0.0:4300"
group = "nie-ma-takiej-grupy"
certificate = "nie.pem"

[[variable]]
name = "Z1.P"
de = "Ciśnienie"
un = "bar"
value = 5.5
min = 0
rt = 2

[[variable]]
name = "Z1.STAN"
type = "int"
value = 7

[[variable]]
name = "UWAGI"
type = "text"
value = "zażółć"

[[variable]]
name = "PUSTA"

[[variables]]
file = "stacje.csv"
"""


class Missing(RunnerTest):
    """A script that wants a server where there is none has no data for ever, and it is said why."""

    WAY = "give --plant FILE for servers that are simulated, or --profile FILE for those that run"

    def test_source_without_plant_and_profile(self):
        run = self.run_scripts("REMOTE C Gaz@Z1.C\nREMOTE Q Gaz@Z1.Q\nREMOTE R łąka@R\nLOCAL A\nSET A = C + 0\n", options=VIRTUAL)
        self.assertEqual(run.err, f'kalvex-run: the data server "Gaz" is never reached: {self.WAY}\n'
                                  f'kalvex-run: the data server "łąka" is never reached: {self.WAY}\n')
        self.assertEqual((run.code, run.script["currentLine"]), (3, 4))

    def test_it_is_said_of_what_takes_no_declaration_too(self):
        run = self.run_scripts("INCLUDE_VAR Gaz Z1*\nLOCAL A\n")
        self.assertEqual((run.code, run.err), (0, f'kalvex-run: the data server "Gaz" is never reached: {self.WAY}\n'))

    def test_script_without_sources_is_told_nothing(self):
        self.assertEqual(self.run_scripts("LOCAL A\n; REMOTE P Gaz@Z1.P\n").err, "")

    def test_source_that_the_plant_does_not_have(self):
        (self.folder / "p.json").write_text('{"sources": {"Gaz": {}}}', encoding="utf-8")
        run = self.run_scripts("REMOTE P Gas@P\nREMOTE Q Gaz@P\n", options=(*VIRTUAL, "--plant", "p.json"))
        self.assertEqual(run.err, 'kalvex-run: the data server "Gas" is never reached: p.json does not have it\n')

    def test_with_a_profile_servers_are_dialled(self):
        (self.folder / "p.ini").write_bytes(b"")
        self.environment["SORVANE_RUNTIME_DIR"] = str(self.folder)
        self.environment["SORVANE_COMMON_PROFILE"] = str(self.folder / "nie.ini")
        run = self.run_scripts("REMOTE P Gaz@Z1.P\n", options=(*VIRTUAL, "--profile", "p.ini"))
        self.assertEqual((run.code, run.err), (0, ""))

    def test_with_a_profile_and_a_plant_nothing_is_dialled(self):
        (self.folder / "p.ini").write_bytes(b"")
        plant = {"sources": {"Gaz": {"variables": {"Z1.P": {"current": [{"atTick": 0, "value": 5}]}}}}}
        (self.folder / "p.json").write_text(json.dumps(plant), encoding="utf-8")
        self.environment["SORVANE_COMMON_PROFILE"] = str(self.folder / "nie.ini")
        text = "REMOTE R Gaz@Z1.P\nREMOTE Q Gas@Q\nLOCAL A\nSET A = R + 0\n"
        run = self.run_scripts(text, options=(*VIRTUAL, "--profile", "p.ini", "--plant", "p.json"))
        self.assertEqual(run.err, 'kalvex-run: the data server "Gas" is never reached: p.json does not have it\n')
        self.assertEqual((run.code, run.value("A")), (0, 5))


class Configuration(RunnerTest):
    """--plant reads the configuration of a data server."""

    def setUp(self):
        super().setUp()
        (self.folder / "plant.toml").write_text(PLANT, encoding="utf-8")
        self.csv("name;un;value;type\nZ2.P;kPa;1;double\nZ2.N;;-3;short\n")

    def csv(self, text):
        (self.folder / "stacje.csv").write_text(text, encoding="utf-8")

    def on(self, text, *options, plant="plant.toml"):
        return self.run_scripts(text, options=(*VIRTUAL, *options, "--plant", plant))

    def test_variables_have_their_values_at_the_first_tick(self):
        run = self.on("REMOTE P Gaz@Z1.P\nREMOTE S Gaz@Z1.STAN\nREMOTE U Gaz@UWAGI\nREMOTE Q Gaz@Z2.P\nREMOTE N Gaz@Z2.N\n"
                      "REMOTE E Gaz@PUSTA\nLOCAL A\nSET A = P + 0\n")  # fmt: skip
        self.assertEqual((run.code, run.err), (0, ""))
        cells = {name: run.cell(name) for name in "PSUQNE"}
        self.assertEqual({name: (cell["type"], cell["value"], cell["time"]) for name, cell in cells.items()}, {
            "P": (171, 5.5, START), "S": (150, 7, START), "U": (190, "zażółć", START), "Q": (171, 1.0, START),
            "N": (140, -3, START), "E": (255, None, 0),
        })  # fmt: skip
        self.assertEqual(run.result["sources"]["Gaz"]["connected"], True)

    def test_definitions_reach_the_scripts(self):
        run = self.on("REMOTE P Gaz@Z1.P\nLOCAL W\nSET W = P + 0\nLOCAL D = P.DESCRIPTION\nLOCAL U = P.UNIT\nLOCAL M = P.MINVAL\n"
                      "LOCAL H = P.ISHREP\nLOCAL R = P.ISDREP\n")  # fmt: skip
        self.assertEqual([run.value(name) for name in "DUMHR"], ["Ciśnienie", "bar", "0", 1, 0])

    def test_names_are_those_that_include_var_finds(self):
        run = self.on("INCLUDE_VAR Gaz Z*\n")
        self.assertEqual([v["name"] for v in run.script["variables"]], ["Z1_P", "Z1_STAN", "Z2_P", "Z2_N"])

    def test_writes_are_published(self):
        run = self.on("REMOTE P Gaz@Z1.P\nREMOTE Q Gaz@Z1.P\nLOCAL A\nSET A = P + 0\nSET P = 8.5\n:w\nIF Q < 8 GOTO w\n")
        self.assertEqual((run.code, run.value("Q")), (0, 8.5))

    def test_server_without_a_name_is_called_as_its_program(self):
        (self.folder / "p.toml").write_text('[[variable]]\nname = "A"\nvalue = 1\n', encoding="utf-8")
        run = self.on("REMOTE A sorvaned@A\nLOCAL B\nSET B = A + 0\n", plant="p.toml")
        self.assertEqual((run.code, run.err, run.value("B")), (0, "", 1))

    def test_signals_move_by_the_clock_of_the_scripts(self):
        self.csv("name,type,value,signal\nS,double,,sine mean=50 amplitude=5 period=600\nC,int,100,counter rate=1.5\n"
                 "W,double,,walk min=0 max=10 step=1\nQ,bool,,square low=0 high=1 period=2\n"
                 "V,double,,walk min=0 max=10 step=1\n")  # fmt: skip
        remotes = "".join(f"REMOTE {name} Gaz@{name}\n" for name in "SCWQV")
        first = "".join(f"LOCAL {name}0\nSET {name}0 = {name} + 0\n" for name in "SCWQ")
        text = "PRIORITY 1\n" + remotes + ":d\nIF UNKNOWN V GOTO d\n" + first + ":w\nGOTO w\n"
        options = ("--until", "2024-03-10 07:00:10", "--tick-ms", "100")
        run = self.on(text, *options)
        self.assertEqual((run.code, run.err, run.result["ticks"]), (0, "", 100))

        def sine(time):
            return 50 + 5 * math.sin(2 * math.pi * (time % 600) / 600)

        # The last second that has begun is the ninth.
        self.assertAlmostEqual(run.value("S0"), sine(START), places=9)
        self.assertAlmostEqual(run.value("S"), sine(START + 9), places=9)
        self.assertEqual((run.value("C0"), run.cell("C")["type"], run.value("C")), (100, 150, 113))
        self.assertEqual((run.value("W0"), run.cell("C")["time"]), (5, START + 9))
        self.assertEqual((run.value("Q0"), run.value("Q")), ((START % 2 == 0), (START + 9) % 2 == 0))
        self.assertNotEqual(run.value("W"), run.value("V"))
        self.assertEqual(self.on(text, *options).out, run.out)

    def test_time_that_a_tick_leaps_over_counts(self):
        self.csv("name,value,signal\nC,1,counter rate=2\n")
        run = self.on("REMOTE C Gaz@C\n:w\nGOTO w\n", "--tick-ms", "60000", "--ticks", "11")
        self.assertEqual(run.value("C"), 1 + 2 * 600)

    def test_clock_that_is_set_back_takes_nothing_off_a_signal(self):
        self.csv("name,value,signal\nC,1,counter rate=2\n")
        run = self.on("REMOTE C Gaz@C\nSETTIME 2024 3 10 6 0 0\n:w\nGOTO w\n", "--tick-ms", "1000", "--ticks", "100")
        # The step back counts as no time, the ticks before and behind it as a second each.
        self.assertEqual(run.value("C"), 1 + 2 * 98)

    def test_example_of_a_server(self):
        names = [line.split(";")[0] for line in (EXAMPLES / "plant/stacje.csv").read_text(encoding="utf-8").splitlines()
                 if line and not line.startswith("#")][1:]  # fmt: skip
        run = self.on("INCLUDE_VAR Gaz\n", plant=str(EXAMPLES / "plant/plant.toml"))
        self.assertEqual((run.code, run.err), (0, ""))
        found = [v["variable"] for v in run.script["variables"]]
        self.assertEqual(sorted(found), sorted([*names, "BILANS.DOBA", "BILANS.GODZINA", "BILANS.UWAGI"]))

    def test_cyclic_example_runs_on_it_for_a_while(self):
        options = ("--clock", CLOCK, "--until", "2024-03-10 07:00:10", "--plant", str(EXAMPLES / "plant/plant.toml"))
        run = self.call("--json", *options, str(EXAMPLES / "pobor.kx"))
        self.assertEqual((run.code, run.err, run.result["ticks"]), (0, "", 10000))
        self.assertEqual((run.value("OBIEGI"), run.value("DOBA")), (5, run.value("ŚREDNI") * 24))

    def assert_refused(self, plant, *lines):
        run = self.on("LOCAL A\n", plant=plant)
        self.assertEqual((run.code, run.out, run.err.splitlines()), (2, "", [f"kalvex-run: {line}" for line in lines]))

    def test_everything_that_is_wrong_is_told(self):
        (self.folder / "z.toml").write_text('[server]\nname = "a b"\n[[variable]]\nname = "A"\nmin = "x"\nkolor = 1\n',
                                            encoding="utf-8")
        self.assert_refused(
            "z.toml",
            "z.toml:2: server.name: oczekiwano nazwy od 1 do 255 znaków, bez odstępów i znaków / \\ @",
            "z.toml:5: variable.min: oczekiwano liczby",
            "z.toml:6: variable.kolor: nieznany klucz",
        )
        self.csv("name;colour\nA;1\n")
        self.assert_refused("plant.toml", "stacje.csv:1: colour: nieznana kolumna")
        (self.folder / "stacje.csv").unlink()
        self.assert_refused("plant.toml", "plant.toml:33: variables.file: stacje.csv: No such file or directory")
        self.assert_refused("nie.toml", "nie.toml: No such file or directory")

    def test_file_of_another_name_is_json(self):
        for name in ("plant.json", "plant.toml.json"):
            (self.folder / name).write_text(PLANT, encoding="utf-8")
            run = self.on("LOCAL A\n", plant=name)
            self.assertEqual((run.code, run.out), (2, ""))
            self.assertRegex(run.err, rf"^kalvex-run: {re.escape(name)}:\d+: ")


if __name__ == "__main__":
    unittest.main()
