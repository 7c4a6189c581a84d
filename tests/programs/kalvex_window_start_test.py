#!/usr/bin/env python3
"""How the program with the window starts and ends: options, statuses, files, roles, what a signal does."""
import os
import signal
import subprocess
import unittest

from window_process import ACCOUNT, LOOP, PROGRAM, STAMP, DesktopTest

REFUSED_C = ("Opcja  /C nie jest wspierana w tej wersji systemu. Należy zmodyfikować konfigurację systemu "
             "z wykorzystaniem opcji /INST")


class WithoutDisplay(unittest.TestCase):
    def run_with(self, *arguments, **environment):
        bare = {name: value for name, value in os.environ.items()
                if name not in ("DISPLAY", "WAYLAND_DISPLAY", "LANGUAGE", "QT_QPA_PLATFORM")}
        done = subprocess.run([PROGRAM, *arguments], capture_output=True, encoding="utf-8", timeout=60,
                              env={**bare, "LANG": "C.UTF-8", **environment}, stdin=subprocess.DEVNULL)
        return done.returncode, done.stdout, done.stderr

    def test_version_and_help_need_no_display(self):
        status, shown, errors = self.run_with("--version")
        self.assertEqual((status, errors), (0, ""))
        self.assertRegex(shown, r"\Akalvex \d+\.\d+\.\d+\n\Z")
        status, shown, errors = self.run_with("--help")
        self.assertEqual((status, errors), (0, ""))
        for option in ("--working-dir", "--log-dir", "--version", "--help"):
            self.assertIn(option, shown)
        self.assertEqual(self.run_with("-h"), (0, shown, ""))
        self.assertEqual(self.run_with("-V"), self.run_with("--version"))

    def test_no_display_is_one_line_and_status_1(self):
        status, shown, errors = self.run_with()
        self.assertEqual((status, shown), (1, ""))
        self.assertEqual(len(errors.splitlines()), 1, errors)

    def test_display_that_is_not_there_is_no_crash(self):
        status, _, errors = self.run_with(DISPLAY=":999")
        self.assertEqual(status, 1, errors)

    def test_wrong_usage_is_status_2(self):
        for arguments in (["--working-dir"], ["--log-dir="], ["--help=yes"], ["status"], ["--kolor"]):
            status, shown, errors = self.run_with(*arguments)
            self.assertEqual((status, shown, len(errors.splitlines())), (2, "", 1), (arguments, errors))


