// What is shown of a script, without anything that shows it: the marks of its lines, the selected
// line, and in a console its variables. Main thread; lines count from 0.
#pragma once

#include "engine/ScriptView.h"
#include "workbench/model/ScriptMarkers.h"
#include "workbench/model/VariableRows.h"

namespace kalvex::workbench {

class DocumentModel final : public engine::ScriptView {
  public:
    ScriptMarkers& Markers() { return m_markers; }
    VariableRows& Variables() { return m_variables; }
    int GetSelectedLine() const { return m_selectedLine; }  // -1: none

    void SelectLine(int line) override { m_selectedLine = line; }
    void SetLineMarker(int line, bool set) override;
    void SetReadOnly(bool) override {}
    void RefreshTitle() override {}
    void ClearAllMarkers() override;
    void RefreshVariables() override {}
    bool HasBreakpoint(int line) const override;

  private:
    ScriptMarkers m_markers;
    VariableRows m_variables;
    int m_selectedLine = -1;
};

}  // namespace kalvex::workbench
