// What is known of a line that the script stands on: while it holds, another try of the line does
// what the last one did, and has nothing to change. Main thread.
#pragma once

#include <cstdint>
#include <limits>

#include "platform/Clock.h"

namespace kalvex::engine {

struct LinePromise {
    static constexpr std::int64_t kAlways = std::numeric_limits<std::int64_t>::max();
    static constexpr std::uint64_t kAnyData = std::numeric_limits<std::uint64_t>::max();

    // Holds from `from` until before `until`, and as long as the sources' change count is `data`.
    std::int64_t from = std::numeric_limits<std::int64_t>::min();
    std::int64_t until = kAlways;
    std::uint64_t data = kAnyData;
    int error = 0;          // in the error slot since the last try
    bool standing = false;  // else it holds no longer, whatever the rest says
    bool shows = false;     // somebody looks at the line, or hears of it, after each try
    bool tries = true;      // there is a line to be tried: else the script has passed its last one
};

// A line that waits for data, and what follows from its text.
struct WaitingLine {
    int line = -1;  // -1 where no other try has this text for sure
    bool alike = false;
    bool readsClock = false;
    std::int64_t tried = 0;  // if it reads the clock: the time behind the last try
};

// When a tick takes place, for scripts that only wait: read once, and again when a line has run,
// which may have set the clock.
class TickMoment {
  public:
    std::int64_t Now(const platform::Clock& clock) {
        if (m_clock != &clock) {
            m_now = clock.Now();
            m_clock = &clock;
        }
        return m_now;
    }
    void Forget() { m_clock = nullptr; }

  private:
    const platform::Clock* m_clock = nullptr;
    std::int64_t m_now = 0;
};

}  // namespace kalvex::engine
