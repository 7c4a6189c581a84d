#!/usr/bin/env python3
"""kalvex-run from outside: its options, its exit status, what it prints.

    kalvex_run_test.py PATH_OF_KALVEX_RUN [unittest arguments]
"""
import datetime
import json
import os
import pathlib
import re
import resource
import signal
import subprocess
import unittest

from kalvex_run_process import CLOCK, RUNNER, SCRIPT_FIELDS, START, TIME_LIMIT_SECONDS, VIRTUAL, RunnerTest, at


MEMORY = 400 << 20


def limit_memory():
    resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))


class Memory(RunnerTest):
    def test_line_without_memory_fails_alone(self):
        text = " + (".join(["S"] * 60) + ")" * 59
        self.write("a.kx", 'LOCAL S = "x"\nLOCAL T = 1\nLOCAL N = 0\nPRIORITY 1\n:w\nSET S = S + S\nSET N = N + 1\n'
                           f"IF N < 23 GOTO w\nSET T = {text}\n")
        self.write("b.kx", "LOCAL N = 0\n:w\nSET N = N + 1\nIF N < 5 GOTO w\n")
        def limited(*arguments):
            return subprocess.run([RUNNER, *arguments], cwd=self.folder, env=self.environment, capture_output=True,
                                  timeout=TIME_LIMIT_SECONDS, preexec_fn=limit_memory)
        if limited("--version").returncode != 0:
            self.skipTest("a sanitized program takes more addresses")
        ended = limited("--json", *VIRTUAL, "a.kx", "b.kx")
        self.assertEqual((ended.returncode, ended.stderr), (1, b""))
        first, second = json.loads(ended.stdout)["scripts"]
        self.assertEqual((first["errorCode"], first["errorText"]), (16, "brak pamięci"))
        self.assertEqual(first["currentLine"], 8)
        self.assertEqual(first["variables"][1]["slots"]["CURDATA"]["value"], 1)
        self.assertTrue(second["finished"])


