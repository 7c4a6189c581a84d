// Errors of scripts that stand for long: when the log is told of them again. Main thread.
#pragma once

#include <compare>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "platform/Clock.h"

namespace kalvex::app {

// The error on which a script stands; another one as soon as any of these differs.
struct StandingFault {
    std::string script;
    int line = 0;
    int code = 0;
    std::int64_t since = 0;

    auto operator<=>(const StandingFault&) const = default;
};

class ErrorReminder {
  public:
    // The clock outlives the reminder.
    explicit ErrorReminder(const platform::Clock& clock) : m_clock(clock) {}

    // Of all errors that stand now, the indices of those that are to be told again: an hour after
    // they were seen first, a day after it, and each further day. One that does not stand any more
    // is forgotten. Asked about once a second.
    std::vector<std::size_t> FindDue(const std::vector<StandingFault>& standing);

  private:
    struct Known {
        std::int64_t seen;  // by Clock::Elapsed
        std::int64_t due;
    };

    const platform::Clock& m_clock;
    std::map<StandingFault, Known> m_known;
};

}  // namespace kalvex::app
