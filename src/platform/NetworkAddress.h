// Addresses as configurations have them: "plant.example:4300", "10.1.2.3:4300", "[::1]:4300". Any
// thread.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace kalvex::platform {

// False when the text is no address. The host stands without brackets.
bool ReadAddress(std::string_view text, std::string& host, std::uint16_t& port);

// "localhost" or a loopback address. Another name counts as one beyond this machine whatever it
// means at the moment.
bool IsLoopback(std::string_view host);

}  // namespace kalvex::platform
