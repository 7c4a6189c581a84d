#include "server/StoreCheck.h"

#include <algorithm>
#include <sstream>

#include "server/StoreReader.h"
#include "text/CodePage.h"

namespace kalvex::server {

namespace {

constexpr std::int64_t kTimesOfAPiece = 10000;

// What must not be, by table. Nobody else's table is named "r".
struct RowRule {
    const char* table;
    const char* condition;
    const char* text;  // the table, how many rows
};

constexpr const char* kNoVariable =
    platform::Translatable("%s: wiersze bez zmiennej w tabeli variables: %d");
constexpr const char* kNoWriter =
    platform::Translatable("%s: wiersze bez autora w tabeli writers: %d");
constexpr const char* kNoValue =
    platform::Translatable("%s: wiersze bez wartości w tabeli history: %d");
constexpr const char* kOtherType =
    platform::Translatable("%s: wiersze z wartością innego typu niż podany: %d");
constexpr const char* kOtherKind =
    platform::Translatable("%s: wiersze nieznanego rodzaju danych: %d");
constexpr const char* kOtherCount =
    platform::Translatable("%s: wiersze z inną liczbą wartości niż w tabeli history: %d");
constexpr const char* kOtherTime = platform::Translatable("%s: wiersze z czasem spoza zakresu: %d");

#define KALVEX_NO_VARIABLE "variable NOT IN (SELECT id FROM variables)"
#define KALVEX_NO_WRITER "writer <> 0 AND writer NOT IN (SELECT id FROM writers)"
#define KALVEX_OTHER_TYPE                                            \
    "CASE WHEN type = 190 THEN typeof(value) <> 'text' "             \
    "WHEN type = 171 THEN typeof(value) NOT IN ('real', 'null') "    \
    "WHEN type BETWEEN 120 AND 161 THEN typeof(value) <> 'integer' " \
    "ELSE type <> 255 OR value IS NOT NULL END OR status NOT BETWEEN 0 AND 65535"
#define KALVEX_OTHER_KIND "kind NOT BETWEEN 2 AND 6"
#define KALVEX_OTHER_TIME "time NOT BETWEEN 0 AND 32503676399"

// Rows of one table stand together.
constexpr RowRule kRules[] = {
    {"last_values", KALVEX_NO_VARIABLE, kNoVariable},
    {"last_values", KALVEX_NO_WRITER, kNoWriter},
    {"last_values", KALVEX_OTHER_TYPE, kOtherType},
    {"history", KALVEX_NO_VARIABLE, kNoVariable},
    {"history", KALVEX_NO_WRITER, kNoWriter},
    {"history", KALVEX_OTHER_TYPE, kOtherType},
    {"history", KALVEX_OTHER_KIND, kOtherKind},
    {"history", KALVEX_OTHER_TIME, kOtherTime},
    {"versions", KALVEX_NO_VARIABLE, kNoVariable},
    {"versions", KALVEX_NO_WRITER, kNoWriter},
    {"versions", KALVEX_OTHER_TYPE, kOtherType},
    {"versions",
     "NOT EXISTS (SELECT 1 FROM history AS h WHERE h.variable = r.variable AND h.kind = r.kind "
     "AND h.time = r.time)",
     kNoValue},
    {"alarms", KALVEX_NO_VARIABLE, kNoVariable},
    {"alarms", "who <> 0 AND who NOT IN (SELECT id FROM writers)", kNoWriter},
    {"late", KALVEX_NO_VARIABLE, kNoVariable},
    {"late", "kind NOT BETWEEN 2 AND 4", kOtherKind},
    {"rollups", KALVEX_NO_VARIABLE, kNoVariable},
    {"rollups",
     "span = 3600 AND NOT EXISTS (SELECT 1 FROM rollup_marks AS m WHERE m.hour = r.time "
     "AND m.variable = r.variable) AND count <> (SELECT count(*) FROM history AS h "
     "WHERE h.variable = r.variable AND h.kind = 6 AND h.time BETWEEN r.time AND r.time + 3599)",
     kOtherCount},
    {"rollup_marks", KALVEX_NO_VARIABLE, kNoVariable},
};

// Of a row, with what the file puts around it.
#define KALVEX_BYTES                                                                          \
    "total(28 + CASE typeof(value) WHEN 'text' THEN length(CAST(value AS BLOB)) WHEN 'real' " \
    "THEN 8 WHEN 'integer' THEN 4 ELSE 0 END)"

constexpr const char* kHistoryShare =
    "SELECT kind = 6, count(*), " KALVEX_BYTES " FROM history WHERE variable = ? GROUP BY 1";
constexpr const char* kVersionsShare =
    "SELECT 0, count(*), " KALVEX_BYTES " FROM versions WHERE variable = ?";
constexpr const char* kTimes =
    "SELECT time FROM history WHERE variable = ? AND kind = 6 AND time > ? ORDER BY time LIMIT ?";

}  // namespace

bool StoreCheck::Open(const std::string& path, platform::Notice& error) {
    // The same words for what is no store of this version.
    StoreReader reader;
    if (!reader.Open(path, error)) return false;
    if (m_database.OpenExisting(path)) return true;
    error = {"%s: %s", {path, m_database.ErrorText()}};
    return false;
}

bool StoreCheck::Prepare(platform::SqliteStatement& statement, const char* sql) {
    if (statement.Prepare(m_database, sql)) return true;
    m_failure = m_database.ErrorText();
    return false;
}

void StoreCheck::Note(const platform::SqliteStatement& statement) {
    if (statement.Failed()) m_failure = m_database.ErrorText();
}

std::vector<platform::Notice> StoreCheck::Faults() {
    std::vector<platform::Notice> faults;
    CheckPages(faults);
    // What follows could tell nothing new of a file whose pages are damaged.
    if (faults.empty()) CheckRows(faults);
    return faults;
}

void StoreCheck::CheckPages(std::vector<platform::Notice>& faults) {
    platform::SqliteStatement check;
    const bool prepared = check.Prepare(m_database, "PRAGMA integrity_check(100)");
    while (prepared && check.Next()) {
        std::istringstream lines(text::ToUtf8(check.Text(0)));
        for (std::string line; std::getline(lines, line);) {
            // Three stars are around a line that names the database.
            if (line != "ok" && !line.starts_with("***")) faults.push_back({"%s", {line}});
        }
    }
    const bool failed = !prepared || check.Failed();
    if (failed && faults.empty()) faults.push_back({"%s", {m_database.ErrorText()}});
}

void StoreCheck::CheckRows(std::vector<platform::Notice>& faults) {
    for (const auto* rule = std::begin(kRules); rule != std::end(kRules);) {
        const std::string table = rule->table;
        const auto* const end = std::find_if(
            rule, std::end(kRules), [&](const RowRule& other) { return other.table != table; });
        std::string sql = "SELECT 0";
        for (const auto* one = rule; one != end; ++one) {
            sql += ", total(" + std::string(one->condition) + ")";
        }
        platform::SqliteStatement select;
        const bool prepared =
            select.Prepare(m_database, (sql + " FROM " + table + " AS r").c_str());
        const bool read = prepared && select.Next();
        if (!read) faults.push_back({"%s", {m_database.ErrorText()}});
        for (int column = 1; rule != end; ++rule, ++column) {
            const std::int64_t rows = read ? select.Integer(column) : 0;
            if (rows > 0) faults.push_back({rule->text, {table, std::to_string(rows)}});
        }
    }
}

std::map<std::string, VariableId> StoreCheck::Variables() {
    std::map<std::string, VariableId> variables;
    platform::SqliteStatement select;
    if (!Prepare(select, "SELECT id, name FROM variables") || !Prepare(m_history, kHistoryShare) ||
        !Prepare(m_versions, kVersionsShare) || !Prepare(m_times, kTimes)) {
        return variables;
    }
    while (select.Next()) variables.emplace(select.Text(1), select.Integer(0));
    Note(select);
    return variables;
}

void StoreCheck::Count(platform::SqliteStatement& statement, VariableId variable, bool ofHistory,
                       VariableShare& share) {
    statement.BindInteger(1, variable);
    while (statement.Next()) {
        std::int64_t& rows = !ofHistory                  ? share.versions
                             : statement.Integer(0) == 1 ? share.archive
                                                         : share.reports;
        rows += statement.Integer(1);
        share.bytes += statement.Integer(2);
    }
    Note(statement);
    statement.Reset();
}

void StoreCheck::FindGaps(VariableId variable, std::int64_t period, VariableShare& share) {
    std::optional<std::int64_t> last;
    for (bool more = true; more;) {
        m_times.BindInteger(1, variable);
        m_times.BindInteger(2, last.value_or(-1));
        m_times.BindInteger(3, kTimesOfAPiece);
        std::int64_t rows = 0;
        for (; m_times.Next(); ++rows) {
            const std::int64_t time = m_times.Integer(0);
            const std::int64_t apart = time - last.value_or(time);
            if (apart > period + period / 2) {
                ++share.gaps;
                if (apart > share.longest.end - share.longest.begin) share.longest = {*last, time};
            }
            last = time;
        }
        Note(m_times);
        more = rows == kTimesOfAPiece;
        m_times.Reset();
    }
}

VariableShare StoreCheck::ShareOf(VariableId variable, std::optional<std::int64_t> period) {
    VariableShare share;
    Count(m_history, variable, true, share);
    Count(m_versions, variable, false, share);
    if (period) FindGaps(variable, *period, share);
    return share;
}

}  // namespace kalvex::server
