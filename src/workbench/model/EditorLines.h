// A line as the editor's buffer has it: UTF-8, with a sign in the place of a carriage return within
// the line, which the buffer would take for a line end. The buffer may hold characters that
// Windows-1250 lacks, until the text is saved. Any thread.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace kalvex::workbench {

std::string ToBuffer(std::string_view engineLine);
// What the code page lacks becomes "?".
std::string FromBuffer(std::string_view bufferLine);

// The first byte of the first character that cannot be saved, and that character.
struct ForeignPlace {
    std::size_t offset;
    std::string_view character;
};
std::optional<ForeignPlace> FindForeign(std::string_view buffer);

}  // namespace kalvex::workbench
