#include "operands/KeywordFunction.h"

namespace kalvex::operands {

namespace {

std::uint64_t LengthBit(std::string_view word) {
    return std::uint64_t{1} << (word.size() % 64);
}

std::size_t FirstByte(std::string_view word) {
    return static_cast<unsigned char>(word.front());
}

}  // namespace

CFunctionTable::CFunctionTable(std::span<const FunctionRow> rows) : m_rows(rows) {
    m_mapByKeyword.reserve(rows.size());
    for (const FunctionRow& row : rows) {
        m_mapByKeyword.emplace(row.keyword, &row);
        m_arrLengths[FirstByte(row.keyword)] |= LengthBit(row.keyword);
    }
}

const FunctionRow* CFunctionTable::Find(std::string_view keyword) const {
    if (keyword.empty() || (m_arrLengths[FirstByte(keyword)] & LengthBit(keyword)) == 0) {
        return nullptr;
    }
    const auto found = m_mapByKeyword.find(keyword);
    return found == m_mapByKeyword.end() ? nullptr : found->second;
}

std::string_view TextBehindKeyword(const FunctionCall& call) {
    const std::size_t start = call.full.find_first_not_of(' ');
    return call.full.substr(start + call.keyword.size());
}

}  // namespace kalvex::operands
