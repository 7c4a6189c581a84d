"""The program with the window as a process on a desktop of its own, for the tests that start one."""
import contextlib
import os
import pathlib
import pwd
import re
import signal
import subprocess
import sys
import tempfile
import unittest

from desktop import Child, Desktop, Gone

PROGRAM = sys.argv.pop(1)
ACCOUNT = pwd.getpwuid(os.geteuid()).pw_name
STAMP = re.compile(r"\d{4}-\d\d-\d\d \d\d:\d\d:\d\d  ")
LOOP = "PRIORITY 20\nLOCAL N = 0\n:a\nSET N = N + 1\nSLEEP 1\nGOTO a\n"


class DesktopTest(unittest.TestCase):
    """Each class has a desktop, and a folder that is working, runtime and profile folder of what it starts."""

    FILES = {}  # name: text

    @classmethod
    def setUpClass(cls):
        scratch = tempfile.TemporaryDirectory()
        cls.addClassCleanup(scratch.cleanup)
        place = pathlib.Path(scratch.name).resolve()
        cls.desktop = cls.enterClassContext(Desktop(place / "home"))
        cls.folder = place / "work"
        cls.folder.mkdir()
        cls.desktop.environment |= {"SORVANE_RUNTIME_DIR": str(place / "run"),
                                    "SORVANE_COMMON_PROFILE": str(place / "sorvane.ini")}
        cls.machine = place / "sorvane.ini"
        for name, text in cls.FILES.items():
            cls.put(name, text)

    @classmethod
    def put(cls, name, text):
        """A text with the line ends of scripts."""
        path = cls.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(text.replace("\n", "\r\n").encode("cp1250"))
        return path

    @classmethod
    def add_user(cls, name, password):
        """One of level 100, in the users' file of the machine."""
        users = cls.folder / "users.sqlite"
        cls.put("users.toml", f'[server]\nname = "x"\ndata = "{cls.folder}/x"\nusers = "{users}"\n')
        subprocess.run([pathlib.Path(PROGRAM).with_name("sorvaned"), "--config", cls.folder / "users.toml",
                        "user", "add", name, "--level", "100"], input=f"{password}\n{password}\n", encoding="utf-8",
                       check=True, capture_output=True, env=cls.desktop.environment)
        cls.machine.write_bytes(f"[Konfiguracja]\r\nUżytkownicy={users}\r\n".encode("cp1250"))

    @classmethod
    def read(cls, name):
        return (cls.folder / name).read_bytes().decode("cp1250").replace("\r\n", "\n")

    @classmethod
    def launch(cls, *arguments, environment=(), folder=None):
        """The program in the working folder of the class."""
        return Child(cls.desktop, [PROGRAM, *map(str, arguments)], environment, folder or cls.folder)

    @contextlib.contextmanager
    def running(self, *arguments, **options):
        application = self.launch(*arguments, **options)
        try:
            yield application
        finally:
            application.close()

    def log_of(self, name="Kalvex.log"):
        """The lines of a log file without their times."""
        with contextlib.suppress(FileNotFoundError):
            return [STAMP.sub("", line) for line in (self.folder / name).read_text(encoding="utf-8").splitlines()]
        return []


class WindowTest(DesktopTest):
    """One program for the tests of a class; a test that leaves a dialog open, or no program, costs a new one."""

    ARGUMENTS = []
    ENVIRONMENT = {}

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.app = None
        cls.addClassCleanup(cls.drop)

    @classmethod
    def drop(cls):
        if cls.app is not None:
            cls.app.close()
            cls.app = None

    def setUp(self):
        if self.app is not None and not self.is_at_rest():
            self.drop()
        if self.app is None:
            type(self).app = self.launch(*self.ARGUMENTS, environment=self.ENVIRONMENT)
            self.app.main()
            self.app.wait(self.is_at_rest, "the start")

    def run(self, result=None):
        """What a failure leaves behind is not for the next test."""
        bad = len(result.failures) + len(result.errors)
        super().run(result)
        if len(result.failures) + len(result.errors) > bad:
            self.drop()
        return result

    def is_at_rest(self):
        """Only the main window is there, and it may be used."""
        try:
            return [window.role for window in self.app.windows] == ["frame"] and self.app.process.poll() is None
        except Gone:
            return False

    # ---- the windows within the main one

    def area(self):
        return self.app.find("layered pane")

    def frames(self):
        """By title, without the mark of changed text."""
        return {frame.name: frame for frame in self.area().children if frame.role == "frame"}

    def titles(self):
        return sorted(self.frames())

    def frame(self, title):
        return self.app.wait(lambda: self.frames().get(title), f'the window "{title}"')

    def editor(self, title):
        return self.app.find("text", within=self.frame(title))

    def activate(self, title):
        """By the menu of the windows."""
        def entries():
            return [entry for entry in self.app.entries("Okno") if re.sub(r"^\d+ ", "", entry.name) == title]
        self.app.wait(entries, f'"{title}" in the menu')[0].press()
        self.app.take_focus()
        self.app.wait(lambda: self.is_active(title), f'"{title}" active')

    def is_active(self, title):
        frame = self.frame(title)
        return any(thing.has("focused") for thing in frame.walk(("menu bar",)))

    def open(self, name):
        """A file of the folder, by the dialog."""
        self.app.choose("Plik", "Otwórz...")
        self.give_file(self.folder / name)
        return self.frame(name)

    def give_file(self, *paths):
        """To the dialog of files that is there."""
        dialog = self.app.wait(lambda: self.dialogs()[0], "the dialog of files")
        field = self.app.wait(lambda: [item for item in dialog.find_all("text") if item.has("focused")][0],
                              "the field of the name")
        field.text = str(paths[0]) if len(paths) == 1 else " ".join(f'"{path}"' for path in paths)
        self.keys("Return")
        self.app.wait(lambda: dialog not in self.app.windows, "the end of the dialog")
        self.app.take_focus()

    def dialogs(self):
        main = self.app.main()
        return [window for window in self.app.windows if window != main]

    def dialog(self, title):
        return self.app.window(title)

    def leave(self, dialog, button="Anuluj"):
        self.app.find("push button", button, dialog).press()
        self.app.wait(lambda: dialog not in self.app.windows, "the end of the dialog")

    # ---- keys

    def keys(self, *names, window=None):
        """To the window that has the focus of the display, else to the topmost one."""
        self.app.take_focus(window)
        self.desktop.keys(*names)

    def type(self, text, window=None):
        self.app.take_focus(window)
        self.desktop.type(text)

    # ---- what is asserted

    def expect(self, wanted, reading, what=""):
        """What is read comes to be what is wanted."""
        seen = []

        def same():
            seen[:] = [reading()]
            return seen[0] == wanted
        try:
            self.app.wait(same, what or repr(wanted))
        except AssertionError:
            self.assertEqual(seen[0] if seen else None, wanted, what)
            raise

    def expect_box(self, text, buttons, answer):
        box, seen, names = self.app.box()
        self.assertEqual((seen, names), (text, sorted(buttons)))
        self.leave(box, answer)

    def statuses(self):
        """The five labels of the status bar."""
        return [label.name for label in self.app.find("status bar").find_all("label")]

    def log_lines(self):
        """Those of the log window, without their times."""
        if "LOG" not in self.frames():
            self.app.choose("Widok", "Okno rejestracji")
        log = self.app.find("list", "LOG", self.frame("LOG"))
        return [line[21:] for line in log.items]

    def terminate(self):
        """The exit status after a polite signal."""
        self.app.process.send_signal(signal.SIGTERM)
        status = self.app.process.wait(20)
        self.drop()
        return status
