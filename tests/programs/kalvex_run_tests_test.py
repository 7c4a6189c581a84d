#!/usr/bin/env python3
"""kalvex-run --test from outside: which expectations hold, what it prints, JUnit XML, what it refuses.

    kalvex_run_tests_test.py PATH_OF_KALVEX_RUN [unittest arguments]
"""
import json
import signal
import subprocess
import unittest
import xml.etree.ElementTree as xml

from kalvex_run_process import CLOCK, RUNNER, START, TIME_LIMIT_SECONDS, RunnerTest

VARIABLES = 'LOCAL A = 5\nLOCAL T = "łąka"\nLIST L\nADD L A\nADD L T\nPOINTER P\nSETPTR P = "A"\n'


class Tests(RunnerTest):
    def run_tests(self, *paths):
        return self.call("--test", *paths)

    def judge(self, text, *instructions):
        """Exit status and what is told of a script of this text and these instructions."""
        self.write("a.kx", text + "".join(f";; {line}\n" for line in instructions))
        run = self.run_tests("a.kx")
        self.assertEqual(run.err, "")
        first, *lines, last = run.out.splitlines()
        verdict = "ok  " if run.code == 0 else "FAIL"
        self.assertEqual(first, f"{verdict}  a.kx")
        self.assertEqual(last, "1 passed, 0 failed, 0 skipped" if run.code == 0 else "0 passed, 1 failed, 0 skipped")
        return run.code, [line.removeprefix("      ") for line in lines]

    def assert_passes(self, text, *instructions):
        self.assertEqual(self.judge(text, *instructions), (0, []))

    def assert_fails(self, text, instruction, *lines):
        self.assertEqual(self.judge(text, instruction), (1, list(lines)), instruction)


