// One script of the command line: its document, its breakpoints and what its run came to.
#pragma once

#include <set>
#include <string>

#include "engine/ScriptDocument.h"
#include "engine/ScriptView.h"

namespace kalvex::run {

// A view without a window: all that it holds is breakpoints.
class BreakpointSet final : public engine::ScriptView {
  public:
    void Toggle(int line) {
        if (m_lines.erase(line) == 0) m_lines.insert(line);
    }

    void SelectLine(int) override {}
    void SetLineMarker(int, bool) override {}
    void SetReadOnly(bool) override {}
    void RefreshTitle() override {}
    void ClearAllMarkers() override { m_lines.clear(); }
    void RefreshVariables() override {}
    bool HasBreakpoint(int line) const override { return m_lines.contains(line); }

  private:
    std::set<int> m_lines;
};

class RunScript {
  public:
    explicit RunScript(const engine::DocumentServices& services);

    engine::CKalvexDoc& Document() { return m_document; }
    const engine::CKalvexDoc& Document() const { return m_document; }
    BreakpointSet& Breakpoints() { return m_breakpoints; }

    void Start();

    // A start was accepted; one was refused.
    bool IsStarted() const { return m_started; }
    bool IsRefused() const { return m_refused; }
    // The line pointer is past the last line.
    bool IsFinished() const;
    // Nothing more comes of itself: finished, in step mode, reset or never started, and no step to
    // do.
    bool IsAtRest() const;
    // It stands on a line whose last run failed, or was stopped by a failure.
    bool IsFailed() const;

  private:
    bool IsStepPending() const;

    BreakpointSet m_breakpoints;
    engine::CKalvexDoc m_document;
    bool m_started = false;
    bool m_refused = false;
};

// What the variable holds, whether a script could use it or not; of type None if it holds nothing.
value::CVal StoredValue(operands::CVariable& variable, value::ValueKind kind);

}  // namespace kalvex::run
