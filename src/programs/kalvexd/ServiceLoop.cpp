#include "programs/kalvexd/ServiceLoop.h"

#include <algorithm>
#include <chrono>

namespace kalvex::kalvexd {

namespace {

constexpr std::int64_t kLeastPeriod = 10;  // milliseconds

}  // namespace

std::int64_t SteadyMicroseconds() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::microseconds>(now).count();
}

ServiceLoop::ServiceLoop() : m_ticks(SteadyMicroseconds) {
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
