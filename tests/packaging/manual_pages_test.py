#!/usr/bin/env python3
"""The manual pages against the programs: the same options, and nothing that the formatter does not understand."""
import pathlib
import re
import shutil
import subprocess
import sys
import unittest

LANGUAGE_PAGE = pathlib.Path(sys.argv[1])  # as the build has made it
# Each program with those of its commands that have options of their own.
PROGRAMS = {pathlib.Path(path).name: path for path in sys.argv[2:]}
del sys.argv[1:]
# A build without the window has no program for its page.
ROOT = pathlib.Path(__file__).resolve().parents[2]
ALL = [page for page in (ROOT / "packaging/man").iterdir() if page.stem != "kalvex" or page.stem in PROGRAMS]
PAGES = [page for page in ALL if page.suffix != ".5"]
COMMANDS = {"sorvaned": [["user", "add"], ["backup"], ["history"], ["alarms"], ["acknowledge"], ["values"], ["export"],
                         ["import"], ["check"]]}


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


def keys_of_tables(path, begin, end, column):
    """Those that rows of a document have in a column, in their order, from one line to another."""
    text = (ROOT / path).read_text(encoding="utf-8")
    part = re.search(rf"(?ms)^{re.escape(begin)}$(.*?)^{re.escape(end)}$", text)[1]
    cells = [line.split("|")[column] for line in part.splitlines() if line.startswith("|")]
    return [re.findall(r"`([^`]+)`", cell) for cell in cells if "`" in cell]


def tags_of(page):
    """What the tagged paragraphs of a page are about."""
    text = (ROOT / "packaging/man" / page).read_text(encoding="utf-8").replace("\\-", "-")
    text = re.sub(r"\\\[u([0-9A-F]{4})\]", lambda found: chr(int(found[1], 16)), text)
    return [tag.strip('"').split(", ") for tag in re.findall(r"(?m)^\.TP\n\.B (.*)$", text)]


class ManualPages(unittest.TestCase):
    def test_pages_of_files_explain_the_keys_of_the_documents(self):
        server = keys_of_tables("docs/data-server.md", "## Configuration", "## Listening", 1)
        self.assertGreater(len(server), 40)
        self.assertEqual(tags_of("sorvaned.toml.5"), server)
        module = keys_of_tables("docs/operations.md", "## The profile", "### Logins of data servers", 2)
        machine = keys_of_tables("docs/operations.md", "## The profile of the machine", "## Limitations", 2)
        self.assertGreater(len(module), 15)
        self.assertEqual([tags for tags in tags_of("kalvex.ini.5") if tags != ["the name of a source"]],
                         module + machine)

    def test_every_program_has_a_page(self):
        self.assertEqual({page.stem for page in PAGES}, set(PROGRAMS))

    def test_pages_explain_the_options_that_there_are_once_each(self):
        for page in PAGES:
            self.assertEqual(sorted(options_that_are_explained(page)), sorted(options_that_are_told(page.stem)),
                             page.name)

    def test_pages_bear_their_names_and_sections(self):
        for page in ALL:
            title = page.read_text(encoding="utf-8").splitlines()[0]
            begin = f'.TH {page.stem.upper()} {page.suffix[1:]} "@KALVEX_DATE@" "Kalvex @PROJECT_VERSION@" '
            self.assertTrue(title.startswith(begin), page.name)

    def test_formatter_has_no_complaint(self):
        if shutil.which("groff") is None:
            self.skipTest("groff is not installed")
        for page in [*ALL, LANGUAGE_PAGE]:
            done = subprocess.run(["groff", "-man", "-Tutf8", "-ww", page], capture_output=True, encoding="utf-8",
                                  timeout=60)
            self.assertEqual((done.returncode, done.stderr), (0, ""), page.name)


if __name__ == "__main__":
    unittest.main()
