#include "platform/MainLoop.h"

#include <utility>

namespace kalvex::platform {

namespace {

class MissingLoop final : public MainLoop {
  public:
    void Post(std::function<void()>) override {}
};

}  // namespace

MainLoop& NoLoop() {
    static MissingLoop loop;
    return loop;
}

void PostedWork::Post(std::function<void()> work) {
    bool wasEmpty;
    {
        const std::lock_guard lock(m_mutex);
        wasEmpty = m_work.empty();
        m_work.push_back(std::move(work));
        m_isEmpty.store(false, std::memory_order_release);
    }
    if (wasEmpty) m_wake();
}

bool PostedWork::Run() {
    if (m_isEmpty.load(std::memory_order_acquire)) return false;
    std::vector<std::function<void()>> work;
    {
        const std::lock_guard lock(m_mutex);
        work.swap(m_work);
        m_isEmpty.store(true, std::memory_order_release);
    }
    for (const std::function<void()>& piece : work) piece();
    return !work.empty();
}

}  // namespace kalvex::platform
