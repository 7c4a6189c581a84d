#include "platform/posix/Installation.h"

namespace kalvex::platform {

std::filesystem::path InstallationPrefix() {
    std::error_code fault;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", fault);
    return program.parent_path().parent_path();
}

}  // namespace kalvex::platform
