#include "platform/SteadyTime.h"

#include <gtest/gtest.h>

namespace kalvex::platform {
namespace {

TEST(SteadyTimeTest, NeverGoesBack) {
    const std::int64_t before = SteadyMicroseconds();
    EXPECT_GE(SteadyMicroseconds(), before);
    EXPECT_GT(before, 0);
}

TEST(SteadyTimeTest, IsOneClockInBothUnits) {
    const std::int64_t before = SteadyMicroseconds();
    const std::int64_t between = SteadyMilliseconds();
    const std::int64_t after = SteadyMicroseconds();
    EXPECT_LE(before / 1000, between);
    EXPECT_LE(between, after / 1000);
}

}  // namespace
}  // namespace kalvex::platform
