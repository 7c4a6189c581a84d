// Texts that others give, as a line of a log or of a terminal may have them: a control character of
// theirs begins no line and steers nothing. It is written as \n, \r, \t, or by its number, \x1b.
// All else stays, a backslash too, so a text may come by here twice. Any thread.
#pragma once

#include <string>
#include <string_view>

namespace kalvex::text {

inline constexpr std::string_view kControlNumber = "\\x";

// Of an engine text: the characters below the blank, 0x7f, and the five bytes that stand for C1
// controls.
std::string EscapeControls(std::string_view windows1250);

// Of UTF-8: those below the blank, 0x7f, and C1. `kept` stays; `number` stands before the two
// digits of a number.
std::string EscapeUtf8Controls(std::string_view utf8, char kept = ' ',
                               std::string_view number = kControlNumber);

}  // namespace kalvex::text
