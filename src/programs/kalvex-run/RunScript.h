// One script of the command line: its document, its breakpoints and what its run came to.
#pragma once

#include <set>
#include <string>

#include "engine/ScriptDocument.h"
#include "engine/ScriptView.h"

namespace kalvex::run {

// A view without a window: all that it holds is breakpoints.
class CBreakpoints final : public engine::CScriptView {
  public:
    void Toggle(int line) {
        if (m_setLines.erase(line) == 0) m_setLines.insert(line);
    }

    void SelectLine(int) override {}
    void SetLineMarker(int, bool) override {}
    void SetReadOnly(bool) override {}
    void RefreshTitle() override {}
    void ClearAllMarkers() override { m_setLines.clear(); }
    void RefreshVariables() override {}
    bool HasBreakpoint(int line) const override { return m_setLines.contains(line); }

  private:
    std::set<int> m_setLines;
};

class CRunScript {
  public:
    explicit CRunScript(const engine::DocumentServices& services);

    engine::CKalvexDoc& Document() { return m_document; }
    const engine::CKalvexDoc& Document() const { return m_document; }
    CBreakpoints& Breakpoints() { return m_breakpoints; }

    void Start();
    void Reset();

    // Around each tick, to see how a single step ended.
    void BeforeTick() { m_bStepDue = IsStepPending(); }
    void AfterTick();

    // A start was accepted; one was refused.
    bool IsStarted() const { return m_bStarted; }
    bool IsRefused() const { return m_bRefused; }
    // The line pointer is past the last line.
    bool IsFinished() const;
    // Nothing more comes of itself: finished, in step mode, reset or never started, and no step to
    // do.
    bool IsAtRest() const;
    // It stands on a line whose last run failed, or was stopped by a failure.
    bool IsFailed() const { return m_document.State().m_bErrorStanding || m_bStepFailed; }

  private:
    bool IsStepPending() const;

    CBreakpoints m_breakpoints;
    engine::CKalvexDoc m_document;
    bool m_bStarted = false;
    bool m_bRefused = false;
    bool m_bStepDue = false;
    bool m_bStepFailed = false;
};

// What the variable holds, whether a script could use it or not; of type None if it holds nothing.
value::CVal StoredValue(operands::CVariable& variable, value::ValueKind kind);

}  // namespace kalvex::run
