// What a client says of itself may be anything. Engine texts; any thread.
#pragma once

#include <string>
#include <string_view>

namespace kalvex::vantrel {

// The name, cut to 255 characters, with its control characters escaped.
std::string Printable(std::string_view name);

}  // namespace kalvex::vantrel
