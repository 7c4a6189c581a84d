#include "server/StorePause.h"

#include <condition_variable>
#include <mutex>
#include <utility>

namespace kalvex::server {

namespace {

class TimedPause final : public StorePause {
  public:
    void Wait(std::chrono::milliseconds time) override {
        std::unique_lock lock(m_mutex);
        m_ended.wait_for(lock, time, [this] { return m_cut; });
        m_cut = false;
    }

    void Cut() override {
        {
            const std::lock_guard lock(m_mutex);
            m_cut = true;
        }
        m_ended.notify_one();
    }

  private:
    std::mutex m_mutex;
    std::condition_variable m_ended;
    bool m_cut = false;
};

}  // namespace

std::shared_ptr<StorePause> MakeTimedPause() {
    return std::make_shared<TimedPause>();
}

}  // namespace kalvex::server
