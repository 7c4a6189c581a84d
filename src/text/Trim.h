// Cuts the characters of a set off the ends of a text.
#pragma once

#include <algorithm>
#include <string_view>

namespace kalvex::text {

inline constexpr std::string_view kBlanksAndTabs = " \t";

inline std::string_view TrimLeft(std::string_view text, std::string_view set) {
    return text.substr(std::min(text.find_first_not_of(set), text.size()));
}

inline std::string_view TrimRight(std::string_view text, std::string_view set) {
    return text.substr(0, text.find_last_not_of(set) + 1);
}

inline std::string_view Trim(std::string_view text, std::string_view set = kBlanksAndTabs) {
    return TrimRight(TrimLeft(text, set), set);
}

}  // namespace kalvex::text