class Start(DesktopTest):
    FILES = {"a.kx": LOOP, "b.kx": LOOP, "C.KX": LOOP}

    def setUp(self):
        for path in [*self.folder.glob("Kalvex.*"), self.machine]:
            if not path.is_dir():
                path.unlink(missing_ok=True)

    def profile(self, *lines):
        self.put("Kalvex.ini", "\n".join(lines) + "\n")

    def titles(self, application):
        return [frame.name for frame in application.find("layered pane").children if frame.role == "frame"]

    def expect_titles(self, application, *titles):
        application.wait(lambda: sorted(self.titles(application)) == sorted(titles), f"{titles}")

    def test_signals_end_it_with_status_0_and_a_line(self):
        self.profile("[Autostart]", "Procedura0=a.kx")
        for number in (signal.SIGTERM, signal.SIGINT):
            with self.subTest(number), self.running() as application:
                self.expect_titles(application, "a.kx [tryb uruchomieniowy]")
                application.process.send_signal(number)
                self.assertEqual(application.end()[0], 0)
                log = self.log_of()
                self.assertEqual(log[0], "Uruchomienie modułu Kalvex")
                self.assertIn("Sesja Windows została zakończona", log)
                self.assertEqual(log[-1], "Zatrzymanie modułu Kalvex")

    def test_files_are_opened_behind_those_that_start_and_are_not_started(self):
        self.profile("[Autostart]", "Procedura0=b.kx")
        with self.running("a.kx", "C.KX") as application:
            self.expect_titles(application, "b.kx [tryb uruchomieniowy]", "a.kx", "C.KX")
            application.wait(lambda: [entry.name for entry in application.entries("Okno")][-3:] ==
                             ["b.kx [tryb uruchomieniowy]", "a.kx", "C.KX"], "their order")

    def test_value_of_an_option_is_no_file(self):
        (self.folder / "logs.kx").mkdir()
        with self.running("--log-dir", self.folder / "logs.kx", "a.kx") as application:
            self.expect_titles(application, "a.kx")
            self.assertEqual(application.boxes(), [])

    def test_file_that_is_not_there_is_told_and_the_others_open(self):
        with self.running("nie_ma.kx", "a.kx") as application:
            _, text, buttons = application.box()
            self.assertEqual((text, buttons), (f"Nie można otworzyć pliku {self.folder}/nie_ma.kx "
                                               "(No such file or directory)", ["OK"]))
            application.answer("OK")
            self.expect_titles(application, "a.kx")

    def test_file_of_the_list_that_is_not_there_is_a_line_only(self):
        self.profile("[Autostart]", "Procedura0=nie_ma.kx", "Procedura1=a.kx")
        with self.running() as application:
            self.expect_titles(application, "a.kx [tryb uruchomieniowy]")
            self.assertEqual(application.boxes(), [])
            line, = [line for line in self.log_of() if "nie_ma.kx" in line]
            self.assertEqual(line, f"{self.folder}/nie_ma.kx : No such file or directory")

    def test_auto_start_minimises_the_scripts(self):
        self.profile("[Autostart]", "Procedura0=a.kx")
        with self.running() as application:
            self.expect_titles(application, "a.kx [tryb uruchomieniowy]")
            frame = application.find("frame", "a.kx [tryb uruchomieniowy]")
            self.assertIsNone(frame.find("text", str(self.folder / "a.kx")))

    def test_delay_starts_the_scripts_later(self):
        self.profile("[Autostart]", "Procedura0=a.kx")
        with self.running("/D:2") as application:
            application.wait(lambda: self.log_of()[:1] == ["Uruchomienie modułu Kalvex"], "the start")
            self.assertNotIn(f"{self.folder}/a.kx : Start skryptu ", self.log_of())
            self.expect_titles(application, "a.kx [tryb uruchomieniowy]")

    def test_question_mark_lists_the_options_and_ends(self):
        with self.running("/?") as application:
            box = application.wait(lambda: application.windows[0], "the list")
            shown = " ".join(thing.text if thing.role == "text" else thing.name for thing in box.walk(()))
            for option in ("/RC", "/D", "/INST", "/U", "/NOLOGIN", "/Q", "/X", "/C", "/P", "/MIRROR"):
                self.assertIn(option, shown)
            application.find("push button", "OK", box).press()
            self.assertEqual(application.end()[0], 0)

    def test_option_c_is_refused_in_a_box(self):
        with self.running("/C") as application:
            _, text, buttons = application.box()
            self.assertEqual((text, buttons), (REFUSED_C, ["OK"]))
            application.find("push button", "OK", application.boxes()[0]).press()
            self.assertEqual(application.end()[0], 1)

    def test_working_folder_from_a_menu_of_the_desktop(self):
        home = self.desktop.folder
        with self.running(folder=home) as application:
            application.main()
            application.wait((home / "data/kalvex/Kalvex.log").exists, "the log")
            self.assertFalse((home / "Kalvex.log").exists())

    def test_wrong_password_of_the_command_line_ends_it(self):
        with self.running("/U:JAN:zle") as application:
            self.assertEqual(application.end()[0], 1)

    def test_account_counts_as_a_user_where_nobody_is_configured(self):
        with self.running() as application:
            labels = application.find("status bar").find_all("label")
            application.wait(lambda: labels[3].name == ACCOUNT, "the user")
            self.assertEqual([line for line in self.log_of() if ACCOUNT in line and "100" in line][1:], [])

    def test_copy_becomes_the_console_and_a_third_ends_silently(self):
        with self.running() as first:
            first.main()
            with self.running() as second:
                second.wait(lambda: "konsola" in second.main().name, "the console")
                with self.running() as third:
                    self.assertEqual(third.end(), (1, "", ""))
            with self.running("/INST:1", environment={"LANGUAGE": ""}) as again:
                again.wait(lambda: "konsola" in again.main().name, "the console")

    def test_copy_is_refused_where_the_machine_says_so(self):
        self.machine.write_bytes("[Konfiguracja]\r\nAutoRC=0\r\n".encode("cp1250"))
        with self.running() as first:
            first.main()
            with self.running() as second:
                self.assertEqual(second.end(), (1, "", ""))
            with self.running("/INST:2") as other:
                box, text, _ = other.box()
                self.assertEqual(text, "Ten program może być uruchamiany wyłącznie w pierwszej instancji systemu "
                                       "Sorvane")
                other.find("push button", "OK", box).press()
                self.assertEqual(other.end()[0], 1)

    def test_polish_is_the_language_of_everything_unless_told(self):
        with self.running(environment={"LANGUAGE": "en"}) as application:
            application.wait(lambda: STAMP.match(application.find("status bar").find_all("label")[0].name), "a line")
            names = [entry.name for entry in application.find("menu bar").children]
            self.assertEqual(names[:2], ["File", "Edit"])


if __name__ == "__main__":
    unittest.main()
