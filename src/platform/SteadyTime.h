// The time of a clock that nobody sets, for what is measured or waited for. Any thread.
#pragma once

#include <cstdint>

namespace kalvex::platform {

// Since some moment.
std::int64_t SteadyMicroseconds();
std::int64_t SteadyMilliseconds();

}  // namespace kalvex::platform
