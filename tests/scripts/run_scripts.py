#!/usr/bin/env python3
"""Runs script tests: scripts that carry their expectations in comments.

    run_scripts.py --runner PATH SCRIPT_OR_FOLDER...

A comment that begins with ";;" is an instruction to this program; CONTRIBUTING.md tells the notation. Each script
runs in a scratch folder of its own, under a virtual clock. Beside WHAT.kx may stand WHAT.plant.json and
WHAT.actions.json, which kalvex-run is given, and a folder WHAT.d, whose content is copied beside the script.
WHAT.kx may also name another script to run in its place, which takes everything that stands beside it along.
"""
import argparse
import dataclasses
import datetime
import json
import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys
import tempfile
import zoneinfo

DEFAULT_OPTIONS = {"--clock": "2024-03-10 07:00:00", "--ticks": "3000"}
DEFAULT_ZONE = "Europe/Warsaw"
START_LINES = ("%s : Inicjowanie skryptu ", "%s : Start skryptu ")
SLOTS = ("CURDATA", "HREP", "DREP", "MREP", "SREP")
CELL_FIELDS = ("type", "status", "time", "value", "text")
TIME_LIMIT_SECONDS = 60


class Fault(Exception):
    """What is wrong with a script test itself, or what its run lacks."""


@dataclasses.dataclass
class Outcome:
    """What a run left behind."""

    exit_code: int
    result: dict
    folder: pathlib.Path
    path: str

    @property
    def script(self):
        return self.result["scripts"][0]


@dataclasses.dataclass
class Test:
    """The instructions of one script. A check is a label, a function of the outcome, and what it must give."""

    script: pathlib.PurePath = None
    options: list = dataclasses.field(default_factory=list)
    zone: str = DEFAULT_ZONE
    exit_code: int = 0
    log: list = dataclasses.field(default_factory=list)
    checks: list = dataclasses.field(default_factory=list)
    seen: set = dataclasses.field(default_factory=set)


@dataclasses.dataclass
class LocalTime:
    """A local reading of the clock, which counts as its number of seconds in the zone of the test."""

    reading: datetime.datetime

    def seconds(self, zone):
        return int(self.reading.replace(tzinfo=zoneinfo.ZoneInfo(zone)).timestamp())


def parse_value(text):
    local = re.fullmatch(r'local "(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d)"', text)
    try:
        if local:
            return LocalTime(datetime.datetime.fromisoformat(local[1]))
        return json.loads(text)
    except ValueError as error:
        raise Fault(f"no value: {text} ({error})") from error


def parse_text(text):
    value = parse_value(text)
    if not isinstance(value, str):
        raise Fault(f"no quoted text: {text}")
    return value


def parse_number(text):
    if not re.fullmatch(r"\d+", text):
        raise Fault(f"no number: {text}")
    return int(text)


def parse_equation(text):
    left, equals, right = text.partition(" = ")
    if not equals:
        raise Fault(f'no " = " in: {text}')
    return left.strip(), parse_value(right.strip())


def read_variable(script, name, field):
    """A field of a variable's cell or cells, or of the variable itself."""
    base, dot, slot = name.rpartition(".")
    if not dot or slot not in (*SLOTS, "ARCH") or not base:
        base, slot = name, "CURDATA"
    found = [variable for variable in script["variables"] if variable["name"] == base]
    if len(found) != 1:
        raise Fault(f"{len(found)} variables are called {base}")
    variable = found[0]
    if field not in CELL_FIELDS:
        return read_path(variable, field)
    if slot == "ARCH":
        return [cell[field] for cell in variable["archive"]]
    if variable["kind"] == "LIST":
        return [cell[field] for cell in variable["elements"]]
    if variable["kind"] == "POINTER":
        raise Fault(f"{base} is a pointer: expect its target")
    return variable["slots"][slot][field]


def read_path(value, path):
    """The part of a JSON value that a path such as scripts.0.priority leads to."""
    for step in path.split("."):
        try:
            value = value[int(step)] if isinstance(value, list) else value[step]
        except (KeyError, IndexError, ValueError, TypeError) as error:
            raise Fault(f"{step} of {path} is not there") from error
    return value


def read_file(folder, name):
    path = folder / name
    return path.read_bytes().decode("cp1250") if path.exists() else None


def on_script(test, text):
    test.script = pathlib.PurePath(text)


def on_run(test, text):
    test.options = shlex.split(text)


def on_tz(test, text):
    if text not in zoneinfo.available_timezones():
        raise Fault(f"no time zone: {text}")
    test.zone = text


def on_exit(test, text):
    test.exit_code = parse_number(text)


def on_error(test, text):
    code, _, detail = text.partition(" ")
    wanted = [parse_number(code), parse_text(detail.strip())]
    test.checks.append(("error", lambda run: [run.script["errorCode"], run.script["errorText"]], wanted))


def on_line(test, text):
    test.checks.append(("line", lambda run: run.script["currentLine"] + 1, parse_number(text)))


def on_log(test, text):
    test.log.append(parse_text(text))


def on_variables(test, text):
    test.checks.append(("variables", lambda run: [v["name"] for v in run.script["variables"]], text.split()))


def on_expect(test, text):
    left, wanted = parse_equation(text)
    name, _, field = left.partition(" ")
    test.checks.append((left, lambda run: read_variable(run.script, name, field.strip() or "value"), wanted))


def on_result(test, text):
    path, wanted = parse_equation(text)
    test.checks.append((path, lambda run: read_path(run.result, path), wanted))


def on_file(test, text):
    quoted, wanted = parse_equation(text)
    name = parse_text(quoted)
    test.checks.append((f"file {name}", lambda run: read_file(run.folder, name), wanted))


