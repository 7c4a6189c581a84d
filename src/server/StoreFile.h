// The store's file seen by one thread: its tables, and what each operation does to them. The tables
// are described in docs/data-server.md.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "platform/Sqlite.h"
#include "platform/Translator.h"
#include "server/ReportComputing.h"
#include "value/LocalTime.h"
#include "value/Status.h"
#include "value/Value.h"
#include "vantrel/Messages.h"

namespace kalvex {

using VariableId = std::int64_t;

// ---- operations

struct SaveName {
    VariableId variable = 0;
    std::string name;
};

struct SaveLastValue {
    VariableId variable = 0;
    CVal value;
};

// A report or archive value at its time.
struct PutValue {
    VariableId variable = 0;
    ValueKind kind = KindNone;
    std::int64_t time = 0;
    CVal value;
};

// Init, Load or Calculate of an hour, day or month report; Init of a span report.
struct MakeReport {
    PeriodAction action = PeriodAction::Init;
    VariableId variable = 0;
    ValueKind kind = KindNone;
    std::int64_t time = 0;  // the report's name
    ReportRule rule = ReportRule::Mean;
    int dayStart = 0;
    std::int64_t now = kLargestTime;  // from here on nothing is known
};

// An unknown archive value, unless there is none before or the last one is unknown already.
struct MarkGap {
    VariableId variable = 0;
    std::int64_t time = 0;
};

// Archive values before the time, the oldest ten thousand at most. The last value at or before it
// stays, as it stands until the next one.
struct RemoveArchive {
    VariableId variable = 0;
    std::int64_t before = 0;
};

struct SaveProgress {
    std::string what;
    std::int64_t time = 0;
};

using StoreOperation = std::variant<SaveName, SaveLastValue, PutValue, MakeReport, MarkGap,
                                    RemoveArchive, SaveProgress>;

// Reports that operations have changed: kind and time, each once. One that comes out as it stood
// is not among them.
using ChangedReports = std::set<std::pair<ValueKind, std::int64_t>>;

// ---- the file

class StoreFile {
  public:
    struct Contents {
        std::map<std::string, VariableId> variables;
        std::map<VariableId, CVal> lastValues;
        std::map<std::string, std::int64_t> progress;
    };

    // Makes the file and its tables if they are not there.
    bool Open(const std::string& path, Notice& error);
    bool ReadContents(Contents& contents);

    // Within a transaction of the caller's. False when the file fails.
    bool Apply(const StoreOperation& operation, ChangedReports& changed);

    // The values from `from` to `to`, bounds included, ascending, `limit` at most.
    bool ReadRange(VariableId variable, ValueKind kind, std::int64_t from, std::int64_t to,
                   std::int64_t limit, std::vector<CVal>& values);

    SqliteDatabase& Database() { return m_database; }
    std::string ErrorText() const;  // an engine text

  private:
    bool PrepareAll();
    bool Run(const SaveName& operation, ChangedReports& changed);
    bool Run(const SaveLastValue& operation, ChangedReports& changed);
    bool Run(const PutValue& operation, ChangedReports& changed);
    bool Run(const MakeReport& operation, ChangedReports& changed);
    bool Run(const MarkGap& operation, ChangedReports& changed);
    bool Run(const RemoveArchive& operation, ChangedReports& changed);
    bool Run(const SaveProgress& operation, ChangedReports& changed);
    bool Put(VariableId variable, ValueKind kind, std::int64_t time, const CVal& value);
    bool PutReport(VariableId variable, ValueKind kind, std::int64_t time,
                   const std::optional<CVal>& standing, const CVal& value, ChangedReports& changed);
    bool ReadOne(SqliteStatement& statement, std::optional<CVal>& value);
    bool ReadReport(VariableId variable, ValueKind kind, std::int64_t time,
                    std::optional<CVal>& value);
    bool Compute(const MakeReport& operation, CVal& result);
    bool ComputeHour(const MakeReport& operation, CVal& result);
    bool ComputeFromParts(const MakeReport& operation, CVal& result);

    SqliteDatabase m_database;
    SqliteStatement m_putName;
    SqliteStatement m_putLastValue;
    SqliteStatement m_putProgress;
    SqliteStatement m_put;
    SqliteStatement m_get;
    SqliteStatement m_getRange;
    SqliteStatement m_getBefore;
    SqliteStatement m_getKnownBefore;
    SqliteStatement m_remove;
};

}  // namespace kalvex
