#include "vantrel/network/HandOver.h"

#include <utility>

namespace kalvex::vantrel {

bool HandOver::Push(std::function<void()> event, std::size_t weight) {
    // The loop may be gone once Stop has returned, so posting is done under the lock.
    const std::lock_guard lock(m_mutex);
    if (m_stopped) return true;
    m_events.push_back({std::move(event), weight});
    m_weight += weight;
    if (!std::exchange(m_posted, true)) {
        m_loop.Post([self = shared_from_this()] { self->Deliver(); });
    }
    if (m_weight < m_limit) return true;
    m_bPaused = true;
    return false;
}

void HandOver::Deliver() {
    std::vector<Event> events;
    {
        const std::lock_guard lock(m_mutex);
        events.swap(m_events);
        m_posted = false;
    }
    std::size_t weight = 0;
    for (const Event& event : events) {
        if (m_stopped) return;
        event.run();
        weight += event.weight;
    }
    {
        const std::lock_guard lock(m_mutex);
        if (m_stopped) return;
        m_weight -= weight;
        if (m_weight >= m_limit || !std::exchange(m_bPaused, false)) return;
    }
    m_resume();
}

void HandOver::Stop() {
    std::vector<Event> dropped;
    bool paused;
    {
        const std::lock_guard lock(m_mutex);
        if (std::exchange(m_stopped, true)) return;
        dropped.swap(m_events);
        paused = std::exchange(m_bPaused, false);
    }
    if (paused) m_resume();
}

}  // namespace kalvex::vantrel
