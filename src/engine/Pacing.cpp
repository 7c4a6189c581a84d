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

namespace kalvex {

namespace {

bool SetAllLocked(CKalvexDoc& document, bool locked) {
    for (const auto& variable : document.Variables()) variable->SetLocked(locked);
    return true;
}

bool SetAllIgnoreUnknown(CKalvexDoc& document, bool ignore) {
    document.m_bIgnoreUnknown = ignore;
    for (const auto& variable : document.Variables()) variable->SetIgnoreUnknown(ignore);
    return true;
}

}  // namespace

bool ExecuteLock(StatementCall& call) {
    return SetAllLocked(call.document, true);
}

bool ExecuteUnlock(StatementCall& call) {
    return SetAllLocked(call.document, false);
}

bool ExecuteIgnoreUnknownOn(StatementCall& call) {
    return SetAllIgnoreUnknown(call.document, true);
}

bool ExecuteIgnoreUnknownOff(StatementCall& call) {
    return SetAllIgnoreUnknown(call.document, false);
}

bool ExecutePriority(StatementCall& call) {
    CKalvexDoc& document = call.document;
    CVal value;
    if (!EvaluateOperand(document, NextToken(call.rest), value, ValueType::Int, true)) return false;
    const int priority = ValueToInt(value);
    if (priority <= 0) return true;
    document.m_nPriority = priority;
    // The extra steps of the top speed follow in this same tick, and have lines to run.
    if (priority == 1) document.m_nPaceCounter = 0;
    return true;
}

bool ExecuteSleep(StatementCall& call) {
    CKalvexDoc& document = call.document;
    const std::int64_t now = document.Services().clock.Now();
    SleepTime span;
    if (!ParseSleepTime(document, NextToken(call.rest), span)) return false;
    if (document.m_tSleepUntil == 0) {
        document.m_tSleepUntil =
            now + std::int64_t{span.hours} * 3600 + std::int64_t{span.minutes} * 60 + span.seconds;
    }
    call.keepLine = document.m_tSleepUntil > now;
    if (!call.keepLine) document.m_tSleepUntil = 0;
    return true;
}

bool ExecuteSetTime(StatementCall& call) {
    std::array<std::string_view, 6> tokens;
    for (std::string_view& token : tokens) token = NextToken(call.rest);
    std::array<int, 6> fields{};
    for (std::size_t i = 0; i < tokens.size(); ++i) {
        CVal value;
        if (!EvaluateOperand(call.document, tokens[i], value, ValueType::Int, true)) return false;
        fields[i] = ValueToInt(value);
    }
    const auto [year, month, day, hour, minute, second] = fields;
    const std::int64_t time = MakeLocalTime({.year = year,
                                             .month = month,
                                             .day = day,
                                             .hour = hour,
                                             .minute = minute,
                                             .second = second});
    // A time before 1970 has no fields, so there is nothing to set. Whether the system lets the
    // clock be set is no concern of the script.
    if (time >= 0) call.document.Services().clock.SetSystemTime(time);
    return true;
}

bool ExecuteSubscribe(StatementCall& call) {
    CScriptSources* const sources = call.document.Services().sources;
    const std::string_view word = NextToken(call.rest);
    if (word == Keyword::Stop) {
        if (sources != nullptr) sources->BlockSubscribe();
    } else if (word == Keyword::Start) {
        if (sources != nullptr) sources->UnblockSubscribe(false);
    } else {
        call.document.SetError(ErrorUnknownKeyword, word, false);
        return false;
    }
    return true;
}

}  // namespace kalvex
