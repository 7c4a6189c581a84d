#!/usr/bin/env python3
"""A second copy of the program is the console of the first."""
import unittest

from window_process import LOOP, WindowTest

RUNNING, STOPPED = "[Kalvex - tryb uruchomieniowy]", "[Kalvex - tryb krokowy]"


class Console(WindowTest):
    """app is the console, module the program that it mirrors."""

    FILES = {"a.kx": LOOP, "b.kx": LOOP, "Kalvex.ini": "[Autostart]\nProcedura0=a.kx\n"}
    ARGUMENTS = ["/U:JAN:HASLO"]

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.add_user("JAN", "HASLO")
        cls.module = cls.launch("/U:JAN:HASLO")
        cls.addClassCleanup(cls.module.close)
        cls.module.wait(lambda: cls.module.main().find("frame", "a.kx [tryb uruchomieniowy]"), "the script")

    def script(self, ending=""):
        """The title of the mirrored script, once it ends like this."""
        return self.app.wait(lambda: [title for title in self.titles()
                                      if title.startswith("a.kx") and title.endswith(ending)][0], f"a.kx {ending}")

    def module_titles(self):
        return sorted(frame.name for frame in self.module.find("layered pane").children if frame.role == "frame")

    def take_session(self):
        title = self.script()
        if not title.endswith((RUNNING, STOPPED)):
            self.activate(title)
            self.app.choose("Skrypt", "Przejmij aktywną sesję")
            title = self.app.wait(lambda: [name for name in self.titles() if name.endswith((RUNNING, STOPPED))][0],
                                  "the session")
        self.activate(title)

    def test_title_and_log_tell_the_role(self):
        self.app.wait(lambda: "zdalna konsola" in self.app.main().name, "the title")
        self.script()
        self.assertNotIn("brak połączenia", self.app.main().name)
        # A connection clears the log, and what follows is the module's.
        self.assertNotIn("Brak połączenia", [line.removeprefix("RC: ") for line in self.log_lines()])

    def test_commands_are_those_of_a_reader_until_the_session_is_taken(self):
        self.app.choose("Okno", "Kaskada")
        self.activate(self.script(" [tylko do odczytu]"))
        for name in ("Start", "Pauza", "Krok", "Reset"):
            self.assertFalse(self.app.menu("Skrypt", name).has("enabled"), name)
        self.assertTrue(self.app.menu("Skrypt", "Przejmij aktywną sesję").has("enabled"))

    def test_holder_of_the_session_stops_and_starts_in_the_module(self):
        self.take_session()
        self.app.choose("Okno", "Przywróć")
        self.app.choose("Skrypt", "Pauza")
        self.activate(self.script(STOPPED))
        self.module.wait(lambda: self.module_titles() == ["a.kx [tryb krokowy]"], "the stop in the module")
        self.app.choose("Skrypt", "Start")
        self.activate(self.script(RUNNING))
        self.module.wait(lambda: self.module_titles() == ["a.kx [tryb uruchomieniowy]"], "the start in the module")

    def test_variables_come_from_the_module(self):
        self.take_session()
        self.app.choose("Widok", "Zmienne")
        frame = self.app.wait(lambda: [frame for title, frame in self.frames().items()
                                       if title.startswith("Zmienne a.kx")][0], "the variables")
        table = self.app.find("table", "Zmienne", frame)
        self.app.wait(lambda: [row[:2] for row in table.rows] == [["N", "L"]], "the row")
        x, y, _, height = table.cell(0, 0).extents
        self.desktop.click(x + 5, y + height // 2)
        self.app.wait(lambda: table.rows[0][2] != "", "the value")

    def test_file_that_is_open_is_told(self):
        title = self.script()
        self.app.choose("Plik", "Otwórz...")
        self.give_file(self.folder / "a.kx")
        self.expect_box(f"Plik skryptu {self.folder}/a.kx jest już otwarty", ["OK"], "OK")
        self.assertEqual([name for name in self.titles() if name.startswith("a.kx")], [title])


class LostModule(WindowTest):
    """A console whose module is not there."""

    ARGUMENTS = ["/RC"]

    def test_title_tells_that_there_is_no_connection(self):
        self.app.wait(lambda: self.app.main().name.endswith(" (zdalna konsola - brak połączenia)"), "the title")
        self.assertEqual(self.terminate(), 0)


if __name__ == "__main__":
    unittest.main()