class ExitStatus(RunnerTest):
    def test_finished(self):
        run = self.run_scripts("LOCAL A = 1\nLOCAL B = 2\n")
        self.assertEqual(run.code, 0)
        self.assertEqual(run.err, "")
        self.assertTrue(run.script["finished"])
        # The second line comes 50 ticks after the first, the empty one behind it after 50 more.
        self.assertEqual(run.result["ticks"], 101)
        self.assertEqual(run.script["currentLine"], 3)
        self.assertEqual(run.script["lineCount"], 3)

    def test_finished_at_the_very_limit(self):
        self.assertEqual(self.run_scripts("LOCAL A\n", options=("--clock", CLOCK, "--ticks", "51")).code, 0)
        self.assertEqual(self.run_scripts("LOCAL A\n", options=("--clock", CLOCK, "--ticks", "50")).code, 3)

    def test_standing_error_even_at_the_limit(self):
        run = self.run_scripts("SET Q = 1\n")
        self.assertEqual(run.code, 1)
        self.assertTrue(run.script["errorStanding"])
        self.assertEqual(run.result["ticks"], 2000)

    def test_fatal_error_ends_the_run(self):
        run = self.run_scripts("GOTO brak\n")
        self.assertEqual(run.code, 1)
        self.assertTrue(run.script["paused"])
        self.assertEqual(run.result["ticks"], 1)

    def test_wait_is_no_failure(self):
        run = self.run_scripts("LOCAL A = 1\nSET A = A.ARCH\n")
        self.assertEqual(run.code, 3)
        self.assertEqual(run.script["errorCode"], 27)

    def test_limit(self):
        run = self.run_scripts(":w\nGOTO w\n")
        self.assertEqual(run.code, 3)
        self.assertEqual(run.result["ticks"], 2000)

    def test_limit_of_a_virtual_run_is_a_million(self):
        run = self.run_scripts(":w\nGOTO w\n", options=("--clock", CLOCK))
        self.assertEqual((run.code, run.result["ticks"]), (3, 1000000))

    def test_no_tick_at_all(self):
        run = self.run_scripts("LOCAL A\n", options=("--clock", CLOCK, "--ticks", "0"))
        self.assertEqual((run.code, run.result["ticks"], run.script["currentLine"]), (3, 0, 0))
        self.assertTrue(run.script["started"])

    def test_refused_start_outweighs_an_error(self):
        run = self.run_scripts("ENDIF\n", "SET Q = 1\n")
        self.assertEqual(run.code, 2)
        refused, failing = run.result["scripts"]
        self.assertFalse(refused["started"])
        self.assertFalse(refused["finished"])
        self.assertTrue(failing["errorStanding"])

    def test_refused_script_alone_needs_no_tick(self):
        run = self.run_scripts("ENDIF\n")
        self.assertEqual((run.code, run.result["ticks"]), (2, 0))

    def test_error_outweighs_the_limit(self):
        self.assertEqual(self.run_scripts("GOTO brak\n", ":w\nGOTO w\n").code, 1)

    def test_error_outweighs_an_end(self):
        self.assertEqual(self.run_scripts("LOCAL A\n", "GOTO brak\n").code, 1)

    def test_stopped_by_an_action_counts_as_finished(self):
        run = self.run_scripts(":w\nGOTO w\n", actions=[at(10, "stop")])
        self.assertEqual(run.code, 0)
        self.assertEqual(run.result["ticks"], 10)
        self.assertTrue(run.script["paused"])
        self.assertFalse(run.script["finished"])

    def test_stopped_by_a_breakpoint_counts_as_finished(self):
        run = self.run_scripts("LOCAL A\nLOCAL B\n", actions=[at(1, "breakpoint", line=1)])
        self.assertEqual((run.code, run.result["ticks"], run.script["currentLine"]), (0, 1, 1))

    def test_reset_by_an_action_counts_as_finished(self):
        run = self.run_scripts("SET Q = 1\n", actions=[at(10, "reset")])
        self.assertEqual((run.code, run.result["ticks"]), (0, 10))
        self.assertEqual([run.script[field] for field in ("running", "paused", "errorStanding")], [False] * 3)

    def test_stop_on_a_failing_line_is_a_failure(self):
        self.assertEqual(self.run_scripts("SET Q = 1\n", actions=[at(10, "stop")]).code, 1)

    def test_step_that_fails_is_a_failure(self):
        breaks = at(1, "breakpoint", line=1)
        failing = self.run_scripts("LOCAL A\nSET Q = 1\n", actions=[breaks, at(60, "step")])
        self.assertEqual((failing.code, failing.script["currentLine"]), (1, 1))
        self.assertFalse(failing.script["errorStanding"])
        good = self.run_scripts("LOCAL A\nSET A = 1\n", actions=[breaks, at(60, "step")])
        self.assertEqual((good.code, good.script["currentLine"]), (0, 2))

    def test_end_behind_an_else_without_endif_is_an_end(self):
        text = "ELSE\n"
        alone = self.run_scripts(text)
        beside = self.run_scripts(text, "LOCAL A\nLOCAL B\nLOCAL C\n")
        self.assertEqual((alone.code, beside.code), (0, 0))
        for run in (alone, beside):
            self.assertEqual((run.script["finished"], run.script["errorCode"]), (True, 13))
            self.assertTrue(run.log[-1].endswith("Błąd w zapisie funkcji"), run.log)
        self.write("a.kx", text)
        self.assertTrue(self.call(*VIRTUAL, "a.kx").out.endswith("/a.kx : finished\n"))

    def test_good_step_to_line_65535(self):
        text = "GOTO k\n" + "\n" * 65531 + ":k\nLOCAL A = 1\n:x\nLOCAL B = 1\n"
        breaks = at(1, "breakpoint", line=65533)
        run = self.run_scripts(text, actions=[breaks, at(60, "step"), at(120, "step")])
        self.assertEqual((run.code, run.script["currentLine"], run.value("A")), (0, 65535, 1))
        failing = text.replace("LOCAL B", "SET B")
        steps = [at(tick, "step") for tick in (60, 120, 180)]
        run = self.run_scripts(failing, actions=[breaks, *steps])
        self.assertEqual((run.code, run.script["currentLine"]), (1, 65535))

    def test_breakpoint_behind_the_last_line_is_refused_and_stops_nothing(self):
        run = self.run_scripts("LOCAL A\nLOCAL B", actions=[at(1, "breakpoint", line=2), at(500, "restore")])
        self.assertEqual((run.code, run.result["ticks"]), (2, 500))
        self.assertEqual([run.script[f] for f in ("running", "paused", "finished")], [True, False, True])
        self.assertEqual(len(run.log), 2)

    def test_step_that_waits_is_no_failure(self):
        text = "LOCAL A\nSET A = A.ARCH\n"
        run = self.run_scripts(text, actions=[at(1, "breakpoint", line=1), at(60, "step")])
        self.assertEqual((run.code, run.script["errorCode"]), (0, 27))

    def test_signals_count_as_the_limit(self):
        self.write("a.kx", ":w\nGOTO w\n")
        for number in (signal.SIGINT, signal.SIGTERM):
            with subprocess.Popen(
                [RUNNER, "a.kx"], cwd=self.folder, env=self.environment, stdout=subprocess.PIPE
            ) as running:
                lines = [running.stdout.readline().decode("utf-8") for _ in range(2)]
                self.assertTrue(lines[1].endswith("a.kx : Start skryptu \n"), lines)
                running.send_signal(number)
                rest = running.stdout.read().decode("utf-8")
                self.assertEqual(running.wait(TIME_LIMIT_SECONDS), 3)
            self.assertRegex(rest, rf"^\n{re.escape(str(self.folder))}/a\.kx : at line [12]\n$")

    def test_failed_check_is_logged_though_no_script_asks_for_its_result(self):
        self.write("a.kx", 'HTTP_INIT "127.0.0.1" 1\n:w\nGOTO w\n')
        with subprocess.Popen(
            [RUNNER, "a.kx"], cwd=self.folder, env=self.environment, stdout=subprocess.PIPE
        ) as running:
            lines = [running.stdout.readline().decode("utf-8") for _ in range(3)]
            running.send_signal(signal.SIGTERM)
            running.stdout.read()
        self.assertEqual(lines[2][20:], "Wystąpił błąd podczas próby zestawienia połączenia z serwerem http "
                                        "127.0.0.1. Connection refused\n")


