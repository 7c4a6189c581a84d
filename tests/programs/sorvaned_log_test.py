#!/usr/bin/env python3
"""The log of the data server, whose reader goes or stands still, and whose disk is full for a while."""
import fcntl
import os
import pathlib
import resource
import signal
import socket
import subprocess
import sys
import tempfile
import time
import unittest

PROGRAM = sys.argv.pop(1)
STAMP = len("2024-03-10 07:00:00 ")
STARTED, STOPPED, RELOADED = "Uruchomienie serwera Stacja", "Zatrzymanie serwera Stacja", "Konfiguracja odczytana ponownie"
PATIENCE = 60  # seconds


class ServerLog(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.config = self.folder / "plant.toml"
        self.config.write_text('[server]\nname = "Stacja"\n', encoding="utf-8")
        self.environment = os.environ | {"SORVANE_RUNTIME_DIR": str(self.folder / "run"), "LC_ALL": "C.UTF-8"}
        self.environment.pop("LANGUAGE", None)
        self.listening = f"Nasłuchiwanie: gniazdo lokalne {self.folder}/run/Stacja"

    def start(self, output):
        """A server whose log goes there; it has opened its socket."""
        server = subprocess.Popen([PROGRAM, "--config", self.config, "--log-level", "2"], stderr=output,
                                  env=self.environment)
        self.addCleanup(server.wait)
        self.addCleanup(server.kill)
        self.await_condition(server, self.is_open)
        return server

    def await_condition(self, server, holds):
        end = time.monotonic() + PATIENCE
        while not holds():
            self.assertIsNone(server.poll(), "the server has ended")
            self.assertLess(time.monotonic(), end, "it does not come to that")

    def is_open(self):
        with socket.socket(socket.AF_UNIX) as client:
            return client.connect_ex(str(self.folder / "run" / "Stacja")) == 0

    def pipe(self):
        ends = os.pipe()
        return [open(end, mode, encoding="utf-8") for end, mode in zip(ends, "rw")]

    def stop(self, server):
        server.send_signal(signal.SIGTERM)
        self.assertEqual(server.wait(PATIENCE), 0)

    def test_reader_that_goes_ends_nothing(self):
        reader, writer = self.pipe()
        with writer:
            server = self.start(writer)
        with reader:
            self.assertEqual([reader.readline()[STAMP:] for _ in range(2)], [f"{STARTED}\n", f"{self.listening}\n"])
        server.send_signal(signal.SIGHUP)
        self.stop(server)

    def test_reader_that_does_not_read_holds_up_nothing(self):
        reader, writer = self.pipe()
        with reader, writer:
            filling = "x" * (fcntl.fcntl(writer, fcntl.F_SETPIPE_SZ, 4096) - 1) + "\n"
            writer.write(filling)
            writer.flush()
            self.stop(self.start(writer))
            server = self.start(writer)
            self.assertEqual(reader.readline(), filling)
            self.assertEqual([reader.readline()[STAMP:] for _ in range(2)], [f"{STARTED}\n", f"{self.listening}\n"])
            self.stop(server)
            self.assertEqual(reader.readline()[STAMP:], f"{STOPPED}\n")

    def limit(self, server, size):
        hard = resource.prlimit(server.pid, resource.RLIMIT_FSIZE)[1]
        resource.prlimit(server.pid, resource.RLIMIT_FSIZE, (hard if size is None else size, hard))

    def test_full_disk_cuts_a_line_and_the_log_comes_back(self):
        log = self.folder / "sorvaned.log"
        whole = f"{STARTED}\n{self.listening}\n"
        length = len(whole.encode()) + 2 * STAMP
        with open(log, "wb") as output:
            server = self.start(output)
        self.await_condition(server, lambda: log.stat().st_size == length)
        # The next line has room for its time and five characters; the store's files are longer than that.
        self.limit(server, length + STAMP + 5)
        server.send_signal(signal.SIGHUP)
        self.await_condition(server, lambda: log.stat().st_size == length + STAMP + 5)
        self.limit(server, None)
        self.stop(server)
        lines = [line[STAMP:] for line in log.read_text(encoding="utf-8").splitlines()]
        self.assertEqual(lines, [STARTED, self.listening, RELOADED[:5], "Pominięte wiersze rejestru: 1", STOPPED])


if __name__ == "__main__":
    unittest.main()
