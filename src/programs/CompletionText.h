// What the scripts for the completion of shells are filled in with. UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace kalvex::programs {

// Puts the text in the place of the first mention of `place`, such as @OPTIONS@, if there is one.
void FillPlace(std::string& script, std::string_view place, const std::string& text);

// Behind a blank, unless it is the first.
void AddWord(std::string& list, std::string_view word);

// For single quotes, with what has a meaning of its own in a description quoted.
std::string ZshText(std::string_view text);

}  // namespace kalvex::programs