class Expectations(Tests):
    def test_what_is_as_expected_passes(self):
        self.assert_passes(
            VARIABLES, "variables: A T L P", "expect: A = 5", "expect: A = 5.0", "expect: A type = 171",
            "expect: A status = 0", "expect: A.HREP = null", 'expect: T = "łąka"', 'expect: L = [5, "łąka"]',
            "expect: L type = [171, 190]", "expect: L iterator = -1", 'expect: P target = "A"',
            'expect: P kind = "POINTER"', "result: scripts.0.callDepth = 0",
            'result: scripts.0.variables.0 = {"name": "A"}', 'error: 0 ""', "exit: 0", 'file: "brak" = null',
        )  # fmt: skip

    def test_what_is_not_as_expected_is_told_whole(self):
        for instruction, told in {
            "expect: A = 6": "A: expected 6, got 5.0",
            'expect: A = "5"': 'A: expected "5", got 5.0',
            "expect: A = true": "A: expected true, got 5.0",
            "expect: A.HREP = 0": "A.HREP: expected 0, got null",
            "expect: A type = 150": "A type: expected 150, got 171",
            f'expect: A time = local "{CLOCK}"': f"A time: expected {START}, got 0",
            "expect: a = 5": "a: 0 variables are called a",
            'expect: T = "laka"': 'T: expected "laka", got "łąka"',
            "expect: L = [5]": 'L: expected [5], got [5.0,"łąka"]',
            'expect: L = ["łąka", 5]': 'L: expected ["łąka",5], got [5.0,"łąka"]',
            "expect: P = 5": "P: P is a pointer: expect its target",
            "expect: A.ARCH = []": "A.ARCH: A has no archive",
            "expect: A colour = 5": "A colour: colour of colour is not there",
            "result: scripts.1.priority = 50": "scripts.1.priority: 1 of scripts.1.priority is not there",
            "result: scripts.0.priority = 51": "scripts.0.priority: expected 51, got 50",
            'result: scripts.0.variables.0 = {"name": "B"}': None,
            "variables: A T L": 'variables: expected ["A","T","L"], got ["A","T","L","P"]',
            "line: 9": "line: expected 9, got 10",
            'error: 3 ""': 'error: expected [3,""], got [0,""]',
            "exit: 3": "exit: expected 3, got 0",
            'file: "brak" = ""': 'file brak: expected "", got null',
        }.items():
            with self.subTest(instruction):
                code, lines = self.judge(VARIABLES, instruction)
                self.assertEqual((code, len(lines)), (1, 1), lines)
                if told:
                    self.assertEqual(lines, [told])

    def test_everything_that_differs_is_told(self):
        code, lines = self.judge(VARIABLES, "expect: A = 6", "line: 13", "exit: 1", "expect: B = 1")
        told = ["exit: expected 1, got 0", "A: expected 6, got 5.0", "B: 0 variables are called B"]
        self.assertEqual((code, lines), (1, told))

    def test_log_is_compared_as_a_whole_and_told_line_by_line(self):
        text = "SET Q = 1\n"
        line = " : Linia 1 - Zmienna nie została poprawnie zdefiniowana : Q"
        self.assert_passes(text, "exit: 1", f'log: "%s{line}"')
        code, lines = self.judge(text, "exit: 1", f'log: "%s{line}!"', 'log: "i jeszcze"')
        head, *rest = lines
        path = rest[0].removesuffix(" : Inicjowanie skryptu ").strip()
        self.assertTrue(path.startswith("/") and path.endswith("/run/a.kx"), path)
        self.assertEqual((code, head), (1, 'log: "-" is expected and missing, "+" is there and not expected'))
        self.assertEqual(rest, [f"    {path} : Inicjowanie skryptu ", f"    {path} : Start skryptu ", f"  - {path}{line}!",
                                "  - i jeszcze", f"  + {path}{line}"])

    def test_lines_that_both_logs_end_with_are_shown_as_such(self):
        code, lines = self.judge("SET Q = 1\n", "exit: 1", 'log: "obca"',
                                 'log: "%s : Linia 1 - Zmienna nie została poprawnie zdefiniowana : Q"')
        self.assertEqual(code, 1)
        self.assertEqual([line[:4] for line in lines[1:]], ["    ", "    ", "  - ", "    "])

    def test_log_that_tells_of_the_start_is_all_of_it(self):
        begin = 'log: "%s : Inicjowanie skryptu "'
        self.assertEqual(self.judge("LOCAL A\n", begin)[0], 1)
        self.assertEqual(self.judge("LOCAL A\n", begin, 'log: "%s : Start skryptu "')[0], 0)

    def test_options_zone_and_clock(self):
        now = "LOCAL A = TIME\n:w\nGOTO w\n"
        self.assert_passes(now, "exit: 3", "result: ticks = 3000", f'expect: A = local "{CLOCK}"')
        self.assert_passes(now, "exit: 3", "run: --ticks 5 --minimised", "result: ticks = 5",
                           "result: scripts.0.minimised = true")
        self.assert_passes(now, "tz: UTC", "exit: 3", f'expect: A = local "{CLOCK}"', f"expect: A = {START + 3600}")
        self.assert_passes(now, 'run: --clock "2024-07-01 12:00:00" --ticks 9', "exit: 3",
                           'expect: A = local "2024-07-01 12:00:00"')
        self.assert_passes("LOCAL A = SORVANE_USER_DESCRIPTION\n", "run: --user 'jan:Jan \"\\Żak' ",
                           'expect: A = "Jan \\"\\\\Żak"')
        self.assert_passes("LOCAL A = SORVANE_USER_DESCRIPTION\n", 'run: --user jan:Jan\\ "\\"Żak\\n"',
                           'expect: A = "Jan \\"Żak\\\\n"')

    def test_files_are_written_in_a_scratch_folder(self):
        text = 'LOCAL A = 5\nWRITE_FILE "wynik.txt" 1 -A A\n'
        code, lines = self.judge(text, 'file: "wynik.txt" = "A"')
        self.assertEqual((code, lines), (1, ['file wynik.txt: expected "A", got "[1]\\r\\nA:5.00\\r\\n"']))
        self.assert_passes(text, 'file: "wynik.txt" = "[1]\\r\\nA:5.00\\r\\n"')
        self.assertEqual([path.name for path in self.folder.iterdir()], ["a.kx"])

    def test_what_stands_beside_the_script(self):
        (self.folder / "a.d").mkdir()
        (self.folder / "a.d" / "dod.kx").write_bytes(b"LOCAL B = 7\r\n")
        (self.folder / "a.actions.json").write_text('[{"atTick": 9, "script": 0, "do": "stop"}]', encoding="utf-8")
        plant = {"sources": {"srv": {"variables": {"V": {"current": [{"atTick": 0, "value": 2}]}}}}}
        (self.folder / "a.plant.json").write_text(json.dumps(plant), encoding="utf-8")
        stop = 'log: "%s : Stop skryptu "'
        self.assert_passes("PRIORITY 1\nINCLUDE dod.kx\nREMOTE V srv@V\n:w\nGOTO w\n", "expect: B = 7", "expect: V = 2",
                           "result: ticks = 9", stop)
        (self.folder / "a.plant.json").unlink()
        (self.folder / "a.plant.toml").write_text('[server]\nname = "srv"\n[[variable]]\nname = "V"\nvalue = 3\n',
                                                  encoding="utf-8")
        self.assert_passes("PRIORITY 1\nREMOTE V srv@V\n:w\nGOTO w\n", "expect: V = 3", "result: ticks = 9", stop)

    def test_another_script_with_what_stands_beside_it(self):
        (self.folder / "plant").mkdir()
        (self.folder / "plant" / "dod.kx").write_bytes(b"LOCAL B = 7\r\n")
        (self.folder / "plant" / "stacja.kx").write_bytes(b"INCLUDE dod.kx\r\n")
        self.assert_passes("", "script: plant/stacja.kx", "expect: B = 7")
        code, lines = self.judge("", "script: plant/brak.kx", "line: 1")
        self.assertEqual((code, lines), (1, ["plant/brak.kx: No such file or directory"]))

    def test_failure_tells_what_came_on_standard_error(self):
        code, lines = self.judge("REMOTE V srv@V\n", "exit: 1")
        self.assertEqual((code, lines), (1, [
            "exit: expected 1, got 0",
            'standard error: kalvex-run: the data server "srv" is never reached: give --plant FILE for servers that are '
            "simulated, or --profile FILE for those that run",
        ]))  # fmt: skip

    def test_run_that_comes_to_nothing_is_a_failure(self):
        self.assert_fails("LOCAL A\n;; line: 2\n", "run: --tick 5", "exit 2 and no result",
                          "kalvex-run: unknown option --tick, did you mean --ticks?")
        self.assert_fails("LOCAL A\n;; line: 2\n", "run: --plant nie.json", "exit 2 and no result",
                          "kalvex-run: nie.json: No such file or directory")

    def test_instructions_that_are_wrong(self):
        for instruction, told in {
            "expct: A = 5": "line 2: unknown instruction: ;; expct: A = 5",
            "expect A = 5": "line 2: unknown instruction: ;; expect A = 5",
            "run: --ticks 5": "the script expects nothing",
            "expect: A=5": 'line 2: no " = " in: A=5',
            "log: Start": "line 2: no value: Start",
            "log: 5": "line 2: no quoted text: 5",
            "error: Q": "line 2: no number: Q",
            "exit: -1": "line 2: no number: -1",
            "tz: Mars/Base": "line 2: no time zone: Mars/Base",
            "tz: ../../../etc/hostname": "line 2: no time zone: ../../../etc/hostname",
            'expect: A = local "2024-02-30 07:00:00"': "line 2: no time: 2024-02-30 07:00:00",
            'run: "--ticks': 'line 2: an open quote: "--ticks',
        }.items():
            with self.subTest(instruction):
                self.assert_fails("LOCAL A\n", instruction, told)
        self.assertEqual(self.judge("LOCAL A\n", "line: 2", "line: 2"), (1, ["line 3: a second line"]))


