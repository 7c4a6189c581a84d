#pragma once

#include <netinet/in.h>

#include <optional>
#include <string>

namespace kalvex::platform {

// The first IPv4 address of a host, port 0; nothing with the system's words in `error`. Any thread.
std::optional<sockaddr_in> ResolveHost(const std::string& address, std::string& error);

}  // namespace kalvex::platform
