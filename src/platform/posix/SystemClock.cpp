#include "platform/posix/SystemClock.h"

#include <ctime>

namespace kalvex::platform {

std::int64_t SystemClock::Now() const {
    return std::time(nullptr);
}

// Counts while the machine sleeps, too.
std::int64_t SystemClock::Elapsed() const {
    timespec now{};
    clock_gettime(CLOCK_BOOTTIME, &now);
    return now.tv_sec;
}

bool SystemClock::SetSystemTime(std::int64_t seconds) {
    const timespec when{seconds, 0};
    return clock_settime(CLOCK_REALTIME, &when) == 0;
}

}  // namespace kalvex::platform
