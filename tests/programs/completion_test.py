#!/usr/bin/env python3
"""What bash, zsh and fish offer for the command lines of each program.

    completion_test.py FOLDER_OF_COMPLETIONS FOLDER_OF_PROGRAMS PROGRAM...

What they ask a running module is in kalvexctl_supervision_test.py.
"""
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

import completion_shells
from completion_shells import bash, fish, zsh

BIN = pathlib.Path(sys.argv.pop(1)).resolve()
BUILT = sys.argv[1:]
del sys.argv[1:]

ENDINGS = ["--version", "--help"]
SERVER = ["--config", "--log-level", "--metrics", "--check", *ENDINGS]
REACH = ["--module", "--address", "--authority", "--certificate", "--key", "--certificate-name", "--plain-text", "--user",
         "--login", "--dir", "--timeout", "--wait", *ENDINGS]
# By the words in front of it, what is offered for "--".
OPTIONS = {
    "kalvex": {"": ["--working-dir", "--log-dir", *ENDINGS]},
    "kalvexd": {"": ["--working-dir", "--log-dir", "--log-stdout", "--metrics", "--check", "--add-source",
                     "--remove-source", "--list-sources", "--protect", *ENDINGS]},
    "sorvaned": {
        "": SERVER,
        "user": SERVER,
        "user add": [*SERVER, "--level", "--group", "--address", "--description"],
        "user list": SERVER,
        "user passwd": SERVER,
        "user remove": SERVER,
        "backup": [*SERVER, "--json"],
        "history": [*SERVER, "--at", "--versions", "--json"],
        "alarms": [*SERVER, "--active", "--from", "--to", "--json"],
        "acknowledge": [*SERVER, "--user", "--json"],
        "values": [*SERVER, "--watch", "--user", "--json"],
        "export": [*SERVER, "--from", "--to", "--kind", "--csv", "--json"],
        "import": [*SERVER, "--write", "--user", "--json"],
        "check": [*SERVER, "--json"],
    },
    "kalvexctl": {
        "": REACH,
        "list": REACH,
        "status": [*REACH, "--all", "--json"],
        "show": [*REACH, "--context"],
        "vars": [*REACH, "--watch", "--json"],
        "set": REACH,
        "start": REACH,
        "stop": REACH,
        "step": REACH,
        "reset": REACH,
        "break": REACH,
        "unbreak": REACH,
        "breaks": REACH,
        "why": [*REACH, "--json"],
        "audit": [*REACH, "--since", "--script", "--json"],
        "reload": REACH,
        "take": [*REACH, "--force"],
        "release": REACH,
        "open": REACH,
        "close": [*REACH, "--force"],
        "log": [*REACH, "--lines", "--follow", "--level"],
        "level": REACH,
    },
    "kalvex-convert": {"": ["--to", "--from", "--line-ends", "--mark", "--output", "--check", *ENDINGS]},
    "kalvex-run": {"": ["--clock", "--tick-ms", "--ticks", "--until", "--minimised", "--plant", "--actions", "--user",
                        "--log-level", "--json", "--lines", "--profile", "--test", "--junit", "--language", *ENDINGS]},
}
COMMANDS = {
    "sorvaned": {"": ["user", "backup", "history", "alarms", "acknowledge", "values", "export", "import", "check"],
                 "user": ["add", "list", "passwd", "remove"]},
    "kalvexctl": {"": [name for name in OPTIONS["kalvexctl"] if name]},
}

# Those with options of their own.
SORVANED_COMMANDS = [["user", "add"], ["backup"], ["history"], ["alarms"], ["acknowledge"], ["values"], ["export"],
                     ["import"], ["check"]]

