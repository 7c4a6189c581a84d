#include "server/LateTable.h"

namespace kalvex::server {

namespace {

// The next hour, if no archive value stands between this one and its first second.
constexpr const char* kNextMean =
    "SELECT next FROM (SELECT min(time) AS next FROM history WHERE variable = ?1 AND kind = 2 "
    "AND time > ?2) WHERE NOT EXISTS (SELECT 1 FROM history "
    "WHERE variable = ?1 AND kind = 6 AND time BETWEEN ?3 AND next)";
// The hour of the next known reading.
constexpr const char* kNextIncrease =
    "SELECT max(time) FROM history WHERE variable = ?1 AND kind = 2 AND time > ?2 AND time <= "
    "(SELECT min(time) FROM history WHERE variable = ?1 AND kind = 6 AND time >= ?3 "
    "AND status & 1 = 0 AND type <> 255)";

}  // namespace

const char* LateTable::Schema() {
    return "CREATE TABLE IF NOT EXISTS late (kind INTEGER NOT NULL, time INTEGER NOT NULL, "
           "variable INTEGER NOT NULL, rule INTEGER NOT NULL, day_start INTEGER NOT NULL, "
           "chained INTEGER NOT NULL, "
           "PRIMARY KEY (kind, time, variable)) WITHOUT ROWID;";
}

bool LateTable::Prepare(platform::SqliteDatabase& database) {
    return m_mark.Prepare(database,
                          "INSERT INTO late VALUES (?, ?, ?, ?, ?, ?) ON CONFLICT DO UPDATE SET "
                          "rule = excluded.rule, day_start = excluded.day_start, "
                          "chained = min(chained, excluded.chained)") &&
           m_drop.Prepare(database,
                          "DELETE FROM late WHERE kind = ? AND time = ? AND variable = ?") &&
           m_first.Prepare(database,
                           "SELECT kind, time, variable, rule, day_start, chained FROM late "
                           "ORDER BY kind, time, variable LIMIT 1") &&
           m_nextMean.Prepare(database, kNextMean) &&
           m_nextIncrease.Prepare(database, kNextIncrease);
}

bool LateTable::Mark(const MarkLate& mark) {
    m_mark.BindInteger(1, mark.report.kind);
    m_mark.BindInteger(2, mark.report.time);
    m_mark.BindInteger(3, mark.report.variable);
    m_mark.BindInteger(4, static_cast<std::int64_t>(mark.rule));
    m_mark.BindInteger(5, mark.dayStart);
    m_mark.BindInteger(6, mark.chained ? 1 : 0);
    return m_mark.Run();
}

bool LateTable::Drop(const MarkLate& mark) {
    m_drop.BindInteger(1, mark.report.kind);
    m_drop.BindInteger(2, mark.report.time);
    m_drop.BindInteger(3, mark.report.variable);
    return m_drop.Run();
}

bool LateTable::NextChained(const MarkLate& hour, std::int64_t end,
                            std::optional<std::int64_t>& next) {
    next.reset();
    if (hour.rule == ReportRule::Sum) return true;
    platform::SqliteStatement& select = hour.rule == ReportRule::Mean ? m_nextMean : m_nextIncrease;
    select.BindInteger(1, hour.report.variable);
    select.BindInteger(2, hour.report.time);
    select.BindInteger(3, end);
    if (select.Next() && !select.IsNull(0)) next = select.Integer(0);
    select.Reset();
    return !select.Failed();
}

bool LateTable::First(std::optional<MarkLate>& mark) {
    mark.reset();
    if (m_first.Next()) {
        mark = MarkLate{{m_first.Integer(2), static_cast<value::ValueKind>(m_first.Integer(0)),
                         m_first.Integer(1)},
                        static_cast<ReportRule>(m_first.Integer(3)),
                        static_cast<int>(m_first.Integer(4)),
                        m_first.Integer(5) != 0};
    }
    m_first.Reset();
    return !m_first.Failed();
}

}  // namespace kalvex::server
