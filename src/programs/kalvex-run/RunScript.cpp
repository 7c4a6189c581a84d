#include "programs/kalvex-run/RunScript.h"

namespace kalvex::run {

namespace {

constexpr int kReadUnusable = 1;  // the mode of a read

}  // namespace

CRunScript::CRunScript(const engine::DocumentServices& services) : m_document(services) {
    m_document.SetView(&m_breakpoints);
}

void CRunScript::Start() {
    const bool accepted = m_document.Start();
    m_bStarted |= accepted;
    m_bRefused |= !accepted;
    if (accepted) m_bStepFailed = false;
}

void CRunScript::Reset() {
    m_document.Reset();
    m_bStepFailed = false;
}

// A step leaves no error standing, but the order to step has put the reported line out of the text,
// so it stands on the current line only after a failure.
void CRunScript::AfterTick() {
    const engine::CRunState& state = m_document.State();
    if (!m_bStepDue || state.m_bStepRequested) return;
    m_bStepFailed =
        state.m_nReportedLine == state.m_nCurrentLine && !m_document.LastError().IsWaiting();
}

bool CRunScript::IsFinished() const {
    return m_document.State().m_nCurrentLine >= m_document.GetLineCount();
}

bool CRunScript::IsAtRest() const {
    return !IsStepPending() && (!m_document.State().m_bRunning || IsFinished());
}

bool CRunScript::IsStepPending() const {
    return m_document.State().m_bStepRequested && !m_document.State().m_bRunning;
}

value::CVal StoredValue(operands::CVariable& variable, value::ValueKind kind) {
    value::CVal value;
    variable.GetValue(value, kind, kReadUnusable);
    return value;
}

}  // namespace kalvex::run
