#include "platform/LifeSigns.h"

#include <utility>

#include "platform/Threads.h"

namespace kalvex::platform {

namespace {

constexpr ThreadIdentity kThread{"LifeSigns", 106};

}  // namespace

LifeSigns::LifeSigns(std::chrono::milliseconds period, int most, std::function<void()> tell)
    : m_tell(std::move(tell)),
      m_thread(StartThread(kThread, [this, period, most] { Run(period, most); })) {}

LifeSigns::~LifeSigns() {
    {
        const std::lock_guard lock(m_mutex);
        m_over = true;
    }
    m_changed.notify_all();
    if (m_thread.joinable()) m_thread.join();
}

void LifeSigns::Run(std::chrono::milliseconds period, int most) {
    std::unique_lock lock(m_mutex);
    for (int i = 0; i < most; ++i) {
        if (m_changed.wait_for(lock, period, [this] { return m_over; })) return;
        m_tell();
    }
}

}  // namespace kalvex::platform
