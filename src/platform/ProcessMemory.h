// How much memory this process takes. Any thread.
#pragma once

#include <cstdint>

namespace kalvex::platform {

// Bytes of physical memory that it occupies now; 0 when the system does not tell.
std::uint64_t ResidentBytes();

}  // namespace kalvex::platform
