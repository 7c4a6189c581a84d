// The variables of a script as a console shows them, which has no values of its own: a row for each
// declaration, filled from the messages of the module. Main thread; engine texts.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "engine/DeclaredVariables.h"
#include "engine/ScriptText.h"
#include "workbench/model/VariableSlots.h"

namespace kalvex::workbench {

class VariableRows {
  public:
    // A row for each declaration of the text, with no values.
    void Rebuild(const engine::ScriptText& text) { m_rows = engine::BuildDeclaredVars(text); }
    void Clear() { m_rows.clear(); }

    // Takes over the fields of a message, which end in a semicolon each. Empty ones are left out,
    // so that what stands behind them moves forward; of the columns that are left the texts stay.
    // The index of the row, or -1 when there is none of that name.
    int Update(std::string_view name, std::string_view fields);

    std::size_t GetCount() const { return m_rows.size(); }
    VariableCells CellsOf(std::size_t index) const;

  private:
    std::vector<engine::DeclaredVar> m_rows;
};

}  // namespace kalvex::workbench
