#include "workbench/qt/RowTable.h"

#include <QHeaderView>
#include <QItemSelection>
#include <algorithm>

namespace kalvex::window {

namespace {

constexpr int kRowMargins = 6;
constexpr int kUsualLetters = 60;
constexpr int kUsualRows = 12;

}  // namespace

RowTable::RowTable(const QString& name, const QStringList& headers, QWidget* parent)
    : QTableWidget(0, static_cast<int>(headers.size()), parent) {
    setAccessibleName(name);
    setHorizontalHeaderLabels(headers);
    horizontalHeader()->setStretchLastSection(true);
    horizontalHeader()->setHighlightSections(false);
    verticalHeader()->hide();
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + kRowMargins);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setTabKeyNavigation(false);
    setWordWrap(false);
}

void RowTable::SetRows(const std::vector<QStringList>& rows) {
    setRowCount(static_cast<int>(rows.size()));
    for (int row = 0; row < rowCount(); ++row) {
        for (int column = 0; column < columnCount(); ++column) {
            const QString& text = rows[static_cast<std::size_t>(row)][column];
            auto* item = new QTableWidgetItem(text);
            item->setToolTip(text);
            setItem(row, column, item);
        }
    }
}

std::vector<std::size_t> RowTable::GetSelectedRows() const {
    std::vector<std::size_t> rows;
    for (const QModelIndex& index : selectionModel()->selectedRows()) {
        rows.push_back(static_cast<std::size_t>(index.row()));
    }
    std::ranges::sort(rows);
    return rows;
}

void RowTable::SelectRows(const std::vector<std::size_t>& rows) {
    QItemSelection selection;
    for (const std::size_t row : rows) {
        const auto number = static_cast<int>(row);
        selection.select(model()->index(number, 0), model()->index(number, columnCount() - 1));
    }
    selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
    if (rows.empty()) return;
    const QModelIndex first = model()->index(static_cast<int>(rows.front()), 0);
    selectionModel()->setCurrentIndex(first, QItemSelectionModel::NoUpdate);
    scrollTo(first);
}

QSize RowTable::sizeHint() const {
    return {fontMetrics().averageCharWidth() * kUsualLetters,
            verticalHeader()->defaultSectionSize() * kUsualRows};
}

}  // namespace kalvex::window
