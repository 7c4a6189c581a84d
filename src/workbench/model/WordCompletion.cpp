#include "workbench/model/WordCompletion.h"

#include <algorithm>

#include "engine/ScriptText.h"
#include "text/CodePage.h"
#include "text/LineScanner.h"
#include "workbench/model/EditorSettings.h"

namespace kalvex::workbench {

namespace {

// What is read of a line in search of a declaration.
constexpr std::size_t kScannedLength = 500;

constexpr std::string_view kPoint = ".";
constexpr std::string_view kArrow = "->";
constexpr std::string_view kSeparators[] = {kPoint, kArrow, "::"};

// The separator that ends at the offset; empty when none does.
std::string_view SeparatorBefore(std::string_view text) {
    const auto* const separator = std::ranges::find_if(
        kSeparators, [text](std::string_view one) { return text.ends_with(one); });
    return separator == std::end(kSeparators) ? std::string_view() : *separator;
}

bool IsWhiteSpace(char c) {
    return c == ' ' || c == '\t';
}

bool Parts(char c) {
    return IsWordDelimiter(c) || kSpecialDelimiters.find(c) != std::string_view::npos;
}

}  // namespace

std::size_t WordStart(std::string_view line, std::size_t offset) {
    std::size_t start = std::min(offset, line.size());
    while (start > 0 && !Parts(line[start - 1])) --start;
    return start;
}

std::string PrefixAt(std::string_view line, std::size_t offset) {
    const std::size_t end = WordStart(line, offset);
    std::size_t start = end;
    for (;;) {
        const std::string_view separator = SeparatorBefore(line.substr(0, start));
        if (separator.empty()) return std::string(line.substr(start, end - start));
        start = WordStart(line, start - separator.size());
    }
}

std::string_view WordAt(std::string_view line, std::size_t offset) {
    if (offset >= line.size() || Parts(line[offset])) return {};
    const std::size_t start = WordStart(line, offset);
    return line.substr(start, WordEnd(line, start) - start);
}

const PrefixRow* WordCompletion::FindPrefix(std::string_view prefix) const {
    const auto row = std::ranges::find(m_prefixes, prefix, &PrefixRow::prefix);
    return row == m_prefixes.end() ? nullptr : &*row;
}

bool WordCompletion::IsKnown(std::string_view prefix, const ScriptLines& script) {
    if (prefix.empty()) return false;
    return FindPrefix(prefix) != nullptr || prefix == m_last.prefix ||
           ScanDeclarations(prefix, script);
}

bool WordCompletion::ScanDeclarations(std::string_view prefix, const ScriptLines& script) {
    std::string buffer;
    for (int number = 0; number < script.count; ++number) {
        engine::NormaliseLine(script.line(number).substr(0, kScannedLength), buffer);
        std::string_view line = buffer;
        const std::string_view keyword = text::NextToken(line);
        const auto declaration =
            std::ranges::find_if(Declarations(), [keyword](const DeclarationRow& row) {
                return text::EqualNoCase(row.keyword, keyword);
            });
        if (declaration == Declarations().end()) continue;
        std::string name(text::NextToken(line));
        name += kPoint;
        if (!text::EqualNoCase(name, prefix)) continue;
        m_last = {std::string(prefix), declaration->kind};
        return true;
    }
    m_last = {};
    return false;
}

OfferedWords WordCompletion::MembersOf(std::string_view prefix, const ScriptLines& script) {
    if (!IsKnown(prefix, script)) return {};
    const PrefixRow* const known = FindPrefix(prefix);
    if (known != nullptr) return {known->members, kMemberImage};
    const auto declaration = std::ranges::find(Declarations(), m_last.kind, &DeclarationRow::kind);
    return {declaration->members(), kMemberImage};
}

Offer WordCompletion::OnTyped(char typed, std::string_view line, std::size_t offset,
                              const ScriptLines& script) {
    if (kIntelliSenseChars.find(typed) == std::string_view::npos) return {};
    const std::size_t from = WordStart(line, offset);
    const std::string prefix = PrefixAt(line, offset);
    const OfferedWords list = MembersOf(prefix, script);
    constexpr std::string_view kTwoPoints = "..";
    if (!list.IsEmpty() || !prefix.ends_with(kTwoPoints)) return {list, from, {}};
    const std::size_t name = prefix.size() - kTwoPoints.size();
    const OfferedWords behindArrow = MembersOf(prefix.substr(0, name).append(kArrow), script);
    return {behindArrow, from - kTwoPoints.size(), kArrow};
}

Offer WordCompletion::OnCommand(std::string_view line, std::size_t offset,
                                const ScriptLines& script) {
    const std::size_t caret = std::min(offset, line.size());
    const std::string prefix = PrefixAt(line, caret);
    if (!prefix.empty()) return {MembersOf(prefix, script), WordStart(line, caret), {}};
    if (caret > 0 && !IsWhiteSpace(line[caret - 1])) return {};
    return {KeywordCompletion(), caret, {}};
}

}  // namespace kalvex::workbench
