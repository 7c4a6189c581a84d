"""A data server and runs of scripts as processes of their own: what the tests of the network share."""
import concurrent.futures
import ctypes
import dataclasses
import json
import os
import pathlib
import re
import signal
import subprocess
import sys
import tempfile
import threading
import unittest

# For whatever is waited for; what takes longer has failed.
LIMIT_SECONDS = 60
# Longer than the ten seconds after which a silent server counts as gone, and than anything a busy machine adds.
SILENCE_LIMIT_SECONDS = 120
TESTS_AT_A_TIME = 4
ZONE = "Europe/Warsaw"
PASSWORD = "trudne, z przecinkiem"
STAMP = len("2024-03-10 07:00:00 ")


def die_with_the_test():
    """In a new process: however the test ends, this process does not outlive it."""
    PR_SET_PDEATHSIG = 1
    ctypes.CDLL(None).prctl(PR_SET_PDEATHSIG, signal.SIGKILL)


class Process:
    """A process whose lines are read as they come."""

    def __init__(self, test, arguments, environment, stream):
        self.lines = []
        self.process = subprocess.Popen(
            arguments, env=environment, stdin=subprocess.DEVNULL, encoding="utf-8", preexec_fn=die_with_the_test,
            stdout=subprocess.PIPE if stream == "stdout" else subprocess.DEVNULL,
            stderr=subprocess.PIPE if stream == "stderr" else None)
        self.stream = getattr(self.process, stream)
        test.addCleanup(self.stream.close)
        test.addCleanup(self.process.wait)
        test.addCleanup(self.process.kill)
        self.guard = None
        self.set_limit(LIMIT_SECONDS)
        test.addCleanup(lambda: self.guard.cancel())

    def await_line(self, expected):
        """Reads up to a line of the log."""
        for line in self.stream:
            self.lines.append(line.rstrip("\n")[STAMP:])
            if self.lines[-1] == expected:
                return
        raise AssertionError(f"no line {expected!r} in\n" + "\n".join(self.lines))

    def next_line(self):
        self.lines.append(self.stream.readline().rstrip("\n")[STAMP:])
        return self.lines[-1]

    def send(self, number):
        self.process.send_signal(number)

    def kill(self):
        self.process.kill()
        self.process.wait()

    def set_limit(self, seconds):
        """From now on the process may live so long."""
        if self.guard:
            self.guard.cancel()
        self.guard = threading.Timer(seconds, self.process.kill)
        self.guard.start()


class Run(Process):
    """A run of kalvex-run without --json. Its log is followed, its variables are known at its end."""

    def __init__(self, test, arguments, environment):
        super().__init__(test, arguments, environment, "stdout")
        self.table = []

    def end(self):
        """The exit status, once the run has ended by itself."""
        for line in self.stream:
            if re.match(r"\d{4}-", line):
                self.lines.append(line.rstrip("\n")[STAMP:])
            else:
                self.table.append(line)
        return self.process.wait()

    def value(self, name):
        return next(line.split()[2] for line in self.table if line.split()[:1] == [name])


# Writes the reports of hour after hour, each until the server gives it back, until the variable KONIEC stops it.
# KROK tells how far it has come.
WRITER = """REMOTE x srv@X
REMOTE krok srv@KROK
REMOTE koniec srv@KONIEC
LOCAL k = 0
LOCAL t0 = MAKE_TIME 2024 1 1 0
LOCAL t = t0
:dalej
SET t = t0 + k * 3600
:pisz
PUT x HREP t k 0
GET x HREP t 0
:czekaj
IF NOT READY x.HREP GOTO czekaj
IF UNKNOWN x.HREP GOTO pisz
SET k = k + 1
SET krok = k
IF koniec < 1 GOTO dalej
"""
WRITER_PLANT = """
[[access]]
write = "0"
[[variable]]
name = "X"
rt = 2
[[variable]]
name = "KROK"
value = 0
[[variable]]
name = "KONIEC"
value = 0
"""


@dataclasses.dataclass
class Outcome:
    """What a run with --json came to."""

    code: int
    result: dict

    @property
    def log(self):
        return [entry["text"] for entry in self.result["log"]]

    def cell(self, name, slot="CURDATA"):
        variables = self.result["scripts"][0]["variables"]
        return next(variable for variable in variables if variable["name"] == name)["slots"][slot]

    def value(self, name, slot="CURDATA"):
        return self.cell(name, slot)["value"]

    def elements(self, name):
        variables = self.result["scripts"][0]["variables"]
        return [cell["value"] for cell in next(v for v in variables if v["name"] == name)["elements"]]


