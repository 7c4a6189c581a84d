// The rows of a variables window: what is shown now, of the variables of a script or of a console's
// copy of them, and which of it a refresh changes. Main thread; engine texts; rows and columns
// count from 0.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "operands/Variable.h"
#include "value/Value.h"
#include "workbench/model/VariableRows.h"
#include "workbench/model/VariableSlots.h"

namespace kalvex::workbench {

struct CellPlace {
    int row;
    int column;
    bool operator==(const CellPlace&) const = default;
};

struct TableChanges {
    int oldCount = 0;
    int newCount = 0;
    std::vector<CellPlace> cells;  // whose text differs, of rows that were there before
};

struct FoundRow {
    int row = -1;   // -1: none
    int beeps = 0;  // to be heard meanwhile
};

class VariablesTable {
  public:
    // In order of declaration; variables that are gone, as after a reset, take their rows along.
    TableChanges Refresh(const operands::VariableTable& variables);
    TableChanges Refresh(const VariableRows& rows);

    int GetCount() const { return static_cast<int>(m_rows.size()); }
    const VariableCells& CellsOf(int row) const { return m_rows[static_cast<std::size_t>(row)]; }
    const std::string& NameOf(int row) const { return CellsOf(row).front(); }

    // The next row behind the selected one, -1 for none, whose name matches the text in upper case;
    // behind the last row once more from the first. The options are those of CompareWithPattern.
    FoundRow Find(int selected, std::string_view text, int options) const;

  private:
    int FindFrom(int row, std::string_view pattern, int options) const;
    template <class CellsAt>
    TableChanges Take(std::size_t count, CellsAt cellsAt);

    std::vector<VariableCells> m_rows;
};

// The current value of a variable as it stands, empty where it cannot be read; nothing when there
// is no variable of that name.
std::optional<value::CVal> ReadByHand(const operands::VariableTable& variables,
                                      std::string_view name);
// Writes the current value; false when that is not possible.
bool WriteByHand(const operands::VariableTable& variables, std::string_view name,
                 const value::CVal& value);

}  // namespace kalvex::workbench
