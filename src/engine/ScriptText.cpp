#include "engine/ScriptText.h"

#include <algorithm>
#include <iterator>

namespace kalvex::engine {

namespace {

std::string_view WithoutIndent(std::string_view line) {
    return line.substr(std::min(line.find_first_not_of(" \t"), line.size()));
}

}  // namespace

std::vector<std::string> SplitLines(std::string_view text) {
    std::vector<std::string> lines;
    for (;;) {
        const std::size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        if (end == std::string_view::npos) {
            lines.emplace_back(line);
            return lines;
        }
        if (line.ends_with('\r')) line.remove_suffix(1);
        lines.emplace_back(line);
        text.remove_prefix(end + 1);
    }
}

void NormaliseLine(std::string_view raw, std::string& line) {
    line.assign(WithoutIndent(raw));
    std::ranges::replace(line, '\t', ' ');
}

char* NormaliseLine(std::string_view raw, char* line) {
    return std::ranges::replace_copy(WithoutIndent(raw), line, '\t', ' ').out;
}

void LineList::SetText(std::string_view text) {
    m_lines = SplitLines(text);
}

std::string LineList::GetText() const {
    std::string text;
    for (const std::string& line : m_lines) {
        if (&line != &m_lines.front()) text += "\r\n";
        text += line;
    }
    return text;
}

void LineList::InsertScriptText(int line, std::string_view text, bool replace) {
    std::vector<std::string> added = SplitLines(text);
    // The text brings its own line end; a last line that it replaces has none to give up.
    const bool last = replace && line + 1 == GetLineCount();
    if (!last && added.back().empty() && added.size() > 1) added.pop_back();
    ReplaceLines(replace ? line : line + 1, replace ? 1 : 0, std::move(added));
}

void LineList::ReplaceLines(int first, int removed, std::vector<std::string> lines) {
    const std::size_t kept = std::min(lines.size(), static_cast<std::size_t>(removed));
    const auto position = m_lines.begin() + first;
    const auto added = lines.begin() + static_cast<std::ptrdiff_t>(kept);
    const auto behind = std::move(lines.begin(), added, position);
    if (added == lines.end()) {
        m_lines.erase(behind, position + removed);
    } else {
        m_lines.insert(behind, std::make_move_iterator(added),
                       std::make_move_iterator(lines.end()));
    }
}

}  // namespace kalvex::engine
