#include "server/AlarmTable.h"

namespace kalvex::server {

const char* AlarmTable::Schema() {
    return "CREATE TABLE IF NOT EXISTS alarms (id INTEGER PRIMARY KEY, "
           "variable INTEGER NOT NULL, stage INTEGER NOT NULL, began INTEGER NOT NULL, value, "
           "ended INTEGER, acknowledged INTEGER, who INTEGER);"
           "CREATE INDEX IF NOT EXISTS alarms_of_variable ON alarms (variable, began);"
           "CREATE INDEX IF NOT EXISTS alarms_standing ON alarms (variable) WHERE ended IS NULL;"
           "CREATE INDEX IF NOT EXISTS alarms_waiting ON alarms (variable) "
           "WHERE acknowledged IS NULL;";
}

bool AlarmTable::Prepare(platform::SqliteDatabase& database) {
    return m_begin.Prepare(database,
                           "INSERT INTO alarms VALUES (?1, ?2, ?3, ?4, ?5, NULL, "
                           "(SELECT acknowledged FROM alarms WHERE id = ?6), "
                           "(SELECT who FROM alarms WHERE id = ?6))") &&
           m_end.Prepare(database, "UPDATE alarms SET ended = ? WHERE id = ?") &&
           m_acknowledge.Prepare(database,
                                 "UPDATE alarms SET acknowledged = ?, who = ? "
                                 "WHERE variable = ? AND acknowledged IS NULL") &&
           m_remove.Prepare(database,
                            "DELETE FROM alarms WHERE id IN (SELECT id FROM alarms "
                            "WHERE variable = ?1 AND began < ?2 AND ended < ?2 AND "
                            "id IS NOT (SELECT max(id) FROM alarms WHERE variable = ?1 "
                            "AND acknowledged IS NULL) ORDER BY began LIMIT 1000)");
}

bool AlarmTable::Read(platform::SqliteDatabase& database, KeptAlarms& alarms) const {
    platform::SqliteStatement select;
    if (!select.Prepare(database, "SELECT max(id) FROM alarms")) return false;
    if (select.Next()) alarms.last = select.Integer(0);
    if (select.Failed() ||
        !select.Prepare(database,
                        "SELECT id, variable, stage FROM alarms WHERE ended IS NULL ORDER BY id")) {
        return false;
    }
    while (select.Next()) {
        const std::optional<AlarmStage> stage = AlarmStageOf(select.Integer(2));
        if (stage) alarms.standing.push_back({select.Integer(0), select.Integer(1), *stage});
    }
    if (select.Failed() ||
        !select.Prepare(database,
                        "SELECT DISTINCT variable FROM alarms WHERE acknowledged IS NULL")) {
        return false;
    }
    while (select.Next()) alarms.waiting.push_back(select.Integer(0));
    return !select.Failed();
}

bool AlarmTable::Run(const BeginAlarm& operation) {
    m_begin.BindInteger(1, operation.id);
    m_begin.BindInteger(2, operation.variable);
    m_begin.BindInteger(3, static_cast<std::int64_t>(operation.stage));
    m_begin.BindInteger(4, operation.time);
    if (operation.number) {
        m_begin.BindReal(5, *operation.number);
    } else {
        m_begin.BindNull(5);
    }
    m_begin.BindInteger(6, operation.after);
    return m_begin.Run();
}

bool AlarmTable::Run(const EndAlarm& operation) {
    m_end.BindInteger(1, operation.time);
    m_end.BindInteger(2, operation.id);
    return m_end.Run();
}

bool AlarmTable::Run(const AcknowledgeAlarms& operation) {
    m_acknowledge.BindInteger(1, operation.origin.time);
    m_acknowledge.BindInteger(2, operation.origin.writer);
    m_acknowledge.BindInteger(3, operation.variable);
    return m_acknowledge.Run();
}

bool AlarmTable::Run(const RemoveAlarms& operation) {
    m_remove.BindInteger(1, operation.variable);
    m_remove.BindInteger(2, operation.before);
    return m_remove.Run();
}

}  // namespace kalvex::server
