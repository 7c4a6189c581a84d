// The store's file seen by one thread: its tables, and what each operation does to them. The tables
// are described in docs/data-server.md.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "platform/Sqlite.h"
#include "platform/Translator.h"
#include "server/AnswerTable.h"
#include "server/ReportChangeTable.h"
#include "server/ReportComputing.h"
#include "value/LocalTime.h"
#include "value/Status.h"
#include "value/Value.h"
#include "vantrel/Messages.h"

namespace kalvex::server {

using VariableId = std::int64_t;

// What is there where there is no value.
value::CVal NoValue();

// ---- operations

struct SaveName {
    VariableId variable = 0;
    std::string name;
};

struct SaveLastValue {
    VariableId variable = 0;
    value::CVal value;
};

// A report or archive value at its time.
struct PutValue {
    VariableId variable = 0;
    value::ValueKind kind = value::KindNone;
    std::int64_t time = 0;
    value::CVal value;
};

// Init, Load or Calculate of an hour, day or month report; Init of a span report.
struct MakeReport {
    vantrel::PeriodAction action = vantrel::PeriodAction::Init;
    VariableId variable = 0;
    value::ValueKind kind = value::KindNone;
    std::int64_t time = 0;  // the report's name
    ReportRule rule = ReportRule::Mean;
    int dayStart = 0;
    std::int64_t now = value::kLargestTime;  // from here on nothing is known
};

// An unknown archive value at the time, or behind the last value up to `until`, unless there is
// none before or the last one is unknown already.
struct MarkGap {
    VariableId variable = 0;
    std::int64_t time = 0;
    std::int64_t until = 0;
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
                                    RemoveArchive, SaveProgress, SaveAnswer, DropAnswers>;

// Reports that operations have changed, by kind and time, with their sequences. One that comes out
// as it stood is not among them.
using ChangedReports = std::map<std::pair<value::ValueKind, std::int64_t>, std::uint64_t>;

// What goes into one transaction: names first, then the parts in their order.
struct StoreBatch {
    std::vector<SaveName> names;
    std::vector<std::span<const StoreOperation>> parts;
};

// ---- what is read

// A piece ends with the value with which its texts have so many bytes.
inline constexpr std::size_t kTextsOfAPiece = std::size_t{4} << 20;

struct StoreQuery {
    VariableId variable = 0;
    value::ValueKind kind = value::KindNone;
    std::int64_t from = 0;  // bounds included
    std::int64_t to = 0;
    std::int64_t limit = 0;  // values in this piece at most
    std::size_t texts = kTextsOfAPiece;
};

struct StorePiece {
    bool read = false;
    std::vector<value::CVal> values;  // ascending by time
    bool more = false;                // further values follow behind the last one
};

// ---- the file

class StoreFile {
  public:
    struct Contents {
        std::map<std::string, VariableId> variables;
        std::map<VariableId, value::CVal> lastValues;
        std::map<std::string, std::int64_t> progress;
        std::vector<NumberedChange> reportChanges;  // ascending
        std::vector<SaveAnswer> answers;            // by their numbers
    };

    // Makes the file and its tables if they are not there. One of an older version becomes one of
    // this version, and stays as it was in a copy beside it, such as "store.sqlite.v1".
    bool Open(const std::string& path, platform::Notice& error);
    bool ReadContents(Contents& contents);

    // A lock that another connection holds is from now on a failure at once.
    bool FailAtLocks();

    // In one transaction, with the reports that each part has changed. False, and nothing is
    // written, when the file fails; the reason is an engine text.
    bool Write(const StoreBatch& batch, std::vector<ChangedReports>& changed, std::string& error);

    StorePiece ReadRange(const StoreQuery& query);

    std::string ErrorText() const;  // an engine text

  private:
    bool PrepareAll();
    bool Apply(const StoreBatch& batch, std::vector<ChangedReports>& changed);
    bool Number(ChangedReports& changed);
    bool Run(const SaveName& operation, ChangedReports& changed);
    bool Run(const SaveLastValue& operation, ChangedReports& changed);
    bool Run(const PutValue& operation, ChangedReports& changed);
    bool Run(const MakeReport& operation, ChangedReports& changed);
    bool Run(const MarkGap& operation, ChangedReports& changed);
    bool Run(const RemoveArchive& operation, ChangedReports& changed);
    bool Run(const SaveProgress& operation, ChangedReports& changed);
    bool Run(const SaveAnswer& operation, ChangedReports& changed);
    bool Run(const DropAnswers& operation, ChangedReports& changed);
    bool Put(VariableId variable, value::ValueKind kind, std::int64_t time,
             const value::CVal& value);
    bool PutReport(VariableId variable, value::ValueKind kind, std::int64_t time,
                   const std::optional<value::CVal>& standing, const value::CVal& value,
                   ChangedReports& changed);
    bool ReadOne(platform::SqliteStatement& statement, std::optional<value::CVal>& value);
    bool ReadReport(VariableId variable, value::ValueKind kind, std::int64_t time,
                    std::optional<value::CVal>& value);
    bool Compute(const MakeReport& operation, value::CVal& result);
    bool ComputeHour(const MakeReport& operation, value::CVal& result);
    bool ComputeFromParts(const MakeReport& operation, value::CVal& result);

    platform::SqliteDatabase m_database;
    platform::SqliteStatement m_putName;
    platform::SqliteStatement m_putLastValue;
    platform::SqliteStatement m_putProgress;
    platform::SqliteStatement m_put;
    platform::SqliteStatement m_get;
    platform::SqliteStatement m_getRange;
    platform::SqliteStatement m_getBefore;
    platform::SqliteStatement m_getKnownBefore;
    platform::SqliteStatement m_remove;
    ReportChangeTable m_reportChanges;
    AnswerTable m_answers;
};

}  // namespace kalvex::server
