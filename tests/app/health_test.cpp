#include "app/Health.h"

#include <gmock/gmock.h>

#include "support/source_world.h"

namespace kalvex::app {
namespace {

using testing::ElementsAre;

constexpr std::int64_t kSecond = 1'000'000;
constexpr std::int64_t kBegin = 500 * kSecond;

class HealthTest : public support::SourceWorld {
  protected:
    HealthTest() { services.counts = &health.Counts(); }

    HealthFigures Figures() { return health.GetFigures(now, documents, nullptr); }

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

TEST_F(HealthTest, ConnectionsAreCountedByState) {
    Plant("'variables': {'X': {'current': [{'atTick': 0, 'value': 1}]}}");
    const auto connections = [this] {
        return health.GetFigures(now, documents, &client->SourceList()).connections;
    };
    EXPECT_THAT(connections(), ElementsAre(0, 0, 0, 0));
    Add("REMOTE A srv@X\nREMOTE B inny@X", "zrodla.kx");
    ASSERT_EQ(Connection("srv").GetState(), vantrel::StateConnected);
    ASSERT_EQ(Connection("inny").GetState(), vantrel::StateDown);
    // Down, opening, login, connected.
    EXPECT_THAT(connections(), ElementsAre(1, 0, 0, 1));
}

TEST_F(HealthTest, MemoryOfTheProcessIsKnown) {
    EXPECT_GT(Figures().memory, 1'000'000u);
}

}  // namespace
}  // namespace kalvex::app