CYCLE = "LOCAL N = 0\n:w\nSET N = N + 1\nGOTO w\n"


class Until(RunnerTest):
    """--until: the run ends with 0 when the clock gets there, whatever its scripts are at."""

    def until(self, time, *texts, options=("--clock", CLOCK)):
        return self.run_scripts(*texts, options=(*options, "--until", time))

    def test_cyclic_script_ends_well_at_that_moment(self):
        run = self.until("2024-03-10 07:00:03", CYCLE)
        self.assertEqual((run.code, run.err, run.result["ticks"], run.result["now"]), (0, "", 3000, START + 3))
        self.assertEqual([run.script[f] for f in ("running", "finished", "errorStanding")], [True, False, False])
        # A turn of the loop is two lines, 50 ticks each; the first SET comes 51 ticks after the declaration.
        self.assertEqual(run.value("N"), 29)

    def test_table_says_on_which_line_a_script_was(self):
        self.write("a.kx", ":w\nSLEEP 00:10.00\nGOTO w\n")
        run = self.call("--clock", CLOCK, "--until", "2024-03-10 07:00:01", "a.kx")
        a = self.folder / "a.kx"
        self.assertEqual((run.code, run.out), (0, f"{CLOCK} {a} : Inicjowanie skryptu \n{CLOCK} {a} : Start skryptu \n\n"
                                                  f"{a} : at line 2\n"))

    def test_million_ticks_are_no_limit_then(self):
        run = self.until("2024-03-10 07:16:41", ":w\nSLEEP 01:00.00\nGOTO w\n")
        self.assertEqual((run.code, run.result["ticks"]), (0, 1001000))

    def test_limit_that_comes_first_counts(self):
        run = self.until("2024-03-10 07:00:03", CYCLE, options=("--clock", CLOCK, "--ticks", "2999"))
        self.assertEqual((run.code, run.result["ticks"]), (3, 2999))
        run = self.until("2024-03-10 07:00:03", CYCLE, options=("--clock", CLOCK, "--ticks", "3000"))
        self.assertEqual((run.code, run.result["ticks"]), (0, 3000))

    def test_ticks_count_by_what_they_are_worth(self):
        run = self.until("2024-03-10 07:01:00", CYCLE, options=("--clock", CLOCK, "--tick-ms", "700"))
        self.assertEqual((run.code, run.result["ticks"]), (0, 86))

    def test_finished_scripts_end_the_run_before(self):
        run = self.until("2024-03-10 07:00:03", "LOCAL A\n")
        self.assertEqual((run.code, run.result["ticks"], run.script["finished"]), (0, 51, True))

    def test_error_is_an_error_then_too(self):
        self.assertEqual(self.until("2024-03-10 07:00:03", "SET Q = 1\n").code, 1)
        self.assertEqual(self.until("2024-03-10 07:00:03", "GOTO brak\n", CYCLE).code, 1)
        self.assertEqual(self.until("2024-03-10 07:00:03", "ENDIF\n", CYCLE).code, 2)

    def test_time_that_a_script_sets_counts(self):
        run = self.until("2024-03-10 08:00:00", "SETTIME 2024 3 10 8 0 0\n:w\nGOTO w\n")
        self.assertEqual((run.code, run.result["ticks"], run.script["currentLine"]), (0, 1, 1))

    def test_actions_behind_it_do_not_happen(self):
        run = self.run_scripts(CYCLE, options=("--clock", CLOCK, "--until", "2024-03-10 07:00:01"), actions=[at(1001, "stop")])
        self.assertEqual((run.code, run.result["ticks"], run.script["paused"]), (0, 1000, False))

    def test_time_that_is_past_is_refused(self):
        for time, clock in ((CLOCK, CLOCK), ("2024-03-10 06:59:59", CLOCK)):
            run = self.until(time, CYCLE, options=("--clock", clock))
            reason = f'kalvex-run: --until: "{time}" is past at the start, "{clock}"\n'
            self.assertEqual((run.code, run.out, run.err), (2, "", reason))
        past = self.until(CLOCK, CYCLE, options=())
        self.assertEqual((past.code, past.out), (2, ""))
        self.assertRegex(past.err, rf'^kalvex-run: --until: "{CLOCK}" is past at the start, "[-\d]+ [:\d]+"\n$')

    def test_without_a_virtual_clock_the_system_s_counts(self):
        self.environment["TZ"] = "UTC"
        for seconds in (1, 2, 4, 8, 16, 32):  # the program may be long in coming up
            moment = datetime.datetime.now(datetime.timezone.utc).replace(microsecond=0) + datetime.timedelta(seconds=seconds)
            run = self.until(moment.strftime("%Y-%m-%d %H:%M:%S"), CYCLE, options=())
            if run.code == 0:
                break
            self.assertRegex(run.err, "^kalvex-run: --until: .* is past at the start, ")
        self.assertEqual((run.code, run.err), (0, ""))
        self.assertGreaterEqual(run.result["now"], int(moment.timestamp()))


