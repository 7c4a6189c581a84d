#include "programs/kalvexd/ServiceLoop.h"

#include <algorithm>

#include "platform/SteadyTime.h"

namespace kalvex::kalvexd {

namespace {

constexpr std::int64_t kLeastPeriod = 10;  // milliseconds

}  // namespace

ServiceLoop::ServiceLoop() : m_ticks(platform::SteadyMicroseconds) {
    m_loop.AroundWait([this] { return m_ticks.OnTurn(); }, [this] { m_ticks.OnWake(); });
}

bool ServiceLoop::SetTimer(int id, std::int64_t milliseconds, std::function<void()> work) {
    KillTimer(id);
    m_timers[id] = m_loop.Every(std::max(milliseconds, kLeastPeriod), std::move(work));
    return true;
}

void ServiceLoop::KillTimer(int id) {
    const auto timer = m_timers.find(id);
    if (timer == m_timers.end()) return;
    m_loop.Cancel(timer->second);
    m_timers.erase(timer);
}

}  // namespace kalvex::kalvexd
