#include "app/Pace.h"

#include <gtest/gtest.h>

namespace kalvex::app {
namespace {

int TicksAt(Pace& pace, std::int64_t now) {
    int ticks = 0;
    while (pace.TakeTick(now)) ++ticks;
    return ticks;
}

TEST(PaceTest, OneTickEachMillisecond) {
    Pace pace;
    EXPECT_EQ(TicksAt(pace, 0), 1);
    EXPECT_EQ(pace.NextDue(), 1);
    EXPECT_EQ(TicksAt(pace, 0), 0);
    EXPECT_EQ(TicksAt(pace, 1), 1);
    EXPECT_EQ(TicksAt(pace, 2), 1);
}

TEST(PaceTest, LateTicksAreCaughtUp) {
    Pace pace;
    EXPECT_EQ(TicksAt(pace, 40), 41);
    EXPECT_EQ(TicksAt(pace, 100), 60);
    EXPECT_EQ(pace.NextDue(), 101);
}

TEST(PaceTest, StallIsNoBurst) {
    Pace pace;
    EXPECT_EQ(TicksAt(pace, 0), 1);
    EXPECT_EQ(TicksAt(pace, 60000), 101);
    EXPECT_EQ(pace.NextDue(), 60001);
    EXPECT_EQ(TicksAt(pace, 60001), 1);
}

}  // namespace
}  // namespace kalvex::app
