#!/usr/bin/env python3
"""That the programs of bench/peers say the same in each language, and what its runner makes of their times.

The languages that need no package of their own run here; the others run whenever they are measured.
"""
import contextlib
import importlib.machinery
import importlib.util
import io
import json
import pathlib
import shutil
import sys
import tempfile
import unittest
import unittest.mock

RUNNER = pathlib.Path(sys.argv.pop(1)).resolve()
ROOT = pathlib.Path(__file__).resolve().parents[2]
LINES_A_TICK = 20


def load(path):
    loader = importlib.machinery.SourceFileLoader("peers", str(path))
    module = importlib.util.module_from_spec(importlib.util.spec_from_loader("peers", loader))
    sys.modules["peers"] = module
    loader.exec_module(module)
    return module


peers = load(ROOT / "bench/peers/run")
OURS = peers.kalvex(RUNNER)
HERE_ALWAYS = tuple(peer for peer in peers.PEERS if peer.suffix in ("py", "sh"))
LOOP = peers.PROGRAMS[0]


def expected():
    return json.loads((ROOT / "bench/peers/expected.json").read_text(encoding="ascii"))


class Scratch(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        scratch = tempfile.TemporaryDirectory(prefix="kalvex-peers-")
        self.addCleanup(scratch.cleanup)
        self.folder = pathlib.Path(scratch.name).resolve()

    def bench(self, known=None):
        return peers.Bench(self.folder, known or expected())


class Programs(Scratch):
    def test_each_prints_the_results_that_are_recorded(self):
        self.assertEqual([program.name for program in peers.PROGRAMS], list(expected()))
        self.assertEqual(len(HERE_ALWAYS), 2)
        self.assertEqual(peers.refusals(self.bench(), peers.PROGRAMS, (OURS, *HERE_ALWAYS)), [])

    def test_only_upper_case_in_basic_is_left_out(self):
        lacking = [(one.name, peer.name) for one in peers.PROGRAMS for peer in peers.PEERS if not peer.has(one)]
        self.assertEqual(lacking, [("text", "bwBASIC")])
        self.assertTrue(all(OURS.has(program) for program in peers.PROGRAMS))

    def test_each_says_where_its_passes_stand(self):
        for program in peers.PROGRAMS:
            for language in (OURS, *peers.PEERS):
                if language.has(program):
                    given = language.source(program).read_bytes()
                    text = self.bench().written(program, language, 70).read_bytes()
                    self.assertEqual(text, given.replace(b"1000000", b"70"))
                    self.assertNotEqual(text, given)

    def test_lines_of_a_pass_are_those_that_run(self):
        few, many = 750, 3000
        for program in peers.PROGRAMS:
            ticks = {}
            for passes in (few, many):
                ticks[passes] = self.ticks_of(self.bench().written(program, OURS, passes))
            lines = LINES_A_TICK * (ticks[many] - ticks[few])
            self.assertAlmostEqual(lines, program.lines * (many - few), delta=LINES_A_TICK, msg=program.name)

    def ticks_of(self, path):
        ended = peers.subprocess.run([*OURS.command, path], check=True, stdout=peers.subprocess.PIPE)
        return json.loads(ended.stdout)["ticks"]


class Refusals(Scratch):
    def test_result_that_is_not_the_recorded_one(self):
        known = expected() | {"loop": {"N": 3001}}
        [bash] = [peer for peer in HERE_ALWAYS if peer.suffix == "sh"]
        self.assertEqual(
            peers.refusals(self.bench(known), [LOOP], [bash]),
            ["loop of 3000 passes, bash: N = 3000 and not 3001 as in expected.json"],
        )

    def test_results_of_two_languages_differ(self):
        bench = self.bench()
        bench.compare(LOOP, OURS, 12000, {"N": 12000.00000001, "M": 1})
        bench.compare(LOOP, HERE_ALWAYS[0], 12000, {"N": "12000"})
        with self.assertRaises(peers.Refused) as refused:
            bench.compare(LOOP, HERE_ALWAYS[1], 12000, {"N": "12001"})
        self.assertEqual(
            str(refused.exception), "loop of 12000 passes, bash: N = 12001 and not 12000.00000001 as in Kalvex"
        )

    def test_texts_are_the_same_as_they_stand_and_numbers_by_their_digits(self):
        for one, other in (("Z1", "Z1"), (12, "12.0"), ("1e3", 1000), (3.0000000001, 3)):
            self.assertTrue(peers.same(one, other), (one, other))
        for one, other in (("Z1", "z1"), ("Z1", 1), (None, 0), (3.0001, 3)):
            self.assertFalse(peers.same(one, other), (one, other))

    def test_result_that_is_not_printed(self):
        with self.assertRaises(peers.Refused) as refused:
            self.bench().compare(LOOP, OURS, 3000, {"M": 3000})
        self.assertEqual(str(refused.exception), "loop, Kalvex: prints no N")

    def test_whole_run_ends_with_1_and_tells_all_that_differs(self):
        copy = self.folder / "programs"
        shutil.copytree(ROOT / "bench/peers", copy)
        (copy / "loop/loop.py").write_text("print('N', 1000000 + 7)\n", encoding="ascii")
        (copy / "call/call.sh").write_text("echo wrong 1000000; exit 3\n", encoding="ascii")
        said = io.StringIO()
        with contextlib.ExitStack() as around:
            around.enter_context(unittest.mock.patch.object(peers, "HERE", copy))
            around.enter_context(unittest.mock.patch.object(peers, "PEERS", HERE_ALWAYS))
            around.enter_context(unittest.mock.patch.object(peers, "prepare", lambda runner: RUNNER))
            around.enter_context(unittest.mock.patch.object(sys, "argv", ["run", "--quick"]))
            around.enter_context(contextlib.redirect_stderr(said))
            self.assertEqual(peers.main(), 1)
        self.assertEqual(
            said.getvalue(),
            "loop of 3000 passes, CPython 3: N = 3007 and not 3000 as in expected.json\n"
            "call, bash: exit status 3\nwrong 3000\n",
        )


class Pacemaker:
    """Stands for a bench: each language takes its time of a pass, and 2 s for its start."""

    def __init__(self, passes_a_second):
        self.passes_a_second = passes_a_second

    def seconds(self, program, language, passes):
        return 2 + passes / self.passes_a_second[language]


class Figures(unittest.TestCase):
    def test_pairs_are_nanoseconds_of_a_line_without_the_start(self):
        fast, slow = HERE_ALWAYS
        bench = Pacemaker({OURS: 2_000_000, fast: 20_000_000, slow: 20_000})
        pairs = peers.pairs_of(bench, LOOP, OURS, HERE_ALWAYS, 2, 0.3)
        self.assertEqual(list(pairs), [fast, slow])
        for peer, nanoseconds in ((fast, 16.667), (slow, 16666.667)):
            self.assertEqual(len(pairs[peer]), 2)
            for own, other in pairs[peer]:
                self.assertAlmostEqual(own, 166.667, places=2)
                self.assertAlmostEqual(other, nanoseconds, places=2)

    def test_passes_grow_until_they_take_their_time_or_the_program_ends(self):
        bench = Pacemaker({OURS: 1_000_000})
        self.assertEqual(peers.passes_for(bench, LOOP, OURS, 0.3), 768000)
        self.assertEqual(peers.passes_for(bench, LOOP, OURS, 0.0001), 3000)
        small = peers.Program("loop", 3, most=50_000)
        self.assertEqual(peers.passes_for(bench, small, OURS, 0.3), 48000)

    def test_row_has_medians_of_times_and_of_the_ratios_of_pairs(self):
        first, second = HERE_ALWAYS
        pairs = {second: [(100, 150), (10, 100), (50, 160)]}
        self.assertEqual(peers.time_row(LOOP, (first, second), pairs), ["loop", "50 ns", "-", "150 ns (3.2)"])

    def test_amounts_have_two_digits(self):
        amounts = {1234.5: "1234", 99.6: "100", 12.3: "12", 9.87: "9.9", 0.123: "0.12", 0.0123: "0.012", 0: "0"}
        self.assertEqual({number: peers.amount(number) for number in amounts}, amounts)

    def test_table_is_that_of_a_document(self):
        self.assertEqual(
            peers.table("a line", (OURS, HERE_ALWAYS[0]), [["loop", "5 ns", "10 ns (2.0)"], ["text", "7 ns", "-"]]),
            "| a line | Kalvex | CPython 3 |\n|---|---|---|\n| loop | 5 ns | 10 ns (2.0) |\n| text | 7 ns | - |",
        )


if __name__ == "__main__":
    unittest.main()
