#include "server/StoreFile.h"

#include <algorithm>
#include <limits>

#include "platform/SqliteCopy.h"
#include "server/PointScan.h"
#include "text/CodePage.h"

namespace kalvex::server {

namespace {

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
    "type INTEGER NOT NULL, status INTEGER NOT NULL, value, writer INTEGER NOT NULL DEFAULT 0, "
    "written INTEGER DEFAULT 0, before_time INTEGER, before_type INTEGER, before_status INTEGER, "
    "before_value, before_writer INTEGER, before_written INTEGER);"
    "CREATE TABLE IF NOT EXISTS progress (what TEXT PRIMARY KEY, time INTEGER NOT NULL) "
    "WITHOUT ROWID;"
    "PRAGMA user_version = 3;";

// What the table of a file of version 1 or 2 lacks.
constexpr const char* kAdditions =
    "ALTER TABLE last_values ADD COLUMN writer INTEGER NOT NULL DEFAULT 0;"
    "ALTER TABLE last_values ADD COLUMN written INTEGER DEFAULT 0;"
    "ALTER TABLE last_values ADD COLUMN before_time INTEGER;"
    "ALTER TABLE last_values ADD COLUMN before_type INTEGER;"
    "ALTER TABLE last_values ADD COLUMN before_status INTEGER;"
    "ALTER TABLE last_values ADD COLUMN before_value;"
    "ALTER TABLE last_values ADD COLUMN before_writer INTEGER;"
    "ALTER TABLE last_values ADD COLUMN before_written INTEGER;";

// For whoever has to go back to the program that wrote it.
bool KeepOlder(const std::string& path, std::int64_t version, platform::Notice& error) {
    const std::string kept = path + ".v" + std::to_string(version);
    std::string reason;
    if (platform::CopyDatabase(path, kept, reason)) return true;
    error = {kOlderNotKept, {kept, reason}};
    return false;
}

}  // namespace

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
    if (found > kStoreVersion) {
        error = {kNewerFile, {path}};
        return false;
    }
    if (found > 0 && found < kStoreVersion && !KeepOlder(path, found, error)) return false;
    if (!m_database.Execute(kSettings)) return fail();
    // A file that has its tables is opened without writing to it.
    if (found == kStoreVersion && PrepareAll()) return true;
    const bool isOlder = found > 0 && found < kStoreVersion;
    platform::SqliteTransaction transaction(m_database);
    const char* const steps[] = {isOlder ? kAdditions : "",
                                 isOlder ? HistoryTable::Additions() : "",
                                 kSchema,
                                 HistoryTable::Schema(),
                                 LateTable::Schema(),
                                 RollupTable::Schema(),
                                 ReportChangeTable::Schema(),
                                 AnswerTable::Schema(),
                                 AlarmTable::Schema()};
    const auto execute = [this](const char* sql) { return m_database.Execute(sql); };
    return (std::ranges::all_of(steps, execute) && transaction.Commit() && PrepareAll()) || fail();
}

bool StoreFile::PrepareAll() {
    struct Row {
        platform::SqliteStatement& statement;
        const char* sql;
    };
    const Row rows[] = {
        {m_putName, "INSERT OR IGNORE INTO variables VALUES (?, ?)"},
        {m_putLastValue,
         "INSERT INTO last_values (variable, time, type, status, value, writer, written) "
         "VALUES (?, ?, ?, ?, ?, ?, ?) ON CONFLICT DO UPDATE SET "
         "(before_time, before_type, before_status, before_value, before_writer, "
         "before_written) = (SELECT "
         "iif(again, before_time, time), iif(again, before_type, type), "
         "iif(again, before_status, status), iif(again, before_value, value), "
         "iif(again, before_writer, writer), iif(again, before_written, written) FROM (SELECT "
         "writer = excluded.writer AND written = excluded.written AND time = excluded.time AND "
         "type = excluded.type AND status = excluded.status AND value IS excluded.value "
         "AS again) WHERE excluded.writer <> 0), "
         "time = excluded.time, type = excluded.type, status = excluded.status, "
         "value = excluded.value, writer = excluded.writer, written = excluded.written"},
        {m_putProgress, "INSERT OR REPLACE INTO progress VALUES (?, ?)"},
    };
    for (const Row& row : rows) {
        if (!row.statement.Prepare(m_database, row.sql)) return false;
    }
    return m_history.Prepare(m_database) && m_late.Prepare(m_database) &&
           m_rollups.Prepare(m_database) && m_reportChanges.Prepare(m_database) &&
           m_answers.Prepare(m_database) && m_alarms.Prepare(m_database);
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
    return !select.Failed() && m_history.ReadWriters(m_database, contents.writers) &&
           m_reportChanges.Read(m_database, contents.reportChanges) &&
           m_answers.Read(m_database, contents.answers) &&
           m_alarms.Read(m_database, contents.alarms);
}

