#include "platform/SteadyTime.h"

#include <sys/resource.h>

#include <chrono>
#include <ctime>

namespace kalvex::platform {

namespace {

constexpr std::int64_t kSecond = 1'000'000;  // microseconds

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

std::int64_t CoarseMicroseconds() {
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
    return now.tv_sec * kSecond + now.tv_nsec / 1000;
}

ThreadTime ThisThreadTime() {
    rusage used{};
    ::getrusage(RUSAGE_THREAD, &used);
    return {(used.ru_utime.tv_sec + used.ru_stime.tv_sec) * kSecond + used.ru_utime.tv_usec +
                used.ru_stime.tv_usec,
            used.ru_nvcsw};
}

}  // namespace kalvex::platform
