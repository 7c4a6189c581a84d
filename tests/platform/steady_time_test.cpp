#include "platform/SteadyTime.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <thread>

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

TEST(SteadyTimeTest, CoarseClockIsTheSameOneAndNotAhead) {
    const std::int64_t before = CoarseMicroseconds();
    EXPECT_LE(before, SteadyMicroseconds());
    EXPECT_GE(CoarseMicroseconds(), before);
    EXPECT_GT(before, 0);
}

TEST(SteadyTimeTest, ThreadHasTheTimeThatItUsesAndTheTimesThatItWaits) {
    const ThreadTime before = ThisThreadTime();
    ThreadTime after = before;
    while (after.processor == before.processor) after = ThisThreadTime();
    EXPECT_GT(after.processor, before.processor);
    int there[2];
    int back[2];
    ASSERT_TRUE(::pipe(there) == 0 && ::pipe(back) == 0);
    std::thread echo([&] {
        char byte = 0;
        while (::read(there[0], &byte, 1) == 1) EXPECT_EQ(::write(back[1], &byte, 1), 1);
    });
    char byte = 'x';
    while (ThisThreadTime().waits == before.waits) {
        EXPECT_EQ(::write(there[1], &byte, 1), 1);
        EXPECT_EQ(::read(back[0], &byte, 1), 1);
    }
    EXPECT_GT(ThisThreadTime().waits, before.waits);
    ::close(there[1]);
    echo.join();
    for (const int end : {there[0], back[0], back[1]}) ::close(end);
}

}  // namespace
}  // namespace kalvex::platform
