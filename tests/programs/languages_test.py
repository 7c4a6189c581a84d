#!/usr/bin/env python3
"""What each program says in English and, unless it is told otherwise, in Polish.

    languages_test.py FOLDER_OF_THE_PROGRAMS [unittest arguments]
"""
import os
import pathlib
import re
import signal
import subprocess
import sys
import tempfile
import unittest

BIN = pathlib.Path(sys.argv.pop(1)).resolve()
LIMIT_SECONDS = 60
POLISH = re.compile("[ąćęłńóśźżĄĆĘŁŃÓŚŹŻ]")
SCRIPTS = {"a.kx": "LOCAL A = 1\nSET B = 2\n", "b.kx": "REMOTE X Gaz@X\nLOCAL Y = X\n"}
PROFILE = "[Autostart]\nProcedura0=a.kx\nProcedura1=b.kx\nProcedura3=c.kx\n[Konsola]\nKlienci=0\n[Autsotart]\n[Log]\nRodzaj=2\n"
PLANT = '[server]\nname = "Woda"\n[[variable]]\nname = "X"\nvalue = "5"\n'
WRONG_PLANT = '[server]\nname = "Woda"\nkolor = 1\n[[variable]]\nname = "X"\ntype = "dobule"\n'


class Languages(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name).resolve()
        self.environment = {**os.environ, "SORVANE_RUNTIME_DIR": str(self.folder / "run"), "LC_ALL": "C",
                            "SORVANE_COMMON_PROFILE": str(self.folder / "sorvane.ini"), "TZ": "Europe/Warsaw",
                            "LANGUAGE": "en"}
        for name in ("JOURNAL_STREAM", "NOTIFY_SOCKET", "KALVEXCTL_LOGIN"):
            self.environment.pop(name, None)
        for name, text in SCRIPTS.items():
            self.put(name, text)
        self.put("Kalvex.ini", PROFILE)
        self.put("plant.toml", PLANT)

    def put(self, name, text):
        (self.folder / name).write_bytes(text.encode("utf-8"))

    def lines_of(self, text):
        """Without times, with the folder of the test as "~"."""
        text = re.sub(r"(?m)^\d{4}-\d\d-\d\d \d\d:\d\d:\d\d +", "", text.replace(str(self.folder), "~"))
        return text.splitlines()

    def said(self, program, *arguments, stdin=""):
        """(exit status, lines of the standard output, those of standard error)"""
        done = subprocess.run([BIN / program, *arguments], cwd=self.folder, env=self.environment, input=stdin,
                              capture_output=True, encoding="utf-8", timeout=LIMIT_SECONDS)
        return done.returncode, self.lines_of(done.stdout), self.lines_of(done.stderr)

    def said_until(self, wanted, program, *arguments, stream="stdout"):
        """The lines of one that runs on, until all of those have come, and those of its end."""
        with subprocess.Popen([BIN / program, *arguments], cwd=self.folder, env=self.environment, encoding="utf-8",
                              **{stream: subprocess.PIPE}) as process:
            lines = []
            pipe = getattr(process, stream)
            while not set(wanted) <= set(lines):
                line = pipe.readline()
                if line == "":
                    process.kill()
                    self.fail(f"not all of {wanted} in {lines}")
                lines += self.lines_of(line)
            process.send_signal(signal.SIGTERM)
            return lines, self.lines_of(pipe.read())

    def test_runner(self):
        run = ("kalvex-run", "--clock", "2024-03-10 07:00:00", "--ticks", "500", "a.kx", "b.kx")
        rows = ["NAME  KIND   VALUE  STATUS  TIME", "A     LOCAL  1.00", "",
                "NAME  KIND    VALUE  STATUS  TIME", "X     REMOTE  -", "Y     LOCAL   -"]
        # What is wrong with a command line is told in English by every program.
        hint = ['kalvex-run: the data server "Gaz" is never reached: give --plant FILE for servers that are simulated, '
                "or --profile FILE for those that run"]
        fault = "~/a.kx : Line 2 - The variable has not been defined correctly : B"
        self.assertEqual(self.said(*run), (1, [
            "~/a.kx : Script initialised ", "~/a.kx : Script started ", "~/b.kx : Script initialised ",
            "~/b.kx : Script started ", fault, "", fault, *rows[:3], "~/b.kx : Line 2 - Waiting for current data : X",
            *rows[3:]], hint))
        del self.environment["LANGUAGE"]
        fault = "~/a.kx : Linia 2 - Zmienna nie została poprawnie zdefiniowana : B"
        self.assertEqual(self.said(*run), (1, [
            "~/a.kx : Inicjowanie skryptu ", "~/a.kx : Start skryptu ", "~/b.kx : Inicjowanie skryptu ",
            "~/b.kx : Start skryptu ", fault, "", fault, *rows[:3],
            "~/b.kx : Linia 2 - Oczekiwanie na pobranie danych bieżących : X", *rows[3:]], hint))

    def test_service(self):
        # The scripts and the connection go on side by side.
        later = ["The server Gaz cannot be reached: there is no socket ~/run/Gaz (is the server running?)",
                 "The connection to Gaz cannot be opened (the server does not answer)",
                 "~/a.kx : Line 2 - The variable has not been defined correctly : B",
                 "~/b.kx : Line 2 - Waiting for current data : X"]
        lines, end = self.said_until(later, "kalvexd", "--working-dir", ".", "--log-stdout")
        entries = ["File ~/Kalvex.ini, line 4, [Autostart] Procedura3: not read, since Procedura2 has no value",
                   "File ~/Kalvex.ini, line 7: unknown section [Autsotart], did you mean [Autostart]"]
        clients = "File ~/Kalvex.ini, line 6, [Konsola] Klienci: a whole number from 1 to 10000 was expected"
        self.assertEqual(lines[:9], [
            "The module Kalvex starts", *entries, f"RCSrv: Cannot open connections for clients ({clients})",
            "~/a.kx : Script initialised ", "~/a.kx : Script started ", "~/b.kx : Script initialised ",
            "~/b.kx : Script started ", "Log level: events"])
        self.assertCountEqual(lines[9:], later)
        self.assertEqual(end, ["The module Kalvex stops"])
        self.assertEqual(self.said("kalvexd", "--working-dir", ".", "--check"), (1, [], [*entries, clients]))

    def test_server(self):
        lines, end = self.said_until(["Listening: local socket ~/run/Woda"], "sorvaned", "--config", "plant.toml",
                                     stream="stderr")
        self.assertEqual((lines, end), (["The server Woda starts", "Listening: local socket ~/run/Woda"],
                                        ["The server Woda stops"]))
        self.put("plant.toml", WRONG_PLANT)
        self.assertEqual(self.said("sorvaned", "--config", "plant.toml", "--check"), (1, [], [
            "plant.toml:3: server.kolor: unknown key",
            "plant.toml:6: variable.type: one of the words bool, short, int, int64, double, text was expected",
        ]))

    def test_console(self):
        self.assertEqual(self.said("kalvexctl", "list"), (3, [], [
            "kalvexctl: No connection with module Kalvex (the server does not answer)"]))
        del self.environment["LANGUAGE"]
        self.assertEqual(self.said("kalvexctl", "list"), (3, [], [
            "kalvexctl: Brak połączenia z modułem Kalvex (serwer nie odpowiada)"]))

    def test_converter(self):
        self.put("a.kx", "SET A = →\n")
        self.assertEqual(self.said("kalvex-convert", "a.kx"), (1, [], [
            "a.kx:1:9: Windows-1250 has no character → (U+2192)"]))
        del self.environment["LANGUAGE"]
        self.assertEqual(self.said("kalvex-convert", "a.kx"), (1, [], [
            "a.kx:1:9: znaku → (U+2192) nie ma w Windows-1250"]))

    def test_help_is_english_whatever_the_language(self):
        for program in ("kalvex-convert", "kalvex-run", "kalvexctl", "kalvexd", "sorvaned"):
            status, lines, errors = self.said(program, "--help")
            self.assertEqual((status, errors), (0, []), program)
            self.assertEqual([line for line in lines if POLISH.search(line)], [], program)


if __name__ == "__main__":
    unittest.main()
