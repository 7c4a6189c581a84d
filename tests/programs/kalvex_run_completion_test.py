#!/usr/bin/env python3
"""The completion of kalvex-run's command lines.

    kalvex_run_completion_test.py PATH_OF_KALVEX_RUN FOLDER_OF_COMPLETIONS [unittest arguments]
"""
import os
import pathlib
import shutil
import subprocess
import unittest

from kalvex_run_process import RUNNER, RunnerTest

import completion_shells

OPTIONS = ["--clock", "--tick-ms", "--ticks", "--until", "--minimised", "--plant", "--actions", "--user", "--log-level",
           "--json", "--lines", "--profile", "--test", "--junit", "--language", "--version", "--help"]


class Completion(RunnerTest):
    def script(self, shell):
        return completion_shells.script("kalvex-run", shell)

    def complete(self, *words):
        """What bash offers for the last word."""
        environment = self.environment | {"PATH": f"{pathlib.Path(RUNNER).parent}:{os.environ['PATH']}"}
        return completion_shells.bash("kalvex-run", [["kalvex-run", *words]], self.folder, environment)[0]

    def test_bash(self):
        self.write("ą b.kx", "")
        self.assertEqual(self.complete("--"), OPTIONS)
        self.assertEqual(self.complete("a.kx", "--t"), ["--tick-ms", "--ticks", "--test"])
        self.assertEqual(self.complete(""), ["ą b.kx"])
        for option in ("--plant", "--actions", "--profile", "--junit"):
            self.assertEqual(self.complete(option, ""), ["ą b.kx"])
        for option in ("--clock", "--tick-ms", "--ticks", "--until", "--user", "--log-level"):
            self.assertEqual(self.complete(option, ""), [])
        self.assertEqual(self.complete("--language", "FTP"), ["FTP_INIT", "FTP_RESULT"])

    def test_zsh_is_told_each_option_with_its_value(self):
        lines = self.script("zsh").splitlines()
        self.assertEqual([line.split("[")[0].rstrip("=") for line in lines if line.startswith("        '-")],
                         [f"        '{option}" for option in OPTIONS if option not in ("--version", "--help")])
        self.assertEqual([line for line in lines if line.startswith("        '(")],
                         ["        '(-V --version)-V[Print the version and exit]'",
                          "        '(-V --version)--version[Print the version and exit]'",
                          "        '(-h --help)-h[Print this and exit]'",
                          "        '(-h --help)--help[Print this and exit]'"])
        self.assertIn("        '--junit=[With --test\\: write what came of it as JUnit XML too]:FILE:_files'", lines)
        self.assertIn("        '--language=[Print what a word of the language means, or all words, and exit]"
                      ":WORD:_kalvex_run_words'", lines)
        self.assertIn("        '--json[Print the result as one JSON object and nothing else]'", lines)

    def test_zsh_takes_the_script(self):
        if shutil.which("zsh") is None:
            self.skipTest("zsh is not installed")
        checked = subprocess.run(["zsh", "-n"], input=self.script("zsh"), capture_output=True, encoding="utf-8", timeout=60)
        self.assertEqual((checked.returncode, checked.stderr), (0, ""))


if __name__ == "__main__":
    unittest.main()
