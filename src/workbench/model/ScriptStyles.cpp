#include "workbench/model/ScriptStyles.h"

#include <algorithm>
#include <unordered_map>

#include "workbench/model/EditorSettings.h"

namespace kalvex::workbench {

namespace {

using WordStyles = std::unordered_map<std::string_view, TextStyle>;

const WordStyles& StylesOfWords() {
    static const WordStyles words = [] {
        WordStyles styles;
        for (const ColourGroup& group : ColourGroups()) {
            for (const std::string_view word : group.words) styles.emplace(word, group.style);
        }
        return styles;
    }();
    return words;
}

struct ColourRow {
    TextStyle style;
    StyleColours colours;
};

constexpr ColourRow kColours[] = {
    {TextStyle::Plain, {0x000000, 0xD8D8D8}},      {TextStyle::Keyword, {0x0000FF, 0x5AA9F8}},
    {TextStyle::Function, {0xFF00FF, 0xFF7DF0}},   {TextStyle::Member, {0x00008B, 0x9FD8FF}},
    {TextStyle::TimeMember, {0x8B008B, 0xC792FF}}, {TextStyle::Label, {0x8B0000, 0xE8C060}},
    {TextStyle::Comment, {0x006400, 0x74C476}},    {TextStyle::String, {0xFF0000, 0xFF7B72}},
    {TextStyle::Link, {0x0066CC, 0x3FD6C8}},
};

constexpr StyleColours kWritable = {0xFFFFFF, 0x1E1E1E};
constexpr StyleColours kReadOnly = {0xDDDDDD, 0x333333};

bool EndsLink(char c) {
    return c == ' ' || c == '\t' || c == '"' || c == '<' || c == '>';
}

// How long the link is that begins at the front of the text, 0 without one.
std::size_t LinkLength(std::string_view text) {
    const auto prefixes = HyperlinkPrefixes();
    const auto prefix = std::ranges::find_if(
        prefixes, [text](std::string_view start) { return text.starts_with(start); });
    if (prefix == prefixes.end()) return 0;
    const auto end = std::ranges::find_if(text, EndsLink);
    const auto length = static_cast<std::size_t>(end - text.begin());
    return length > prefix->size() ? length : 0;
}

bool IsLinkStart(std::string_view line, std::size_t at) {
    return at == 0 || IsWordDelimiter(line[at - 1]);
}

const ColourBlock* BlockThatBegins(std::string_view rest) {
    const auto blocks = ColourBlocks();
    const auto block = std::ranges::find_if(
        blocks, [rest](const ColourBlock& row) { return rest.starts_with(row.start); });
    return block == blocks.end() ? nullptr : &*block;
}

// Styles one line from its front to its end.
class LineStyler {
  public:
    LineStyler(std::string_view line, std::vector<TextStyle>& styles)
        : m_line(line), m_styles(styles) {}

    void Run() {
        while (m_at < m_line.size()) {
            if (TakeLink() || TakeBlock()) continue;
            if (IsWordDelimiter(m_line[m_at])) {
                ++m_at;
            } else {
                TakeWord();
            }
        }
    }

  private:
    void Fill(std::size_t start, std::size_t end, TextStyle style) {
        std::fill(m_styles.begin() + static_cast<std::ptrdiff_t>(start),
                  m_styles.begin() + static_cast<std::ptrdiff_t>(end), style);
    }

    bool TakeLink() {
        const std::size_t length = IsLinkStart(m_line, m_at) ? LinkLength(m_line.substr(m_at)) : 0;
        if (length == 0) return false;
        Fill(m_at, m_at + length, TextStyle::Link);
        m_at += length;
        return true;
    }

    bool TakeBlock() {
        const ColourBlock* block = BlockThatBegins(m_line.substr(m_at));
        if (block == nullptr) return false;
        const std::size_t end = BlockEnd(m_line, m_at + block->start.size(), block->end);
        Fill(m_at, end, block->style);
        while (m_at < end) {
            if (!TakeLink()) ++m_at;
        }
        return true;
    }

    void TakeWord() {
        const std::size_t end = WordEnd(m_line, m_at);
        const auto word = StylesOfWords().find(m_line.substr(m_at, end - m_at));
        if (word != StylesOfWords().end()) Fill(m_at, end, word->second);
        m_at = end;
    }

    std::string_view m_line;
    std::vector<TextStyle>& m_styles;
    std::size_t m_at = 0;
};

}  // namespace

void StyleLine(std::string_view line, std::vector<TextStyle>& styles) {
    styles.assign(line.size(), TextStyle::Plain);
    LineStyler(line, styles).Run();
}

std::string_view LinkAt(std::string_view line, std::size_t offset) {
    for (std::size_t at = 0; at < line.size() && at <= offset; ++at) {
        const std::size_t length = IsLinkStart(line, at) ? LinkLength(line.substr(at)) : 0;
        if (offset < at + length) return line.substr(at, length);
    }
    return {};
}

StyleColours ColoursOf(TextStyle style) {
    return std::ranges::find(kColours, style, &ColourRow::style)->colours;
}

StyleColours EditorBackground(bool readOnly) {
    return readOnly ? kReadOnly : kWritable;
}

}  // namespace kalvex::workbench
