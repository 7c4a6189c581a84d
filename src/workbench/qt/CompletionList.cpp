#include "workbench/qt/CompletionList.h"

#include <QAbstractScrollArea>
#include <QApplication>
#include <QKeyEvent>
#include <QScreen>
#include <QScrollBar>
#include <QStyle>
#include <algorithm>
#include <utility>

#include "workbench/model/EditorSettings.h"
#include "workbench/qt/Texts.h"

namespace kalvex::window {

namespace {

constexpr const char* kTitle = platform::Translatable("Lista słów kluczowych");
constexpr int kVisibleWords = 12;

bool IsModifier(int key) {
    constexpr Qt::Key kModifiers[] = {
        Qt::Key_Shift,    Qt::Key_Control, Qt::Key_Alt,     Qt::Key_AltGr,   Qt::Key_Meta,
        Qt::Key_CapsLock, Qt::Key_NumLock, Qt::Key_Super_L, Qt::Key_Super_R,
    };
    return std::ranges::find(kModifiers, key) != std::end(kModifiers);
}

bool IsWordKey(const QKeyEvent& event) {
    const QString text = event.text();
    if (text.size() != 1 || !text[0].isPrint()) return false;
    if ((event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) != 0) {
        return false;
    }
    return !workbench::IsWordDelimiter(FromQt(text)[0]);
}

QWidget* ViewportOf(QWidget* editor) {
    auto* const area = qobject_cast<QAbstractScrollArea*>(editor);
    return area == nullptr ? nullptr : area->viewport();
}

}  // namespace

CompletionList::CompletionList(QWidget* editor, const platform::Translator& translator)
    : QListWidget(editor), m_editor(editor) {
    setWindowFlags(Qt::Tool | Qt::FramelessWindowHint);
    setObjectName("completionList");
    const QString title = Translated(translator, kTitle);
    setWindowTitle(title);
    setAccessibleName(title);
    setUniformItemSizes(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    connect(this, &QListWidget::itemDoubleClicked, this, [this] { Choose(); });
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget* old, QWidget* now) {
        // The editor may still be about to get the focus that the last list gave back.
        const bool stays = now == nullptr || now == this || (now == m_editor && old != this);
        if (!stays) Dismiss();
    });
    connect(qApp, &QGuiApplication::applicationStateChanged, this,
            [this](Qt::ApplicationState state) {
                if (state != Qt::ApplicationActive) Dismiss();
            });
    editor->installEventFilter(this);
    if (QWidget* const viewport = ViewportOf(editor)) viewport->installEventFilter(this);
}

void CompletionList::Open(const QPoint& globalTopLeft, const QStringList& words, OnChosen onChosen,
                          const QString& typed) {
    clear();
    addItems(words);
    m_onChosen = std::move(onChosen);
    m_typed = typed;
    setCurrentRow(0);
    SelectTyped();
    const int rows = std::min(count(), kVisibleWords);
    resize(
        sizeHintForColumn(0) + style()->pixelMetric(QStyle::PM_ScrollBarExtent) + 4 * frameWidth(),
        rows * sizeHintForRow(0) + 2 * frameWidth());
    show();
    Place(globalTopLeft);
    activateWindow();
    setFocus(Qt::PopupFocusReason);
}

// A window manager may put a window without a frame somewhere else when it is shown, so it is moved
// when it is there.
void CompletionList::Place(const QPoint& globalTopLeft) {
    const QScreen* at = QGuiApplication::screenAt(globalTopLeft);
    const QRect room = (at == nullptr ? m_editor->screen() : at)->availableGeometry();
    const int right = std::max(room.left(), room.right() + 1 - width());
    int top = globalTopLeft.y();
    if (top + height() > room.bottom() + 1) top -= height() + m_editor->fontMetrics().height() * 2;
    move(std::clamp(globalTopLeft.x(), room.left(), right), std::max(top, room.top()));
}

void CompletionList::Dismiss() {
    if (!isVisible()) return;
    const QWidget* const focused = QApplication::focusWidget();
    const bool isElsewhere = focused != nullptr && focused != this && focused != m_editor;
    hide();
    if (isElsewhere || QGuiApplication::applicationState() != Qt::ApplicationActive) return;
    m_editor->activateWindow();
    m_editor->setFocus(Qt::PopupFocusReason);
}

void CompletionList::Choose() {
    const OnChosen onChosen = std::exchange(m_onChosen, {});
    const QListWidgetItem* const item = currentItem();
    const QString word = item == nullptr ? QString() : item->text();
    Dismiss();
    if (onChosen && !word.isEmpty()) onChosen(word);
}

bool CompletionList::TakeListKey(int key) {
    struct MoveRow {
        Qt::Key key;
        CursorAction move;
    };
    static constexpr MoveRow kMoves[] = {
        {Qt::Key_Up, MoveUp},
        {Qt::Key_Down, MoveDown},
        {Qt::Key_PageUp, MovePageUp},
        {Qt::Key_PageDown, MovePageDown},
    };
    const auto* const row = std::ranges::find(kMoves, key, &MoveRow::key);
    if (row == std::end(kMoves)) return false;
    setCurrentIndex(moveCursor(row->move, Qt::NoModifier));
    return true;
}

bool CompletionList::TakeKey(const QKeyEvent& event) {
    const int key = event.key();
    if (key == Qt::Key_Escape) {
        Dismiss();
        return true;
    }
    if (event.modifiers() == Qt::NoModifier || event.modifiers() == Qt::KeypadModifier) {
        if (key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Tab) {
            Choose();
            return true;
        }
        if (TakeListKey(key)) return true;
    }
    return false;
}

// What the editor is about to get: the list moves to it, or is no longer wanted.
void CompletionList::FollowTyping(const QKeyEvent& event) {
    if (IsModifier(event.key())) return;
    if (IsWordKey(event)) {
        m_typed += event.text();
    } else if (event.key() == Qt::Key_Backspace && !m_typed.isEmpty()) {
        m_typed.chop(1);
    } else {
        Dismiss();
        return;
    }
    if (!SelectTyped()) Dismiss();
}

bool CompletionList::SelectTyped() {
    for (int row = 0; row < count(); ++row) {
        if (!item(row)->text().startsWith(m_typed, Qt::CaseInsensitive)) continue;
        setCurrentRow(row);
        return true;
    }
    return false;
}

void CompletionList::PassOn(const QKeyEvent& event) {
    QKeyEvent copy(event.type(), event.key(), event.modifiers(), event.text(), event.isAutoRepeat(),
                   static_cast<ushort>(event.count()));
    m_passingOn = true;
    QCoreApplication::sendEvent(m_editor, &copy);
    m_passingOn = false;
}

void CompletionList::keyPressEvent(QKeyEvent* event) {
    event->accept();
    if (TakeKey(*event)) return;
    FollowTyping(*event);
    PassOn(*event);
}

// The parts of the list itself are filtered, too: a scroll bar that hides closes nothing.
bool CompletionList::eventFilter(QObject* watched, QEvent* event) {
    if (watched != m_editor && watched != ViewportOf(m_editor)) {
        return QListWidget::eventFilter(watched, event);
    }
    if (!isVisible() || m_passingOn) return false;
    switch (event->type()) {
        case QEvent::KeyPress: {
            const auto& key = *static_cast<QKeyEvent*>(event);
            if (TakeKey(key)) return true;
            FollowTyping(key);
            return false;
        }
        case QEvent::MouseButtonPress:
        case QEvent::Wheel:
        case QEvent::Hide:
            Dismiss();
            return false;
        default:
            return QListWidget::eventFilter(watched, event);
    }
}

}  // namespace kalvex::window
