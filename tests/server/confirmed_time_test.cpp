#include "server/ConfirmedTime.h"

#include <gtest/gtest.h>

namespace kalvex::server {
namespace {

constexpr std::int64_t kStart = 1700000000;
constexpr std::int64_t kYear = 365 * 86400;

TEST(ConfirmedTimeTest, FollowsAClockThatWandersByAMinute) {
    ConfirmedTime time;
    EXPECT_EQ(time.Step(kStart, 5), 0);
    EXPECT_EQ(time.Get(), kStart);
    EXPECT_EQ(time.Passed(), 0);
    EXPECT_EQ(time.Step(kStart + 61, 6), 0);
    EXPECT_EQ(time.Get(), kStart + 61);
    EXPECT_EQ(time.Passed(), 61);
    EXPECT_EQ(time.Step(kStart + 2, 7), 0);
    EXPECT_EQ(time.Get(), kStart + 2);
    EXPECT_EQ(time.Passed(), -59);
}

TEST(ConfirmedTimeTest, GoesOnByElapsedTimeBehindAJumpAhead) {
    ConfirmedTime time;
    time.Step(kStart, 5);
    EXPECT_EQ(time.Step(kStart + 62, 6), 61);
    EXPECT_EQ(time.Get(), kStart + 1);
    EXPECT_EQ(time.Passed(), 1);
    EXPECT_EQ(time.Step(kStart + 72, 16), 0);
    EXPECT_EQ(time.Get(), kStart + 11);
    EXPECT_EQ(time.Passed(), 10);
}

TEST(ConfirmedTimeTest, ClockThatAgreesAgainIsFollowed) {
    ConfirmedTime time;
    time.Step(kStart, 5);
    time.Step(kStart + kYear, 6);
    EXPECT_EQ(time.Step(kStart + 2 + 60, 7), 60 + 1 - kYear);
    EXPECT_EQ(time.Get(), kStart + 2 + 60);
    time.Step(kStart + kYear, 8);
    EXPECT_EQ(time.Step(kStart + 4 + 121, 9), 125 - kYear - 1);
    EXPECT_EQ(time.Get(), kStart + 64);
}

TEST(ConfirmedTimeTest, ClockIsFollowedAfterAnHour) {
    ConfirmedTime time;
    time.Step(kStart, 0);
    time.Step(kStart + kYear, 1);
    time.Step(kStart + kYear + 3599, 3600);
    EXPECT_EQ(time.Get(), kStart + 3600);
    EXPECT_EQ(time.Step(kStart + kYear + 3600, 3601), 0);
    EXPECT_EQ(time.Get(), kStart + kYear + 3600);
}

TEST(ConfirmedTimeTest, FurtherJumpBeginsTheHourAnew) {
    ConfirmedTime time;
    time.Step(kStart, 0);
    time.Step(kStart + kYear, 1);
    EXPECT_EQ(time.Step(kStart + 2 * kYear, 1001), kYear - 1000);
    time.Step(kStart + 2 * kYear + 3000, 4001);
    EXPECT_EQ(time.Get(), kStart + 4001);
    time.Step(kStart + 2 * kYear + 3600, 4601);
    EXPECT_EQ(time.Get(), kStart + 2 * kYear + 3600);
}

TEST(ConfirmedTimeTest, TrustedClockIsFollowed) {
    ConfirmedTime time;
    time.Step(kStart, 0);
    time.Step(kStart + kYear, 1);
    time.Trust();
    EXPECT_EQ(time.Get(), kStart + kYear);
    EXPECT_EQ(time.Step(kStart + kYear + 1, 2), 0);
    EXPECT_EQ(time.Get(), kStart + kYear + 1);
}

TEST(ConfirmedTimeTest, IsNeverAheadOfTheClock) {
    ConfirmedTime time;
    time.Step(kStart, 0);
    EXPECT_EQ(time.Step(kStart - kYear, 1), -kYear - 1);
    EXPECT_EQ(time.Get(), kStart - kYear);
    // The clock is put right before anybody has believed it.
    EXPECT_EQ(time.Step(kStart + 2, 2), kYear + 1);
    EXPECT_EQ(time.Get(), kStart + 2);
}

TEST(ConfirmedTimeTest, LooksAheadWithoutAStep) {
    ConfirmedTime time;
    time.Step(kStart, 0);
    EXPECT_EQ(time.At(kStart + 600, 600), kStart + 600);
    EXPECT_EQ(time.At(kStart + kYear, 1), kStart + 1);
    EXPECT_EQ(time.Get(), kStart);
    EXPECT_EQ(time.Step(kStart + 2, 2), 0);
}

TEST(ConfirmedTimeTest, MachineThatStoodStillIsNoJump) {
    ConfirmedTime time;
    time.Step(kStart, 0);
    EXPECT_EQ(time.Step(kStart + kYear, kYear), 0);
    EXPECT_EQ(time.Get(), kStart + kYear);
}

}  // namespace
}  // namespace kalvex::server
