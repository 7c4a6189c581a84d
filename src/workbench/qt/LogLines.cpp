#include "workbench/qt/LogLines.h"

#include <algorithm>
#include <utility>

#include "workbench/qt/Icons.h"
#include "workbench/qt/Texts.h"

namespace kalvex::window {

LogLines::LogLines(const app::CLog& log, QObject* parent)
    : QAbstractListModel(parent), m_log(log), m_came(log.GetCount()) {
    for (std::size_t level = 0; level < m_icons.size(); ++level) {
        m_icons[level] = LogIcon(static_cast<int>(level));
    }
    Follow();
}

void LogLines::OnCleared() {
    beginResetModel();
    m_first = m_end = m_came;
    m_longest.clear();
    endResetModel();
}

void LogLines::Follow() {
    const std::uint64_t kept = FirstKept();
    if (kept > m_first && m_end > m_first) {
        const std::uint64_t gone = std::min(kept, m_end) - m_first;
        beginRemoveRows({}, 0, static_cast<int>(gone) - 1);
        m_first += gone;
        endRemoveRows();
    }
    if (m_end == m_came) return;
    const std::uint64_t next = std::max(kept, m_end);
    for (std::uint64_t line = next; line < m_came; ++line) {
        QString text = TextOf(line);
        if (text.size() > m_longest.size()) m_longest = std::move(text);
    }
    const auto shown = static_cast<int>(m_end - m_first);
    beginInsertRows({}, shown, shown + static_cast<int>(m_came - next) - 1);
    if (shown == 0) m_first = next;
    m_end = m_came;
    endInsertRows();
}

QString LogLines::TextOf(std::uint64_t line) const {
    return ToQt(m_log.GetText(line - FirstKept()));
}

int LogLines::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_end - m_first);
}

QVariant LogLines::data(const QModelIndex& index, int role) const {
    const std::uint64_t line = m_first + static_cast<std::uint64_t>(index.row());
    if (line < FirstKept()) return {};
    if (role == Qt::DisplayRole) return TextOf(line);
    if (role != Qt::DecorationRole) return {};
    const auto last = static_cast<int>(m_icons.size()) - 1;
    const int level = m_log.GetLevelOf(line - FirstKept());
    return m_icons[static_cast<std::size_t>(std::clamp(level, 0, last))];
}

}  // namespace kalvex::window
