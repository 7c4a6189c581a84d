// What folds in the editor.
#include <algorithm>
#include <utility>

#include "operands/Keywords.h"
#include "workbench/qt/EditorMargins.h"
#include "workbench/qt/ScriptEditor.h"

namespace kalvex::window {

namespace {

constexpr const char* kElement = "...";

bool IsDefinition(const workbench::FoldBlock& block) {
    return std::ranges::any_of(workbench::OutlineBlocks(), [&block](const auto& row) {
        return row.start == operands::Keyword::Procedure && row.shownAs == block.shownAs;
    });
}

}  // namespace

void CKalvexEditCtrl::BuildOutline() {
    m_outlineWaits = false;
    m_outline.Build(m_text.GetLineCount(), [this](int line) { return m_text.GetLine(line); });
    ApplyLevels();
}

void CKalvexEditCtrl::OutlineChanged(int first, int removed, int added) {
    const int shift = added - removed;
    for (ManualBlock& block : m_manual) {
        if (block.first >= first + removed) block.first += shift;
        if (block.last >= first + removed) block.last += shift;
    }
    std::erase_if(m_manual, [](const ManualBlock& block) { return block.last <= block.first; });
    if (m_outlineWaits) return;
    const std::vector<workbench::FoldBlock> before =
        shift == 0 ? m_outline.Blocks() : std::vector<workbench::FoldBlock>();
    m_outline.Change(first, removed, added, [this](int line) { return m_text.GetLine(line); });
    if (shift != 0 || before != m_outline.Blocks()) ApplyLevels();
}

void CKalvexEditCtrl::ApplyLevels() {
    for (int line = 0; line < LineCount(); ++line) {
        int depth = 0;
        bool header = false;
        if (m_outlined) {
            for (const ManualBlock& block : m_manual) {
                if (block.first < line && line <= block.last) ++depth;
                header |= block.first == line;
            }
        }
        if (m_outlined && m_automatic) {
            const workbench::FoldBlock* const block = m_outline.BlockAt(line);
            depth += m_outline.DepthAt(line);
            header |= block != nullptr && block->firstLine == line;
        }
        const long level = SC_FOLDLEVELBASE + depth + (header ? SC_FOLDLEVELHEADERFLAG : 0);
        if (Ask(SCI_GETFOLDLEVEL, line) != level) Ask(SCI_SETFOLDLEVEL, line, level);
    }
}

bool CKalvexEditCtrl::IsHeader(int line) const {
    return (Ask(SCI_GETFOLDLEVEL, line) & SC_FOLDLEVELHEADERFLAG) != 0;
}

bool CKalvexEditCtrl::IsFolded(int line) const {
    return IsHeader(line) && Ask(SCI_GETFOLDEXPANDED, line) == 0;
}

std::vector<int> CKalvexEditCtrl::FoldedLines() const {
    std::vector<int> lines;
    for (long line = Ask(SCI_CONTRACTEDFOLDNEXT, 0); line >= 0;
         line = Ask(SCI_CONTRACTEDFOLDNEXT, line + 1)) {
        lines.push_back(static_cast<int>(line));
    }
    return lines;
}

QByteArray CKalvexEditCtrl::FoldText(int line) const {
    const workbench::FoldBlock* const block = m_outline.BlockAt(line);
    if (!m_automatic || block == nullptr || block->firstLine != line) return kElement;
    return QByteArray::fromStdString(std::string(block->shownAs));
}

void CKalvexEditCtrl::ToggleFold(int line) {
    if (!IsHeader(line)) return;
    const QByteArray text = FoldText(line);
    SendScintilla(SCI_TOGGLEFOLDSHOWTEXT, static_cast<unsigned long>(line), text.constData());
}

void CKalvexEditCtrl::FoldAll(bool fold, const std::function<bool(int line)>& wanted) {
    for (int line = 0; line < LineCount(); ++line) {
        if (IsHeader(line) && wanted(line) && IsFolded(line) != fold) ToggleFold(line);
    }
}

// The elements that are folded come back folded, when the outline does.
void CKalvexEditCtrl::ShowOutline(bool shown) {
    const long top = Ask(SCI_DOCLINEFROMVISIBLE, Ask(SCI_GETFIRSTVISIBLELINE));
    if (!shown) Ask(SCI_FOLDALL, SC_FOLDACTION_EXPAND);
    m_outlined = shown;
    ApplyLevels();
    Ask(SCI_SETMARGINWIDTHN, MarginOutline, shown ? kOutlineMarginWidth : 0);
    if (shown) {
        for (const int line : std::exchange(m_foldedBefore, {})) {
            if (!IsFolded(line)) ToggleFold(line);
        }
    }
    Ask(SCI_SETFIRSTVISIBLELINE, Ask(SCI_VISIBLEFROMDOCLINE, top));
}

int CKalvexEditCtrl::HeaderOfCaret() const {
    const int line = CaretLine();
    return IsHeader(line) ? line : static_cast<int>(Ask(SCI_GETFOLDPARENT, line));
}

void CKalvexEditCtrl::CreateElement() {
    const std::set<int> lines = SelectedLines();
    if (lines.size() < 2) return;
    m_manual.push_back({*lines.begin(), *lines.rbegin()});
    ApplyLevels();
}

void CKalvexEditCtrl::RemoveElements() {
    const int caret = CaretLine();
    for (const ManualBlock& block : m_manual) {
        if (block.first <= caret && caret <= block.last && IsFolded(block.first)) {
            ToggleFold(block.first);
        }
    }
    std::erase_if(m_manual, [caret](const ManualBlock& block) {
        return block.first <= caret && caret <= block.last;
    });
    ApplyLevels();
}

void CKalvexEditCtrl::Outline(OutlineCommand command) {
    const auto any = [](int) { return true; };
    switch (command) {
        case OutlineCommand::Create:
            return CreateElement();
        case OutlineCommand::Remove:
            return RemoveElements();
        case OutlineCommand::Toggle:
            return ToggleFold(HeaderOfCaret());
        case OutlineCommand::ToggleAll:
            return FoldAll(FoldedLines().empty(), any);
        case OutlineCommand::CollapseToDefinitions:
            FoldAll(false, any);
            return FoldAll(true, [this](int line) {
                const workbench::FoldBlock* const block = m_outline.BlockAt(line);
                return block != nullptr && block->firstLine == line && IsDefinition(*block);
            });
        case OutlineCommand::Stop:
            return ShowOutline(false);
        case OutlineCommand::Show:
            return ShowOutline(true);
        case OutlineCommand::Automatic:
            m_automatic = !m_automatic;
            return ApplyLevels();
    }
}

}  // namespace kalvex::window
