// A whole number as people write it.
#pragma once

#include <charconv>
#include <optional>
#include <string_view>

namespace kalvex::text {

// The number that the text is, decimal, with "-" in front if it is negative. Nothing when the text
// is anything else or the number does not fit.
template <class Number>
std::optional<Number> ReadWholeNumber(std::string_view text) {
    Number number = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, fault] = std::from_chars(text.data(), end, number);
    if (fault != std::errc() || rest != end) return std::nullopt;
    return number;
}

}  // namespace kalvex::text
