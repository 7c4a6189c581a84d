#include "app/TickDriver.h"

#include <algorithm>

namespace kalvex::app {

namespace {

constexpr std::int64_t kTick = 1000;

}  // namespace

std::optional<std::int64_t> CTickDriver::OnTurn() {
    if (m_pSource == nullptr || !m_pSource->NeedsTicks()) {
        m_pace.reset();
        return std::nullopt;
    }
    if (!m_pace) {
        m_tBegin = m_clock();
        m_pace.emplace();
        m_nLeftOut = 0;
    }
    const std::int64_t elapsed = Elapsed();
    SkipIdleTicks(elapsed);
    const std::int64_t lateness = elapsed - (m_pace->NextDue() - m_nLeftOut) * kTick;
    if (m_pace->TakeTick(elapsed / kTick)) {
        m_nLeftOut = 0;
        m_pSource->RunTick();
        if (m_listener) m_listener(m_tBegin + elapsed, lateness);
    }
    const std::int64_t next = m_pace->NextDue() + m_pSource->GetIdleTicks();
    return std::max<std::int64_t>(next * kTick - Elapsed(), 0);
}

void CTickDriver::OnWake() {
    if (m_pace && m_pSource != nullptr) SkipIdleTicks(Elapsed());
}

void CTickDriver::SkipIdleTicks(std::int64_t elapsed) {
    const std::int64_t now = elapsed / kTick;
    m_nLeftOut += m_pace->LeaveOut(now);
    const std::int64_t due = m_pace->CountDue(now);
    if (due == 0) return;
    const auto count = static_cast<int>(std::min<std::int64_t>(due, m_pSource->GetIdleTicks()));
    if (count == 0) return;
    m_pSource->SkipTicks(count);
    m_pace->Take(count);
    if (!m_listener) return;
    for (int i = 0; i < count; ++i) m_listener(m_tBegin + elapsed, 0);
}

}  // namespace kalvex::app
