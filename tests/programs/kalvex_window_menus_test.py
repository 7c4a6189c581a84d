#!/usr/bin/env python3
"""The menus of the window: every entry with its keys, and when each may be chosen."""
import re
import unittest

from window_process import LOOP, WindowTest

# Entries in their order; None is what depends on what is open.
MENUS = {
    "Plik": [("Nowy", "Ctrl+N"), ("Otwórz...", "Ctrl+O"), ("Zamknij", "Ctrl+W"), ("Zapisz", "Ctrl+S"),
             ("Zapisz jako...", "Ctrl+Shift+S"), ("Drukuj...", "Ctrl+P"), ("Podgląd wydruku...", ""),
             ("Ustawienia wydruku...", ""), ("Ostatnie pliki", ""), ("Zakończ", "Ctrl+Q")],
    "Edycja": [("Cofnij", "Ctrl+Z"), ("Ponów", "Ctrl+Y"), ("Wytnij", "Ctrl+X"), ("Kopiuj", "Ctrl+C"),
               ("Wklej", "Ctrl+V"), ("Usuń", None), ("Zaznacz wszystko", "Ctrl+A"), ("Znajdź...", "Ctrl+F"),
               ("Znajdź następny", "F3"), ("Znajdź poprzedni", None), ("Zamień...", "Ctrl+H"),
               ("Przejdź do linii...", "Ctrl+G"), ("Znaczniki", ""), ("Konspekt", ""), ("Zwiększ wcięcie", None),
               ("Zmniejsz wcięcie", None), ("Lista słów kluczowych", "Ctrl+J")],
    "Widok": [("Zmienne", "Alt+Z"), ("Okno rejestracji", "Ctrl+L"), ("Numeracja linii", ""), ("Czcionka...", ""),
              ("Powiększ", "Ctrl++"), ("Pomniejsz", "Ctrl+-"), ("Skala 1:1", "Ctrl+0"), ("Schemat", "")],
    "Skrypt": [("Start", "F5"), ("Pauza", "Ctrl+F5"), ("Krok", "F11"), ("Reset", "Shift+F5"),
               ("Przełącz punkt przerwania", "F9"), ("Usuwa wszystkie punkty przerwania", ""),
               ("Wstaw zmienne...", ""), ("Kasuj bufor zmiennych", ""), ("Przejmij aktywną sesję", "")],
    "Rejestracja": [("Błędy", ""), ("Zdarzenia", ""), ("Transmisja", ""), ("Wyczyść", ""),
                    ("Automatyczne przewijanie", "")],
    "Narzędzia": [("Konfiguracja...", ""), ("Źródła...", ""), ("Zamień nazwy zmiennych na podstawie pliku", ""),
                  ("Zaloguj...", ""), ("Wyloguj", "")],
    "Okno": [("Następne", None), ("Poprzednie", None), ("Kaskada", ""), ("Sąsiadująco", ""), ("Maksymalizuj", ""),
             ("Zminimalizuj", ""), ("Przywróć", "")],
    "Pomoc": [("Pomoc", "F1"), ("Parametry wiersza poleceń...", ""), ("O programie...", "")],
}
BELOW = {
    ("Edycja", "Znaczniki"): [("Przełącz znacznik", "Ctrl+F2"), ("Następny znacznik", "F2"),
                              ("Poprzedni znacznik", "Shift+F2"), ("Usuń znaczniki", "")],
    ("Edycja", "Konspekt"): [("Utwórz element konspektu", ""), ("Usuń elementy konspektu", ""),
                             ("Przełącz elementy konspektu", ""), ("Przełącz wszystkie elementy konspektu", ""),
                             ("Zwiń do definicji", ""), ("Wyłącz konspekt", ""), ("Pokaż konspekt", ""),
                             ("Automatyczny konspekt", "")],
    ("Widok", "Schemat"): [("Jasny", ""), ("Ciemny", ""), ("Jak pulpit", "")],
}
LEVELS = ["Błędy", "Zdarzenia", "Transmisja"]
# Those that act on the script of the active window.
OF_A_SCRIPT = [("Plik", "Zamknij"), ("Plik", "Zapisz"), ("Plik", "Zapisz jako..."), ("Plik", "Drukuj..."),
               ("Edycja", "Znajdź..."), ("Edycja", "Zamień..."), ("Edycja", "Przejdź do linii..."),
               ("Skrypt", "Start"), ("Skrypt", "Przełącz punkt przerwania"), ("Skrypt", "Wstaw zmienne...")]


