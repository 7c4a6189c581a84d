// The one line scanner. A leaf: it includes nothing of ours and has no state.
#pragma once

#include <string_view>

namespace kalvex::text {

// Takes the next token off the front of `text`. Words, strings with both quotes, two-character
// operators and single characters; an empty token when only blanks are left. The token is a view
// into the text.
std::string_view NextToken(std::string_view& text);

// Takes blanks off both ends. Only the blank counts: tabs are gone from script lines.
std::string_view TrimBlanks(std::string_view text);

// A character of a word: digits, ASCII and Polish letters (Windows-1250), "-.:\_@*?".
bool IsWordCharacter(char c);
// A digit, an ASCII or a Polish letter.
bool IsLetterOrDigit(char c);

}  // namespace kalvex::text
