#!/usr/bin/env python3
"""The skeleton of a statement that tools/new-statement makes, in a copy of the tree."""
import json
import pathlib
import shlex
import shutil
import subprocess
import sys
import tempfile
import unittest

COMMANDS = pathlib.Path(sys.argv[1])
del sys.argv[1]
ROOT = pathlib.Path(__file__).resolve().parents[2]
PLACES = [
    "src/language/Statements.cpp",
    "src/engine/StatementFamilies.h",
    "src/engine/CountTwiceStatement.cpp",
    "src/engine/CMakeLists.txt",
    "src/workbench/model/ScriptWords.cpp",
    "src/workbench/model/KeywordHelp.cpp",
    "translations/en.po",
    "docs/language.md",
    "docs/card.md",
    "tests/language/tables_test.cpp",
    "tests/differential/Vocabulary.cpp",
    "tests/scripts/count_twice/operand_that_cannot_be_read.kx",
    "tests/scripts/count_twice/finishes.kx",
]
CHECKS = ["tests/docs/documents_test.py", "tests/docs/names_test.py", "tests/translations/translations_test.py"]


def run(*command, **options):
    return subprocess.run(command, capture_output=True, encoding="utf-8", timeout=900, **options)


def files_of(folder):
    return {path.relative_to(folder): path.read_bytes() for path in folder.rglob("*") if path.is_file()}


def compiler_of(path):
    """The command that compiles a file of the project, without its input, its output and what goes before it."""
    entry, = (entry for entry in json.loads(COMMANDS.read_text(encoding="utf-8")) if entry["file"] == str(ROOT / path))
    words = shlex.split(entry["command"])
    start = next(i for i, word in enumerate(words) if word.endswith("++"))
    words = words[start : words.index("-o")]
    return entry["directory"], words


class Copy(unittest.TestCase):
    """A copy of the tree for all tests of a class."""

    maxDiff = None

    @classmethod
    def setUpClass(cls):
        scratch = tempfile.TemporaryDirectory()
        cls.addClassCleanup(scratch.cleanup)
        cls.copy = pathlib.Path(scratch.name) / "kalvex"
        shutil.copytree(ROOT, cls.copy, symlinks=True,
                        ignore=shutil.ignore_patterns("build", ".git", "__pycache__", "data"))

    def make(self, name):
        return run(self.copy / "tools/new-statement", name)

    def check_refused(self, name, told):
        before = files_of(self.copy)
        done = self.make(name)
        self.assertEqual((done.returncode, done.stdout, done.stderr), (1, "", f"new-statement: {told}\n"))
        self.assertEqual(files_of(self.copy), before)


class NewStatement(Copy):
    def check_syntax(self, path):
        made = path == "src/engine/CountTwiceStatement.cpp"
        folder, words = compiler_of("src/engine/Pacing.cpp" if made else path)
        words = [word.replace(f"{ROOT}/src", f"{self.copy}/src").replace(f"{ROOT}/tests", f"{self.copy}/tests")
                 for word in words]
        done = run(*words, "-fsyntax-only", str(self.copy / path), cwd=folder)
        self.assertEqual((done.returncode, done.stderr), (0, ""), path)

    def test_skeleton_compiles_and_keeps_documents_and_translations_whole(self):
        self.check_skeleton()
        self.check_scripts()
        self.check_refused("COUNT_TWICE", "COUNT_TWICE is a word of the language")

    def check_skeleton(self):
        before = files_of(self.copy)
        done = self.make("COUNT_TWICE")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertEqual(done.stdout.partition("\n\n")[0].splitlines(), PLACES)
        after = files_of(self.copy)
        changed = {str(path) for path in after if after[path] != before.get(path)}
        self.assertEqual(changed, set(PLACES))
        self.assertEqual(set(before) - set(after), set())
        for check in CHECKS:
            told = run(sys.executable, "-B", self.copy / check)
            self.assertEqual(told.returncode, 0, told.stderr)
        for path in PLACES:
            if path.endswith(".cpp"):
                self.check_syntax(path)

    def check_scripts(self):
        folder = self.copy / "tests/scripts/count_twice"
        self.assertEqual((folder / "finishes.kx").read_bytes(),
                         b"COUNT_TWICE 5\r\n\r\n;; result: scripts.0.finished = true\r\n")
        bad = (folder / "operand_that_cannot_be_read.kx").read_bytes().decode("cp1250")
        self.assertEqual(bad, "COUNT_TWICE nieznana\r\n\r\n;; exit: 1\r\n;; error: 3 \"nieznana\"\r\n;; line: 1\r\n"
                         ";; log: \"%s : Linia 1 - Zmienna nie została poprawnie zdefiniowana : nieznana\"\r\n")


class Refusals(Copy):
    def test_word_of_the_language_is_refused(self):
        for name in ("SET", "STRING_LEFT", "THEN", "ALARM", "READY"):
            self.check_refused(name, f"{name} is a word of the language")

    def test_name_that_is_no_keyword_is_refused(self):
        for name in ("licz", "A", "DWA-RAZY", "LICZ_", "ŻAR"):
            self.check_refused(name, f"{name}: a statement is called by capital letters, in words with _ between them")

    def test_file_in_the_way_is_told_and_nothing_changes(self):
        mine = self.copy / "src/engine/CountTwiceStatement.cpp"
        mine.write_text("// mine\n", encoding="utf-8")
        self.addCleanup(mine.unlink)
        self.check_refused("COUNT_TWICE", "src/engine/CountTwiceStatement.cpp is there already")


if __name__ == "__main__":
    unittest.main()
