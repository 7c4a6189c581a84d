#include "platform/ProcessMemory.h"

#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>

namespace kalvex::platform {

namespace {

constexpr std::uint64_t kMuch = std::uint64_t{32} << 20;

// Resident bytes that nothing uses which the allocator has given, and those of what it does not
// know, such as stacks and the program itself.
std::uint64_t SpareBytes() {
    const struct mallinfo2 info = ::mallinfo2();
    const std::uint64_t used = info.uordblks + info.hblkhd;
    const std::uint64_t resident = ResidentBytes();
    return resident - std::min(resident, used);
}

}  // namespace

std::uint64_t ResidentBytes() {
    std::ifstream file("/proc/self/statm");
    std::uint64_t pages = 0;
    std::uint64_t residentPages = 0;
    if (!(file >> pages >> residentPages)) return 0;
    return residentPages * static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
}

void MemoryReturn::Step() {
    const std::uint64_t spare = SpareBytes();
    m_least = std::min(m_least, spare);
    if (spare < m_least + kMuch) return;
    ::malloc_trim(0);
    m_least = SpareBytes();
}

}  // namespace kalvex::platform
