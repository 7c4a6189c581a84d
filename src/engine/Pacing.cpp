// Pacing and engine control: what acts on the run itself rather than on data. WAITFOR has a file of
// its own.
#include <array>

#include "engine/ScriptDocument.h"
#include "engine/StatementFamilies.h"
#include "operands/Keywords.h"
#include "operands/OperandEvaluator.h"
#include "operands/TimeText.h"
#include "text/LineScanner.h"
#include "value/LocalTime.h"
#include "value/ValueText.h"

namespace kalvex::engine {

namespace {

LineOutcome SetAllLocked(CKalvexDoc& document, bool locked) {
    for (const auto& variable : document.Variables()) variable->SetLocked(locked);
    return LineOutcome::Finished;
}

}  // namespace

void CKalvexDoc::IgnoreUnknown(bool ignore) {
    m_bIgnoreUnknown = ignore;
    for (const auto& variable : Variables()) variable->SetIgnoreUnknown(ignore);
}

void CKalvexDoc::SetPriority(int ticks) {
    m_nPriority = ticks;
    // The extra steps of the top speed follow in this same tick, and have lines to run.
    if (ticks == 1) m_nPaceCounter = 0;
}

LineOutcome CKalvexDoc::Sleep(std::int64_t seconds) {
    const std::int64_t now = Services().clock.Now();
    if (m_tSleepUntil == 0) m_tSleepUntil = now + seconds;
    if (m_tSleepUntil > now) return LineOutcome::Stays;
    m_tSleepUntil = 0;
    return LineOutcome::Finished;
}

LineOutcome ExecuteLock(StatementCall& call) {
    return SetAllLocked(call.document, true);
}

LineOutcome ExecuteUnlock(StatementCall& call) {
    return SetAllLocked(call.document, false);
}

LineOutcome ExecuteIgnoreUnknownOn(StatementCall& call) {
    call.document.IgnoreUnknown(true);
    return LineOutcome::Finished;
}

LineOutcome ExecuteIgnoreUnknownOff(StatementCall& call) {
    call.document.IgnoreUnknown(false);
    return LineOutcome::Finished;
}

LineOutcome ExecutePriority(StatementCall& call) {
    CKalvexDoc& document = call.document;
    value::CVal value;
    if (!operands::EvaluateOperand(document, text::NextToken(call.rest), value,
                                   value::ValueType::Int, true)) {
        return LineOutcome::Failed;
    }
    const int priority = value::ValueToInt(value);
    if (priority > 0) document.SetPriority(priority);
    return LineOutcome::Finished;
}

LineOutcome ExecuteSleep(StatementCall& call) {
    CKalvexDoc& document = call.document;
    const std::string_view written = text::NextToken(call.rest);
    operands::SleepTime span;
    if (!operands::ParseSleepTime(document, written, span)) return LineOutcome::Failed;
    const LineOutcome outcome = document.Sleep(std::int64_t{span.hours} * 3600 +
                                               std::int64_t{span.minutes} * 60 + span.seconds);
    const std::int64_t until = document.State().m_tSleepUntil;
    // The next try would begin a sleep anew.
    if (outcome != LineOutcome::Stays || until == 0) return outcome;
    const bool named = document.Variables().Find(operands::BaseName(written)) != nullptr;
    document.Promise(
        {.until = until, .data = named ? document.DataCount() : LinePromise::kAnyData});
    return outcome;
}

LineOutcome ExecuteSetTime(StatementCall& call) {
    std::array<std::string_view, 6> tokens;
    for (std::string_view& token : tokens) token = text::NextToken(call.rest);
    std::array<int, 6> fields{};
    for (std::size_t i = 0; i < tokens.size(); ++i) {
        value::CVal value;
        if (!operands::EvaluateOperand(call.document, tokens[i], value, value::ValueType::Int,
                                       true)) {
            return LineOutcome::Failed;
        }
        fields[i] = value::ValueToInt(value);
    }
    const auto [year, month, day, hour, minute, second] = fields;
    const std::int64_t time = value::MakeLocalTime({.year = year,
                                                    .month = month,
                                                    .day = day,
                                                    .hour = hour,
                                                    .minute = minute,
                                                    .second = second});
    // A time before 1970 has no fields, so there is nothing to set. Whether the system lets the
    // clock be set is no concern of the script.
    if (time >= 0) call.document.Services().clock.SetSystemTime(time);
    return LineOutcome::Finished;
}

LineOutcome ExecuteSubscribe(StatementCall& call) {
    ScriptSources* const sources = call.document.Services().sources;
    const std::string_view word = text::NextToken(call.rest);
    if (word == operands::Keyword::Stop) {
        if (sources != nullptr) sources->BlockSubscribe();
    } else if (word == operands::Keyword::Start) {
        if (sources != nullptr) sources->UnblockSubscribe(false);
    } else {
        return call.document.Fail(operands::ErrorUnknownKeyword, word);
    }
    return LineOutcome::Finished;
}

}  // namespace kalvex::engine
