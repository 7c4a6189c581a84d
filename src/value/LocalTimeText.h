// Local times as people write them: "YYYY-MM-DD HH:MM:SS".
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kalvex::value {

// Seconds since 1970 GMT; nothing when the text has another form or names no day or time of day. A
// reading that the zone leaves out is read with the offset in force before the change.
std::optional<std::int64_t> ParseLocalTime(std::string_view text);

std::string FormatLocalTime(std::int64_t time);

}  // namespace kalvex::value
