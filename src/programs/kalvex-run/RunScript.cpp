#include "programs/kalvex-run/RunScript.h"

namespace kalvex {

namespace {

constexpr int kReadUnusable = 1;  // the mode of a read

}  // namespace

CRunScript::CRunScript(const DocumentServices& services) : m_document(services) {
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
    if (!m_bStepDue || m_document.m_bStepRequested) return;
    m_bStepFailed = m_document.m_nReportedLine == m_document.m_nCurrentLine &&
                    !m_document.LastError().IsWaiting();
}

bool CRunScript::IsFinished() const {
    return m_document.m_nCurrentLine >= m_document.GetLineCount();
}

bool CRunScript::IsAtRest() const {
    return !IsStepPending() && (!m_document.m_bRunning || IsFinished());
}

bool CRunScript::IsStepPending() const {
    return m_document.m_bStepRequested && !m_document.m_bRunning;
}

CVal StoredValue(CVariable& variable, ValueKind kind) {
    CVal value;
    variable.GetValue(value, kind, kReadUnusable);
    return value;
}

}  // namespace kalvex
