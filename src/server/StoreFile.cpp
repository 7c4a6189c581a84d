#include "server/StoreFile.h"

#include <algorithm>
#include <limits>

#include "platform/SqliteCopy.h"
#include "text/CodePage.h"

namespace kalvex::server {

namespace {

constexpr int kSchemaVersion = 2;
constexpr const char* kNewerFile =
    platform::Translatable("%s: Plik danych jest z nowszej wersji programu");
constexpr const char* kOlderNotKept =
    platform::Translatable("%s: nie można zachować danych sprzed zmiany wersji (%s)");

// Full: a transaction that was committed outlasts a loss of power.
constexpr const char* kSettings =
    "PRAGMA journal_mode = WAL;"
    "PRAGMA synchronous = FULL;"
    "PRAGMA journal_size_limit = 67108864;"
    "PRAGMA cache_size = -16000;";

constexpr const char* kSchema =
    "CREATE TABLE IF NOT EXISTS variables (id INTEGER PRIMARY KEY, name TEXT NOT NULL UNIQUE);"
    "CREATE TABLE IF NOT EXISTS last_values (variable INTEGER PRIMARY KEY, time INTEGER NOT NULL, "
    "type INTEGER NOT NULL, status INTEGER NOT NULL, value);"
    "CREATE TABLE IF NOT EXISTS history (variable INTEGER NOT NULL, kind INTEGER NOT NULL, "
    "time INTEGER NOT NULL, type INTEGER NOT NULL, status INTEGER NOT NULL, value, "
    "PRIMARY KEY (variable, kind, time)) WITHOUT ROWID;"
    "CREATE TABLE IF NOT EXISTS progress (what TEXT PRIMARY KEY, time INTEGER NOT NULL) "
    "WITHOUT ROWID;"
    "PRAGMA user_version = 2;";

// Binds type, status and content to three parameters in a row.
void BindValue(platform::SqliteStatement& statement, int parameter, const value::CVal& value) {
    statement.BindInteger(parameter, value.GetType());
    statement.BindInteger(parameter + 1, value.GetStatus());
    if (value.IsText()) {
        statement.BindText(parameter + 2, value.Text());
    } else if (value.GetType() == value::ValueType::Double) {
        statement.BindReal(parameter + 2, value.Real());
    } else if (value::ValueType::IsInteger(value.GetType())) {
        statement.BindInteger(parameter + 2, value.Integer());
    } else {
        statement.BindNull(parameter + 2);
    }
}

// From four columns in a row: time, type, status, content.
value::CVal ReadValue(const platform::SqliteStatement& row, int column) {
    const auto type = static_cast<std::uint16_t>(row.Integer(column + 1));
    value::CVal value;
    if (type == value::ValueType::Text) {
        value = value::CVal(row.Text(column + 3));
    } else if (type == value::ValueType::Double) {
        value = value::CVal(row.IsNull(column + 3) ? std::numeric_limits<double>::quiet_NaN()
                                                   : row.Real(column + 3));
    } else if (value::ValueType::IsInteger(type)) {
        value = value::CVal(static_cast<long long>(row.Integer(column + 3)));
        value.SetType(type);
    }
    value.SetTime(row.Integer(column));
    value.SetStatus(static_cast<std::uint16_t>(row.Integer(column + 2)));
    return value;
}

bool IsSame(const value::CVal& a, const value::CVal& b) {
    return a.GetType() == b.GetType() && a.GetStatus() == b.GetStatus() && a == b;
}

// For whoever has to go back to the program that wrote it.
bool KeepOlder(const std::string& path, std::int64_t version, platform::Notice& error) {
    const std::string kept = path + ".v" + std::to_string(version);
    std::string reason;
    if (platform::CopyDatabase(path, kept, reason)) return true;
    error = {kOlderNotKept, {kept, reason}};
    return false;
}

}  // namespace

value::CVal NoValue() {
    value::CVal value;
    value.SetStatus(value::Status::Unknown);
    return value;
}

std::string StoreFile::ErrorText() const {
    return text::FromUtf8(m_database.ErrorText());
}

bool StoreFile::Open(const std::string& path, platform::Notice& error) {
    const auto fail = [&] {
        error = {"%s: %s", {path, m_database.ErrorText()}};
        return false;
    };
    if (!m_database.Open(path)) return fail();
    std::int64_t found = 0;
    {
        platform::SqliteStatement version;
        if (!version.Prepare(m_database, "PRAGMA user_version")) return fail();
        if (version.Next()) found = version.Integer(0);
        if (version.Failed()) return fail();
    }
    if (found > kSchemaVersion) {
        error = {kNewerFile, {path}};
        return false;
    }
    if (found > 0 && found < kSchemaVersion && !KeepOlder(path, found, error)) return false;
    if (!m_database.Execute(kSettings)) return fail();
    // A file that has its tables is opened without writing to it.
    if (found == kSchemaVersion && PrepareAll()) return true;
    platform::SqliteTransaction transaction(m_database);
    return (m_database.Execute(kSchema) && m_database.Execute(ReportChangeTable::Schema()) &&
            m_database.Execute(AnswerTable::Schema()) && transaction.Commit() && PrepareAll()) ||
           fail();
}

bool StoreFile::PrepareAll() {
    struct Row {
        platform::SqliteStatement& statement;
        const char* sql;
    };
    const Row rows[] = {
        {m_putName, "INSERT OR IGNORE INTO variables VALUES (?, ?)"},
        {m_putLastValue, "INSERT OR REPLACE INTO last_values VALUES (?, ?, ?, ?, ?)"},
        {m_putProgress, "INSERT OR REPLACE INTO progress VALUES (?, ?)"},
        {m_put, "INSERT OR REPLACE INTO history VALUES (?, ?, ?, ?, ?, ?)"},
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
    };
    for (const Row& row : rows) {
        if (!row.statement.Prepare(m_database, row.sql)) return false;
    }
    return m_reportChanges.Prepare(m_database) && m_answers.Prepare(m_database);
}

bool StoreFile::ReadContents(Contents& contents) {
    platform::SqliteStatement select;
    if (!select.Prepare(m_database, "SELECT id, name FROM variables")) return false;
    while (select.Next()) contents.variables[select.Text(1)] = select.Integer(0);
    if (select.Failed() ||
        !select.Prepare(m_database,
                        "SELECT variable, time, type, status, value FROM last_values")) {
        return false;
    }
    while (select.Next()) contents.lastValues[select.Integer(0)] = ReadValue(select, 1);
    if (select.Failed() || !select.Prepare(m_database, "SELECT what, time FROM progress")) {
        return false;
    }
    while (select.Next()) contents.progress[select.Text(0)] = select.Integer(1);
    return !select.Failed() && m_reportChanges.Read(m_database, contents.reportChanges) &&
           m_answers.Read(m_database, contents.answers);
}

bool StoreFile::FailAtLocks() {
    return m_database.Execute("PRAGMA busy_timeout = 0");
}

bool StoreFile::Write(const StoreBatch& batch, std::vector<ChangedReports>& changed,
                      std::string& error) {
    platform::SqliteTransaction transaction(m_database);
    if (transaction.Begun() && Apply(batch, changed) && transaction.Commit()) return true;
    error = ErrorText();
    return false;
}

bool StoreFile::Apply(const StoreBatch& batch, std::vector<ChangedReports>& changed) {
    changed.assign(batch.parts.size(), {});
    ChangedReports none;
    for (const SaveName& name : batch.names) {
        if (!Run(name, none)) return false;
    }
    for (std::size_t part = 0; part < batch.parts.size(); ++part) {
        for (const StoreOperation& operation : batch.parts[part]) {
            const auto run = [&](const auto& known) { return Run(known, changed[part]); };
            if (!std::visit(run, operation)) return false;
        }
        if (!Number(changed[part])) return false;
    }
    return true;
}

bool StoreFile::Run(const SaveName& operation, ChangedReports&) {
    m_putName.BindInteger(1, operation.variable);
    m_putName.BindText(2, operation.name);
    return m_putName.Run();
}

bool StoreFile::Run(const SaveLastValue& operation, ChangedReports&) {
    m_putLastValue.BindInteger(1, operation.variable);
    m_putLastValue.BindInteger(2, operation.value.GetTime());
    BindValue(m_putLastValue, 3, operation.value);
    return m_putLastValue.Run();
}

bool StoreFile::Run(const SaveProgress& operation, ChangedReports&) {
    m_putProgress.BindText(1, operation.what);
    m_putProgress.BindInteger(2, operation.time);
    return m_putProgress.Run();
}

bool StoreFile::Run(const SaveAnswer& operation, ChangedReports&) {
    return m_answers.Run(operation);
}

bool StoreFile::Run(const DropAnswers& operation, ChangedReports&) {
    return m_answers.Run(operation);
}

bool StoreFile::Number(ChangedReports& changed) {
    for (auto& [period, sequence] : changed) {
        if (!m_reportChanges.Add(period.first, period.second)) return false;
        sequence = m_reportChanges.Last();
    }
    return true;
}

bool StoreFile::Put(VariableId variable, value::ValueKind kind, std::int64_t time,
                    const value::CVal& value) {
    m_put.BindInteger(1, variable);
    m_put.BindInteger(2, kind);
    m_put.BindInteger(3, time);
    BindValue(m_put, 4, value);
    return m_put.Run();
}

bool StoreFile::Run(const PutValue& operation, ChangedReports& changed) {
    const auto& [variable, kind, time, value] = operation;
    if (!value::IsReport(kind)) return Put(variable, kind, time, value);
    std::optional<value::CVal> standing;
    return ReadReport(variable, kind, time, standing) &&
           PutReport(variable, kind, time, standing, value, changed);
}

bool StoreFile::PutReport(VariableId variable, value::ValueKind kind, std::int64_t time,
                          const std::optional<value::CVal>& standing, const value::CVal& value,
                          ChangedReports& changed) {
    if (standing && IsSame(*standing, value)) return true;
    changed[{kind, time}] = 0;
    return Put(variable, kind, time, value);
}

bool StoreFile::Run(const MarkGap& operation, ChangedReports&) {
    m_getBefore.BindInteger(1, operation.variable);
    m_getBefore.BindInteger(2, std::max(operation.time, operation.until));
    std::optional<value::CVal> last;
    if (!ReadOne(m_getBefore, last)) return false;
    if (!last || (last->GetStatus() & value::Status::Unknown) != 0) return true;
    const std::int64_t time = std::max(operation.time, last->GetTime() + 1);
    if (operation.until != 0 && time > operation.until) return true;
    return Put(operation.variable, value::KindArchive, time, NoValue());
}

bool StoreFile::Run(const RemoveArchive& operation, ChangedReports&) {
    m_remove.BindInteger(1, operation.variable);
    m_remove.BindInteger(2, operation.before);
    return m_remove.Run();
}

bool StoreFile::ReadOne(platform::SqliteStatement& statement, std::optional<value::CVal>& value) {
    value.reset();
    if (statement.Next()) value = ReadValue(statement, 0);
    statement.Reset();
    return !statement.Failed();
}

bool StoreFile::ReadReport(VariableId variable, value::ValueKind kind, std::int64_t time,
                           std::optional<value::CVal>& value) {
    m_get.BindInteger(1, variable);
    m_get.BindInteger(2, kind);
    m_get.BindInteger(3, time);
    return ReadOne(m_get, value);
}

StorePiece StoreFile::ReadRange(const StoreQuery& query) {
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

bool StoreFile::Run(const MakeReport& operation, ChangedReports& changed) {
    std::optional<value::CVal> standing;
    if (!ReadReport(operation.variable, operation.kind, operation.time, standing)) return false;
    const std::uint16_t status = standing ? standing->GetStatus() : 0;
    value::CVal result;
    if (operation.action == vantrel::PeriodAction::Init) {
        if ((status & value::Status::ReportInited) != 0) return true;
        if (standing) result = *standing;
        result.AddStatus(value::Status::ReportInited | (standing ? 0 : value::Status::Unknown));
    } else {
        const bool load = operation.action == vantrel::PeriodAction::Load;
        if (load && (status & value::Status::SetByUser) != 0) return true;
        if (!Compute(operation, result)) return false;
        result.AddStatus(status & value::Status::ReportInited);
    }
    return PutReport(operation.variable, operation.kind, operation.time, standing, result, changed);
}

bool StoreFile::Compute(const MakeReport& operation, value::CVal& result) {
    return operation.kind == value::KindHour ? ComputeHour(operation, result)
                                             : ComputeFromParts(operation, result);
}

bool StoreFile::ComputeHour(const MakeReport& operation, value::CVal& result) {
    const std::int64_t end = CoveredSpan(value::KindHour, operation.time, operation.dayStart).end;
    const TimeSpan span{operation.time, std::clamp(operation.now, operation.time, end)};
    std::optional<value::CVal> before;
    if (operation.rule != ReportRule::Sum) {
        platform::SqliteStatement& select =
            operation.rule == ReportRule::Mean ? m_getBefore : m_getKnownBefore;
        select.BindInteger(1, operation.variable);
        select.BindInteger(2, span.begin);
        if (!ReadOne(select, before)) return false;
    }
    const StorePiece inside =
        ReadRange({operation.variable, value::KindArchive, span.begin, span.end - 1,
                   span.end - span.begin, std::numeric_limits<std::size_t>::max()});
    if (!inside.read) return false;
    result = ComputeFromArchive(operation.rule, span, before, inside.values);
    const bool known = (result.GetStatus() & value::Status::Unknown) == 0;
    if (known && span.end < end) result.AddStatus(value::Status::CalculateError);
    return true;
}

bool StoreFile::ComputeFromParts(const MakeReport& operation, value::CVal& result) {
    const value::ValueKind partKind =
        operation.kind == value::KindMonth ? value::KindDay : value::KindHour;
    std::vector<ReportPart> parts;
    for (const std::int64_t time : PartsOf(operation.kind, operation.time, operation.dayStart)) {
        const TimeSpan span = CoveredSpan(partKind, time, operation.dayStart);
        ReportPart& part = parts.emplace_back();
        part.length = span.end - span.begin;
        if (!ReadReport(operation.variable, partKind, time, part.value)) return false;
    }
    result = ComputeFromReports(operation.rule, parts);
    return true;
}

}  // namespace kalvex::server