def is_letter(keys):
    """An entry without a key of its own gives its letter in the menu."""
    return re.fullmatch(r"Alt\+\w", keys) is not None


class Menus(WindowTest):
    FILES = {"a.kx": LOOP, "Kalvex.ini": ""}
    ARGUMENTS = ["a.kx"]

    def setUp(self):
        super().setUp()
        self.frame("a.kx")

    def has(self, path, *states):
        return self.app.menu(*path).has(*states)

    def expect_state(self, path, state, wanted=True):
        self.app.wait(lambda: self.has(path, state) == wanted, f"{path}: {state} {wanted}")

    def check(self, entries, wanted, menu):
        # What follows the ones that are named is free: bars of tools, windows, what is told of waiting scripts.
        seen = [(entry.name, entry.keys) for entry in entries]
        names = [name for name, _ in wanted]
        self.assertEqual([name for name, _ in seen if name in names], names, menu)
        keys = dict(seen)
        for name, key in wanted:
            if key is not None and not (key == "" and is_letter(keys[name])):
                self.assertEqual(keys[name], key, f"{menu}: {name}")

    def test_every_entry_is_there_with_its_keys(self):
        bar = self.app.find("menu bar")
        self.assertEqual([entry.name for entry in bar.children], list(MENUS))
        for menu, wanted in MENUS.items():
            self.check(self.app.entries(menu), wanted, menu)
        for path, wanted in BELOW.items():
            self.check(self.app.entries(*path), wanted, path)

    def test_no_menu_has_z_as_its_letter(self):
        letters = [entry.keys for entry in self.app.find("menu bar").children]
        self.assertEqual(len(set(letters)), len(MENUS), letters)
        self.assertNotIn("Alt+Z", letters)

    def test_bar_of_tools_has_no_command_that_the_menus_lack(self):
        commands = {entry.name.rstrip(".") for menu in [*((name,) for name in MENUS), *BELOW]
                    for entry in self.app.entries(*menu)}
        bars = self.app.main().find_all("tool bar")
        buttons = [button.name for bar in bars for button in bar.find_all("push button")]
        self.assertTrue(buttons)
        self.assertEqual([name for name in buttons if name and name.rstrip(".") not in commands], [])

    def test_level_in_force_is_checked(self):
        for level, words in (("Zdarzenia", "zdarzenia"), ("Transmisja", "transmisja"), ("Błędy", "błędy ")):
            self.app.choose("Rejestracja", level)
            for name in LEVELS:
                self.expect_state(("Rejestracja", name), "checked", name == level)
            self.expect(f"Poziom rejestracji: {words}", lambda: self.statuses()[0][21:])
            self.expect(words.strip(), lambda: self.statuses()[4].strip())
        self.assertIn("Rodzaj=1", self.read("Kalvex.ini"))

    def test_what_is_on_from_the_start_is_checked(self):
        self.expect_state(("Widok", "Numeracja linii"), "checked")
        self.expect_state(("Rejestracja", "Automatyczne przewijanie"), "checked")
        self.app.choose("Widok", "Numeracja linii")
        self.expect_state(("Widok", "Numeracja linii"), "checked", False)
        self.app.choose("Widok", "Numeracja linii")
        self.expect_state(("Widok", "Numeracja linii"), "checked")

    def test_scheme_is_one_of_three(self):
        for scheme in ("Ciemny", "Jasny", "Jak pulpit"):
            self.app.choose("Widok", "Schemat", scheme)
            for name, _ in BELOW["Widok", "Schemat"]:
                self.expect_state(("Widok", "Schemat", name), "checked", name == scheme)

    def test_status_bar_may_be_hidden(self):
        self.app.choose("Widok", "Pasek stanu")
        self.app.wait(lambda: self.app.main().find("status bar") is None, "no status bar")
        self.app.choose("Widok", "Pasek stanu")
        self.app.wait(lambda: self.app.main().find("status bar") is not None, "the status bar")

    def test_commands_of_a_running_script(self):
        rules = {("Skrypt", "Start"): (1, 0, 1), ("Skrypt", "Pauza"): (0, 1, 0), ("Skrypt", "Krok"): (0, 0, 1),
                 ("Skrypt", "Reset"): (0, 1, 1), ("Skrypt", "Przełącz punkt przerwania"): (1, 0, 1),
                 ("Widok", "Zmienne"): (0, 1, 1)}
        phases = [None, ("Start", "a.kx [tryb uruchomieniowy]"), ("Pauza", "a.kx [tryb krokowy]")]
        for number, phase in enumerate(phases):
            if phase:
                self.app.choose("Skrypt", phase[0])
                self.frame(phase[1])
            for path, allowed in rules.items():
                with self.subTest(phase=phase, path=path):
                    self.expect_state(path, "enabled", bool(allowed[number]))
        self.app.choose("Skrypt", "Reset")
        self.frame("a.kx")

    def test_breakpoints_are_removed_where_there_are_some(self):
        path = ("Skrypt", "Usuwa wszystkie punkty przerwania")
        self.expect_state(path, "enabled", False)
        self.app.choose("Skrypt", "Przełącz punkt przerwania")
        self.expect_state(path, "enabled")
        self.app.choose(*path)
        self.expect_state(path, "enabled", False)

    def test_buffer_of_variables_is_marked_once(self):
        path = ("Skrypt", "Kasuj bufor zmiennych")
        if self.has(path, "enabled"):
            self.app.choose(*path)
        self.expect_state(path, "enabled", False)

    def test_undo_and_redo_follow_the_text(self):
        undo, redo = ("Edycja", "Cofnij"), ("Edycja", "Ponów")
        self.expect_state(undo, "enabled", False)
        self.editor("a.kx").text = "LOCAL M = 1\n"
        self.expect_state(undo, "enabled")
        self.app.choose(*undo)
        self.expect(LOOP, lambda: self.editor("a.kx").text.replace("\r\n", "\n"))
        self.expect_state(redo, "enabled")


