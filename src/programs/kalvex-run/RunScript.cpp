#include "programs/kalvex-run/RunScript.h"

namespace kalvex::run {

namespace {

constexpr int kReadUnusable = 1;  // the mode of a read

}  // namespace

RunScript::RunScript(const engine::DocumentServices& services) : m_document(services) {
    m_document.SetView(&m_breakpoints);
}

void RunScript::Start() {
    const bool accepted = m_document.Start();
    m_started |= accepted;
    m_refused |= !accepted;
    if (accepted) m_stepFailed = false;
}

void RunScript::Reset() {
    m_document.Reset();
    m_stepFailed = false;
}

// A step leaves no error standing, but the order to step has put the reported line out of the text,
// so it stands on the current line only after a failure.
void RunScript::AfterTick() {
    const engine::RunState& state = m_document.State();
    if (!m_stepDue || state.m_bStepRequested) return;
    m_stepFailed =
        state.m_nReportedLine == state.m_nCurrentLine && !m_document.LastError().IsWaiting();
}

bool RunScript::IsFinished() const {
    return m_document.State().m_nCurrentLine >= m_document.GetLineCount();
}

bool RunScript::IsAtRest() const {
    return !IsStepPending() && (!m_document.State().m_bRunning || IsFinished());
}

bool RunScript::IsStepPending() const {
    return m_document.State().m_bStepRequested && !m_document.State().m_bRunning;
}

value::CVal StoredValue(operands::CVariable& variable, value::ValueKind kind) {
    value::CVal value;
    variable.GetValue(value, kind, kReadUnusable);
    return value;
}

}  // namespace kalvex::run
