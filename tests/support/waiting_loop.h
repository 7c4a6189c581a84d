// The main thread's inbox in tests that have other threads: it can be waited for.
#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <utility>

#include "platform/MainLoop.h"

namespace kalvex::support {

class WaitingLoop final : public platform::MainLoop {
  public:
    void Post(std::function<void()> work) override { m_work.Post(std::move(work)); }

    // As PostedWork has it.
    bool Run() { return m_work.Run(); }

    // Waits until something is posted, then does it. Main thread.
    void WaitAndRun() {
        while (!Run()) {
            std::unique_lock lock(m_mutex);
            m_woken.wait(lock, [this] { return std::exchange(m_posted, false); });
        }
    }

  private:
    void Wake() {
        {
            const std::lock_guard lock(m_mutex);
            m_posted = true;
        }
        m_woken.notify_one();
    }

    std::mutex m_mutex;
    std::condition_variable m_woken;
    bool m_posted = false;
    platform::PostedWork m_work{[this] { Wake(); }};
};

}  // namespace kalvex::support
