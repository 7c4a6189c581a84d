#include "vantrel/LoginGate.h"

#include <algorithm>
#include <utility>

#include "text/CodePage.h"

namespace kalvex::vantrel {

namespace {

constexpr int kFreeFailures = 2;
constexpr int kFreeFailuresOfAddress = 19;
constexpr std::int64_t kFirstWait = 2;
constexpr std::int64_t kWait = 4;
constexpr std::int64_t kForgotten = 600;
constexpr std::size_t kMostRecords = 10000;
constexpr char kBetween = '\n';  // address and user

bool IsOfUser(const std::string& brake) {
    return brake.find(kBetween) != std::string::npos;
}

}  // namespace

std::string LoginGate::KeyOf(std::string_view address, std::string_view user) {
    return std::string(address) + kBetween + text::ToUpper(user);
}

std::string LoginGate::AddressOf(const std::string& brake) {
    return brake.substr(0, brake.find(kBetween));
}

std::string LoginGate::BrakeOn(std::string_view address, std::string_view user, bool isKnown,
                               std::int64_t now) const {
    std::string ofAddress(address);
    if (!isKnown && Wait(ofAddress, now) > 0) return ofAddress;
    std::string ofUser = KeyOf(address, user);
    return Wait(ofUser, now) > 0 ? ofUser : std::string();
}

std::int64_t LoginGate::Wait(const std::string& brake, std::int64_t now) const {
    const Records& records = IsOfUser(brake) ? m_users : m_addresses;
    const auto found = records.find(brake);
    if (found == records.end()) return 0;
    return std::max<std::int64_t>(found->second.until - now, 0);
}

bool LoginGate::TakeTurn(const std::string& brake, std::int64_t now) {
    Records& records = IsOfUser(brake) ? m_users : m_addresses;
    const auto found = records.find(brake);
    if (found == records.end()) return true;
    Record& record = found->second;
    if (now < record.until) return false;
    record.until = now + kWait;
    return true;
}

void LoginGate::OnFailure(std::string_view address, std::string_view user, std::int64_t now) {
    const int failures = Count(m_users, KeyOf(address, user), kFreeFailures, now);
    if (failures > kFreeFailures + 1 || address.empty()) return;
    Count(m_addresses, std::string(address), kFreeFailuresOfAddress, now);
}

int LoginGate::Count(Records& records, std::string key, int freeFailures, std::int64_t now) {
    if (records.count(key) == 0 && records.size() >= kMostRecords) MakeRoom(records, now);
    Record& record = records[std::move(key)];
    if (record.until + kForgotten < now) record.failures = 0;
    ++record.failures;
    const int counted = record.failures - freeFailures;
    record.until = now + (counted <= 0 ? 0 : counted == 1 ? kFirstWait : kWait);
    return record.failures;
}

void LoginGate::MakeRoom(Records& records, std::int64_t now) {
    std::erase_if(records,
                  [now](const auto& entry) { return entry.second.until + kForgotten < now; });
    if (records.size() < kMostRecords) return;
    records.erase(std::min_element(
        records.begin(), records.end(),
        [](const auto& a, const auto& b) { return a.second.until < b.second.until; }));
}

void LoginGate::OnSuccess(std::string_view address, std::string_view user) {
    m_users.erase(KeyOf(address, user));
}

}  // namespace kalvex::vantrel
