#include "app/TickDriver.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace kalvex::app {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

class TickDriverTest : public testing::Test, private TickSource {
  protected:
    TickDriverTest() {
        m_driver.SetSource(this);
        m_driver.SetListener([this](std::int64_t now, std::int64_t lateness) {
            m_heard.emplace_back(now, lateness);
        });
    }

    void RunTick() override {
        m_now += m_cost;
        ++m_ticks;
    }
    bool NeedsTicks() const override { return m_needed; }
    int GetIdleTicks() const override { return m_idle; }
    void SkipTicks(int count) override {
        m_skipped += count;
        m_idle -= count;
    }

    std::int64_t m_now = 5'000'300;
    std::int64_t m_cost = 0;  // of a tick
    bool m_needed = true;
    int m_idle = 0;
    int m_ticks = 0;
    int m_skipped = 0;
    std::vector<std::pair<std::int64_t, std::int64_t>> m_heard;
    TickDriver m_driver{[this] { return m_now; }};
};

TEST_F(TickDriverTest, FirstTickIsAtOnceAndTheNextAMillisecondLater) {
    EXPECT_EQ(m_driver.OnTurn(), 1000);
    EXPECT_EQ(m_ticks, 1);
    m_now += 400;
    EXPECT_EQ(m_driver.OnTurn(), 600);
    EXPECT_EQ(m_ticks, 1);
    m_now += 600;
    EXPECT_EQ(m_driver.OnTurn(), 1000);
    EXPECT_EQ(m_ticks, 2);
}

TEST_F(TickDriverTest, TimeThatATickTakesIsOffTheWait) {
    m_cost = 300;
    EXPECT_EQ(m_driver.OnTurn(), 700);
    m_cost = 2500;
    m_now += 700;
    EXPECT_EQ(m_driver.OnTurn(), 0);
    m_cost = 0;
    EXPECT_EQ(m_driver.OnTurn(), 0);
    EXPECT_EQ(m_driver.OnTurn(), 500);
    EXPECT_EQ(m_ticks, 4);
}

TEST_F(TickDriverTest, LatenessIsKnownOfEachTick) {
    m_driver.OnTurn();
    m_now += 2250;
    m_driver.OnTurn();
    m_driver.OnTurn();
    m_driver.OnTurn();
    EXPECT_THAT(m_heard,
                ElementsAre(Pair(5'000'300, 0), Pair(5'002'550, 1250), Pair(5'002'550, 250)));
}

TEST_F(TickDriverTest, StallIsCaughtUpWithinBoundsAndKnownWhole) {
    m_driver.OnTurn();
    m_now += 60'000'000;
    while (m_driver.OnTurn() == 0) {
    }
    EXPECT_EQ(m_ticks, 1 + Pace::kMostBehind + 1);
    EXPECT_EQ(m_heard[1].second, 59'999'000);
    EXPECT_EQ(m_heard[2].second, 99'000);
}

TEST_F(TickDriverTest, WhereNoTicksAreNeededNothingIsDue) {
    m_needed = false;
    EXPECT_EQ(m_driver.OnTurn(), std::nullopt);
    EXPECT_EQ(m_ticks, 0);
}

TEST_F(TickDriverTest, PauseWithoutTicksIsNoStall) {
    m_driver.OnTurn();
    m_needed = false;
    m_driver.OnTurn();
    m_now += 60'000'000;
    m_needed = true;
    EXPECT_EQ(m_driver.OnTurn(), 1000);
    EXPECT_EQ(m_ticks, 2);
    EXPECT_EQ(m_heard[1].second, 0);
}

TEST_F(TickDriverTest, WithoutASourceNothingIsDue) {
    m_driver.SetSource(nullptr);
    m_driver.OnWake();
    EXPECT_EQ(m_driver.OnTurn(), std::nullopt);
    EXPECT_THAT(m_heard, IsEmpty());
}

// ---- ticks that have nothing to run

TEST_F(TickDriverTest, WaitGoesOnUntilATickHasSomethingToRun) {
    m_driver.OnTurn();
    m_idle = 49;
    EXPECT_EQ(m_driver.OnTurn(), 50'000);
    m_now += 50'000;
    m_driver.OnWake();
    EXPECT_EQ(m_skipped, 49);
    EXPECT_EQ(m_ticks, 1);
    EXPECT_EQ(m_driver.OnTurn(), 1000);
    EXPECT_EQ(m_ticks, 2);
    EXPECT_EQ(m_heard.size(), 51u);
    EXPECT_THAT(m_heard, Each(testing::Field(&std::pair<std::int64_t, std::int64_t>::second, 0)));
}

TEST_F(TickDriverTest, WaitThatEndsEarlySkipsWhatHasPassed) {
    m_driver.OnTurn();
    m_idle = 49;
    m_driver.OnTurn();
    m_now += 10'700;
    m_driver.OnWake();
    EXPECT_EQ(m_skipped, 10);
    m_idle = 0;  // somebody has given it something to run
    EXPECT_EQ(m_driver.OnTurn(), 300);
    EXPECT_EQ(m_ticks, 1);
    m_now += 300;
    EXPECT_EQ(m_driver.OnTurn(), 1000);
    EXPECT_EQ(m_ticks, 2);
}

TEST_F(TickDriverTest, StallBehindIdleTicksIsKnownWhole) {
    m_driver.OnTurn();
    m_idle = 49;
    m_driver.OnTurn();
    m_now += 60'000'000;
    m_driver.OnWake();
    EXPECT_EQ(m_skipped, 49);
    m_driver.OnTurn();
    EXPECT_EQ(m_ticks, 2);
    // The tick was due at 50 ms; 59,899 others went by between it and those that are caught up.
    EXPECT_EQ(m_heard.back().second, 60'000'000 - 50'000);
}

}  // namespace
}  // namespace kalvex::app
