#include "language/Functions.h"

#include "host/HostStatements.h"
#include "operands/FunctionFamilies.h"
#include "sources/SourceFamilies.h"

namespace kalvex {

namespace {

// keyword, handler, arguments (one form a line), help text
constexpr FunctionRow kRows[] = {
    {"STRING_COMPARE", StringCompare, "<tekst1> <tekst2>", "Porównanie dwóch łańcuchów znakowych"},
    {"STRING_COMPARE_NO_CASE", StringCompareNoCase, "<tekst1> <tekst2>",
     "Porównanie dwóch łańcuchów znakowych z wyłączeniem sprawdzania wielkości znaków"},
    {"STRING_FIND_ONE_OF", StringFindOneOf, "<tekst> <znaki>",
     "Wyszukanie w łańcuchu znaków pierwszego wystąpienia któregokolwiek ze znaków zawartych "
     "określonym łańcuchu znaków"},
    {"STRING_REVERSE_FIND", StringReverseFind, "<tekst> <znak>",
     "Wyszukanie pojedynczego znaku wewnątrz innego rozpoczynając od końca"},
    {"STRING_FIND", StringFind, "<tekst> <szukany_tekst> <pozycja>",
     "Wyszukanie ciągu znaków wewnątrz innego od określonej pozycji"},
    {"TO_STRING", ToStringFunction, "<wartość> [<format>]",
     "konwersja wartości numerycznej na łańcuch znaków według podanego formatu"},
    {"TO_FLOAT", ToFloat, "<tekst>",
     "Konwersja łańcucha znaków na wartość numeryczną typu rzeczywistego"},
    {"TO_INT", ToInt, "<tekst>",
     "Konwersja łańcucha znaków na wartość numeryczną typu całkowitego"},
    {"STRING_LEN", StringLen, "<tekst>", "Wyznaczenie liczby znaków tworzących wskazany ciąg"},
    {"STRING_MAKE_LOWER", StringMakeLower, "<tekst>",
     "Konwersja do małych liter w podanym łańcuchu znaków"},
    {"STRING_MAKE_REVERSE", StringMakeReverse, "<tekst>", "Odwrócenie podanego łańcucha znaków"},
    {"STRING_MAKE_UPPER", StringMakeUpper, "<tekst>",
     "Konwersja do wielkich liter w podanym łańcuchu znaków"},
    {"STRING_APPEND", StringAppend, "<tekst1> <tekst2>",
     "Dołączenie jednego łańcucha znaków na koniec drugiego"},
    {"STRING_SPAN_EXCLUDING", StringSpanExcluding, "<tekst> <znaki>",
     "Wyodrębnienie łańcucha znaków"},
    {"STRING_SPAN_INCLUDING", StringSpanIncluding, "<tekst> <znaki>",
     "Wyodrębnienie łańcucha znaków"},
    {"STRING_TRIM", StringTrim, "<tekst> <znaki>",
     "Usunięcie podanych znaków z początku i z końca łańcucha wejściowego"},
    {"STRING_TRIM_LEFT", StringTrimLeft, "<tekst> <znaki>",
     "Usunięcie podanych znaków z początku łańcucha wejściowego"},
    {"STRING_TRIM_RIGHT", StringTrimRight, "<tekst> <znaki>",
     "Usunięcie podanych znaków z końca łańcucha wejściowego"},
    {"STRING_LEFT", StringLeft, "<tekst> <liczba_znaków>",
     "Wyodrębnie z łańcucha znaków określonej liczby znaków z lewej strony"},
    {"STRING_RIGHT", StringRight, "<tekst> <liczba_znaków>",
     "Wyodrębnie z łańcucha znaków określonej liczby znaków z prawej strony"},
    {"STRING_MID", StringMid, "<tekst> <pozycja> <liczba_znaków>",
     "Wyodrębnie z łańcucha znaków określonej liczby znaków od podanej pozycji"},
    {"TOKENIZE", Tokenize, "<zmienna1> <separator> <zmienna2>",
     "Wydzielenie fragmentu tekstu według podanego separatora"},
    {"JOIN", Join, "<lista> <separator>", "Połączenie elementów listy w jeden ciąg znaków"},
    {"PING_RESULT", PingResultFunction, "<adres_internetowy_węzła_docelowego>\n<zmienna>",
     "Pobranie czasu odpowiedzi określonego adresu internetowego"},
    {"FTP_RESULT", FtpResultFunction, "<adres_serwera_ftp>\n<adres>",
     "Rezultat próby zestawienia połączenia ftp"},
    {"HTTP_RESULT", HttpResultFunction, "<adres_serwera_http>\n<adres>",
     "Rezultat próby zestawienia połączenia http"},
    {"NOTIFY", Notify, "<typ_danych> <nazwa_serwera>",
     "Pobranie z kolejki powiadomień informacji o czasie zmiany raportu"},
    {"NOTIFY_QUEUE_COUNT", NotifyQueueCount, "<typ_danych> <nazwa_serwera>",
     "Sprawdzenie aktualnego rozmiaru kolejki powiadomień o zmianach wartości raportowych"},
    {"NOTIFYING_QUEUE_SIZE", NotifyQueueCount, "<typ_danych> <nazwa_serwera>",
     "Sprawdzenie aktualnego rozmiaru kolejki powiadomień o zmianach wartości raportowych"},
    {"LAST_DAY", LastDay, "<rok> <miesiąc>",
     "Pobranie ostatniego dnia danego miesiąca i roku w czasie używanym w gazownictwie (gdzie doba "
     "to 6:00-5:59)"},
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
    {"STATUS", StatusFunction, "<zmienna>[.<typ_danych>] [<wartość_statusu>]",
     "Sprawdzanie lub pobieranie statusu zmiennej"},
    {"SET_STATUS", SetStatusFunction, "<zmienna>[.<typ_danych>] <wartość_statusu>",
     "Ustawianie statusu zmiennej"},
    {"ADD_STATUS", AddStatusFunction, "<zmienna>[.<typ_danych>] <wartość_statusu>",
     "Dodawanie statusu zmiennej"},
    {"REMOVE_STATUS", RemoveStatusFunction, "<zmienna>[.<typ_danych>] <wartość_statusu>",
     "Usuwanie statusu zmiennej"},
    {"READ_FILE", ReadFileFunction, "plik [<numer_sekcji>] [-A/-R <zmienna> <zmienna> ...]",
     "Pobranie wartości zmiennych z pliku"},
    {"WRITE_FILE", WriteFileFunction, "<pliku> [<numer_sekcji>] [-A/-R <zmienna> <zmienna> ...]",
     "Zapisanie wartości zmiennych do pliku"},
    {"SET_FILE", SetFileFunction, "plik <numer_sekcji> <wartość> [-A/-R <zmienna> <zmienna> ...]",
     "Ustawienie wartości zmiennych do pliku"},
    {"TIMESTAMP", TimestampFunction, "<zmienna>", "Znacznik czasowy zmiennej"},
    {"FORMATED_TIMESTAMP", FormatedTimestamp, "<zmienna> <format>",
     "Znacznik czasowy zmiennej w żądanym formacie"},
    {"MAKE_TIME", MakeTime,
     "<rok>\n<rok> <miesiąc>\n<rok> <miesiąc> <dzień>\n<rok> <miesiąc> <dzień> <godzina>\n"
     "<rok> <miesiąc> <dzień> <godzina> <minuta>\n"
     "<rok> <miesiąc> <dzień> <godzina> <minuta> <sekunda>",
     "Zbudowanie znacznika czasowego na podstawie zadeklarowanych argumentów"},
    {"MAKE_TIME_FROM_STRING", MakeTimeFromString,
     "<data i czas>\n<data i czas> [<format daty i czasu>]",
     "Zbudowanie znacznika czasowego na podstawie zadeklarowanego ciągu znaków"},
    {"CHECK_EVENT_TIME", CheckEventTimeFunction,
     "<wpis_harmonogramu>\n<wpis_harmonogramu> <czas_rozpoczęcia> <czas_zakończenia>\n"
     "<wpis_harmonogramu> <analizowany_czas>\n"
     "<wpis_harmonogramu> <analizowany_czas> "
     "<tolerancja_w_sekundach_względem_analizowanego_czasu>\n"
     "<wpis_harmonogramu> <tolerancja_w_sekundach_względem_bieżącego_czasu>",
     "Sprawdzenie wystąpienia zdarzenia według podanego harmonogramu"},
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
    {"SORVANE_USER_NAME", SorvaneUserName, "",
     "Pobranie nazwy użytkownika zarejestrowanego w systemie Sorvane"},
    {"SORVANE_USER_DESCRIPTION", SorvaneUserDescription, "",
     "Pobranie opisu użytkownika zarejestrowanego w systemie Sorvane"},
    {"WINDOWS_USER_NAME", WindowsUserName, "",
     "Pobranie nazwy użytkownika zarejestrowanego w systemie operacyjnym"},
    {"FILL_IN_LIST", FillInListFunction, "<lista> <wartość> <status> <początek> <koniec> <krok>",
     "Wypełnienie listy wartościami z zadanego przedziału"},
    {"CALC_IN_LIST", CalcInListFunction,
     "<lista.funkcja> <wynik> [<maska_ignorowanych_wartości> [FROM <początek> TO <koniec>]]",
     "Wykonanie obliczenia na podstawie wartości elementów listy według zadanego przedziału i "
     "maski ignorowanych wartości"},
};

}  // namespace

const CFunctionTable& Functions() {
    static const CFunctionTable table(kRows);
    return table;
}

}  // namespace kalvex