class Folders(Tests):
    def setUp(self):
        super().setUp()
        for name in ("b", "a", "c.d"):
            (self.folder / "t" / name).mkdir(parents=True)
        for name in ("z", "b/1", "a/2", "c.d/3"):
            self.write(f"t/{name}.kx", "LOCAL A\n;; expect: A = null\n")

    def test_scripts_of_folders_are_run_in_order(self):
        run = self.run_tests("t", "t/b/1.kx")
        self.assertEqual((run.code, run.err), (0, ""))
        self.assertEqual(run.out, "ok    t/a/2.kx\nok    t/b/1.kx\nok    t/z.kx\nok    t/b/1.kx\n"
                                  "4 passed, 0 failed, 0 skipped\n")

    def test_one_failure_is_enough(self):
        self.write("t/a/2.kx", "LOCAL A\n;; expect: A = 1\n")
        run = self.run_tests("t")
        self.assertEqual((run.code, run.err), (1, ""))
        self.assertEqual(run.out, "FAIL  t/a/2.kx\n      A: expected 1, got null\nok    t/b/1.kx\nok    t/z.kx\n"
                                  "2 passed, 1 failed, 0 skipped\n")

    def test_script_without_instructions_is_passed_over_unless_it_is_named(self):
        self.write("t/a/2.kx", "LOCAL A\n; expect: A = 1\n")
        self.assertEqual(self.run_tests("t").out, "skip  t/a/2.kx: no expectations\nok    t/b/1.kx\nok    t/z.kx\n"
                                             "2 passed, 0 failed, 1 skipped\n")
        run = self.run_tests("t/a/2.kx", "t/z.kx")
        self.assertEqual((run.code, run.out), (1, "FAIL  t/a/2.kx\n      no expectations\nok    t/z.kx\n"
                                                  "1 passed, 1 failed, 0 skipped\n"))

    def test_what_cannot_be_tested_is_refused(self):
        (self.folder / "pusty").mkdir()
        (self.folder / "u").mkdir()
        self.write("u/x.kx", "LOCAL A\n")
        for paths, out, reason in (
            ((), "", "no script is named"),
            (("t", "nie"), "", "nie: No such file or directory"),
            (("t", "pusty"), "", "pusty: no script is there"),
            (("u",), "skip  u/x.kx: no expectations\n0 passed, 0 failed, 1 skipped\n", "no script has expectations"),
            (("--ticks", "5", "t"), "", '--test takes no --ticks: a script names its own behind ";; run:"'),
            (("--json", "t"), "", '--test takes no --json: a script names its own behind ";; run:"'),
        ):
            with self.subTest(paths):
                run = self.run_tests(*paths)
                self.assertEqual((run.code, run.out, run.err), (2, out, f"kalvex-run: {reason}\n"))
        lone = self.call("--junit", "x.xml", "t/z.kx")
        self.assertEqual((lone.code, lone.out, lone.err), (2, "", "kalvex-run: --junit goes with --test\n"))

    def test_language_of_the_environment_changes_nothing(self):
        self.environment.update(LANGUAGE="en", LC_ALL="en_US.UTF-8", TZ="Asia/Tokyo")
        self.assertEqual(self.run_tests("t").code, 0)

    def test_signal_ends_the_tests_and_the_one_that_runs_does_not_count(self):
        self.write("t/a/2.kx", ":w\nGOTO w\n;; exit: 3\n;; run: --clock \"2024-03-10 07:00:00\" --ticks 4000000000\n")
        self.write("t/a/1.kx", "LOCAL A\n;; expect: A = null\n")
        with subprocess.Popen([RUNNER, "--test", "t"], cwd=self.folder, env=self.environment, stdout=subprocess.PIPE) as tests:
            self.assertEqual(tests.stdout.readline(), b"ok    t/a/1.kx\n")
            tests.send_signal(signal.SIGTERM)
            rest = tests.stdout.read().decode("utf-8")
            self.assertEqual(tests.wait(TIME_LIMIT_SECONDS), 1)
        self.assertEqual(rest, "1 passed, 0 failed, 0 skipped, interrupted\n")


