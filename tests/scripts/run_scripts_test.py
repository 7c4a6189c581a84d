#!/usr/bin/env python3
"""Tests of run_scripts.py: what it lets pass and what it does not, with a program in kalvex-run's place."""
import json
import pathlib
import sys
import tempfile
import unittest

import run_scripts

RUNNER = """#!{python}
import json, os, pathlib, sys
answer = json.loads({answer!r})
pathlib.Path("wynik.txt").write_bytes("Łąka\\r\\n".encode("cp1250"))
path = os.path.join(os.getcwd(), sys.argv[-1])
for entry in answer["log"]:
    entry["text"] = entry["text"].replace("@", path, 1)
answer["arguments"] = sys.argv[1:]
answer["zone"] = os.environ["TZ"]
answer["beside"] = sorted(os.listdir("."))
print(json.dumps(answer))
sys.exit({exit_code})
"""


def cell(value, code=171, status=0, time=0, text=""):
    return {"type": code, "status": status, "time": time, "value": value, "text": text}


def local(name, **slots):
    every = {slot: cell(None, 255) for slot in run_scripts.SLOTS}
    return {"name": name, "kind": "LOCAL", "slots": every | slots}


START = ("@ : Inicjowanie skryptu ", "@ : Start skryptu ")

ANSWER = {
    "ticks": 7,
    "sources": {"srv": {"requests": [{"op": "Subscribe", "tick": 3, "variable": "Z1"}]}},
    "scripts": [
        {
            "errorCode": 3,
            "errorText": "Q",
            "currentLine": 1,
            "variables": [
                local("A", CURDATA=cell(5.0, status=32, time=1710050400), HREP=cell(7, 150)),
                local("T", CURDATA=cell("zażółć", 190)),
                {"name": "L", "kind": "LIST", "iterator": -1, "elements": [cell(1), cell("x", 190)]},
                {"name": "P", "kind": "POINTER", "target": "A"},
            ],
        }
    ],
}


