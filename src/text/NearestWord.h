// The word that was meant by one that nobody knows. Any thread.
#pragma once

#include <span>
#include <string_view>

namespace kalvex::text {

// The first of those that are nearest to the word by letters put in, left out and replaced, case
// aside; empty where that takes more than two letters, or half of the word. Windows-1250.
std::string_view FindNearestWord(std::string_view word, std::span<const std::string_view> known);

}  // namespace kalvex::text
