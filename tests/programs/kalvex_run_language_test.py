#!/usr/bin/env python3
"""kalvex-run --language from outside: what it tells of the words of the language, against the tables.

    kalvex_run_language_test.py PATH_OF_KALVEX_RUN [unittest arguments]
"""
import pathlib
import re
import unittest

from kalvex_run_process import RunnerTest

SOURCE = pathlib.Path(__file__).resolve().parents[2] / "src"

# Where the words of each part of the list stand in the source, in its order.
TABLES = {
    "Funkcje": ("language/Functions.cpp", r'^    \{"([A-Z_0-9]+)", \w+::\w+,'),
    "Warunki instrukcji IF": ("operands/Conditions.cpp", r'^    \{"([A-Z_]+)", \w+'),
    "Właściwości czasu": ("operands/TimeProperties.cpp", r'^    \{"(\.[A-Z.]+)", (?:Time|Int),'),
    "Typy danych": ("value/Status.cpp", r'^    \{"([A-Z]+)", Kind'),
    "Słowa harmonogramu": ("operands/Schedule.cpp", r'"(@[a-z_]+)"'),
    "Statusy": ("value/Status.cpp", r'^    \{"([A-Z_]+)", Status::'),
    "Błędy skryptu": ("operands/ScriptErrors.h", r"^    X\((\d+),"),
}


