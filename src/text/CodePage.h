// Windows-1250, the code page of scripts and of all engine texts, and UTF-8, that of everything the
// programs show. Conversions never fail: towards Windows-1250 a character without a counterpart
// becomes "?", and so does every byte that is no part of well-formed UTF-8; the five undefined
// bytes map to the C1 control of the same number and back. Any thread.
#pragma once

#include <string>
#include <string_view>

namespace kalvex::text {

std::string ToUtf8(std::string_view windows1250);
std::string FromUtf8(std::string_view utf8);
std::string FromWide(std::wstring_view wide);

// All of it is well-formed UTF-8.
bool IsUtf8(std::string_view text);

// Upper and lower case of one byte and of a text, Polish and other Latin letters included.
unsigned char ToUpper(unsigned char c);
unsigned char ToLower(unsigned char c);
std::string ToUpper(std::string_view text);
std::string ToLower(std::string_view text);
bool EqualNoCase(std::string_view a, std::string_view b);

}  // namespace kalvex::text
