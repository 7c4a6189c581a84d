#include "language/Statements.h"

#include "engine/StatementFamilies.h"
#include "host/HostStatements.h"
#include "operands/Keywords.h"
#include "sources/SourceFamilies.h"

namespace kalvex {

namespace {

// keyword, handler, forms as the help shows them (one a line), help text
constexpr StatementRow kRows[] = {
    {Keyword::Procedure, ExecuteProcedure,
     "PROCEDURE nazwa([parametr1,parametr2...]) BEGIN ... END", ""},
    {Keyword::Begin, ExecuteBegin, "BEGIN", ""},
    {Keyword::End, ExecuteEnd, "END", ""},
    {"LOCK", ExecuteLock, "LOCK", "Blokada aktualizacji zmiennych zdalnych"},
    {"UNLOCK", ExecuteUnlock, "UNLOCK", "Odblokowanie aktualizacji zmiennych zdalnych"},
    {"IGNORE_UNKNOWN_ON", ExecuteIgnoreUnknownOn, "IGNORE_UNKNOWN_ON",
     "Włączenie ignorowania wartości nieznanych zmiennych zdalnych"},
    {"IGNORE_UNKNOWN_OFF", ExecuteIgnoreUnknownOff, "IGNORE_UNKNOWN_OFF",
     "Wyłączenie ignorowania wartości nieznanych zmiennych zdalnych"},
    {"PRIORITY", ExecutePriority, "PRIORITY <1-100>", "Sterowanie szybkością wykonywania skryptu"},
    {"SLEEP", ExecuteSleep, "SLEEP HH:MM.SS[MM.SS][SS]",
     "Zatrzymanie wykonywania programu na określony czas"},
    {"WAITFOR", ExecuteWaitFor, "WAITFOR HH:MM.SS[MM.SS][SS], HH:MM.SS[MM.SS][SS]...",
     "Zatrzymanie i wznowienie wykonywania programu w określonych momentach czasu"},
    {"PING_INIT", ExecutePingInit,
     "PING_INIT <adres_internetowy_węzła_docelowego[:czas_przeterminowania]>\nPING_INIT <zmienna>",
     "Inicjowanie diagnostyki określonego adresu internetowego"},
    {"FTP_INIT", ExecuteFtpInit,
     "FTP_INIT <adres_serwera_ftp> <port> <użytkownik> <hasło>\n"
     "FTP_INIT <adres> <port> <użytkownik> <hasło>",
     "Inicjowanie diagnostyki połączenia ftp"},
    {"HTTP_INIT", ExecuteHttpInit,
     "HTTP_INIT <adres_serwera_http> <port>\nHTTP_INIT <adres> <port>",
     "Inicjowanie diagnostyki połączenia http"},
    {"EXEC", ExecuteExec,
     "EXEC <ścieżka_programu> [-WD <katalog_roboczy>] [<parametr1> <parametr2> ...]",
     "Uruchomienie zewnętrznego programu"},
    {"TERMINATE_EXEC", ExecuteTerminateExec,
     "TERMINATE_EXEC <identyfikator_programu> [<kod_zakończenia>]",
     "Przerwanie pracy uruchomionego programu"},
    {"CLOSE_EXEC", ExecuteCloseExec,
     "CLOSE_EXEC <identyfikator_programu> <pozwolenie_na_przerwanie_pracy_programu> "
     "[<czas_oczekiwania_na_zakończenie>]",
     "Zamknięcie uruchomionego programu"},
    {"SETTIME", ExecuteSetTime, "SETTIME <rok> <miesiąc> <dzień> <godzina> <minuta> <sekunda>",
     "Ustawianie czasu systemowego"},
    {"ENABLE_NOTIFY", ExecuteEnableNotify, "ENABLE_NOTIFY HREP <nazwa_serwera>",
     "Odblokowanie obsługi powiadomień o zmianach wartości raportowych godzinowych"},
    {"DISABLE_NOTIFY", ExecuteDisableNotify, "DISABLE_NOTIFY HREP <nazwa_serwera>",
     "Zablokowanie obsługi powiadomień o zmianach wartości raportowych godzinowych"},
    {"LOCAL", ExecuteLocal,
     "LOCAL <nazwa_zmiennej>\nLOCAL <nazwa_zmiennej> = <zmienna>\nLOCAL <nazwa_zmiennej> = "
     "<wartość>",
     ""},
    {"REMOTE", ExecuteRemote, "REMOTE <nazwa_zmiennej> <nazwa_serwera>@<nazwa_zmiennej_w_serwerze>",
     ""},
    {"POINTER", ExecutePointer, "POINTER <nazwa_wskaźnika>", ""},
    {"LIST", ExecuteList, "LIST <nazwa_listy>", ""},
    {"COPY", ExecuteCopy, "COPY <nazwa_zmiennej_źródłowej> <zmienna_docelowa>", ""},
    {"CREATE_VAR_LIST", ExecuteCreateVarList, "CREATE_VAR_LIST <lista> <wzorzec>", ""},
    {"FILL_IN_LIST", ExecuteFillInList,
     "FILL_IN_LIST <lista> <wartość> <status> <początek> <koniec> <krok>",
     "Wypełnienie listy wartościami z zadanego przedziału"},
    {"CALC_IN_LIST", ExecuteCalcInList,
     "CALC_IN_LIST <lista.funkcja> <wynik> "
     "[<maska_ignorowanych_wartości> [FROM <początek> TO <koniec>]]",
     "Wykonanie obliczenia na podstawie wartości elementów listy według zadanego przedziału i "
     "maski ignorowanych wartości"},
    {"SUBSCRIBE", ExecuteSubscribe, "SUBSCRIBE START\nSUBSCRIBE STOP",
     "Sterowanie rejestracją zmiennych"},
    {"SETPTR", ExecuteSetPtr, "SETPTR <wskaźnik> = <nazwa_zmiennej>", ""},
    {"MOVE_FIRST", ExecuteMoveFirst, "MOVE_FIRST <lista>",
     "Przesunięcie iteratora do początku listy"},
    {"MOVE_NEXT", ExecuteMoveNext, "MOVE_NEXT <lista>",
     "Przesuniecie iteratora do kolejnego elementu listy"},
    {"MOVE_TO", ExecuteMoveTo, "MOVE_TO <lista> <indeks>",
     "Przesuniecie iteratora do wskazanego elementu listy"},
    {"ADD", ExecuteAdd, "ADD <lista> <element>", "Dodawanie elementów do listy"},
    {"INSERT", ExecuteInsert, "INSERT <lista> <indeks> <element>", "Wstawianie elementów do listy"},
    {"REMOVE", ExecuteRemove, "REMOVE <lista> <indeks>", "Usuwanie elementów z listy"},
    {"REMOVE_ALL", ExecuteRemoveAll, "REMOVE_ALL <lista>",
     "Usunięcie wszystkich elementów z listy"},
    {"REMOVEALL", ExecuteRemoveAll, "REMOVEALL <lista>", "Usunięcie wszystkich elementów z listy"},
    {"SET", ExecuteSet, "SET <nazwa_zmiennej> = <zmienna>\nSET <nazwa_zmiennej> = <wartość>", ""},
    {"MPUT", ExecuteMPut, "MPUT <zmienna> <typ_danych> <lista_wartości>",
     "Modyfikacja zestawu wartości w serwerze"},
    {"MGET", ExecuteMGet,
     "MGET <zmienna> <typ_danych> FROM <start> TO <stop>\nMGET <zmienna> GETDATA <lista>",
     "Pobranie zestawu wartości z serwera"},
    {"GET", ExecuteGet,
     "GET <zmienna> <typ_danych> <rok> <miesiąc> <dzień> <godzina> <przesunięcie>\n"
     "GET <zmienna> <typ_danych> <czas> <przesunięcie>",
     "Inicjowanie pobrania wartości z serwera"},
    {"PUT", ExecutePut,
     "PUT <zmienna> <typ_danych> <rok> <miesiąc> <dzień> <godzina> <nowa_wartość> "
     "<przesunięcie>\n"
     "PUT <zmienna> <typ_danych> <czas> <nowa_wartość> <przesunięcie>\n"
     "PUT <zmienna>[.<typ_danych>]",
     "Modyfikacja wartości raportowej lub statusu zmiennej"},
    {"INIT", ExecuteInit,
     "INIT <zmienna> <typ_danych> <rok> <miesiąc> <dzień> <godzina> [<przesunięcie>]",
     "Inicjowanie raportów w serwerze"},
    {"INIT_LOAD", ExecuteInitLoad,
     "INIT_LOAD <zmienna> <typ_danych> [[<rok> <miesiąc> <dzień> <godzina>] [<przesunięcie>]]",
     "Inicjowanie pobierania danych w serwerze"},
    {"INIT_LOAD_REFRESH", ExecuteInitLoadRefresh,
     "INIT_LOAD_REFRESH <zmienna> ARCH [[<rok> <miesiąc> <dzień> <godzina>] [<przesunięcie>]]",
     "Inicjowanie odświeżania danych archiwalnych w serwerze"},
    {"INIT_CALC", ExecuteInitCalc,
     "INIT_CALC <zmienna> <typ_danych> <rok> <miesiąc> <dzień> <godzina> [<przesunięcie>]",
     "Inicjowanie przeliczania danych w serwerze"},
    {Keyword::If, ExecuteIf,
     "IF <warunek> THEN ... ELSE ... ENDIF\nIF <warunek> GOTO <etykieta>\n"
     "IF NOT <warunek> THEN ... ELSE ... ENDIF\nIF NOT <warunek> GOTO <etykieta>",
     ""},
    {Keyword::Else, ExecuteElse, "ELSE", ""},
    {Keyword::Endif, ExecuteEndif, "ENDIF", ""},
    {Keyword::Goto, ExecuteGoto, "GOTO <etykieta>", ""},
    {Keyword::Call, ExecuteCall, "CALL nazwa([parametr1,parametr2...])", ""},
    {"READ_FILE", ExecuteReadFile,
     "READ_FILE plik [<numer_sekcji>] [-A/-R <zmienna> <zmienna> ...]",
     "Pobranie wartości zmiennych z pliku"},
    {"WRITE_FILE", ExecuteWriteFile,
     "WRITE_FILE <pliku> [<numer_sekcji>] [-A/-R <zmienna> <zmienna> ...]",
     "Zapisanie wartości zmiennych do pliku"},
    {"SET_FILE", ExecuteSetFile,
     "SET_FILE plik <numer_sekcji> <wartość> [-A/-R <zmienna> <zmienna> ...]",
     "Ustawienie wartości zmiennych do pliku"},
    {"REMOVE_STATUS", ExecuteStatusChange,
     "REMOVE_STATUS <zmienna>[.<typ_danych>] <wartość_statusu>", "Usuwanie statusu zmiennej"},
    {"ADD_STATUS", ExecuteStatusChange, "ADD_STATUS <zmienna>[.<typ_danych>] <wartość_statusu>",
     "Dodawanie statusu zmiennej"},
    {"SET_STATUS", ExecuteStatusChange, "SET_STATUS <zmienna>[.<typ_danych>] <wartość_statusu>",
     "Ustawianie statusu zmiennej"},
    {"SPLIT", ExecuteSplit, "SPLIT <zmienna> <separator> <lista>",
     "Rozdzielenie fragmentów tekstu według podanego separatora"},
};

}  // namespace

const CStatementTable& Statements() {
    static const CStatementTable table(kRows);
    return table;
}

}  // namespace kalvex
