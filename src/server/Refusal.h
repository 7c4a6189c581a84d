// Why an order of a client is not carried out: what the log says, what the client is answered.
#pragma once

#include <cstdint>

#include "vantrel/Codes.h"

namespace kalvex::server {

// X(name, result for the client, Polish words in UTF-8)
#define KALVEX_REFUSALS(X)                                                                  \
    X(None, vantrel::ResultOk, "")                                                          \
    X(NoVariable, vantrel::ResultNothing, "nie ma takiej zmiennej")                         \
    /* of a variable that the client may not see either */                                  \
    X(Hidden, vantrel::ResultNothing, "brak prawa do odczytu i zapisu")                     \
    X(NoRight, vantrel::ResultNoAccess, "brak prawa do zapisu")                             \
    X(HiddenAlarm, vantrel::ResultNothing, "brak prawa do odczytu i potwierdzania alarmów") \
    X(NoAlarmRight, vantrel::ResultNoAccess, "brak prawa do potwierdzania alarmów")         \
    X(NoAlarms, vantrel::ResultBadRequest, "zmienna nie ma alarmów")                        \
    X(BadValue, vantrel::ResultBadValue, "niepoprawna wartość")                             \
    X(BadKind, vantrel::ResultBadRequest, "nieznany rodzaj danych")                         \
    X(BadTime, vantrel::ResultBadRequest, "czas spoza zakresu")                             \
    X(Generated, vantrel::ResultBadRequest, "wartość zmiennej wyznacza sygnał")             \
    X(NoArchive, vantrel::ResultBadRequest, "zmienna nie ma archiwum")                      \
    X(NoReport, vantrel::ResultBadRequest, "zmienna nie ma takiego raportu")                \
    X(ManyValues, vantrel::ResultBadRequest, "zbyt wiele wartości w jednym zapisie")        \
    X(StoreBusy, vantrel::ResultServerFault, "zbyt wiele danych czeka na zapis")

enum class Refusal : std::uint8_t {
#define KALVEX_ROW(name, result, text) name,
    KALVEX_REFUSALS(KALVEX_ROW)
#undef KALVEX_ROW
};

std::uint16_t ResultOf(Refusal refusal);
const char* TextOf(Refusal refusal);  // to be translated

}  // namespace kalvex::server
