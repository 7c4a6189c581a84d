#include "server/StoreReader.h"

#include <limits>

#include "server/StoreFile.h"
#include "server/StoreValues.h"
#include "text/PatternMatch.h"

namespace kalvex::server {

namespace {

constexpr const char* kOtherVersion =
    platform::Translatable("%s: Plik danych jest z innej wersji programu");

// Columns: time, type, status, value, when written, the writer's number, user, client, address.
constexpr const char* kVersions =
    "SELECT time, type, status, value, written, id, user, client, address FROM "
    "(SELECT time, type, status, value, writer, written, NULL AS number FROM history "
    "WHERE variable = ?1 AND kind = ?2 AND time = ?3 UNION ALL "
    "SELECT time, type, status, value, writer, written, number FROM versions "
    "WHERE variable = ?1 AND kind = ?2 AND time = ?3) LEFT JOIN writers ON id = writer "
    "ORDER BY number DESC NULLS FIRST";
constexpr const char* kCurrent =
    "SELECT time, type, status, value, written, a.id, a.user, a.client, a.address, "
    "before_time, before_type, before_status, before_value, before_written, b.id, b.user, "
    "b.client, b.address FROM last_values LEFT JOIN writers AS a ON a.id = writer "
    "LEFT JOIN writers AS b ON b.id = before_writer WHERE variable = ?";
constexpr int kBefore = 9;  // the first column of the value before
// Columns: name, stage, began, value, ended, acknowledged, the number of who, user, client,
// address.
constexpr const char* kAlarms =
    "SELECT name, stage, began, value, ended, acknowledged, writers.id, user, client, address "
    "FROM alarms JOIN variables ON variables.id = variable LEFT JOIN writers ON writers.id = who "
    "WHERE began BETWEEN ? AND ? AND (NOT ? OR ended IS NULL OR acknowledged IS NULL) "
    "ORDER BY alarms.id";
constexpr const char* kArchiveTime =
    "SELECT max(time) FROM history WHERE variable = ? AND kind = 6 AND time <= ?";

ValueVersion ReadVersion(const platform::SqliteStatement& row, value::ValueKind kind,
                         int first = 0) {
    ValueVersion version{kind, ReadValue(row, first), {}, {}};
    if (row.Integer(first + 4) != 0) version.written = row.Integer(first + 4);
    if (!row.IsNull(first + 5)) {
        version.writer = Writer{row.Text(first + 6), row.Text(first + 7), row.Text(first + 8)};
    }
    return version;
}

}  // namespace

bool StoreReader::Open(const std::string& path, platform::Notice& error) {
    const auto fail = [&] {
        error = {"%s: %s", {path, m_database.ErrorText()}};
        return false;
    };
    if (!m_database.OpenExisting(path)) return fail();
    platform::SqliteStatement version;
    if (!version.Prepare(m_database, "PRAGMA user_version") || !version.Next()) return fail();
    if (version.Integer(0) == kStoreVersion) return true;
    error = {kOtherVersion, {path}};
    return false;
}

bool StoreReader::Prepare(platform::SqliteStatement& statement, const char* sql) {
    if (statement.Prepare(m_database, sql)) return true;
    m_fault = m_database.ErrorText();
    return false;
}

void StoreReader::Note(const platform::SqliteStatement& statement) {
    if (statement.Failed()) m_fault = m_database.ErrorText();
}

std::optional<VariableId> StoreReader::Find(std::string_view name) {
    platform::SqliteStatement select;
    if (!Prepare(select, "SELECT id FROM variables WHERE name = ?")) return std::nullopt;
    select.BindText(1, name);
    std::optional<VariableId> found;
    if (select.Next()) found = select.Integer(0);
    Note(select);
    return found;
}

std::map<std::string, VariableId> StoreReader::Variables() {
    std::map<std::string, VariableId> variables;
    platform::SqliteStatement select;
    if (!Prepare(select, "SELECT id, name FROM variables")) return variables;
    while (select.Next()) variables.emplace(select.Text(1), select.Integer(0));
    Note(select);
    return variables;
}

bool StoreReader::PrepareHistory() {
    m_historyPrepared = m_historyPrepared || m_history.Prepare(m_database);
    if (!m_historyPrepared) m_fault = m_database.ErrorText();
    return m_historyPrepared;
}

StorePiece StoreReader::ReadRange(const StoreQuery& query) {
    if (!PrepareHistory()) return {};
    StorePiece piece = m_history.ReadRange(query);
    if (!piece.read) m_fault = m_database.ErrorText();
    return piece;
}

std::optional<value::CVal> StoreReader::ValueAt(const HistoryKey& key) {
    std::optional<value::CVal> value;
    if (PrepareHistory() && !m_history.Get(key, value)) m_fault = m_database.ErrorText();
    return value;
}

std::vector<ValueVersion> StoreReader::Versions(const HistoryKey& key) {
    std::vector<ValueVersion> versions;
    platform::SqliteStatement select;
    if (!Prepare(select, kVersions)) return versions;
    select.BindInteger(1, key.variable);
    select.BindInteger(2, key.kind);
    select.BindInteger(3, key.time);
    while (select.Next()) versions.push_back(ReadVersion(select, key.kind));
    Note(select);
    return versions;
}

std::vector<ValueVersion> StoreReader::CurrentVersions(VariableId variable) {
    std::vector<ValueVersion> versions;
    platform::SqliteStatement select;
    if (!Prepare(select, kCurrent)) return versions;
    select.BindInteger(1, variable);
    if (select.Next()) {
        versions.push_back(ReadVersion(select, value::KindCurrent));
        if (!select.IsNull(kBefore)) {
            versions.push_back(ReadVersion(select, value::KindCurrent, kBefore));
        }
    }
    Note(select);
    return versions;
}

void StoreReader::ReadAlarms(const AlarmChoice& choice,
                             const std::function<void(const JournalAlarm&)>& take) {
    platform::SqliteStatement select;
    if (!Prepare(select, kAlarms)) return;
    select.BindInteger(1, choice.from.value_or(std::numeric_limits<std::int64_t>::min()));
    select.BindInteger(2, choice.to.value_or(std::numeric_limits<std::int64_t>::max()));
    select.BindInteger(3, choice.active ? 1 : 0);
    const auto time = [&select](int column) {
        return select.IsNull(column) ? std::nullopt : std::optional(select.Integer(column));
    };
    while (select.Next()) {
        const std::optional<AlarmStage> stage = AlarmStageOf(select.Integer(1));
        JournalAlarm alarm{select.Text(0),
                           stage.value_or(AlarmStage::LowLow),
                           select.Integer(2),
                           {},
                           time(4),
                           time(5),
                           {}};
        const bool fits =
            text::CompareWithPattern(alarm.variable, choice.variables,
                                     text::PatternOption::Wildcards | text::PatternOption::Whole);
        if (!stage || !fits) continue;
        if (!select.IsNull(3)) alarm.number = select.Real(3);
        if (!select.IsNull(6)) alarm.who = Writer{select.Text(7), select.Text(8), select.Text(9)};
        take(alarm);
    }
    Note(select);
}

std::optional<std::int64_t> StoreReader::ArchiveTimeAt(VariableId variable, std::int64_t time) {
    platform::SqliteStatement select;
    if (!Prepare(select, kArchiveTime)) return std::nullopt;
    select.BindInteger(1, variable);
    select.BindInteger(2, time);
    std::optional<std::int64_t> found;
    if (select.Next() && !select.IsNull(0)) found = select.Integer(0);
    Note(select);
    return found;
}

}  // namespace kalvex::server
