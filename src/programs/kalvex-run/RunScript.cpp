#include "programs/kalvex-run/RunScript.h"

namespace kalvex::run {

namespace {

constexpr int kReadUnusable = 1;  // the mode of a read

}  // namespace

RunScript::RunScript(const engine::DocumentServices& services) : m_document(services) {
    m_document.SetView(&m_model);
}

void RunScript::ToggleBreakpoint(int line) {
    m_model.Markers().SetBreakpoint(line, !m_model.HasBreakpoint(line));
}

void RunScript::Start() {
    const bool accepted = m_document.Start();
    m_started |= accepted;
    m_refused |= !accepted;
}

bool RunScript::IsFinished() const {
    return m_document.State().m_nCurrentLine >= m_document.GetLineCount();
}

bool RunScript::IsAtRest() const {
    return !IsStepPending() && (!m_document.State().m_bRunning || IsFinished());
}

bool RunScript::IsFailed() const {
    const engine::RunState& state = m_document.State();
    return !IsFinished() && (state.m_bErrorStanding || state.stepFailed);
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
