#include "app/Health.h"

#include <gmock/gmock.h>

#include "app/HealthText.h"
#include "app/StandingText.h"
#include "operands/ScriptErrors.h"
#include "support/source_world.h"
#include "text/CodePage.h"

namespace kalvex::app {
namespace {

using testing::ElementsAre;

constexpr std::int64_t kSecond = 1'000'000;
constexpr std::int64_t kBegin = 500 * kSecond;

class HealthTest : public support::SourceWorld {
  protected:
    HealthTest() { services.counts = &health.Counts(); }

    HealthFigures Figures() { return health.GetFigures(now, ticks, nullptr, appLog); }

    // Ticks of ten milliseconds, each of which runs so many lines.
    void Pass(std::int64_t seconds, std::uint64_t lines = 0) {
        for (const std::int64_t end = now + seconds * kSecond; now < end;) {
            now += kSecond / 100;
            health.Counts().lines += lines;
            health.OnTick(now, 0);
        }
    }

    engine::CKalvexDoc& Add(std::string_view text, const std::string& name, int count = 50) {
        engine::CKalvexDoc& script = Start(text, name);
        Tick(count);
        return script;
    }

    std::int64_t now = kBegin;
    Health health{kBegin};
    CLog appLog{clock, translator};
};

TEST_F(HealthTest, BeforeTheFirstTickThereIsNothingToDivideBy) {
    const HealthFigures figures = Figures();
    EXPECT_EQ(figures.uptime, 0);
    EXPECT_EQ(figures.ticks, 0u);
    EXPECT_EQ(figures.ticksPerSecond, 0);
    EXPECT_EQ(figures.linesPerSecond, 0);
}

TEST_F(HealthTest, RatesAreThoseOfTheLastTenSeconds) {
    Pass(100, 5);
    EXPECT_DOUBLE_EQ(Figures().uptime, 100);
    EXPECT_EQ(Figures().ticks, 10'000u);
    EXPECT_DOUBLE_EQ(Figures().ticksPerSecond, 100);
    EXPECT_DOUBLE_EQ(Figures().linesPerSecond, 500);
    Pass(5, 1);
    EXPECT_DOUBLE_EQ(Figures().linesPerSecond, 300);
    Pass(5, 1);
    EXPECT_DOUBLE_EQ(Figures().linesPerSecond, 100);
    EXPECT_EQ(Figures().counts.lines, 51'000u);
}

TEST_F(HealthTest, RateOfAModuleThatHangsFalls) {
    Pass(10, 1);
    now += 10 * kSecond;
    EXPECT_DOUBLE_EQ(Figures().ticksPerSecond, 50);
    EXPECT_DOUBLE_EQ(Figures().linesPerSecond, 50);
}

TEST_F(HealthTest, LatenessIsInSeconds) {
    for (int i = 0; i < 98; ++i) health.OnTick(now, 5);
    health.OnTick(now, 3);
    health.OnTick(now, kSecond / 2);
    const HealthFigures figures = Figures();
    EXPECT_DOUBLE_EQ(figures.latenessHalf, 5e-6);
    EXPECT_DOUBLE_EQ(figures.lateness99, 5e-6);
    EXPECT_DOUBLE_EQ(figures.latenessMax, 0.5);
    EXPECT_DOUBLE_EQ(figures.latenessSum, 0.500493);
}

TEST_F(HealthTest, LinesErrorsAndWaitsOfAllScriptsAreCounted) {
    Add("LOCAL A = 1\nSET A = 2", "dwa.kx");
    EXPECT_EQ(Figures().counts.lines, 2u);
    EXPECT_EQ(Figures().counts.errors, 0u);
    Add("; opis\nNIEZNANE", "blad.kx", 0);
    documents.back()->ExecuteLine();
    EXPECT_EQ(Figures().counts.lines, 3u);
    documents.back()->JumpTo(1);
    documents.back()->ExecuteLine();
    documents.back()->ExecuteLine();
    EXPECT_EQ(Figures().counts.lines, 5u);
    EXPECT_EQ(Figures().counts.errors, 2u);
    EXPECT_EQ(Figures().counts.waits, 0u);
}

TEST_F(HealthTest, LineThatNeedsDataIsAWaitAndNoError) {
    Plant("'dataAtTick': 1000, 'variables': {'X': {'current': [{'atTick': 0, 'value': 1}]}}");
    Add("REMOTE X srv@X\nLOCAL A\nSET A = X", "czeka.kx");
    EXPECT_GT(Figures().counts.waits, 0u);
    EXPECT_EQ(Figures().counts.errors, 0u);
    EXPECT_EQ(ConditionOf(*documents[0]), ScriptCondition::Waiting);
}

TEST_F(HealthTest, EachScriptIsInOneState) {
    EXPECT_EQ(ConditionOf(Add(":a\nGOTO a", "dziala.kx")), ScriptCondition::Running);
    EXPECT_EQ(ConditionOf(Add("LOCAL A", "koniec.kx")), ScriptCondition::Finished);
    EXPECT_EQ(ConditionOf(Add("NIEZNANE", "blad.kx")), ScriptCondition::Error);
    // A missing label stops the script.
    EXPECT_EQ(ConditionOf(Add("GOTO nigdzie", "zatrzymany_bledem.kx")), ScriptCondition::Error);
    engine::CKalvexDoc& stopped = Add(":a\nGOTO a", "stop.kx");
    stopped.Stop();
    EXPECT_EQ(ConditionOf(stopped), ScriptCondition::Stopped);
    engine::CKalvexDoc& idle = Add(":a\nGOTO a", "reset.kx");
    idle.Reset();
    EXPECT_EQ(ConditionOf(idle), ScriptCondition::Idle);
    // Error, stopped, idle, finished, waiting, running.
    EXPECT_THAT(Figures().scripts, ElementsAre(2, 1, 1, 1, 0, 1));
}

class HealthScriptTest : public HealthTest {
  protected:
    ScriptFigures Own(std::size_t index = 0) { return Figures().byScript.at(index); }
};

TEST_F(HealthScriptTest, EachScriptCountsForItself) {
    Add(":a\nGOTO a", "dziala.kx", 20);
    Add("; opis\nNIEZNANE", "blad.kx", 200);
    const HealthFigures figures = Figures();
    const ScriptFigures& runs = figures.byScript.at(0);
    const ScriptFigures& fails = figures.byScript.at(1);
    EXPECT_EQ(runs.name, "dziala.kx");
    EXPECT_EQ(runs.condition, ScriptCondition::Running);
    EXPECT_EQ(runs.error, 0);
    EXPECT_EQ(runs.counts.errors, 0u);
    EXPECT_EQ(fails.name, "blad.kx");
    EXPECT_EQ(fails.condition, ScriptCondition::Error);
    EXPECT_EQ(fails.line, 2);
    EXPECT_EQ(fails.error, operands::ErrorUnknownKeyword);
    EXPECT_GT(fails.counts.errors, 0u);
    EXPECT_EQ(fails.counts.errors + 1, fails.counts.lines);
    EXPECT_GT(runs.counts.lines, fails.counts.lines);
    EXPECT_EQ(figures.counts.lines, runs.counts.lines + fails.counts.lines);
    EXPECT_EQ(figures.counts.errors, fails.counts.errors);
}

TEST_F(HealthScriptTest, LinesOfATickAtTopPriorityAreCounted) {
    engine::CKalvexDoc& script = Add("PRIORITY 1\n:a\nSET A = 1\nGOTO a", "szybki.kx", 300);
    EXPECT_GT(Own().counts.lines, 100u);
    EXPECT_EQ(Own().counts.lines, health.Counts().lines);
    EXPECT_EQ(Own().counts.errors, health.Counts().errors);
    script.Stop();
    const std::uint64_t lines = Own().counts.lines;
    Tick(300);
    EXPECT_EQ(Own().counts.lines, lines);
}

TEST_F(HealthScriptTest, ScriptThatWaitsCountsItsTries) {
    Plant("'dataAtTick': 100000, 'variables': {'X': {'current': [{'atTick': 0, 'value': 1}]}}");
    Add("PRIORITY 1\nREMOTE X srv@X\nLOCAL A\nSET A = X", "czeka.kx", 500);
    EXPECT_EQ(Own().condition, ScriptCondition::Waiting);
    EXPECT_EQ(Own().line, 4);
    EXPECT_EQ(Own().counts.lines, health.Counts().lines);
    EXPECT_GT(Own().counts.waits, 400u);
    EXPECT_EQ(Own().counts.waits, health.Counts().waits);
}

TEST_F(HealthScriptTest, TimeWithoutAFinishedLineGrowsWhereThereIsOneToRun) {
    engine::CKalvexDoc& script = Add(":a\nGOTO a", "dziala.kx");
    EXPECT_EQ(Own().standing, 0);
    clock.Advance(7'000);
    EXPECT_EQ(Own().standing, 0);
    script.Stop();
    clock.Advance(5'000);
    EXPECT_EQ(Own().standing, 5);
    clock.SetSystemTime(0);
    EXPECT_EQ(Own().standing, 0);
    script.Reset();
    clock.Advance(5'000);
    EXPECT_EQ(Own().standing, 0);
    EXPECT_EQ(Own().line, 0);
}

TEST_F(HealthScriptTest, TimeOfAnErrorGrowsFromItsFirstTry) {
    Add("NIEZNANE", "blad.kx");
    EXPECT_EQ(Own().standing, 0);
    clock.Advance(30'000);
    EXPECT_EQ(Own().standing, 30);
}

TEST_F(HealthScriptTest, TimeOfAnErrorGrowsFromTheLineBefore) {
    Add("LOCAL A\nNIEZNANE", "blad.kx", 10);
    clock.Advance(5'000);
    Tick(100);
    ASSERT_EQ(Own().condition, ScriptCondition::Error);
    EXPECT_EQ(Own().standing, 5);
}

TEST_F(HealthScriptTest, TimeOfAFinishedScriptStandsStill) {
    Add("LOCAL A", "koniec.kx");
    ASSERT_EQ(Own().condition, ScriptCondition::Finished);
    clock.Advance(30'000);
    EXPECT_EQ(Own().standing, 0);
    EXPECT_EQ(Own().line, 0);
}

TEST_F(HealthScriptTest, ScriptsInErrorAndThoseThatWaitAreNamed) {
    Plant("'dataAtTick': 100000, 'variables': {'X': {'current': [{'atTick': 0, 'value': 1}]}}");
    Add(":a\nGOTO a", "dziala.kx");
    Add("NIEZNANE", "blad.kx", 51);
    Add("REMOTE X srv@X\nLOCAL A\nSET A = X", "czeka.kx", 150);
    Add("LOCAL A", "koniec.kx");
    std::vector<std::string> lines;
    for (const std::string& line : FormatHeldScripts(ticks, platform::Translator())) {
        lines.push_back(text::ToUtf8(line));
    }
    const auto status = [this](std::size_t index) {
        return text::ToUtf8(
            FormatStandingStatus(engine::GetStanding(*documents[index]), platform::Translator()));
    };
    EXPECT_THAT(lines, ElementsAre("Stan modułu, skrypt blad.kx: " + status(1),
                                   "Stan modułu, skrypt czeka.kx: " + status(2)));
    EXPECT_EQ(status(1).substr(0, 21), "w błędzie, linia 1 ");
    EXPECT_EQ(status(2).substr(0, 23), "czeka na dane, linia 3 ");
}

TEST_F(HealthTest, ConnectionsAreCountedByState) {
    Plant("'variables': {'X': {'current': [{'atTick': 0, 'value': 1}]}}");
    const auto connections = [this] {
        return health.GetFigures(now, ticks, &client->SourceList(), appLog).connections;
    };
    EXPECT_THAT(connections(), ElementsAre(0, 0, 0, 0));
    Add("REMOTE A srv@X\nREMOTE B inny@X", "zrodla.kx");
    ASSERT_EQ(Connection("srv").GetState(), vantrel::StateConnected);
    ASSERT_EQ(Connection("inny").GetState(), vantrel::StateDown);
    // Down, opening, login, connected.
    EXPECT_THAT(connections(), ElementsAre(1, 0, 0, 1));
}

TEST_F(HealthTest, LinesThatTheLogLostAreCounted) {
    EXPECT_EQ(Figures().linesLost, 0u);
    folder.Put("plik", "");
    appLog.SetLogFile(folder.Path("plik/Kalvex"), 1000);
    appLog.AddMessage("a", platform::LogErrors);
    appLog.AddMessage("b", platform::LogErrors);
    EXPECT_EQ(Figures().linesLost, 2u);
    appLog.SetLogFile(folder.Path("Kalvex"), 1000);
    appLog.AddMessage("c", platform::LogErrors);
    EXPECT_EQ(Figures().linesLost, 2u);
}

TEST_F(HealthTest, MemoryOfTheProcessIsKnown) {
    EXPECT_GT(Figures().memory, 1'000'000u);
}

}  // namespace
}  // namespace kalvex::app
