#!/usr/bin/env python3
"""The data server as a process: its users, its configuration, its signals."""
import pathlib
import signal
import sqlite3
import subprocess
import sys
import tempfile
import unittest

PROGRAM = sys.argv.pop(1)

PLANT = """[server]
name = "Stacja"
[[variable]]
name = "X"
at = 2
signal = "counter rate=1"
"""


class Sorvaned(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.config = self.folder / "plant.toml"
        self.config.write_text(PLANT, encoding="utf-8")

    def run_with(self, *arguments, stdin=""):
        done = subprocess.run([PROGRAM, "--config", self.config, *arguments], input=stdin, capture_output=True,
                              encoding="utf-8", timeout=60)
        return done.returncode, done.stdout, done.stderr

    def start(self):
        server = subprocess.Popen([PROGRAM, "--config", self.config], stderr=subprocess.PIPE, encoding="utf-8")
        self.addCleanup(server.stderr.close)
        self.addCleanup(server.wait)
        self.addCleanup(server.kill)
        self.assertEqual(self.line_of(server), "Uruchomienie serwera Stacja")
        return server

    def line_of(self, server):
        """The next line of the log without its time."""
        return server.stderr.readline().rstrip("\n")[len("2024-03-10 07:00:00 "):]

    def test_users_are_managed(self):
        self.assertEqual(self.run_with("user", "add", "adam", "--level", "50", "--group", "gaz", stdin="tajne\n"),
                         (0, "", ""))
        self.assertEqual(self.run_with("user", "add", "Żaneta", "--description", "Dyspozytor", stdin="tajne"),
                         (0, "", ""))
        self.assertEqual(self.run_with("user", "list"), (0, "adam\t50\tgaz\t\t\nŻaneta\t0\t\t\tDyspozytor\n", ""))
        self.assertEqual(self.run_with("user", "add", "ADAM", stdin="tajne\n"),
                         (1, "", "Użytkownik o tej nazwie już istnieje\n"))
        self.assertEqual(self.run_with("user", "passwd", "adam", stdin="nowe\n"), (0, "", ""))
        self.assertEqual(self.run_with("user", "passwd", "adam"), (1, "", ""))
        self.assertEqual(self.run_with("user", "remove", "żaneta"), (0, "", ""))
        self.assertEqual(self.run_with("user", "remove", "żaneta"), (1, "", "Brak użytkownika o tej nazwie\n"))
        self.assertEqual(self.run_with("user", "list"), (0, "adam\t50\tgaz\t\t\n", ""))
        users = self.folder / "data" / "users.sqlite"
        self.assertEqual(users.stat().st_mode & 0o777, 0o600)

    def test_configuration_is_checked(self):
        self.assertEqual(self.run_with("--check"), (0, "", ""))
        self.assertFalse((self.folder / "data").exists())
        self.config.write_text(PLANT + "kolor = 5\n", encoding="utf-8")
        fault = f"{self.config}:7: variable.kolor: nieznany klucz\n"
        self.assertEqual(self.run_with("--check"), (1, "", fault))
        self.assertEqual(self.run_with(), (1, "", fault))
        self.assertEqual(self.run_with("user", "list"), (1, "", fault))

    def test_polite_end_commits_everything(self):
        for ending in (signal.SIGTERM, signal.SIGINT):
            server = self.start()
            server.send_signal(ending)
            self.assertEqual(self.line_of(server), "Zatrzymanie serwera Stacja")
            self.assertEqual(server.wait(60), 0)
            store = sqlite3.connect(self.folder / "data" / "store.sqlite")
            self.assertEqual(store.execute("SELECT count(*) FROM progress WHERE what = 'alive'").fetchone(), (1,))
            store.close()

    def test_definitions_are_read_again(self):
        server = self.start()
        self.config.write_text(PLANT + "kolor = 5\n", encoding="utf-8")
        server.send_signal(signal.SIGHUP)
        self.assertEqual(self.line_of(server), f"{self.config}:7: variable.kolor: nieznany klucz")
        self.assertEqual(self.line_of(server), "Konfiguracja bez zmian")
        self.config.write_text(PLANT + '[[variable]]\nname = "Y"\n', encoding="utf-8")
        server.send_signal(signal.SIGHUP)
        self.assertEqual(self.line_of(server), "Konfiguracja odczytana ponownie")
        server.send_signal(signal.SIGTERM)
        self.assertEqual(self.line_of(server), "Zatrzymanie serwera Stacja")
        self.assertEqual(server.wait(60), 0)
        store = sqlite3.connect(self.folder / "data" / "store.sqlite")
        self.assertEqual(store.execute("SELECT name FROM variables ORDER BY id").fetchall(), [("X",), ("Y",)])
        store.close()

    def test_folder_is_for_one_server_and_free_after_its_death(self):
        server = self.start()
        self.assertEqual(self.run_with(), (1, "", f"{self.folder}/data: używa go już inny serwer\n"))
        server.kill()
        server.wait(60)
        self.start()


if __name__ == "__main__":
    unittest.main()
