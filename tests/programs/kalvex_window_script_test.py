#!/usr/bin/env python3
"""A script in the window: written, saved, run, stopped, stepped, closed."""
import unittest

from window_process import LOOP, WindowTest

STEPS = "LOCAL A = 1\nSET A = A + 1\nSET A = A + 1\n:a\nGOTO a\n"
CHANGED = "Czy zapisać zmiany w pliku %s?"


def text_of(editor):
    return editor.text.replace("\r\n", "\n")


class Written(WindowTest):
    """Each test has a file of its own."""

    FILES = {f"{name}.kx": f"LOCAL {name.upper()} = 1\n" for name in
             ("zapis", "cofanie", "okno", "odmowa", "strona", "dysk", "znaki", "linie", "kursor", "pisanie")}

    def edit(self, name):
        """The file in a window, its editor with the keys."""
        if name not in self.frames():
            self.open(name)
        self.activate(name)
        editor = self.editor(name)
        self.assertEqual(editor.name, str(self.folder / name))
        editor.focus()
        self.app.wait(lambda: editor.has("focused"), "the focus")
        return editor

    def test_text_is_read_and_saved_with_its_line_ends(self):
        editor = self.edit("zapis.kx")
        self.assertEqual(text_of(editor), "LOCAL ZAPIS = 1\n")
        editor.text = 'LOCAL ZAPIS = "żółw"\r\nSET ZAPIS = 2\r\n'
        self.app.choose("Plik", "Zapisz")
        self.app.wait(lambda: self.read("zapis.kx") == 'LOCAL ZAPIS = "żółw"\nSET ZAPIS = 2\n', "the file")
        self.assertEqual((self.folder / "zapis.kx").read_bytes().count(b"\r\n"), 2)
        # What stood there before goes once the new file is in its place.
        self.app.wait(lambda: [path.name for path in self.folder.glob("*zapis*")] == ["zapis.kx"], "no other file")

    def test_keys_write_and_undo_takes_a_run_of_them_at_once(self):
        editor = self.edit("pisanie.kx")
        self.keys("ctrl+Home")
        self.type("SET B = 7")
        self.expect("SET B = 7LOCAL PISANIE = 1\n", lambda: text_of(editor))
        self.keys("Return")
        self.expect("SET B = 7\nLOCAL PISANIE = 1\n", lambda: text_of(editor))
        self.keys("ctrl+z")
        self.expect("SET B = 7LOCAL PISANIE = 1\n", lambda: text_of(editor))
        self.keys("ctrl+z")
        self.expect("LOCAL PISANIE = 1\n", lambda: text_of(editor))
        self.keys("ctrl+y", "ctrl+y")
        self.expect("SET B = 7\nLOCAL PISANIE = 1\n", lambda: text_of(editor))

    def test_tab_and_indents_are_an_action_each(self):
        editor = self.edit("cofanie.kx")
        self.keys("ctrl+Home", "Tab")
        self.expect("\tLOCAL COFANIE = 1\n", lambda: text_of(editor))
        self.app.choose("Edycja", "Zwiększ wcięcie")
        self.expect("\t\tLOCAL COFANIE = 1\n", lambda: text_of(editor))
        self.app.choose("Edycja", "Zmniejsz wcięcie")
        self.app.choose("Edycja", "Cofnij")
        self.app.choose("Edycja", "Cofnij")
        self.expect("\tLOCAL COFANIE = 1\n", lambda: text_of(editor))
        self.app.choose("Edycja", "Cofnij")
        self.expect("LOCAL COFANIE = 1\n", lambda: text_of(editor))

    def test_status_bar_shows_caret_and_mode(self):
        editor = self.edit("kursor.kx")
        editor.caret = 6
        self.expect("Linia    1, Wiersz    7", lambda: self.statuses()[1])
        self.expect("WST", lambda: self.statuses()[2])
        self.keys("Insert")
        self.expect("NAD", lambda: self.statuses()[2])
        self.keys("Insert")
        self.expect("WST", lambda: self.statuses()[2])

    def test_closing_a_changed_script_asks(self):
        for answer, left, open_still in (("Anuluj", "LOCAL OKNO = 1\n", True), ("Nie", "LOCAL OKNO = 1\n", False),
                                         ("Tak", "SET OKNO = 2\n", False)):
            with self.subTest(answer):
                self.edit("okno.kx").text = "SET OKNO = 2\r\n"
                self.app.choose("Plik", "Zamknij")
                self.expect_box(CHANGED % (self.folder / "okno.kx"), ["Tak", "Nie", "Anuluj"], answer)
                self.app.wait(lambda: ("okno.kx" in self.frames()) == open_still, "the end of the window")
                self.assertEqual(self.read("okno.kx"), left)

    def test_escape_at_the_question_keeps_everything(self):
        self.edit("odmowa.kx").text = "SET ODMOWA = 2\r\n"
        self.app.choose("Plik", "Zakończ")
        box, text, _ = self.app.box()
        self.assertEqual(text, CHANGED % (self.folder / "odmowa.kx"))
        self.keys("Escape")
        self.app.wait(lambda: box not in self.app.windows, "the end of the box")
        self.assertEqual(text_of(self.editor("odmowa.kx")), "SET ODMOWA = 2\n")
        self.app.choose("Edycja", "Cofnij")
        self.expect("LOCAL ODMOWA = 1\n", lambda: text_of(self.editor("odmowa.kx")))

    def test_character_outside_the_code_page_is_told_and_nothing_written(self):
        editor = self.edit("strona.kx")
        editor.text = "LOCAL A = 1\r\nLOCAL B = \"Ω\"\r\n"
        self.app.choose("Plik", "Zapisz")
        self.expect_box("Linia 2 zawiera znak spoza strony kodowej Windows-1250: Ω", ["OK"], "OK")
        self.expect("Linia    2, Wiersz   12", lambda: self.statuses()[1])
        self.assertEqual(self.read("strona.kx"), "LOCAL STRONA = 1\n")
        self.app.choose("Edycja", "Cofnij")

    def test_new_script_asks_where_to_save(self):
        self.app.choose("Plik", "Nowy")
        frame = self.frame("Skrypt1")
        editor = self.app.find("text", "Skrypt1", frame)
        editor.text = "LOCAL NOWY = 1\r\n"
        self.app.choose("Skrypt", "Start")
        dialog = self.app.wait(lambda: self.dialogs()[0], "the dialog")
        if dialog.role.startswith("alert"):
            self.app.answer("Tak")
            dialog = self.app.wait(lambda: self.dialogs()[0], "the dialog of files")
        self.leave(dialog)
        self.app.wait(lambda: self.titles().count("Skrypt1") == 1, "a start that is refused")
        self.app.choose("Plik", "Zapisz")
        self.give_file(self.folder / "nowy.kx")
        self.frame("nowy.kx")
        self.assertEqual(self.read("nowy.kx"), "LOCAL NOWY = 1\n")
        self.expect(str(self.folder / "nowy.kx"), lambda: self.editor("nowy.kx").name)
        self.expect(str(self.folder / "nowy.kx"), lambda: self.app.entries("Plik", "Ostatnie pliki")[0].name)

    def test_file_that_is_open_is_activated(self):
        self.edit("linie.kx")
        before = len(self.frames())
        self.edit("znaki.kx")
        self.app.choose("Plik", "Otwórz...")
        self.give_file(self.folder / "linie.kx")
        self.app.wait(lambda: self.is_active("linie.kx"), "the window that is there")
        self.assertEqual(self.titles().count("linie.kx"), 1)
        self.assertLessEqual(len(self.frames()), before + 1)

    def test_script_changed_by_another_program_is_read_again(self):
        self.edit("dysk.kx")
        self.edit("znaki.kx")
        self.put("dysk.kx", "LOCAL DYSK = 2\n")
        self.app.choose("Pomoc", "O programie...")
        self.leave(self.app.wait(lambda: self.dialogs()[0], "a dialog that has the focus meanwhile"), "OK")
        self.app.take_focus()
        self.expect_box(f"Plik {self.folder}/dysk.kx został zmieniony na dysku. Czy wczytać go ponownie?",
                        ["Tak", "Nie"], "Tak")
        self.expect("LOCAL DYSK = 2\n", lambda: text_of(self.editor("dysk.kx")))


