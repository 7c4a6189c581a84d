#!/usr/bin/env python3
"""The first commands of the README with every example, and what the index of the examples says of each."""
import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys
import tempfile
import unittest

RUNNER = os.path.abspath(sys.argv[1])
del sys.argv[1]
ROOT = pathlib.Path(__file__).resolve().parents[2]
EXAMPLES = ROOT / "examples"
FIRST = re.compile(r"(?m)^    cp -r examples build/\n    cd build/examples\n    (\.\./release/bin/kalvex-run .* licznik\.kx)$")
ROW = re.compile(r"(?m)^\| `(\w+\.kx)` \| [^|]+ \| (?:`([^`|]+)` )?\| (\d) \| ([^|]*)\|$")
EXPECTED = re.compile(r'`(\w+)` ("[^"]*"|[\d.]+)')


def first_command(page):
    return FIRST.search(page.read_text(encoding="utf-8"))[1]


def rows_of_index():
    """Script, options, exit status, what to expect."""
    return ROW.findall((EXAMPLES / "README.md").read_text(encoding="utf-8"))


class Examples(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.folder = pathlib.Path(scratch.name) / "examples"
        shutil.copytree(EXAMPLES, self.folder)

    def run_example(self, script, options):
        command = shlex.split(first_command(ROOT / "README.md"))
        command[0] = RUNNER
        command[-1:] = [*shlex.split(options), script]
        return subprocess.run(command, cwd=self.folder, env={**os.environ, "TZ": "Europe/Warsaw"},
                              capture_output=True, encoding="utf-8", timeout=600)

    def test_index_has_a_row_for_each_script(self):
        self.assertCountEqual([script for script, *_ in rows_of_index()], [path.name for path in EXAMPLES.glob("*.kx")])

    def test_index_has_a_row_for_each_file_beside_the_scripts(self):
        index = (EXAMPLES / "README.md").read_text(encoding="utf-8")
        for path in EXAMPLES.iterdir():
            if path.is_file() and path.name != "README.md":
                self.assertIn(f"`{path.name}`", index)

    def test_both_pages_begin_with_the_same_commands(self):
        self.assertEqual(first_command(EXAMPLES / "README.md"), first_command(ROOT / "README.md"))

    def test_each_example_runs_as_the_index_says(self):
        for script, options, status, expected in rows_of_index():
            with self.subTest(script):
                done = self.run_example(script, options)
                self.assertEqual((done.returncode, done.stderr), (int(status), ""))
                shown = dict(re.findall(r'(?m)^(\w+) +(?:LOCAL|REMOTE) +("[^"]*"|\S+)', done.stdout))
                wanted = dict(EXPECTED.findall(expected))
                self.assertEqual({name: shown.get(name) for name in wanted}, wanted)
                self.assertEqual(EXPECTED.sub("", expected).strip(" ,"), "")


if __name__ == "__main__":
    unittest.main()
