#!/usr/bin/env python3
"""tools/fuzz, with a target that has faults.

    fuzz_tool_test.py PATH_OF_THE_TARGET [unittest arguments]
"""
import json
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

TARGET = pathlib.Path(sys.argv.pop(1)).resolve()
TOOL = pathlib.Path(__file__).resolve().parents[2] / "tools/fuzz"


class Tool(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.corpus = self.folder / "corpus/faulty"
        self.corpus.mkdir(parents=True)

    def run_tool(self, *arguments):
        """The lines of the output, without what depends on the machine."""
        done = subprocess.run([TOOL, "--bin", TARGET.parent, "--folder", self.folder, *arguments], capture_output=True,
                              encoding="utf-8", check=False)
        lines = [" ".join(line.split()).replace(str(self.folder), "F") for line in done.stdout.splitlines()]
        return done.returncode, [re.sub(r"^(faulty \d+) \d+", r"\1 -", line) for line in lines], done.stderr

    def test_inputs_are_counted_run_by_run(self):
        head = "target inputs a second corpus new crashes"
        (self.corpus / "a").write_bytes(b"efgh")
        self.assertEqual(self.run_tool("--inputs", "100"),
                         (0, [head, "faulty 102 - 1 0", "102 inputs, 102 of all runs with F"], ""))
        self.assertEqual(self.run_tool("--inputs", "50"),
                         (0, [head, "faulty 52 - 1 0", "52 inputs, 154 of all runs with F"], ""))
        self.assertEqual(json.loads((self.folder / "inputs.json").read_text(encoding="utf-8")), {"faulty": 154})

    def check_crash(self, content, name, reason, *arguments):
        (self.corpus / "b").write_bytes(content)
        status, lines, error = self.run_tool("--inputs", "100", *arguments)
        self.assertEqual((status, error), (1, ""))
        self.assertEqual(lines[1:], ["faulty 2 - 1 1", "2 inputs, 2 of all runs with F", f"F/crashes/faulty/{name}"])
        kept = self.folder / "crashes/faulty" / name
        self.assertEqual(kept.read_bytes(), content)
        words = kept.with_suffix(".txt").read_text(encoding="utf-8")
        self.assertEqual(re.sub(r"\S*/input", "FILE", words), reason)
        self.assertEqual(self.run_tool("--inputs", "100", *arguments)[0], 0)

    def test_crash_is_kept_and_told_once(self):
        self.check_crash(b"fault", "f1c562eae32f9cc2", "a fault\nFILE: Aborted\n")

    def test_input_without_end_is_kept(self):
        self.check_crash(b"no end", "c1d16127cad537c2", "FILE: no end\n", "--patience", "1")

    def test_what_is_kept_runs_alone(self):
        kept = self.folder / "kept"
        kept.write_bytes(b"fault")
        done = subprocess.run([TARGET, kept], capture_output=True, encoding="utf-8", check=False)
        self.assertEqual((done.returncode < 0, done.stdout, done.stderr), (True, "", "a fault\n"))

    def test_target_that_is_none_is_told(self):
        self.assertEqual(self.run_tool("--inputs", "1", "--only", "faulty,other"), (1, [], "no targets: other\n"))


if __name__ == "__main__":
    unittest.main()
