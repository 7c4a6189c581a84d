// One script of the command line: its document, its marks and what its run came to.
#pragma once

#include "engine/ScriptDocument.h"
#include "workbench/model/DocumentModel.h"

namespace kalvex::run {

class RunScript {
  public:
    explicit RunScript(const engine::DocumentServices& services);

    engine::CKalvexDoc& Document() { return m_document; }
    const engine::CKalvexDoc& Document() const { return m_document; }
    void ToggleBreakpoint(int line);

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

    workbench::DocumentModel m_model;
    engine::CKalvexDoc m_document;
    bool m_started = false;
    bool m_refused = false;
};

// What the variable holds, whether a script could use it or not; of type None if it holds nothing.
value::CVal StoredValue(operands::CVariable& variable, value::ValueKind kind);

}  // namespace kalvex::run
