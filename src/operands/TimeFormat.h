// Times by the formats of scripts, which are those of strftime. Names are English and nothing
// depends on a locale. Any bytes may stand in a format: a percent sign that begins no conversion of
// the standard stands for itself.
#pragma once

#include <ctime>
#include <optional>
#include <string>
#include <string_view>

namespace kalvex::operands {

inline constexpr std::string_view kDefaultTimeFormat = "%Y-%m-%d %H:%M:%S";

std::string FormatTime(const std::tm& fields, std::string_view format);

// The fields that the text gives; the others are 0. The text must be what the format makes of its
// fields, digit by digit. Nothing when it is not, or when minute, second, hour (0 to 24), day,
// month or year (1000 to 9999) is out of its bounds.
std::optional<std::tm> ReadTime(const std::string& text, std::string_view format);

}  // namespace kalvex::operands
