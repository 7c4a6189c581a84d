#include "app/TickDriver.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace kalvex {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

class TickDriverTest : public testing::Test {
  protected:
    TickDriverTest() {
        m_driver.SetWork([this] {
            m_now += m_cost;
            ++m_ticks;
        });
        m_driver.SetListener([this](std::int64_t now, std::int64_t lateness) {
            m_heard.emplace_back(now, lateness);
        });
    }

    std::int64_t m_now = 5'000'300;
    std::int64_t m_cost = 0;  // of a tick
    bool m_needed = true;
    int m_ticks = 0;
    std::vector<std::pair<std::int64_t, std::int64_t>> m_heard;
    CTickDriver m_driver{[this] { return m_now; }, [this] { return m_needed; }};
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
    EXPECT_EQ(m_ticks, 1 + CPace::kMostBehind + 1);
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

TEST_F(TickDriverTest, WithoutWorkNothingIsDue) {
    m_driver.SetWork({});
    EXPECT_EQ(m_driver.OnTurn(), std::nullopt);
    EXPECT_THAT(m_heard, IsEmpty());
}

}  // namespace
}  // namespace kalvex
