// The colours of a script's text. A line is styled by itself, whatever stands above it. Any thread.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace kalvex::workbench {

enum class TextStyle : unsigned char {
    Plain,
    Keyword,
    Function,
    Member,
    TimeMember,
    Label,
    Comment,
    String,
    Link,
};
inline constexpr int kTextStyleCount = 9;

// One style a byte of the line, which is without its line end. Any encoding that contains ASCII
// will do: every byte from 0x80 on is a letter of a word.
void StyleLine(std::string_view line, std::vector<TextStyle>& styles);

// The link at the byte, whole; empty when there is none.
std::string_view LinkAt(std::string_view line, std::size_t offset);

// 0xRRGGBB, on a light and on a dark background.
struct StyleColours {
    unsigned light;
    unsigned dark;
};
StyleColours ColoursOf(TextStyle style);
StyleColours EditorBackground(bool readOnly);

}  // namespace kalvex::workbench
