#include "vantrel/LoginGate.h"

#include <algorithm>

#include "text/CodePage.h"

namespace kalvex::vantrel {

namespace {

constexpr int kFreeFailures = 2;
constexpr int kDoublings = 5;  // from 2 s to 64 s
constexpr std::int64_t kForgotten = 600;
constexpr std::size_t kMostRecords = 10000;

std::string KeyOf(std::string_view address, std::string_view user) {
    return address.empty() ? "@" + text::ToUpper(user) : std::string(address);
}

}  // namespace

std::int64_t LoginGate::Wait(std::string_view address, std::string_view user,
                             std::int64_t now) const {
    const auto found = m_records.find(KeyOf(address, user));
    if (found == m_records.end()) return 0;
    return std::max<std::int64_t>(found->second.until - now, 0);
}

void LoginGate::OnFailure(std::string_view address, std::string_view user, std::int64_t now) {
    std::string key = KeyOf(address, user);
    if (m_records.count(key) == 0 && m_records.size() >= kMostRecords) MakeRoom(now);
    Record& record = m_records[std::move(key)];
    if (record.until + kForgotten < now) record.failures = 0;
    ++record.failures;
    const int counted = record.failures - kFreeFailures - 1;
    record.until = now + (counted < 0 ? 0 : std::int64_t{2} << std::min(counted, kDoublings));
}

void LoginGate::MakeRoom(std::int64_t now) {
    std::erase_if(m_records,
                  [now](const auto& entry) { return entry.second.until + kForgotten < now; });
    if (m_records.size() < kMostRecords) return;
    m_records.erase(std::min_element(
        m_records.begin(), m_records.end(),
        [](const auto& a, const auto& b) { return a.second.until < b.second.until; }));
}

void LoginGate::OnSuccess(std::string_view address, std::string_view user) {
    m_records.erase(KeyOf(address, user));
}

}  // namespace kalvex::vantrel
