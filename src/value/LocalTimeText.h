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

// ---- where each time must come back as it was

// A reading that clocks show twice is followed by its offset: "2024-10-27 02:30:00+01:00".
std::string FormatExactLocalTime(std::int64_t time);

enum class LocalReading {
    Exact,
    Unreadable,
    Twice,    // and no offset tells which of the two is meant
    LeftOut,  // no clock ever shows it
};

// An offset may stand behind any reading. `time` is set when it is exact.
LocalReading ReadExactLocalTime(std::string_view text, std::int64_t& time);

}  // namespace kalvex::value
