// The clock that everything reads; passed in, never looked up. Main thread.
#pragma once

#include <cstdint>

namespace kalvex::platform {

class Clock {
  public:
    virtual ~Clock() = default;

    // Wall-clock time in seconds since 1970-01-01 00:00:00 GMT.
    virtual std::int64_t Now() const = 0;

    // Seconds since some moment, at an even pace whatever happens to the wall clock.
    virtual std::int64_t Elapsed() const = 0;

    // Sets the system clock to this moment. False when the system refuses.
    virtual bool SetSystemTime(std::int64_t seconds) = 0;
};

// A clock that stands still until it is moved: the virtual clock of the runner and of the tests.
class VirtualClock final : public Clock {
  public:
    explicit VirtualClock(std::int64_t seconds = 0) : m_milliseconds(seconds * 1000) {}

    std::int64_t Now() const override;
    std::int64_t Elapsed() const override { return m_elapsed / 1000; }
    bool SetSystemTime(std::int64_t seconds) override;
    void Advance(std::int64_t milliseconds);

  private:
    std::int64_t m_milliseconds;
    std::int64_t m_elapsed = 0;  // in milliseconds
};

}  // namespace kalvex::platform