class MenusWithoutScript(WindowTest):
    def test_what_needs_a_script_may_not_be_chosen(self):
        for path in OF_A_SCRIPT:
            self.assertFalse(self.app.menu(*path).has("enabled"), path)
        for path in (("Plik", "Nowy"), ("Plik", "Otwórz..."), ("Plik", "Zakończ"), ("Widok", "Okno rejestracji"),
                     ("Narzędzia", "Konfiguracja..."), ("Narzędzia", "Źródła..."), ("Narzędzia", "Zaloguj..."),
                     ("Pomoc", "O programie...")):
            self.assertTrue(self.app.menu(*path).has("enabled"), path)


class MenusOfNobody(WindowTest):
    """Users are configured, and nobody is logged in."""

    ARGUMENTS = ["/NOLOGIN"]

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.add_user("JAN", "HASLO")

    def test_nobody_may_do_what_takes_a_right(self):
        for path in (("Plik", "Nowy"), ("Plik", "Otwórz..."), ("Plik", "Zakończ"), ("Narzędzia", "Konfiguracja..."),
                     ("Narzędzia", "Źródła..."), ("Narzędzia", "Wyloguj")):
            self.app.wait(lambda: not self.app.menu(*path).has("enabled"), f"{path} refused")
        self.assertTrue(self.app.menu("Narzędzia", "Zaloguj...").has("enabled"))
        self.assertEqual(self.statuses()[3], "")


if __name__ == "__main__":
    unittest.main()
