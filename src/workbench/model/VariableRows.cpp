#include "workbench/model/VariableRows.h"

#include <algorithm>

namespace kalvex::workbench {

namespace {

constexpr char kFieldEnd = ';';

constexpr std::string engine::DeclaredVar::*kValues[] = {
    &engine::DeclaredVar::strValue,   &engine::DeclaredVar::strStatus,
    &engine::DeclaredVar::strTime,    &engine::DeclaredVar::strDetailA,
    &engine::DeclaredVar::strDetailB,
};

}  // namespace

int VariableRows::Update(std::string_view name, std::string_view fields) {
    const auto row = std::ranges::find(m_rows, name, &engine::DeclaredVar::strName);
    if (row == m_rows.end()) return -1;
    for (const auto value : kValues) {
        fields.remove_prefix(std::min(fields.find_first_not_of(kFieldEnd), fields.size()));
        if (fields.empty()) break;
        const std::size_t end = std::min(fields.find(kFieldEnd), fields.size());
        (*row).*value = fields.substr(0, end);
        fields.remove_prefix(end);
    }
    return static_cast<int>(row - m_rows.begin());
}

VariableCells VariableRows::CellsOf(std::size_t index) const {
    const engine::DeclaredVar& row = m_rows[index];
    VariableCells cells{row.strName, std::string(1, KindLetter(row.nKind))};
    std::ranges::transform(kValues, cells.begin() + 2,
                           [&row](const auto value) { return row.*value; });
    return cells;
}

}  // namespace kalvex::workbench
