// Times by the formats of scripts, which are those of strftime. Names are English and nothing
// depends on a locale. Any bytes may stand in a format.
#pragma once

#include <ctime>
#include <optional>
#include <string>
#include <string_view>

namespace kalvex::operands {

inline constexpr std::string_view kDefaultTimeFormat = "%Y-%m-%d %H:%M:%S";

// A percent sign that begins no conversion of the standard stands for itself.
std::string FormatTime(const std::tm& fields, std::string_view format);

// The fields that the text gives; the others are 0, and tm_zone is null. The text must be what the
// format makes of its fields, digit by digit. Nothing when it is not, when the format has a percent
// sign that begins no conversion, or when the day of the month or the year (1000 to 9999) is out of
// its bounds.
std::optional<std::tm> ReadTime(std::string_view text, std::string_view format);

}  // namespace kalvex::operands
