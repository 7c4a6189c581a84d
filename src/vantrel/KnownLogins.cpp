#include "vantrel/KnownLogins.h"

#include <algorithm>
#include <utility>

#include "vantrel/LoginGate.h"

namespace kalvex::vantrel {

namespace {

constexpr std::int64_t kKnownFor = 3600;
constexpr std::size_t kMostKnown = 10000;

std::string TokenKey(std::string_view address, std::string_view user, std::string_view token) {
    return LoginGate::KeyOf(address, user) + '\n' + std::string(token);
}

}  // namespace

void KnownLogins::Note(std::string_view address, std::string_view user, std::string_view token,
                       std::int64_t now) {
    Keep(std::string(address), now);
    Keep(LoginGate::KeyOf(address, user), now);
    if (!token.empty()) Keep(TokenKey(address, user, token), now);
}

void KnownLogins::Forget(std::string_view address, std::string_view user, std::string_view token) {
    if (!token.empty()) m_seen.erase(TokenKey(address, user, token));
}

bool KnownLogins::KnowsAddress(std::string_view address, std::int64_t now) const {
    return Knows(std::string(address), now);
}

bool KnownLogins::KnowsUser(std::string_view address, std::string_view user,
                            std::int64_t now) const {
    return Knows(LoginGate::KeyOf(address, user), now);
}

bool KnownLogins::KnowsToken(std::string_view address, std::string_view user,
                             std::string_view token, std::int64_t now) const {
    return !token.empty() && Knows(TokenKey(address, user, token), now);
}

bool KnownLogins::Knows(const std::string& key, std::int64_t now) const {
    const auto found = m_seen.find(key);
    return found != m_seen.end() && now - found->second <= kKnownFor;
}

void KnownLogins::Keep(std::string key, std::int64_t now) {
    if (m_seen.size() >= kMostKnown && m_seen.count(key) == 0) {
        std::erase_if(m_seen, [now](const auto& entry) { return now - entry.second > kKnownFor; });
        if (m_seen.size() >= kMostKnown) {
            m_seen.erase(std::ranges::min_element(m_seen, {},
                                                  [](const auto& entry) { return entry.second; }));
        }
    }
    m_seen[std::move(key)] = now;
}

}  // namespace kalvex::vantrel
