#!/usr/bin/env python3
"""The dialogs of the window: what they hold, what they change."""
import unittest

from window_process import ACCOUNT, WindowTest

TEXT = "LOCAL A = 1\nSET A = 2\nset A = 3\n; koniec\n"


class Texts(WindowTest):
    """Those that are about the text of a script."""

    FILES = {"a.kx": TEXT}
    ARGUMENTS = ["a.kx"]

    def setUp(self):
        super().setUp()
        self.activate("a.kx")
        editor = self.editor("a.kx")
        if editor.text.replace("\r\n", "\n") != TEXT:
            editor.text = TEXT.replace("\n", "\r\n")
        editor.focus()
        editor.caret = 0
        self.app.wait(lambda: editor.has("focused"), "the focus")

    def place(self):
        return self.statuses()[1]

    def bar(self):
        """The place where a text is searched: a bar in the window or a dialog."""
        def look():
            for window in reversed(self.app.windows):
                field = window.find("text", "Szukany tekst") or window.find("combo box", "Szukany tekst")
                if field:
                    return window, field
            return None
        window, field = self.app.wait(look, "the field of the search")
        if field.role == "combo box":
            field = self.app.wait(lambda: field.find("text"), "the text in it")
        return window, field

    def switch(self, check, on):
        if check.has("checked") != on:
            check.press()
            self.app.wait(lambda: check.has("checked") == on, f"{check} {on}")

    def close_bar(self):
        self.keys("Escape")
        self.app.wait(lambda: all(window.find(name="Szukany tekst") is None for window in self.app.windows),
                      "the end of the search")

    def test_search_goes_on_and_back(self):
        self.app.choose("Edycja", "Znajdź...")
        window, field = self.bar()
        self.app.wait(lambda: field.has("focused"), "the focus")
        for name in ("Uwzględniaj wielkość liter", "Tylko całe słowa", "Wyrażenie regularne"):
            self.switch(self.app.find("check box", name, window), False)
        field.text = "set"
        self.keys("Return")
        self.expect("Linia    2", lambda: self.place()[:10])
        self.keys("Return")
        self.expect("Linia    3", lambda: self.place()[:10])
        self.keys("shift+Return")
        self.expect("Linia    2", lambda: self.place()[:10])
        self.close_bar()
        self.app.choose("Edycja", "Znajdź następny")
        self.expect("Linia    3", lambda: self.place()[:10])
        self.app.choose("Edycja", "Znajdź poprzedni")
        self.expect("Linia    2", lambda: self.place()[:10])

    def test_search_that_fails_tells_so(self):
        self.app.choose("Edycja", "Znajdź...")
        window, field = self.bar()
        field.text = "niema"
        self.keys("Return")
        text = "Nie znaleziono ciągu znaków: niema"
        self.app.wait(lambda: any(window.find("label", text) for window in self.app.windows), text)
        if self.app.boxes():
            self.app.answer("OK")
        field.text = ""
        self.keys("Return")
        text = "Nie podano ciągu znaków do wyszukania"
        self.app.wait(lambda: any(window.find("label", text) for window in self.app.windows), text)
        if self.app.boxes():
            self.app.answer("OK")
        self.close_bar()

    def test_replacement_of_all(self):
        self.app.choose("Edycja", "Zamień...")
        window, field = self.bar()
        field.text = "A"
        by = window.find("text", "Zamień na") or window.find("combo box", "Zamień na").find("text")
        by.text = "MASA"
        case = self.app.find("check box", "Uwzględniaj wielkość liter", window)
        self.switch(case, True)
        self.app.find("push button", "Zamień", window)
        self.app.find("push button", "Zamień wszystkie", window).press()
        wanted = TEXT.replace("A", "MASA")
        self.expect(wanted, lambda: self.editor("a.kx").text.replace("\r\n", "\n"))
        if self.app.boxes():
            self.app.answer("OK")
        self.switch(case, False)
        self.close_bar()

    def test_line_is_gone_to(self):
        self.app.choose("Edycja", "Przejdź do linii...")
        dialog = self.dialog("Przejdź do linii")
        number = self.app.wait(lambda: [thing for thing in dialog.walk() if thing.has("focused")][0], "the number")
        self.assertIn(number.role, ("spin box", "text"))
        self.keys("ctrl+a")
        self.type("3")
        self.keys("Return")
        self.app.wait(lambda: dialog not in self.app.windows, "the end of the dialog")
        self.expect("Linia    3, Wiersz    1", self.place)

    def test_escape_leaves_the_line(self):
        before = self.place()
        self.app.choose("Edycja", "Przejdź do linii...")
        dialog = self.dialog("Przejdź do linii")
        self.app.wait(lambda: any(thing.has("focused") for thing in dialog.walk()), "the focus")
        self.keys("Escape")
        self.app.wait(lambda: dialog not in self.app.windows, "the end of the dialog")
        self.assertEqual(self.place(), before)

    def test_list_of_words_is_chosen_by_keys(self):
        self.editor("a.kx").caret = 0
        self.app.choose("Edycja", "Lista słów kluczowych")
        window = self.app.window("Lista słów kluczowych")
        words = window if window.role == "list" else self.app.find("list", within=window)
        self.assertEqual(words.items[:3], ["ADD", "ADD_STATUS", "ALARM"])
        self.assertEqual(len(words.items), 140)
        self.keys("Down", "Return")
        self.app.wait(lambda: window not in self.app.windows, "the end of the list")
        self.expect("ADD_STATUSLOCAL A = 1", lambda: self.editor("a.kx").text.splitlines()[0])

    def test_point_behind_a_prefix_opens_its_members(self):
        self.keys("ctrl+End")
        self.type("TIME.HOUR.")
        window = self.app.window("Lista słów kluczowych")
        words = window if window.role == "list" else self.app.find("list", within=window)
        self.assertEqual(words.items, ["MIN"])
        self.keys("Escape")
        self.app.wait(lambda: window not in self.app.windows, "the end of the list")

    def test_bookmarks_are_gone_through(self):
        editor = self.editor("a.kx")
        for line in (2, 4):
            editor.caret = len("\r\n".join(TEXT.split("\n")[:line - 1])) + 2
            self.expect(f"Linia {line:4}", lambda line=line: self.place()[:10])
            self.keys("ctrl+F2")
        for key, line in (("F2", 2), ("F2", 4), ("F2", 2), ("shift+F2", 4)):
            self.keys(key)
            self.expect(f"Linia {line:4}", lambda line=line: self.place()[:10], f"{key} {line}")
        self.app.choose("Edycja", "Znaczniki", "Usuń znaczniki")

    def test_undo_lists_what_it_takes_back(self):
        self.keys("ctrl+End")
        self.type("x")
        self.keys("Return")
        button = self.app.wait(lambda: [bar.find("push button", "Cofnij") or bar.find(name="Cofnij")
                                        for bar in self.app.main().find_all("tool bar")
                                        if bar.find(name="Cofnij")][0], "the button")
        x, y, width, height = button.extents
        self.desktop.click(x + width - 4, y + height // 2)
        window = self.app.window("Cofnij")
        entries = self.app.find("list", within=window)
        self.assertEqual(entries.items[:2], ["Przejście do nowej linii", "Wprowadzenie tekstu"])
        self.app.find("label", "Cofnij 1 krok", window)
        self.keys("Escape")
        self.app.wait(lambda: window not in self.app.windows, "the end of the list")

    def test_dialogs_that_only_tell_something_close_by_escape(self):
        for path in (("Pomoc", "O programie..."), ("Pomoc", "Parametry wiersza poleceń...")):
            self.app.choose(*path)
            window = self.app.wait(lambda: self.dialogs()[0], str(path))
            self.keys("Escape")
            self.app.wait(lambda: window not in self.app.windows, f"the end of {path}")

    def test_fonts_and_printing_have_dialogs(self):
        for path in (("Widok", "Czcionka..."), ("Plik", "Podgląd wydruku...")):
            self.app.choose(*path)
            window = self.app.wait(lambda: self.dialogs()[0], str(path))
            self.keys("Escape")
            self.app.wait(lambda: window not in self.app.windows, f"the end of {path}")


class Settings(WindowTest):
    FILES = {"a.kx": TEXT, "b.kx": TEXT, "Kalvex.ini": "; uwaga\n[Autostart]\nProcedura0=a.kx\n[Obce]\nX=1\n"}
    def configuration(self):
        self.app.choose("Narzędzia", "Konfiguracja...")
        return self.dialog("Konfiguracja")

    def rows(self, dialog):
        return self.app.find("table", "Autostart", dialog).rows

    def test_configuration_holds_what_the_profile_says(self):
        dialog = self.configuration()
        self.assertTrue(self.app.find("check box", "Ikona w pasku zadań", dialog).has("checked"))
        period = self.app.find("spin box", "Częstotliwość odświeżania okna zmiennych  [ms]", dialog)
        self.assertEqual(period.value, 1000)
        for name in ("Modyfikacja konfiguracji", "Sterowanie skryptem"):
            self.assertEqual(self.app.find("text", name, dialog).text, "100")
        self.assertEqual(len(dialog.find_all("push button", ">>")), 2)
        for name in ("Usuń", "<", ">", "Znajdź", "Znajdź następną", "Przenieś do…", "OK", "Anuluj"):
            self.app.find("push button", name, dialog)
        table = self.app.find("table", "Autostart", dialog)
        self.assertEqual(table.headers, ["Id", "Nazwa pliku"])
        self.assertEqual([row[0] for row in table.rows], ["1"])
        self.assertTrue(table.rows[0][1].endswith("a.kx"))
        self.leave(dialog)

    def test_ok_writes_the_profile_and_keeps_what_is_not_its_own(self):
        dialog = self.configuration()
        add = dialog.find("push button", "Dodaj") or self.app.find("push button", "Wstaw", dialog)
        add.press()
        files = self.app.wait(lambda: [window for window in self.dialogs() if window != dialog][0], "the files")
        field = self.app.wait(lambda: [item for item in files.find_all("text") if item.has("focused")][0], "the name")
        field.text = str(self.folder / "b.kx")
        self.keys("Return")
        self.app.wait(lambda: files not in self.app.windows, "the end of the dialog of files")
        self.app.wait(lambda: len(self.rows(dialog)) == 2, "two rows")
        right = self.app.find("text", "Sterowanie skryptem", dialog)
        right.text = "50"
        self.leave(dialog, "OK")
        self.app.wait(lambda: "=50\n" in self.read("Kalvex.ini"), "the profile")
        profile = self.read("Kalvex.ini")
        self.assertIn("; uwaga\n", profile)
        self.assertIn("[Obce]\nX=1\n", profile)
        entries = [line.split("=")[1] for line in profile.splitlines() if line.startswith("Procedura")]
        self.assertEqual(sorted(entries), ["a.kx", "b.kx"])
        self.assertIn("Poziom uprawnień do sterowania procedurą=50\n", profile)

    def test_cancel_writes_nothing(self):
        before = self.read("Kalvex.ini")
        dialog = self.configuration()
        self.app.find("text", "Modyfikacja konfiguracji", dialog).text = "7"
        self.keys("Escape")
        self.app.wait(lambda: dialog not in self.app.windows, "the end of the dialog")
        self.assertEqual(self.read("Kalvex.ini"), before)

    def test_sources_never_show_a_password(self):
        self.app.choose("Narzędzia", "Źródła...")
        dialog = self.dialog("Źródła")
        self.app.find("push button", "Dodaj", dialog).press()
        entry = self.app.wait(lambda: [window for window in self.dialogs() if window != dialog][0], "the fields")
        for name, text in (("Nazwa", "Gaz"), ("Użytkownik", "skrypty"), ("Hasło", "tajne")):
            self.app.find("text", name, entry).text = text
        self.assertNotIn("tajne", self.app.find("text", "Hasło", entry).text)
        self.leave(entry, "OK")
        table = self.app.find("table", within=dialog)
        self.app.wait(lambda: table.rows and table.rows[0][:2] == ["Gaz", "skrypty"], "the row")
        self.assertNotIn("tajne", str(table.rows))
        for name in ("Zmień", "Usuń"):
            self.app.find("push button", name, dialog)
        self.leave(dialog, "OK" if dialog.find("push button", "OK") else "Zamknij")
        self.app.wait(lambda: "Zrodlo0=Gaz,skrypty,{kx1}" in self.read("Kalvex.ini"), "the profile")

    def test_login_asks_for_name_and_password(self):
        self.app.choose("Narzędzia", "Zaloguj...")
        dialog = self.dialog("Logowanie")
        name = self.app.find("text", "Użytkownik", dialog)
        self.app.wait(lambda: name.has("focused"), "the focus")
        secret = self.app.find("text", "Hasło", dialog)
        secret.text = "tajne"
        self.assertNotIn("tajne", secret.text)
        self.leave(dialog)
        self.assertEqual(self.statuses()[3], ACCOUNT)

    def test_insertion_without_a_server_says_so(self):
        self.open("b.kx")
        self.app.choose("Skrypt", "Wstaw zmienne...")
        dialog = self.dialog("Zmienne")
        self.app.find("combo box", "Źródło", dialog)
        self.app.find("text", "Filtr", dialog)
        self.app.find("push button", "Filtruj", dialog)
        tree = self.app.wait(lambda: dialog.find("tree", "Zmienne") or dialog.find("tree table", "Zmienne"), "the tree")
        self.assertEqual(tree.find_all("tree item"), [])
        self.assertFalse(self.app.find("push button", "Wstaw", dialog).has("enabled"))
        self.leave(dialog)


if __name__ == "__main__":
    unittest.main()
