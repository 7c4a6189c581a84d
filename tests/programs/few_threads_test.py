#!/usr/bin/env python3
"""The services where the system has few threads to give.

    few_threads_test.py PATH_OF_SORVANED PATH_OF_KALVEXD [unittest arguments]
"""
import os
import pathlib
import resource
import signal
import subprocess
import sys
import tempfile
import unittest

SORVANED = os.path.abspath(sys.argv.pop(1))
KALVEXD = os.path.abspath(sys.argv.pop(1))
ACCOUNT = 54321  # nobody else's, whose threads would count as well
ENOUGH = 200
LACK = r"Za mało wątków, potrzeba \d+ \(TasksMax, ulimit -u\)\n"


def limited(threads):
    def become():
        os.setgroups([])
        os.setgid(ACCOUNT)
        os.setuid(ACCOUNT)
        resource.setrlimit(resource.RLIMIT_NPROC, (threads, threads))
    return become


def reason_to_skip():
    if os.geteuid() != 0:
        return "only root can be another account"
    try:
        tried = [subprocess.run([program, "--version"], preexec_fn=limited(ENOUGH), cwd="/", capture_output=True)
                 for program in (SORVANED, KALVEXD)]
    except OSError as error:
        return f"another account cannot start the programs: {error}"
    return "" if all(done.returncode == 0 for done in tried) else "another account cannot start the programs"


class FewThreads(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        os.chown(self.folder, ACCOUNT, ACCOUNT)
        (self.folder / "plant.toml").write_text('[server]\nname = "Stacja"\n', encoding="utf-8")
        self.environment = os.environ | {"SORVANE_RUNTIME_DIR": str(self.folder / "run"), "LC_ALL": "C.UTF-8"}
        self.environment.pop("LANGUAGE", None)
        # A sanitizer looks for leaks with a thread of its own.
        sanitizer = os.environ.get("ASAN_OPTIONS", "")
        self.environment["ASAN_OPTIONS"] = f"{sanitizer}:detect_leaks=0".lstrip(":")

    def start(self, threads, *command):
        program = subprocess.Popen(command, cwd=self.folder, env=self.environment, preexec_fn=limited(threads),
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE, encoding="utf-8")
        self.addCleanup(program.kill)
        return program

    def test_too_few_are_told_at_the_start(self):
        for threads in (1, 4, 12):
            for prefix, command in (("", (SORVANED, "--config", "plant.toml")),
                                    ("kalvexd: ", (KALVEXD, "--metrics", "127.0.0.1:0"))):
                program = self.start(threads, *command)
                out, err = program.communicate(timeout=60)
                self.assertEqual((program.returncode, out), (1, ""))
                self.assertRegex(err, f"^{prefix}{LACK}$")

    def test_those_that_are_asked_for_suffice(self):
        needed = None
        program = self.start(4, SORVANED, "--config", "plant.toml")
        for word in program.communicate(timeout=60)[1].split():
            needed = int(word) if word.isdigit() else needed
        program = self.start(needed + 1, SORVANED, "--config", "plant.toml")
        lines = [program.stderr.readline() for _ in range(2)]
        program.send_signal(signal.SIGTERM)
        out, err = program.communicate(timeout=60)
        lines += err.splitlines(keepends=True)
        self.assertEqual([line[len("2024-03-10 07:00:00 "):] for line in lines],
                         ["Uruchomienie serwera Stacja\n",
                          f"Nasłuchiwanie: gniazdo lokalne {self.folder}/run/Stacja\n",
                          "Zatrzymanie serwera Stacja\n"])
        self.assertEqual((program.returncode, out), (0, ""))


if __name__ == "__main__":
    reason = reason_to_skip()
    if reason:
        print(reason)
        sys.exit(77)
    unittest.main()
