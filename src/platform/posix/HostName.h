#pragma once

#include <string>

namespace kalvex::platform {

// Of this machine (UTF-8); "localhost" when it has none. Any thread.
std::string HostName();

}  // namespace kalvex::platform
