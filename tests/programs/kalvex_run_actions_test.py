#!/usr/bin/env python3
"""kalvex-run from outside: what an action file does to its scripts, and a profile.

    kalvex_run_actions_test.py PATH_OF_KALVEX_RUN [unittest arguments]
"""
import unittest

from kalvex_run_process import CLOCK, VIRTUAL, RunnerTest, at


class Actions(RunnerTest):
    def test_action_still_due_keeps_the_run_alive(self):
        run = self.run_scripts("LOCAL A", actions=[at(700, "restore")])
        self.assertEqual((run.code, run.result["ticks"]), (0, 700))

    def test_action_beyond_the_limit_never_comes(self):
        run = self.run_scripts("LOCAL A", actions=[at(2001, "reset")])
        self.assertEqual((run.code, run.result["ticks"]), (3, 2000))
        self.assertTrue(run.script["finished"])

    def test_action_happens_before_the_tick_of_its_number(self):
        # The second line is due in tick 51.
        at_51 = self.run_scripts("LOCAL A\nLOCAL B", actions=[at(51, "stop")])
        at_52 = self.run_scripts("LOCAL A\nLOCAL B\nLOCAL C", actions=[at(52, "stop")])
        self.assertEqual([at_51.script["currentLine"], at_52.script["currentLine"]], [1, 2])

    def test_stop_and_start_keep_the_state(self):
        run = self.run_scripts("LOCAL A = 1\nSET A = A + 1", actions=[at(20, "stop"), at(300, "start")])
        self.assertEqual((run.code, run.value("A")), (0, 2))
        path = str(self.folder / "a.kx")
        words = ("Inicjowanie", "Start", "Stop", "Inicjowanie", "Start")
        self.assertEqual(run.log, [f"{path} : {word} skryptu " for word in words])

    def test_reset_and_start_begin_anew(self):
        text = "LOCAL N = 0\nSET N = N + 1\n"
        run = self.run_scripts(text, actions=[at(500, "reset"), at(600, "start")])
        self.assertEqual((run.code, run.value("N")), (0, 1))
        self.assertEqual(run.result["log"][2]["text"], str(self.folder / "a.kx") + " : Reset skryptu ")

    def test_start_that_is_refused(self):
        run = self.run_scripts("LOCAL A\nENDIF", actions=[at(5, "start")])
        self.assertEqual((run.code, run.result["ticks"]), (2, 5))
        self.assertFalse(run.script["started"])

    def test_step_runs_one_line_before_the_run_ends(self):
        actions = [at(10, "stop"), at(20, "step")]
        run = self.run_scripts("LOCAL A\nLOCAL B\nLOCAL C", actions=actions)
        self.assertEqual((run.code, run.script["currentLine"]), (0, 2))
        self.assertFalse(run.script["stepRequested"])
        self.assertEqual(run.result["ticks"], 51)

    def test_step_of_a_running_script_stays_idle(self):
        run = self.run_scripts("LOCAL A", actions=[at(10, "step")])
        self.assertEqual((run.code, run.result["ticks"]), (0, 10))
        self.assertTrue(run.script["stepRequested"])

    def test_breakpoint_toggles(self):
        twice = [at(1, "breakpoint", line=1), at(1, "breakpoint", line=1)]
        self.assertTrue(self.run_scripts("LOCAL A\nLOCAL B", actions=twice).script["finished"])
        once = self.run_scripts("LOCAL A\nLOCAL B", actions=twice[:1])
        self.assertEqual([once.script["paused"], once.script["currentLine"]], [True, 1])

    def test_breakpoint_stops_at_each_pass(self):
        text = "LOCAL N = 0\n:w\nSET N = N + 1\nGOTO w\n"
        actions = [at(1, "breakpoint", line=2), at(200, "start"), at(400, "start")]
        run = self.run_scripts(text, actions=actions)
        self.assertEqual((run.code, run.value("N"), run.script["currentLine"]), (0, 2, 2))

    def test_actions_reach_the_script_that_they_name(self):
        run = self.run_scripts(":w\nGOTO w\n", ":w\nGOTO w\n", actions=[at(5, "stop", 1), at(9, "stop", 0)])
        self.assertEqual(run.result["ticks"], 9)
        self.assertEqual(run.log[4:], [f"{self.folder}/{name}.kx : Stop skryptu " for name in "ba"])

    def test_minimise_and_restore(self):
        text = "PRIORITY 1\nLOCAL N = 0\n:w\nSET N = N + 1\nGOTO w\n"
        options = ("--clock", CLOCK, "--ticks", "3")
        minimised = self.run_scripts(text, options=options, actions=[at(2, "minimise")])
        self.assertTrue(minimised.script["minimised"])
        # Ten lines a tick, or twenty: the loop counts as above.
        self.assertEqual(minimised.value("N"), (10 + 20 + 20 - 3 + 1) // 2)
        restored = self.run_scripts(text, options=options, actions=[at(2, "minimise"), at(3, "restore")])
        self.assertFalse(restored.script["minimised"])
        self.assertEqual(restored.value("N"), (10 + 20 + 10 - 3 + 1) // 2)

    def test_set_value_takes_the_operators_forms(self):
        names = "ABCDEF"
        texts = ("12.5", '"12.5"', "*", "$", "#7", "")
        actions = [at(400, "setValue", variable=name, text=text) for name, text in zip(names, texts)]
        run = self.run_scripts("\n".join(f"LOCAL {name} = 1" for name in names), actions=actions)
        cells = [run.cell(name) for name in names]
        self.assertEqual(run.err, "")
        self.assertEqual([cell["value"] for cell in cells], [12.5, "12.5", 0, 0, 7, 1])
        self.assertEqual([cell["status"] for cell in cells], [0, 0, 1, 545, 2080, 0])

    def test_set_value_reaches_through_a_pointer_and_into_a_list(self):
        text = 'LOCAL ŁĄKA\nPOINTER W\nSETPTR W = "ŁĄKA"\nLIST L\nADD L 1\nADD L 2\nMOVE_TO L 1'
        actions = [at(400, "setValue", variable=name, text=f'"{name}"') for name in "WL"]
        run = self.run_scripts(text, actions=actions)
        self.assertEqual(run.value("ŁĄKA"), "W")
        elements = next(v for v in run.script["variables"] if v["name"] == "L")["elements"]
        self.assertEqual([cell["value"] for cell in elements], [1, "L"])

    def test_set_value_is_seen_by_a_line_that_sleeps(self):
        run = self.run_scripts('LOCAL T = "30"\nSLEEP T', actions=[at(400, "setValue", variable="T", text='"abc"')])
        self.assertEqual((run.code, run.err), (1, ""))
        self.assertEqual((run.script["currentLine"], run.script["errorCode"]), (1, 11))

    def test_breakpoint_behind_the_script_is_told(self):
        actions = [at(1, "breakpoint", line=1), at(6, "breakpoint", line=2), at(7, "breakpoint", line=99)]
        run = self.run_scripts("LOCAL A\nLOCAL B", actions=actions)
        path = f"{self.folder}/a.kx"
        self.assertEqual(run.err, "".join(
            f"kalvex-run: tick {tick}: {path} has no line {line} for a breakpoint: its lines are 0 to 1\n"
            for tick, line in ((6, 2), (7, 99))))
        self.assertEqual((run.code, run.script["currentLine"]), (2, 1))

    def test_set_value_to_no_value_is_told(self):
        texts = ("abc", '"abc', "#", "**", "=5", " ")
        actions = [at(400, "setValue", variable="A", text=text) for text in texts]
        run = self.run_scripts("LOCAL A = 5", actions=actions)
        self.assertEqual(run.err, "".join(
            f"kalvex-run: tick 400: {self.folder}/a.kx: {text} is no value for A: a number, a text in double quotes, "
            "* or $ was expected\n" for text in texts))
        self.assertEqual((run.code, run.value("A")), (2, 5))

    def test_set_value_where_none_can_be_is_told(self):
        actions = [at(400, "setValue", variable=name, text="1") for name in "WL"]
        run = self.run_scripts("POINTER W\nLIST L", actions=actions)
        self.assertEqual(run.err, "".join(
            f"kalvex-run: tick 400: {self.folder}/a.kx: {name} takes no value by then\n" for name in "WL"))
        self.assertEqual(run.code, 2)

    def test_set_value_of_no_variable_is_told(self):
        run = self.run_scripts("LOCAL A", actions=[at(400, "setValue", variable="Ż", text="1")])
        self.assertEqual(run.code, 2)
        self.assertEqual(run.err, f"kalvex-run: tick 400: {self.folder}/a.kx has no variable Ż to set\n")
        self.assertEqual(run.script["errorCode"], 0)


class Profile(RunnerTest):
    WAITING = "LOCAL A = 1\nSET A = A.ARCH\n"  # a wait is an event

    def run_with(self, text, *options, profile=""):
        self.write("Kalvex.ini", profile)
        return self.run_scripts(text, options=(*VIRTUAL, "--profile", "Kalvex.ini", *options))

    def test_gives_the_log_level(self):
        self.assertEqual(len(self.run_with(self.WAITING).log), 2)
        self.assertEqual(len(self.run_with(self.WAITING, profile="[Log]\nRodzaj=2\n").log), 3)

    def test_gives_way_to_the_log_level_of_the_command_line(self):
        run = self.run_with(self.WAITING, "--log-level", "1", profile="[Log]\nRodzaj=2\n")
        self.assertEqual(len(run.log), 2)

    def test_gives_the_folder_of_data_files(self):
        (self.folder / "dane").mkdir()
        run = self.run_with(
            "LOCAL A = 5\nSET_FILE \"plik.txt\" \"S\" A -A A\n", profile="[Konfiguracja]\nKatalog główny=dane\n"
        )
        self.assertEqual(run.code, 0, run.out)
        self.assertTrue((self.folder / "dane" / "plik.txt").exists())
        self.assertFalse((self.folder / "plik.txt").exists())

    def test_is_left_as_it_was(self):
        run = self.run_with("LOCAL A\n", profile="[Zrodla]\nZrodlo0=srv,jan,(&!&\n")
        self.assertEqual(run.code, 0)
        self.assertEqual((self.folder / "Kalvex.ini").read_bytes(), b"[Zrodla]\r\nZrodlo0=srv,jan,(&!&\r\n")
        self.assertEqual({path.name for path in self.folder.iterdir()}, {"Kalvex.ini", "a.kx"})

    def test_that_cannot_be_read_is_refused(self):
        run = self.run_scripts("LOCAL A\n", options=(*VIRTUAL, "--profile", "brak.ini"))
        self.assertEqual((run.code, run.out), (2, ""))
        self.assertEqual(run.err, "kalvex-run: brak.ini: No such file or directory\n")

    def test_that_is_binary_is_refused(self):
        (self.folder / "Kalvex.ini").write_bytes(b"[Log]\0")
        run = self.run_scripts("LOCAL A\n", options=(*VIRTUAL, "--profile", "Kalvex.ini"))
        self.assertEqual((run.code, run.out), (2, ""))
        self.assertEqual(run.err, "kalvex-run: Kalvex.ini: it is a binary file and no text\n")

    def test_faults_are_lines_of_the_log(self):
        run = self.run_with("LOCAL A\n", profile="[Log]\nRodzaj=dwa\n")
        self.assertEqual(run.log[0], "Plik Kalvex.ini, wiersz 2, [Log] Rodzaj: oczekiwano liczby całkowitej od 0 do 3")


if __name__ == "__main__":
    unittest.main()
