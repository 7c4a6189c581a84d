// The pace of ticks against a real clock: one a millisecond by elapsed time. Whoever falls behind
// catches up within bounds, so that a stall does not turn into a burst.
#pragma once

#include <algorithm>
#include <cstdint>

namespace kalvex::app {

class Pace {
  public:
    static constexpr std::int64_t kMostBehind = 100;  // ticks

    // Takes the next tick when it is due. Milliseconds since the making of the pace, as below.
    bool TakeTick(std::int64_t now) {
        LeaveOut(now);
        if (now < m_next) return false;
        ++m_next;
        return true;
    }

    // Leaves out the ticks that are too far behind; how many they were.
    std::int64_t LeaveOut(std::int64_t now) {
        const std::int64_t count = std::max<std::int64_t>(now - kMostBehind - m_next, 0);
        m_next += count;
        return count;
    }

    // How many ticks are due, and taking so many of them.
    std::int64_t CountDue(std::int64_t now) const {
        return std::max<std::int64_t>(now - m_next + 1, 0);
    }
    void Take(std::int64_t count) { m_next += count; }

    std::int64_t NextDue() const { return m_next; }

  private:
    std::int64_t m_next = 0;
};

}  // namespace kalvex::app
