#include "vantrel/network/Patience.h"

#include <algorithm>
#include <utility>

namespace kalvex::vantrel {

namespace {

// Between two looks that lie further apart this side itself has been held up, and what the peer
// said meanwhile may still be on its way in.
constexpr std::int64_t kLongestLook = 5'000;

}  // namespace

PeerWatch::Due PeerWatch::Look(std::int64_t now, LifeSigns signs) {
    const std::int64_t passed = std::min(now - std::exchange(m_looked, now), kLongestLook);
    m_silent = signs.heard ? 0 : m_silent + passed;
    m_stuck = signs.stuck ? m_stuck + passed : 0;
    m_mute = signs.spoke ? 0 : m_mute + passed;
    if (m_silent >= kGoneAfter) return Due::Silent;
    if (m_stuck >= kGoneAfter) return Due::Stuck;
    if (m_mute < kBeatAfter) return Due::Nothing;
    m_mute = 0;
    return Due::Beat;
}

std::int64_t RetryPause::Next() {
    return std::exchange(m_next, std::min(m_next * 2, kLongestPause));
}

}  // namespace kalvex::vantrel
