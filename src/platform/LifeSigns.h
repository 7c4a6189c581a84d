// Signs of life while the main thread is at something that may take long, such as a start or an
// end. Main thread.
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace kalvex::platform {

class LifeSigns {
  public:
    // Calls `tell` after each period, on a thread of its own, until it is destroyed, but `most`
    // times in all: what takes even longer hangs, and is not to look alive.
    LifeSigns(std::chrono::milliseconds period, int most, std::function<void()> tell);
    // `tell` is not called any more then.
    ~LifeSigns();
    LifeSigns(const LifeSigns&) = delete;
    LifeSigns& operator=(const LifeSigns&) = delete;

  private:
    void Run(std::chrono::milliseconds period, int most);

    const std::function<void()> m_tell;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_over = false;
    std::thread m_thread;
};

}  // namespace kalvex::platform
