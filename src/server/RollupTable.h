// The part of the store's file that keeps what the minutes and hours of archives come to, so that a
// year can be read without all of its values. An hour whose values change is marked in the same
// transaction, and counts as not rolled up until it has been rolled up anew. Belongs to one thread;
// docs/data-server.md describes the tables.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

#include "platform/Sqlite.h"
#include "server/HistoryTable.h"
#include "server/Rollup.h"

namespace kalvex::server {

// Minutes are kept of hours with more values.
inline constexpr std::int64_t kMostWithoutMinutes = 120;
inline constexpr std::int64_t kNoHour = std::numeric_limits<std::int64_t>::max();

// Rolls up marked hours that have ended by then, and those of a file of an older version. It ends
// with the hour with which so many values have been read.
struct RollUp {
    std::int64_t now = 0;
    std::int64_t values = 0;
};

class RollupTable {
  public:
    // Behind that of the history. Hours of a history that has no rollups yet are to be rolled up.
    static const char* Schema();
    bool Prepare(platform::SqliteDatabase& database);

    // ---- within a transaction of the caller's; false when the file fails

    // An archive value of that time comes, changes or goes. `marked` becomes its hour if that was
    // not known to be marked and is older.
    bool Mark(VariableId variable, std::int64_t time, std::int64_t& marked);
    // The transaction is taken back.
    void OnRollback() { m_lastMarked.clear(); }
    // The time of the oldest archive value; nothing when there is none.
    bool ReadOldest(VariableId variable, std::optional<std::int64_t>& time);
    // Values before the oldest one that is left have been removed.
    bool OnRemoved(VariableId variable, std::int64_t oldest, std::int64_t& marked);
    // `left` tells whether hours are left to be rolled up by the same order.
    bool Run(const RollUp& operation, bool& left);

    // ---- reads

    // Hours of the archive that are rolled up, from that in which the range begins to that in which
    // it ends, ascending, at most so many. One that is not among them has no values or is not
    // rolled up.
    bool ReadHours(VariableId variable, std::int64_t from, std::int64_t to, std::int64_t limit,
                   std::vector<Rollup>& hours);
    // All minutes with values of an hour that is rolled up and has more than kMostWithoutMinutes.
    bool ReadMinutes(VariableId variable, std::int64_t hour, std::vector<Rollup>& minutes);
    // Stored values, bounds included, ascending, at most so many.
    bool ReadPoints(const HistoryKey& from, std::int64_t to, std::int64_t limit,
                    std::vector<StoredPoint>& points);
    // Of the last value from the time of the key to the other; nothing when there is none.
    bool ReadLastTime(const HistoryKey& from, std::int64_t to, std::optional<std::int64_t>& time);

  private:
    bool RunMarks(const RollUp& operation, std::int64_t& values, bool& left);
    bool RunOlder(const RollUp& operation, std::int64_t& values, bool& left);
    bool FindOlder(HistoryKey& place, bool& found);
    bool RollUpHour(VariableId variable, std::int64_t hour, std::int64_t& values);
    bool Put(VariableId variable, std::int64_t span, const Rollup& rollup);
    bool DropRollups(VariableId variable, std::int64_t from, std::int64_t to);
    bool DropMark(VariableId variable, std::int64_t hour);
    std::int64_t* LastMarked(VariableId variable);
    static bool ReadTime(platform::SqliteStatement& statement, std::optional<std::int64_t>& time);
    static bool ReadRows(platform::SqliteStatement& statement, std::vector<Rollup>& rollups);

    platform::SqliteStatement m_putMark;
    platform::SqliteStatement m_dropMark;
    platform::SqliteStatement m_firstMark;
    platform::SqliteStatement m_put;
    platform::SqliteStatement m_drop;
    platform::SqliteStatement m_getPlace;
    platform::SqliteStatement m_putPlace;
    platform::SqliteStatement m_dropPlace;
    platform::SqliteStatement m_findOlder;
    platform::SqliteStatement m_getOldest;
    platform::SqliteStatement m_getHours;
    platform::SqliteStatement m_getMinutes;
    platform::SqliteStatement m_getPoints;
    platform::SqliteStatement m_getLast;
    // By variable the hour that was marked last, so that values in their order mark it once.
    std::vector<std::int64_t> m_lastMarked;
    std::vector<StoredPoint> m_points;
};

}  // namespace kalvex::server
