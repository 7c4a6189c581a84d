#include "workbench/model/VariableRows.h"

#include <algorithm>

namespace kalvex::workbench {

namespace {

constexpr char kFieldEnd = ';';

struct KindRow {
    operands::VariableKind kind;
    char letter;
};

constexpr KindRow kKinds[] = {
    {operands::VariableLocal, 'L'},
    {operands::VariablePointer, 'P'},
    {operands::VariableList, 'A'},
    {operands::VariableRemote, 'R'},
};

constexpr char kOtherKind = '?';

constexpr std::string engine::DeclaredVar::*kValues[] = {
    &engine::DeclaredVar::strValue,   &engine::DeclaredVar::strStatus,
    &engine::DeclaredVar::strTime,    &engine::DeclaredVar::strDetailA,
    &engine::DeclaredVar::strDetailB,
};

char LetterOf(operands::VariableKind kind) {
    const auto* row = std::ranges::find(kKinds, kind, &KindRow::kind);
    return row == std::end(kKinds) ? kOtherKind : row->letter;
}

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
    VariableCells cells{row.strName, std::string(1, LetterOf(row.nKind))};
    std::ranges::transform(kValues, cells.begin() + 2,
                           [&row](const auto value) { return row.*value; });
    return cells;
}

}  // namespace kalvex::workbench
