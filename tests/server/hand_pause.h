// The writer's pauses in the hands of the test: no time passes in them.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <utility>
#include <vector>

#include "server/StorePause.h"

namespace kalvex::server {

class HandPause final : public StorePause {
  public:
    void Wait(std::chrono::milliseconds time) override {
        std::unique_lock lock(m_mutex);
        m_pauses.push_back(time.count());
        m_changed.notify_all();
        m_changed.wait(lock, [this] { return m_free || m_allowed > 0; });
        if (!m_free) --m_allowed;
    }

    void Cut() override { Allow(1); }

    // Waits until the writer has come to its pause of that number, and says how long they all are.
    std::vector<std::int64_t> Await(std::size_t count) {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [&] { return m_pauses.size() >= count; });
        return m_pauses;
    }

    // So many pauses are over, or are none when they come.
    void Allow(std::size_t count) {
        const std::lock_guard lock(m_mutex);
        m_allowed += count;
        m_changed.notify_all();
    }

    // The writer never pauses any more.
    void Free() {
        const std::lock_guard lock(m_mutex);
        m_free = true;
        m_changed.notify_all();
    }

  private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<std::int64_t> m_pauses;
    std::size_t m_allowed = 0;
    bool m_free = false;
};

}  // namespace kalvex::server