bool StoreFile::FailAtLocks() {
    return m_database.Execute("PRAGMA busy_timeout = 0");
}

bool StoreFile::Write(const StoreBatch& batch, std::vector<StoreOutcome>& outcomes,
                      std::string& error) {
    platform::SqliteTransaction transaction(m_database);
    if (transaction.Begun() && Apply(batch, outcomes) && transaction.Commit()) return true;
    error = ErrorText();
    m_rollups.OnRollback();
    return false;
}

bool StoreFile::Apply(const StoreBatch& batch, std::vector<StoreOutcome>& outcomes) {
    outcomes.assign(batch.parts.size(), {});
    StoreOutcome none;
    const auto runName = [&](const auto& known) { return Run(known, none); };
    for (const StoreName& name : batch.names) {
        if (!std::visit(runName, name)) return false;
    }
    for (std::size_t part = 0; part < batch.parts.size(); ++part) {
        const auto run = [&](const auto& known) { return Run(known, outcomes[part]); };
        for (const StoreOperation& operation : batch.parts[part]) {
            if (!std::visit(run, operation)) return false;
        }
        if (!Number(outcomes[part].changed)) return false;
    }
    return true;
}

bool StoreFile::Run(const SaveName& operation, StoreOutcome&) {
    m_putName.BindInteger(1, operation.variable);
    m_putName.BindText(2, operation.name);
    return m_putName.Run();
}

bool StoreFile::Run(const SaveWriter& operation, StoreOutcome&) {
    return m_history.Run(operation);
}

bool StoreFile::Run(const SaveLastValue& operation, StoreOutcome&) {
    m_putLastValue.BindInteger(1, operation.variable);
    m_putLastValue.BindInteger(2, operation.value.GetTime());
    BindValue(m_putLastValue, 3, operation.value);
    m_putLastValue.BindInteger(6, operation.origin.writer);
    m_putLastValue.BindInteger(7, operation.origin.time);
    return m_putLastValue.Run();
}

bool StoreFile::Run(const SaveProgress& operation, StoreOutcome&) {
    m_putProgress.BindText(1, operation.what);
    m_putProgress.BindInteger(2, operation.time);
    return m_putProgress.Run();
}

bool StoreFile::Run(const SaveAnswer& operation, StoreOutcome&) {
    return m_answers.Run(operation);
}

bool StoreFile::Run(const DropAnswers& operation, StoreOutcome&) {
    return m_answers.Run(operation);
}

bool StoreFile::Number(ChangedReports& changed) {
    for (auto& [period, sequence] : changed) {
        if (!m_reportChanges.Add(period.first, period.second)) return false;
        sequence = m_reportChanges.Last();
    }
    return true;
}

bool StoreFile::Run(const PutValue& operation, StoreOutcome& outcome) {
    const HistoryKey key{operation.variable, operation.kind, operation.time};
    if (!value::IsReport(key.kind)) {
        return PutArchive(key, operation.value, operation.origin, outcome);
    }
    std::optional<value::CVal> standing;
    return m_history.Get(key, standing) &&
           PutReport(key, standing, operation.value, operation.origin, outcome.changed);
}

bool StoreFile::PutReport(const HistoryKey& key, const std::optional<value::CVal>& standing,
                          const value::CVal& value, const Origin& origin, ChangedReports& changed) {
    if (standing && IsSame(*standing, value)) return true;
    changed[{key.kind, key.time}] = 0;
    return m_history.Put(key, value, origin);
}

bool StoreFile::PutArchive(const HistoryKey& key, const value::CVal& value, const Origin& origin,
                           StoreOutcome& outcome) {
    return m_history.Put(key, value, origin) &&
           m_rollups.Mark(key.variable, key.time, outcome.marked);
}

bool StoreFile::Run(const MarkGap& operation, StoreOutcome& outcome) {
    std::optional<value::CVal> last;
    if (!m_history.GetBefore(operation.variable, std::max(operation.time, operation.until), last)) {
        return false;
    }
    if (!last || (last->GetStatus() & value::Status::Unknown) != 0) return true;
    const std::int64_t time = std::max(operation.time, last->GetTime() + 1);
    if (operation.until != 0 && time > operation.until) return true;
    return PutArchive({operation.variable, value::KindArchive, time}, NoValue(), {}, outcome);
}

bool StoreFile::Run(const RemoveArchive& operation, StoreOutcome& outcome) {
    const VariableId variable = operation.variable;
    std::optional<std::int64_t> before;
    std::optional<std::int64_t> after;
    return m_rollups.ReadOldest(variable, before) &&
           m_history.RemoveArchive(variable, operation.before) &&
           m_rollups.ReadOldest(variable, after) &&
           (!after || after == before || m_rollups.OnRemoved(variable, *after, outcome.marked));
}

