// Which reports have changed, for clients that are told of it now or when they come back. Main
// thread.
#pragma once

#include <cstdint>
#include <map>
#include <utility>
#include <vector>

#include "server/StoreFile.h"

namespace kalvex::server {

class ReportChanges {
  public:
    // What the store has kept, ascending.
    void Load(const std::vector<NumberedChange>& kept);

    // A transaction has changed these.
    void Take(const ChangedReports& changed);

    // What has been taken may be told from now on, each period once.
    void Publish();

    // Of the last one that may be told, 0 when there was none yet.
    std::uint64_t Last() const { return m_last; }

    // The first one behind the sequence; false when there is none.
    bool FindBehind(std::uint64_t sequence, NumberedChange& change) const;

  private:
    using Period = std::pair<value::ValueKind, std::int64_t>;

    void Add(std::uint64_t sequence, const Period& period);

    std::map<std::uint64_t, Period> m_bySequence;
    std::map<Period, std::uint64_t> m_byPeriod;
    std::map<Period, std::uint64_t> m_taken;
    std::uint64_t m_last = 0;
};

}  // namespace kalvex::server
