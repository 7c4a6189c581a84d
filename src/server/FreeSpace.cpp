#include "server/FreeSpace.h"

#include <string>

namespace kalvex::server {

namespace {

constexpr std::int64_t kPeriod = 30;  // seconds
constexpr std::uint64_t kMebibyte = 1 << 20;

constexpr const char* kLittle = platform::Translatable("Mało miejsca na dysku danych: %s MiB");
constexpr const char* kEnough =
    platform::Translatable("Miejsca na dysku danych znów wystarcza: %s MiB");

}  // namespace

platform::Notice FreeSpace::Step(std::int64_t elapsed, std::uint64_t little) {
    if (m_lastLook && elapsed - *m_lastLook < kPeriod) return {};
    m_lastLook = elapsed;
    m_bytes = m_look();
    if (!m_bytes) return {};
    const std::string mebibytes = std::to_string(*m_bytes / kMebibyte);
    if (m_told && *m_bytes >= little + little / 4) {
        m_told.reset();
        return {kEnough, {mebibytes}};
    }
    if (*m_bytes >= m_told.value_or(little)) return {};
    m_told = *m_bytes / 2;
    return {kLittle, {mebibytes}};
}

}  // namespace kalvex::server
