#include "language/Functions.h"

#include "host/HostStatements.h"
#include "operands/FunctionFamilies.h"
#include "sources/SourceFamilies.h"

namespace kalvex::language {

namespace {

// keyword, handler, arguments (one form a line), help text
constexpr operands::FunctionRow kRows[] = {
    {"STRING_COMPARE", operands::StringCompare, "<tekst1> <tekst2>",
     "Porównanie dwóch łańcuchów znakowych"},
    {"STRING_COMPARE_NO_CASE", operands::StringCompareNoCase, "<tekst1> <tekst2>",
     "Porównanie dwóch łańcuchów znakowych z wyłączeniem sprawdzania wielkości znaków"},
    {"STRING_FIND_ONE_OF", operands::StringFindOneOf, "<tekst> <znaki>",
     "Wyszukanie w łańcuchu znaków pierwszego wystąpienia któregokolwiek ze znaków zawartych "
     "określonym łańcuchu znaków"},
    {"STRING_REVERSE_FIND", operands::StringReverseFind, "<tekst> <znak>",
     "Wyszukanie pojedynczego znaku wewnątrz innego rozpoczynając od końca"},
    {"STRING_FIND", operands::StringFind, "<tekst> <szukany_tekst> <pozycja>",
     "Wyszukanie ciągu znaków wewnątrz innego od określonej pozycji"},
    {"TO_STRING", operands::ToStringFunction, "<wartość> [<format>]",
     "konwersja wartości numerycznej na łańcuch znaków według podanego formatu"},
    {"TO_FLOAT", operands::ToFloat, "<tekst>",
     "Konwersja łańcucha znaków na wartość numeryczną typu rzeczywistego"},
    {"TO_INT", operands::ToInt, "<tekst>",
     "Konwersja łańcucha znaków na wartość numeryczną typu całkowitego"},
    {"STRING_LEN", operands::StringLen, "<tekst>",
     "Wyznaczenie liczby znaków tworzących wskazany ciąg"},
    {"STRING_MAKE_LOWER", operands::StringMakeLower, "<tekst>",
     "Konwersja do małych liter w podanym łańcuchu znaków"},
    {"STRING_MAKE_REVERSE", operands::StringMakeReverse, "<tekst>",
     "Odwrócenie podanego łańcucha znaków"},
    {"STRING_MAKE_UPPER", operands::StringMakeUpper, "<tekst>",
     "Konwersja do wielkich liter w podanym łańcuchu znaków"},
    {"STRING_APPEND", operands::StringAppend, "<tekst1> <tekst2>",
     "Dołączenie jednego łańcucha znaków na koniec drugiego"},
    {"STRING_SPAN_EXCLUDING", operands::StringSpanExcluding, "<tekst> <znaki>",
     "Wyodrębnienie łańcucha znaków"},
    {"STRING_SPAN_INCLUDING", operands::StringSpanIncluding, "<tekst> <znaki>",
     "Wyodrębnienie łańcucha znaków"},
    {"STRING_TRIM", operands::StringTrim, "<tekst> <znaki>",
     "Usunięcie podanych znaków z początku i z końca łańcucha wejściowego"},
    {"STRING_TRIM_LEFT", operands::StringTrimLeft, "<tekst> <znaki>",
     "Usunięcie podanych znaków z początku łańcucha wejściowego"},
    {"STRING_TRIM_RIGHT", operands::StringTrimRight, "<tekst> <znaki>",
     "Usunięcie podanych znaków z końca łańcucha wejściowego"},
    {"STRING_LEFT", operands::StringLeft, "<tekst> <liczba_znaków>",
     "Wyodrębnie z łańcucha znaków określonej liczby znaków z lewej strony"},
    {"STRING_RIGHT", operands::StringRight, "<tekst> <liczba_znaków>",
     "Wyodrębnie z łańcucha znaków określonej liczby znaków z prawej strony"},
    {"STRING_MID", operands::StringMid, "<tekst> <pozycja> <liczba_znaków>",
     "Wyodrębnie z łańcucha znaków określonej liczby znaków od podanej pozycji"},
    {"TOKENIZE", operands::Tokenize, "<zmienna1> <separator> <zmienna2>",
     "Wydzielenie fragmentu tekstu według podanego separatora"},
    {"JOIN", operands::Join, "<lista> <separator>",
     "Połączenie elementów listy w jeden ciąg znaków"},
    {"PING_RESULT", host::PingResultFunction, "<adres_internetowy_węzła_docelowego>\n<zmienna>",
     "Pobranie czasu odpowiedzi określonego adresu internetowego"},
    {"FTP_RESULT", host::FtpResultFunction, "<adres_serwera_ftp>\n<adres>",
     "Rezultat próby zestawienia połączenia ftp"},
    {"HTTP_RESULT", host::HttpResultFunction, "<adres_serwera_http>\n<adres>",
     "Rezultat próby zestawienia połączenia http"},
    {"NOTIFY", sources::Notify, "<typ_danych> <nazwa_serwera>",
     "Pobranie z kolejki powiadomień informacji o czasie zmiany raportu"},
    {"NOTIFY_QUEUE_COUNT", sources::NotifyQueueCount, "<typ_danych> <nazwa_serwera>",
     "Sprawdzenie aktualnego rozmiaru kolejki powiadomień o zmianach wartości raportowych"},
    {"NOTIFYING_QUEUE_SIZE", sources::NotifyQueueCount, "<typ_danych> <nazwa_serwera>",
     "Sprawdzenie aktualnego rozmiaru kolejki powiadomień o zmianach wartości raportowych"},
    {"LAST_DAY", operands::LastDay, "<rok> <miesiąc>",
     "Pobranie ostatniego dnia danego miesiąca i roku w czasie używanym w gazownictwie (gdzie doba "
     "to 6:00-5:59)"},
    {"SIN", operands::Sine, "X", "Funkcja sinus ze zmiennej X"},
    {"COS", operands::Cosine, "X", "Funkcja cosinus ze zmiennej X"},
    {"TG", operands::Tangent, "X", "Funkcja tangens ze zmiennej X"},
    {"CTG", operands::Cotangent, "X", "Funkcja cotangens ze zmiennej X"},
    {"ARCSIN", operands::ArcSine, "X", "Funkcja arcus sinus ze zmiennej X"},
    {"ARCCOS", operands::ArcCosine, "X", "Funkcja arcus cosinus ze zmiennej X"},
    {"ARCTG", operands::ArcTangent, "X", "Funkcja arcus tangens ze zmiennej X"},
    {"ARCCTG", operands::ArcCotangent, "X", "Funkcja arcus cotangens ze zmiennej X"},
    {"SQR", operands::Square, "X", "Kwadrat ze zmiennej X"},
    {"SQRT", operands::SquareRoot, "X", "Pierwiastek kwadratowy ze zmiennej X"},
    {"FACTORIAL", operands::Factorial, "X", "Silnia ze zmiennej X"},
    {"INT", operands::IntegerPart, "X",
     "Konwersja łańcucha znaków na wartość numeryczną typu całkowitego"},
    {"ROUND", operands::Round, "X Y", "Zaokrąglenie zmiennej X do Y miejsca"},
    {"STATUS", operands::StatusFunction, "<zmienna>[.<typ_danych>] [<wartość_statusu>]",
     "Sprawdzanie lub pobieranie statusu zmiennej"},
    {"SET_STATUS", operands::SetStatusFunction, "<zmienna>[.<typ_danych>] <wartość_statusu>",
     "Ustawianie statusu zmiennej"},
    {"ADD_STATUS", operands::AddStatusFunction, "<zmienna>[.<typ_danych>] <wartość_statusu>",
     "Dodawanie statusu zmiennej"},
    {"REMOVE_STATUS", operands::RemoveStatusFunction, "<zmienna>[.<typ_danych>] <wartość_statusu>",
     "Usuwanie statusu zmiennej"},
    {"READ_FILE", host::ReadFileFunction, "plik [<numer_sekcji>] [-A/-R <zmienna> <zmienna> ...]",
     "Pobranie wartości zmiennych z pliku"},
    {"WRITE_FILE", host::WriteFileFunction,
     "<pliku> [<numer_sekcji>] [-A/-R <zmienna> <zmienna> ...]",
     "Zapisanie wartości zmiennych do pliku"},
    {"SET_FILE", host::SetFileFunction,
     "plik <numer_sekcji> <wartość> [-A/-R <zmienna> <zmienna> ...]",
     "Ustawienie wartości zmiennych do pliku"},
    {"TIMESTAMP", operands::TimestampFunction, "<zmienna>", "Znacznik czasowy zmiennej"},
    {"FORMATED_TIMESTAMP", operands::FormatedTimestamp, "<zmienna> <format>",
     "Znacznik czasowy zmiennej w żądanym formacie"},
    {"MAKE_TIME", operands::MakeTime,
     "<rok>\n<rok> <miesiąc>\n<rok> <miesiąc> <dzień>\n<rok> <miesiąc> <dzień> <godzina>\n"
     "<rok> <miesiąc> <dzień> <godzina> <minuta>\n"
     "<rok> <miesiąc> <dzień> <godzina> <minuta> <sekunda>",
     "Zbudowanie znacznika czasowego na podstawie zadeklarowanych argumentów"},
    {"MAKE_TIME_FROM_STRING", operands::MakeTimeFromString,
     "<data i czas>\n<data i czas> [<format daty i czasu>]",
     "Zbudowanie znacznika czasowego na podstawie zadeklarowanego ciągu znaków"},
    {"CHECK_EVENT_TIME", operands::CheckEventTimeFunction,
     "<wpis_harmonogramu>\n<wpis_harmonogramu> <czas_rozpoczęcia> <czas_zakończenia>\n"
     "<wpis_harmonogramu> <analizowany_czas>\n"
     "<wpis_harmonogramu> <analizowany_czas> "
     "<tolerancja_w_sekundach_względem_analizowanego_czasu>\n"
     "<wpis_harmonogramu> <tolerancja_w_sekundach_względem_bieżącego_czasu>",
     "Sprawdzenie wystąpienia zdarzenia według podanego harmonogramu"},
    {"EXEC", host::ExecFunction,
     "<ścieżka_programu> [-WD <katalog_roboczy>] [<parametr1> <parametr2> ...]",
     "Uruchomienie zewnętrznego programu"},
    {"CHECK_EXEC_ACTIVITY", host::CheckExecActivity, "<identyfikator_programu>",
     "Sprawdzenie aktywności uruchomionego programu"},
    {"GET_EXIT_CODE_EXEC", host::GetExitCodeExec, "<identyfikator_programu>",
     "Sprawdzenie kodu zakończenia uruchomionego programu"},
    {"TERMINATE_EXEC", host::TerminateExecFunction, "<identyfikator_programu> [<kod_zakończenia>]",
     "Przerwanie pracy uruchomionego programu"},
    {"CLOSE_EXEC", host::CloseExecFunction,
     "<identyfikator_programu> <pozwolenie_na_przerwanie_pracy_programu> "
     "[<czas_oczekiwania_na_zakończenie>]",
     "Zamknięcie uruchomionego programu"},
    {"SORVANE_USER_NAME", operands::SorvaneUserName, "",
     "Pobranie nazwy użytkownika zarejestrowanego w systemie Sorvane"},
    {"SORVANE_USER_DESCRIPTION", operands::SorvaneUserDescription, "",
     "Pobranie opisu użytkownika zarejestrowanego w systemie Sorvane"},
    {"WINDOWS_USER_NAME", operands::WindowsUserName, "",
     "Pobranie nazwy użytkownika zarejestrowanego w systemie operacyjnym"},
    {"FILL_IN_LIST", operands::FillInListFunction,
     "<lista> <wartość> <status> <początek> <koniec> <krok>",
     "Wypełnienie listy wartościami z zadanego przedziału"},
    {"CALC_IN_LIST", operands::CalcInListFunction,
     "<lista.funkcja> <wynik> [<maska_ignorowanych_wartości> [FROM <początek> TO <koniec>]]",
     "Wykonanie obliczenia na podstawie wartości elementów listy według zadanego przedziału i "
     "maski ignorowanych wartości"},
};

}  // namespace

const operands::FunctionTable& Functions() {
    static const operands::FunctionTable table(kRows);
    return table;
}

}  // namespace kalvex::language
