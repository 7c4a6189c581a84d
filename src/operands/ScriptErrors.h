// The script errors. Code and wording together are a contract with operators and the console; this
// list is the only place where either stands.
#pragma once

#include <string_view>

namespace kalvex::operands {

// X(code, name, Polish text in UTF-8, passes through the translator)
#define KALVEX_SCRIPT_ERRORS(X)                                                                 \
    X(0, ErrorNone, "Brak błędów", true)                                                        \
    X(1, ErrorUnknownKeyword, "Nieznane słowo kluczowe", true)                                  \
    X(2, ErrorBadVariableName, "Błędna nazwa zmiennej", true)                                   \
    X(3, ErrorUndefinedVariable, "Zmienna nie została poprawnie zdefiniowana", true)            \
    X(4, ErrorBadSet, "Błąd w wyrażeniu SET", true)                                             \
    X(5, ErrorNoAssignment, "Nie znaleziono operatora podstawienia", true)                      \
    X(6, ErrorNoLabel, "Nie znaleziono etykiety", true)                                         \
    X(7, ErrorNoProcedure, "Nie znaleziono procedury", true)                                    \
    X(8, ErrorNoFileName, "Nie zdefiniowano pliku", true)                                       \
    X(9, ErrorFileOpen, "Błąd otwarcia pliku", true)                                            \
    X(10, ErrorBadOperator, "Nie znaleziono poprawnego operatora warunkowego", true)            \
    X(11, ErrorOther, "Inny błąd", true)                                                        \
    X(12, ErrorStackOverflow, "Przepełnienie stosu", true)                                      \
    X(13, ErrorBadFunction, "Błąd w zapisie funkcji", true)                                     \
    X(14, ErrorBadEquation, "Błąd w równaniu matematycznym", true)                              \
    X(15, ErrorRemoteValue, "Błąd pobrania wartości zdalnej zmiennej", true)                    \
    X(16, ErrorExpression, "Błąd obliczenia wyrażenia", true)                                   \
    X(17, ErrorNotAscii, "Wystąpił znak spoza tablicy ASCII", true)                             \
    X(18, ErrorNoComparison, "Nie znaleziono właściwego operatora", false)                      \
    X(19, ErrorText, "Błąd podczas pobierania łańcucha znaków", true)                           \
    X(20, ErrorNumber, "Błąd podczas pobierania wartości liczbowej", true)                      \
    X(21, ErrorWrongKind, "Niewłaściwy typ zmiennej", true)                                     \
    X(22, ErrorArguments, "Nieprawidłowe lub brakujące argumenty wyrażenia", true)              \
    X(23, ErrorDotInName, "Deklarowana nazwa zmiennej zawiera znak kropki", true)               \
    X(24, ErrorNoEndif, "Nie znaleziono dla instrukcji IF definicji zakończenia - ENDIF", true) \
    X(25, ErrorStrayEndif, "Brak instrukcji IF...THEN dla użytej komendy ENDIF", true)          \
    X(26, ErrorOpenIf, "Brak instrukcji ENDIF dla instrukcji IF...THEN", true)                  \
    X(27, ErrorWaiting, "Oczekiwanie na pobranie danych bieżących", true)

enum ScriptError : int {
#define KALVEX_ROW(code, name, text, translated) name = code,
    KALVEX_SCRIPT_ERRORS(KALVEX_ROW)
#undef KALVEX_ROW
};

struct ScriptErrorRow {
    ScriptError code;
    const char* text;  // UTF-8, the translator's key
    bool translated;
};

// The row of a code, or null for a code outside the list.
const ScriptErrorRow* FindScriptError(int code);

}  // namespace kalvex::operands