FILES = ["a.kx", "b.KX", "d.csv", "sub"]
SCRIPTS = ["a.kx", "b.KX", "sub"]
FOLDERS = ["sub"]
NOTHING = []
# What is offered behind these words, in the folder that a test makes.
VALUES = {
    "kalvex --working-dir ": FOLDERS,
    "kalvex --log-dir ": FOLDERS,
    "kalvex ": SCRIPTS,
    "kalvex a.kx ": SCRIPTS,
    "kalvexd --working-dir ": FOLDERS,
    "kalvexd --log-dir ": FOLDERS,
    "kalvexd --metrics ": NOTHING,
    "kalvexd --add-source ": NOTHING,
    "kalvexd --remove-source ": NOTHING,
    "kalvexd --check ": NOTHING,
    "kalvexd ": NOTHING,
    "sorvaned --config ": FILES,
    "sorvaned --config d": ["d.csv"],
    "sorvaned --log-level ": ["0", "1", "2", "3"],
    "sorvaned --metrics ": NOTHING,
    "sorvaned --config d.csv ": ["acknowledge", "alarms", "backup", "check", "export", "history", "import", "user",
                                 "values"],
    "sorvaned user --config d.csv ": ["add", "list", "passwd", "remove"],
    "sorvaned user add --level ": NOTHING,
    "sorvaned user add --group ": NOTHING,
    "sorvaned user add --address ": NOTHING,
    "sorvaned user add --description ": NOTHING,
    "sorvaned user add --config ": FILES,
    "sorvaned user add ": NOTHING,
    "sorvaned user list ": NOTHING,
    "sorvaned user passwd ": NOTHING,
    "sorvaned user remove ": NOTHING,
    "sorvaned backup ": FOLDERS,
    "sorvaned backup sub ": NOTHING,
    "sorvaned history ": NOTHING,
    "sorvaned alarms ": NOTHING,
    "sorvaned acknowledge ": NOTHING,
    "sorvaned acknowledge --user ": NOTHING,
    "sorvaned values ": NOTHING,
    "sorvaned values --user ": NOTHING,
    "sorvaned export --kind ": ["archive", "day", "hour", "month", "span"],
    "sorvaned export --from ": NOTHING,
    "sorvaned export ": NOTHING,
    "sorvaned import ": FILES,
    "sorvaned import a.kx ": NOTHING,
    "sorvaned check ": NOTHING,
    "kalvexctl --authority ": FILES,
    "kalvexctl --certificate ": FILES,
    "kalvexctl --key ": FILES,
    "kalvexctl --login ": FILES,
    "kalvexctl --dir ": FOLDERS,
    "kalvexctl --address ": NOTHING,
    "kalvexctl --certificate-name ": NOTHING,
    "kalvexctl --module ": NOTHING,
    "kalvexctl -m ": NOTHING,
    "kalvexctl --user ": NOTHING,
    "kalvexctl -u ": NOTHING,
    "kalvexctl --timeout ": NOTHING,
    "kalvexctl --wait ": NOTHING,
    "kalvexctl open ": SCRIPTS,
    "kalvexctl level ": ["1", "2", "3"],
    "kalvexctl level 1 ": NOTHING,
    "kalvexctl log --level ": ["0", "1", "2", "3"],
    "kalvexctl log -n ": NOTHING,
    "kalvexctl show --context ": NOTHING,
    "kalvexctl audit --since ": NOTHING,
    "kalvexctl list ": NOTHING,
    "kalvexctl --wait 5 un": ["unbreak"],
    "kalvexctl -m list l": ["level", "list", "log"],
    "kalvexctl -- st": ["start", "status", "step", "stop"],
    "kalvex-convert --to ": ["utf-8", "windows-1250"],
    "kalvex-convert -t ": ["utf-8", "windows-1250"],
    "kalvex-convert --from u": ["utf-8"],
    "kalvex-convert -f u": ["utf-8"],
    "kalvex-convert --line-ends ": ["crlf", "keep", "lf"],
    "kalvex-convert -e ": ["crlf", "keep", "lf"],
    "kalvex-convert --output ": FILES,
    "kalvex-convert -o ": FILES,
    "kalvex-convert ": FILES,
    "kalvex-convert --mark a.kx ": FILES,
    "kalvex-run ": SCRIPTS,
    "kalvex-run a.kx ": SCRIPTS,
    # No script begins like this.
    "kalvex-run d": ["d.csv"],
    "kalvex-run --plant ": FILES,
    "kalvex-run --actions ": FILES,
    "kalvex-run --profile ": FILES,
    "kalvex-run --junit ": FILES,
    "kalvex-run --clock ": NOTHING,
    "kalvex-run --tick-ms ": NOTHING,
    "kalvex-run --ticks ": NOTHING,
    "kalvex-run --until ": NOTHING,
    "kalvex-run --user ": NOTHING,
    "kalvex-run --log-level ": NOTHING,
    "kalvex-run --language FTP": ["FTP_INIT", "FTP_RESULT"],
}


