// The main thread's inbox: other threads hand their results over here, and nothing else crosses.
#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <vector>

namespace kalvex::platform {

class MainLoop {
  public:
    virtual ~MainLoop() = default;

    // Has the work done on the main thread, after all that was posted before. Any thread.
    virtual void Post(std::function<void()> work) = 0;
};

// For a process without a loop: what is posted is never done.
MainLoop& NoLoop();

// An inbox that is emptied by hand: the heart of the loops that wait for the system.
class PostedWork final : public MainLoop {
  public:
    // `wake` is called, on the posting thread, whenever the inbox stops being empty.
    explicit PostedWork(std::function<void()> wake = [] {}) : m_wake(std::move(wake)) {}

    void Post(std::function<void()> work) override;

    // Does what was posted up to now; false when there was nothing. Main thread.
    bool Run();

  private:
    std::function<void()> m_wake;
    std::mutex m_mutex;
    std::vector<std::function<void()>> m_work;
    std::atomic<bool> m_isEmpty = true;  // seen without the lock, which most ticks need not take
};

}  // namespace kalvex::platform
