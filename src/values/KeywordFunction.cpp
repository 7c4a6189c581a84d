#include "values/KeywordFunction.h"

namespace kalvex {

CFunctionTable::CFunctionTable(std::span<const FunctionRow> rows) : m_rows(rows) {
    m_mapByKeyword.reserve(rows.size());
    for (const FunctionRow& row : rows) m_mapByKeyword.emplace(row.keyword, &row);
}

const FunctionRow* CFunctionTable::Find(std::string_view keyword) const {
    const auto found = m_mapByKeyword.find(keyword);
    return found == m_mapByKeyword.end() ? nullptr : found->second;
}

std::string_view TextBehindKeyword(const FunctionCall& call) {
    const std::size_t start = call.full.find_first_not_of(' ');
    return call.full.substr(start + call.keyword.size());
}

}  // namespace kalvex
