// The numbers by which connections and servers tell what went wrong, with words for people.
#pragma once

#include <cstdint>
#include <string>

#include "platform/Translator.h"

namespace kalvex::vantrel {

// Why a connection ended or could not be made.
// X(code, name, Polish words in UTF-8)
#define KALVEX_CONNECTION_REASONS(X)                                    \
    X(4100, ReasonSettingsChanged, "zmiana ustawień połączenia")        \
    X(4101, ReasonLoginChanged, "zmiana danych logowania")              \
    X(4102, ReasonClosed, "zakończenie połączenia")                     \
    X(4103, ReasonLoginRefused, "odmowa rejestracji użytkownika")       \
    X(4104, ReasonLost, "utrata połączenia")                            \
    X(4105, ReasonSilent, "brak odpowiedzi drugiej strony")             \
    X(4106, ReasonClientEnded, "zakończenie pracy klienta")             \
    X(4107, ReasonServerEnded, "zakończenie pracy serwera")             \
    X(4108, ReasonBadMessage, "niezrozumiały komunikat drugiej strony") \
    X(4109, ReasonUnknownAddress, "nieznany adres serwera")             \
    X(4110, ReasonUnreachable, "serwer nie odpowiada")                  \
    X(4111, ReasonPlainText, "połączenie nieszyfrowane jest niedozwolone")

enum ConnectionReason : std::uint32_t {
#define KALVEX_ROW(code, name, text) name = code,
    KALVEX_CONNECTION_REASONS(KALVEX_ROW)
#undef KALVEX_ROW
};

// How a request failed. Nothing also is the fate of what a break overtakes.
// X(code, name, Polish words in UTF-8)
#define KALVEX_REQUEST_RESULTS(X)                                           \
    X(1, ResultNothing, "brak zmiennej lub danych albo połączenie zerwane") \
    X(2, ResultNoAccess, "brak prawa")                                      \
    X(3, ResultBadValue, "niedopuszczalna wartość")                         \
    X(4, ResultBadRequest, "niedopuszczalne polecenie")                     \
    X(5, ResultServerFault, "błąd serwera")

enum RequestResult : std::uint16_t {
    ResultOk = 0,
#define KALVEX_ROW(code, name, text) name = code,
    KALVEX_REQUEST_RESULTS(KALVEX_ROW)
#undef KALVEX_ROW
};

// The words as an engine text; the number for a code outside the list.
std::string ConnectionReasonText(std::uint32_t code, const platform::Translator& translator);
std::string RequestResultText(std::uint16_t code, const platform::Translator& translator);

}  // namespace kalvex::vantrel
