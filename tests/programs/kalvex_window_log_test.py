#!/usr/bin/env python3
"""The log window and the variables window."""
import re
import unittest

from window_process import STAMP, WindowTest

VALUES = "LOCAL A = 5\nLOCAL B = \"tekst\"\nLIST L\nPOINTER P\nSETPTR P = \"A\"\n:a\nSLEEP 1\nGOTO a\n"
BAD = "LOCAL A = 1\nSET A = A + 1\nNIEZNANE\n"
CELL = re.compile(r"\d{4}-\d\d-\d\d \d\d:\d\d:\d\d \( (\d+) \) (.*)")


class LogWindow(WindowTest):
    FILES = {"zly.kx": BAD}

    def test_lines_have_a_stamp_of_21_characters(self):
        self.app.choose("Widok", "Okno rejestracji")
        log = self.app.find("list", "LOG", self.frame("LOG"))
        self.app.wait(lambda: log.items, "a line")
        for line in log.items:
            self.assertRegex(line, STAMP)
        self.assertEqual(log.items[0][21:], "Uruchomienie modułu Kalvex")

    def test_error_leads_back_to_its_line(self):
        self.open("zly.kx")
        self.app.choose("Skrypt", "Start")
        line = f"{self.folder}/zly.kx : Linia 3 - Nieznane słowo kluczowe : NIEZNANE"
        self.app.wait(lambda: line in self.log_of(), "the error")
        self.expect(line, lambda: self.log_lines()[-1])
        self.expect(line, lambda: self.statuses()[0][21:])
        self.activate("LOG")
        item = self.app.find("list", "LOG", self.frame("LOG")).children[-1]
        x, y, width, height = item.extents
        self.desktop.click(x + 40, y + height // 2, count=2)
        self.app.wait(lambda: self.is_active("zly.kx [tryb uruchomieniowy]"), "the script")
        self.expect("Linia    3", lambda: self.statuses()[1][:10])
        self.app.choose("Skrypt", "Reset")
        self.app.choose("Plik", "Zamknij")

    def test_log_is_cleared_and_goes_on(self):
        self.log_lines()
        self.app.choose("Rejestracja", "Wyczyść")
        log = self.app.find("list", "LOG", self.frame("LOG"))
        self.expect([], lambda: log.items)
        self.app.choose("Rejestracja", "Zdarzenia")
        self.expect(["Poziom rejestracji: zdarzenia"], lambda: [line[21:] for line in log.items])
        self.app.choose("Rejestracja", "Błędy")
        self.expect("Poziom rejestracji: błędy ", lambda: log.items[-1][21:])


class VariablesWindow(WindowTest):
    FILES = {"wartosci.kx": VALUES}
    ARGUMENTS = ["wartosci.kx"]

    def setUp(self):
        super().setUp()
        if "wartosci.kx" in self.frames():
            self.app.choose("Skrypt", "Start")
            self.frame("wartosci.kx [tryb uruchomieniowy]")
            self.app.choose("Widok", "Zmienne")
        self.table = self.app.find("table", "Zmienne", self.frame("Zmienne wartosci.kx [tryb uruchomieniowy]"))
        self.app.wait(lambda: len(self.table.rows) == 4, "four rows")

    def slot(self, name, column=2):
        row = [row for row in self.table.rows if row[0] == name][0]
        return CELL.fullmatch(row[column]).groups() if row[column] else None

    def test_table_shows_every_variable(self):
        self.assertEqual(self.table.headers, ["Nazwa zmiennej", "Typ", "Wartość bieżąca", "Wartość godzinowa",
                                              "Wartość dobowa", "Wartość miesięczna", "Wartość okresowa"])
        self.assertEqual([row[:2] for row in self.table.rows], [["A", "L"], ["B", "L"], ["L", "A"], ["P", "P"]])
        self.expect(("0", "tekst"), lambda: self.slot("B"))
        self.expect(self.slot("A"), lambda: self.slot("P"))
        self.assertEqual([self.slot("A", column) for column in range(3, 7)], [None] * 4)

    def change(self, name, text, button="OK"):
        row = [row[0] for row in self.table.rows].index(name)
        self.activate("Zmienne wartosci.kx [tryb uruchomieniowy]")
        x, y, _, height = self.table.cell(row, 0).extents
        self.desktop.click(x + 5, y + height // 2, count=2)
        dialog = self.dialog("Zmiana wartości zmiennej")
        new = self.app.find("text", "Nowa wartość", dialog)
        # A click that ends behind the dialog's coming leaves the focus of the display where it was.
        self.app.take_focus(dialog.name)
        self.app.wait(lambda: new.has("focused"), "the focus")
        new.text = text
        self.leave(dialog, button)

    def test_values_are_changed_by_hand(self):
        for text, wanted in (("12.5", ("0", "12.50")), ("#7", ("2080", "7.00")), ('"abc"', ("0", "abc")),
                             ("0x10", ("0", "16.00"))):
            with self.subTest(text):
                self.change("A", text)
                self.expect(wanted, lambda: self.slot("A"))
        self.change("A", "*")
        self.app.wait(lambda: self.slot("A")[0] == "1", "the status of an unknown value")
        self.change("A", "8", "Anuluj")
        self.assertEqual(self.slot("A")[0], "1")
        self.change("A", "5")
        self.expect(("0", "5.00"), lambda: self.slot("A"))

    def test_dialog_shows_name_and_value(self):
        row = [row[0] for row in self.table.rows].index("B")
        self.activate("Zmienne wartosci.kx [tryb uruchomieniowy]")
        x, y, _, height = self.table.cell(row, 0).extents
        self.desktop.click(x + 5, y + height // 2, count=2)
        dialog = self.dialog("Zmiana wartości zmiennej")
        self.app.wait(lambda: dialog.find(name="Zmienna :"), "the name")
        current = self.app.find("text", "Bieżąca wartość", dialog)
        self.assertEqual(current.text, "tekst")
        self.assertTrue(current.has("read-only"))
        new = self.app.find("text", "Nowa wartość", dialog)
        self.expect("tekst", lambda: new.selected_text)
        self.keys("Escape")
        self.app.wait(lambda: dialog not in self.app.windows, "the end of the dialog")

    def test_alt_z_leads_there_and_back(self):
        script, variables = "wartosci.kx [tryb uruchomieniowy]", "Zmienne wartosci.kx [tryb uruchomieniowy]"
        self.activate(script)
        self.keys("alt+z")
        self.app.wait(lambda: self.is_active(variables), "the variables")
        self.keys("alt+z")
        self.app.wait(lambda: self.is_active(script), "the script")

    def test_search_selects_a_row(self):
        self.activate("Zmienne wartosci.kx [tryb uruchomieniowy]")
        x, y, _, height = self.table.cell(0, 0).extents
        self.desktop.click(x + 5, y + height // 2)
        self.app.choose("Edycja", "Znajdź...")
        dialog = self.dialog("Znajdź")
        checks = [(name, self.app.find("check box", name, dialog).has("checked")) for name in
                  ("Znaki wieloznaczne", "Cały tekst", "W dowolnym miejscu", "Bez względu na wielkość liter")]
        self.assertEqual([checked for _, checked in checks], [True, False, True, False])
        field = dialog.find("text", "Szukany tekst") or dialog.find("combo box", "Szukany tekst").find("text")
        field.text = "p"
        self.keys("Return")
        self.app.wait(lambda: self.table.cell(3, 0).has("selected"), "the row of P")
        if dialog in self.app.windows:
            self.keys("Escape")
            self.app.wait(lambda: dialog not in self.app.windows, "the end of the dialog")

    def test_reset_empties_the_list_and_the_window_stays(self):
        self.activate("wartosci.kx [tryb uruchomieniowy]")
        self.app.choose("Skrypt", "Reset")
        frame = self.frame("Zmienne wartosci.kx")
        self.expect([], lambda: self.app.find("table", "Zmienne", frame).rows)
        self.activate("wartosci.kx")
        self.app.choose("Skrypt", "Start")
        self.frame("Zmienne wartosci.kx [tryb uruchomieniowy]")


if __name__ == "__main__":
    unittest.main()
