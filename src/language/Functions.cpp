#include "language/Functions.h"

#include "host/HostStatements.h"
#include "values/FunctionFamilies.h"

namespace kalvex {

namespace {

// keyword, handler, arguments, help text
constexpr FunctionRow kRows[] = {
    {"SIN", Sine, "X", "Funkcja sinus ze zmiennej X"},
    {"COS", Cosine, "X", "Funkcja cosinus ze zmiennej X"},
    {"TG", Tangent, "X", "Funkcja tangens ze zmiennej X"},
    {"CTG", Cotangent, "X", "Funkcja cotangens ze zmiennej X"},
    {"ARCSIN", ArcSine, "X", "Funkcja arcus sinus ze zmiennej X"},
    {"ARCCOS", ArcCosine, "X", "Funkcja arcus cosinus ze zmiennej X"},
    {"ARCTG", ArcTangent, "X", "Funkcja arcus tangens ze zmiennej X"},
    {"ARCCTG", ArcCotangent, "X", "Funkcja arcus cotangens ze zmiennej X"},
    {"SQR", Square, "X", "Kwadrat ze zmiennej X"},
    {"SQRT", SquareRoot, "X", "Pierwiastek kwadratowy ze zmiennej X"},
    {"FACTORIAL", Factorial, "X", "Silnia ze zmiennej X"},
    {"INT", IntegerPart, "X", "Konwersja łańcucha znaków na wartość numeryczną typu całkowitego"},
    {"ROUND", Round, "X Y", "Zaokrąglenie zmiennej X do Y miejsca"},
    {"READ_FILE", ReadFileFunction, "plik [<numer_sekcji>] [-A/-R <zmienna> <zmienna> ...]",
     "Pobranie wartości zmiennych z pliku"},
    {"WRITE_FILE", WriteFileFunction, "<pliku> [<numer_sekcji>] [-A/-R <zmienna> <zmienna> ...]",
     "Zapisanie wartości zmiennych do pliku"},
    {"SET_FILE", SetFileFunction,
     "plik <numer_sekcji> <wartość> [-A/-R <zmienna> <zmienna> ...]",
     "Ustawienie wartości zmiennych do pliku"},
    {"EXEC", ExecFunction,
     "<ścieżka_programu> [-WD <katalog_roboczy>] [<parametr1> <parametr2> ...]",
     "Uruchomienie zewnętrznego programu"},
    {"CHECK_EXEC_ACTIVITY", CheckExecActivity, "<identyfikator_programu>",
     "Sprawdzenie aktywności uruchomionego programu"},
    {"GET_EXIT_CODE_EXEC", GetExitCodeExec, "<identyfikator_programu>",
     "Sprawdzenie kodu zakończenia uruchomionego programu"},
    {"TERMINATE_EXEC", TerminateExecFunction, "<identyfikator_programu> [<kod_zakończenia>]",
     "Przerwanie pracy uruchomionego programu"},
    {"CLOSE_EXEC", CloseExecFunction,
     "<identyfikator_programu> <pozwolenie_na_przerwanie_pracy_programu> "
     "[<czas_oczekiwania_na_zakończenie>]",
     "Zamknięcie uruchomionego programu"},
};

}  // namespace

const CFunctionTable& Functions() {
    static const CFunctionTable table(kRows);
    return table;
}

}  // namespace kalvex
