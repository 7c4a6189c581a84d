#include "app/StandingText.h"

#include <gmock/gmock.h>

#include "support/marking_translator.h"
#include "support/zone_scope.h"
#include "text/CodePage.h"

namespace kalvex::app {
namespace {

using engine::DataState;
using engine::Release;
using engine::ScriptStanding;
using engine::StandingState;
using testing::ElementsAre;

class StandingTextTest : public testing::Test {
  protected:
    static constexpr std::int64_t kTime = 1710050400;  // 2024-03-10 06:00:00 GMT

    static std::string Status(const ScriptStanding& standing) {
        return text::ToUtf8(FormatStandingStatus(standing, platform::Translator()));
    }

    static std::vector<std::string> Report(const ScriptStanding& standing) {
        std::vector<std::string> lines;
        for (const std::string& line : FormatStandingReport(standing, platform::Translator())) {
            EXPECT_LE(line.size(), 80u);
            lines.push_back(text::ToUtf8(line));
        }
        EXPECT_LE(lines.size(), 24u);
        return lines;
    }

    // Everything that a standing can have, in this state.
    static ScriptStanding Full(StandingState state) {
        ScriptStanding standing;
        standing.line = 11;
        standing.text = text::FromUtf8("\tSET SUMA = Ciśnienie + B");
        standing.state = state;
        standing.since = kTime;
        standing.stopped = kTime + 60;
        standing.until = kTime + 3600;
        standing.missing = {Missing("Ciśnienie", DataState::Down, "serwer nie odpowiada")};
        standing.error = {.code = 15, .text = "A", .times = 17};
        standing.message = text::FromUtf8("Błąd pobrania wartości zdalnej zmiennej : A");
        standing.lastFinished = kTime - 60;
        standing.release = Release::Connection;
        return standing;
    }

    static engine::MissingValue Missing(const char* name, DataState state,
                                        const char* reason = "") {
        return {text::FromUtf8(name), value::KindCurrent, {"Gaz", "Z1.P", state, reason}};
    }

