#include "engine/LineStanding.h"

namespace kalvex::engine {

void LineStanding::BeginLine(std::int64_t now) {
    m_lastFinished = now;
    m_since = now;
    m_error = {};
    m_outcome.reset();
}

void LineStanding::OnStart(const platform::Clock& clock) {
    Settle(clock);
    m_outcome.reset();
    if (m_since == 0) m_since = clock.Now();
}

void LineStanding::OnStop(StopCause cause, const platform::Clock& clock) {
    Settle(clock);
    m_stopCause = cause;
    m_stopped = clock.Now();
}

void LineStanding::OnStay(LineOutcome outcome, const operands::ErrorSlot& error,
                          const platform::Clock& clock) {
    Settle(clock);
    if (m_since == 0) m_since = clock.Now();
    if (outcome != LineOutcome::Failed || error.IsWaiting()) return;
    if (m_error.code != error.m_nErrorCode) m_error = {.code = error.m_nErrorCode, .text = {}};
    if (const std::string_view about = error.m_strErrorText; m_error.text != about)
        m_error.text = about;
    ++m_error.times;
}

}  // namespace kalvex::engine
