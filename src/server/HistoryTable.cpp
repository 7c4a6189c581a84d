#include "server/HistoryTable.h"

#include "server/StoreValues.h"

namespace kalvex::server {

// A version is kept of what a client has written or writes over, and of a report that was computed
// when its period had ended (128: REPORT_LOADED, 255: no content). That a report was begun is none.
const char* HistoryTable::Schema() {
    return "CREATE TABLE IF NOT EXISTS history (variable INTEGER NOT NULL, "
           "kind INTEGER NOT NULL, time INTEGER NOT NULL, type INTEGER NOT NULL, "
           "status INTEGER NOT NULL, value, writer INTEGER NOT NULL DEFAULT 0, "
           "written INTEGER DEFAULT 0, PRIMARY KEY (variable, kind, time)) WITHOUT ROWID;"
           "CREATE TABLE IF NOT EXISTS versions (variable INTEGER NOT NULL, "
           "kind INTEGER NOT NULL, time INTEGER NOT NULL, number INTEGER NOT NULL, "
           "type INTEGER NOT NULL, status INTEGER NOT NULL, value, writer INTEGER NOT NULL, "
           "written INTEGER, PRIMARY KEY (variable, kind, time, number)) WITHOUT ROWID;"
           "CREATE TABLE IF NOT EXISTS writers (id INTEGER PRIMARY KEY, user TEXT NOT NULL, "
           "client TEXT NOT NULL, address TEXT NOT NULL, UNIQUE (user, client, address));"
           "CREATE TRIGGER IF NOT EXISTS keep_version BEFORE UPDATE ON history WHEN "
           "(old.type <> new.type OR old.status <> new.status OR old.value IS NOT new.value) AND "
           "CASE WHEN old.kind = 6 THEN old.writer <> 0 OR new.writer <> 0 "
           "ELSE old.written IS NOT NULL AND (old.type <> 255 OR old.status & 128) END "
           "BEGIN INSERT INTO versions VALUES (old.variable, old.kind, old.time, "
           "(SELECT coalesce(max(number), 0) + 1 FROM versions WHERE variable = old.variable "
           "AND kind = old.kind AND time = old.time), old.type, old.status, old.value, "
           "old.writer, old.written); END;";
}

const char* HistoryTable::Additions() {
    return "ALTER TABLE history ADD COLUMN writer INTEGER NOT NULL DEFAULT 0;"
           "ALTER TABLE history ADD COLUMN written INTEGER DEFAULT 0;";
}

bool HistoryTable::Prepare(platform::SqliteDatabase& database) {
    struct Row {
        platform::SqliteStatement& statement;
        const char* sql;
    };
    const Row rows[] = {
        {m_putWriter, "INSERT OR IGNORE INTO writers VALUES (?, ?, ?, ?)"},
        {m_add, "INSERT INTO history VALUES (?, ?, ?, ?, ?, ?, ?, ?) ON CONFLICT DO NOTHING"},
        {m_put,
         "INSERT INTO history VALUES (?, ?, ?, ?, ?, ?, ?, ?) ON CONFLICT DO UPDATE SET "
         "type = excluded.type, status = excluded.status, value = excluded.value, "
         "(writer, written) = (SELECT iif(same, writer, excluded.writer), "
         "iif(same, written, excluded.written) FROM (SELECT type = excluded.type AND "
         "status = excluded.status AND value IS excluded.value AS same))"},
        {m_get,
         "SELECT time, type, status, value FROM history "
         "WHERE variable = ? AND kind = ? AND time = ?"},
        {m_getRange,
         "SELECT time, type, status, value FROM history "
         "WHERE variable = ? AND kind = ? AND time BETWEEN ? AND ? ORDER BY time LIMIT ?"},
        {m_getBefore,
         "SELECT time, type, status, value FROM history "
         "WHERE variable = ? AND kind = 6 AND time <= ? ORDER BY time DESC LIMIT 1"},
        {m_getKnownBefore,
         "SELECT time, type, status, value FROM history WHERE variable = ? AND kind = 6 "
         "AND time < ? AND status & 1 = 0 AND type <> 255 ORDER BY time DESC LIMIT 1"},
        {m_remove,
         "DELETE FROM history WHERE variable = ?1 AND kind = 6 AND time < "
         "(SELECT max(time) FROM history WHERE variable = ?1 AND kind = 6 AND time <= ?2) "
         "AND time < coalesce((SELECT time FROM history WHERE variable = ?1 AND kind = 6 "
         "ORDER BY time LIMIT 1 OFFSET 10000), ?2)"},
        {m_removeVersions,
         "DELETE FROM versions WHERE variable = ?1 AND kind = 6 AND time < "
         "(SELECT min(time) FROM history WHERE variable = ?1 AND kind = 6)"},
        {m_removeReports,
         "DELETE FROM history WHERE variable = ?1 AND kind = ?2 AND time < ?3 AND time < "
         "coalesce((SELECT time FROM history WHERE variable = ?1 AND kind = ?2 "
         "ORDER BY time LIMIT 1 OFFSET 1000), ?3)"},
        {m_removeReportVersions,
         "DELETE FROM versions WHERE variable = ?1 AND kind = ?2 AND time < coalesce("
         "(SELECT min(time) FROM history WHERE variable = ?1 AND kind = ?2), ?3) AND time < ?3"},
    };
    m_database = &database;
    for (const Row& row : rows) {
        if (!row.statement.Prepare(database, row.sql)) return false;
    }
    return true;
}

bool HistoryTable::ReadWriters(platform::SqliteDatabase& database,
                               std::map<Writer, WriterId>& writers) const {
    platform::SqliteStatement select;
    if (!select.Prepare(database, "SELECT id, user, client, address FROM writers")) return false;
    while (select.Next()) {
        writers[{select.Text(1), select.Text(2), select.Text(3)}] = select.Integer(0);
    }
    return !select.Failed();
}

bool HistoryTable::Run(const SaveWriter& operation) {
    m_putWriter.BindInteger(1, operation.id);
    m_putWriter.BindText(2, operation.writer.user);
    m_putWriter.BindText(3, operation.writer.client);
    m_putWriter.BindText(4, operation.writer.address);
    return m_putWriter.Run();
}

// Most values are new, and what stands there need not be looked at then.
bool HistoryTable::Put(const HistoryKey& key, const value::CVal& value, const Origin& origin) {
    return Put(m_add, key, value, origin) &&
           (m_database->Changes() > 0 || Put(m_put, key, value, origin));
}

bool HistoryTable::Put(platform::SqliteStatement& statement, const HistoryKey& key,
                       const value::CVal& value, const Origin& origin) {
    statement.BindInteger(1, key.variable);
    statement.BindInteger(2, key.kind);
    statement.BindInteger(3, key.time);
    BindValue(statement, 4, value);
    statement.BindInteger(7, origin.writer);
    if (origin.provisional) {
        statement.BindNull(8);
    } else {
        statement.BindInteger(8, origin.time);
    }
    return statement.Run();
}

bool HistoryTable::RemoveArchive(VariableId variable, std::int64_t before) {
    m_remove.BindInteger(1, variable);
    m_remove.BindInteger(2, before);
    m_removeVersions.BindInteger(1, variable);
    return m_remove.Run() && m_removeVersions.Run();
}

bool HistoryTable::RemoveReports(VariableId variable, value::ValueKind kind, std::int64_t before) {
    const auto run = [&](platform::SqliteStatement& statement) {
        statement.BindInteger(1, variable);
        statement.BindInteger(2, kind);
        statement.BindInteger(3, before);
        return statement.Run();
    };
    return run(m_removeReports) && run(m_removeReportVersions);
}

bool HistoryTable::ReadOne(platform::SqliteStatement& statement,
                           std::optional<value::CVal>& value) {
    value.reset();
    if (statement.Next()) value = ReadValue(statement, 0);
    statement.Reset();
    return !statement.Failed();
}

bool HistoryTable::Get(const HistoryKey& key, std::optional<value::CVal>& value) {
    m_get.BindInteger(1, key.variable);
    m_get.BindInteger(2, key.kind);
    m_get.BindInteger(3, key.time);
    return ReadOne(m_get, value);
}

bool HistoryTable::ReadArchive(platform::SqliteStatement& statement, VariableId variable,
                               std::int64_t time, std::optional<value::CVal>& value) {
    statement.BindInteger(1, variable);
    statement.BindInteger(2, time);
    return ReadOne(statement, value);
}

bool HistoryTable::GetBefore(VariableId variable, std::int64_t time,
                             std::optional<value::CVal>& value) {
    return ReadArchive(m_getBefore, variable, time, value);
}

bool HistoryTable::GetKnownBefore(VariableId variable, std::int64_t time,
                                  std::optional<value::CVal>& value) {
    return ReadArchive(m_getKnownBefore, variable, time, value);
}

StorePiece HistoryTable::ReadRange(const StoreQuery& query) {
    StorePiece piece;
    m_getRange.BindInteger(1, query.variable);
    m_getRange.BindInteger(2, query.kind);
    m_getRange.BindInteger(3, query.from);
    m_getRange.BindInteger(4, query.to);
    m_getRange.BindInteger(5, query.limit + 1);
    std::size_t texts = 0;
    while (m_getRange.Next()) {
        const auto count = static_cast<std::int64_t>(piece.values.size());
        piece.more = count == query.limit || texts >= query.texts;
        if (piece.more) break;
        const value::CVal& value = piece.values.emplace_back(ReadValue(m_getRange, 0));
        if (value.IsText()) texts += value.Text().size();
    }
    m_getRange.Reset();
    piece.read = !m_getRange.Failed();
    if (!piece.read) return {};
    return piece;
}

}  // namespace kalvex::server
