"""The service as a process, for the tests that start one."""
import contextlib
import fcntl
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

PROGRAM = sys.argv.pop(1)
STARTED = ["Uruchomienie modułu Kalvex", "Poziom rejestracji: błędy "]
STOPPED = "Zatrzymanie modułu Kalvex"
LOCKED = f"folder jest zablokowany przez inny proces: {pathlib.Path(sys.executable).name}[{os.getpid()}]"


class ServiceTest(unittest.TestCase):
    """Each test has a folder of its own, which is the service's working, runtime and profile folder."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name).resolve()
        self.environment = {
            **os.environ,
            "SORVANE_RUNTIME_DIR": str(self.folder / "run"),
            "SORVANE_COMMON_PROFILE": str(self.folder / "sorvane.ini"),
            "LC_ALL": "C",
            "TZ": "Europe/Warsaw",
        }
        for name in ("LANGUAGE", "JOURNAL_STREAM", "NOTIFY_SOCKET"):
            self.environment.pop(name, None)

    def put(self, name, text):
        (self.folder / name).write_bytes(text.encode("cp1250"))

    def idle_start(self, *told):
        """The log of a start without a script; `told` comes before what is said of that."""
        idle = f"Nie uruchomiono żadnego skryptu (plik {self.folder}/Kalvex.ini, sekcja [Autostart])"
        return [STARTED[0], *told, idle, STARTED[1]]

    @contextlib.contextmanager
    def lock_of_the_folder(self):
        """Somebody else changes files of the folder."""
        folder = os.open(self.folder, os.O_RDONLY)
        try:
            fcntl.flock(folder, fcntl.LOCK_EX)
            yield
        finally:
            os.close(folder)

    def run_with(self, *arguments, stdin=""):
        done = subprocess.run([PROGRAM, "--working-dir", self.folder, *arguments], input=stdin, capture_output=True,
                              encoding="utf-8", env=self.environment, timeout=60)
        return done.returncode, done.stdout, done.stderr

    def start(self, *arguments):
        service = subprocess.Popen([PROGRAM, "--working-dir", self.folder, "--log-stdout", *arguments],
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE, encoding="utf-8",
                                   env=self.environment)
        for cleanup in (service.stdout.close, service.stderr.close, service.wait, service.kill):
            self.addCleanup(cleanup)
        return service

    def lines_of(self, service, count):
        """The next lines of the log without their times."""
        return [service.stdout.readline().rstrip("\n")[21:] for _ in range(count)]

    def read_to(self, service, wanted):
        """The lines of the log up to one."""
        lines = [""]
        while lines[-1] != wanted:
            line = service.stdout.readline()
            self.assertNotEqual(line, "", f"the log ended before: {wanted}; {lines}")
            lines.append(line.rstrip("\n")[21:])
        return lines[1:]
