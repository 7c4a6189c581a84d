#include "engine/Statement.h"

namespace kalvex::engine {

CStatementTable::CStatementTable(std::span<const StatementRow> rows) : m_rows(rows) {
    m_mapByKeyword.reserve(rows.size());
    for (const StatementRow& row : rows) m_mapByKeyword.emplace(row.keyword, &row);
}

const StatementRow* CStatementTable::Find(std::string_view keyword) const {
    const auto found = m_mapByKeyword.find(keyword);
    return found == m_mapByKeyword.end() ? nullptr : found->second;
}

}  // namespace kalvex::engine