class ServerAndRun(unittest.TestCase):
    """A folder with the configuration of a server and with scripts. The programs are set by the test file."""

    NAME = "srv"
    RUNNER = None
    SERVER = None
    PLANT = ""

    def setUp(self):
        scratch = tempfile.TemporaryDirectory(prefix="kalvex-")
        self.addCleanup(scratch.cleanup)
        self.folder = pathlib.Path(scratch.name).resolve()
        self.environment = dict(os.environ, TZ=ZONE, LC_ALL="C.UTF-8", SORVANE_RUNTIME_DIR=str(self.folder / "run"),
                                SORVANE_COMMON_PROFILE=str(self.folder / "sorvane.ini"))
        self.environment.pop("LANGUAGE", None)
        self.configuration = self.folder / "plant.toml"
        self.configure(self.PLANT)
        self.write_profile("")

    def configure(self, text):
        self.configuration.write_text(f'[server]\nname = "{self.NAME}"\n' + text, encoding="utf-8")

    def write_profile(self, text):
        (self.folder / "Kalvex.ini").write_bytes(text.encode("cp1250"))

    def command(self, *arguments):
        """What a machine runs; a test with several machines puts something in front."""
        return list(arguments)

    def script(self, text, name="main.kx"):
        """The path of a script of this text, whose lines come as fast as they can."""
        path = self.folder / name
        path.write_bytes(("PRIORITY 1\n" + text).replace("\n", "\r\n").encode("cp1250"))
        return str(path)

    def start_server(self, *options):
        server = Process(self, self.command(self.SERVER, "--config", str(self.configuration),
                                            "--log-level", "2", *options), self.environment, "stderr")
        server.await_line(f"Nasłuchiwanie: gniazdo lokalne {self.folder}/run/{self.NAME}")
        return server

    def arguments(self, *more):
        return self.command(self.RUNNER, "--profile", str(self.folder / "Kalvex.ini"), "--log-level", "2", *more)

    def follow(self, text, name="main.kx"):
        """A run that goes on beside the test."""
        return Run(self, self.arguments(self.script(text, name)), self.environment)

    def add_user(self, name, level):
        subprocess.run([self.SERVER, "--config", str(self.configuration), "user", "add", name, "--level",
                        str(level)], input=PASSWORD + "\n", encoding="utf-8", check=True, capture_output=True,
                       timeout=LIMIT_SECONDS)

    def log_in_as(self, name, password):
        """The profile's login, the password in the form that older files have."""
        coded = "".join(chr(32 + byte % 16) + chr(32 + byte // 16) for byte in password.encode("cp1250"))
        self.write_profile(f"[Zrodla]\r\nZrodlo0=srv,{name},{coded}\r\n")

    def run_script(self, text, *options, name="main.kx"):
        """A whole run of the script, from its first line to its end."""
        ended = subprocess.run(self.arguments("--json", *options, self.script(text, name)), env=self.environment,
                               stdin=subprocess.DEVNULL, capture_output=True, timeout=LIMIT_SECONDS)
        self.assertEqual(ended.stderr.decode(), "")
        return Outcome(ended.returncode, json.loads(ended.stdout))

    def await_value(self, variable, least):
        """Ends when the variable of the server has come to that."""
        run = self.run_script(f"REMOTE v srv@{variable}\n:w\nIF v < {least} GOTO w", name="await.kx")
        self.assertEqual(run.code, 0)

    def await_progress(self):
        """Ends when the run of WRITER has written again, twenty hours on or more."""
        self.assertEqual(self.run_script("REMOTE k srv@KROK\nLOCAL x = k\nSET k = 0", name="zero.kx").code, 0)
        self.await_value("KROK", 20)

    def finish_writer(self, writer):
        """Stops the run of WRITER. What it has got back from the server must be there, all of it."""
        self.assertEqual(self.run_script("REMOTE koniec srv@KONIEC\nLOCAL x = koniec\nSET koniec = 1",
                                         name="stop.kx").code, 0)
        self.assertEqual(writer.end(), 0)
        count = round(float(writer.value("k")))
        kept = self.run_script("REMOTE x srv@X\nLIST L\nLOCAL k = x.UNIT\n"
                               "MGET x HREP FROM 2023 12 31 23 TO 2030 1 1\n:w\nIF NOT READY x.HREP GOTO w\n"
                               "MGET x GETDATA L", name="kept.kx")
        self.assertEqual(kept.elements("L")[:count], [float(k) for k in range(count)])

    def path(self, name="main.kx"):
        return str(self.folder / name)


def names_of(suite):
    for test in suite:
        yield from names_of(test) if isinstance(test, unittest.TestSuite) else [test.id().removeprefix("__main__.")]


def main():
    """Runs the tests that the arguments name. Without any, all of them, some at a time, since most only wait."""
    programs = [os.path.abspath(sys.argv.pop(1)) for _ in range(2)]
    ServerAndRun.RUNNER, ServerAndRun.SERVER = programs
    if len(sys.argv) > 1:
        unittest.main()

    def run(name):
        return subprocess.run([sys.executable, "-B", sys.argv[0], *programs, name], capture_output=True,
                              encoding="utf-8", preexec_fn=die_with_the_test)

    names = list(names_of(unittest.defaultTestLoader.loadTestsFromModule(sys.modules["__main__"])))
    with concurrent.futures.ThreadPoolExecutor(TESTS_AT_A_TIME) as pool:
        failed = [done for done in pool.map(run, names) if done.returncode != 0]
    for done in failed:
        print(done.stderr)
    print(f"{len(names)} tests, {len(failed)} failed")
    sys.exit(1 if failed or not names else 0)