    support::ZoneScope zone{"UTC"};
};

TEST_F(StandingTextTest, StatusOfEachState) {
    std::vector<std::string> lines;
    for (int state = 0; state <= static_cast<int>(StandingState::Finished); ++state) {
        lines.push_back(Status(Full(static_cast<StandingState>(state))));
    }
    EXPECT_THAT(
        lines,
        ElementsAre(
            "nieuruchomiony", "działa, linia 12",
            "czeka na dane, linia 12 od 2024-03-10 06:00:00, Ciśnienie = Gaz@Z1.P CURDATA: brak "
            "połączenia ze źródłem (serwer nie odpowiada)",
            "śpi, linia 12 do 2024-03-10 07:00:00",
            "czeka na porę, linia 12 do 2024-03-10 07:00:00",
            "w błędzie, linia 12 od 2024-03-10 06:00:00, Błąd pobrania wartości zdalnej zmiennej "
            ": A (razy: 17), Ciśnienie = Gaz@Z1.P CURDATA: brak połączenia ze źródłem (serwer nie "
            "odpowiada)",
            "zatrzymany poleceniem, linia 12 od 2024-03-10 06:01:00",
            "zatrzymany w punkcie przerwania, linia 12 od 2024-03-10 06:01:00",
            "zatrzymany przez błąd, linia 12 od 2024-03-10 06:01:00, Błąd pobrania wartości "
            "zdalnej zmiennej : A (razy: 17), Ciśnienie = Gaz@Z1.P CURDATA: brak połączenia ze "
            "źródłem (serwer nie odpowiada)",
            "zakończony za linią 11, 2024-03-10 06:00:00"));
}

TEST_F(StandingTextTest, StatusTellsHowManyMoreValuesAreMissing) {
    ScriptStanding standing = Full(StandingState::Waiting);
    standing.missing = {Missing("A", DataState::Opening), Missing("B", DataState::Opening),
                        Missing("C", DataState::Opening)};
    EXPECT_EQ(Status(standing),
              "czeka na dane, linia 12 od 2024-03-10 06:00:00, A = Gaz@Z1.P CURDATA: trwa łączenie "
              "ze źródłem, i jeszcze 2");
}

TEST_F(StandingTextTest, StatusOfAFailureWithoutAVariable) {
    ScriptStanding standing = Full(StandingState::Failing);
    standing.missing = {};
    standing.message = text::FromUtf8("Nieznane słowo kluczowe : FOO\x1b[2J");
    EXPECT_EQ(Status(standing),
              "w błędzie, linia 12 od 2024-03-10 06:00:00, Nieznane słowo kluczowe : FOO [2J "
              "(razy: 17)");
}

TEST_F(StandingTextTest, StatusOfATimeThatNeverComes) {
    ScriptStanding standing = Full(StandingState::Scheduled);
    standing.until = 0;
    EXPECT_EQ(Status(standing), "czeka na porę, linia 12 do -");
}

TEST_F(StandingTextTest, ReportOfEverything) {
    EXPECT_THAT(
        Report(Full(StandingState::Failing)),
        ElementsAre(
            "Linia:            12: SET SUMA = Ciśnienie + B",
            "Stan:             powtarza linię z błędem", "Stoi od:          2024-03-10 06:00:00",
            "Zatrzymany:       2024-03-10 06:01:00", "Czeka do:         2024-03-10 07:00:00",
            "Brak wartości:    Ciśnienie = Gaz@Z1.P CURDATA: brak połączenia ze źródłem",
            "                  (serwer nie odpowiada)",
            "Błąd:             Błąd pobrania wartości zdalnej zmiennej : A (razy: 17)",
            "Ruszy:            gdy źródło Gaz będzie połączone",
            "Ostatnio działał: 2024-03-10 05:59:00"));
}

TEST_F(StandingTextTest, ReportLeavesOutWhatThereIsNot) {
    ScriptStanding standing;
    standing.text = "LOCAL A";
    standing.release = Release::Start;
    EXPECT_THAT(Report(standing),
                ElementsAre("Linia:            1: LOCAL A", "Stan:             nieuruchomiony",
                            "Ruszy:            po poleceniu start"));
    standing.state = StandingState::Running;
    standing.release = Release::None;
    standing.lastFinished = kTime;
    EXPECT_THAT(Report(standing),
                ElementsAre("Linia:            1: LOCAL A", "Stan:             działa",
                            "Ostatnio działał: 2024-03-10 06:00:00"));
}

TEST_F(StandingTextTest, ReportOfAFinishedScriptHasNoLine) {
    ScriptStanding standing;
    standing.line = 1;
    standing.state = StandingState::Finished;
    standing.since = kTime;
    standing.release = Release::Restart;
    EXPECT_THAT(Report(standing),
                ElementsAre("Stan:             zakończony", "Stoi od:          2024-03-10 06:00:00",
                            "Ruszy:            po resecie i poleceniu start"));
}

TEST_F(StandingTextTest, WordsOfEachState) {
    std::vector<std::string> words;
    for (int state = 0; state <= static_cast<int>(StandingState::Finished); ++state) {
        ScriptStanding standing;
        standing.line = 1;
        standing.state = static_cast<StandingState>(state);
        standing.text = "A";
        for (const std::string& line : Report(standing)) {
            if (line.starts_with("Stan: ")) words.push_back(line.substr(18));
        }
    }
    EXPECT_THAT(words, ElementsAre("nieuruchomiony", "działa", "czeka na dane", "śpi (SLEEP)",
                                   "czeka na porę (WAITFOR)", "powtarza linię z błędem",
                                   "zatrzymany poleceniem", "zatrzymany w punkcie przerwania",
                                   "zatrzymany przez błąd", "zakończony"));
}

TEST_F(StandingTextTest, WordsOfEachRelease) {
    std::vector<std::string> words;
    for (int release = 1; release <= static_cast<int>(Release::Subscribe); ++release) {
        ScriptStanding standing = Full(StandingState::Waiting);
        standing.release = static_cast<Release>(release);
        for (const std::string& line : Report(standing)) {
            if (line.starts_with("Ruszy: ")) words.push_back(line.substr(18));
        }
    }
    EXPECT_THAT(
        words,
        ElementsAre("gdy minie ta pora", "przy następnej próbie", "gdy kolejna próba się powiedzie",
                    "po poprawie tekstu i resecie skryptu", "po poleceniu start",
                    "po poleceniu start albo step", "po resecie i poleceniu start",
                    "gdy źródło Gaz dostanie adres, po resecie i poleceniu start",
                    "gdy źródło Gaz będzie połączone", "gdy źródło Gaz przyjmie użytkownika modułu",
                    "gdy źródło Gaz będzie miało zmienną Z1.P",
                    "gdy źródło Gaz udostępni zmienną Z1.P użytkownikowi modułu",
                    "gdy źródło Gaz przyśle znaną wartość zmiennej Z1.P",
                    "gdy źródło Gaz odpowie na GET", "gdy ktoś wpisze wartość albo poprawi skrypt",
                    "po SUBSCRIBE START"));
}

TEST_F(StandingTextTest, WordsOfEachStateOfTheData) {
    std::vector<std::string> words;
    for (int state = 0; state <= static_cast<int>(DataState::NoReport); ++state) {
        ScriptStanding standing = Full(StandingState::Waiting);
        standing.missing = {Missing("A", static_cast<DataState>(state))};
        const std::string status = Status(standing);
        words.push_back(status.substr(status.rfind(": ") + 2));
    }
    EXPECT_THAT(
        words,
        ElementsAre(
            "wartość już jest", "wskaźnik nie prowadzi do żadnej zmiennej",
            "lista nie ma znanego bieżącego elementu", "takich danych nie można odczytać",
            "nie można połączyć ze źródłem o tej nazwie", "brak połączenia ze źródłem",
            "trwa łączenie ze źródłem", "trwa logowanie do źródła",
            "źródło odmówiło rejestracji użytkownika", "rejestracja wstrzymana (SUBSCRIBE STOP)",
            "połączone, w źródle nie ma tej zmiennej", "połączone, brak dostępu do tej zmiennej",
            "połączone, dane jeszcze nie przyszły", "połączone, źródło nie ma wartości",
            "połączone, wartość nieznana", "zablokowana (LOCK) bez znanej wartości",
            "połączone, nie zażądano raportu (GET)", "połączone, nie ma jeszcze odpowiedzi na GET",
            "połączone, źródło nie dało raportu", "połączone, raport bez znanej wartości"));
}

TEST_F(StandingTextTest, VariableWithoutAServerIsNamedAlone) {
    ScriptStanding standing = Full(StandingState::Waiting);
    standing.missing = {{"L", value::KindCurrent, {"", "", DataState::NoElement}}};
    EXPECT_EQ(Status(standing),
              "czeka na dane, linia 12 od 2024-03-10 06:00:00, L: lista nie ma znanego bieżącego "
              "elementu");
}

TEST_F(StandingTextTest, LongValuesAreBounded) {
    ScriptStanding standing = Full(StandingState::Failing);
    standing.text = "SET A = " + std::string(500, 'x');
    standing.message = "Inny";
    for (int i = 0; i < 60; ++i) standing.message += " " + std::to_string(100 + i);
    standing.missing = {};
    for (int i = 0; i < 9; ++i) {
        standing.missing.push_back(Missing(std::string(300, 'z').c_str(), DataState::Opening));
    }
    const std::vector<std::string> lines = Report(standing);
    ASSERT_EQ(lines.size(), 22u);
    EXPECT_EQ(lines[0], "Linia:            12: SET A =");
    EXPECT_EQ(lines[1], "                  " + std::string(62, 'x'));
    EXPECT_EQ(lines[2], "                  " + std::string(59, 'x') + "...");
    EXPECT_EQ(lines[16], "                  i jeszcze 6");
}

TEST_F(StandingTextTest, EachWordPassesThroughTheTranslator) {
    ScriptStanding standing = Full(StandingState::Waiting);
    standing.error = {};
    std::vector<std::string> lines;
    for (const std::string& line : FormatStandingReport(standing, support::MarkingTranslator())) {
        lines.push_back(text::ToUtf8(line));
    }
    EXPECT_THAT(
        lines,
        ElementsAre(
            "<Linia>:            12: SET SUMA = Ciśnienie + B",
            "<Stan>:             <czeka na dane>", "<Stoi od>:          2024-03-10 06:00:00",
            "<Zatrzymany>:       2024-03-10 06:01:00", "<Czeka do>:         2024-03-10 07:00:00",
            "<Brak wartości>:    Ciśnienie = Gaz@Z1.P CURDATA: <brak połączenia ze źródłem>",
            "                    (serwer nie odpowiada)",
            "<Ruszy>:            <gdy źródło Gaz będzie połączone>",
            "<Ostatnio działał>: 2024-03-10 05:59:00"));
}

}  // namespace
}  // namespace kalvex::app
