#include "app/TickDriver.h"

#include <algorithm>

namespace kalvex::app {

namespace {

constexpr std::int64_t kTick = 1000;

}  // namespace

std::optional<std::int64_t> TickDriver::OnTurn() {
    if (m_source == nullptr || !m_source->NeedsTicks()) {
        m_pace.reset();
        return std::nullopt;
    }
    if (!m_pace) {
        m_begin = m_clock();
        m_pace.emplace();
        m_leftOut = 0;
    }
    const std::int64_t elapsed = Elapsed();
    SkipIdleTicks(elapsed);
    const std::int64_t lateness = elapsed - (m_pace->NextDue() - m_leftOut) * kTick;
    if (m_pace->TakeTick(elapsed / kTick)) {
        m_leftOut = 0;
        m_source->RunTick();
        if (m_listener) m_listener(m_begin + elapsed, lateness);
    }
    const std::int64_t next = m_pace->NextDue() + m_source->GetIdleTicks();
    return std::max<std::int64_t>(next * kTick - Elapsed(), 0);
}

void TickDriver::OnWake() {
    if (m_pace && m_source != nullptr) SkipIdleTicks(Elapsed());
}

void TickDriver::SkipIdleTicks(std::int64_t elapsed) {
    const std::int64_t now = elapsed / kTick;
    m_leftOut += m_pace->LeaveOut(now);
    const std::int64_t due = m_pace->CountDue(now);
    if (due == 0) return;
    const auto count = static_cast<int>(std::min<std::int64_t>(due, m_source->GetIdleTicks()));
    if (count == 0) return;
    m_source->SkipTicks(count);
    m_pace->Take(count);
    if (!m_listener) return;
    for (int i = 0; i < count; ++i) m_listener(m_begin + elapsed, 0);
}

}  // namespace kalvex::app
