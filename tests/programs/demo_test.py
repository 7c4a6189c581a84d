#!/usr/bin/env python3
"""The demonstration: it shows the programs at work together, ends in order and leaves nothing behind."""
import os
import pathlib
import re
import signal
import subprocess
import sys
import tempfile
import unittest

BIN = sys.argv.pop(1)
DEMO = pathlib.Path(__file__).resolve().parents[2] / "tools/demo"


class Demo(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def start(self, seconds, programs=BIN):
        demo = subprocess.Popen([DEMO, programs, str(seconds)], stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                                encoding="utf-8", start_new_session=True, env={**os.environ, "TMPDIR": self.folder})
        self.addCleanup(demo.stdout.close)
        self.addCleanup(demo.wait)
        self.addCleanup(demo.kill)
        return demo

    def read_to(self, demo, wanted):
        lines = []
        while not lines or wanted not in lines[-1]:
            lines.append(demo.stdout.readline())
            self.assertNotEqual(lines[-1], "", "".join(lines))
        return "".join(lines)

    def expect_end(self, demo, shown=""):
        shown += demo.stdout.read()
        self.assertEqual(demo.wait(60), 0, shown)
        wanted = ("== a gas network", "== how the module fared", "Stan modułu, takty", "== what its scripts do",
                  "pobor.kx\trunning\t", "== what the plant holds",
                  "== the end", "Zatrzymanie modułu Kalvex", "Zatrzymanie serwera Gaz")
        places = [shown.index(text) for text in wanted]
        self.assertEqual(places, sorted(places), shown)
        self.assertEqual(list(self.folder.iterdir()), [])
        return shown

    def wait_for_scripts(self):
        """Until the one that writes its remark to the plant has done so."""
        scratch, = self.folder.iterdir()
        script = scratch / "uwagi.kx"
        script.write_bytes(b"PRIORITY 1\r\nREMOTE UWAGI Gaz@BILANS.UWAGI\r\nLOCAL OPIS = UWAGI")
        for _ in range(1000):
            done = subprocess.run([f"{BIN}/kalvex-run", "--profile", scratch / "module/Kalvex.ini", "--json", script],
                                  env={**os.environ, "SORVANE_RUNTIME_DIR": str(scratch / "run")},
                                  capture_output=True, encoding="utf-8", timeout=60)
            if re.search('"text": *"pobór (duży|zwykły): [0-9]+ m3 na godzinę"', done.stdout):
                return
        self.fail(done.stdout)

    def test_it_ends_after_its_seconds(self):
        self.expect_end(self.start(1))

    def test_scripts_work_on_the_plant_until_the_interruption(self):
        demo = self.start(0)
        seen = self.read_to(demo, "Nawiązanie połączenia z Gaz")
        self.wait_for_scripts()
        # As the terminal does: to all that belong to it.
        os.killpg(demo.pid, signal.SIGINT)
        shown = self.expect_end(demo, seen)
        self.assertIn("w błędzie 0, zatrzymane 0, zakończone 0", shown)
        self.assertIn("połączone 1,", shown)
        self.assertRegex(shown, r'(?m)^UWAGI +REMOTE +"pobór (duży|zwykły): [0-9]+ m3 na godzinę"')

    def test_two_run_side_by_side(self):
        demos = [self.start(1), self.start(1)]
        shown = [demo.communicate(timeout=120)[0] for demo in demos]
        for demo, text in zip(demos, shown, strict=True):
            self.assertEqual(demo.returncode, 0, text)
            self.assertEqual(len(re.findall("Uruchomienie modułu Kalvex", text)), 1, text)
        self.assertEqual(list(self.folder.iterdir()), [])

    def test_module_that_is_slow_to_start_is_waited_for(self):
        with tempfile.TemporaryDirectory() as folder:
            programs = pathlib.Path(folder)
            for name in ("sorvaned", "kalvexctl", "kalvex-run"):
                (programs / name).symlink_to(os.path.join(os.path.realpath(BIN), name))
            # It goes on when somebody writes to the pipe.
            os.mkfifo(programs / "go")
            module = programs / "kalvexd"
            module.write_text(f"#!/bin/sh\ncase \"$*\" in *--log-stdout*) cat '{programs}/go' ;; esac\n"
                              f"exec '{os.path.realpath(BIN)}/kalvexd' \"$@\"\n")
            module.chmod(0o755)
            demo = self.start(0, programs)
            seen = self.read_to(demo, "Nasłuchiwanie")
            with open(programs / "go", "w"):  # when the module has begun to read
                os.killpg(demo.pid, signal.SIGINT)
            self.expect_end(demo, seen)

    def test_death_of_a_program_ends_it_and_shows_in_the_status(self):
        demo = self.start(0)
        self.read_to(demo, "Nawiązanie połączenia z Gaz")
        children = pathlib.Path(f"/proc/{demo.pid}/task/{demo.pid}/children").read_text().split()
        names = {pathlib.Path(f"/proc/{child}/cmdline").read_bytes().split(b"\0")[0]: int(child) for child in children}
        os.kill(names[os.path.join(os.path.realpath(BIN), "kalvexd").encode()], signal.SIGKILL)
        shown = demo.stdout.read()
        self.assertEqual(demo.wait(60), 1, shown)
        self.assertEqual(list(self.folder.iterdir()), [])


if __name__ == "__main__":
    unittest.main()
