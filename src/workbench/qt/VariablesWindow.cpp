#include "workbench/qt/VariablesWindow.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "workbench/qt/Texts.h"
#include "workbench/qt/ValueDialog.h"

namespace kalvex::window {

namespace {

constexpr const char* kTableName = platform::Translatable("Zmienne");
constexpr int kRowPadding = 4;  // pixels around the text of a row

bool IsEnter(const QKeyEvent& event) {
    return event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter;
}

bool IsFindNext(const QKeyEvent& event) {
    return event.key() == Qt::Key_F3 && event.modifiers() == Qt::NoModifier;
}

bool IsReload(const QKeyEvent& event) {
    return event.key() == Qt::Key_F5 && event.modifiers() == Qt::NoModifier;
}

}  // namespace

// Keys that the table has a use for are its own, though a command of the main window may have them
// as well.
class CVariablesView::TableView final : public QTableView {
  public:
    explicit TableView(CVariablesView& window) : m_window(window) {}

  protected:
    bool event(QEvent* event) override {
        if (event->type() == QEvent::ShortcutOverride &&
            m_window.OnShortcut(*static_cast<QKeyEvent*>(event))) {
            event->accept();
            return true;
        }
        return QTableView::event(event);
    }
    void keyPressEvent(QKeyEvent* event) override {
        if (!m_window.OnKey(*event)) QTableView::keyPressEvent(event);
    }
    // A console asks on the press and on the release; a key that is held asks no more than that.
    void keyReleaseEvent(QKeyEvent* event) override {
        if (m_window.m_parts.source.askAll && IsReload(*event) && !event->isAutoRepeat()) {
            m_window.m_parts.source.askAll();
        }
        QTableView::keyReleaseEvent(event);
    }
    void mousePressEvent(QMouseEvent* event) override {
        QTableView::mousePressEvent(event);
        if (event->button() == Qt::LeftButton) m_window.AskForRow(rowAt(event->pos().y()));
    }
    void mouseDoubleClickEvent(QMouseEvent* event) override {
        QTableView::mouseDoubleClickEvent(event);
        const QModelIndex index = indexAt(event->pos());
        if (event->button() == Qt::LeftButton && index.isValid()) {
            m_window.ChangeValue(index.row());
        }
    }

  private:
    CVariablesView& m_window;
};

CVariablesView::CVariablesView(Parts parts, QWidget* parent)
    : QWidget(parent),
      m_parts(std::move(parts)),
      m_model(m_parts.translator),
      m_table(new TableView(*this)) {
    setObjectName("variablesWindow");
    m_table->setObjectName("variablesTable");
    m_table->setAccessibleName(Translated(m_parts.translator, kTableName));
    m_table->setModel(&m_model);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::SingleSelection);
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->setShowGrid(true);
    m_table->setWordWrap(false);
    m_table->setTabKeyNavigation(false);
    m_table->setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    m_table->horizontalHeader()->setHighlightSections(false);
    m_table->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    m_table->verticalHeader()->hide();
    m_table->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    SetTableFont(m_table->font());
    const int columns = std::min(m_model.columnCount(), static_cast<int>(m_parts.widths.size()));
    for (int column = 0; column < columns; ++column) {
        const auto width = static_cast<int>(m_parts.widths[static_cast<std::size_t>(column)]);
        m_table->setColumnWidth(column, std::max(width, 0));
    }
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins({});
    layout->addWidget(m_table);
    setFocusProxy(m_table);
    m_refreshTimer.setSingleShot(true);
    connect(&m_refreshTimer, &QTimer::timeout, this, [this] { Refresh(); });
    Refresh();
}

void CVariablesView::Refresh() {
    m_refreshTimer.stop();
    m_model.Refresh(m_parts.source.refresh);
}

void CVariablesView::SetTableFont(const QFont& font) {
    m_table->setFont(font);
    m_table->horizontalHeader()->setFont(font);
    m_table->verticalHeader()->setMinimumSectionSize(1);
    m_table->verticalHeader()->setDefaultSectionSize(QFontMetrics(font).height() + kRowPadding);
}

std::vector<unsigned int> CVariablesView::GetWidths() const {
    std::vector<unsigned int> widths;
    for (int column = 0; column < m_model.columnCount(); ++column) {
        widths.push_back(static_cast<unsigned int>(m_table->columnWidth(column)));
    }
    return widths;
}

void CVariablesView::closeEvent(QCloseEvent* event) {
    m_parts.keepWidths(GetWidths());
    QWidget::closeEvent(event);
}

// ---- keys

bool CVariablesView::OnShortcut(const QKeyEvent& event) {
    return event.matches(QKeySequence::Find) || IsFindNext(event) ||
           (m_parts.source.askAll && IsReload(event));
}

bool CVariablesView::OnKey(const QKeyEvent& event) {
    if (IsEnter(event)) {
        ChangeValue(GetSelectedRow());
    } else if (event.matches(QKeySequence::Find)) {
        Find();
    } else if (IsFindNext(event)) {
        FindNext();
    } else if (m_parts.source.askAll && IsReload(event)) {
        if (!event.isAutoRepeat()) m_parts.source.askAll();
    } else {
        return false;
    }
    return true;
}

// ---- rows

int CVariablesView::GetSelectedRow() const {
    const QModelIndexList rows = m_table->selectionModel()->selectedRows();
    return rows.isEmpty() ? -1 : rows.front().row();
}

void CVariablesView::AskForRow(int row) {
    if (!m_parts.source.ask || row < 0) return;
    const std::string name = m_model.Table().NameOf(row);
    if (!name.empty()) m_parts.source.ask(name);
}

// While the dialog is open the script goes on and the variable may go; it is found by its name
// again.
void CVariablesView::ChangeValue(int row) {
    if (row < 0) return;
    const std::string name = m_model.Table().NameOf(row);
    std::optional<value::CVal> value = m_parts.source.read(name);
    if (!value) return;
    auto* const dialog = new CVariableDlg(
        m_parts.translator, name, *std::move(value),
        [this, name](const value::CVal& changed) {
            if (!m_parts.source.write(name, changed)) m_parts.beep();
            Refresh();
        },
        this);
    dialog->open();
}

// ---- finding

void CVariablesView::Find() {
    auto* const dialog = new CFindDlg(
        m_parts.translator, m_search,
        [this](const workbench::FindRequest& search) {
            m_search = search;
            Search();
        },
        this);
    dialog->open();
}

void CVariablesView::FindNext() {
    if (m_search.pattern.empty()) {
        Find();
    } else {
        Search();
    }
}

void CVariablesView::Search() {
    const workbench::FoundRow found =
        m_model.Table().Find(GetSelectedRow(), m_search.pattern, m_search.options);
    m_table->clearSelection();
    for (int beep = 0; beep < found.beeps; ++beep) m_parts.beep();
    if (found.row < 0) return;
    const QModelIndex index = m_model.index(found.row, 0);
    m_table->setCurrentIndex(index);
    m_table->selectRow(found.row);
    m_table->scrollTo(index);
}

}  // namespace kalvex::window
