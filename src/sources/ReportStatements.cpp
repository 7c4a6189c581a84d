// GET, PUT, INIT, INIT_LOAD, INIT_LOAD_REFRESH and INIT_CALC. None of them waits: a request is
// made, and the answer lands in the report slot of the variable between ticks.
#include <algorithm>
#include <initializer_list>
#include <span>

#include "operands/OperandEvaluator.h"
#include "sources/ReportTime.h"
#include "sources/SourceFamilies.h"
#include "text/LineScanner.h"
#include "value/LocalTime.h"

namespace kalvex::sources {

namespace {

// A first token shorter than this is a year and no time.
constexpr std::size_t kTimeLength = 5;

// At which parameters a lone "-" is a sign; the first has bit 0.
struct SignRow {
    value::ValueKind kind;
    unsigned get;
    unsigned put;
    unsigned init;
};

constexpr SignRow kSigns[] = {
    {value::KindHour, 0b010010, 0b100110, 0b010000},
    {value::KindDay, 0b001010, 0b010110, 0b001000},
    {value::KindMonth, 0b000110, 0b001110, 0b000100},
    {value::KindSpan, 0b000010, 0b000010, 0b000010},
    {value::KindArchive, 0, 0, 0b010000},
};

const SignRow& SignsOf(value::ValueKind kind) {
    return *std::find_if(std::begin(kSigns), std::end(kSigns),
                         [kind](const SignRow& row) { return row.kind == kind; });
}

operands::CVariable* TakeVariable(engine::StatementCall& call, std::string_view& name) {
    name = text::NextToken(call.rest);
    return call.document.FindNamed(name);
}

// Where a statement's parameters lead: the time of the report, and where its value stands.
struct Period {
    std::int64_t time = 0;
    bool shortForm = false;  // a time in one token, not a date in parts
    int next = 0;            // index of the token behind the time
};

bool IsShortForm(engine::CKalvexDoc& document, const ReportTokens& tokens, value::ValueKind kind,
                 int values, bool& shortForm) {
    shortForm = tokens[2 + values].empty();
    if (kind != value::KindMonth) return true;
    std::int32_t first = 0;
    if (!ReadInteger(document, tokens[0], first)) return FailParameters(document);
    const std::size_t yearLength = kTimeLength - 1 + static_cast<std::size_t>(values);
    shortForm = shortForm && std::to_string(first).size() > yearLength;
    return shortForm || !tokens[1].empty() || FailParameters(document);
}

// `values` is the number of values among the parameters: 0 for GET, 1 for PUT.
bool LocatePeriod(engine::CKalvexDoc& document, const ReportTokens& tokens, value::ValueKind kind,
                  int values, Period& period) {
    if (kind == value::KindSpan) {
        const bool year = tokens[0].size() < kTimeLength;
        period.next = 2;
        return (year ? BuildDate(document, tokens, kind, period.time)
                     : ReadTime(document, tokens[0], period.time)) &&
               ChooseSpan(document, tokens[1], period.time);
    }
    if (!IsShortForm(document, tokens, kind, values, period.shortForm)) return false;
    period.next = period.shortForm ? 1 : CountDateParts(kind);
    const bool built = period.shortForm ? ReadTime(document, tokens[0], period.time)
                                        : BuildDate(document, tokens, kind, period.time);
    if (built) ShiftByToken(document, tokens[period.next + values], kind, period.time);
    return built;
}

// The value that a name with its suffix means; error 2 when it has none.
bool ReadNamedValue(engine::CKalvexDoc& document, operands::CVariable& variable,
                    std::string_view name, value::CVal& value) {
    if (operands::EvaluateOperand(document, name, value,
                                  variable.GetValueType(value::KindCurrent, 1), true)) {
        return true;
    }
    return document.Fail(operands::ErrorBadVariableName, name);
}

// A text whose first and last character are taken for its quotes.
std::string WithoutQuotes(const std::string& token) {
    return token.size() < 2 ? std::string() : token.substr(1, token.size() - 2);
}

}  // namespace

engine::LineOutcome ExecuteGet(engine::StatementCall& call) {
    engine::CKalvexDoc& document = call.document;
    std::string_view name;
    operands::CVariable* variable = TakeVariable(call, name);
    if (variable == nullptr) return engine::LineOutcome::Failed;
    const std::string_view word = text::NextToken(call.rest);
    if (word.empty()) {
        value::CVal value;
        if (ReadNamedValue(document, *variable, name, value)) {
            variable->RequestRange(value::GetValueKind(name), value.GetTime(), value.GetTime());
        }
        return engine::LineOutcome::Finished;
    }
    const value::ValueKind kind = value::KindFromWord(word);
    if (kind == value::KindCurrent) return engine::LineOutcome::Finished;
    if (!value::IsReport(kind)) return document.Fail(operands::ErrorUnknownKeyword, word);
    const ReportTokens tokens(call.rest, SignsOf(kind).get);
    Period period;
    if (!LocatePeriod(document, tokens, kind, 0, period)) return engine::LineOutcome::Failed;
    variable->RequestRange(kind, period.time, period.time);
    return engine::LineOutcome::Finished;
}

engine::LineOutcome ExecutePut(engine::StatementCall& call) {
    engine::CKalvexDoc& document = call.document;
    std::string_view name;
    operands::CVariable* variable = TakeVariable(call, name);
    if (variable == nullptr) return engine::LineOutcome::Failed;
    const std::string_view word = text::NextToken(call.rest);
    value::CVal value;
    if (word.empty()) {
        if (ReadNamedValue(document, *variable, name, value)) {
            variable->PutValue(value::GetValueKind(name), value.GetTime(), value, true);
        }
        return engine::LineOutcome::Finished;
    }
    const value::ValueKind kind = value::KindFromWord(word);
    if (kind == value::KindCurrent) return engine::LineOutcome::Finished;
    if (!value::IsReport(kind)) return document.Fail(operands::ErrorUnknownKeyword, word);
    const ReportTokens tokens(call.rest, SignsOf(kind).put);
    Period period;
    if (!LocatePeriod(document, tokens, kind, 1, period)) return engine::LineOutcome::Failed;
    const std::string& text = tokens[period.next];
    if (text.empty()) return FailParameters(document);
    if (operands::EvaluateOperand(document, text, value,
                                  variable->GetValueType(value::KindCurrent, 1), true)) {
        variable->PutValue(kind, period.time, value, true);
    } else if (kind != value::KindHour) {
        variable->PutValue(kind, period.time, value::CVal(WithoutQuotes(text)), true);
    } else if (period.shortForm) {
        document.SetError(operands::ErrorBadVariableName, text, false);
    }
    return engine::LineOutcome::Finished;
}

// ---- the server's own work

namespace {

using PeriodOperation = int (operands::CVariable::*)(value::ValueKind kind, std::int64_t time);

// What a data type in the statement asks for; KindNone asks for nothing.
struct WorkRow {
    value::ValueKind kind;
    value::ValueKind asked;
};

// The archive's midnight counts to the day that ends there.
bool ReadArchiveTime(engine::CKalvexDoc& document, const ReportTokens& tokens, std::int64_t& time) {
    time = 0;
    if (!tokens[0].empty()) {
        if (!BuildDate(document, tokens, value::KindHour, time)) return false;
        ShiftByToken(document, tokens[CountDateParts(value::KindHour)], value::KindHour, time);
    }
    if (value::GetLocalHour(time) == 0) --time;
    return true;
}

bool ReadWorkTime(engine::CKalvexDoc& document, const ReportTokens& tokens, value::ValueKind kind,
                  std::int64_t& time) {
    if (kind == value::KindArchive) return ReadArchiveTime(document, tokens, time);
    if (!BuildDate(document, tokens, kind, time)) return false;
    const std::string& next = tokens[CountDateParts(kind)];
    if (kind == value::KindSpan) return ChooseSpan(document, next, time);
    ShiftByToken(document, next, kind, time);
    return true;
}

engine::LineOutcome AskForWork(engine::StatementCall& call, std::span<const WorkRow> rows,
                               PeriodOperation operation) {
    std::string_view name;
    operands::CVariable* variable = TakeVariable(call, name);
    if (variable == nullptr) return engine::LineOutcome::Failed;
    const std::string_view word = text::NextToken(call.rest);
    const value::ValueKind kind = value::KindFromWord(word);
    const auto row = std::find_if(rows.begin(), rows.end(),
                                  [kind](const WorkRow& work) { return work.kind == kind; });
    if (row == rows.end()) return call.document.Fail(operands::ErrorUnknownKeyword, word);
    if (row->asked == value::KindNone) return engine::LineOutcome::Finished;
    const ReportTokens tokens(call.rest, SignsOf(kind).init);
    std::int64_t time = 0;
    if (!ReadWorkTime(call.document, tokens, kind, time)) return engine::LineOutcome::Failed;
    (variable->*operation)(row->asked, time);
    return engine::LineOutcome::Finished;
}

constexpr WorkRow kReports[] = {{value::KindHour, value::KindHour},
                                {value::KindDay, value::KindDay},
                                {value::KindMonth, value::KindMonth},
                                {value::KindSpan, value::KindSpan}};
constexpr WorkRow kReportsAndArchive[] = {{value::KindHour, value::KindHour},
                                          {value::KindDay, value::KindDay},
                                          {value::KindMonth, value::KindMonth},
                                          {value::KindSpan, value::KindSpan},
                                          {value::KindArchive, value::KindArchive}};
constexpr WorkRow kArchive[] = {{value::KindArchive, value::KindArchive}};
// The servers expect a span's calculation under the month's request, and none for a month.
constexpr WorkRow kCalculations[] = {{value::KindHour, value::KindHour},
                                     {value::KindDay, value::KindDay},
                                     {value::KindMonth, value::KindNone},
                                     {value::KindSpan, value::KindMonth}};

}  // namespace

engine::LineOutcome ExecuteInit(engine::StatementCall& call) {
    return AskForWork(call, kReports, &operands::CVariable::InitReport);
}

engine::LineOutcome ExecuteInitLoad(engine::StatementCall& call) {
    return AskForWork(call, kReportsAndArchive, &operands::CVariable::InitLoad);
}

engine::LineOutcome ExecuteInitLoadRefresh(engine::StatementCall& call) {
    return AskForWork(call, kArchive, &operands::CVariable::InitLoadRefresh);
}

engine::LineOutcome ExecuteInitCalc(engine::StatementCall& call) {
    return AskForWork(call, kCalculations, &operands::CVariable::InitCalc);
}

}  // namespace kalvex::sources
