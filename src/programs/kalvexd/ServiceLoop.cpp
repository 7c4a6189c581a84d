#include "programs/kalvexd/ServiceLoop.h"

#include <chrono>

#include "app/MainFrame.h"

namespace kalvex {

std::int64_t SteadyMicroseconds() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::microseconds>(now).count();
}

CServiceLoop::CServiceLoop(std::function<bool()> ticksNeeded)
    : m_ticks(SteadyMicroseconds, std::move(ticksNeeded)) {
    m_loop.BeforeWait([this] { return m_ticks.OnTurn(); });
}

bool CServiceLoop::SetTimer(int id, std::int64_t milliseconds, std::function<void()> work) {
    KillTimer(id);
    if (id == CMainFrame::TickTimer) {
        m_ticks.SetWork(std::move(work));
    } else {
        m_mapTimers[id] = m_loop.Every(milliseconds, std::move(work));
    }
    return true;
}

void CServiceLoop::KillTimer(int id) {
    if (id == CMainFrame::TickTimer) m_ticks.SetWork({});
    const auto timer = m_mapTimers.find(id);
    if (timer == m_mapTimers.end()) return;
    m_loop.Cancel(timer->second);
    m_mapTimers.erase(timer);
}

}  // namespace kalvex
