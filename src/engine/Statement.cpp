#include "engine/Statement.h"

namespace kalvex::engine {

StatementTable::StatementTable(std::span<const StatementRow> rows) : m_rows(rows) {
    m_byKeyword.reserve(rows.size());
    for (const StatementRow& row : rows) m_byKeyword.emplace(row.keyword, &row);
}

const StatementRow* StatementTable::Find(std::string_view keyword) const {
    const auto found = m_byKeyword.find(keyword);
    return found == m_byKeyword.end() ? nullptr : found->second;
}

}  // namespace kalvex::engine