class Faults(RunnerTest):
    """What is wrong comes as one line on standard error, with nothing on standard output and status 2."""

    def assert_refused(self, run, line):
        self.assertEqual((run.code, run.out, run.err), (2, "", line + "\n"))

    def test_wrong_usage(self):
        self.assert_refused(self.call(), "kalvex-run: no script is named")
        self.assert_refused(self.call("--nie-ma", "a.kx"), "kalvex-run: unknown option --nie-ma")
        self.assert_refused(self.call("a.kx", "--ticks"), "kalvex-run: --ticks needs a value")
        self.assert_refused(
            self.call("--clock", "wczoraj", "a.kx"),
            'kalvex-run: --clock: "wczoraj" is not a time "YYYY-MM-DD HH:MM:SS"',
        )
        self.assert_refused(
            self.call("--tick-ms", "x", "a.kx"),
            'kalvex-run: --tick-ms: "x" is not a whole number from 1 to 86400000',
        )

    def test_script_that_cannot_be_read(self):
        self.write("a.kx", "LOCAL A\n")
        self.assert_refused(self.call("--json", "a.kx", "b.kx"), "kalvex-run: b.kx: No such file or directory")
        self.assert_refused(self.call("a.kx", "."), "kalvex-run: .: Is a directory")

    def test_script_in_a_folder_that_has_no_name_in_windows_1250(self):
        folder = self.folder / "漢字"
        folder.mkdir()
        (folder / "a.kx").write_bytes(b"LOCAL A\r\n")
        reason = ": its full path has characters outside Windows-1250"
        self.assert_refused(self.call("漢字/a.kx"), "kalvex-run: 漢字/a.kx" + reason)
        below = subprocess.run(
            [RUNNER, *VIRTUAL, "a.kx"], cwd=folder, env=self.environment, capture_output=True, timeout=TIME_LIMIT_SECONDS
        )
        self.assertEqual((below.returncode, below.stderr.decode("utf-8")), (2, "kalvex-run: a.kx" + reason + "\n"))
        self.write("a.kx", "LOCAL A\n")
        from_there = subprocess.run(
            [RUNNER, *VIRTUAL, "../a.kx"], cwd=folder, env=self.environment, capture_output=True, timeout=TIME_LIMIT_SECONDS
        )
        self.assertEqual(from_there.returncode, 0)

    def test_script_that_is_a_pipe_is_refused_and_not_waited_for(self):
        os.mkfifo(pathlib.Path(self.folder, "rura.kx"))
        self.assert_refused(self.call("rura.kx"), "kalvex-run: rura.kx: Not a regular file")

    def test_action_file_that_is_not_valid(self):
        self.write("a.kx", "LOCAL A\n")
        (self.folder / "akcje.json").write_text('[\n{"atTick": 1, "script": 1, "do": "stop"}]\n', encoding="utf-8")
        self.assert_refused(
            self.call("--actions", "akcje.json", "a.kx"),
            "kalvex-run: akcje.json:2: there is no script 1: the command line names 1",
        )
        self.assert_refused(
            self.call("--actions", "brak.json", "a.kx"), "kalvex-run: brak.json: No such file or directory"
        )

    def test_result_that_cannot_be_written(self):
        self.write("a.kx", "LOCAL A\n")
        with open("/dev/full", "wb") as full:
            ended = subprocess.run(
                [RUNNER, "--json", *VIRTUAL, "a.kx"],
                cwd=self.folder,
                env=self.environment,
                stdout=full,
                stderr=subprocess.PIPE,
                timeout=TIME_LIMIT_SECONDS,
            )
        self.assertEqual(
            (ended.returncode, ended.stderr), (2, b"kalvex-run: the result cannot be written\n")
        )