class Run(WindowTest):
    FILES = {"petla.kx": LOOP, "kroki.kx": STEPS, "przerwanie.kx": LOOP, "blad.kx": "LOCAL A = 1\nNIEZNANE\n"}

    def edit(self, name):
        if name not in self.frames():
            self.open(name)
        self.activate(name)
        self.editor(name).focus()
        return self.editor(name)

    def test_keys_start_pause_and_reset(self):
        editor = self.edit("petla.kx")
        self.app.wait(lambda: editor.has("focused", "editable"), "the focus")
        self.keys("F5")
        self.frame("petla.kx [tryb uruchomieniowy]")
        self.app.wait(lambda: not editor.has("editable"), "read-only text")
        self.keys("ctrl+F5")
        self.frame("petla.kx [tryb krokowy]")
        self.keys("shift+F5")
        self.frame("petla.kx")
        self.app.wait(lambda: editor.has("editable"), "a text to write in")
        path = self.folder / "petla.kx"
        self.assertEqual([line for line in self.log_of() if line.startswith(f"{path} : ")],
                         [f"{path} : {word} skryptu " for word in ("Inicjowanie", "Start", "Stop", "Reset")])

    def test_steps_take_a_line_each(self):
        self.edit("kroki.kx")
        self.app.choose("Skrypt", "Start")
        self.frame("kroki.kx [tryb uruchomieniowy]")
        self.app.choose("Skrypt", "Pauza")
        self.frame("kroki.kx [tryb krokowy]")
        self.app.choose("Skrypt", "Reset")
        self.frame("kroki.kx")
        self.edit("kroki.kx").caret = len("LOCAL A = 1\n") + 1
        self.app.choose("Skrypt", "Przełącz punkt przerwania")
        self.app.choose("Skrypt", "Start")
        self.frame("kroki.kx [tryb krokowy]")
        self.expect("Linia    2, Wiersz    1", lambda: self.statuses()[1])
        self.keys("F11")
        self.expect("Linia    3, Wiersz    1", lambda: self.statuses()[1])
        self.keys("F11")
        self.expect("Linia    4, Wiersz    1", lambda: self.statuses()[1])
        self.app.choose("Skrypt", "Reset")
        self.frame("kroki.kx")
        # A start keeps the breakpoint.
        self.app.choose("Skrypt", "Start")
        self.frame("kroki.kx [tryb krokowy]")
        self.expect("Linia    2, Wiersz    1", lambda: self.statuses()[1])

    def test_breakpoint_stops_a_loop_again_and_again(self):
        self.edit("przerwanie.kx").caret = LOOP.index("SET N")
        self.keys("F9")
        self.app.choose("Skrypt", "Start")
        self.frame("przerwanie.kx [tryb krokowy]")
        self.expect("Linia    4, Wiersz    1", lambda: self.statuses()[1])
        for _ in range(2):
            self.app.choose("Skrypt", "Start")
            self.frame("przerwanie.kx [tryb krokowy]")
        self.app.choose("Skrypt", "Usuwa wszystkie punkty przerwania")
        self.app.choose("Skrypt", "Start")
        self.frame("przerwanie.kx [tryb uruchomieniowy]")

    def test_running_script_is_closed_without_a_question(self):
        path = self.put("koniec.kx", LOOP)
        self.edit("koniec.kx")
        self.app.choose("Skrypt", "Start")
        self.frame("koniec.kx [tryb uruchomieniowy]")
        self.app.choose("Plik", "Zamknij")
        self.app.wait(lambda: not [title for title in self.titles() if title.startswith("koniec")], "its end")
        self.assertEqual(self.app.boxes(), [])
        self.assertIn(f"{path} : Start skryptu ", self.log_of())

    def test_typing_into_a_running_script_is_refused(self):
        path = self.put("czytanie.kx", LOOP)
        editor = self.edit("czytanie.kx")
        self.app.choose("Skrypt", "Start")
        self.frame("czytanie.kx [tryb uruchomieniowy]")
        editor.focus()
        self.type("x")
        self.expect_box("Edycja dokumentu nie jest możliwa!", ["OK"], "OK")
        self.assertEqual(text_of(editor), path.read_bytes().decode("cp1250").replace("\r\n", "\n"))

    def test_changed_script_is_saved_before_its_start(self):
        self.put("start.kx", LOOP)
        editor = self.edit("start.kx")
        editor.text = LOOP.replace("\n", "\r\n") + "; koniec\r\n"
        self.app.choose("Skrypt", "Start")
        self.expect_box("Czy zapisać zmiany?", ["Tak", "Nie"], "Nie")
        self.assertNotIn("start.kx [tryb uruchomieniowy]", self.titles())
        self.app.choose("Skrypt", "Start")
        self.expect_box("Czy zapisać zmiany?", ["Tak", "Nie"], "Tak")
        self.frame("start.kx [tryb uruchomieniowy]")
        self.assertEqual(self.read("start.kx"), LOOP + "; koniec\n")

    def test_maximised_window_stands_in_the_title(self):
        self.edit("petla.kx")
        title = self.app.main().name
        self.app.choose("Okno", "Maksymalizuj")
        self.app.wait(lambda: self.app.main().name == f"{title} - [petla.kx]", "the title")
        self.app.choose("Okno", "Przywróć")
        self.app.wait(lambda: self.app.main().name == title, "the title alone")


if __name__ == "__main__":
    unittest.main()
