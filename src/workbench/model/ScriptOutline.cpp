#include "workbench/model/ScriptOutline.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "operands/Keywords.h"
#include "text/CodePage.h"

namespace kalvex::workbench {

namespace {

namespace Keyword = operands::Keyword;

const OutlineBlock* BlockThatBeginsWith(std::string_view word) {
    return &*std::ranges::find(OutlineBlocks(), word, &OutlineBlock::start);
}

// The words of a line outside of what is ignored, one after the other. A label is none, whether it
// stands in its own line or behind GOTO.
class LineWords {
  public:
    explicit LineWords(std::string_view line) : m_line(line) {
        const std::size_t start = line.find_first_not_of(" \t");
        if (start != std::string_view::npos && line[start] == ':') m_line = {};
    }

    // Empty behind the last one.
    std::string_view Next() {
        const std::string_view word = Take();
        if (text::EqualNoCase(word, Keyword::Goto)) Take();
        return word;
    }

    // The IF that was just taken jumps and so has no ENDIF.
    bool Jumps() const {
        LineWords rest = *this;
        for (std::string_view word = rest.Next(); !word.empty(); word = rest.Next()) {
            if (text::EqualNoCase(word, Keyword::Then)) return false;
            if (text::EqualNoCase(word, Keyword::Goto)) return true;
        }
        return false;
    }

  private:
    std::string_view Take() {
        while (m_at < m_line.size()) {
            if (SkipIgnored()) continue;
            const std::size_t start = m_at;
            m_at = WordEnd(m_line, start);
            if (m_at > start) return m_line.substr(start, m_at - start);
            ++m_at;
        }
        return {};
    }

    bool SkipIgnored() {
        for (const OutlineBlock& block : OutlineBlocks()) {
            if (!block.ignored || !m_line.substr(m_at).starts_with(block.start)) continue;
            m_at = BlockEnd(m_line, m_at + block.start.size(), block.end);
            return true;
        }
        return false;
    }

    std::string_view m_line;
    std::size_t m_at = 0;
};

}  // namespace

ScriptOutline::Marks ScriptOutline::MarksOf(std::string_view line) {
    static const std::vector<std::pair<std::string_view, Mark>> words = [] {
        std::vector<std::pair<std::string_view, Mark>> rows;
        for (const OutlineBlock& block : OutlineBlocks()) {
            if (block.ignored) continue;
            rows.push_back({block.start, {&block, Side::Begin}});
            rows.push_back({block.end, {&block, Side::End}});
        }
        rows.push_back({Keyword::Else, {BlockThatBeginsWith(Keyword::If), Side::Middle}});
        return rows;
    }();

    Marks marks;
    LineWords lineWords(line);
    for (std::string_view word = lineWords.Next(); !word.empty(); word = lineWords.Next()) {
        const auto row = std::ranges::find(words, word, &std::pair<std::string_view, Mark>::first);
        if (row == words.end() || (word == Keyword::If && lineWords.Jumps())) continue;
        const Mark mark = row->second;
        const auto begin = std::find(marks.rbegin(), marks.rend(), Mark{mark.block, Side::Begin});
        if (mark.side == Side::End && begin != marks.rend()) {
            marks.erase(std::prev(begin.base()), marks.end());
        } else {
            marks.push_back(mark);
        }
    }
    return marks;
}

void ScriptOutline::Build(int lineCount, const LineSource& source) {
    m_marks.clear();
    m_marks.reserve(static_cast<std::size_t>(lineCount));
    for (int line = 0; line < lineCount; ++line) m_marks.push_back(MarksOf(source(line)));
    Pair();
}

void ScriptOutline::Change(int first, int removed, int added, const LineSource& source) {
    std::vector<Marks> marks;
    for (int line = first; line < first + added; ++line) marks.push_back(MarksOf(source(line)));
    const auto begin = m_marks.begin() + first;
    const auto end = begin + removed;
    if (std::equal(begin, end, marks.begin(), marks.end())) return;
    m_marks.insert(m_marks.erase(begin, end), marks.begin(), marks.end());
    Pair();
}

void ScriptOutline::Pair() {
    m_blocks.clear();
    std::vector<Open> open;
    for (std::size_t line = 0; line < m_marks.size(); ++line) {
        const int number = static_cast<int>(line);
        for (const Mark& mark : m_marks[line]) {
            if (mark.side == Side::Begin) {
                open.push_back({mark.block, number, -1});
            } else if (mark.side == Side::End) {
                Close(open, mark.block, number);
            } else if (!open.empty() && open.back().block == mark.block &&
                       open.back().elseLine < 0) {
                open.back().elseLine = number;
            }
        }
    }
    Index();
}

// What a later row of the table tells of encloses what an earlier one does.
void ScriptOutline::Close(std::vector<Open>& open, const OutlineBlock* block, int line) {
    const auto begin = std::find_if(open.rbegin(), open.rend(),
                                    [block](const Open& one) { return one.block >= block; });
    if (begin == open.rend() || begin->block != block) return;
    m_blocks.push_back({begin->line, line, begin->elseLine, block->shownAs});
    open.erase(std::prev(begin.base()), open.end());
}

void ScriptOutline::Index() {
    std::ranges::sort(m_blocks, [](const FoldBlock& a, const FoldBlock& b) {
        return a.firstLine != b.firstLine ? a.firstLine < b.firstLine : a.lastLine > b.lastLine;
    });
    m_blockAt.assign(m_marks.size(), -1);
    m_depths.assign(m_marks.size() + 1, 0);
    for (std::size_t i = 0; i < m_blocks.size(); ++i) {
        const FoldBlock& block = m_blocks[i];
        for (const int line : {block.firstLine, block.elseLine, block.lastLine}) {
            if (line >= 0) m_blockAt[static_cast<std::size_t>(line)] = static_cast<int>(i);
        }
        ++m_depths[static_cast<std::size_t>(block.firstLine) + 1];
        --m_depths[static_cast<std::size_t>(block.lastLine) + 1];
    }
    for (std::size_t line = 1; line < m_depths.size(); ++line) m_depths[line] += m_depths[line - 1];
}

int ScriptOutline::DepthAt(int line) const {
    return m_depths[static_cast<std::size_t>(line)];
}

const FoldBlock* ScriptOutline::BlockAt(int line) const {
    const int index = m_blockAt[static_cast<std::size_t>(line)];
    return index < 0 ? nullptr : &m_blocks[static_cast<std::size_t>(index)];
}

int ScriptOutline::MatchAt(int line) const {
    const FoldBlock* const block = BlockAt(line);
    if (block == nullptr) return -1;
    return line == block->firstLine ? block->lastLine : block->firstLine;
}

}  // namespace kalvex::workbench
