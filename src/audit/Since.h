// From when on a person wants to see something: "2024-03-10", "2024-03-10 07:00",
// "2024-03-10 07:00:00", local times all, or so long ago: "30m", "2h", "7d". Any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace kalvex::audit {

// Seconds since 1970 GMT; nothing when the text is none of these.
std::optional<std::int64_t> ParseSince(std::string_view text, std::int64_t now);

}  // namespace kalvex::audit