# Name, handler, whether it may stand more than once, whether it expects something.
INSTRUCTIONS = {
    "script": (on_script, False, False),
    "run": (on_run, False, False),
    "tz": (on_tz, False, False),
    "exit": (on_exit, False, True),
    "error": (on_error, False, True),
    "line": (on_line, False, True),
    "log": (on_log, True, True),
    "variables": (on_variables, False, True),
    "expect": (on_expect, True, True),
    "result": (on_result, True, True),
    "file": (on_file, True, True),
}


def parse(text):
    """The test that a script's text carries."""
    test = Test()
    for number, line in enumerate(text.splitlines(), 1):
        if not line.strip().startswith(";;"):
            continue
        try:
            name, colon, rest = line.strip()[2:].partition(":")
            name = name.strip()
            if not colon or name not in INSTRUCTIONS:
                raise Fault(f"unknown instruction: {line.strip()}")
            handler, repeats, _ = INSTRUCTIONS[name]
            if name in test.seen and not repeats:
                raise Fault(f"a second {name}")
            test.seen.add(name)
            handler(test, rest.strip())
        except Fault as fault:
            raise Fault(f"line {number}: {fault}") from fault
    if not any(expects for name, (_, _, expects) in INSTRUCTIONS.items() if name in test.seen):
        raise Fault("the script expects nothing")
    return test


def same(actual, wanted):
    """Whether an actual JSON value is the wanted one; of an object only the wanted keys count."""
    if isinstance(wanted, dict):
        return isinstance(actual, dict) and all(k in actual and same(actual[k], v) for k, v in wanted.items())
    if isinstance(wanted, list):
        return isinstance(actual, list) and len(actual) == len(wanted) and all(map(same, actual, wanted))
    numbers = (int, float)
    if type(wanted) in numbers:
        return type(actual) in numbers and actual == wanted
    return type(actual) is type(wanted) and actual == wanted


def differences(test, run):
    """One line for each thing that is not as the script expects it."""
    found = []

    def compare(label, actual, wanted):
        if not same(actual, wanted):
            found.append(f"{label}: expected {show(wanted)}, got {show(actual)}")

    compare("exit", run.exit_code, test.exit_code)
    log = [entry["text"] for entry in run.result["log"]]
    compare("log", log, [place(line, run.path) for line in whole_log(test)])
    for label, read, wanted in test.checks:
        try:
            compare(label, read(run), wanted.seconds(test.zone) if isinstance(wanted, LocalTime) else wanted)
        except Fault as fault:
            found.append(f"{label}: {fault}")
    return found


def whole_log(test):
    """All lines that the log must hold: a test that does not tell of the first start has gone through it."""
    return test.log if test.log[:1] == [START_LINES[0]] else [*START_LINES, *test.log]


def place(line, path):
    return path + line[2:] if line.startswith("%s") else line


def show(value):
    return json.dumps(value, ensure_ascii=False)


def command_line(runner, script, tested, test):
    options = list(test.options)
    for name, value in DEFAULT_OPTIONS.items():
        if name not in options:
            options += [name, value]
    for option in ("--plant", "--actions"):
        beside = script.with_suffix(f".{option[2:]}.json")
        if beside.exists():
            options += [option, str(beside.resolve())]
    return [runner, "--json", *options, tested]


def read_script(script):
    data = script.read_bytes()
    if not data.count(b"\n") == data.count(b"\r") == data.count(b"\r\n"):
        raise Fault("a line end is not CR LF")
    try:
        return data.decode("cp1250")
    except UnicodeDecodeError as error:
        raise Fault(f"not Windows-1250: {error}") from error


def run_script(runner, script):
    """What is not as expected: no line if the test passes."""
    test = parse(read_script(script))
    tested = script.parent / (test.script or script.name)
    read_script(tested)
    with tempfile.TemporaryDirectory(prefix="kalvex-") as scratch:
        folder = pathlib.Path(scratch).resolve()
        if test.script:
            shutil.copytree(tested.parent, folder, dirs_exist_ok=True)
        else:
            shutil.copy(script, folder)
        beside = script.with_suffix(".d")
        if beside.is_dir():
            shutil.copytree(beside, folder, dirs_exist_ok=True)
        ended = subprocess.run(
            command_line(runner, script, tested.name, test),
            cwd=folder,
            env=dict(os.environ, TZ=test.zone, LC_ALL="C.UTF-8"),
            stdin=subprocess.DEVNULL,
            capture_output=True,
            timeout=TIME_LIMIT_SECONDS,
        )
        try:
            result = json.loads(ended.stdout.decode("utf-8"))
        except ValueError as error:
            complaint = ended.stderr.decode("utf-8", "replace").strip()
            raise Fault(f"exit {ended.returncode} and no JSON: {error}\n{complaint}") from error
        run = Outcome(ended.returncode, result, folder, str(folder / tested.name))
        found = differences(test, run)
        if found:
            found += ["log: " + entry["text"] for entry in result["log"]]
        return found


def main():
    options = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    options.add_argument("--runner", required=True, type=pathlib.Path)
    options.add_argument("paths", nargs="+", type=pathlib.Path)
    arguments = options.parse_args()

    scripts = []
    for path in arguments.paths:
        scripts += sorted(path.glob("**/*.kx")) if path.is_dir() else [path]
    scripts = [script for script in scripts if not any(part.endswith(".d") for part in script.parts[:-1])]
    if not scripts:
        sys.exit("no script there")

    failed = 0
    for script in scripts:
        try:
            found = run_script(str(arguments.runner.resolve()), script)
        except (Fault, OSError, subprocess.TimeoutExpired) as fault:
            found = [str(fault)]
        failed += bool(found)
        print("FAIL" if found else "ok  ", script)
        for line in found:
            print("    ", line)
    print(f"{len(scripts) - failed} passed, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
