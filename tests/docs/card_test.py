#!/usr/bin/env python3
"""The card of the language: that it is what the tables make, and that it is printed on one page."""
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

LANGUAGE_CARD, *CARD_PDF = sys.argv[1:]
del sys.argv[1:]
CARD = pathlib.Path(__file__).resolve().parents[2] / "docs/card.md"


def run(*command, **variables):
    environment = {name: value for name, value in os.environ.items() if name != "LANGUAGE"}
    return subprocess.run(command, env={**environment, **variables}, capture_output=True, encoding="utf-8", timeout=600)


class Card(unittest.TestCase):
    def test_card_is_what_the_tables_make(self):
        made = run(LANGUAGE_CARD, LANGUAGE="en")
        self.assertEqual((made.returncode, made.stdout), (0, CARD.read_text(encoding="utf-8")))

    def test_without_a_language_the_forms_are_those_of_the_tables(self):
        made = run(LANGUAGE_CARD, LC_ALL="C")
        self.assertIn("\nGOTO <etykieta>\n", made.stdout)
        self.assertNotIn("\nGOTO <label>\n", made.stdout)


@unittest.skipUnless(CARD_PDF, "built without the library of the window")
class Page(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.folder = pathlib.Path(scratch.name)

    def print(self, card):
        return run(*CARD_PDF, card, self.folder / "card.pdf", XDG_RUNTIME_DIR=str(self.folder))

    def test_card_is_one_page(self):
        done = self.print(CARD)
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "", ""))
        page = (self.folder / "card.pdf").read_bytes()
        self.assertEqual(page[:5], b"%PDF-")
        self.assertEqual(len(re.findall(rb"/Type\s*/Page\b", page)), 1)

    def test_what_needs_more_than_a_page_is_refused(self):
        long = self.folder / "long.md"
        long.write_text("# Long\n\n```\n" + "ADD <list> <element>\n" * 600 + "```\n", encoding="utf-8")
        done = self.print(long)
        self.assertEqual((done.returncode, done.stderr), (1, f"card-pdf: {long}: this is too much for one page\n"))

    def test_card_that_is_not_there_is_told(self):
        done = self.print(self.folder / "none.md")
        told = f"card-pdf: {self.folder}/none.md: No such file or directory\n"
        self.assertEqual((done.returncode, done.stderr), (1, told))


if __name__ == "__main__":
    unittest.main()
