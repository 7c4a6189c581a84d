#include "workbench/model/CommandTable.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <set>
#include <string>

namespace kalvex::workbench {
namespace {

char32_t MnemonicOf(std::string_view text) {
    const std::size_t at = text.find('&');
    if (at == std::string_view::npos) return 0;
    const auto first = static_cast<unsigned char>(text[at + 1]);
    if (first < 0x80) return static_cast<char32_t>(std::tolower(first));
    return (static_cast<char32_t>(first) << 8) | static_cast<unsigned char>(text[at + 2]);
}

bool IsPlace(const CommandRow& row) {
    return std::string_view(row.text).empty();
}

TEST(CommandTableTest, EveryCommandStandsOnceWithTextAndTwoLinesOfTip) {
    std::set<Command> seen;
    for (const CommandRow& row : Commands()) {
        if (row.command == Command::None) continue;
        EXPECT_TRUE(seen.insert(row.command).second) << NumberOf(row.command);
        if (IsPlace(row)) continue;
        const std::string_view tip = row.tip;
        const std::size_t end = tip.find('\n');
        ASSERT_NE(end, std::string_view::npos) << row.text;
        EXPECT_GT(end, 0U) << row.text;
        EXPECT_LT(end + 1, tip.size()) << row.text;
    }
    EXPECT_EQ(seen.size(), 87U);
}

TEST(CommandTableTest, LettersOfAMenuDifferAndNoMenuTakesThatOfTheVariables) {
    std::map<std::string, std::set<char32_t>> letters;
    for (const CommandRow& row : Commands()) {
        if (row.command == Command::None || IsPlace(row)) continue;
        EXPECT_NE(MnemonicOf(row.text), 0U) << row.text;
        EXPECT_TRUE(letters[std::string(row.menu)].insert(MnemonicOf(row.text)).second) << row.text;
    }
    for (const MenuRow& menu : Menus()) {
        const std::size_t slash = menu.menu.rfind('/');
        const std::string parent(slash == std::string_view::npos ? "" : menu.menu.substr(0, slash));
        EXPECT_TRUE(letters[parent].insert(MnemonicOf(menu.text)).second) << menu.text;
        EXPECT_FALSE(parent.empty() && MnemonicOf(menu.text) == U'z') << menu.text;
    }
}

TEST(CommandTableTest, NoTwoCommandsHaveTheSameKeys) {
    std::set<std::string> keys;
    for (const CommandRow& row : Commands()) {
        std::string_view rest = row.keys;
        while (!rest.empty()) {
            const std::size_t end = rest.find(", ");
            EXPECT_TRUE(keys.insert(std::string(rest.substr(0, end))).second) << row.keys;
            rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 2);
        }
    }
}

// What a person finds in the menus: number, text, keys.
TEST(CommandTableTest, NumberedCommandsAreThese) {
    std::string rows;
    for (const CommandRow& row : Commands()) {
        if (NumberOf(row.command) < 1000) continue;
        std::string text = row.text;
        std::erase(text, '&');
        rows += std::to_string(NumberOf(row.command)) + " " + text + " " + row.keys + "\n";
    }
    EXPECT_EQ(rows,
              "57601 Otwórz... Ctrl+O\n"
              "57643 Cofnij Ctrl+Z\n"
              "57644 Ponów Ctrl+Y\n"
              "44018 Znajdź... Ctrl+F\n"
              "44019 Znajdź następny F3\n"
              "44046 Znajdź poprzedni \n"
              "57641 Zamień... Ctrl+H\n"
              "44041 Przejdź do linii... Ctrl+G\n"
              "44029 Przełącz znacznik Ctrl+F2\n"
              "44030 Następny znacznik F2\n"
              "44031 Poprzedni znacznik Shift+F2\n"
              "44042 Usuń znaczniki \n"
              "44032 Utwórz element konspektu \n"
              "44033 Usuń elementy konspektu \n"
              "44034 Przełącz elementy konspektu \n"
              "44035 Przełącz wszystkie elementy konspektu \n"
              "44036 Zwiń do definicji \n"
              "44037 Wyłącz konspekt \n"
              "44038 Pokaż konspekt \n"
              "44039 Automatyczny konspekt \n"
              "44043 Zwiększ wcięcie \n"
              "44044 Zmniejsz wcięcie \n"
              "44045 Lista słów kluczowych Ctrl+J\n"
              "44004 Zmienne Alt+Z\n"
              "44005 Okno rejestracji Ctrl+L\n"
              "44040 Numeracja linii \n"
              "44006 Czcionka... \n"
              "44000 Start F5\n"
              "44001 Pauza Ctrl+F5\n"
              "44002 Krok F11\n"
              "44003 Reset Shift+F5\n"
              "44027 Przełącz punkt przerwania F9\n"
              "44028 Usuwa wszystkie punkty przerwania \n"
              "44025 Wstaw zmienne... \n"
              "44026 Kasuj bufor zmiennych \n"
              "44048 Przejmij aktywną sesję \n"
              "44051 Błędy \n"
              "44052 Zdarzenia \n"
              "44050 Transmisja \n"
              "44007 Wyczyść \n"
              "44049 Automatyczne przewijanie \n"
              "44014 Konfiguracja... \n"
              "44011 Źródła... \n"
              "44023 Zamień nazwy zmiennych na podstawie pliku \n");
}

// The given tips, as a person reads them.
TEST(CommandTableTest, TipsOfTheScriptCommandsAreThese) {
    const std::map<Command, std::string> tips = {
        {Command::Start, "Uruchamia skrypt\nStart"},
        {Command::Stop, "Wstrzymuje działanie skryptu\nPauza"},
        {Command::Step, "Wykonuje jeden wiersz skryptu\nKrok"},
        {Command::Reset, "Przerywa działanie skryptu\nReset"},
        {Command::ToggleBreakpoint,
         "Wstawia lub usuwa punkt przerwania skryptu\nPrzełącz punkt przerwania"},
        {Command::DeleteBreakpoints,
         "Usuwa wszystkie punkty przerwania skryptu\nUsuwa wszystkie punkty przerwania"},
        {Command::Find, "Znajduje wprowadzony tekst\nZnajdź"},
        {Command::FindNext, "Znajduje następny ostatnio wyszukany tekst\nZnajdź następny"},
        {Command::FindPrevious, "Znajduje poprzedni ostatnio wyszukany tekst\nZnajdź poprzedni"},
        {Command::Replace, "Zamienia wprowadzony tekst na inny\nZamień"},
        {Command::ToggleBookmark, "Wstawia lub usuwa znacznik\nPrzełącz znacznik"},
        {Command::NextBookmark, "Przechodzi do następnego znacznika\nNastępny znacznik"},
        {Command::PreviousBookmark, "Przechodzi do poprzedniego znacznika\nPoprzedni znacznik"},
        {Command::DeleteBookmarks, "Usuwa wszystkie znaczniki\nUsuń znaczniki"},
        {Command::LineNumbers, "Pokazuje lub ukrywa numerowanie linii\nNumeracja linii"},
        {Command::GoToLine, "Przechodzi do linii o podanym numerze\nPrzejdź do linii..."},
        {Command::KeywordList, "Wyświetla listę dostępnych słów kluczowych\nLista słów kluczowych"},
        {Command::Font, "Umożliwia zmianę wyświetlanej czcionki\nCzcionka"},
        {Command::InsertVariables, "Dodaje wybrane zmienne do skryptu\nWstaw zmienne"},
        {Command::ForgetVariables, "Usuwa zbuforowaną listę zmiennych\nKasuj bufor zmiennych"},
        {Command::TakeSession,
         "Wysyła żądanie o przejęcie aktywnej sesji dokumentu\nPrzejmij aktywną sesję"},
    };
    for (const auto& [command, tip] : tips) EXPECT_EQ(RowOf(command).tip, tip);
}

// ---- when a command can be given: each row takes away one flag at a time from a state in which it
// can, and says which of them it needs

CommandState Ready() {
    CommandState state;
    state.closeLevel = state.configurationRight = state.controlRight = state.level100 = true;
    state.loggedIn = state.script = state.path = state.held = state.editor = true;
    state.hasBreakpoints = state.selection = state.canUndo = state.canRedo = true;
    state.clipboard = state.canComplete = state.window = state.variablesKept = true;
    state.scheduleLine = state.trendable = true;
    return state;
}

struct Flag {
    const char* name;
    bool CommandState::*member;
};

constexpr Flag kFlags[] = {
    {"close", &CommandState::closeLevel},
    {"configure", &CommandState::configurationRight},
    {"control", &CommandState::controlRight},
    {"100", &CommandState::level100},
    {"user", &CommandState::loggedIn},
    {"script", &CommandState::script},
    {"path", &CommandState::path},
    {"held", &CommandState::held},
    {"running", &CommandState::running},
    {"paused", &CommandState::paused},
    {"editor", &CommandState::editor},
    {"breakpoints", &CommandState::hasBreakpoints},
    {"selection", &CommandState::selection},
    {"undo", &CommandState::canUndo},
    {"redo", &CommandState::canRedo},
    {"clipboard", &CommandState::clipboard},
    {"complete", &CommandState::canComplete},
    {"window", &CommandState::window},
    {"cached", &CommandState::variablesKept},
    {"schedule", &CommandState::scheduleLine},
    {"draw", &CommandState::trendable},
    {"variables", &CommandState::hasVariablesWindow},
};

std::string NeedsOf(Command command, const CommandState& ready) {
    if (!RowOf(command).enabled(ready)) return "not enabled";
    std::string needs;
    for (const Flag& flag : kFlags) {
        CommandState state = ready;
        if (!(state.*flag.member)) continue;
        state.*flag.member = false;
        if (!RowOf(command).enabled(state)) needs += std::string(flag.name) + " ";
    }
    return needs;
}

TEST(CommandTableTest, CommandsNeedTheRightsThatTheyGuard) {
    const std::map<Command, std::string> needs = {
        {Command::New, "close "},
        {Command::Open, "close "},
        {Command::Close, "close window "},
        {Command::Save, "close script "},
        {Command::SaveAs, "close script "},
        {Command::Print, "close script "},
        {Command::PrintPreview, "close script "},
        {Command::PrintSetup, "close "},
        {Command::Quit, "close "},
        {Command::History, "script path "},
        {Command::Configuration, "configure "},
        {Command::Sources, "100 "},
        {Command::LogOut, "user "},
        {Command::LogIn, ""},
        {Command::Undo, "editor undo "},
        {Command::Redo, "editor redo "},
        {Command::Cut, "editor selection "},
        {Command::Copy, "editor selection "},
        {Command::Paste, "editor clipboard "},
        {Command::Find, "editor "},
        {Command::Replace, "editor "},
        {Command::KeywordList, "editor complete "},
        {Command::InsertVariables, "editor "},
        {Command::ForgetVariables, "cached "},
        {Command::Start, "close script held "},
        {Command::ToggleBreakpoint, "control held editor "},
        {Command::DeleteBreakpoints, "control script held breakpoints "},
        {Command::ScheduleProof, "editor schedule "},
        {Command::Trend, "script draw "},
        {Command::Font, "window "},
    };
    for (const auto& [command, expected] : needs) {
        EXPECT_EQ(NeedsOf(command, Ready()), expected) << RowOf(command).text;
    }
}

TEST(CommandTableTest, CommandsOfARunGoByItsState) {
    CommandState state = Ready();
    state.running = state.readOnly = true;
    EXPECT_EQ(NeedsOf(Command::Stop, state), "control held running ");
    EXPECT_EQ(NeedsOf(Command::Reset, state), "control held running ");
    EXPECT_EQ(NeedsOf(Command::Variables, state), "script running ");
    for (const Command command : {Command::Start, Command::Step, Command::Paste, Command::Cut,
                                  Command::Replace, Command::ToggleBreakpoint}) {
        EXPECT_FALSE(RowOf(command).enabled(state)) << RowOf(command).text;
    }
    state.minimised = true;
    EXPECT_FALSE(RowOf(Command::Stop).enabled(state));
    EXPECT_TRUE(RowOf(Command::Reset).enabled(state));

    state.running = state.minimised = false;
    state.paused = true;
    EXPECT_EQ(NeedsOf(Command::Start, state), "close script held paused ");
    EXPECT_EQ(NeedsOf(Command::Step, state), "held paused ");
    EXPECT_EQ(NeedsOf(Command::Reset, state), "control held paused ");
    state.minimised = true;
    EXPECT_FALSE(RowOf(Command::Step).enabled(state));
}

TEST(CommandTableTest, AReadOnlyScriptStartsInAConsoleAlone) {
    CommandState state = Ready();
    state.readOnly = true;
    EXPECT_FALSE(RowOf(Command::Start).enabled(state));
    state.consoleClient = true;
    EXPECT_TRUE(RowOf(Command::Start).enabled(state));
}

TEST(CommandTableTest, ASessionIsAskedForWhereItIsNotHeld) {
    CommandState state = Ready();
    EXPECT_FALSE(RowOf(Command::TakeSession).enabled(state));
    state.held = false;
    EXPECT_EQ(NeedsOf(Command::TakeSession, state), "script path ");
}

TEST(CommandTableTest, VariablesOfAnIdleScriptAreShownWhereTheirWindowIs) {
    CommandState state = Ready();
    EXPECT_FALSE(RowOf(Command::Variables).enabled(state));
    state.hasVariablesWindow = true;
    EXPECT_EQ(NeedsOf(Command::Variables, state), "script variables ");
}

}  // namespace
}  // namespace kalvex::workbench
