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

namespace kalvex {

namespace {

// A first token shorter than this is a year and no time.
constexpr std::size_t kTimeLength = 5;

// At which parameters a lone "-" is a sign; the first has bit 0.
struct SignRow {
    ValueKind kind;
    unsigned get;
    unsigned put;
    unsigned init;
};

constexpr SignRow kSigns[] = {
    {KindHour, 0b010010, 0b100110, 0b010000},
    {KindDay, 0b001010, 0b010110, 0b001000},
    {KindMonth, 0b000110, 0b001110, 0b000100},
    {KindSpan, 0b000010, 0b000010, 0b000010},
    {KindArchive, 0, 0, 0b010000},
};

const SignRow& SignsOf(ValueKind kind) {
    return *std::find_if(std::begin(kSigns), std::end(kSigns),
                         [kind](const SignRow& row) { return row.kind == kind; });
}

CVariable* TakeVariable(StatementCall& call, std::string_view& name) {
    name = NextToken(call.rest);
    return call.document.FindNamed(name);
}

// Where a statement's parameters lead: the time of the report, and where its value stands.
struct Period {
    std::int64_t time = 0;
    bool shortForm = false;  // a time in one token, not a date in parts
    int next = 0;            // index of the token behind the time
};

bool IsShortForm(CKalvexDoc& document, const ReportTokens& tokens, ValueKind kind, int values,
                 bool& shortForm) {
    shortForm = tokens[2 + values].empty();
    if (kind != KindMonth) return true;
    std::int32_t first = 0;
    if (!ReadInteger(document, tokens[0], first)) return FailParameters(document);
    const std::size_t yearLength = kTimeLength - 1 + static_cast<std::size_t>(values);
    shortForm = shortForm && std::to_string(first).size() > yearLength;
    return shortForm || !tokens[1].empty() || FailParameters(document);
}

// `values` is the number of values among the parameters: 0 for GET, 1 for PUT.
bool LocatePeriod(CKalvexDoc& document, const ReportTokens& tokens, ValueKind kind, int values,
                  Period& period) {
    if (kind == KindSpan) {
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
bool ReadNamedValue(CKalvexDoc& document, CVariable& variable, std::string_view name, CVal& value) {
    if (EvaluateOperand(document, name, value, variable.GetValueType(KindCurrent, 1), true)) {
        return true;
    }
    return document.Fail(ErrorBadVariableName, name);
}

// A text whose first and last character are taken for its quotes.
std::string WithoutQuotes(const std::string& token) {
    return token.size() < 2 ? std::string() : token.substr(1, token.size() - 2);
}

}  // namespace

LineOutcome ExecuteGet(StatementCall& call) {
    CKalvexDoc& document = call.document;
    std::string_view name;
    CVariable* variable = TakeVariable(call, name);
    if (variable == nullptr) return LineOutcome::Failed;
    const std::string_view word = NextToken(call.rest);
    if (word.empty()) {
        CVal value;
        if (ReadNamedValue(document, *variable, name, value)) {
            variable->RequestRange(GetValueKind(name), value.GetTime(), value.GetTime());
        }
        return LineOutcome::Finished;
    }
    const ValueKind kind = KindFromWord(word);
    if (kind == KindCurrent) return LineOutcome::Finished;
    if (!IsReport(kind)) return document.Fail(ErrorUnknownKeyword, word);
    const ReportTokens tokens(call.rest, SignsOf(kind).get);
    Period period;
    if (!LocatePeriod(document, tokens, kind, 0, period)) return LineOutcome::Failed;
    variable->RequestRange(kind, period.time, period.time);
    return LineOutcome::Finished;
}

LineOutcome ExecutePut(StatementCall& call) {
    CKalvexDoc& document = call.document;
    std::string_view name;
    CVariable* variable = TakeVariable(call, name);
    if (variable == nullptr) return LineOutcome::Failed;
    const std::string_view word = NextToken(call.rest);
    CVal value;
    if (word.empty()) {
        if (ReadNamedValue(document, *variable, name, value)) {
            variable->PutValue(GetValueKind(name), value.GetTime(), value, true);
        }
        return LineOutcome::Finished;
    }
    const ValueKind kind = KindFromWord(word);
    if (kind == KindCurrent) return LineOutcome::Finished;
    if (!IsReport(kind)) return document.Fail(ErrorUnknownKeyword, word);
    const ReportTokens tokens(call.rest, SignsOf(kind).put);
    Period period;
    if (!LocatePeriod(document, tokens, kind, 1, period)) return LineOutcome::Failed;
    const std::string& text = tokens[period.next];
    if (text.empty()) return FailParameters(document);
    if (EvaluateOperand(document, text, value, variable->GetValueType(KindCurrent, 1), true)) {
        variable->PutValue(kind, period.time, value, true);
    } else if (kind != KindHour) {
        variable->PutValue(kind, period.time, CVal(WithoutQuotes(text)), true);
    } else if (period.shortForm) {
        document.SetError(ErrorBadVariableName, text, false);
    }
    return LineOutcome::Finished;
}

// ---- the server's own work

namespace {

using PeriodOperation = int (CVariable::*)(ValueKind kind, std::int64_t time);

// What a data type in the statement asks for; KindNone asks for nothing.
struct WorkRow {
    ValueKind kind;
    ValueKind asked;
};

// The archive's midnight counts to the day that ends there.
bool ReadArchiveTime(CKalvexDoc& document, const ReportTokens& tokens, std::int64_t& time) {
    time = 0;
    if (!tokens[0].empty()) {
        if (!BuildDate(document, tokens, KindHour, time)) return false;
        ShiftByToken(document, tokens[CountDateParts(KindHour)], KindHour, time);
    }
    if (GetLocalHour(time) == 0) --time;
    return true;
}

bool ReadWorkTime(CKalvexDoc& document, const ReportTokens& tokens, ValueKind kind,
                  std::int64_t& time) {
    if (kind == KindArchive) return ReadArchiveTime(document, tokens, time);
    if (!BuildDate(document, tokens, kind, time)) return false;
    const std::string& next = tokens[CountDateParts(kind)];
    if (kind == KindSpan) return ChooseSpan(document, next, time);
    ShiftByToken(document, next, kind, time);
    return true;
}

LineOutcome AskForWork(StatementCall& call, std::span<const WorkRow> rows,
                       PeriodOperation operation) {
    std::string_view name;
    CVariable* variable = TakeVariable(call, name);
    if (variable == nullptr) return LineOutcome::Failed;
    const std::string_view word = NextToken(call.rest);
    const ValueKind kind = KindFromWord(word);
    const auto row = std::find_if(rows.begin(), rows.end(),
                                  [kind](const WorkRow& work) { return work.kind == kind; });
    if (row == rows.end()) return call.document.Fail(ErrorUnknownKeyword, word);
    if (row->asked == KindNone) return LineOutcome::Finished;
    const ReportTokens tokens(call.rest, SignsOf(kind).init);
    std::int64_t time = 0;
    if (!ReadWorkTime(call.document, tokens, kind, time)) return LineOutcome::Failed;
    (variable->*operation)(row->asked, time);
    return LineOutcome::Finished;
}

constexpr WorkRow kReports[] = {
    {KindHour, KindHour}, {KindDay, KindDay}, {KindMonth, KindMonth}, {KindSpan, KindSpan}};
constexpr WorkRow kReportsAndArchive[] = {{KindHour, KindHour},
                                          {KindDay, KindDay},
                                          {KindMonth, KindMonth},
                                          {KindSpan, KindSpan},
                                          {KindArchive, KindArchive}};
constexpr WorkRow kArchive[] = {{KindArchive, KindArchive}};
// The servers expect a span's calculation under the month's request, and none for a month.
constexpr WorkRow kCalculations[] = {
    {KindHour, KindHour}, {KindDay, KindDay}, {KindMonth, KindNone}, {KindSpan, KindMonth}};

}  // namespace

LineOutcome ExecuteInit(StatementCall& call) {
    return AskForWork(call, kReports, &CVariable::InitReport);
}

LineOutcome ExecuteInitLoad(StatementCall& call) {
    return AskForWork(call, kReportsAndArchive, &CVariable::InitLoad);
}

LineOutcome ExecuteInitLoadRefresh(StatementCall& call) {
    return AskForWork(call, kArchive, &CVariable::InitLoadRefresh);
}

LineOutcome ExecuteInitCalc(StatementCall& call) {
    return AskForWork(call, kCalculations, &CVariable::InitCalc);
}

}  // namespace kalvex