bool StoreFile::Run(const RemoveReports& operation, StoreOutcome&) {
    const auto remove = [&](value::ValueKind kind) {
        return m_history.RemoveReports(operation.variable, kind, operation.before);
    };
    return std::ranges::all_of(value::kReportKinds, remove);
}

bool StoreFile::Run(const MakeReport& operation, StoreOutcome& outcome) {
    const HistoryKey key{operation.variable, operation.kind, operation.time};
    std::optional<value::CVal> standing;
    if (!m_history.Get(key, standing)) return false;
    const std::uint16_t status = standing ? standing->GetStatus() : 0;
    Origin origin = operation.origin;
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
        origin.provisional =
            CoveredSpan(key.kind, key.time, operation.dayStart).end > operation.now;
    }
    return PutReport(key, standing, result, origin, outcome.changed);
}

bool StoreFile::Compute(const MakeReport& operation, value::CVal& result) {
    return operation.kind == value::KindHour ? ComputeHour(operation, result)
                                             : ComputeFromParts(operation, result);
}

bool StoreFile::ComputeHour(const MakeReport& operation, value::CVal& result) {
    const std::int64_t end = CoveredSpan(value::KindHour, operation.time, operation.dayStart).end;
    const TimeSpan span{operation.time, std::clamp(operation.now, operation.time, end)};
    const VariableId variable = operation.variable;
    std::optional<value::CVal> before;
    if (operation.rule == ReportRule::Mean && !m_history.GetBefore(variable, span.begin, before)) {
        return false;
    }
    if (operation.rule == ReportRule::Increase &&
        !m_history.GetKnownBefore(variable, span.begin, before)) {
        return false;
    }
    const StorePiece inside =
        ReadRange({variable, value::KindArchive, span.begin, span.end - 1, span.end - span.begin,
                   std::numeric_limits<std::size_t>::max()});
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
        if (!m_history.Get({operation.variable, partKind, time}, part.value)) return false;
    }
    result = ComputeFromReports(operation.rule, parts);
    return true;
}

// ---- rollups

bool StoreFile::Run(const RollUp& operation, StoreOutcome& outcome) {
    return m_rollups.Run(operation, outcome.hoursLeft);
}

StorePiece StoreFile::ReadRange(const StoreQuery& query) {
    return query.scan ? query.scan->Step(m_history, m_rollups) : m_history.ReadRange(query);
}

// ---- late data

bool StoreFile::Run(const MarkLate& operation, StoreOutcome&) {
    return m_late.Mark(operation);
}

bool StoreFile::Run(const ComputeLate& operation, StoreOutcome& outcome) {
    std::optional<MarkLate> mark;
    for (std::size_t done = 0; m_late.First(mark); ++done) {
        outcome.lateLeft = mark.has_value();
        if (!mark || done == operation.most) return true;
        if (!ComputeMarked(*mark, operation, outcome) || !m_late.Drop(*mark)) return false;
    }
    return false;
}

bool StoreFile::ComputeMarked(const MarkLate& mark, const ComputeLate& order,
                              StoreOutcome& outcome) {
    const HistoryKey& report = mark.report;
    std::optional<value::CVal> standing;
    if (!m_history.Get(report, standing)) return false;
    const std::uint16_t status = standing ? standing->GetStatus() : 0;
    const bool isKept = (status & value::Status::SetByUser) != 0;
    if (isKept) outcome.kept.push_back(report);
    StoreOutcome own;
    if (!isKept && (status & value::Status::ReportLoaded) != 0) {
        const MakeReport make{vantrel::PeriodAction::Load,
                              report.variable,
                              report.kind,
                              report.time,
                              mark.rule,
                              mark.dayStart,
                              order.now,
                              order.origin};
        if (!Run(make, own)) return false;
    }
    const bool hasChanged = !own.changed.empty();
    outcome.changed.merge(own.changed);
    if (hasChanged && !MarkAbove(mark)) return false;
    const bool goesOn = report.kind == value::KindHour && (!mark.chained || isKept || hasChanged);
    return !goesOn || MarkNext(mark);
}

bool StoreFile::MarkAbove(const MarkLate& mark) {
    const ReportName above = ReportAbove(mark.report.kind, mark.report.time, mark.dayStart);
    return above.kind == value::KindNone ||
           m_late.Mark({{mark.report.variable, above.kind, above.time}, mark.rule, mark.dayStart});
}

// The last value of an hour counts in those behind it, up to the next one.
bool StoreFile::MarkNext(const MarkLate& hour) {
    const std::int64_t end = CoveredSpan(value::KindHour, hour.report.time, hour.dayStart).end;
    std::optional<std::int64_t> next;
    if (!m_late.NextChained(hour, end, next)) return false;
    return !next ||
           m_late.Mark(
               {{hour.report.variable, value::KindHour, *next}, hour.rule, hour.dayStart, true});
}

}  // namespace kalvex::server
