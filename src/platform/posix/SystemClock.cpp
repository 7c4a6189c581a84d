#include "platform/posix/SystemClock.h"

#include <ctime>

namespace kalvex::platform {

std::int64_t SystemClock::Now() const {
    return std::time(nullptr);
}

bool SystemClock::SetSystemTime(std::int64_t seconds) {
    const timespec when{seconds, 0};
    return clock_settime(CLOCK_REALTIME, &when) == 0;
}

}  // namespace kalvex::platform
