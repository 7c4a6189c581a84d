// A look into a store's file for tools, while its server runs or not. Nothing is written. One
// thread.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Sqlite.h"
#include "platform/Translator.h"
#include "server/AlarmTable.h"
#include "server/HistoryTable.h"

namespace kalvex::server {

// A value as it stands or stood.
struct ValueVersion {
    value::ValueKind kind = value::KindNone;
    value::CVal value;
    std::optional<Writer> writer;         // none: the server itself, or not known
    std::optional<std::int64_t> written;  // none: not known
};

// A row of the journal of alarms.
struct JournalAlarm {
    std::string variable;  // an engine text
    AlarmStage stage = AlarmStage::LowLow;
    std::int64_t began = 0;
    std::optional<double> number;              // the value with which it began
    std::optional<std::int64_t> ended;         // none: it stands
    std::optional<std::int64_t> acknowledged;  // none: it is not
    std::optional<Writer> who;                 // by whom
};

struct AlarmChoice {
    std::string variables = "*";            // a pattern
    bool active = false;                    // only those that stand or are not acknowledged
    std::optional<std::int64_t> from = {};  // only those that began in that time, bounds included
    std::optional<std::int64_t> to = {};
};

class StoreReader {
  public:
    // A file of this version (a system path). False with the reason.
    bool Open(const std::string& path, platform::Notice& error);

    // The number of the variable; nothing when the store has none of that name.
    std::optional<VariableId> Find(std::string_view name);

    // All that the store has, also of those that are in no configuration any more.
    std::map<std::string, VariableId> Variables();

    // One piece, which sees what stands by then; between two of them nothing holds up the server.
    StorePiece ReadRange(const StoreQuery& query);
    std::optional<value::CVal> ValueAt(const HistoryKey& key);

    // The latest first; nothing where there never was a value. Of a current value the one before it
    // is known alone.
    std::vector<ValueVersion> Versions(const HistoryKey& key);
    std::vector<ValueVersion> CurrentVersions(VariableId variable);
    // The time of the archive value that counts at that time.
    std::optional<std::int64_t> ArchiveTimeAt(VariableId variable, std::int64_t time);

    // In the order in which they began.
    void ReadAlarms(const AlarmChoice& choice,
                    const std::function<void(const JournalAlarm&)>& take);

    // The words for what has failed; empty when nothing has (UTF-8).
    const std::string& Fault() const { return m_fault; }

  private:
    bool Prepare(platform::SqliteStatement& statement, const char* sql);
    void Note(const platform::SqliteStatement& statement);

    // Statements for whole ranges, made when they are first wanted.
    bool PrepareHistory();

    platform::SqliteDatabase m_database;
    HistoryTable m_history;
    bool m_historyPrepared = false;
    std::string m_fault;
};

}  // namespace kalvex::server
