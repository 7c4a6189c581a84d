// What a person does with the text and its bookmarks, by a menu or a key.
#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

#include "workbench/qt/EditScope.h"
#include "workbench/qt/EditorMargins.h"
#include "workbench/qt/ScriptEditor.h"
#include "workbench/qt/Texts.h"

namespace kalvex::window {

namespace {

constexpr char kComment = ';';
constexpr const char* kBlanks = " \t";
constexpr int kIndentWidth = 4;
constexpr std::size_t kMostSingle = 100;
constexpr unsigned kAtOnce = 1;  // of the code of an action, whose low bits are free

// How many bytes a step of indentation takes at the start of the line.
int IndentOf(std::string_view line) {
    std::size_t blanks = 0;
    while (blanks < std::min<std::size_t>(line.size(), kIndentWidth) && line[blanks] == ' ') {
        ++blanks;
    }
    if (blanks < kIndentWidth && blanks < line.size() && line[blanks] == '\t') ++blanks;
    return static_cast<int>(blanks);
}

}  // namespace

void CKalvexEditCtrl::Cut() {
    if (RefuseEdit()) return;
    const EditScope scope(*this, workbench::UndoCut, EditScope::Grouping::Own);
    Ask(SCI_CUT);
}

void CKalvexEditCtrl::Copy() {
    Ask(SCI_COPY);
}

void CKalvexEditCtrl::Paste() {
    if (RefuseEdit()) return;
    const EditScope scope(*this, workbench::UndoPaste, EditScope::Grouping::Own);
    Ask(SCI_PASTE);
}

void CKalvexEditCtrl::Delete() {
    if (RefuseEdit()) return;
    const EditScope scope(*this, workbench::UndoDelete, EditScope::Grouping::Own);
    Ask(SCI_CLEAR);
}

void CKalvexEditCtrl::SelectAll() {
    Ask(SCI_SELECTALL);
}

// ---- lines

// A line in which a selection ends before its first character is not meant.
std::set<int> CKalvexEditCtrl::SelectedLines() const {
    std::set<int> lines;
    for (long n = 0; n < Ask(SCI_GETSELECTIONS); ++n) {
        const int from = static_cast<int>(Ask(SCI_GETSELECTIONNSTART, n));
        const int to = static_cast<int>(Ask(SCI_GETSELECTIONNEND, n));
        const int first = LineAt(from);
        int last = LineAt(to);
        if (last > first && to == LineStart(last)) --last;
        for (int line = first; line <= last; ++line) lines.insert(line);
    }
    return lines;
}

// Selections keep their distance from the ends of their lines, so that a caret before the first
// character stays before the text.
void CKalvexEditCtrl::ChangeLineStarts(
    unsigned code, const std::function<std::optional<Replacement>(int line)>& change) {
    struct End {
        int line;
        int behind;
    };
    const auto endOf = [this](long position) {
        const int line = LineAt(static_cast<int>(position));
        return End{line, LineEnd(line) - static_cast<int>(position)};
    };
    const auto positionOf = [this](const End& end) {
        return std::max(LineEnd(end.line) - end.behind, LineStart(end.line));
    };
    if (RefuseEdit()) return;
    const bool selected = HasSelection();
    const bool single = Ask(SCI_GETSELECTIONS) == 1;
    const End anchor = endOf(Ask(SCI_GETANCHOR));
    const End caret = endOf(Ask(SCI_GETCURRENTPOS));
    const bool anchorAtStart = positionOf(anchor) == LineStart(anchor.line);
    const bool caretAtStart = positionOf(caret) == LineStart(caret.line);
    std::vector<Replacement> changes;
    for (const int line : SelectedLines()) {
        if (std::optional<Replacement> one = change(line)) changes.push_back(std::move(*one));
    }
    Carry(code, changes);
    if (!single) return;
    const int from = selected && anchorAtStart ? LineStart(anchor.line) : positionOf(anchor);
    const int to = selected && caretAtStart ? LineStart(caret.line) : positionOf(caret);
    Ask(SCI_SETSEL, from, to);
}

void CKalvexEditCtrl::Indent() {
    ChangeLineStarts(workbench::UndoIndent, [this](int line) {
        return Replacement{LineStart(line), LineStart(line), "\t"};
    });
}

void CKalvexEditCtrl::Unindent() {
    ChangeLineStarts(workbench::UndoUnindent, [this](int line) -> std::optional<Replacement> {
        const int blanks = IndentOf(BufferLine(line));
        if (blanks == 0) return std::nullopt;
        return Replacement{LineStart(line), LineStart(line) + blanks, {}};
    });
}

// Blank lines are left alone; comments go only where all others are comments.
void CKalvexEditCtrl::ToggleComment() {
    const std::set<int> lines = SelectedLines();
    const auto textOf = [this](int line) { return BufferLine(line).find_first_not_of(kBlanks); };
    const bool comments = std::ranges::all_of(lines, [this, &textOf](int line) {
        const std::size_t at = textOf(line);
        return at == std::string::npos || BufferLine(line)[at] == kComment;
    });
    const auto change = [this, comments, &textOf](int line) -> std::optional<Replacement> {
        const std::size_t at = textOf(line);
        if (at == std::string::npos) return std::nullopt;
        const int start = LineStart(line);
        if (!comments) return Replacement{start, start, QByteArray(1, kComment)};
        const int place = start + static_cast<int>(at);
        return Replacement{place, place + 1, {}};
    };
    ChangeLineStarts(workbench::UndoReplace, change);
}

// The line beside the selected ones goes to their other side, so that theirs keep their marks.
void CKalvexEditCtrl::MoveLines(bool down) {
    if (RefuseEdit()) return;
    const int first = LineAt(static_cast<int>(Ask(SCI_GETSELECTIONSTART)));
    int last = LineAt(static_cast<int>(Ask(SCI_GETSELECTIONEND)));
    if (last > first && Ask(SCI_GETSELECTIONEND) == LineStart(last)) --last;
    const int beside = down ? last + 1 : first - 1;
    if (beside < 0 || beside >= LineCount()) return;
    Place anchor = PlaceOf(static_cast<int>(Ask(SCI_GETANCHOR)));
    Place caret = PlaceOf(CaretPosition());
    std::vector<workbench::Marker> marks;
    for (const auto marker : {workbench::MarkerBookmark, workbench::MarkerBreakpoint}) {
        if (m_model.Markers().Has(beside, marker)) marks.push_back(marker);
    }
    const EditScope scope(*this, workbench::UndoReplace, EditScope::Grouping::Own);
    std::string text = BufferLine(beside);
    if (down) {
        Ask(SCI_DELETERANGE, LineEnd(last), LineEnd(beside) - LineEnd(last));
        text += '\n';
        SendScintilla(SCI_INSERTTEXT, static_cast<unsigned long>(LineStart(first)), text.c_str());
    } else {
        Ask(SCI_DELETERANGE, LineStart(beside), LineStart(first) - LineStart(beside));
        text.insert(text.begin(), '\n');
        SendScintilla(SCI_INSERTTEXT, static_cast<unsigned long>(LineEnd(last - 1)), text.c_str());
    }
    RestoreMarks(down ? first : last, marks);
    for (Place* place : {&anchor, &caret}) place->line += down ? 1 : -1;
    Ask(SCI_SETSEL, PositionOf(anchor), PositionOf(caret));
}

// A console's breakpoints are the module's.
void CKalvexEditCtrl::RestoreMarks(int line, const std::vector<workbench::Marker>& marks) {
    for (const workbench::Marker marker : marks) {
        if (m_model.Markers().Has(line, marker)) continue;
        if (marker == workbench::MarkerBookmark) {
            m_model.Markers().Toggle(line, marker);
        } else if (m_role == EditorRole::Module) {
            m_model.Markers().SetBreakpoint(line, true);
        } else if (m_calls.toggleBreakpoint) {
            m_calls.toggleBreakpoint(line);
        }
    }
}

void CKalvexEditCtrl::InsertAtTop(const QString& lines) {
    if (RefuseEdit()) return;
    const EditScope scope(*this, workbench::UndoTyping, EditScope::Grouping::Own);
    QString text = lines;
    text.remove('\r');
    SendScintilla(SCI_INSERTTEXT, 0UL, text.toUtf8().constData());
}

bool CKalvexEditCtrl::ReplaceAll(const std::vector<Replacement>& replacements) {
    if (RefuseEdit()) return false;
    Carry(workbench::UndoReplace, replacements);
    return true;
}

void CKalvexEditCtrl::Carry(unsigned code, const std::vector<Replacement>& replacements) {
    if (replacements.size() > kMostSingle && m_role == EditorRole::Module) {
        return KeepMarks([this, code, &replacements] { CarryAtOnce(code, replacements); });
    }
    const EditScope scope(*this, code, EditScope::Grouping::Own);
    m_outlineWaits = replacements.size() > 1;
    for (auto one = replacements.rbegin(); one != replacements.rend(); ++one) {
        Ask(SCI_SETTARGETRANGE, one->from, one->to);
        SendScintilla(SCI_REPLACETARGET, static_cast<unsigned long>(one->text.size()),
                      one->text.constData());
    }
    if (m_outlineWaits) BuildOutline();
}

// Each change of the buffer costs the toolkit a walk over the text, for those who listen to it.
void CKalvexEditCtrl::CarryAtOnce(unsigned code, const std::vector<Replacement>& replacements) {
    const EditScope scope(*this, code | kAtOnce, EditScope::Grouping::Own);
    const QByteArray before = Bytes();
    const int from = replacements.front().from;
    QByteArray after;
    int at = from;
    for (const Replacement& one : replacements) {
        after += before.mid(at, one.from - at) + one.text;
        at = one.to;
    }
    Ask(SCI_SETTARGETRANGE, from, at);
    SendScintilla(SCI_REPLACETARGET, static_cast<unsigned long>(after.size()), after.constData());
}

// What takes the place of many lines at once would take their marks.
void CKalvexEditCtrl::KeepMarks(const std::function<void()>& edit) {
    const int lines = LineCount();
    const workbench::ScriptMarkers marks = m_model.Markers();
    edit();
    if (LineCount() != lines) return;
    m_model.Markers() = marks;
    m_seenMarkers = marks.GetRevision() - 1;
    m_seenRevision = m_model.GetRevision() - 1;
}

// ---- undo

bool CKalvexEditCtrl::CanDo(workbench::UndoDirection direction) const {
    return Ask(SCI_GETREADONLY) == 0 && !m_undo.IsEmpty(direction);
}

void CKalvexEditCtrl::Undo(int count) {
    Repeat(workbench::UndoDirection::Undo, SCI_UNDO, count);
}

void CKalvexEditCtrl::Redo(int count) {
    Repeat(workbench::UndoDirection::Redo, SCI_REDO, count);
}

void CKalvexEditCtrl::Repeat(workbench::UndoDirection direction, unsigned message, int count) {
    if (RefuseEdit()) return;
    SettleUndo();
    for (; count > 0 && CanDo(direction); --count) {
        const auto step = [this, message] { Ask(message); };
        if ((m_undo.Newest(direction) & kAtOnce) != 0) {
            KeepMarks(step);
        } else {
            step();
        }
    }
}

QStringList CKalvexEditCtrl::UndoDescriptions(workbench::UndoDirection direction) const {
    QStringList texts;
    for (const unsigned code : m_undo.List(direction)) {
        texts << ToQt(workbench::DescribeUndo(code, m_translator));
    }
    return texts;
}

// ---- bookmarks

void CKalvexEditCtrl::ToggleBookmark() {
    m_model.Markers().Toggle(CaretLine(), workbench::MarkerBookmark);
    ApplyView();
}

bool CKalvexEditCtrl::GoToBookmark(bool forward) {
    std::vector<int> lines = m_model.Markers().LinesOf(workbench::MarkerBookmark);
    if (lines.empty()) return false;
    std::ranges::sort(lines);
    const int line = CaretLine();
    if (forward) {
        const auto next = std::ranges::upper_bound(lines, line);
        GoToLine(next == lines.end() ? lines.front() : *next);
    } else {
        const auto here = std::ranges::lower_bound(lines, line);
        GoToLine(here == lines.begin() ? lines.back() : *std::prev(here));
    }
    return true;
}

void CKalvexEditCtrl::DeleteBookmarks() {
    m_model.Markers().DeleteAllMarkers(workbench::MarkerBookmark);
    ApplyView();
}

}  // namespace kalvex::window
