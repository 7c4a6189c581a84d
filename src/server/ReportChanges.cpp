#include "server/ReportChanges.h"

namespace kalvex::server {

void ReportChanges::Load(const std::vector<NumberedChange>& kept) {
    for (const NumberedChange& change : kept) Add(change.sequence, {change.kind, change.time});
}

void ReportChanges::Take(const ChangedReports& changed) {
    for (const auto& [period, sequence] : changed) m_taken[period] = sequence;
}

void ReportChanges::Publish() {
    std::map<std::uint64_t, Period> ascending;
    for (const auto& [period, sequence] : m_taken) ascending.emplace(sequence, period);
    m_taken.clear();
    for (const auto& [sequence, period] : ascending) Add(sequence, period);
}

void ReportChanges::Add(std::uint64_t sequence, const Period& period) {
    const auto [known, isNew] = m_byPeriod.try_emplace(period, sequence);
    if (!isNew) m_bySequence.erase(std::exchange(known->second, sequence));
    m_bySequence.emplace(sequence, period);
    m_last = sequence;
    if (m_bySequence.size() <= ReportChangeTable::kMost) return;
    m_byPeriod.erase(m_bySequence.begin()->second);
    m_bySequence.erase(m_bySequence.begin());
}

bool ReportChanges::FindBehind(std::uint64_t sequence, NumberedChange& change) const {
    const auto found = m_bySequence.upper_bound(sequence);
    if (found == m_bySequence.end()) return false;
    change = {found->first, found->second.first, found->second.second};
    return true;
}

}  // namespace kalvex::server