class ScriptTest(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.folder = pathlib.Path(scratch.name)
        self.script = self.folder / "proba.kx"

    def run_with(self, *instructions, log=(), start=START, exit_code=0):
        """What run_scripts finds for a script of these instructions, without its listing of the log."""
        answer = ANSWER | {"log": [{"text": text, "level": 0} for text in (*start, *log)]}
        runner = self.folder / "runner"
        source = RUNNER.format(python=sys.executable, answer=json.dumps(answer), exit_code=exit_code)
        runner.write_text(source, encoding="utf-8")
        runner.chmod(0o755)
        text = "LOCAL A\r\n" + "".join(f";; {line}\r\n" for line in instructions)
        self.script.write_bytes(text.encode("cp1250"))
        found = run_scripts.run_script(str(runner), self.script)
        return [line for line in found if not line.startswith("log: ") or "expected" in line]

    def refusal_of(self, *instructions):
        with self.assertRaises(run_scripts.Fault) as refusal:
            self.run_with(*instructions)
        return str(refusal.exception)

    def test_everything_as_expected(self):
        found = self.run_with(
            'error: 3 "Q"', "line: 2", "variables: A T L P", "expect: A = 5", "expect: A type = 171",
            "expect: A status = 32", 'expect: A time = local "2024-03-10 07:00:00"', "expect: A.HREP = 7",
            "expect: A.DREP = null", 'expect: T = "zażółć"', 'expect: L = [1, "x"]', "expect: L type = [171, 190]",
            "expect: L iterator = -1", 'expect: P target = "A"', 'expect: P kind = "POINTER"', "result: ticks = 7",
            'result: sources.srv.requests = [{"op": "Subscribe", "variable": "Z1"}]',
            'file: "wynik.txt" = "Łąka\\r\\n"', 'file: "brak.txt" = null',
        )  # fmt: skip
        self.assertEqual(found, [])

    def test_a_wrong_expectation_fails(self):
        for wrong, found in {
            "expect: A = 6": "A: expected 6, got 5.0",
            'expect: A = "5"': 'A: expected "5", got 5.0',
            "expect: A = true": "A: expected true, got 5.0",
            "expect: A.DREP = 0": "A.DREP: expected 0, got null",
            "expect: A type = 150": "A type: expected 150, got 171",
            'expect: A time = local "2024-03-10 08:00:00"': "A time: expected 1710054000, got 1710050400",
            "expect: a = 5": "a: 0 variables are called a",
            "expect: L = [1]": 'L: expected [1], got [1, "x"]',
            'expect: L = ["x", 1]': 'L: expected ["x", 1], got [1, "x"]',
            "expect: P = 5": "P: P is a pointer: expect its target",
            "expect: A colour = 5": "A colour: colour of colour is not there",
            'error: 3 "R"': 'error: expected [3, "R"], got [3, "Q"]',
            'error: 5 "Q"': 'error: expected [5, "Q"], got [3, "Q"]',
            "line: 1": "line: expected 1, got 2",
            "variables: A T L": 'variables: expected ["A", "T", "L"], got ["A", "T", "L", "P"]',
            "exit: 1": "exit: expected 1, got 0",
            "result: ticks = 8": "ticks: expected 8, got 7",
            "result: sources.srv.requests = []": None,
            'result: sources.srv.requests = [{"op": "Make"}]': None,
            'file: "wynik.txt" = "Łąka\\n"': 'file wynik.txt: expected "Łąka\\n", got "Łąka\\r\\n"',
            'file: "wynik.txt" = null': 'file wynik.txt: expected null, got "Łąka\\r\\n"',
        }.items():
            with self.subTest(wrong):
                actual = self.run_with(wrong)
                self.assertEqual(len(actual), 1)
                if found:
                    self.assertEqual(actual[0], found)

    def test_the_log_is_compared_as_a_whole(self):
        line = "@ : Linia 1 - Inny błąd"
        wanted = 'log: "%s : Linia 1 - Inny błąd"'
        self.assertEqual(self.run_with(wanted, log=[line]), [])
        self.assertEqual(len(self.run_with("line: 2", log=[line])), 1)
        self.assertEqual(len(self.run_with(wanted)), 1)
        self.assertEqual(len(self.run_with(wanted, log=[line, line])), 1)
        self.assertEqual(len(self.run_with('log: "Linia 1 - Inny błąd"', log=[line])), 1)

    def test_the_lines_of_the_start_are_held(self):
        line = "@ : Linia 1 - Inny błąd"
        wanted = 'log: "%s : Linia 1 - Inny błąd"'
        for start in (), START[:1], START[1:], START[::-1], (START[0], "@ : Start"), (START[0], *START):
            with self.subTest(start):
                self.assertEqual(len(self.run_with(wanted, start=start, log=[line])), 1)
        self.assertEqual(len(self.run_with(wanted, start=(START[0], line, START[1]))), 1)

    def test_a_log_that_tells_of_the_first_start_is_the_whole_log(self):
        begin, running = 'log: "%s : Inicjowanie skryptu "', 'log: "%s : Start skryptu "'
        self.assertEqual(self.run_with(begin, start=START[:1]), [])
        self.assertEqual(len(self.run_with(begin)), 1)
        self.assertEqual(self.run_with(begin, running), [])
        self.assertEqual(self.run_with(begin, running, begin, running, log=START), [])
        self.assertEqual(len(self.run_with(begin, running, log=START)), 1)

    def test_an_unexpected_exit_status_fails(self):
        self.assertEqual(self.run_with("line: 2", exit_code=3), ["exit: expected 0, got 3"])
        self.assertEqual(self.run_with("exit: 3", exit_code=3), [])

    def test_options_and_zone(self):
        default = '["--json", "--clock", "2024-03-10 07:00:00", "--ticks", "3000", "proba.kx"]'
        self.assertEqual(self.run_with(f"result: arguments = {default}", 'result: zone = "Europe/Warsaw"'), [])
        told = '["--json", "--ticks", "5", "--minimised", "--clock", "2024-03-10 07:00:00", "proba.kx"]'
        self.assertEqual(
            self.run_with("run: --ticks 5 --minimised", "tz: UTC", f"result: arguments = {told}", 'result: zone = "UTC"'),
            [],
        )

    def test_what_stands_beside_the_script(self):
        (self.folder / "proba.d" / "sub").mkdir(parents=True)
        (self.folder / "proba.d" / "sub" / "b.kx").write_bytes(b"")
        (self.folder / "proba.plant.json").write_text("{}")
        found = self.run_with(
            'result: beside = ["proba.kx", "sub", "wynik.txt"]',
            f'result: arguments.5 = "--plant"',
            f'result: arguments.6 = "{(self.folder / "proba.plant.json").resolve()}"',
        )
        self.assertEqual(found, [])

    def test_another_script_is_run_with_what_stands_beside_it(self):
        (self.folder / "inne").mkdir()
        (self.folder / "inne" / "inny.kx").write_bytes(b"LOCAL A\r\n")
        (self.folder / "inne" / "b.kx").write_bytes(b"")
        (self.folder / "proba.actions.json").write_text("[]")
        found = self.run_with(
            "script: inne/inny.kx",
            'result: beside = ["b.kx", "inny.kx", "wynik.txt"]',
            'result: arguments.5 = "--actions"',
            f'result: arguments.6 = "{(self.folder / "proba.actions.json").resolve()}"',
            'result: arguments.7 = "inny.kx"',
        )
        self.assertEqual(found, [])
        with self.assertRaises(FileNotFoundError):
            self.run_with("script: inne/brak.kx", "line: 2")
        self.assertEqual(self.refusal_of("script: inne/inny.kx"), "the script expects nothing")

    def test_a_script_that_tests_nothing_is_refused(self):
        self.assertEqual(self.refusal_of("run: --ticks 5", "tz: UTC"), "the script expects nothing")
        self.assertEqual(self.refusal_of("expct: A = 5"), "line 2: unknown instruction: ;; expct: A = 5")
        self.assertEqual(self.refusal_of("line: 2", "expect A = 5"), "line 3: unknown instruction: ;; expect A = 5")
        self.assertEqual(self.refusal_of("line: 2", "line: 2"), "line 3: a second line")
        self.assertEqual(self.refusal_of("expect: A=5"), 'line 2: no " = " in: A=5')
        self.assertEqual(self.refusal_of("log: Start"), "line 2: no value: Start (Expecting value: line 1 column 1 (char 0))")
        self.assertEqual(self.refusal_of("error: Q"), "line 2: no number: Q")
        self.assertEqual(self.refusal_of("log: 5"), "line 2: no quoted text: 5")
        self.assertEqual(self.refusal_of("line: 2", "tz: Mars/Base"), "line 3: no time zone: Mars/Base")

    def test_the_bytes_of_a_script_are_checked(self):
        self.script.write_bytes(b"LOCAL A\n;; line: 2\r\n")
        with self.assertRaisesRegex(run_scripts.Fault, "a line end is not CR LF"):
            run_scripts.run_script("runner", self.script)
        self.script.write_bytes(b"LOCAL A\x81\r\n;; line: 2\r\n")
        with self.assertRaisesRegex(run_scripts.Fault, "not Windows-1250"):
            run_scripts.run_script("runner", self.script)

    def test_an_answer_that_is_no_json_fails(self):
        self.script.write_bytes(b";; line: 2\r\n")
        with self.assertRaisesRegex(run_scripts.Fault, "exit 0 and no JSON"):
            run_scripts.run_script("true", self.script)


if __name__ == "__main__":
    unittest.main()
