#include "app/TickLateness.h"

#include <gtest/gtest.h>

namespace kalvex::app {
namespace {

TEST(TickLatenessTest, NothingBeforeTheFirstTick) {
    const TickLateness lateness;
    EXPECT_EQ(lateness.GetCount(), 0u);
    EXPECT_EQ(lateness.GetPercentile(0.99), 0);
    EXPECT_EQ(lateness.GetMax(), 0);
}

TEST(TickLatenessTest, SmallFiguresAreExact) {
    TickLateness lateness;
    for (int i = 1; i <= 10; ++i) lateness.Add(i);
    EXPECT_EQ(lateness.GetCount(), 10u);
    EXPECT_EQ(lateness.GetSum(), 55);
    EXPECT_EQ(lateness.GetMax(), 10);
    EXPECT_EQ(lateness.GetPercentile(0.5), 5);
    EXPECT_EQ(lateness.GetPercentile(0.51), 6);
    EXPECT_EQ(lateness.GetPercentile(1), 10);
}

TEST(TickLatenessTest, EarlyTickCountsAsOneInTime) {
    TickLateness lateness;
    lateness.Add(-5);
    EXPECT_EQ(lateness.GetCount(), 1u);
    EXPECT_EQ(lateness.GetSum(), 0);
    EXPECT_EQ(lateness.GetPercentile(1), 0);
}

TEST(TickLatenessTest, PercentileIsNeverTooLowAndAtMostAnEighthTooHigh) {
    for (std::int64_t value = 1; value < (std::int64_t{1} << 39); value = value * 21 / 16 + 1) {
        TickLateness lateness;
        lateness.Add(value);
        lateness.Add(std::int64_t{1} << 39);
        const std::int64_t half = lateness.GetPercentile(0.5);
        EXPECT_GE(half, value);
        EXPECT_LE(half, value + value / 8);
    }
}

TEST(TickLatenessTest, OneOfAHundredDoesNotShowInNinetyNine) {
    TickLateness lateness;
    for (int i = 0; i < 99; ++i) lateness.Add(3);
    lateness.Add(2'000'000);
    EXPECT_EQ(lateness.GetPercentile(0.99), 3);
    EXPECT_EQ(lateness.GetMax(), 2'000'000);
    lateness.Add(2'000'000);
    EXPECT_EQ(lateness.GetPercentile(0.99), 2'000'000);
}

TEST(TickLatenessTest, BeyondTheClassesTheLastOneHolds) {
    TickLateness lateness;
    lateness.Add(std::int64_t{1} << 60);
    EXPECT_EQ(lateness.GetMax(), (std::int64_t{1} << 40) - 1);
    EXPECT_EQ(lateness.GetPercentile(0.5), (std::int64_t{1} << 40) - 1);
}

}  // namespace
}  // namespace kalvex::app
