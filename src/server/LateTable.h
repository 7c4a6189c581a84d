// The part of the store's file that tells which reports are to be computed anew, since what they
// are computed from has come late or was corrected. Belongs to one thread.
#pragma once

#include <cstdint>
#include <optional>

#include "platform/Sqlite.h"
#include "server/HistoryTable.h"
#include "server/ReportComputing.h"

namespace kalvex::server {

// To go with what has come, in one transaction. A report that is marked already stays so.
struct MarkLate {
    HistoryKey report;  // an hour, day or month
    ReportRule rule = ReportRule::Mean;
    int dayStart = 0;
    bool chained = false;  // since the hour before it was computed anew
};

class LateTable {
  public:
    static const char* Schema();
    bool Prepare(platform::SqliteDatabase& database);

    // Within a transaction of the caller's. False when the file fails.
    bool Mark(const MarkLate& mark);
    bool Drop(const MarkLate& mark);
    // The next hour report that there is whose computing begins with the last archive value of this
    // hour, which ends at `end`; nothing when there is none.
    bool NextChained(const MarkLate& hour, std::int64_t end, std::optional<std::int64_t>& next);
    // The next one, hours before days and days before months; nothing when there is none.
    bool First(std::optional<MarkLate>& mark);

  private:
    platform::SqliteStatement m_mark;
    platform::SqliteStatement m_drop;
    platform::SqliteStatement m_first;
    platform::SqliteStatement m_nextMean;
    platform::SqliteStatement m_nextIncrease;
};

}  // namespace kalvex::server
