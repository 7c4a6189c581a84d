// The settings of the editor: how a line is cut into words, what is coloured, what folds, what is a
// link. The lexer, the outline and the completion read these tables. Any thread.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "workbench/model/ScriptStyles.h"

namespace kalvex::workbench {

inline constexpr int kEditorSettingsId = 12017;
inline constexpr std::string_view kEditorSettingsKind = "EDITOR_XML_SETTINGS";

inline constexpr std::string_view kWordDelimiters = " \t\n,./?<>;:\"'{[}]~`%^&*()-+=!";
inline constexpr std::string_view kSpecialDelimiters = ";.{}\n";
inline constexpr std::string_view kIntelliSenseChars = ".>:";

inline constexpr std::array<bool, 256> kIsWordDelimiter = [] {
    std::array<bool, 256> is{};
    for (const char c : kWordDelimiters) is[static_cast<unsigned char>(c)] = true;
    return is;
}();

constexpr bool IsWordDelimiter(char c) {
    return kIsWordDelimiter[static_cast<unsigned char>(c)];
}

// One behind the last byte of the word that begins at `start`.
std::size_t WordEnd(std::string_view line, std::size_t start);
// One behind the last byte of a block whose text begins at `start`; a block that is not closed ends
// with its line.
std::size_t BlockEnd(std::string_view line, std::size_t start, std::string_view end);

inline constexpr std::string_view kLineEnd = "\n";

struct ColourGroup {
    TextStyle style;
    const char* colour;
    std::vector<std::string_view> words;  // with case
};
const std::vector<ColourGroup>& ColourGroups();

struct ColourBlock {
    std::string_view start;
    std::string_view end;
    TextStyle style;
    const char* colour;
};
std::span<const ColourBlock> ColourBlocks();

struct OutlineBlock {
    std::string_view start;
    std::string_view end;
    std::string_view shownAs;  // Polish, UTF-8: in place of the text that is folded away
    bool nested;
    bool ignored;  // never folds, and what stands in it neither begins nor ends a block
};
std::span<const OutlineBlock> OutlineBlocks();

// Within a block that ends by a quote these stand for a character and do not end it.
std::span<const std::string_view> EscapeSequences();

std::span<const std::string_view> HyperlinkPrefixes();

// All of it as XML, UTF-8.
std::string EditorSettingsXml();

}  // namespace kalvex::workbench
