// Looks whether a store's file is sound, and how much of it belongs to which variable, while its
// server runs or not. Nothing is written, and nobody who writes is held up. One thread.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/Sqlite.h"
#include "platform/Translator.h"
#include "server/HistoryTable.h"
#include "server/ReportPeriods.h"

namespace kalvex::server {

// What a variable has. Rows are counted; bytes are estimated from what is in them.
struct VariableShare {
    std::int64_t archive = 0;
    std::int64_t reports = 0;
    std::int64_t versions = 0;
    std::int64_t bytes = 0;
    std::int64_t gaps = 0;
    TimeSpan longest;  // the longest gap, the first one of that length
};

class StoreCheck {
  public:
    // A file of this version (a system path). False with the reason.
    bool Open(const std::string& path, platform::Notice& error);

    // What is wrong with it, the whole file being read. Without the path.
    std::vector<platform::Notice> Faults();

    std::map<std::string, VariableId> Variables();
    // Archive values that are further apart than one and a half periods make a gap; without a
    // period gaps are not looked for.
    VariableShare ShareOf(VariableId variable, std::optional<std::int64_t> period);

    // The words for a read that has failed since; empty when none has (UTF-8).
    const std::string& Failure() const { return m_failure; }

  private:
    bool Prepare(platform::SqliteStatement& statement, const char* sql);
    void Note(const platform::SqliteStatement& statement);
    void CheckPages(std::vector<platform::Notice>& faults);
    void CheckRows(std::vector<platform::Notice>& faults);
    void Count(platform::SqliteStatement& statement, VariableId variable, bool ofHistory,
               VariableShare& share);
    void FindGaps(VariableId variable, std::int64_t period, VariableShare& share);

    platform::SqliteDatabase m_database;
    platform::SqliteStatement m_history;
    platform::SqliteStatement m_versions;
    platform::SqliteStatement m_times;
    std::string m_failure;
};

}  // namespace kalvex::server
