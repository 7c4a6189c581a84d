#include "workbench/qt/UndoBar.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QListWidget>
#include <QMouseEvent>
#include <QScreen>
#include <QStyleOptionToolButton>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "workbench/qt/Texts.h"

namespace kalvex::window {

namespace {

constexpr int kVisibleRows = 12;

struct DirectionRow {
    workbench::UndoDirection direction;
    const char* objectName;
    const char* title;
};

constexpr DirectionRow kDirections[] = {
    {workbench::UndoDirection::Undo, "undoBar", platform::Translatable("Cofnij")},
    {workbench::UndoDirection::Redo, "redoBar", platform::Translatable("Ponów")},
};

const DirectionRow& RowOf(workbench::UndoDirection direction) {
    return *std::ranges::find(kDirections, direction, &DirectionRow::direction);
}

}  // namespace

CUndoBar::CUndoBar(workbench::UndoDirection direction, const platform::Translator& translator,
                   QWidget* parent)
    : QWidget(parent, Qt::Tool | Qt::FramelessWindowHint),
      m_direction(direction),
      m_translator(translator),
      m_list(new QListWidget(this)),
      m_count(new QLabel(this)) {
    const DirectionRow& row = RowOf(direction);
    const QString title = Translated(translator, row.title);
    setObjectName(row.objectName);
    setWindowTitle(title);
    setAccessibleName(title);
    m_list->setAccessibleName(title);
    m_list->setSelectionMode(QAbstractItemView::MultiSelection);
    m_list->setUniformItemSizes(true);
    m_list->viewport()->setMouseTracking(true);
    m_list->viewport()->installEventFilter(this);
    m_list->installEventFilter(this);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->addWidget(m_list);
    layout->addWidget(m_count);
    setFocusProxy(m_list);
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget*, QWidget* now) {
        if (now != nullptr && now != this && !isAncestorOf(now)) hide();
    });
    connect(qApp, &QGuiApplication::applicationStateChanged, this,
            [this](Qt::ApplicationState state) {
                if (state != Qt::ApplicationActive) hide();
            });
}

// A window manager may put a window without a frame somewhere else when it is shown, so it is moved
// when it is there.
void CUndoBar::Open(const QPoint& globalTopLeft, const QStringList& actions, OnChosen onChosen) {
    if (actions.isEmpty()) return;
    m_onChosen = std::move(onChosen);
    m_list->clear();
    m_list->addItems(actions);
    const int rows = std::min(m_list->count(), kVisibleRows);
    m_list->setFixedHeight(rows * m_list->sizeHintForRow(0) + 2 * m_list->frameWidth());
    SelectTo(0);
    adjustSize();
    show();
    const QScreen* at = QGuiApplication::screenAt(globalTopLeft);
    const QRect room = (at == nullptr ? screen() : at)->availableGeometry();
    const int right = std::max(room.left(), room.right() + 1 - width());
    const int bottom = std::max(room.top(), room.bottom() + 1 - height());
    move(std::clamp(globalTopLeft.x(), room.left(), right),
         std::clamp(globalTopLeft.y(), room.top(), bottom));
    activateWindow();
    m_list->setFocus(Qt::PopupFocusReason);
}

void CUndoBar::SelectTo(int row) {
    const int last = std::clamp(row, 0, m_list->count() - 1);
    m_list->setCurrentRow(last, QItemSelectionModel::NoUpdate);
    for (int n = 0; n < m_list->count(); ++n) m_list->item(n)->setSelected(n <= last);
    m_count->setText(ToQt(workbench::UndoCountText(m_direction, last + 1, m_translator)));
}

void CUndoBar::Choose() {
    const int count = m_list->currentRow() + 1;
    const OnChosen onChosen = std::exchange(m_onChosen, {});
    hide();
    if (onChosen) onChosen(count);
}

bool CUndoBar::eventFilter(QObject* watched, QEvent* event) {
    static constexpr struct {
        int key;
        int rows;
    } kMoves[] = {
        {Qt::Key_Up, -1},
        {Qt::Key_Down, 1},
        {Qt::Key_PageUp, -kVisibleRows},
        {Qt::Key_PageDown, kVisibleRows},
        {Qt::Key_Home, -1'000'000},
        {Qt::Key_End, 1'000'000},
    };
    if (watched == m_list && event->type() == QEvent::KeyPress) {
        const int key = static_cast<const QKeyEvent&>(*event).key();
        if (key == Qt::Key_Escape) hide();
        if (key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Space) Choose();
        for (const auto& move : kMoves) {
            if (key == move.key) SelectTo(m_list->currentRow() + move.rows);
        }
        return true;
    }
    if (watched != m_list->viewport()) return QWidget::eventFilter(watched, event);
    if (event->type() == QEvent::MouseMove || event->type() == QEvent::MouseButtonPress) {
        const QPoint place = static_cast<const QMouseEvent&>(*event).position().toPoint();
        if (const QListWidgetItem* item = m_list->itemAt(place)) SelectTo(m_list->row(item));
        return true;
    }
    if (event->type() == QEvent::MouseButtonRelease) {
        Choose();
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

CUndoButton::CUndoButton(workbench::UndoDirection direction, const platform::Translator& translator,
                         Source source, QWidget* parent)
    : QToolButton(parent),
      m_source(std::move(source)),
      m_bar(new CUndoBar(direction, translator, this)) {
    setPopupMode(QToolButton::MenuButtonPopup);
    setAccessibleName(Translated(translator, RowOf(direction).title));
}

void CUndoButton::OpenBar() {
    m_bar->Open(mapToGlobal(QPoint(0, height())), m_source.actions(), m_source.carryOut);
}

void CUndoButton::mousePressEvent(QMouseEvent* event) {
    QStyleOptionToolButton option;
    initStyleOption(&option);
    const QRect edge =
        style()->subControlRect(QStyle::CC_ToolButton, &option, QStyle::SC_ToolButtonMenu, this);
    if (event->button() != Qt::LeftButton || !edge.contains(event->position().toPoint())) {
        return QToolButton::mousePressEvent(event);
    }
    event->accept();
    OpenBar();
}

void CUndoButton::keyPressEvent(QKeyEvent* event) {
    if (event->key() != Qt::Key_Down) return QToolButton::keyPressEvent(event);
    OpenBar();
}

}  // namespace kalvex::window
