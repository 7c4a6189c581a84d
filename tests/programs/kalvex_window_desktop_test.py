#!/usr/bin/env python3
"""The icon of the program and its notifications, with the desktop played by the test."""
import unittest

from desktop_host import PROPERTIES, Host
from window_process import WindowTest

ITEM = "org.kde.StatusNotifierItem"
ERROR = ("Kalvex", "Jeden ze skryptów wygenerował błąd.\nSzczegółowe informacje w oknie rejestracji")
BAD = "LOCAL A = 1\n:a\nNIEZNANE\nGOTO a\n"


class Icon(WindowTest):
    FILES = {"zly.kx": BAD}

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.host = Host(cls.desktop.environment["DBUS_SESSION_BUS_ADDRESS"])
        cls.addClassCleanup(cls.host.close)

    def item(self, name):
        owner, path = self.app.wait(lambda: self.host.items[-1], "the icon")
        return self.desktop.session.call_blocking(owner, path, PROPERTIES, "Get", "ss", (ITEM, name))

    def activate_icon(self):
        owner, path = self.app.wait(lambda: self.host.items[-1], "the icon")
        self.desktop.session.call_blocking(owner, path, ITEM, "Activate", "ii", (0, 0))

    def shown(self):
        return any(window.name.startswith("Kalvex") for window in self.app.windows)

    def picture(self):
        """Whatever tells one from another: the name of the picture, or its points."""
        return str(self.item("IconName")), str(self.item("IconPixmap"))

    def test_icon_bears_id_and_title(self):
        self.assertEqual(str(self.item("Id")), "kalvex")
        title = self.app.main().name
        self.expect(title[:64], lambda: str(self.item("ToolTip")[2]))

    def test_activation_hides_and_restores(self):
        self.app.take_focus()
        self.app.wait(lambda: self.app.main().has("active"), "the active window")
        self.activate_icon()
        self.app.wait(lambda: not self.shown(), "the window gone")
        self.activate_icon()
        self.app.wait(self.shown, "the window again")

    def test_error_changes_the_picture_and_is_told_once(self):
        before = self.picture()
        notes = len(self.host.notes)
        self.open("zly.kx")
        self.app.choose("Skrypt", "Start")
        self.app.wait(lambda: len(self.host.notes) > notes, "the notification")
        summary, body = (str(self.host.notes[-1][place]) for place in (3, 4))
        self.assertEqual((summary, body), ERROR)
        self.assertIn("default", [str(word) for word in self.host.notes[-1][5]][::2])
        self.app.wait(lambda: self.picture() != before, "another picture")
        # The line fails again and again meanwhile.
        self.app.choose("Rejestracja", "Zdarzenia")
        self.expect("Poziom rejestracji: zdarzenia", lambda: self.statuses()[0][21:])
        self.assertEqual(len(self.host.notes), notes + 1)
        self.host.invoke(len(self.host.notes))
        self.frame("LOG")
        for frame in [title for title in self.titles() if title.startswith("zly")]:
            self.activate(frame)
        self.app.choose("Skrypt", "Reset")
        self.app.wait(lambda: self.picture() == before, "the usual picture")


if __name__ == "__main__":
    unittest.main()