class Language(RunnerTest):
    def setUp(self):
        super().setUp()
        for name in ("LANGUAGE", "LANG", "LC_MESSAGES"):
            self.environment.pop(name, None)

    def language(self, *word):
        return self.call("--language", *word)

    def assert_told(self, word, *lines):
        run = self.language(word)
        self.assertEqual((run.code, run.err, run.out.splitlines()), (0, "", list(lines)))

    def list(self):
        run = self.language()
        self.assertEqual((run.code, run.err), (0, ""))
        parts = [part.splitlines() for part in run.out.split("\n\n")]
        return {part[0]: [line[2:] for line in part[1:]] for part in parts}

    def test_statement(self):
        self.assert_told("SLEEP", "SLEEP (instrukcja)", "    SLEEP HH:MM.SS[MM.SS][SS]",
                         "Zatrzymanie wykonywania programu na określony czas")

    def test_purpose_that_only_the_window_tells(self):
        self.assert_told("SET", "SET (instrukcja)", "    SET <nazwa_zmiennej> = <zmienna>",
                         "    SET <nazwa_zmiennej> = <wartość>", "Ustawienie wartości zmiennej")

    def test_function_has_a_form_for_each_list_of_arguments(self):
        self.assert_told("STRING_SPAN_EXCLUDING", "STRING_SPAN_EXCLUDING (funkcja)",
                         "    STRING_SPAN_EXCLUDING <tekst> <znaki>", "Wyodrębnienie łańcucha znaków")
        self.assert_told("PING_RESULT", "PING_RESULT (funkcja)",
                         "    PING_RESULT <adres_internetowy_węzła_docelowego>", "    PING_RESULT <zmienna>",
                         "Pobranie czasu odpowiedzi określonego adresu internetowego")
        self.assert_told("SORVANE_USER_NAME", "SORVANE_USER_NAME (funkcja)", "    SORVANE_USER_NAME",
                         "Pobranie nazwy użytkownika zarejestrowanego w systemie Sorvane")

    def test_word_of_two_kinds_is_told_twice(self):
        run = self.language("ADD_STATUS")
        self.assertEqual(run.out.splitlines(), [
            "ADD_STATUS (instrukcja)", "    ADD_STATUS <zmienna>[.<typ_danych>] <wartość_statusu>",
            "Dodawanie statusu zmiennej", "",
            "ADD_STATUS (funkcja)", "    ADD_STATUS <zmienna>[.<typ_danych>] <wartość_statusu>",
            "Dodawanie statusu zmiennej",
        ])  # fmt: skip

    def test_directive_condition_kind_status_and_other_words(self):
        self.assert_told("INCLUDE", "INCLUDE (dyrektywa)", "    INCLUDE <ścieżka_do_pliku_z_rozszerzeniem_kx>",
                         "Umożliwia wczytanie i wykonanie kodu z określonego pliku")
        self.assert_told("READY", "READY (warunek)", "    READY <zmienna>.<typ_danych>",
                         "Sprawdzenie, czy dane są już pobrane lub wystąpił błąd pobrania")
        self.assert_told("HREP", "HREP (typ danych)", "Typ danych: godzinowe")
        self.assert_told("ALARM", "ALARM (status)", "Status zmiennej")
        self.assert_told("THEN", "THEN (słowo)", "    IF <warunek> THEN ... ELSE ... ENDIF",
                         "Początek bloku, wykonywanego przy spełnionym warunku")
        self.assert_told("AVERAGE", ".AVERAGE (właściwość listy lub wskaźnika)", "    <lista>.AVERAGE", "Średnia elementów listy")

    def test_property_with_and_without_its_dot_in_any_case(self):
        hour = (".GMTHOUR (właściwość czasu)", "Bieżąca godzina GMT")
        for word in (".GMTHOUR", "GMTHOUR", "gmthour", ".GmtHour"):
            self.assert_told(word, *hour)
        self.assertEqual(self.language("unit").out.splitlines()[0], ".UNIT (właściwość zmiennej)")

    def test_property_that_is_a_function_too(self):
        self.assert_told("TIMESTAMP", "TIMESTAMP (funkcja)", "    TIMESTAMP <zmienna>", "Znacznik czasowy zmiennej", "",
                         ".TIMESTAMP (właściwość zmiennej)", "Znacznik czasowy zmiennej")

    def test_word_of_the_schedule(self):
        self.assert_told("@Daily", "@daily (słowo harmonogramu)")

    def test_condition_that_takes_a_kind_or_none(self):
        self.assert_told("UNKNOWN", "UNKNOWN (warunek)", "    UNKNOWN <zmienna>[.<typ_danych>]",
                         "Sprawdzenie, czy zmienna posiada niepoprawną wartość", "", "UNKNOWN (status)", "Status zmiennej")

    def test_error_by_its_number(self):
        self.assert_told("0", "0 (błąd skryptu)", "Brak błędów")
        self.assert_told("27", "27 (błąd skryptu)", "Oczekiwanie na pobranie danych bieżących")

    def test_word_that_is_none_ends_with_2_and_what_is_near(self):
        for word, near in {
            "SLEP": "; near: SLEEP",
            "sleeep": "; near: SLEEP",
            "STRING_LEFTT": "; near: STRING_LEFT",
            "FTP": "; near: FTP_INIT, FTP_RESULT",
            "Xyzzyx": "",
            "99": "",
        }.items():
            run = self.language(word)
            self.assertEqual((run.code, run.out), (2, ""))
            first = run.err.splitlines()[0]
            self.assertTrue(first.startswith(f'kalvex-run: "{word}" is no word of the language{near}'), first)
            self.assertEqual(bool(near), "near" in first, first)

    def test_list_has_every_word_of_the_tables(self):
        parts = self.list()
        self.assertEqual(list(parts), ["Instrukcje", "Dyrektywy", "Funkcje", "Warunki instrukcji IF", "Właściwości zmiennych",
                                       "Właściwości list i wskaźników", "Właściwości czasu", "Typy danych",
                                       "Słowa harmonogramu", "Statusy", "Inne słowa", "Błędy skryptu"])
        for heading, (path, row) in TABLES.items():
            words = re.findall("(?m)" + row, (SOURCE / path).read_text(encoding="utf-8"))
            self.assertGreater(len(words), 4, heading)
            self.assertEqual([line.split()[0] for line in parts[heading]], words, heading)
        self.assertEqual([line.split()[0] for line in parts["Dyrektywy"]], ["INCLUDE", "INCLUDE_VAR"])
        statements = [line.split()[0] for line in parts["Instrukcje"]]
        source = (SOURCE / "language/Statements.cpp").read_text(encoding="utf-8")
        self.assertEqual(len(statements), len(re.findall(r"(?m)^    \{(?:\"|operands::Keyword::)", source)))
        self.assertIn("GOTO                      Przejście do etykiety", parts["Instrukcje"])
        self.assertIn("27                        Oczekiwanie na pobranie danych bieżących", parts["Błędy skryptu"])

    def test_every_listed_word_is_told(self):
        for heading, lines in self.list().items():
            words = [line.split()[0] for line in lines]
            self.assertEqual(len(words), len(set(words)), heading)
        for word in ("PROCEDURE", ".MIN.SEC", "CURDATA", "1"):
            self.assertEqual(self.language(word).code, 0, word)

    def test_language_of_the_environment(self):
        self.environment["LANGUAGE"] = "en"
        self.assert_told("GOTO", "GOTO (statement)", "    GOTO <label>", "Goes to a label")
        self.assertEqual(list(self.list())[0], "Statements")

    def test_no_script_runs_then(self):
        run = self.language("SLEEP", "nie.kx")
        self.assertEqual((run.code, run.err), (0, ""))


if __name__ == "__main__":
    unittest.main()
