#include "workbench/qt/TrendPoints.h"

#include "value/ValueText.h"
#include "workbench/model/TrendScale.h"
#include "workbench/qt/Texts.h"

namespace kalvex::window {

namespace {

using platform::Translatable;

enum Column { Place, Value, Status, ColumnCount };

constexpr const char* kTime = Translatable("Czas");
constexpr const char* kElement = Translatable("Element");
constexpr const char* kColumns[] = {nullptr, Translatable("Wartość"), Translatable("Status")};

}  // namespace

void TrendPoints::Renew() {
    beginResetModel();
    m_count = static_cast<int>(m_series.Points().size());
    endResetModel();
}

void TrendPoints::Extend() {
    const int count = static_cast<int>(m_series.Points().size());
    if (count < m_count) return Renew();
    if (count > m_count) {
        beginInsertRows({}, m_count, count - 1);
        m_count = count;
        endInsertRows();
    } else if (count > 0) {
        emit dataChanged(index(count - 1, Place), index(count - 1, Status));
    }
}

int TrendPoints::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : m_count;
}

int TrendPoints::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant TrendPoints::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || role != Qt::DisplayRole) return {};
    const auto points = m_series.Points();
    const auto row = static_cast<std::size_t>(index.row());
    if (row >= points.size()) return {};
    const workbench::TrendPoint& point = points[row];
    switch (index.column()) {
        case Place:
            return ToQt(workbench::TrendPlaceText(point, m_isTime, m_translator));
        case Value:
            return point.good ? ToQt(value::FormatDouble(point.value)) : QString("-");
        default:
            return ToQt(workbench::StatusText(point.status));
    }
}

QVariant TrendPoints::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
    if (section == Place) return Translated(m_translator, m_isTime ? kTime : kElement);
    return Translated(m_translator, kColumns[section]);
}

}  // namespace kalvex::window
