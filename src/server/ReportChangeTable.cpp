#include "server/ReportChangeTable.h"

namespace kalvex::server {

namespace {

constexpr std::uint64_t kBetweenRemovals = 1000;

}  // namespace

const char* ReportChangeTable::Schema() {
    return "CREATE TABLE IF NOT EXISTS report_changes (sequence INTEGER PRIMARY KEY, "
           "kind INTEGER NOT NULL, time INTEGER NOT NULL, UNIQUE (kind, time));";
}

bool ReportChangeTable::Prepare(platform::SqliteDatabase& database) {
    platform::SqliteStatement last;
    if (!last.Prepare(database, "SELECT max(sequence) FROM report_changes")) return false;
    if (last.Next()) m_last = static_cast<std::uint64_t>(last.Integer(0));
    return !last.Failed() &&
           m_put.Prepare(database, "INSERT OR REPLACE INTO report_changes VALUES (?, ?, ?)") &&
           m_remove.Prepare(database,
                            "DELETE FROM report_changes WHERE sequence <= (SELECT sequence FROM "
                            "report_changes ORDER BY sequence DESC LIMIT 1 OFFSET ?)");
}

bool ReportChangeTable::Read(platform::SqliteDatabase& database,
                             std::vector<NumberedChange>& changes) const {
    platform::SqliteStatement select;
    if (!select.Prepare(database,
                        "SELECT sequence, kind, time FROM report_changes ORDER BY sequence")) {
        return false;
    }
    while (select.Next()) {
        changes.push_back({static_cast<std::uint64_t>(select.Integer(0)),
                           static_cast<value::ValueKind>(select.Integer(1)), select.Integer(2)});
    }
    return !select.Failed();
}

bool ReportChangeTable::Add(value::ValueKind kind, std::int64_t time) {
    m_put.BindInteger(1, static_cast<std::int64_t>(++m_last));
    m_put.BindInteger(2, kind);
    m_put.BindInteger(3, time);
    if (!m_put.Run()) return false;
    if (m_last % kBetweenRemovals != 0) return true;
    m_remove.BindInteger(1, static_cast<std::int64_t>(kMost));
    return m_remove.Run();
}

}  // namespace kalvex::server
