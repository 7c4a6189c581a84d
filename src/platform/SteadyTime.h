// The time of a clock that nobody sets, for what is measured or waited for. Any thread.
#pragma once

#include <cstdint>

namespace kalvex::platform {

// Since some moment.
std::int64_t SteadyMicroseconds();
std::int64_t SteadyMilliseconds();
// Some milliseconds behind, and far cheaper to read.
std::int64_t CoarseMicroseconds();

// What the calling thread has had so far.
struct ThreadTime {
    std::int64_t processor = 0;  // microseconds
    std::int64_t waits = 0;      // how often it gave the processor up by itself
};
ThreadTime ThisThreadTime();

}  // namespace kalvex::platform
