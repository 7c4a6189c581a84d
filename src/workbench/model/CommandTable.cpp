#include "workbench/model/CommandTable.h"

#include <algorithm>

#include "platform/Translator.h"

namespace kalvex::workbench {

namespace {

// clang-format off
bool Never(const CommandState&) { return false; }
bool Always(const CommandState&) { return true; }
bool MayClose(const CommandState& s) { return s.closeLevel; }
bool MayCloseWindow(const CommandState& s) { return s.closeLevel && s.window; }
bool MaySave(const CommandState& s) { return s.closeLevel && s.script; }
bool MayPrint(const CommandState& s) { return s.closeLevel && s.script; }
bool HasPath(const CommandState& s) { return s.script && s.path; }
bool HasEditor(const CommandState& s) { return s.editor; }
bool HasWindow(const CommandState& s) { return s.window; }
bool CanEdit(const CommandState& s) { return s.editor && !s.readOnly; }
bool CanUndo(const CommandState& s) { return CanEdit(s) && s.canUndo; }
bool CanRedo(const CommandState& s) { return CanEdit(s) && s.canRedo; }
bool CanCut(const CommandState& s) { return CanEdit(s) && s.selection; }
bool CanCopy(const CommandState& s) { return s.selection && (s.editor || s.logActive); }
bool CanPaste(const CommandState& s) { return CanEdit(s) && s.clipboard; }
bool CanFind(const CommandState& s) { return s.editor || s.variablesActive; }
bool HasOutline(const CommandState& s) { return CanEdit(s); }
bool CanComplete(const CommandState& s) { return CanEdit(s) && s.canComplete; }
bool CanShowVariables(const CommandState& s) {
    return s.script && (s.running || s.paused || s.hasVariablesWindow);
}
bool CanStart(const CommandState& s) {
    return s.script && s.held && s.closeLevel && (s.paused || (!s.running && (!s.readOnly || s.consoleClient)));
}
bool CanStop(const CommandState& s) { return s.running && !s.minimised && s.controlRight && s.held; }
bool CanStep(const CommandState& s) { return s.paused && !s.minimised && s.held; }
bool CanReset(const CommandState& s) { return (s.running || s.paused) && s.controlRight && s.held; }
bool CanToggleBreakpoint(const CommandState& s) {
    return s.editor && s.held && s.controlRight && !s.running;
}
bool CanDeleteBreakpoints(const CommandState& s) {
    return s.script && s.held && s.controlRight && s.hasBreakpoints;
}
bool CanTakeSession(const CommandState& s) { return s.script && !s.held && s.path; }
bool HasKeptVariables(const CommandState& s) { return s.variablesKept; }
bool HasSchedule(const CommandState& s) { return s.editor && s.scheduleLine; }
bool CanDraw(const CommandState& s) { return s.script && s.trendable; }
bool CanConfigure(const CommandState& s) { return s.configurationRight; }
bool HasLevel100(const CommandState& s) { return s.level100; }
bool IsLoggedIn(const CommandState& s) { return s.loggedIn; }

constexpr CommandRow kRows[] = {
    {Command::New, "Plik", platform::Translatable("&Nowy"), "Ctrl+N",
     platform::Translatable("Tworzy nowy skrypt\nNowy"), MayClose, false},
    {Command::Open, "Plik", platform::Translatable("&Otwórz..."), "Ctrl+O",
     platform::Translatable("Otwiera istniejący skrypt\nOtwórz"), MayClose, false},
    {Command::Close, "Plik", platform::Translatable("&Zamknij"), "Ctrl+W, Ctrl+F4",
     platform::Translatable("Zamyka aktywne okno\nZamknij"), MayCloseWindow, false},
    {Command::Save, "Plik", platform::Translatable("Z&apisz"), "Ctrl+S",
     platform::Translatable("Zapisuje aktywny skrypt\nZapisz"), MaySave, false},
    {Command::SaveAs, "Plik", platform::Translatable("Zapisz &jako..."), "Ctrl+Shift+S",
     platform::Translatable("Zapisuje aktywny skrypt pod nową nazwą\nZapisz jako"), MaySave, false},
    {Command::History, "Plik", platform::Translatable("&Historia..."), "",
     platform::Translatable("Pokazuje zapisane wersje skryptu i przywraca wybraną\nHistoria"), HasPath, false},
    {Command::None, "Plik", "", "",
     "", Never, false},
    {Command::Print, "Plik", platform::Translatable("&Drukuj..."), "Ctrl+P",
     platform::Translatable("Drukuje aktywny skrypt\nDrukuj"), MayPrint, false},
    {Command::PrintPreview, "Plik", platform::Translatable("Pod&gląd wydruku..."), "",
     platform::Translatable("Pokazuje strony wydruku\nPodgląd wydruku"), MayPrint, false},
    {Command::PrintSetup, "Plik", platform::Translatable("&Ustawienia wydruku..."), "",
     platform::Translatable("Zmienia drukarkę i stronę wydruku\nUstawienia wydruku"), MayClose, false},
    {Command::None, "Plik", "", "",
     "", Never, false},
    {Command::RecentFiles, "Plik", platform::Translatable("Ostatnie &pliki"), "",
     platform::Translatable("Otwiera jeden z ostatnich skryptów\nOstatnie pliki"), MayClose, false},
    {Command::None, "Plik", "", "",
     "", Never, false},
    {Command::Quit, "Plik", platform::Translatable("Za&kończ"), "Ctrl+Q",
     platform::Translatable("Kończy działanie programu\nZakończ"), MayClose, false},
    {Command::Undo, "Edycja", platform::Translatable("&Cofnij"), "Ctrl+Z",
     platform::Translatable("Cofa ostatnie operacje\nCofnij"), CanUndo, false},
    {Command::Redo, "Edycja", platform::Translatable("&Ponów"), "Ctrl+Y",
     platform::Translatable("Ponawia cofnięte operacje\nPonów"), CanRedo, false},
    {Command::None, "Edycja", "", "",
     "", Never, false},
    {Command::Cut, "Edycja", platform::Translatable("W&ytnij"), "Ctrl+X",
     platform::Translatable("Przenosi zaznaczony tekst do schowka\nWytnij"), CanCut, false},
    {Command::Copy, "Edycja", platform::Translatable("&Kopiuj"), "Ctrl+C",
     platform::Translatable("Kopiuje zaznaczenie do schowka\nKopiuj"), CanCopy, false},
    {Command::Paste, "Edycja", platform::Translatable("&Wklej"), "Ctrl+V",
     platform::Translatable("Wstawia tekst ze schowka\nWklej"), CanPaste, false},
    {Command::Delete, "Edycja", platform::Translatable("&Usuń"), "",
     platform::Translatable("Usuwa zaznaczony tekst\nUsuń"), CanCut, false},
    {Command::SelectAll, "Edycja", platform::Translatable("Zaznacz w&szystko"), "Ctrl+A",
     platform::Translatable("Zaznacza cały tekst\nZaznacz wszystko"), HasEditor, false},
    {Command::None, "Edycja", "", "",
     "", Never, false},
    {Command::Find, "Edycja", platform::Translatable("&Znajdź..."), "Ctrl+F",
     platform::Translatable("Znajduje wprowadzony tekst\nZnajdź"), CanFind, false},
    {Command::FindNext, "Edycja", platform::Translatable("Znajdź &następny"), "F3",
     platform::Translatable("Znajduje następny ostatnio wyszukany tekst\nZnajdź następny"), CanFind, false},
    {Command::FindPrevious, "Edycja", platform::Translatable("Znajdź p&oprzedni"), "",
     platform::Translatable("Znajduje poprzedni ostatnio wyszukany tekst\nZnajdź poprzedni"), HasEditor, false},
    {Command::Replace, "Edycja", platform::Translatable("Za&mień..."), "Ctrl+H",
     platform::Translatable("Zamienia wprowadzony tekst na inny\nZamień"), CanEdit, false},
    {Command::GoToLine, "Edycja", platform::Translatable("Prze&jdź do linii..."), "Ctrl+G",
     platform::Translatable("Przechodzi do linii o podanym numerze\nPrzejdź do linii..."), HasEditor, false},
    {Command::None, "Edycja", "", "",
     "", Never, false},
    {Command::ToggleBookmark, "Edycja/Znaczniki", platform::Translatable("&Przełącz znacznik"), "Ctrl+F2",
     platform::Translatable("Wstawia lub usuwa znacznik\nPrzełącz znacznik"), HasEditor, false},
    {Command::NextBookmark, "Edycja/Znaczniki", platform::Translatable("&Następny znacznik"), "F2",
     platform::Translatable("Przechodzi do następnego znacznika\nNastępny znacznik"), HasEditor, false},
    {Command::PreviousBookmark, "Edycja/Znaczniki", platform::Translatable("P&oprzedni znacznik"), "Shift+F2",
     platform::Translatable("Przechodzi do poprzedniego znacznika\nPoprzedni znacznik"), HasEditor, false},
    {Command::DeleteBookmarks, "Edycja/Znaczniki", platform::Translatable("&Usuń znaczniki"), "",
     platform::Translatable("Usuwa wszystkie znaczniki\nUsuń znaczniki"), HasEditor, false},
    {Command::OutlineCreate, "Edycja/Konspekt", platform::Translatable("&Utwórz element konspektu"), "",
     platform::Translatable("Tworzy element konspektu z zaznaczonych linii\nUtwórz element konspektu"), CanEdit, false},
    {Command::OutlineRemove, "Edycja/Konspekt", platform::Translatable("U&suń elementy konspektu"), "",
     platform::Translatable("Usuwa utworzone elementy konspektu\nUsuń elementy konspektu"), CanEdit, false},
    {Command::OutlineToggle, "Edycja/Konspekt", platform::Translatable("&Przełącz elementy konspektu"), "",
     platform::Translatable("Zwija lub rozwija element konspektu w bieżącej linii\nPrzełącz elementy konspektu"), HasOutline, false},
    {Command::OutlineToggleAll, "Edycja/Konspekt", platform::Translatable("Przełącz &wszystkie elementy konspektu"), "",
     platform::Translatable("Zwija lub rozwija wszystkie elementy konspektu\nPrzełącz wszystkie elementy konspektu"), HasOutline, false},
    {Command::OutlineCollapse, "Edycja/Konspekt", platform::Translatable("&Zwiń do definicji"), "",
     platform::Translatable("Zwija wszystkie procedury\nZwiń do definicji"), HasOutline, false},
    {Command::OutlineHide, "Edycja/Konspekt", platform::Translatable("Wyłą&cz konspekt"), "",
     platform::Translatable("Wyłącza konspekt i rozwija cały tekst\nWyłącz konspekt"), HasOutline, false},
    {Command::OutlineShow, "Edycja/Konspekt", platform::Translatable("P&okaż konspekt"), "",
     platform::Translatable("Pokazuje margines konspektu\nPokaż konspekt"), HasOutline, false},
    {Command::OutlineAutomatic, "Edycja/Konspekt", platform::Translatable("&Automatyczny konspekt"), "",
     platform::Translatable("Tworzy konspekt z bloków skryptu\nAutomatyczny konspekt"), HasOutline, false},
    {Command::Indent, "Edycja", platform::Translatable("Zwiększ wc&ięcie"), "",
     platform::Translatable("Zwiększa wcięcie zaznaczonych linii\nZwiększ wcięcie"), CanEdit, false},
    {Command::Unindent, "Edycja", platform::Translatable("Zmni&ejsz wcięcie"), "",
     platform::Translatable("Zmniejsza wcięcie zaznaczonych linii\nZmniejsz wcięcie"), CanEdit, false},
    {Command::ToggleComment, "Edycja", platform::Translatable("Komenta&rz"), "Ctrl+/",
     platform::Translatable("Zamienia zaznaczone linie na komentarz lub z powrotem\nKomentarz"), CanEdit, false},
    {Command::MoveLinesUp, "Edycja", platform::Translatable("Przenieś linie w &górę"), "Alt+Up",
     platform::Translatable("Przenosi zaznaczone linie o jedną wyżej\nPrzenieś linie w górę"), CanEdit, false},
    {Command::MoveLinesDown, "Edycja", platform::Translatable("Przenieś linie w &dół"), "Alt+Down",
     platform::Translatable("Przenosi zaznaczone linie o jedną niżej\nPrzenieś linie w dół"), CanEdit, false},
    {Command::KeywordList, "Edycja", platform::Translatable("&Lista słów kluczowych"), "Ctrl+J",
     platform::Translatable("Wyświetla listę dostępnych słów kluczowych\nLista słów kluczowych"), CanComplete, false},
    {Command::Variables, "Widok", platform::Translatable("&Zmienne"), "Alt+Z",
     platform::Translatable("Otwiera okno zmiennych skryptu lub wraca do skryptu\nZmienne"), CanShowVariables, false},
    {Command::LogWindow, "Widok", platform::Translatable("&Okno rejestracji"), "Ctrl+L",
     platform::Translatable("Otwiera okno rejestracji\nOkno rejestracji"), Always, false},
    {Command::Standing, "Widok", platform::Translatable("&Dlaczego czeka"), "Ctrl+D",
     platform::Translatable("Pokazuje lub ukrywa, na czym stoi aktywny skrypt\nDlaczego czeka"), Always, true},
    {Command::ValuesBeside, "Widok", platform::Translatable("&Wartości w tekście"), "",
     platform::Translatable("Pokazuje lub ukrywa wartości zmiennych obok linii skryptu\nWartości w tekście"), Always, true},
    {Command::None, "Widok", "", "",
     "", Never, false},
    {Command::LineNumbers, "Widok", platform::Translatable("&Numeracja linii"), "",
     platform::Translatable("Pokazuje lub ukrywa numerowanie linii\nNumeracja linii"), Always, true},
    {Command::Font, "Widok", platform::Translatable("&Czcionka..."), "",
     platform::Translatable("Umożliwia zmianę wyświetlanej czcionki\nCzcionka"), HasWindow, false},
    {Command::ZoomIn, "Widok", platform::Translatable("Powię&ksz"), "Ctrl++, Ctrl+=",
     platform::Translatable("Powiększa tekst\nPowiększ"), HasEditor, false},
    {Command::ZoomOut, "Widok", platform::Translatable("Po&mniejsz"), "Ctrl+-",
     platform::Translatable("Pomniejsza tekst\nPomniejsz"), HasEditor, false},
    {Command::ZoomReset, "Widok", platform::Translatable("&Skala 1:1"), "Ctrl+0",
     platform::Translatable("Przywraca wielkość tekstu\nSkala 1:1"), HasEditor, false},
    {Command::None, "Widok", "", "",
     "", Never, false},
    {Command::SchemeLight, "Widok/Schemat", platform::Translatable("&Jasny"), "",
     platform::Translatable("Jasne kolory\nJasny"), Always, true},
    {Command::SchemeDark, "Widok/Schemat", platform::Translatable("&Ciemny"), "",
     platform::Translatable("Ciemne kolory\nCiemny"), Always, true},
    {Command::SchemeDesktop, "Widok/Schemat", platform::Translatable("Jak &pulpit"), "",
     platform::Translatable("Kolory takie, jak ma pulpit\nJak pulpit"), Always, true},
    {Command::Toolbars, "Widok", "", "",
     "", Always, false},
    {Command::StatusBar, "Widok", platform::Translatable("&Pasek stanu"), "",
     platform::Translatable("Pokazuje lub ukrywa pasek stanu\nPasek stanu"), Always, true},
    {Command::Start, "Skrypt", platform::Translatable("&Start"), "F5",
     platform::Translatable("Uruchamia skrypt\nStart"), CanStart, false},
    {Command::Stop, "Skrypt", platform::Translatable("&Pauza"), "Ctrl+F5",
     platform::Translatable("Wstrzymuje działanie skryptu\nPauza"), CanStop, false},
    {Command::Step, "Skrypt", platform::Translatable("&Krok"), "F11",
     platform::Translatable("Wykonuje jeden wiersz skryptu\nKrok"), CanStep, false},
    {Command::Reset, "Skrypt", platform::Translatable("&Reset"), "Shift+F5",
     platform::Translatable("Przerywa działanie skryptu\nReset"), CanReset, false},
    {Command::None, "Skrypt", "", "",
     "", Never, false},
    {Command::ToggleBreakpoint, "Skrypt", platform::Translatable("Przełącz p&unkt przerwania"), "F9",
     platform::Translatable("Wstawia lub usuwa punkt przerwania skryptu\nPrzełącz punkt przerwania"), CanToggleBreakpoint, false},
    {Command::DeleteBreakpoints, "Skrypt", platform::Translatable("Usu&wa wszystkie punkty przerwania"), "",
     platform::Translatable("Usuwa wszystkie punkty przerwania skryptu\nUsuwa wszystkie punkty przerwania"), CanDeleteBreakpoints, false},
    {Command::None, "Skrypt", "", "",
     "", Never, false},
    {Command::InsertVariables, "Skrypt", platform::Translatable("Wstaw z&mienne..."), "",
     platform::Translatable("Dodaje wybrane zmienne do skryptu\nWstaw zmienne"), CanEdit, false},
    {Command::ForgetVariables, "Skrypt", platform::Translatable("Kasuj &bufor zmiennych"), "",
     platform::Translatable("Usuwa zbuforowaną listę zmiennych\nKasuj bufor zmiennych"), HasKeptVariables, false},
    {Command::TakeSession, "Skrypt", platform::Translatable("Prze&jmij aktywną sesję"), "",
     platform::Translatable("Wysyła żądanie o przejęcie aktywnej sesji dokumentu\nPrzejmij aktywną sesję"), CanTakeSession, false},
    {Command::None, "Skrypt", "", "",
     "", Never, false},
    {Command::ScheduleProof, "Skrypt", platform::Translatable("&Terminy..."), "Ctrl+T",
     platform::Translatable("Wylicza najbliższe terminy z bieżącej linii skryptu\nTerminy"), HasSchedule, false},
    {Command::Trend, "Skrypt", platform::Translatable("Wykr&es..."), "Ctrl+E",
     platform::Translatable("Rysuje wykres zmiennej lub listy\nWykres"), CanDraw, false},
    {Command::LevelErrors, "Rejestracja", platform::Translatable("&Błędy"), "",
     platform::Translatable("Rejestruje błędy\nBłędy"), Always, true},
    {Command::LevelEvents, "Rejestracja", platform::Translatable("&Zdarzenia"), "",
     platform::Translatable("Rejestruje błędy i zdarzenia\nZdarzenia"), Always, true},
    {Command::LevelTransmission, "Rejestracja", platform::Translatable("&Transmisja"), "",
     platform::Translatable("Rejestruje błędy, zdarzenia i transmisję\nTransmisja"), Always, true},
    {Command::None, "Rejestracja", "", "",
     "", Never, false},
    {Command::ClearLog, "Rejestracja", platform::Translatable("&Wyczyść"), "",
     platform::Translatable("Usuwa wszystkie linie z okna rejestracji\nWyczyść"), Always, false},
    {Command::AutoScroll, "Rejestracja", platform::Translatable("&Automatyczne przewijanie"), "",
     platform::Translatable("Przewija okno rejestracji do najnowszej linii\nAutomatyczne przewijanie"), Always, true},
    {Command::Configuration, "Narzedzia", platform::Translatable("&Konfiguracja..."), "",
     platform::Translatable("Zmienia konfigurację modułu\nKonfiguracja"), CanConfigure, false},
    {Command::Sources, "Narzedzia", platform::Translatable("&Źródła..."), "",
     platform::Translatable("Zmienia listę źródeł danych\nŹródła"), HasLevel100, false},
    {Command::RenameVariables, "Narzedzia", platform::Translatable("Z&amień nazwy zmiennych na podstawie pliku"), "",
     platform::Translatable("Zamienia nazwy zmiennych we wszystkich skryptach folderu\nZamień nazwy zmiennych"), MayClose, false},
    {Command::None, "Narzedzia", "", "",
     "", Never, false},
    {Command::LogIn, "Narzedzia", platform::Translatable("&Zaloguj..."), "",
     platform::Translatable("Loguje użytkownika\nZaloguj"), Always, false},
    {Command::LogOut, "Narzedzia", platform::Translatable("&Wyloguj"), "",
     platform::Translatable("Wylogowuje użytkownika\nWyloguj"), IsLoggedIn, false},
    {Command::NextWindow, "Okno", platform::Translatable("&Następne"), "Ctrl+F6, Ctrl+Tab",
     platform::Translatable("Przechodzi do następnego okna\nNastępne"), HasWindow, false},
    {Command::PreviousWindow, "Okno", platform::Translatable("&Poprzednie"), "Ctrl+Shift+F6, Ctrl+Shift+Tab",
     platform::Translatable("Przechodzi do poprzedniego okna\nPoprzednie"), HasWindow, false},
    {Command::None, "Okno", "", "",
     "", Never, false},
    {Command::Cascade, "Okno", platform::Translatable("&Kaskada"), "",
     platform::Translatable("Układa okna jedno za drugim\nKaskada"), HasWindow, false},
    {Command::Tile, "Okno", platform::Translatable("&Sąsiadująco"), "",
     platform::Translatable("Układa okna jedno obok drugiego\nSąsiadująco"), HasWindow, false},
    {Command::Maximise, "Okno", platform::Translatable("&Maksymalizuj"), "",
     platform::Translatable("Powiększa okno do całego obszaru\nMaksymalizuj"), HasWindow, false},
    {Command::Minimise, "Okno", platform::Translatable("&Zminimalizuj"), "",
     platform::Translatable("Zwija okno do paska\nZminimalizuj"), HasWindow, false},
    {Command::Restore, "Okno", platform::Translatable("P&rzywróć"), "",
     platform::Translatable("Przywraca wielkość okna\nPrzywróć"), HasWindow, false},
    {Command::None, "Okno", "", "",
     "", Never, false},
    {Command::WindowList, "Okno", "", "",
     "", Always, false},
    {Command::Help, "Pomoc", platform::Translatable("&Pomoc"), "F1",
     platform::Translatable("Otwiera opis języka skryptów\nPomoc"), Always, false},
    {Command::Parameters, "Pomoc", platform::Translatable("Parametry &wiersza poleceń..."), "",
     platform::Translatable("Pokazuje parametry wiersza poleceń\nParametry wiersza poleceń"), Always, false},
    {Command::About, "Pomoc", platform::Translatable("&O programie..."), "",
     platform::Translatable("Pokazuje wersję programu\nO programie"), Always, false},
};
// clang-format on

constexpr MenuRow kMenus[] = {
    {"Plik", platform::Translatable("&Plik")},
    {"Edycja", platform::Translatable("&Edycja")},
    {"Edycja/Znaczniki", platform::Translatable("Zn&aczniki")},
    {"Edycja/Konspekt", platform::Translatable("Konspek&t")},
    {"Widok", platform::Translatable("&Widok")},
    {"Widok/Schemat", platform::Translatable("Sc&hemat")},
    {"Skrypt", platform::Translatable("&Skrypt")},
    {"Rejestracja", platform::Translatable("&Rejestracja")},
    {"Narzedzia", platform::Translatable("&Narzędzia")},
    {"Okno", platform::Translatable("&Okno")},
    {"Pomoc", platform::Translatable("Po&moc")},
};

}  // namespace

std::span<const CommandRow> Commands() {
    return kRows;
}

std::span<const MenuRow> Menus() {
    return kMenus;
}

const CommandRow& RowOf(Command command) {
    return *std::ranges::find(kRows, command, &CommandRow::command);
}

}  // namespace kalvex::workbench