class Output(RunnerTest):
    def test_version_and_help(self):
        version = self.call("--version")
        self.assertEqual((version.code, version.err), (0, ""))
        self.assertRegex(version.out, r"^kalvex-run \d+\.\d+\.\d+\n$")
        usage = self.call("--help")
        self.assertEqual((usage.code, usage.err), (0, ""))
        self.assertIn("Usage: kalvex-run [OPTIONS] SCRIPT.kx [SCRIPT.kx ...]\n", usage.out)

    def test_result_has_its_fields_in_order(self):
        run = self.run_scripts('LOCAL A = "ż"\nLIST L\nPOINTER W\nSETPTR W = "A"')
        self.assertEqual(list(run.result), ["ticks", "now", "log", "scripts", "sources"])
        self.assertEqual(run.result["sources"], {})
        self.assertEqual(list(run.script), SCRIPT_FIELDS)
        path = str(self.folder / "a.kx")
        self.assertEqual(
            {name: run.script[name] for name in SCRIPT_FIELDS if name != "variables"},
            {
                "path": path,
                "started": True,
                "running": True,
                "paused": False,
                "stepRequested": False,
                "minimised": False,
                "finished": True,
                "errorStanding": False,
                "currentLine": 4,
                "lineCount": 4,
                "priority": 50,
                "errorCode": 0,
                "errorText": "",
                "errorMessage": "Brak błędów",
                "ignoreUnknown": False,
                "callDepth": 0,
                "waitLines": [],
            },
        )
        self.assertEqual(
            run.result["log"],
            [
                {"time": START, "level": 0, "text": path + " : Inicjowanie skryptu "},
                {"time": START, "level": 0, "text": path + " : Start skryptu "},
            ],
        )
        empty = {"type": 255, "status": 0, "time": 0, "value": None, "text": ""}
        first, second, third = run.script["variables"]
        self.assertEqual(
            first,
            {
                "name": "A",
                "kind": "LOCAL",
                "slots": {
                    "CURDATA": {"type": 190, "status": 0, "time": 0, "value": "ż", "text": "ż"},
                    "HREP": empty,
                    "DREP": empty,
                    "MREP": empty,
                    "SREP": empty,
                },
            },
        )
        self.assertEqual(second, {"name": "L", "kind": "LIST", "iterator": -1, "elements": []})
        self.assertEqual(third, {"name": "W", "kind": "POINTER", "target": "A"})

    def test_error_is_told_whole(self):
        run = self.run_scripts("SET Ś = 1\n")
        self.assertEqual(
            [run.script[name] for name in ("errorCode", "errorText", "errorMessage")],
            [3, "Ś", "Zmienna nie została poprawnie zdefiniowana"],
        )
        report = str(self.folder / "a.kx") + " : Linia 1 - Zmienna nie została poprawnie zdefiniowana : Ś"
        self.assertEqual(run.result["log"][2:], [{"time": START, "level": 1, "text": report}])

    def test_log_level_drops_what_lies_above(self):
        text = "SET Q = 1\n"
        self.assertEqual(len(self.run_scripts(text, options=(*VIRTUAL, "--log-level", "0")).log), 2)
        self.assertEqual(len(self.run_scripts(text, options=(*VIRTUAL, "--log-level", "1")).log), 3)
        waiting = "LOCAL A\nSET A = A.ARCH\n"
        self.assertEqual(len(self.run_scripts(waiting, options=(*VIRTUAL, "--log-level", "1")).log), 2)
        waits = self.run_scripts(waiting, options=(*VIRTUAL, "--log-level", "2"))
        report = " : Linia 2 - Oczekiwanie na pobranie danych bieżących : A.ARCH"
        self.assertEqual(waits.log[2:], [str(self.folder / "a.kx") + report])
        self.assertEqual(waits.result["log"][2]["level"], 2)

    def test_lines_are_those_of_the_prepared_text(self):
        self.write("dod.kx", "  LOCAL B\n")
        run = self.run_scripts("LOCAL A\nINCLUDE dod.kx\n", options=(*VIRTUAL, "--lines"))
        path = self.folder / "dod.kx"
        self.assertEqual(list(run.script), [*SCRIPT_FIELDS, "lines"])
        self.assertEqual(
            run.script["lines"],
            ["LOCAL A", f"; BEGIN -> INCLUDE {path} */", "  LOCAL B", f"; END -> INCLUDE {path} */", ""],
        )

    def test_text_for_people(self):
        self.write("a.kx", 'LOCAL A = "łąka"\nLOCAL C\nSET Q = 1\n')
        self.write("b.kx", "LOCAL B\n")
        run = self.call(*VIRTUAL, "a.kx", "b.kx")
        a, b = (str(self.folder / name) for name in ("a.kx", "b.kx"))
        report = " : Linia 3 - Zmienna nie została poprawnie zdefiniowana : Q"
        self.assertEqual((run.code, run.err), (1, ""))
        self.assertEqual(
            run.out,
            f"{CLOCK} {a} : Inicjowanie skryptu \n"
            f"{CLOCK} {a} : Start skryptu \n"
            f"{CLOCK} {b} : Inicjowanie skryptu \n"
            f"{CLOCK} {b} : Start skryptu \n"
            f"{CLOCK} {a}{report}\n"
            f"\n{a}{report}\n"
            "NAME  KIND   VALUE   STATUS  TIME\n"
            'A     LOCAL  "łąka"\n'
            "C     LOCAL  -\n"
            f"\n{b} : finished\n"
            "NAME  KIND   VALUE  STATUS  TIME\n"
            "B     LOCAL  -\n",
        )

    def test_text_tells_where_each_script_stands(self):
        self.write("a.kx", "ENDIF\n")
        self.write("b.kx", "LOCAL A\nLOCAL B\n")
        self.write("c.kx", ":w\nGOTO w\n")
        actions = [at(1, "breakpoint", 1, line=1), at(2, "reset", 2)]
        (self.folder / "actions.json").write_text(json.dumps(actions), encoding="utf-8")
        run = self.call(*VIRTUAL, "--log-level", "0", "--actions", "actions.json", "a.kx", "b.kx", "c.kx")
        headings = [line for line in run.out.splitlines() if line.startswith(str(self.folder))]
        places = ("a.kx : refused at its start", "b.kx : stopped before line 2", "c.kx : not running")
        self.assertEqual(headings, [f"{self.folder}/{place}" for place in places])


