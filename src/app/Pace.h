// The pace of ticks against a real clock: one a millisecond by elapsed time. Whoever falls behind
// catches up within bounds, so that a stall does not turn into a burst.
#pragma once

#include <algorithm>
#include <cstdint>

namespace kalvex {

class CPace {
  public:
    static constexpr std::int64_t kMostBehind = 100;  // ticks

    // Takes the next tick when it is due. Milliseconds since the making of the pace.
    bool TakeTick(std::int64_t now) {
        m_nNext = std::max(m_nNext, now - kMostBehind);
        if (now < m_nNext) return false;
        ++m_nNext;
        return true;
    }

    std::int64_t NextDue() const { return m_nNext; }

  private:
    std::int64_t m_nNext = 0;
};

}  // namespace kalvex
