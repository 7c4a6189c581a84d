#include "platform/LifeSigns.h"

#include <gtest/gtest.h>

#include <condition_variable>
#include <mutex>

namespace kalvex::platform {
namespace {

using std::chrono::milliseconds;

// Counts the signs.
class Listener {
  public:
    std::function<void()> Tell() {
        return [this] {
            const std::lock_guard lock(m_mutex);
            ++m_count;
            m_changed.notify_all();
        };
    }
    void WaitFor(int count) {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [&] { return m_count >= count; });
    }
    int Count() {
        const std::lock_guard lock(m_mutex);
        return m_count;
    }

  private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    int m_count = 0;
};

TEST(LifeSignsTest, SignsComeWhileTheThreadThatWaitsDoesNothing) {
    Listener listener;
    const LifeSigns signs(milliseconds(1), 1000000, listener.Tell());
    listener.WaitFor(3);
}

TEST(LifeSignsTest, WhatIsOverAtOnceGivesNone) {
    Listener listener;
    { const LifeSigns signs(std::chrono::hours(1), 10, listener.Tell()); }
    EXPECT_EQ(listener.Count(), 0);
}

TEST(LifeSignsTest, WhatHangsIsNotToldToBeAliveForEver) {
    Listener listener;
    {
        const LifeSigns signs(milliseconds(0), 5, listener.Tell());
        listener.WaitFor(5);
    }
    EXPECT_EQ(listener.Count(), 5);
}

}  // namespace
}  // namespace kalvex::platform
