#include "workbench/model/EditorSettings.h"

#include <algorithm>
#include <iterator>

#include "operands/Keywords.h"
#include "workbench/model/ScriptWords.h"

namespace kalvex::workbench {

namespace {

namespace Keyword = operands::Keyword;

constexpr ColourBlock kColourBlocks[] = {
    {":", kLineEnd, TextStyle::Label, "darkred"},
    {";", kLineEnd, TextStyle::Comment, "darkgreen"},
    {"\"", "\"", TextStyle::String, "red"},
};

constexpr OutlineBlock kOutlineBlocks[] = {
    {"\"", "\"", "\"\"", false, true},
    {";", kLineEnd, "Komentarz", false, true},
    {Keyword::If, Keyword::Endif, "IF ... THEN ... ENDIF", true, false},
    {Keyword::Procedure, Keyword::End, "PROCEDURE ... END", true, false},
};

constexpr std::string_view kEscapeSequences[] = {"\\\"", "\\\\"};

constexpr std::string_view kHyperlinkPrefixes[] = {
    "http://",   "ftp://",    "mailto:",     "news://", "file://",
    "telnet://", "gopher://", "prospero://", "wais://", "nntp://",
};

std::vector<std::string_view> ListOf(Words words) {
    return {words.begin(), words.end()};
}

// A function of numbers has its own colour; REMOVEALL is known but not offered.
std::vector<std::string_view> PlainKeywords() {
    std::vector<std::string_view> words;
    std::ranges::copy_if(KeywordWords(), std::back_inserter(words), [](std::string_view word) {
        return std::ranges::find(FunctionWords(), word) == FunctionWords().end();
    });
    words.emplace_back("REMOVEALL");
    return words;
}

// YEAR is known but not offered.
std::vector<std::string_view> TimeWords() {
    std::vector<std::string_view> words = ListOf(TimeMembers());
    words.emplace_back("YEAR");
    return words;
}

}  // namespace

std::size_t WordEnd(std::string_view line, std::size_t start) {
    std::size_t end = start;
    while (end < line.size() && !IsWordDelimiter(line[end])) ++end;
    return end;
}

std::size_t BlockEnd(std::string_view line, std::size_t start, std::string_view end) {
    if (end == kLineEnd) return line.size();
    std::size_t at = start;
    while (at < line.size()) {
        const std::string_view rest = line.substr(at);
        if (rest.starts_with(end)) return at + end.size();
        const auto* const escape = std::ranges::find_if(
            kEscapeSequences,
            [rest](std::string_view sequence) { return rest.starts_with(sequence); });
        at += escape == std::end(kEscapeSequences) ? 1 : escape->size();
    }
    return line.size();
}

const std::vector<ColourGroup>& ColourGroups() {
    static const std::vector<ColourGroup> groups = {
        {TextStyle::Keyword, "blue", PlainKeywords()},
        {TextStyle::Function, "magenta", ListOf(FunctionWords())},
        {TextStyle::Member, "darkblue", ListOf(MemberWords())},
        {TextStyle::TimeMember, "darkmagenta", TimeWords()},
    };
    return groups;
}

std::span<const ColourBlock> ColourBlocks() {
    return kColourBlocks;
}

std::span<const OutlineBlock> OutlineBlocks() {
    return kOutlineBlocks;
}

std::span<const std::string_view> EscapeSequences() {
    return kEscapeSequences;
}

std::span<const std::string_view> HyperlinkPrefixes() {
    return kHyperlinkPrefixes;
}

}  // namespace kalvex::workbench
