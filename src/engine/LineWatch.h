// How long the lines of scripts take, in a process that runs by a real clock: each holds up all
// other scripts. Main thread.
#pragma once

#include <cstdint>

#include "platform/SteadyTime.h"

namespace kalvex::engine {

// Of the main thread. Microseconds.
struct LineClocks {
    // One that nobody sets. It is read behind each line, and may be some milliseconds behind.
    std::int64_t (*now)() = platform::CoarseMicroseconds;
    platform::ThreadTime (*thread)() = platform::ThisThreadTime;
};

class LineWatch {
  public:
    // What takes longer is told.
    static constexpr std::int64_t kUnnoticed = 100'000;

    explicit LineWatch(const LineClocks& clocks = {}) : m_clocks(clocks) {}

    // A tick begins.
    void Begin();
    // A line was tried: how long ago the line before it was, or the tick began. Time in which only
    // the machine had no processor for it is no time of the line.
    std::int64_t Take() {
        const std::int64_t took = m_clocks.now() - m_last;
        m_last += took;
        return took > kUnnoticed ? OwnTime(took) : took;
    }
    // When the last line was tried.
    std::int64_t Now() const { return m_last; }

  private:
    std::int64_t OwnTime(std::int64_t took);

    const LineClocks m_clocks;
    std::int64_t m_last = 0;
    platform::ThreadTime m_thread;  // when the tick began, or a slow line had ended
};

// The slow lines of a script that the log was not told of, and when it was told last.
struct SlowLines {
    std::int64_t told = 0;  // by LineWatch; 0 for never
    std::int64_t untold = 0;
};

}  // namespace kalvex::engine
