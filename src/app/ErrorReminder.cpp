#include "app/ErrorReminder.h"

#include <utility>

namespace kalvex::app {

namespace {

constexpr std::int64_t kHour = 3600;  // seconds
constexpr std::int64_t kDay = 24 * kHour;

// How long it has to stand until it is told again after so long.
std::int64_t NextAfter(std::int64_t standing) {
    return standing < kHour ? kHour : (standing / kDay + 1) * kDay;
}

}  // namespace

std::vector<std::size_t> ErrorReminder::FindDue(const std::vector<StandingFault>& standing) {
    const std::int64_t now = m_clock.Elapsed();
    std::vector<std::size_t> due;
    std::map<StandingFault, Known> known;
    for (std::size_t i = 0; i < standing.size(); ++i) {
        const auto found = m_known.find(standing[i]);
        Known state = found == m_known.end() ? Known{now, now + kHour} : found->second;
        if (now >= state.due) {
            due.push_back(i);
            state.due = state.seen + NextAfter(now - state.seen);
        }
        known.emplace(standing[i], state);
    }
    m_known = std::move(known);
    return due;
}

}  // namespace kalvex::app
