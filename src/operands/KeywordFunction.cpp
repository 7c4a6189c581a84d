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

FunctionTable::FunctionTable(std::span<const FunctionRow> rows) : m_rows(rows) {
    m_byKeyword.reserve(rows.size());
    for (const FunctionRow& row : rows) {
        m_byKeyword.emplace(row.keyword, &row);
        m_lengths[FirstByte(row.keyword)] |= LengthBit(row.keyword);
    }
}

const FunctionRow* FunctionTable::Find(std::string_view keyword) const {
    if (keyword.empty() || (m_lengths[FirstByte(keyword)] & LengthBit(keyword)) == 0) {
        return nullptr;
    }
    const auto found = m_byKeyword.find(keyword);
    return found == m_byKeyword.end() ? nullptr : found->second;
}

std::string_view TextBehindKeyword(const FunctionCall& call) {
    const std::size_t start = call.full.find_first_not_of(' ');
    return call.full.substr(start + call.keyword.size());
}

}  // namespace kalvex::operands
