// Message texts with places for names and numbers, as the translator's keys have them.
#pragma once

#include <initializer_list>
#include <span>
#include <string>
#include <string_view>

namespace kalvex::text {

// The pattern with each "%s", "%d" and "%u" replaced by the next argument, and each "%2$s" by the
// one of that number, from 1. Arguments without a place are left out, places without an argument
// stay empty. No other "%" has a meaning.
std::string FormatText(std::string_view pattern, std::initializer_list<std::string_view> arguments);
std::string FormatText(std::string_view pattern, std::span<const std::string> arguments);

}  // namespace kalvex::text
