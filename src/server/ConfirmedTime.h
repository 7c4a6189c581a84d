// The time that has been confirmed by the time elapsed, so that a clock that jumps cannot have
// archives removed or reports computed before their time. Main thread; times are seconds.
#pragma once

#include <cstdint>
#include <optional>

namespace kalvex::server {

class ConfirmedTime {
  public:
    // Takes in both clocks; the first call believes the wall clock. Answers how far the wall clock
    // has jumped against the other since the last call: 0 for up to a minute either way.
    //
    // After a jump ahead the confirmed time goes on by elapsed time, until the wall clock agrees
    // with it to a minute, or an hour has gone by.
    std::int64_t Step(std::int64_t now, std::int64_t elapsed);

    // From now on the wall clock is right.
    void Trust();

    // Never ahead of the wall clock.
    std::int64_t Get() const;

    // What it will be if the next step comes then.
    std::int64_t At(std::int64_t now, std::int64_t elapsed) const;

    // The wall clock has not been found wrong, or is believed again.
    bool IsSure() const { return !m_doubtedAt; }

    // How many seconds the last step has taken.
    std::int64_t Passed() const { return m_passed; }

  private:
    struct Reading {
        std::int64_t now = 0;
        std::int64_t elapsed = 0;
    };

    std::optional<Reading> m_last;
    std::int64_t m_expected = 0;              // what the wall clock should show
    std::optional<std::int64_t> m_doubtedAt;  // elapsed time
    std::int64_t m_passed = 0;
};

}  // namespace kalvex::server
