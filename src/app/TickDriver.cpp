#include "app/TickDriver.h"

#include <algorithm>

namespace kalvex {

namespace {

constexpr std::int64_t kTick = 1000;

}  // namespace

std::optional<std::int64_t> CTickDriver::OnTurn() {
    if (!m_work || !m_needed()) {
        m_pace.reset();
        return std::nullopt;
    }
    const std::int64_t now = m_clock();
    if (!m_pace) {
        m_tBegin = now;
        m_pace.emplace();
    }
    const std::int64_t lateness = now - m_tBegin - m_pace->NextDue() * kTick;
    if (m_pace->TakeTick((now - m_tBegin) / kTick)) {
        m_work();
        if (m_listener) m_listener(now, lateness);
    }
    return std::max<std::int64_t>(m_tBegin + m_pace->NextDue() * kTick - m_clock(), 0);
}

}  // namespace kalvex
