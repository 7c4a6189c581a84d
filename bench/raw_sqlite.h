// What the library alone takes for rows of an archive, without who wrote them: what the store and
// the server are measured against.
#pragma once

#include <cstdint>
#include <string>

#include "platform/Sqlite.h"

namespace kalvex::bench {

class RawSqlite {
  public:
    // A file in that folder, which is made. False when it fails.
    bool Open(const std::string& folder) {
        return m_database.Open(folder + "/raw.sqlite") &&
               m_database.Execute(
                   "PRAGMA journal_mode = WAL; PRAGMA synchronous = FULL; PRAGMA cache_size = "
                   "-16000; CREATE TABLE IF NOT EXISTS history (variable INTEGER NOT NULL, kind "
                   "INTEGER NOT NULL, time INTEGER NOT NULL, type INTEGER NOT NULL, status INTEGER "
                   "NOT NULL, value, PRIMARY KEY (variable, kind, time)) WITHOUT ROWID;") &&
               m_put.Prepare(m_database,
                             "INSERT OR REPLACE INTO history VALUES (1, 6, ?, 171, 0, ?)");
    }

    // So many rows from that time on, in a transaction.
    bool Write(std::int64_t first, std::int64_t count) {
        platform::SqliteTransaction transaction(m_database);
        for (std::int64_t time = first; time < first + count; ++time) {
            m_put.BindInteger(1, time);
            m_put.BindReal(2, 0.5);
            if (!m_put.Run()) return false;
        }
        return transaction.Commit();
    }

  private:
    platform::SqliteDatabase m_database;
    platform::SqliteStatement m_put;
};

}  // namespace kalvex::bench
