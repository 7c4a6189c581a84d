#!/usr/bin/env python3
"""The manual pages against the programs: the same options, and nothing that the formatter does not understand."""
import pathlib
import re
import shutil
import subprocess
import sys
import unittest

# Each program with those of its commands that have options of their own.
PROGRAMS = {pathlib.Path(path).name: path for path in sys.argv[1:]}
del sys.argv[1:]
# A build without the window has no program for its page.
PAGES = [page for page in (pathlib.Path(__file__).resolve().parents[2] / "packaging/man").iterdir()
         if page.stem != "kalvex" or page.stem in PROGRAMS]
COMMANDS = {"sorvaned": [["user", "add"]]}


def options_that_are_told(program):
    """By the program itself."""
    options = set()
    for command in [[], *COMMANDS.get(program, [])]:
        shown = subprocess.run([PROGRAMS[program], *command, "--help"], capture_output=True, encoding="utf-8",
                               timeout=60)
        options |= set(re.findall(r"(?m)^ +(?:-\w,)?(--[a-z-]+)", shown.stdout))
    return options


def options_that_are_explained(page):
    """Each has a paragraph with a tag."""
    text = page.read_text(encoding="utf-8").replace("\\-", "-")
    return re.findall(r"(?m)^\.TP\n\.BI? (--[a-z-]+)", text)


class ManualPages(unittest.TestCase):
    def test_every_program_has_a_page(self):
        self.assertEqual({page.stem for page in PAGES}, set(PROGRAMS))

    def test_pages_explain_the_options_that_there_are_once_each(self):
        for page in PAGES:
            self.assertEqual(sorted(options_that_are_explained(page)), sorted(options_that_are_told(page.stem)),
                             page.name)

    def test_pages_bear_their_names_and_sections(self):
        for page in PAGES:
            title = page.read_text(encoding="utf-8").splitlines()[0]
            self.assertTrue(title.startswith(f".TH {page.stem.upper()} {page.suffix[1:]} "), page.name)

    def test_formatter_has_no_complaint(self):
        if shutil.which("groff") is None:
            self.skipTest("groff is not installed")
        for page in PAGES:
            done = subprocess.run(["groff", "-man", "-Tutf8", "-ww", page], capture_output=True, encoding="utf-8",
                                  timeout=60)
            self.assertEqual((done.returncode, done.stderr), (0, ""), page.name)


if __name__ == "__main__":
    unittest.main()
