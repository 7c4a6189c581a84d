// Where this program is installed.
#pragma once

#include <filesystem>

namespace kalvex::platform {

// The folder above that of the program, below which "share" and "lib" are; empty when it cannot be
// found out.
std::filesystem::path InstallationPrefix();

}  // namespace kalvex::platform