class JUnit(Tests):
    def test_every_script_is_a_case(self):
        (self.folder / "t").mkdir()
        self.write("t/a.kx", "LOCAL A\n;; expect: A = null\n")
        self.write("t/b.kx", 'LOCAL A = "x"\n;; expect: A = "<&\\u0001"\n;; line: 1\n')
        self.write("t/c.kx", "LOCAL A\n")
        self.write("t/d.kx", "LOCAL A\n;; nic\n")
        self.write("e.kx", ";; exit: 0\n")
        run = self.call("--test", "--junit", "wynik.xml", "t", "e.kx")
        self.assertEqual((run.code, run.err), (1, ""))
        self.assertEqual(run.out.splitlines()[-1], "2 passed, 2 failed, 1 skipped")
        root = xml.parse(self.folder / "wynik.xml").getroot()
        suite, = root
        self.assertEqual((root.tag, suite.tag, suite.get("name")), ("testsuites", "testsuite", "kalvex-run"))
        self.assertEqual([suite.get(name) for name in ("tests", "failures", "errors", "skipped")], ["5", "1", "1", "1"])
        cases = [(case.get("classname"), case.get("name"), [child.tag for child in case]) for case in suite]
        self.assertEqual(cases, [("t", "a", []), ("t", "b", ["failure"]), ("t", "c", ["skipped"]), ("t", "d", ["error"]),
                                 (".", "e", [])])
        told = {case.get("name"): (child.get("message"), child.text) for case in suite for child in case}
        first = r'A: expected "<&\u0001", got "x"'
        self.assertEqual(told, {"b": (first, first + "\nline: expected 1, got 5"),
                                "c": ("no expectations", "no expectations"),
                                "d": ("line 2: unknown instruction: ;; nic",) * 2})
        for timed in (suite, *suite):
            self.assertRegex(timed.get("time"), r"^\d+\.\d{3}$")

    def test_file_that_cannot_be_written(self):
        self.write("a.kx", ";; exit: 0\n")
        run = self.call("--test", "--junit", "nie/wynik.xml", "a.kx")
        self.assertEqual((run.code, run.out), (2, "ok    a.kx\n1 passed, 0 failed, 0 skipped\n"))
        self.assertEqual(run.err, "kalvex-run: nie/wynik.xml: No such file or directory\n")


if __name__ == "__main__":
    unittest.main()
