#include "vantrel/network/Visitors.h"

#include <gtest/gtest.h>

namespace kalvex::vantrel {
namespace {

using Entry = Visitors::Entry;

constexpr std::int64_t kHour = 3'600'000;

class VisitorsTest : public testing::Test {
  protected:
    // As many as may come from there.
    int Fill(const std::string& from, bool local = false) {
        int count = 0;
        while (m_visitors.Ask(from, local, m_now) == Entry::Granted) {
            m_visitors.OnCome(from);
            ++count;
        }
        return count;
    }
    Entry Ask(const std::string& from, bool local = false) const {
        return m_visitors.Ask(from, local, m_now);
    }

    std::int64_t m_now = 1'000'000;
    Visitors m_visitors{40};
};

TEST_F(VisitorsTest, AnotherMachineMayHaveAQuarter) {
    EXPECT_EQ(Fill("10.1.2.3"), 10);
    EXPECT_EQ(Ask("10.1.2.3"), Entry::CrowdOfOne);
    EXPECT_EQ(Ask("10.1.2.4"), Entry::Granted);
}

TEST_F(VisitorsTest, AccountOfThisMachineMayHaveHalf) {
    EXPECT_EQ(Fill("uid 7", true), 20);
    EXPECT_EQ(Ask("uid 7", true), Entry::CrowdOfOne);
    EXPECT_EQ(Fill("uid 8", true), 10);
    EXPECT_EQ(Ask("uid 8", true), Entry::Crowd);
}

TEST_F(VisitorsTest, LastQuarterIsForThoseWhoHaveLoggedIn) {
    m_visitors.OnLogin("10.1.2.9", m_now);
    for (const char* host : {"10.1.2.1", "10.1.2.2", "10.1.2.3"}) EXPECT_EQ(Fill(host), 10);
    EXPECT_EQ(Ask("10.1.2.4"), Entry::Crowd);
    EXPECT_EQ(Ask("uid 7", true), Entry::Crowd);
    EXPECT_EQ(Fill("10.1.2.9"), 10);
    EXPECT_EQ(Ask("10.1.2.9"), Entry::Crowd);
    EXPECT_EQ(m_visitors.Count(), 40u);
}

TEST_F(VisitorsTest, WhoHasLoggedInMayHaveThreeQuartersForAnHour) {
    m_visitors.OnLogin("10.1.2.9", m_now);
    EXPECT_EQ(Fill("10.1.2.9"), 30);
    EXPECT_EQ(Ask("10.1.2.9"), Entry::CrowdOfOne);
    for (int i = 0; i < 20; ++i) m_visitors.OnGone("10.1.2.9");
    m_now += kHour - 1;
    EXPECT_EQ(Ask("10.1.2.9"), Entry::Granted);
    m_now += 1;
    EXPECT_EQ(Ask("10.1.2.9"), Entry::CrowdOfOne);
}

TEST_F(VisitorsTest, WhoHasGoneMakesRoom) {
    EXPECT_EQ(Fill("10.1.2.3"), 10);
    m_visitors.OnGone("10.1.2.3");
    EXPECT_EQ(m_visitors.Count(), 9u);
    EXPECT_EQ(Fill("10.1.2.3"), 1);
}

TEST_F(VisitorsTest, TenThousandLoginsAreKeptAndTheOldestGoes) {
    for (int i = 0; i < 10'001; ++i) m_visitors.OnLogin(std::to_string(i), m_now + i);
    EXPECT_EQ(Fill("0"), 10);
    EXPECT_EQ(Fill("1"), 30);
}

}  // namespace
}  // namespace kalvex::vantrel
