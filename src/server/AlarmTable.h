// The part of the store's file that keeps the journal of alarms. Belongs to one thread;
// docs/data-server.md describes the table.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/Sqlite.h"
#include "server/Alarms.h"
#include "server/HistoryTable.h"

namespace kalvex::server {

using AlarmId = std::int64_t;

struct BeginAlarm {
    AlarmId id = 0;
    VariableId variable = 0;
    AlarmStage stage = AlarmStage::LowLow;
    std::int64_t time = 0;
    std::optional<double> number;  // the value with which it began; none: there was none
    AlarmId after = 0;             // acknowledged as that one is; 0: it is not
};

struct EndAlarm {
    AlarmId id = 0;
    std::int64_t time = 0;
};

// All of the variable's that are not acknowledged.
struct AcknowledgeAlarms {
    VariableId variable = 0;
    Origin origin;
};

// Those of the variable that began and ended before the time, the oldest thousand at most. The
// latest that is not acknowledged stays.
struct RemoveAlarms {
    VariableId variable = 0;
    std::int64_t before = 0;
};

// What a file held when it was opened.
struct KeptAlarms {
    struct Standing {
        AlarmId id = 0;
        VariableId variable = 0;
        AlarmStage stage = AlarmStage::LowLow;
    };

    AlarmId last = 0;                 // the greatest number that was given
    std::vector<Standing> standing;   // in the order in which they began
    std::vector<VariableId> waiting;  // those with alarms that are not acknowledged, each once
};

class AlarmTable {
  public:
    static const char* Schema();
    bool Prepare(platform::SqliteDatabase& database);
    bool Read(platform::SqliteDatabase& database, KeptAlarms& alarms) const;

    // Within a transaction of the caller's. False when the file fails.
    bool Run(const BeginAlarm& operation);
    bool Run(const EndAlarm& operation);
    bool Run(const AcknowledgeAlarms& operation);
    bool Run(const RemoveAlarms& operation);

  private:
    platform::SqliteStatement m_begin;
    platform::SqliteStatement m_end;
    platform::SqliteStatement m_acknowledge;
    platform::SqliteStatement m_remove;
};

}  // namespace kalvex::server
