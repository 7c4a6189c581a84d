// UTF-8, character by character.
#pragma once

#include <string_view>

namespace kalvex::text {

// The mark with which some editors begin a file.
inline constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

inline constexpr char32_t kNoCharacter = 0xFFFFFFFF;

// Takes one character off a text that is not empty; from a malformed beginning one byte, giving
// kNoCharacter.
char32_t TakeCharacter(std::string_view& text);

}  // namespace kalvex::text
