// Names against patterns.
#pragma once

#include <string_view>

namespace kalvex::text {

namespace PatternOption {
inline constexpr int Wildcards = 1;  // "*" and "?" are honoured
inline constexpr int Whole = 2;      // the whole text must match
inline constexpr int Anywhere =
    4;  // a match anywhere will do; with neither it must be at the start
inline constexpr int NoCase = 8;
inline constexpr int VariableNames = Wildcards | Whole | NoCase;
}  // namespace PatternOption

bool CompareWithPattern(std::string_view text, std::string_view pattern, int options);

}  // namespace kalvex::text
