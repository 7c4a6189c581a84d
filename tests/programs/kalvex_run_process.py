"""What the tests of kalvex-run share. The program is the first argument of the one that is run."""
import dataclasses
import datetime
import json
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest
import zoneinfo

RUNNER = str(pathlib.Path(sys.argv.pop(1)).resolve())
ZONE = "Europe/Warsaw"
CLOCK = "2024-03-10 07:00:00"
START = int(datetime.datetime.fromisoformat(CLOCK).replace(tzinfo=zoneinfo.ZoneInfo(ZONE)).timestamp())
VIRTUAL = ("--clock", CLOCK, "--ticks", "2000")
TIME_LIMIT_SECONDS = 60

SCRIPT_FIELDS = (
    "path started running paused stepRequested minimised finished errorStanding currentLine lineCount priority "
    "errorCode errorText errorMessage ignoreUnknown callDepth waitLines variables"
).split()


@dataclasses.dataclass
class Outcome:
    code: int
    out: str
    err: str

    @property
    def result(self):
        return json.loads(self.out)

    @property
    def script(self):
        return self.result["scripts"][0]

    @property
    def log(self):
        return [entry["text"] for entry in self.result["log"]]

    def cell(self, name, script=0):
        variables = self.result["scripts"][script]["variables"]
        return next(v for v in variables if v["name"] == name)["slots"]["CURDATA"]

    def value(self, name, script=0):
        return self.cell(name, script)["value"]


class RunnerTest(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory(prefix="kalvex-")
        self.addCleanup(scratch.cleanup)
        self.folder = pathlib.Path(scratch.name).resolve()
        self.environment = dict(os.environ, TZ=ZONE, LC_ALL="C.UTF-8")

    def write(self, name, text):
        path = self.folder / name
        path.write_bytes(text.replace("\n", "\r\n").encode("cp1250"))
        return path

    def call(self, *arguments):
        ended = subprocess.run(
            [RUNNER, *arguments],
            cwd=self.folder,
            env=self.environment,
            stdin=subprocess.DEVNULL,
            capture_output=True,
            timeout=TIME_LIMIT_SECONDS,
        )
        return Outcome(ended.returncode, ended.stdout.decode("utf-8"), ended.stderr.decode("utf-8"))

    def run_scripts(self, *texts, options=VIRTUAL, actions=None):
        """The scripts a.kx, b.kx, ... of these texts, with --json."""
        names = [f"{letter}.kx" for letter, _ in zip("abcd", texts)]
        for name, text in zip(names, texts):
            self.write(name, text)
        if actions is not None:
            (self.folder / "actions.json").write_text(json.dumps(actions), encoding="utf-8")
            options = (*options, "--actions", "actions.json")
        return self.call("--json", *options, *names)


def at(tick, do, script=0, **more):
    return {"atTick": tick, "script": script, "do": do, **more}
