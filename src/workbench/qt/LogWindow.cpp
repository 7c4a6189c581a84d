#include "workbench/qt/LogWindow.h"

#include <QClipboard>
#include <QFontDatabase>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QStyledItemDelegate>
#include <QVBoxLayout>
#include <algorithm>

#include "workbench/qt/Texts.h"

namespace kalvex::window {

namespace {

constexpr int kCollectTime = 40;  // milliseconds
constexpr int kIconSide = 16;
constexpr int kRowMargins = 24;

// All rows are as wide as the longest, since none is measured.
class LogRowDelegate final : public QStyledItemDelegate {
  public:
    LogRowDelegate(const LogLines& lines, QObject* parent)
        : QStyledItemDelegate(parent), m_lines(lines) {}

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const override {
        const QFontMetrics metrics(option.font);
        const QString& text = m_lines.GetLongest();
        // A row of fewer characters may be wider by its letters.
        const auto usual =
            static_cast<int>(text.size()) * metrics.horizontalAdvance(QLatin1Char('0'));
        return {std::max(metrics.horizontalAdvance(text), usual) + kIconSide + kRowMargins,
                std::max(metrics.height(), kIconSide) + 2};
    }

  private:
    const LogLines& m_lines;
};

class LogList final : public QListView {
  public:
    LogList(std::function<void()> copy, std::function<void()> open, QWidget* parent)
        : QListView(parent), m_copy(std::move(copy)), m_open(std::move(open)) {}

  protected:
    void keyPressEvent(QKeyEvent* event) override {
        if (event->matches(QKeySequence::Copy)) return m_copy();
        if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) return m_open();
        QListView::keyPressEvent(event);
    }

  private:
    const std::function<void()> m_copy;
    const std::function<void()> m_open;
};

QFont UsualFont() {
    return QFontDatabase::systemFont(QFontDatabase::FixedFont);
}

}  // namespace

CKalvexLogView::CKalvexLogView(app::CLog& log, OpenLine openLine, QWidget* parent)
    : QWidget(parent),
      m_log(log),
      m_openLine(std::move(openLine)),
      m_lines(log),
      m_list(new LogList([this] { Copy(); }, [this] { OpenSelected(); }, this)) {
    const QString name = QStringLiteral("LOG");
    setObjectName(QStringLiteral("logWindow"));
    setWindowTitle(name);
    setAccessibleName(name);
    m_list->setObjectName(QStringLiteral("logList"));
    m_list->setAccessibleName(name);
    m_list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_list->setIconSize({kIconSide, kIconSide});
    m_list->setUniformItemSizes(true);
    m_list->setTextElideMode(Qt::ElideNone);
    m_list->setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    m_list->setItemDelegate(new LogRowDelegate(m_lines, m_list));
    m_list->setFont(UsualFont());
    m_list->setModel(&m_lines);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_list);
    setFocusProxy(m_list);
    connect(m_list, &QListView::doubleClicked, this, [this] { OpenSelected(); });
    m_timer.setSingleShot(true);
    m_timer.setInterval(kCollectTime);
    connect(&m_timer, &QTimer::timeout, this, [this] { Follow(); });
    m_log.SetListener(this);
    m_list->scrollToBottom();
}

CKalvexLogView::~CKalvexLogView() {
    m_log.SetListener(nullptr);
    delete m_list;  // before the rows that it shows
}

void CKalvexLogView::SetAutoScroll(bool on) {
    m_autoScroll = on;
    if (on) m_list->scrollToBottom();
}

void CKalvexLogView::OnLogMessage(const app::LogMessage&) {
    m_lines.OnLine();
    if (!m_timer.isActive()) m_timer.start();
}

void CKalvexLogView::OnLogCleared() {
    m_lines.OnCleared();
}

void CKalvexLogView::Follow() {
    m_lines.Follow();
    if (m_autoScroll) m_list->scrollToBottom();
}

bool CKalvexLogView::HasSelection() const {
    return m_list->selectionModel()->hasSelection();
}

void CKalvexLogView::Copy() const {
    QModelIndexList rows = m_list->selectionModel()->selectedRows();
    if (rows.isEmpty()) return;
    std::sort(rows.begin(), rows.end());
    QStringList lines;
    for (const QModelIndex& row : rows) lines += row.data().toString();
    QGuiApplication::clipboard()->setText(lines.join(QLatin1Char('\n')));
}

void CKalvexLogView::SelectAll() {
    m_list->selectAll();
}

void CKalvexLogView::OpenSelected() const {
    const QModelIndexList rows = m_list->selectionModel()->selectedRows();
    if (rows.isEmpty()) return;
    m_openLine(FromQt(rows.first().data().toString()), static_cast<std::size_t>(rows.size()));
}

void CKalvexLogView::SetLogFont(const QFont& font) {
    m_list->setFont(font);
}

QFont CKalvexLogView::GetLogFont() const {
    return m_list->font();
}

std::string CKalvexLogView::GetFontText() const {
    return FromQt(m_list->font().toString());
}

void CKalvexLogView::SetFontText(std::string_view text) {
    QFont font;
    if (text.empty() || !font.fromString(ToQt(text))) font = UsualFont();
    SetLogFont(font);
}

}  // namespace kalvex::window
