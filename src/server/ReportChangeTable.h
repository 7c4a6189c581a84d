// The part of the store's file that tells which reports have changed, by a sequence that ascends in
// the life of the file. A period that changes again moves to the end. Belongs to one thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/Sqlite.h"
#include "value/Status.h"

namespace kalvex::server {

struct NumberedChange {
    std::uint64_t sequence = 0;
    value::ValueKind kind = value::KindNone;
    std::int64_t time = 0;
};

class ReportChangeTable {
  public:
    // So many periods are kept; the file may have some more for a while.
    static constexpr std::size_t kMost = 100000;

    static const char* Schema();
    bool Prepare(platform::SqliteDatabase& database);

    // All of them, ascending.
    bool Read(platform::SqliteDatabase& database, std::vector<NumberedChange>& changes) const;

    // Within a transaction of the caller's. False when the file fails.
    bool Add(value::ValueKind kind, std::int64_t time);

    // Of the last one that was added.
    std::uint64_t Last() const { return m_last; }

  private:
    platform::SqliteStatement m_put;
    platform::SqliteStatement m_remove;
    std::uint64_t m_last = 0;
};

}  // namespace kalvex::server