def sorted_values(offered):
    return {line: sorted(words) for line, words in offered.items()}


def in_order(shell):
    """Sorted, and without the stroke that one shell has behind a folder and another adds later."""
    def offered(*asked):
        return [sorted(word.rstrip("/") for word in found) for found in shell(*asked)]
    return offered


class Completion(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory(prefix="kalvex-")
        self.addCleanup(scratch.cleanup)
        self.folder = pathlib.Path(scratch.name).resolve()
        for name in ("a.kx", "b.KX", "d.csv"):
            (self.folder / name).touch()
        (self.folder / "sub").mkdir()
        # Descriptions are in English whatever the person reads.
        self.environment = dict(os.environ, LC_ALL="C.UTF-8", LANGUAGE="pl", PATH=f"{BIN}:{os.environ['PATH']}")

    def help_of(self, program, *command):
        return subprocess.run([BIN / program, *command, "--help"], capture_output=True, encoding="utf-8", check=True,
                              env=self.environment, timeout=60).stdout

    def offers(self, shell, offered):
        """What each of the lines, which are the keys, is offered; by the shell as a function of completion_shells."""
        for program in sorted({line.split(" ")[0] for line in offered}):
            lines = [line for line in offered if line.split(" ")[0] == program]
            found = shell(program, lines, self.folder, self.environment)
            self.assertEqual(dict(zip(lines, found)), {line: offered[line] for line in lines})

    def rows(self, table, more):
        """What is offered for what is typed, of the programs that are built. `more` ends the line."""
        return {" ".join(filter(None, (program, command))) + more: offered
                for program in BUILT for command, offered in table.get(program, {}).items()}

    def values(self):
        return {line: offered for line, offered in VALUES.items() if line.split(" ")[0] in BUILT}

    def test_tables_have_each_program(self):
        self.assertEqual(sorted(BUILT), sorted(set(OPTIONS) & {*BUILT, "kalvexd", "sorvaned", "kalvexctl",
                                                               "kalvex-convert", "kalvex-run"}))

    def test_options_are_those_that_the_programs_tell(self):
        for program in BUILT:
            told = set()
            for command in ([], *SORVANED_COMMANDS) if program == "sorvaned" else ([],):
                told |= set(re.findall(r"(?m)^ +(?:-\w,)?(--[a-z-]+)", self.help_of(program, *command)))
            self.assertEqual(told, {option for options in OPTIONS[program].values() for option in options}, program)

    def test_bash_is_told_whom_to_ask(self):
        for program in BUILT:
            shown = subprocess.run(["bash", "-c", f"{completion_shells.script(program, 'bash')}\ncomplete -p"],
                                   capture_output=True, encoding="utf-8", timeout=60)
            function = "_" + program.replace("-", "_")
            self.assertEqual((shown.stdout, shown.stderr), (f"complete -F {function} {program}\n", ""))

    def test_bash_offers_options(self):
        self.offers(bash, self.rows(OPTIONS, " --"))

    def test_bash_offers_commands(self):
        self.offers(bash, self.rows(COMMANDS, " "))

    def test_bash_offers_values(self):
        self.offers(in_order(bash), self.values())

    def test_bash_offers_values_behind_an_equals_sign(self):
        # It stands there as a word of its own.
        self.offers(bash, {"kalvex-convert --to = u": ["utf-8"], "kalvex-convert --to =": ["windows-1250", "utf-8"],
                           "kalvexctl --dir =": FOLDERS, "kalvexctl --wait = 5 un": ["unbreak"],
                           "kalvexctl level --wait = 5 ": ["1", "2", "3"]})

    def test_value_that_may_lack_is_no_argument(self):
        for shell in (bash, zsh, fish):
            self.offers(shell, {"kalvexctl vars --watch --js": ["--json"], "kalvexctl vars --watch 5 --js": ["--json"]})

    def test_bash_takes_negative_numbers_and_what_is_behind_two_dashes_for_arguments(self):
        self.offers(bash, {"kalvexctl level -5 ": [], "kalvex-convert -- --": [], "kalvex-convert -- d": ["d.csv"]})

    def test_zsh_offers_options(self):
        self.offers(zsh, sorted_values(self.rows(OPTIONS, " --")))

    def test_zsh_offers_commands(self):
        self.offers(zsh, sorted_values(self.rows(COMMANDS, " ")))

    def test_zsh_offers_values(self):
        # It offers options too where no argument is left.
        def offered(*asked):
            return [[word for word in found if not word.startswith("-")] for found in zsh(*asked)]
        self.offers(offered, self.values())

    def test_zsh_offers_values_behind_an_equals_sign(self):
        self.offers(zsh, {"kalvex-convert --to=u": ["utf-8"], "kalvexctl --dir=": FOLDERS,
                          "kalvexctl --wait=5 un": ["unbreak"]})

    def test_zsh_offers_once_what_counts_once(self):
        self.offers(zsh, {"kalvexd --check --ch": [], "sorvaned user add --group a --gr": ["--group"],
                          "kalvexctl -m A --mod": ["--module"], "kalvex-convert -t utf-8 --to": []})

    def test_fish_offers_options(self):
        self.offers(in_order(fish), sorted_values(self.rows(OPTIONS, " --")))

    def test_fish_offers_commands(self):
        self.offers(in_order(fish), sorted_values(self.rows(COMMANDS, " ")))

    def test_fish_offers_values(self):
        # Where scripts are wanted it offers all files.
        self.offers(in_order(fish), {line: FILES if offered is SCRIPTS else offered
                                     for line, offered in self.values().items()})

    def test_fish_offers_values_behind_an_equals_sign(self):
        self.offers(fish, {"kalvex-convert --to=u": ["--to=utf-8"], "kalvexctl --wait=5 un": ["unbreak"]})

    def test_fish_offers_scripts_first(self):
        (self.folder / "a.csv").touch()
        self.offers(fish, {"kalvex-run ": ["a.kx", "sub/", "a.csv", "b.KX", "d.csv"]})

    def test_descriptions_are_those_of_the_help(self):
        for program in BUILT:
            commands = SORVANED_COMMANDS if program == "sorvaned" else []
            text = re.sub(r"\s+", " ", "".join(self.help_of(program, *command) for command in ([], *commands)))
            lines = completion_shells.script(program, "fish").splitlines()
            described = re.findall(r"(?m)^complete .* -l ([a-z-]+).* -d '(.*)'$", "\n".join(lines))
            self.assertEqual({"--" + name for name, _ in described},
                             {option for options in OPTIONS[program].values() for option in options})
            for name, told in described:
                self.assertRegex(text, rf"--{name}( \S+| \"[^\"]*\")* {re.escape(told.replace(chr(92), ''))}", program)


if __name__ == "__main__":
    unittest.main()
