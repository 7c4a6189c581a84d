#include "vantrel/network/HandOver.h"

#include <utility>

namespace kalvex::vantrel {

bool HandOver::Push(std::function<void()> event, std::size_t weight) {
    // The loop may be gone once Stop has returned, so posting is done under the lock.
    const std::lock_guard lock(m_mutex);
    if (m_bStopped) return true;
    m_arrEvents.push_back({std::move(event), weight});
    m_nWeight += weight;
    if (!std::exchange(m_bPosted, true)) {
        m_loop.Post([self = shared_from_this()] { self->Deliver(); });
    }
    if (m_nWeight < m_nLimit) return true;
    m_bPaused = true;
    return false;
}

void HandOver::Deliver() {
    std::vector<Event> events;
    {
        const std::lock_guard lock(m_mutex);
        events.swap(m_arrEvents);
        m_bPosted = false;
    }
    std::size_t weight = 0;
    for (const Event& event : events) {
        if (m_bStopped) return;
        event.run();
        weight += event.weight;
    }
    {
        const std::lock_guard lock(m_mutex);
        if (m_bStopped) return;
        m_nWeight -= weight;
        if (m_nWeight >= m_nLimit || !std::exchange(m_bPaused, false)) return;
    }
    m_resume();
}

void HandOver::Stop() {
    std::vector<Event> dropped;
    bool paused;
    {
        const std::lock_guard lock(m_mutex);
        if (std::exchange(m_bStopped, true)) return;
        dropped.swap(m_arrEvents);
        paused = std::exchange(m_bPaused, false);
    }
    if (paused) m_resume();
}

}  // namespace kalvex::vantrel
