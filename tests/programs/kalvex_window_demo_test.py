#!/usr/bin/env python3
"""The demonstration with its window: it ends with it, and leaves nothing behind."""
import os
import pathlib
import signal
import subprocess
import tempfile
import unittest

from desktop import Application, Desktop
from window_process import PROGRAM

ROOT = pathlib.Path(__file__).resolve().parents[2]
BIN = pathlib.Path(PROGRAM).resolve().parent


class Demo(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.folder = pathlib.Path(scratch.name) / "demo"
        self.folder.mkdir()
        self.desktop = self.enterContext(Desktop(pathlib.Path(scratch.name) / "home"))

    def start(self, seconds="0"):
        demo = subprocess.Popen([ROOT / "tools/demo", "--window", BIN, seconds], stdout=subprocess.PIPE,
                                stderr=subprocess.STDOUT, encoding="utf-8", start_new_session=True,
                                env={**self.desktop.environment, "TMPDIR": str(self.folder)})
        for cleanup in (demo.stdout.close, demo.wait, demo.kill):
            self.addCleanup(cleanup)
        return demo

    def window_of(self, demo):
        """The program with the window."""
        whole = Application(self.desktop, demo.pid)
        self.addCleanup(whole.close)
        number = whole.wait(lambda: [number for number in self.desktop.registered()
                                     if os.path.basename(os.readlink(f"/proc/{number}/exe")) == "kalvex"], "it")[0]
        application = Application(self.desktop, number)
        self.addCleanup(application.close)
        return application

    def expect_end(self, demo):
        shown = demo.stdout.read()
        self.assertEqual(demo.wait(60), 0, shown)
        places = [shown.index(text) for text in ("== what the plant holds", "== the end", "Zatrzymanie serwera Gaz")]
        self.assertEqual(places, sorted(places), shown)
        self.assertEqual(list(self.folder.iterdir()), [])

    def test_window_that_is_closed_ends_it(self):
        demo = self.start()
        application = self.window_of(demo)
        application.wait(lambda: len([frame for frame in application.find("layered pane").children
                                      if frame.name.endswith("[tryb uruchomieniowy]")]) == 2, "two scripts that run")
        application.choose("Plik", "Zakończ")
        self.expect_end(demo)

    def test_interruption_ends_it(self):
        demo = self.start()
        self.window_of(demo).main()
        os.killpg(demo.pid, signal.SIGINT)
        self.expect_end(demo)


class Run(unittest.TestCase):
    def test_no_display_is_told_before_anything_is_built(self):
        bare = {name: value for name, value in os.environ.items() if name not in ("DISPLAY", "WAYLAND_DISPLAY")}
        done = subprocess.run([ROOT / "run", "--window"], env=bare, capture_output=True, encoding="utf-8", timeout=60)
        self.assertEqual((done.returncode, done.stdout, done.stderr), (
            1, "", "run: there is no display for the window (neither DISPLAY nor WAYLAND_DISPLAY); "
                   "./run alone needs none\n"))


if __name__ == "__main__":
    unittest.main()
