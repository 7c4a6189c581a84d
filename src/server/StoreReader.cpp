#include "server/StoreReader.h"

#include "server/StoreFile.h"
#include "server/StoreValues.h"

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
    "SELECT time, type, status, value, written, id, user, client, address, "
    "before_time, before_type, before_status, before_value "
    "FROM last_values LEFT JOIN writers ON id = writer WHERE variable = ?";
constexpr const char* kArchiveTime =
    "SELECT max(time) FROM history WHERE variable = ? AND kind = 6 AND time <= ?";

ValueVersion ReadVersion(const platform::SqliteStatement& row, value::ValueKind kind) {
    ValueVersion version{kind, ReadValue(row, 0), {}, {}};
    if (row.Integer(4) != 0) version.written = row.Integer(4);
    if (!row.IsNull(5)) version.writer = Writer{row.Text(6), row.Text(7), row.Text(8)};
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
        if (!select.IsNull(9)) {
            versions.push_back({value::KindCurrent, ReadValue(select, 9), {}, {}});
        }
    }
    Note(select);
    return versions;
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