class ForeignFiles(RunnerTest):
    """Files in UTF-8, where the program reads Windows-1250."""

    def put(self, name, text):
        (self.folder / name).write_bytes(text.encode("utf-8"))

    def line(self, name, number):
        path = self.folder / name
        return (f"{path}:{number}: plik jest w UTF-8, a jest czytany w kodzie Windows-1250; zamieni go polecenie: "
                f"kalvex-convert {path}")

    def told(self, *options, code=0):
        """Behind the two lines of the start; all of it at level 1."""
        run = self.call("--json", *VIRTUAL, *options, "a.kx")
        self.assertEqual((run.code, run.err), (code, ""))
        start = [f"{self.folder}/a.kx : Inicjowanie skryptu ", f"{self.folder}/a.kx : Start skryptu "]
        self.assertEqual([entry["level"] for entry in run.result["log"] if entry["text"] not in start],
                         [1] * (len(run.log) - 2))
        return [text for text in run.log if text not in start]

    def test_script_is_told_once_though_it_is_read_at_each_start(self):
        self.put("a.kx", "LOCAL A = 1\r\n; Zażółć\r\n; gęś\r\n")
        (self.folder / "actions.json").write_text(json.dumps([at(300, "reset"), at(301, "start")]), encoding="utf-8")
        run = self.call("--json", *VIRTUAL, "--actions", "actions.json", "a.kx")
        self.assertEqual(run.code, 0)
        self.assertEqual([text for text in run.log if " : " not in text], [self.line("a.kx", 2)])
        self.assertEqual(run.log.count(f"{self.folder}/a.kx : Start skryptu "), 2)

    def test_mark_at_the_beginning_of_a_script_is_told(self):
        self.put("a.kx", "\ufeff; A\r\n")
        fault = f"{self.folder}/a.kx : Linia 1 - Nieznane słowo kluczowe : Ď"
        self.assertEqual(self.told(code=1), [self.line("a.kx", 1), fault])

    def test_script_in_windows_1250_is_not_told(self):
        self.write("a.kx", "; Zażółć gęślą jaźń, PÓŁNOC\n")
        self.assertEqual(self.told(), [])

    def test_included_script_is_told(self):
        self.write("a.kx", "INCLUDE b.kx\n")
        self.put("b.kx", "\r\n\r\n; Zażółć\r\n")
        self.assertEqual(self.told(), [self.line("b.kx", 3)])

    def test_data_file_is_told_once_though_it_is_read_often(self):
        self.write("a.kx", 'LOCAL T = "x"\nLOCAL N = 0\n:w\nREAD_FILE "dane.txt"\nSET N = N + 1\nIF N < 3 GOTO w\n')
        self.put("dane.txt", "; A\r\nT:zażółć\r\n")
        self.assertEqual(self.told(), [self.line("dane.txt", 2)])

    def test_data_file_is_told_when_it_is_written(self):
        self.write("a.kx", 'LOCAL N = 0\nWRITE_FILE "dane.txt"\n')
        self.put("dane.txt", "; zażółć\r\nN:1\r\n")
        self.assertEqual(self.told(), [self.line("dane.txt", 1)])

    def test_profile_is_told(self):
        self.write("a.kx", "LOCAL A\n")
        self.put("Kalvex.ini", "[Konfiguracja]\r\nNazwa=Łódź\r\n")
        self.assertEqual(self.told("--profile", str(self.folder / "Kalvex.ini")), [self.line("Kalvex.ini", 2)])


