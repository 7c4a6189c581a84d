#include "programs/sorvaned/ImportTable.h"

#include "server/StoreValues.h"

namespace kalvex::sorvaned {

namespace {

// Nobody else sees the file, and nothing of it is wanted after a break.
constexpr const char* kSetUp =
    "PRAGMA journal_mode = OFF; PRAGMA synchronous = OFF; PRAGMA cache_size = -16000;"
    "CREATE TABLE rows (variable INTEGER NOT NULL, kind INTEGER NOT NULL, time INTEGER NOT NULL, "
    "type INTEGER NOT NULL, status INTEGER NOT NULL, value, line INTEGER NOT NULL, "
    "to_write INTEGER NOT NULL, PRIMARY KEY (variable, kind, time)) WITHOUT ROWID; BEGIN";

}  // namespace

bool ImportTable::Open() {
    // Without a name it is a file for the time being.
    return m_database.Open("") && m_database.Execute(kSetUp) &&
           m_add.Prepare(m_database,
                         "INSERT OR IGNORE INTO rows VALUES (?, ?, ?, ?, ?, ?, ?, ?)") &&
           m_find.Prepare(m_database,
                          "SELECT line FROM rows WHERE variable = ? AND kind = ? AND time = ?") &&
           m_list.Prepare(m_database,
                          "SELECT variable, kind, time, type, status, value FROM rows "
                          "WHERE to_write ORDER BY variable, kind, time");
}

bool ImportTable::Add(const SeriesKey& series, const value::CVal& value, int line, bool isToWrite,
                      std::optional<int>& before) {
    before.reset();
    m_add.BindInteger(1, series.variable);
    m_add.BindInteger(2, series.kind);
    m_add.BindInteger(3, value.GetTime());
    server::BindValue(m_add, 4, value);
    m_add.BindInteger(7, line);
    m_add.BindInteger(8, isToWrite ? 1 : 0);
    if (!m_add.Run()) return false;
    if (m_database.Changes() != 0) return true;
    m_find.BindInteger(1, series.variable);
    m_find.BindInteger(2, series.kind);
    m_find.BindInteger(3, value.GetTime());
    if (m_find.Next()) before = static_cast<int>(m_find.Integer(0));
    m_find.Reset();
    return !m_find.Failed();
}

bool ImportTable::Next(SeriesKey& series, value::CVal& value, bool& any) {
    any = m_list.Next();
    if (!any) return !m_list.Failed();
    series = {m_list.Integer(0), static_cast<value::ValueKind>(m_list.Integer(1))};
    value = server::ReadValue(m_list, 2);
    return true;
}

}  // namespace kalvex::sorvaned
