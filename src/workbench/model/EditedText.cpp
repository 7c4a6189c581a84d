#include "workbench/model/EditedText.h"

#include <algorithm>
#include <utility>

namespace kalvex::workbench {

void EditedText::ReportShifts(ShiftReport inserted, ShiftReport deleted) {
    m_inserted = std::move(inserted);
    m_deleted = std::move(deleted);
}

void EditedText::SetText(std::string_view text) {
    TakeBackInsertions();
    TakeOver(engine::SplitLines(text));
}

void EditedText::InsertScriptText(int line, std::string_view text, bool replace) {
    const int before = GetLineCount();
    m_lines.InsertScriptText(line, text, replace);
    const int added = GetLineCount() - before;
    if (added > 0) {
        m_insertions.push_back({line + 1, added});
        Shift(line + 1, added);
    }
    if (m_listener == nullptr) return;
    if (replace) {
        m_listener->OnLinesReplaced({line, 1, added + 1, true});
    } else {
        m_listener->OnLinesReplaced({line + 1, 0, added, true});
    }
}

// From the newest back, so that each stands in the lines in which it was made.
void EditedText::TakeBackInsertions() {
    for (auto insertion = m_insertions.rbegin(); insertion != m_insertions.rend(); ++insertion) {
        Shift(insertion->line, -insertion->count);
        Replace(insertion->line, insertion->count, {}, true);
    }
    m_insertions.clear();
}

void EditedText::TakeOver(std::vector<std::string> lines) {
    const int count = static_cast<int>(lines.size());
    const auto same = [this, &lines](int old, int n) {
        return GetLine(old) == lines[static_cast<std::size_t>(n)];
    };
    const auto piece = [&lines](int first, int end) {
        return std::vector<std::string>(std::make_move_iterator(lines.begin() + first),
                                        std::make_move_iterator(lines.begin() + end));
    };
    if (count == GetLineCount()) {
        for (int first = 0; first < count;) {
            int end = first;
            while (end < count && !same(end, end)) ++end;
            if (end > first) Replace(first, end - first, piece(first, end), false);
            first = end + 1;
        }
        return;
    }
    const int shorter = std::min(count, GetLineCount());
    int head = 0;
    while (head < shorter && same(head, head)) ++head;
    int tail = 0;
    while (tail < shorter - head && same(GetLineCount() - 1 - tail, count - 1 - tail)) ++tail;
    Replace(head, GetLineCount() - head - tail, piece(head, count - tail), false);
}

void EditedText::Replace(int first, int removed, std::vector<std::string> lines, bool linesMove) {
    const int added = static_cast<int>(lines.size());
    m_lines.ReplaceLines(first, removed, std::move(lines));
    if (m_listener != nullptr) m_listener->OnLinesReplaced({first, removed, added, linesMove});
}

void EditedText::ReplaceLines(int first, int removed, std::vector<std::string> lines) {
    m_insertions.clear();  // the text is the person's now
    const int added = static_cast<int>(lines.size());
    const int shorter = std::min(removed, added);
    int head = 0;
    while (head < shorter && GetLine(first + head) == lines[static_cast<std::size_t>(head)]) ++head;
    int tail = 0;
    while (tail < shorter - head && GetLine(first + removed - 1 - tail) ==
                                        lines[static_cast<std::size_t>(added - 1 - tail)]) {
        ++tail;
    }
    const int line = first + shorter - tail;
    const int count = added - removed;
    if (count > 0 && m_inserted) m_inserted(line, count);
    if (count < 0 && m_deleted) m_deleted(line, -count);
    Shift(line, count);
    m_lines.ReplaceLines(first, removed, std::move(lines));
}

void EditedText::Shift(int line, int count) {
    if (m_markers == nullptr || count == 0) return;
    if (count > 0) {
        m_markers->LinesInserted(line, count);
    } else {
        m_markers->LinesDeleted(line, -count);
    }
}

}  // namespace kalvex::workbench
