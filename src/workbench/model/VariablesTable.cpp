#include "workbench/model/VariablesTable.h"

#include <algorithm>
#include <utility>

#include "text/CodePage.h"
#include "text/PatternMatch.h"

namespace kalvex::workbench {

namespace {

VariableCells CellsOfVariable(operands::CVariable& variable) {
    VariableCells cells{variable.GetName(), std::string(1, KindLetter(variable.GetKind()))};
    std::vector<std::string> slots = SlotTexts(variable);
    std::ranges::move(slots, cells.begin() + 2);
    return cells;
}

}  // namespace

template <class CellsAt>
TableChanges VariablesTable::Take(std::size_t count, CellsAt cellsAt) {
    TableChanges changes{.oldCount = GetCount(), .newCount = static_cast<int>(count), .cells = {}};
    m_rows.resize(count);
    for (int row = 0; row < changes.newCount; ++row) {
        VariableCells& shown = m_rows[static_cast<std::size_t>(row)];
        VariableCells cells = cellsAt(static_cast<std::size_t>(row));
        for (std::size_t column = 0; column < kVariableColumns; ++column) {
            if (shown[column] == cells[column]) continue;
            shown[column] = std::move(cells[column]);
            if (row >= changes.oldCount) continue;
            changes.cells.push_back({row, static_cast<int>(column)});
        }
    }
    return changes;
}

TableChanges VariablesTable::Refresh(const operands::VariableTable& variables) {
    return Take(variables.GetSize(), [next = variables.begin()](std::size_t) mutable {
        return CellsOfVariable(**next++);
    });
}

TableChanges VariablesTable::Refresh(const VariableRows& rows) {
    return Take(rows.GetCount(), [&rows](std::size_t row) { return rows.CellsOf(row); });
}

int VariablesTable::FindFrom(int row, std::string_view pattern, int options) const {
    for (; row < GetCount(); ++row) {
        if (text::CompareWithPattern(NameOf(row), pattern, options)) return row;
    }
    return -1;
}

FoundRow VariablesTable::Find(int selected, std::string_view text, int options) const {
    const std::string pattern = text::ToUpper(text);
    const int first = selected + 1;
    FoundRow found{.row = FindFrom(first, pattern, options), .beeps = 0};
    if (found.row < 0 && first > 0) found = {FindFrom(0, pattern, options), 1};
    if (found.row < 0) ++found.beeps;
    return found;
}

std::optional<value::CVal> ReadByHand(const operands::VariableTable& variables,
                                      std::string_view name) {
    operands::CVariable* const variable = variables.Find(name);
    if (variable == nullptr) return std::nullopt;
    value::CVal value;
    operands::CVariable* const shown = ShownVariable(*variable);
    const bool isRead =
        shown != nullptr &&
        shown->GetValue(value, value::KindCurrent, operands::kAsStored) == operands::ReadValue;
    return isRead ? value : value::CVal();
}

bool WriteByHand(const operands::VariableTable& variables, std::string_view name,
                 const value::CVal& value) {
    operands::CVariable* const variable = variables.Find(name);
    operands::CVariable* const shown = variable == nullptr ? nullptr : ShownVariable(*variable);
    return shown != nullptr && shown->SetValue(value, value::KindCurrent) != 0;
}

}  // namespace kalvex::workbench
