// Ranges of network addresses: "10.1.2.3", "10.1.0.0/16", "fd00::/8". Any thread.
#pragma once

#include <string_view>

namespace kalvex::platform {

bool IsAddressRange(std::string_view text);

// False as well when one of the two is no such text. An IPv4 address in its IPv6 form counts as the
// IPv4 address.
bool IsInRange(std::string_view address, std::string_view range);

}  // namespace kalvex::platform
