#include "platform/DurationCounts.h"

#include <gtest/gtest.h>

namespace kalvex::platform {
namespace {

TEST(DurationCountsTest, NothingBeforeTheFirst) {
    const DurationCounts counts;
    EXPECT_EQ(counts.GetCount(), 0u);
    EXPECT_EQ(counts.GetPercentile(0.99), 0);
    EXPECT_EQ(counts.GetMax(), 0);
}

TEST(DurationCountsTest, SmallFiguresAreExact) {
    DurationCounts counts;
    for (int i = 1; i <= 10; ++i) counts.Add(i);
    EXPECT_EQ(counts.GetCount(), 10u);
    EXPECT_EQ(counts.GetSum(), 55);
    EXPECT_EQ(counts.GetMax(), 10);
    EXPECT_EQ(counts.GetPercentile(0.5), 5);
    EXPECT_EQ(counts.GetPercentile(0.51), 6);
    EXPECT_EQ(counts.GetPercentile(1), 10);
}

TEST(DurationCountsTest, EarlyCountsAsInTime) {
    DurationCounts counts;
    counts.Add(-5);
    EXPECT_EQ(counts.GetCount(), 1u);
    EXPECT_EQ(counts.GetSum(), 0);
    EXPECT_EQ(counts.GetPercentile(1), 0);
}

TEST(DurationCountsTest, PercentileIsNeverTooLowAndAtMostAnEighthTooHigh) {
    for (std::int64_t value = 1; value < (std::int64_t{1} << 39); value = value * 21 / 16 + 1) {
        DurationCounts counts;
        counts.Add(value);
        counts.Add(std::int64_t{1} << 39);
        const std::int64_t half = counts.GetPercentile(0.5);
        EXPECT_GE(half, value);
        EXPECT_LE(half, value + value / 8);
    }
}

TEST(DurationCountsTest, OneOfAHundredDoesNotShowInNinetyNine) {
    DurationCounts counts;
    for (int i = 0; i < 99; ++i) counts.Add(3);
    counts.Add(2'000'000);
    EXPECT_EQ(counts.GetPercentile(0.99), 3);
    EXPECT_EQ(counts.GetMax(), 2'000'000);
    counts.Add(2'000'000);
    EXPECT_EQ(counts.GetPercentile(0.99), 2'000'000);
}

TEST(DurationCountsTest, BeyondTheClassesTheLastOneHolds) {
    DurationCounts counts;
    counts.Add(std::int64_t{1} << 60);
    EXPECT_EQ(counts.GetMax(), (std::int64_t{1} << 40) - 1);
    EXPECT_EQ(counts.GetPercentile(0.5), (std::int64_t{1} << 40) - 1);
}

}  // namespace
}  // namespace kalvex::platform
