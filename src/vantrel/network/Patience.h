// How long a peer may be silent, and how long to wait before the next attempt. Times are in
// milliseconds of a clock that never goes back.
#pragma once

#include <cstdint>
#include <functional>

namespace kalvex::vantrel {

using SteadyClock = std::function<std::int64_t()>;

inline constexpr std::int64_t kBeatAfter = 2'000;
inline constexpr std::int64_t kGoneAfter = 10'000;
inline constexpr std::int64_t kLongestPause = 5'000;

// What has happened since the last look at a conversation.
struct LifeSigns {
    bool heard = false;  // something came in
    bool spoke = false;  // something was sent
    bool stuck = false;  // what waits to be sent has not moved
};

// Watches over one conversation. Looked at about once a second.
class PeerWatch {
  public:
    explicit PeerWatch(std::int64_t now) : m_looked(now) {}

    // Beat: a sign of life is due. Silent, Stuck: the peer counts as gone.
    enum class Due { Nothing, Beat, Silent, Stuck };
    Due Look(std::int64_t now, LifeSigns signs);

  private:
    std::int64_t m_looked;
    std::int64_t m_silent = 0;
    std::int64_t m_stuck = 0;
    std::int64_t m_mute = 0;  // time in which this side has sent nothing
};

// The growing pauses between attempts.
class RetryPause {
  public:
    std::int64_t Next();
    void Reset() { m_next = kFirst; }

  private:
    static constexpr std::int64_t kFirst = 500;

    std::int64_t m_next = kFirst;
};

}  // namespace kalvex::vantrel
