// The part of the store's file that keeps archives and reports: what stands at each time, who wrote
// it, and what stood there before. Belongs to one thread; docs/data-server.md describes the tables.
#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/Sqlite.h"
#include "value/Status.h"
#include "value/Value.h"

namespace kalvex::server {

class PointScan;

using VariableId = std::int64_t;
using WriterId = std::int64_t;

inline constexpr WriterId kServerItself = 0;

// Who writes by way of clients; engine texts. On this machine the address is empty.
struct Writer {
    std::string user;
    std::string client;
    std::string address;

    auto operator<=>(const Writer&) const = default;
};

// Of a value: who wrote it and when, in seconds since 1970-01-01 GMT, 0 where that is not kept. A
// report that was computed while its period lasted is provisional: no version of it is kept.
struct Origin {
    WriterId writer = kServerItself;
    std::int64_t time = 0;
    bool provisional = false;
};

struct SaveWriter {
    WriterId id = 0;
    Writer writer;
};

struct HistoryKey {
    VariableId variable = 0;
    value::ValueKind kind = value::KindNone;
    std::int64_t time = 0;
};

// A piece ends with the value with which its texts have so many bytes.
inline constexpr std::size_t kTextsOfAPiece = std::size_t{4} << 20;

struct StoreQuery {
    VariableId variable = 0;
    value::ValueKind kind = value::KindNone;
    std::int64_t from = 0;  // bounds included
    std::int64_t to = 0;
    std::int64_t limit = 0;  // values in this piece at most
    std::size_t texts = kTextsOfAPiece;
    // Gives the values thinned instead, as it was made to. Its pieces are asked for by the same
    // query, one behind the other.
    std::shared_ptr<PointScan> scan = {};
};

struct StorePiece {
    bool read = false;
    std::vector<value::CVal> values;  // ascending by time
    bool more = false;                // further values follow behind the last one
};

class HistoryTable {
  public:
    static const char* Schema();
    // What a file of version 1 or 2 lacks, before the schema.
    static const char* Additions();

    bool Prepare(platform::SqliteDatabase& database);
    bool ReadWriters(platform::SqliteDatabase& database, std::map<Writer, WriterId>& writers) const;

    // ---- within a transaction of the caller's; false when the file fails

    bool Run(const SaveWriter& operation);

    // What a client has written or writes, and a report, leaves a version behind when it changes.
    // One that comes out as it stood keeps its origin.
    bool Put(const HistoryKey& key, const value::CVal& value, const Origin& origin);

    // Archive values before the time with their versions, the oldest ten thousand at most. The last
    // value at or before it stays, as it stands until the next one.
    bool RemoveArchive(VariableId variable, std::int64_t before);

    // Reports of that kind before the time with their versions, the oldest thousand at most.
    bool RemoveReports(VariableId variable, value::ValueKind kind, std::int64_t before);

    // ---- reads; nothing where there is no such value

    bool Get(const HistoryKey& key, std::optional<value::CVal>& value);
    // The last archive value at or before the time, and the last known one before it.
    bool GetBefore(VariableId variable, std::int64_t time, std::optional<value::CVal>& value);
    bool GetKnownBefore(VariableId variable, std::int64_t time, std::optional<value::CVal>& value);
    StorePiece ReadRange(const StoreQuery& query);

  private:
    bool Put(platform::SqliteStatement& statement, const HistoryKey& key, const value::CVal& value,
             const Origin& origin);
    bool ReadOne(platform::SqliteStatement& statement, std::optional<value::CVal>& value);
    bool ReadArchive(platform::SqliteStatement& statement, VariableId variable, std::int64_t time,
                     std::optional<value::CVal>& value);

    platform::SqliteStatement m_putWriter;
    platform::SqliteDatabase* m_database = nullptr;  // from Prepare on
    platform::SqliteStatement m_add;                 // where nothing stands
    platform::SqliteStatement m_put;
    platform::SqliteStatement m_get;
    platform::SqliteStatement m_getRange;
    platform::SqliteStatement m_getBefore;
    platform::SqliteStatement m_getKnownBefore;
    platform::SqliteStatement m_remove;
    platform::SqliteStatement m_removeVersions;
    platform::SqliteStatement m_removeReports;
    platform::SqliteStatement m_removeReportVersions;
};

}  // namespace kalvex::server
