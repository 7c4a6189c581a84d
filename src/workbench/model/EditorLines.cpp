#include "workbench/model/EditorLines.h"

#include <algorithm>

#include "text/CodePage.h"

namespace kalvex::workbench {

namespace {

constexpr std::string_view kReturnSign = "\u240D";
constexpr std::string_view kForeign = "?";

std::string Replaced(std::string text, std::string_view what, std::string_view by) {
    for (std::size_t at = text.find(what); at != std::string::npos;
         at = text.find(what, at + by.size())) {
        text.replace(at, what.size(), by);
    }
    return text;
}

bool IsAscii(char c) {
    return static_cast<unsigned char>(c) < 0x80;
}

bool Continues(char c) {
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

}  // namespace

std::string ToBuffer(std::string_view engineLine) {
    return Replaced(text::ToUtf8(engineLine), "\r", kReturnSign);
}

std::string FromBuffer(std::string_view bufferLine) {
    if (std::ranges::all_of(bufferLine, IsAscii)) return std::string(bufferLine);
    return text::FromUtf8(Replaced(std::string(bufferLine), kReturnSign, "\r"));
}

std::optional<ForeignPlace> FindForeign(std::string_view buffer) {
    for (std::size_t at = 0; at < buffer.size();) {
        std::size_t end = at + 1;
        if (!IsAscii(buffer[at])) {
            while (end < buffer.size() && Continues(buffer[end])) ++end;
            const std::string_view character = buffer.substr(at, end - at);
            if (FromBuffer(character) == kForeign) return ForeignPlace{at, character};
        }
        at = end;
    }
    return std::nullopt;
}

}  // namespace kalvex::workbench
