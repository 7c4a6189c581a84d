#include "workbench/qt/VariablesModel.h"

#include "workbench/qt/Texts.h"

namespace kalvex::window {

namespace {

constexpr const char* kHeaders[] = {
    platform::Translatable("Nazwa zmiennej"),   platform::Translatable("Typ"),
    platform::Translatable("Wartość bieżąca"),  platform::Translatable("Wartość godzinowa"),
    platform::Translatable("Wartość dobowa"),   platform::Translatable("Wartość miesięczna"),
    platform::Translatable("Wartość okresowa"),
};
static_assert(std::size(kHeaders) == workbench::kVariableColumns);

// A text that its column cuts off can be read as a tip.
bool IsTextRole(int role) {
    return role == Qt::DisplayRole || role == Qt::ToolTipRole;
}

}  // namespace

VariablesModel::VariablesModel(const platform::Translator& translator) {
    for (const char* header : kHeaders) m_headers << Translated(translator, header);
}

// The table is changed as a whole, so the views hear of it afterwards, with the rows that they know
// meanwhile.
void VariablesModel::Refresh(const Refresher& refresh) {
    const workbench::TableChanges changes = refresh(m_table);
    if (changes.newCount < m_shownRows) {
        beginRemoveRows({}, changes.newCount, m_shownRows - 1);
        m_shownRows = changes.newCount;
        endRemoveRows();
    } else if (changes.newCount > m_shownRows) {
        beginInsertRows({}, m_shownRows, changes.newCount - 1);
        m_shownRows = changes.newCount;
        endInsertRows();
    }
    for (const workbench::CellPlace& cell : changes.cells) {
        const QModelIndex place = index(cell.row, cell.column);
        emit dataChanged(place, place, {Qt::DisplayRole, Qt::ToolTipRole});
    }
}

int VariablesModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : m_shownRows;
}

int VariablesModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(workbench::kVariableColumns);
}

QVariant VariablesModel::data(const QModelIndex& index, int role) const {
    if (!IsTextRole(role) || index.row() >= m_table.GetCount()) return {};
    return ToQt(m_table.CellsOf(index.row())[static_cast<std::size_t>(index.column())]);
}

QVariant VariablesModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || !IsTextRole(role)) return {};
    return m_headers.value(section);
}

}  // namespace kalvex::window
