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
#include "server/AlarmTable.h"
#include "server/AnswerTable.h"
#include "server/HistoryTable.h"
#include "server/LateTable.h"
#include "server/ReportChangeTable.h"
#include "server/ReportComputing.h"
#include "server/RollupTable.h"
#include "server/StoreValues.h"
#include "value/LocalTime.h"
#include "value/Status.h"
#include "value/Value.h"
#include "vantrel/Messages.h"

namespace kalvex::server {

// ---- operations

struct SaveName {
    VariableId variable = 0;
    std::string name;
};

// What stood there before a client's value is kept with it.
struct SaveLastValue {
    VariableId variable = 0;
    value::CVal value;
    Origin origin = {};
};

// A report or archive value at its time.
struct PutValue {
    VariableId variable = 0;
    value::ValueKind kind = value::KindNone;
    std::int64_t time = 0;
    value::CVal value;
    Origin origin = {};
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
    Origin origin = {};
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

// Reports of all kinds before the time with their versions, the oldest thousand of each kind at
// most.
struct RemoveReports {
    VariableId variable = 0;
    std::int64_t before = 0;
};

struct SaveProgress {
    std::string what;
    std::int64_t time = 0;
};

// Computes reports that are marked as late anew, so many at most. What changes marks the report
// above it. A report that is not there, or was never computed, is left to who will compute it.
struct ComputeLate {
    std::int64_t now = value::kLargestTime;
    std::size_t most = 0;
    Origin origin = {};
};

using StoreOperation =
    std::variant<SaveName, SaveLastValue, PutValue, MakeReport, MarkGap, RemoveArchive,
                 RemoveReports, SaveProgress, SaveAnswer, DropAnswers, MarkLate, ComputeLate,
                 RollUp, BeginAlarm, EndAlarm, AcknowledgeAlarms, RemoveAlarms>;

// Reports that operations have changed, by kind and time, with their sequences. One that comes out
// as it stood is not among them.
using ChangedReports = std::map<std::pair<value::ValueKind, std::int64_t>, std::uint64_t>;

struct StoreOutcome {
    ChangedReports changed;
    std::vector<HistoryKey> kept;  // late reports that stay as a person has written them
    bool lateLeft = false;         // further reports are marked as late
    bool hoursLeft = false;        // hours of archives that have ended are left to be rolled up
    // The oldest one that is to be rolled up from now on; kNoHour: none.
    std::int64_t marked = kNoHour;
};

// A number that is given to a variable or a writer.
using StoreName = std::variant<SaveName, SaveWriter>;

// What goes into one transaction: names first, then the parts in their order.
struct StoreBatch {
    std::vector<StoreName> names;
    std::vector<std::span<const StoreOperation>> parts;
};

// ---- the file

// Its PRAGMA user_version.
inline constexpr std::int64_t kStoreVersion = 3;

class StoreFile {
  public:
    struct Contents {
        std::map<std::string, VariableId> variables;
        std::map<Writer, WriterId> writers;
        std::map<VariableId, value::CVal> lastValues;
        std::map<std::string, std::int64_t> progress;
        std::vector<NumberedChange> reportChanges;  // ascending
        std::vector<SaveAnswer> answers;            // by their numbers
        KeptAlarms alarms;
    };

    // Makes the file and its tables if they are not there. One of an older version becomes one of
    // this version, and stays as it was in a copy beside it, such as "store.sqlite.v1".
    bool Open(const std::string& path, platform::Notice& error);
    bool ReadContents(Contents& contents);

    // A lock that another connection holds is from now on a failure at once.
    bool FailAtLocks();

    // In one transaction, with what has come of each part. False, and nothing is written, when the
    // file fails; the reason is an engine text.
    bool Write(const StoreBatch& batch, std::vector<StoreOutcome>& outcomes, std::string& error);

    StorePiece ReadRange(const StoreQuery& query);

    std::string ErrorText() const;  // an engine text

  private:
    bool PrepareAll();
    bool Apply(const StoreBatch& batch, std::vector<StoreOutcome>& outcomes);
    bool Number(ChangedReports& changed);
    bool Run(const SaveName& operation, StoreOutcome& outcome);
    bool Run(const SaveWriter& operation, StoreOutcome& outcome);
    bool Run(const SaveLastValue& operation, StoreOutcome& outcome);
    bool Run(const PutValue& operation, StoreOutcome& outcome);
    bool Run(const MakeReport& operation, StoreOutcome& outcome);
    bool Run(const MarkGap& operation, StoreOutcome& outcome);
    bool Run(const RemoveArchive& operation, StoreOutcome& outcome);
    bool Run(const RemoveReports& operation, StoreOutcome& outcome);
    bool Run(const SaveProgress& operation, StoreOutcome& outcome);
    bool Run(const SaveAnswer& operation, StoreOutcome& outcome);
    bool Run(const DropAnswers& operation, StoreOutcome& outcome);
    bool Run(const MarkLate& operation, StoreOutcome& outcome);
    bool Run(const ComputeLate& operation, StoreOutcome& outcome);
    bool Run(const BeginAlarm& operation, StoreOutcome&) { return m_alarms.Run(operation); }
    bool Run(const EndAlarm& operation, StoreOutcome&) { return m_alarms.Run(operation); }
    bool Run(const AcknowledgeAlarms& operation, StoreOutcome&) { return m_alarms.Run(operation); }
    bool Run(const RemoveAlarms& operation, StoreOutcome&) { return m_alarms.Run(operation); }
    bool Run(const RollUp& operation, StoreOutcome& outcome);
    bool PutArchive(const HistoryKey& key, const value::CVal& value, const Origin& origin,
                    StoreOutcome& outcome);
    bool PutReport(const HistoryKey& key, const std::optional<value::CVal>& standing,
                   const value::CVal& value, const Origin& origin, ChangedReports& changed);
    bool Compute(const MakeReport& operation, value::CVal& result);
    bool ComputeHour(const MakeReport& operation, value::CVal& result);
    bool ComputeFromParts(const MakeReport& operation, value::CVal& result);
    bool ComputeMarked(const MarkLate& mark, const ComputeLate& order, StoreOutcome& outcome);
    bool MarkAbove(const MarkLate& mark);
    bool MarkNext(const MarkLate& hour);

    platform::SqliteDatabase m_database;
    platform::SqliteStatement m_putName;
    platform::SqliteStatement m_putLastValue;
    platform::SqliteStatement m_putProgress;
    HistoryTable m_history;
    LateTable m_late;
    RollupTable m_rollups;
    ReportChangeTable m_reportChanges;
    AnswerTable m_answers;
    AlarmTable m_alarms;
};

}  // namespace kalvex::server
