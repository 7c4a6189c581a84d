// What is shown of a script, without anything that shows it: its text, the marks of its lines, the
// selected line, whether it may be edited, and in a console its variables. A tick only records, and
// who shows the script looks 25 times a second whether there is anything new. Main thread; lines
// count from 0.
#pragma once

#include <functional>
#include <utility>

#include "engine/ScriptView.h"
#include "workbench/model/EditedText.h"
#include "workbench/model/ScriptMarkers.h"
#include "workbench/model/VariableRows.h"

namespace kalvex::workbench {

// What the document has told its view.
enum class DocumentNews { Marks, ReadOnly, Title, Variables };

class DocumentModel final : public engine::ScriptView {
  public:
    using Listener = std::function<void(DocumentNews)>;

    // The text of the document, which moves the marks from now on. Not owned.
    void SetText(EditedText& text);
    EditedText* Text() const { return m_text; }  // null where nobody edits
    ScriptMarkers& Markers() { return m_markers; }
    const ScriptMarkers& Markers() const { return m_markers; }
    VariableRows& Variables() { return m_variables; }
    int GetSelectedLine() const { return m_selectedLine; }  // -1: none
    bool IsReadOnly() const { return m_readOnly; }

    // Hears at once of what a start, a stop, a step, a reset and a module bring, several times for
    // one of them; not of each line that runs, nor of marks that are set through Markers().
    void SetListener(Listener listener) { m_listener = std::move(listener); }
    // Another one when the selected line, the marks or the state have changed.
    unsigned GetRevision() const { return m_revision + m_markers.GetRevision(); }
    // Whether it was asked for since the last call.
    bool TakeTitleWanted() { return std::exchange(m_titleWanted, false); }
    bool TakeVariablesWanted() { return std::exchange(m_variablesWanted, false); }

    void SelectLine(int line) override;
    void SetLineMarker(int line, bool set) override;
    void SetReadOnly(bool readOnly) override;
    void RefreshTitle() override;
    void ClearAllMarkers() override;
    void RefreshVariables() override;
    bool HasBreakpoint(int line) const override;
    bool HasBreakpoints() const override { return m_markers.HasAny(MarkerBreakpoint); }

  private:
    void Tell(DocumentNews news) const;

    EditedText* m_text = nullptr;
    ScriptMarkers m_markers;
    VariableRows m_variables;
    Listener m_listener;
    unsigned m_revision = 0;
    int m_selectedLine = -1;
    bool m_readOnly = false;
    bool m_titleWanted = false;
    bool m_variablesWanted = false;
};

}  // namespace kalvex::workbench
