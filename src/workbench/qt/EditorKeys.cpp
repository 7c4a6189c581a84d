// What comes from keys and pointer, and by which name the undo list knows it.
#include <QContextMenuEvent>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMimeData>
#include <QMouseEvent>
#include <QTimer>
#include <QToolTip>
#include <algorithm>

#include "workbench/qt/EditScope.h"
#include "workbench/qt/EditorMargins.h"
#include "workbench/qt/ScriptEditor.h"
#include "workbench/qt/Texts.h"

namespace kalvex::window {

namespace {

constexpr int kFirstNamedKey = 0x01000000;

constexpr const char* kToggleBreakpoint = platform::Translatable("Wstaw/Usuń punkt przerwania");
constexpr const char* kDeleteBreakpoints =
    platform::Translatable("Usuń wszystkie punkty przerwania");

struct KeyCommand {
    int key;
    Qt::KeyboardModifiers modifiers;
    void (*run)(CKalvexEditCtrl& editor);
};

const KeyCommand kOwnCommands[] = {
    {Qt::Key_Slash, Qt::ControlModifier, [](CKalvexEditCtrl& editor) { editor.ToggleComment(); }},
    {Qt::Key_Up, Qt::AltModifier, [](CKalvexEditCtrl& editor) { editor.MoveLines(false); }},
    {Qt::Key_Down, Qt::AltModifier, [](CKalvexEditCtrl& editor) { editor.MoveLines(true); }},
    {Qt::Key_Delete, Qt::ShiftModifier, [](CKalvexEditCtrl& editor) { editor.Cut(); }},
    {Qt::Key_Insert, Qt::ControlModifier, [](CKalvexEditCtrl& editor) { editor.Copy(); }},
    {Qt::Key_Insert, Qt::ShiftModifier, [](CKalvexEditCtrl& editor) { editor.Paste(); }},
};

// Of an edit by a key; without a row a character is typed.
struct KeyKind {
    int key;
    unsigned code;
    unsigned withSelection;
    bool group;
};

constexpr KeyKind kKinds[] = {
    {Qt::Key_Return, workbench::UndoNewLine, workbench::UndoNewLine, true},
    {Qt::Key_Enter, workbench::UndoNewLine, workbench::UndoNewLine, true},
    {Qt::Key_Tab, workbench::UndoTabulation, workbench::UndoTabulation, true},
    {Qt::Key_Backspace, workbench::UndoDeleteCharacter, workbench::UndoDelete, false},
    {Qt::Key_Delete, workbench::UndoDelete, workbench::UndoDelete, false},
    {0, workbench::UndoTyping, workbench::UndoReplace, false},
};

const KeyKind& KindOf(int key) {
    const auto* row = std::ranges::find(kKinds, key, &KeyKind::key);
    return row == std::end(kKinds) ? *std::prev(std::end(kKinds)) : *row;
}

// Of a letter or a sign; with both keys it is a character of the keyboard's third level.
bool IsShortcut(const QKeyEvent& event) {
    const bool control = (event.modifiers() & Qt::ControlModifier) != 0;
    const bool alt = (event.modifiers() & Qt::AltModifier) != 0;
    return control != alt && event.key() < kFirstNamedKey;
}

}  // namespace

bool CKalvexEditCtrl::RunOwnCommand(const QKeyEvent& event) {
    const Qt::KeyboardModifiers modifiers = event.modifiers() & ~Qt::KeypadModifier;
    for (const KeyCommand& command : kOwnCommands) {
        if (event.key() != command.key || modifiers != command.modifiers) continue;
        command.run(*this);
        return true;
    }
    const bool tab = event.key() == Qt::Key_Tab || event.key() == Qt::Key_Backtab;
    if (!tab || (modifiers & ~Qt::ShiftModifier) != Qt::NoModifier) return false;
    if (event.key() == Qt::Key_Backtab || modifiers == Qt::ShiftModifier) {
        Unindent();
        return true;
    }
    if (LineAt(static_cast<int>(Ask(SCI_GETSELECTIONSTART))) ==
        LineAt(static_cast<int>(Ask(SCI_GETSELECTIONEND)))) {
        return false;
    }
    Indent();
    return true;
}

void CKalvexEditCtrl::keyPressEvent(QKeyEvent* event) {
    SettleUndo();
    if (RunOwnCommand(*event)) return event->accept();
    if (IsShortcut(*event)) return event->ignore();
    const KeyKind& kind = KindOf(event->key());
    const bool word = (event->modifiers() & Qt::ControlModifier) != 0;
    const unsigned code = HasSelection() || word ? kind.withSelection : kind.code;
    const bool edits = !event->text().isEmpty() || kind.key != 0;
    if (!edits) return QsciScintilla::keyPressEvent(event);
    const EditScope scope(*this, code,
                          kind.group ? EditScope::Grouping::Own : EditScope::Grouping::Kind);
    QsciScintilla::keyPressEvent(event);
}

// A list may be waiting for the focus to come back from the one before.
void CKalvexEditCtrl::focusInEvent(QFocusEvent* event) {
    QsciScintilla::focusInEvent(event);
    QTimer::singleShot(0, this, [this] { OfferMembers(); });
}

// What an input method shows before it is settled may have been taken back without a redo.
void CKalvexEditCtrl::inputMethodEvent(QInputMethodEvent* event) {
    SettleUndo();
    const EditScope scope(*this, workbench::UndoTyping, EditScope::Grouping::Kind);
    QsciScintilla::inputMethodEvent(event);
    if (Ask(SCI_CANREDO) == 0) m_undo.ClearRedo();
}

void CKalvexEditCtrl::mouseMoveEvent(QMouseEvent* event) {
    const EditScope scope(*this, workbench::UndoDragAndDrop, EditScope::Grouping::Name);
    QsciScintilla::mouseMoveEvent(event);
}

void CKalvexEditCtrl::mouseReleaseEvent(QMouseEvent* event) {
    SettleUndo();
    const bool pastes = event->button() == Qt::MiddleButton;
    const EditScope scope(*this, workbench::UndoPaste,
                          pastes ? EditScope::Grouping::Own : EditScope::Grouping::Name);
    QsciScintilla::mouseReleaseEvent(event);
}

void CKalvexEditCtrl::dragEnterEvent(QDragEnterEvent* event) {
    if (event->mimeData()->hasUrls()) return event->acceptProposedAction();
    QsciScintilla::dragEnterEvent(event);
}

void CKalvexEditCtrl::dragMoveEvent(QDragMoveEvent* event) {
    if (event->mimeData()->hasUrls()) return event->acceptProposedAction();
    QsciScintilla::dragMoveEvent(event);
}

void CKalvexEditCtrl::dropEvent(QDropEvent* event) {
    if (event->mimeData()->hasUrls()) {
        event->acceptProposedAction();
        if (m_calls.filesDropped) m_calls.filesDropped(event->mimeData()->urls());
        return;
    }
    if (RefuseEdit()) return;
    SettleUndo();
    const EditScope scope(*this, workbench::UndoDragAndDrop, EditScope::Grouping::Own);
    QsciScintilla::dropEvent(event);
}

// ---- margins and menus

int CKalvexEditCtrl::MarginAt(int x) const {
    int right = 0;
    for (const int margin : {MarginNumbers, MarginSymbols, MarginOutline}) {
        right += static_cast<int>(Ask(SCI_GETMARGINWIDTHN, margin));
        if (x < right) return margin;
    }
    return -1;
}

void CKalvexEditCtrl::OnMarginClick(int position, int margin) {
    const int line = LineAt(position);
    if (margin == MarginOutline) {
        ToggleFold(line);
    } else if (m_calls.toggleBreakpoint) {
        m_calls.toggleBreakpoint(line);
        ApplyView();
    }
}

std::unique_ptr<QMenu> CKalvexEditCtrl::MenuAt(const QPoint& place) {
    if (MarginAt(place.x()) < 0) {
        if (m_document.IsReadOnly() || !m_calls.fillTextMenu) return nullptr;
        auto menu = std::make_unique<QMenu>(this);
        m_calls.fillTextMenu(*menu);
        return menu;
    }
    const int line = LineAt(static_cast<int>(Ask(SCI_POSITIONFROMPOINT, place.x(), place.y())));
    auto menu = std::make_unique<QMenu>(this);
    menu->addAction(Translated(m_translator, kToggleBreakpoint), this, [this, line] {
        if (m_calls.toggleBreakpoint) m_calls.toggleBreakpoint(line);
        ApplyView();
    });
    menu->addAction(Translated(m_translator, kDeleteBreakpoints), this, [this] {
        if (m_calls.deleteBreakpoints) m_calls.deleteBreakpoints();
        ApplyView();
    });
    return menu;
}

// By the keyboard it is the menu of the text.
void CKalvexEditCtrl::contextMenuEvent(QContextMenuEvent* event) {
    const QPoint place = viewport()->mapFromGlobal(event->globalPos());
    std::unique_ptr<QMenu> menu = MenuAt(place);
    event->accept();
    if (!menu) return;
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu.release()->popup(event->globalPos());
}

bool CKalvexEditCtrl::viewportEvent(QEvent* event) {
    if (event->type() != QEvent::ToolTip) return QsciScintilla::viewportEvent(event);
    const auto& help = static_cast<const QHelpEvent&>(*event);
    const QString tip = TipAt(help.pos());
    if (tip.isEmpty()) {
        QToolTip::hideText();
    } else {
        QToolTip::showText(help.globalPos(), tip, viewport());
    }
    return true;
}

}  // namespace kalvex::window
