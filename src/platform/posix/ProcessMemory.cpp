#include "platform/ProcessMemory.h"

#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>

namespace kalvex::platform {

namespace {

constexpr std::uint64_t kMuch = std::uint64_t{32} << 20;

}  // namespace

std::uint64_t ResidentBytes() {
    std::ifstream file("/proc/self/statm");
    std::uint64_t pages = 0;
    std::uint64_t residentPages = 0;
    if (!(file >> pages >> residentPages)) return 0;
    return residentPages * static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
}

void MemoryReturn::Step() {
    const std::uint64_t resident = ResidentBytes();
    m_least = std::min(m_least, resident);
    if (resident < m_least + kMuch) return;
    if (::mallinfo2().fordblks >= kMuch) ::malloc_trim(0);
    m_least = ResidentBytes();
}

}  // namespace kalvex::platform
