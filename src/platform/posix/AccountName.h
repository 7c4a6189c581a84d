#pragma once

#include <string>

namespace kalvex::platform {

// The account under which the process runs (Windows-1250); its number when the system has no name
// for it.
std::string AccountName();

// Whether the machine has a group of this name (UTF-8). Main thread.
bool HasSystemGroup(const std::string& name);

}  // namespace kalvex::platform
