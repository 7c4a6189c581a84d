#include "platform/Clock.h"

namespace kalvex::platform {

std::int64_t VirtualClock::Now() const {
    const std::int64_t seconds = m_milliseconds / 1000;
    return m_milliseconds % 1000 < 0 ? seconds - 1 : seconds;
}

bool VirtualClock::SetSystemTime(std::int64_t seconds) {
    m_milliseconds = seconds * 1000;
    return true;
}

void VirtualClock::Advance(std::int64_t milliseconds) {
    m_milliseconds += milliseconds;
    m_elapsed += milliseconds;
}

}  // namespace kalvex::platform
