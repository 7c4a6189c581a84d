// Ticks by elapsed time, for a loop that has work done before each of its waits. Main thread. All
// times are microseconds of one clock that nobody sets.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include "app/Pace.h"

namespace kalvex {

class CTickDriver {
  public:
    // A tick has been run; how much later than it was due it began.
    using Listener = std::function<void(std::int64_t now, std::int64_t lateness)>;

    // There are ticks as long as `needed` says so.
    CTickDriver(std::function<std::int64_t()> clock, std::function<bool()> needed)
        : m_clock(std::move(clock)), m_needed(std::move(needed)) {}

    // What a tick is; none at first, and none for an empty one.
    void SetWork(std::function<void()> work) { m_work = std::move(work); }
    void SetListener(Listener listener) { m_listener = std::move(listener); }

    // Runs the tick that is due, one at most, and answers how long nothing is due then: 0 when the
    // next one is late already, nothing when no ticks are needed.
    std::optional<std::int64_t> OnTurn();

  private:
    const std::function<std::int64_t()> m_clock;
    const std::function<bool()> m_needed;
    std::function<void()> m_work;
    Listener m_listener;
    std::int64_t m_tBegin = 0;
    std::optional<CPace> m_pace;  // since the beginning; none while no ticks are needed
};

}  // namespace kalvex
