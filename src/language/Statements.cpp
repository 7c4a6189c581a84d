#include "language/Statements.h"

#include "engine/StatementFamilies.h"
#include "host/HostStatements.h"
#include "operands/Keywords.h"
#include "sources/SourceFamilies.h"

namespace kalvex::language {

namespace {

constexpr bool kWaitsAlike = true;

// keyword, handler, forms as the help shows them (one a line), help text, whether a line that waits
// for data has only read
constexpr engine::StatementRow kRows[] = {
    {operands::Keyword::Procedure, engine::ExecuteProcedure,
     "PROCEDURE nazwa([parametr1,parametr2...]) BEGIN ... END", ""},
    {operands::Keyword::Begin, engine::ExecuteBegin, "BEGIN", ""},
    {operands::Keyword::End, engine::ExecuteEnd, "END", ""},
    {"LOCK", engine::ExecuteLock, "LOCK", "Blokada aktualizacji zmiennych zdalnych"},
    {"UNLOCK", engine::ExecuteUnlock, "UNLOCK", "Odblokowanie aktualizacji zmiennych zdalnych"},
    {"IGNORE_UNKNOWN_ON", engine::ExecuteIgnoreUnknownOn, "IGNORE_UNKNOWN_ON",
     "Włączenie ignorowania wartości nieznanych zmiennych zdalnych"},
    {"IGNORE_UNKNOWN_OFF", engine::ExecuteIgnoreUnknownOff, "IGNORE_UNKNOWN_OFF",
     "Wyłączenie ignorowania wartości nieznanych zmiennych zdalnych"},
    {"PRIORITY", engine::ExecutePriority, "PRIORITY <1-100>",
     "Sterowanie szybkością wykonywania skryptu"},
    {"SLEEP", engine::ExecuteSleep, "SLEEP HH:MM.SS[MM.SS][SS]",
     "Zatrzymanie wykonywania programu na określony czas"},
    {"WAITFOR", engine::ExecuteWaitFor, "WAITFOR HH:MM.SS[MM.SS][SS], HH:MM.SS[MM.SS][SS]...",
     "Zatrzymanie i wznowienie wykonywania programu w określonych momentach czasu"},
    {"PING_INIT", host::ExecutePingInit,
     "PING_INIT <adres_internetowy_węzła_docelowego[:czas_przeterminowania]>\nPING_INIT <zmienna>",
     "Inicjowanie diagnostyki określonego adresu internetowego"},
    {"FTP_INIT", host::ExecuteFtpInit,
     "FTP_INIT <adres_serwera_ftp> <port> <użytkownik> <hasło>\n"
     "FTP_INIT <adres> <port> <użytkownik> <hasło>",
     "Inicjowanie diagnostyki połączenia ftp"},
    {"HTTP_INIT", host::ExecuteHttpInit,
     "HTTP_INIT <adres_serwera_http> <port>\nHTTP_INIT <adres> <port>",
     "Inicjowanie diagnostyki połączenia http"},
    {"EXEC", host::ExecuteExec,
     "EXEC <ścieżka_programu> [-WD <katalog_roboczy>] [<parametr1> <parametr2> ...]",
     "Uruchomienie zewnętrznego programu"},
    {"TERMINATE_EXEC", host::ExecuteTerminateExec,
     "TERMINATE_EXEC <identyfikator_programu> [<kod_zakończenia>]",
     "Przerwanie pracy uruchomionego programu"},
    {"CLOSE_EXEC", host::ExecuteCloseExec,
     "CLOSE_EXEC <identyfikator_programu> <pozwolenie_na_przerwanie_pracy_programu> "
     "[<czas_oczekiwania_na_zakończenie>]",
     "Zamknięcie uruchomionego programu"},
    {"SETTIME", engine::ExecuteSetTime,
     "SETTIME <rok> <miesiąc> <dzień> <godzina> <minuta> <sekunda>",
     "Ustawianie czasu systemowego"},
    {"ENABLE_NOTIFY", sources::ExecuteEnableNotify, "ENABLE_NOTIFY HREP <nazwa_serwera>",
     "Odblokowanie obsługi powiadomień o zmianach wartości raportowych godzinowych"},
    {"DISABLE_NOTIFY", sources::ExecuteDisableNotify, "DISABLE_NOTIFY HREP <nazwa_serwera>",
     "Zablokowanie obsługi powiadomień o zmianach wartości raportowych godzinowych"},
    {"LOCAL", engine::ExecuteLocal,
     "LOCAL <nazwa_zmiennej>\nLOCAL <nazwa_zmiennej> = <zmienna>\nLOCAL <nazwa_zmiennej> = "
     "<wartość>",
     "", kWaitsAlike},
    {"REMOTE", engine::ExecuteRemote,
     "REMOTE <nazwa_zmiennej> <nazwa_serwera>@<nazwa_zmiennej_w_serwerze>", ""},
    {"POINTER", engine::ExecutePointer, "POINTER <nazwa_wskaźnika>", ""},
    {"LIST", engine::ExecuteList, "LIST <nazwa_listy>", ""},
    {"COPY", engine::ExecuteCopy, "COPY <nazwa_zmiennej_źródłowej> <zmienna_docelowa>", ""},
    {"CREATE_VAR_LIST", engine::ExecuteCreateVarList, "CREATE_VAR_LIST <lista> <wzorzec>", ""},
    {"FILL_IN_LIST", engine::ExecuteFillInList,
     "FILL_IN_LIST <lista> <wartość> <status> <początek> <koniec> <krok>",
     "Wypełnienie listy wartościami z zadanego przedziału"},
    {"CALC_IN_LIST", engine::ExecuteCalcInList,
     "CALC_IN_LIST <lista.funkcja> <wynik> "
     "[<maska_ignorowanych_wartości> [FROM <początek> TO <koniec>]]",
     "Wykonanie obliczenia na podstawie wartości elementów listy według zadanego przedziału i "
     "maski ignorowanych wartości"},
    {"SUBSCRIBE", engine::ExecuteSubscribe, "SUBSCRIBE START\nSUBSCRIBE STOP",
     "Sterowanie rejestracją zmiennych"},
    {"SETPTR", engine::ExecuteSetPtr, "SETPTR <wskaźnik> = <nazwa_zmiennej>", ""},
    {"MOVE_FIRST", engine::ExecuteMoveFirst, "MOVE_FIRST <lista>",
     "Przesunięcie iteratora do początku listy"},
    {"MOVE_NEXT", engine::ExecuteMoveNext, "MOVE_NEXT <lista>",
     "Przesuniecie iteratora do kolejnego elementu listy"},
    {"MOVE_TO", engine::ExecuteMoveTo, "MOVE_TO <lista> <indeks>",
     "Przesuniecie iteratora do wskazanego elementu listy"},
    {"ADD", engine::ExecuteAdd, "ADD <lista> <element>", "Dodawanie elementów do listy"},
    {"INSERT", engine::ExecuteInsert, "INSERT <lista> <indeks> <element>",
     "Wstawianie elementów do listy"},
    {"REMOVE", engine::ExecuteRemove, "REMOVE <lista> <indeks>", "Usuwanie elementów z listy"},
    {"REMOVE_ALL", engine::ExecuteRemoveAll, "REMOVE_ALL <lista>",
     "Usunięcie wszystkich elementów z listy"},
    {"REMOVEALL", engine::ExecuteRemoveAll, "REMOVEALL <lista>",
     "Usunięcie wszystkich elementów z listy"},
    {"SET", engine::ExecuteSet,
     "SET <nazwa_zmiennej> = <zmienna>\nSET <nazwa_zmiennej> = <wartość>", "", kWaitsAlike},
    {"MPUT", sources::ExecuteMPut, "MPUT <zmienna> <typ_danych> <lista_wartości>",
     "Modyfikacja zestawu wartości w serwerze"},
    {"MGET", sources::ExecuteMGet,
     "MGET <zmienna> <typ_danych> FROM <start> TO <stop>\nMGET <zmienna> GETDATA <lista>",
     "Pobranie zestawu wartości z serwera"},
    {"GET", sources::ExecuteGet,
     "GET <zmienna> <typ_danych> <rok> <miesiąc> <dzień> <godzina> <przesunięcie>\n"
     "GET <zmienna> <typ_danych> <czas> <przesunięcie>",
     "Inicjowanie pobrania wartości z serwera"},
    {"PUT", sources::ExecutePut,
     "PUT <zmienna> <typ_danych> <rok> <miesiąc> <dzień> <godzina> <nowa_wartość> "
     "<przesunięcie>\n"
     "PUT <zmienna> <typ_danych> <czas> <nowa_wartość> <przesunięcie>\n"
     "PUT <zmienna>[.<typ_danych>]",
     "Modyfikacja wartości raportowej lub statusu zmiennej"},
    {"INIT", sources::ExecuteInit,
     "INIT <zmienna> <typ_danych> <rok> <miesiąc> <dzień> <godzina> [<przesunięcie>]",
     "Inicjowanie raportów w serwerze"},
    {"INIT_LOAD", sources::ExecuteInitLoad,
     "INIT_LOAD <zmienna> <typ_danych> [[<rok> <miesiąc> <dzień> <godzina>] [<przesunięcie>]]",
     "Inicjowanie pobierania danych w serwerze"},
    {"INIT_LOAD_REFRESH", sources::ExecuteInitLoadRefresh,
     "INIT_LOAD_REFRESH <zmienna> ARCH [[<rok> <miesiąc> <dzień> <godzina>] [<przesunięcie>]]",
     "Inicjowanie odświeżania danych archiwalnych w serwerze"},
    {"INIT_CALC", sources::ExecuteInitCalc,
     "INIT_CALC <zmienna> <typ_danych> <rok> <miesiąc> <dzień> <godzina> [<przesunięcie>]",
     "Inicjowanie przeliczania danych w serwerze"},
    {operands::Keyword::If, engine::ExecuteIf,
     "IF <warunek> THEN ... ELSE ... ENDIF\nIF <warunek> GOTO <etykieta>\n"
     "IF NOT <warunek> THEN ... ELSE ... ENDIF\nIF NOT <warunek> GOTO <etykieta>",
     "", kWaitsAlike},
    {operands::Keyword::Else, engine::ExecuteElse, "ELSE", ""},
    {operands::Keyword::Endif, engine::ExecuteEndif, "ENDIF", ""},
    {operands::Keyword::Goto, engine::ExecuteGoto, "GOTO <etykieta>", ""},
    {operands::Keyword::Call, engine::ExecuteCall, "CALL nazwa([parametr1,parametr2...])", ""},
    {"READ_FILE", host::ExecuteReadFile,
     "READ_FILE plik [<numer_sekcji>] [-A/-R <zmienna> <zmienna> ...]",
     "Pobranie wartości zmiennych z pliku"},
    {"WRITE_FILE", host::ExecuteWriteFile,
     "WRITE_FILE <pliku> [<numer_sekcji>] [-A/-R <zmienna> <zmienna> ...]",
     "Zapisanie wartości zmiennych do pliku"},
    {"SET_FILE", host::ExecuteSetFile,
     "SET_FILE plik <numer_sekcji> <wartość> [-A/-R <zmienna> <zmienna> ...]",
     "Ustawienie wartości zmiennych do pliku"},
    {"REMOVE_STATUS", engine::ExecuteStatusChange,
     "REMOVE_STATUS <zmienna>[.<typ_danych>] <wartość_statusu>", "Usuwanie statusu zmiennej"},
    {"ADD_STATUS", engine::ExecuteStatusChange,
     "ADD_STATUS <zmienna>[.<typ_danych>] <wartość_statusu>", "Dodawanie statusu zmiennej"},
    {"SET_STATUS", engine::ExecuteStatusChange,
     "SET_STATUS <zmienna>[.<typ_danych>] <wartość_statusu>", "Ustawianie statusu zmiennej"},
    {"SPLIT", engine::ExecuteSplit, "SPLIT <zmienna> <separator> <lista>",
     "Rozdzielenie fragmentów tekstu według podanego separatora"},
};

}  // namespace

const engine::StatementTable& Statements() {
    static const engine::StatementTable table(kRows);
    return table;
}

}  // namespace kalvex::language
