#include "platform/SteadyTime.h"

#include <chrono>

namespace kalvex::platform {

namespace {

template <class Unit>
std::int64_t SteadyTime() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<Unit>(now).count();
}

}  // namespace

std::int64_t SteadyMicroseconds() {
    return SteadyTime<std::chrono::microseconds>();
}

std::int64_t SteadyMilliseconds() {
    return SteadyTime<std::chrono::milliseconds>();
}

}  // namespace kalvex::platform
