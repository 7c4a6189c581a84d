#include "platform/Clock.h"

#include <gtest/gtest.h>

namespace kalvex::platform {
namespace {

TEST(ClockTest, VirtualClockCountsWholeSecondsAlsoBefore1970) {
    VirtualClock clock(-2);
    EXPECT_EQ(clock.Now(), -2);
    clock.Advance(999);
    EXPECT_EQ(clock.Now(), -2);
    clock.Advance(1);
    EXPECT_EQ(clock.Now(), -1);
    clock.Advance(1000);
    EXPECT_EQ(clock.Now(), 0);
    clock.Advance(999);
    EXPECT_EQ(clock.Now(), 0);
    clock.Advance(1);
    EXPECT_EQ(clock.Now(), 1);
}

}  // namespace
}  // namespace kalvex::platform
