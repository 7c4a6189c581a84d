// Ticks that have no time for all scripts that never rest.
#include <gmock/gmock.h>

#include "support/script_world.h"
#include "value/ValueText.h"

namespace kalvex::engine {
namespace {

using testing::Each;
using testing::ElementsAre;

constexpr const char* kRunaway = "LOCAL N = 0\nPRIORITY 1\n:w\nSET N = N + 1\nGOTO w\n";
constexpr const char* kUsual = "LOCAL N = 0\nPRIORITY 2\n:w\nSET N = N + 1\nGOTO w\n";
constexpr const char* kWaiting = "LOCAL N = 0\nPRIORITY 1\n:w\nSLEEP 1\nSET N = N + 1\nGOTO w\n";
constexpr int kTurn = 5;    // how often SET runs in the ten steps of a tick
constexpr int kBegin = 51;  // PRIORITY is the second line, and its tick goes on at the top speed

class TickBudgetTest : public support::ScriptWorld {
  protected:
    // Each look at the clock takes so long.
    void SetBudget(std::int64_t budget, std::int64_t look) {
        ticks.SetBudget([this, look] { return m_now += look; }, budget);
    }

    void Start(const char* text, int count) {
        for (int i = 0; i < count; ++i) {
            CKalvexDoc& script = Open(text, std::to_string(documents.size()) + ".kx");
            ASSERT_TRUE(script.Start());
        }
    }

    void Run(int count) {
        for (int i = 0; i < count; ++i) {
            ticks.RunTick();
            clock.Advance(1);
        }
    }

    // N of each script.
    std::vector<int> Counts() {
        std::vector<int> counts;
        for (const auto& script : documents) {
            value::CVal value;
            script->Variables().Find("N")->GetValue(value, value::KindCurrent, 1);
            counts.push_back(value::ValueToInt(value));
        }
        return counts;
    }

    // What the scripts have come to by these ticks beyond where they were.
    std::vector<int> Gained(int count) {
        const std::vector<int> before = Counts();
        Run(count);
        std::vector<int> gained = Counts();
        for (std::size_t i = 0; i < gained.size(); ++i) gained[i] -= before[i];
        return gained;
    }

  private:
    std::int64_t m_now = 0;
};

TEST_F(TickBudgetTest, WithoutABudgetEachHasEachTick) {
    Start(kRunaway, 5);
    Run(kBegin);
    EXPECT_THAT(Gained(100), Each(100 * kTurn));
}

TEST_F(TickBudgetTest, WhatFitsIsNotLeftOut) {
    SetBudget(5, 1);
    Start(kRunaway, 5);
    Run(kBegin);
    EXPECT_THAT(Gained(100), Each(100 * kTurn));
}

// Three in a tick: the first without a look at the clock, then as long as it is in time.
TEST_F(TickBudgetTest, ScriptsThatNeverRestTakeTurns) {
    SetBudget(2, 1);
    Start(kRunaway, 6);
    Run(kBegin);
    EXPECT_THAT(Gained(1), ElementsAre(kTurn, kTurn, kTurn, 0, 0, 0));
    EXPECT_THAT(Gained(1), ElementsAre(0, 0, 0, kTurn, kTurn, kTurn));
    EXPECT_THAT(Gained(100), Each(50 * kTurn));
}

TEST_F(TickBudgetTest, OneHasItsTurnHoweverLateItIs) {
    SetBudget(1, 100);
    Start(kRunaway, 3);
    Run(kBegin);
    EXPECT_THAT(Gained(3), Each(kTurn));
}

TEST_F(TickBudgetTest, AllOthersHaveEachTick) {
    Start(kRunaway, 10);
    Start(kUsual, 2);
    Start(kWaiting, 2);
    SetBudget(1, 100);
    Run(kBegin + 50);  // the next line of the usual ones is due then
    const std::vector<int> gained = Gained(8000);
    EXPECT_THAT(std::vector<int>(gained.begin(), gained.begin() + 10), Each(800 * kTurn));
    EXPECT_THAT(std::vector<int>(gained.begin() + 10, gained.end()), ElementsAre(2000, 2000, 8, 8));
}

TEST_F(TickBudgetTest, ScriptThatGoesTakesNobodysTurn) {
    SetBudget(1, 100);
    Start(kRunaway, 4);
    Run(kBegin + 1);
    ticks.Remove(*documents[0]);
    EXPECT_THAT(Gained(1), ElementsAre(0, kTurn, 0, 0));
    EXPECT_THAT(Gained(1), ElementsAre(0, 0, kTurn, 0));
    EXPECT_THAT(Gained(1), ElementsAre(0, 0, 0, kTurn));
}

TEST_F(TickBudgetTest, ErrorOfAScriptThatIsLeftOutStillStands) {
    SetBudget(1, 100);
    Start(kRunaway, 1);
    Start("LOCAL N = 0\nPRIORITY 1\nBZDURA\n", 1);
    Run(kBegin + 1);
    EXPECT_TRUE(ticks.IsErrorStanding());
    Run(1);
    EXPECT_TRUE(ticks.IsErrorStanding());
}

}  // namespace
}  // namespace kalvex::engine
