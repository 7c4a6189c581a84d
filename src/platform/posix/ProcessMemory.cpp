#include "platform/ProcessMemory.h"

#include <unistd.h>

#include <fstream>

namespace kalvex::platform {

std::uint64_t ResidentBytes() {
    std::ifstream file("/proc/self/statm");
    std::uint64_t pages = 0;
    std::uint64_t residentPages = 0;
    if (!(file >> pages >> residentPages)) return 0;
    return residentPages * static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
}

}  // namespace kalvex::platform
