#include "sources/ReportTime.h"

#include <algorithm>
#include <cstdlib>

#include "operands/OperandEvaluator.h"
#include "text/LineScanner.h"
#include "value/LocalTime.h"
#include "value/ValueText.h"

namespace kalvex {

namespace {

constexpr int kHoursPerDay = 24;

struct DatePart {
    int TimeFields::*field;
    int least;
    int greatest;
};

constexpr DatePart kDateParts[] = {
    {&TimeFields::year, 1970, 3000},
    {&TimeFields::month, 1, 12},
    {&TimeFields::day, 1, 31},
    {&TimeFields::hour, 0, 23},
};

Failure FailDate(CKalvexDoc& document) {
    return document.Fail(ErrorOther, document.Services().translator.Translate("Niepoprawna data"));
}

// Beyond the calendar's end a further step has no meaning.
std::int64_t StepTime(std::int64_t time, int count, std::int64_t (*next)(std::int64_t),
                      std::int64_t (*previous)(std::int64_t)) {
    for (; count > 0 && time <= kLargestTime; --count) time = next(time);
    for (; count < 0 && time >= 0; ++count) time = previous(time);
    return time;
}

// A line must not dwell on its steps, so what lies far away is reached in one stride.
std::int64_t StepDays(std::int64_t time, int count) {
    constexpr int kStepped = 1000;
    constexpr int kFarthest = 400000;
    if (std::abs(count) <= kStepped) {
        return StepTime(time, count, GetNextLocalDayTime, GetPrevLocalDayTime);
    }
    TimeFields fields = SplitLocalTime(time);
    fields.day += std::clamp(count, -kFarthest, kFarthest);
    return MakeLocalTime(fields);
}

std::int64_t Shift(std::int64_t time, int offset, ValueKind kind) {
    if (kind == KindMonth) {
        return StepTime(time, offset, GetNextLocalMonthTime, GetPrevLocalMonthTime);
    }
    const int days = kind == KindDay ? offset : offset / kHoursPerDay;
    const int hours = kind == KindDay ? 0 : offset % kHoursPerDay;
    return StepDays(time, days) + hours * kSecondsPerHour;
}

}  // namespace

ReportTokens::ReportTokens(std::string_view& rest, unsigned signs) {
    for (int i = 0; i < kCount; ++i) {
        std::string& token = m_arrTokens[static_cast<std::size_t>(i)];
        token = NextToken(rest);
        if (token == "-" && (signs >> i & 1U) != 0) token += NextToken(rest);
    }
}

int CountDateParts(ValueKind kind) {
    switch (kind) {
        case KindDay:
            return 3;
        case KindMonth:
            return 2;
        case KindSpan:
            return 1;
        default:
            return 4;
    }
}

Failure FailParameters(CKalvexDoc& document) {
    return document.FailForced(
        ErrorOther, document.Services().translator.Translate("Niepoprawna liczba parametrów"));
}

bool ReadInteger(CKalvexDoc& document, std::string_view token, std::int32_t& number) {
    CVal value;
    if (!EvaluateOperand(document, token, value, ValueType::Int, true)) return false;
    number = ValueToInt(value);
    return true;
}

bool BuildDate(CKalvexDoc& document, const ReportTokens& tokens, ValueKind kind,
               std::int64_t& time) {
    TimeFields fields;
    const int count = CountDateParts(kind);
    for (int i = 0; i < count; ++i) {
        if (!ReadInteger(document, tokens[i], fields.*kDateParts[i].field)) {
            return FailParameters(document);
        }
    }
    for (int i = 0; i < count; ++i) {
        const DatePart& part = kDateParts[i];
        const int value = fields.*part.field;
        if (value < part.least || value > part.greatest) return FailDate(document);
    }
    time = MakeLocalTime(fields);
    return true;
}

bool ReadTime(CKalvexDoc& document, std::string_view token, std::int64_t& time) {
    std::int32_t number = 0;
    if (!ReadInteger(document, token, number)) return FailParameters(document);
    time = number;
    return true;
}

bool ChooseSpan(CKalvexDoc& document, std::string_view number, std::int64_t& time) {
    std::int32_t span = 0;
    if (!ReadInteger(document, number, span)) return FailParameters(document);
    time = MakeSpanRequestTime(time, span);
    return true;
}

void ShiftByToken(CKalvexDoc& document, std::string_view token, ValueKind kind,
                  std::int64_t& time) {
    std::int32_t offset = 0;
    if (!token.empty() && ReadInteger(document, token, offset)) time = Shift(time, offset, kind);
}

}  // namespace kalvex
