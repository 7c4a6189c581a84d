// The texts that the host's operations log.
#pragma once

#include <initializer_list>
#include <span>
#include <string>
#include <string_view>

namespace kalvex {

// The text with the values in the place of its "%s" and "%d", in order. A text has as many places
// as there are values.
std::string FillIn(std::string_view text, std::span<const std::string> values);
std::string FillIn(std::string_view text, std::initializer_list<std::string> values);

}  // namespace kalvex
