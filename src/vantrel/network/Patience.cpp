#include "vantrel/network/Patience.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace kalvex::vantrel {

namespace {

// Between two looks that lie further apart this side itself has been held up, and what the peer
// said meanwhile may still be on its way in.
constexpr std::int64_t kLongestLook = 5'000;

}  // namespace

std::int64_t SteadyMilliseconds() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

PeerWatch::Due PeerWatch::Look(std::int64_t now, LifeSigns signs) {
    const std::int64_t passed = std::min(now - std::exchange(m_tLooked, now), kLongestLook);
    m_nSilent = signs.heard ? 0 : m_nSilent + passed;
    m_nStuck = signs.stuck ? m_nStuck + passed : 0;
    m_nMute = signs.spoke ? 0 : m_nMute + passed;
    if (m_nSilent >= kGoneAfter) return Due::Silent;
    if (m_nStuck >= kGoneAfter) return Due::Stuck;
    if (m_nMute < kBeatAfter) return Due::Nothing;
    m_nMute = 0;
    return Due::Beat;
}

std::int64_t RetryPause::Next() {
    return std::exchange(m_nNext, std::min(m_nNext * 2, kLongestPause));
}

}  // namespace kalvex::vantrel
