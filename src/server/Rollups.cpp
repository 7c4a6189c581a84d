#include "server/Rollups.h"

#include <utility>
#include <vector>

#include "value/LocalTime.h"

namespace kalvex::server {

namespace {

// In one transaction: what urgent ones may have to wait for, some milliseconds.
constexpr std::int64_t kValuesTogether = 5000;

}  // namespace

// An hour that is under way is due at its end.
void Rollups::OnOutcome(const StoreOutcome& outcome) {
    m_isDue = m_isDue || (outcome.marked != kNoHour &&
                          outcome.marked / value::kSecondsPerHour < m_now / value::kSecondsPerHour);
}

void Rollups::Step(std::int64_t confirmed) {
    m_now = confirmed;
    const std::int64_t hour = confirmed / value::kSecondsPerHour;
    m_isDue = std::exchange(m_hour, hour) != hour || m_isDue;
    if (m_isDue && !m_isUnderWay && !m_isTrouble) RollUpSome();
}

void Rollups::RollUpSome() {
    std::vector<StoreOperation> operations;
    operations.emplace_back(RollUp{m_now, kValuesTogether});
    m_isUnderWay = m_store.Submit(std::move(operations), Store::Urgency::Background,
                                  [this](const StoreOutcome& outcome) {
                                      m_isUnderWay = false;
                                      if (outcome.hoursLeft) RollUpSome();
                                  });
    m_isDue = !m_isUnderWay;
}

}  // namespace kalvex::server
