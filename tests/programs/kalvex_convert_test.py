#!/usr/bin/env python3
"""kalvex-convert from outside: what becomes of files, what it says of those that it cannot convert, its options.

    kalvex_convert_test.py PATH_OF_KALVEX_CONVERT FOLDER_OF_COMPLETIONS [unittest arguments]
"""
import os
import pathlib
import shutil
import stat
import subprocess
import sys
import tempfile
import unittest

CONVERT = str(pathlib.Path(sys.argv.pop(1)).resolve())

import completion_shells  # noqa: E402

TEXT = "; Zażółć „gęślą jaźń”\nLOCAL A = 1\n"
UTF8 = TEXT.encode("utf-8")
WINDOWS = TEXT.replace("\n", "\r\n").encode("cp1250")
MARK = b"\xef\xbb\xbf"
USAGE = "kalvex-convert: {}; kalvex-convert --help tells more\n"


class ConvertTest(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory(prefix="kalvex-")
        self.addCleanup(scratch.cleanup)
        self.folder = pathlib.Path(scratch.name).resolve()
        self.environment = dict(os.environ, LC_ALL="C.UTF-8")
        self.environment.pop("LANGUAGE", None)

    def put(self, name, content):
        (self.folder / name).write_bytes(content)
        return name

    def get(self, name):
        return (self.folder / name).read_bytes()

    def convert(self, *arguments, given=b"", **more):
        """Exit status, standard output as bytes, standard error."""
        ended = subprocess.run([CONVERT, *arguments], cwd=self.folder, env=self.environment | more, input=given,
                               capture_output=True, timeout=60)
        return ended.returncode, ended.stdout, ended.stderr.decode("utf-8")

    def done(self, *arguments, given=b""):
        status, shown, told = self.convert(*arguments, given=given)
        self.assertEqual((status, told), (0, ""))
        return shown


class Files(ConvertTest):
    def test_many_files_change_in_place(self):
        names = [self.put("a.kx", UTF8), self.put("b.kx", WINDOWS), self.put("ą b.ini", MARK + UTF8)]
        self.assertEqual(self.done(*names), b"")
        self.assertEqual([self.get(name) for name in names], [WINDOWS] * 3)
        self.assertEqual(self.done("--to", "utf-8", *names), b"")
        self.assertEqual([self.get(name) for name in names], [UTF8.replace(b"\n", b"\r\n")] * 3)

    def test_line_ends_are_set(self):
        lf = WINDOWS.replace(b"\r\n", b"\n")
        for option, content in (("crlf", WINDOWS), ("lf", lf), ("keep", lf)):
            self.put("a.kx", UTF8)
            self.done("-e", option, "a.kx")
            self.assertEqual(self.get("a.kx"), content, option)

    def test_line_ends_stay_in_utf_8(self):
        self.put("a.csv", WINDOWS.replace(b"\r\n", b"\n"))
        self.done("-t", "utf-8", "a.csv")
        self.assertEqual(self.get("a.csv"), UTF8)

    def test_mark_is_written_where_it_is_wanted(self):
        self.put("a.csv", WINDOWS)
        self.done("--to=utf-8", "--mark", "--line-ends=lf", "a.csv")
        self.assertEqual(self.get("a.csv"), MARK + UTF8)

    def test_mode_and_link_stay_and_nothing_else_is_left(self):
        self.put("a.kx", UTF8)
        (self.folder / "a.kx").chmod(0o640)
        (self.folder / "b.kx").symlink_to("a.kx")
        self.done("b.kx")
        self.assertEqual(self.get("a.kx"), WINDOWS)
        self.assertEqual(stat.S_IMODE((self.folder / "a.kx").stat().st_mode), 0o640)
        self.assertTrue((self.folder / "b.kx").is_symlink())
        self.assertEqual(sorted(os.listdir(self.folder)), ["a.kx", "b.kx"])

    def test_file_as_it_should_be_is_not_written(self):
        self.put("a.kx", WINDOWS)
        before = (self.folder / "a.kx").stat()
        self.done("a.kx")
        after = (self.folder / "a.kx").stat()
        self.assertEqual((after.st_ino, after.st_mtime_ns), (before.st_ino, before.st_mtime_ns))

    def test_file_that_cannot_be_written_stays(self):
        self.put("a.kx", UTF8)
        os.mkdir(self.folder / ".a.kx.kalvex-new")
        status, shown, told = self.convert("a.kx")
        self.assertEqual((status, shown, told), (1, b"", "kalvex-convert: a.kx: Is a directory\n"))
        self.assertEqual(self.get("a.kx"), UTF8)

    def test_output_is_another_file(self):
        self.put("a.kx", UTF8)
        self.done("a.kx", "-o", "b.kx")
        self.assertEqual((self.get("a.kx"), self.get("b.kx")), (UTF8, WINDOWS))
        self.assertEqual(self.done("a.kx", "-o", "-"), WINDOWS)
        self.done("-oc.kx", given=UTF8)
        self.assertEqual(self.get("c.kx"), WINDOWS)
        self.done("b.kx", "--output", "d.kx")
        self.assertEqual(self.get("d.kx"), WINDOWS)

    def test_standard_input_goes_to_the_standard_output(self):
        self.assertEqual(self.done(given=UTF8), WINDOWS)
        self.assertEqual(self.done("-t", "utf-8", "-e", "lf", "-", given=WINDOWS), UTF8)
        self.put("-a.kx", UTF8)
        self.done("--", "-a.kx")
        self.assertEqual(self.get("-a.kx"), WINDOWS)

    def test_check_changes_nothing_and_names_what_would_change(self):
        self.put("a.kx", UTF8)
        self.put("b.kx", WINDOWS)
        self.put("c.kx", b"LOCAL A\n")
        self.assertEqual(self.convert("--check", "a.kx", "b.kx", "c.kx"), (1, b"a.kx\nc.kx\n", ""))
        self.assertEqual([self.get(name) for name in ("a.kx", "b.kx", "c.kx")], [UTF8, WINDOWS, b"LOCAL A\n"])
        self.assertEqual(self.convert("-c", "b.kx"), (0, b"", ""))


class Faults(ConvertTest):
    def test_characters_that_there_are_not_are_named_and_the_file_stays(self):
        content = "; Zażółć\n; ą → 😀\n; \u0085\n".encode("utf-8")
        self.put("a.kx", content)
        self.put("b.kx", UTF8)
        self.assertEqual(self.convert("a.kx", "b.kx"),
                         (1, b"", "a.kx:2:5: znaku → (U+2192) nie ma w Windows-1250\n"
                                  "a.kx:2:7: znaku 😀 (U+1F600) nie ma w Windows-1250\n"
                                  "a.kx:3:3: znaku U+0085 nie ma w Windows-1250\n"))
        self.assertEqual((self.get("a.kx"), self.get("b.kx")), (content, WINDOWS))

    def test_bytes_that_are_no_characters_are_named(self):
        self.put("a.kx", "ą\n".encode("cp1250") + b"x\x81\n")
        self.assertEqual(self.convert("-t", "utf-8", "a.kx"),
                         (1, b"", "a.kx:2:2: bajt 0x81 nie jest znakiem Windows-1250\n"))
        self.assertEqual(self.convert("--from", "utf-8", "a.kx"),
                         (1, b"", "a.kx:1:1: bajt 0xB9 nie należy do żadnego znaku UTF-8\n"
                                  "a.kx:2:2: bajt 0x81 nie należy do żadnego znaku UTF-8\n"))

    def test_what_is_no_text_stays(self):
        content = b"\xff\xfe" + "LOCAL A\n".encode("utf-16-le")
        self.put("a.kx", content)
        self.assertEqual(self.convert("a.kx"),
                         (1, b"", "a.kx:1:4: bajt 0x00: to nie jest tekst albo jest w UTF-16\n"))
        self.assertEqual(self.get("a.kx"), content)

    def test_faults_are_told_in_the_language_of_the_person(self):
        self.put("a.kx", "; ą →\n".encode("utf-8"))
        self.put("b.kx", b"\x81\xb9\n")
        self.put("c.kx", b"\0")
        self.assertEqual(self.convert("a.kx", "c.kx", LANGUAGE="en")[2],
                         "a.kx:1:5: Windows-1250 has no character → (U+2192)\n"
                         "c.kx:1:1: the byte 0x00: this is no text, or it is in UTF-16\n")
        self.assertEqual(self.convert("b.kx", "-t", "utf-8", LANGUAGE="en")[2],
                         "b.kx:1:1: the byte 0x81 is no character of Windows-1250\n")
        self.assertEqual(self.convert("b.kx", "-f", "utf-8", LANGUAGE="en")[2],
                         "b.kx:1:1: the byte 0x81 belongs to no character of UTF-8\n"
                         "b.kx:1:2: the byte 0xB9 belongs to no character of UTF-8\n")

    def test_faults_of_the_standard_input_are_named_and_nothing_comes_out(self):
        self.assertEqual(self.convert(given="ą →\n".encode("utf-8")),
                         (1, b"", "-:1:3: znaku → (U+2192) nie ma w Windows-1250\n"))

    def test_files_that_cannot_be_read_are_told_and_the_others_done(self):
        self.put("a.kx", UTF8)
        os.mkfifo(self.folder / "rura")
        self.assertEqual(self.convert("nie.kx", ".", "rura", "a.kx"),
                         (1, b"", "kalvex-convert: nie.kx: No such file or directory\n"
                                  "kalvex-convert: .: Is a directory\n"
                                  "kalvex-convert: rura: Not a regular file\n"))
        self.assertEqual(self.get("a.kx"), WINDOWS)

    def test_output_that_does_not_come_through_is_told(self):
        with open("/dev/full", "wb") as full:
            ended = subprocess.run([CONVERT], env=self.environment, input=UTF8, stdout=full, stderr=subprocess.PIPE,
                                   timeout=60)
        self.assertEqual((ended.returncode, ended.stderr), (1, b"kalvex-convert: -: No space left on device\n"))


class Options(ConvertTest):
    def test_wrong_usage(self):
        for arguments, told in (
                (["--foo"], "unknown option --foo"),
                (["--two"], "unknown option --two, did you mean --to?"),
                (["-x"], "unknown option -x"),
                (["--to"], "--to needs a value"),
                (["--to="], "--to needs a value"),
                (["-o", ""], "-o needs a value"),
                (["--check=1"], "--check takes no value"),
                (["-cm"], "-c takes no value"),
                (["-t", "latin2"], '-t: "latin2" is none of windows-1250 utf-8'),
                (["--line-ends", "cr"], '--line-ends: "cr" is none of crlf lf keep'),
                (["--mark"], "--mark goes with --to utf-8"),
                (["-c", "-o", "b"], "--output goes without --check"),
                (["-o", "b", "a", "c"], "--output takes one FILE")):
            self.assertEqual(self.convert(*arguments), (2, b"", USAGE.format(told)), arguments)

    def test_help_and_version_come_before_all_else(self):
        for option in ("-h", "--help"):
            status, shown, told = self.convert("nie.kx", option, "--foo")
            self.assertEqual((status, told), (0, ""))
            self.assertTrue(shown.startswith(b"Usage: kalvex-convert [OPTIONS] [FILE ...]\n"))
        for option in ("-V", "--version"):
            self.assertRegex(self.done(option), rb"^kalvex-convert \d+\.\d+\.\d+\n$")


class CompletionTest(ConvertTest):
    def script(self, shell):
        return completion_shells.script("kalvex-convert", shell)

    def complete(self, *words):
        """What bash offers for the last word."""
        return completion_shells.bash("kalvex-convert", [["kalvex-convert", *words]], self.folder, self.environment)[0]

    def test_bash(self):
        self.put("ą b.kx", b"")
        self.assertEqual(self.complete("--"), ["--to", "--from", "--line-ends", "--mark", "--output", "--check",
                                               "--version", "--help"])
        self.assertEqual(self.complete("--to", ""), ["windows-1250", "utf-8"])
        self.assertEqual(self.complete("-f", "u"), ["utf-8"])
        self.assertEqual(self.complete("-e", ""), ["crlf", "lf", "keep"])
        self.assertEqual(self.complete("--output", "ą"), ["ą b.kx"])
        self.assertEqual(self.complete(""), ["ą b.kx"])

    def test_zsh_is_told_each_option_with_its_values(self):
        lines = self.script("zsh").splitlines()
        help_of_to = "What the files become\\: windows-1250 (default) or utf-8"
        for name in ("-t+", "--to="):
            self.assertIn(f"        '(-t --to){name}[{help_of_to}]:ENCODING:(windows-1250 utf-8)'", lines)
        self.assertIn("        '(-c --check)--check[Change nothing; print the names of the files that would change]'", lines)
        self.assertEqual(sum(line.startswith("        '(-") for line in lines), 16)

    def test_zsh_takes_the_script(self):
        if shutil.which("zsh") is None:
            self.skipTest("zsh is not installed")
        checked = subprocess.run(["zsh", "-n"], input=self.script("zsh"), capture_output=True, encoding="utf-8",
                                 timeout=60)
        self.assertEqual((checked.returncode, checked.stderr), (0, ""))


if __name__ == "__main__":
    unittest.main()