class Ticks(RunnerTest):
    def test_virtual_time_moves_by_tick(self):
        options = ("--clock", CLOCK, "--tick-ms", "1000")
        run = self.run_scripts("LOCAL A = TIME\nLOCAL B = TIME\nSET Q = 1", options=(*options, "--ticks", "200"))
        self.assertEqual((run.value("A"), run.value("B")), (START, START + 50))
        self.assertEqual(run.result["log"][2]["time"], START + 100)
        self.assertEqual(run.result["now"], START + 200)

    def test_milliseconds_add_up(self):
        options = ("--clock", CLOCK, "--tick-ms", "30", "--ticks", "101")
        run = self.run_scripts("LOCAL A = TIME\nLOCAL B = TIME\nLOCAL C = TIME", options=options)
        self.assertEqual([run.value(name) for name in "ABC"], [START, START + 1, START + 3])

    def test_clock_is_read_in_the_zone(self):
        self.environment["TZ"] = "UTC"
        self.assertEqual(self.run_scripts("LOCAL A = TIME").value("A"), START + 3600)

    def test_real_clock(self):
        before = int(datetime.datetime.now().timestamp())
        run = self.run_scripts("LOCAL A = TIME\nLOCAL B", options=())
        after = int(datetime.datetime.now().timestamp())
        self.assertEqual((run.code, run.result["ticks"]), (0, 51))
        self.assertTrue(before <= run.value("A") <= run.result["now"] <= after)

    def test_scripts_run_side_by_side(self):
        run = self.run_scripts("LOCAL A = 1\nLOCAL B = 2", "LOCAL A = 10\nLOCAL C = 3\nSET A = A * C")
        self.assertEqual(run.code, 0)
        self.assertEqual([run.value("A"), run.value("A", 1)], [1, 30])
        self.assertEqual([s["path"] for s in run.result["scripts"]], [f"{self.folder}/a.kx", f"{self.folder}/b.kx"])
        self.assertEqual([s["finished"] for s in run.result["scripts"]], [True, True])
        self.assertEqual(run.result["ticks"], 101)

    def test_minimised_doubles_the_speed_of_priority_1(self):
        text = "PRIORITY 1\nLOCAL N = 0\n:w\nSET N = N + 1\nGOTO w\n"
        options = ("--clock", CLOCK, "--ticks", "2")
        # Three lines go before the loop, and a turn of it is two, the SET first.
        self.assertEqual(self.run_scripts(text, options=options).value("N"), 9)
        run = self.run_scripts(text, options=(*options, "--minimised"))
        self.assertTrue(run.script["minimised"])
        self.assertEqual(run.value("N"), 19)

    def test_user(self):
        text = "LOCAL A = SORVANE_USER_NAME\nLOCAL B = SORVANE_USER_DESCRIPTION"
        run = self.run_scripts(text, options=(*VIRTUAL, "--user", "jan:Jan Żak"))
        self.assertEqual((run.value("A"), run.value("B")), ("jan", "Jan Żak"))
        nobody = self.run_scripts(text)
        self.assertEqual((nobody.value("A"), nobody.value("B")), ("", ""))

    def test_scripts_start_programs(self):
        run = self.run_scripts('LOCAL P = "/bin/true"\nLOCAL A\nSET A = EXEC P')
        self.assertEqual(run.code, 0)
        self.assertGreater(run.value("A"), 0)


if __name__ == "__main__":
    unittest.main()
