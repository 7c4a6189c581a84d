// How much memory this process takes. Any thread.
#pragma once

#include <cstdint>

namespace kalvex::platform {

// Bytes of physical memory that it occupies now; 0 when the system does not tell.
std::uint64_t ResidentBytes();

// Has the allocator give back what it keeps of memory that was freed, once that has become much: it
// does so by itself only at the end of what it has, which one small block keeps from being free.
// One thread.
class MemoryReturn {
  public:
    // About every half minute. Takes some milliseconds when there is something to give back.
    void Step();

  private:
    std::uint64_t m_least = 0;  // spare bytes since the allocator was asked last
};

inline constexpr std::int64_t kMemoryReturnPeriod = 30'000;  // ms

}  // namespace kalvex::platform
