#include "vantrel/network/Visitors.h"

#include <algorithm>

namespace kalvex::vantrel {

namespace {

constexpr std::int64_t kKnownFor = 3'600'000;
constexpr std::size_t kMostLogins = 10'000;

struct Share {
    std::size_t ofAll;  // quarters
    std::size_t ofOne;
};
constexpr Share kKnown{4, 3};
constexpr Share kAccount{3, 2};
constexpr Share kStranger{3, 1};

}  // namespace

Visitors::Entry Visitors::Ask(const std::string& from, bool local, std::int64_t now) const {
    const auto login = m_logins.find(from);
    const bool known = login != m_logins.end() && now - login->second < kKnownFor;
    const Share share = known ? kKnown : local ? kAccount : kStranger;
    if (m_count >= m_limit * share.ofAll / 4) return Entry::Crowd;
    const auto present = m_connections.find(from);
    const std::size_t count = present == m_connections.end() ? 0 : present->second;
    return count < m_limit * share.ofOne / 4 ? Entry::Granted : Entry::CrowdOfOne;
}

void Visitors::OnCome(const std::string& from) {
    ++m_count;
    ++m_connections[from];
}

void Visitors::OnGone(const std::string& from) {
    const auto present = m_connections.find(from);
    --m_count;
    if (--present->second == 0) m_connections.erase(present);
}

void Visitors::OnLogin(const std::string& from, std::int64_t now) {
    if (m_logins.size() >= kMostLogins && !m_logins.contains(from)) {
        m_logins.erase(
            std::ranges::min_element(m_logins, {}, [](const auto& login) { return login.second; }));
    }
    m_logins[from] = now;
}

}  // namespace kalvex::vantrel
