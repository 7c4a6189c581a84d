// Ticks by elapsed time, for a loop that has work done around each of its waits. Main thread. All
// times are microseconds of one clock that nobody sets.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include "app/Pace.h"

namespace kalvex::app {

// What ticks are for.
class TickSource {
  public:
    virtual ~TickSource() = default;
    virtual void RunTick() = 0;
    virtual bool NeedsTicks() const = 0;
    // See the operations of TickRunner.
    virtual int GetIdleTicks() const = 0;
    virtual void SkipTicks(int count) = 0;
};

class TickDriver {
  public:
    // A tick has been run; how much later than it was due it began. One that was skipped, because
    // it had nothing to run, counts as one that was in time.
    using Listener = std::function<void(std::int64_t now, std::int64_t lateness)>;

    explicit TickDriver(std::function<std::int64_t()> clock) : m_clock(std::move(clock)) {}

    // None at first, and none for null. Not owned.
    void SetSource(TickSource* source) { m_source = source; }
    void SetListener(Listener listener) { m_listener = std::move(listener); }

    // Before a wait: runs the tick that is due, one at most, and answers how long there is nothing
    // to run then: 0 when the next tick is late already, nothing when no ticks are needed.
    std::optional<std::int64_t> OnTurn();
    // After a wait, before anything else acts on the source.
    void OnWake();

  private:
    std::int64_t Elapsed() const { return m_clock() - m_begin; }
    void SkipIdleTicks(std::int64_t elapsed);

    const std::function<std::int64_t()> m_clock;
    TickSource* m_source = nullptr;
    Listener m_listener;
    std::int64_t m_begin = 0;
    std::optional<Pace> m_pace;  // since the beginning; none while no ticks are needed
    std::int64_t m_leftOut = 0;  // ticks, before the next one that is run
};

}  // namespace kalvex::app
