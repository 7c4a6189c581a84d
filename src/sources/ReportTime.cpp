#include "sources/ReportTime.h"

#include <algorithm>
#include <cstdlib>

#include "operands/OperandEvaluator.h"
#include "text/LineScanner.h"
#include "value/LocalTime.h"
#include "value/ValueText.h"

namespace kalvex::sources {

namespace {

constexpr int kHoursPerDay = 24;

struct DatePart {
    int value::TimeFields::*field;
    int least;
    int greatest;
};

constexpr DatePart kDateParts[] = {
    {&value::TimeFields::year, 1970, 3000},
    {&value::TimeFields::month, 1, 12},
    {&value::TimeFields::day, 1, 31},
    {&value::TimeFields::hour, 0, 23},
};

operands::Failure FailDate(engine::CKalvexDoc& document) {
    return document.Fail(operands::ErrorOther,
                         document.Services().translator.Translate("Niepoprawna data"));
}

// Beyond the calendar's end a further step has no meaning.
std::int64_t StepTime(std::int64_t time, int count, std::int64_t (*next)(std::int64_t),
                      std::int64_t (*previous)(std::int64_t)) {
    for (; count > 0 && time <= value::kLargestTime; --count) time = next(time);
    for (; count < 0 && time >= 0; ++count) time = previous(time);
    return time;
}

// A line must not dwell on its steps, so what lies far away is reached in one stride.
std::int64_t StepDays(std::int64_t time, int count) {
    constexpr int kStepped = 1000;
    constexpr int kFarthest = 400000;
    if (std::abs(count) <= kStepped) {
        return StepTime(time, count, value::GetNextLocalDayTime, value::GetPrevLocalDayTime);
    }
    value::TimeFields fields = value::SplitLocalTime(time);
    fields.day += std::clamp(count, -kFarthest, kFarthest);
    return value::MakeLocalTime(fields);
}

std::int64_t Shift(std::int64_t time, int offset, value::ValueKind kind) {
    if (kind == value::KindMonth) {
        return StepTime(time, offset, value::GetNextLocalMonthTime, value::GetPrevLocalMonthTime);
    }
    const int days = kind == value::KindDay ? offset : offset / kHoursPerDay;
    const int hours = kind == value::KindDay ? 0 : offset % kHoursPerDay;
    return StepDays(time, days) + hours * value::kSecondsPerHour;
}

}  // namespace

ReportTokens::ReportTokens(std::string_view& rest, unsigned signs) {
    for (int i = 0; i < kCount; ++i) {
        std::string& token = m_tokens[static_cast<std::size_t>(i)];
        token = text::NextToken(rest);
        if (token == "-" && (signs >> i & 1U) != 0) token += text::NextToken(rest);
    }
}

int CountDateParts(value::ValueKind kind) {
    switch (kind) {
        case value::KindDay:
            return 3;
        case value::KindMonth:
            return 2;
        case value::KindSpan:
            return 1;
        default:
            return 4;
    }
}

operands::Failure FailParameters(engine::CKalvexDoc& document) {
    return document.FailForced(operands::ErrorOther, document.Services().translator.Translate(
                                                         "Niepoprawna liczba parametrów"));
}

bool ReadInteger(engine::CKalvexDoc& document, std::string_view token, std::int32_t& number) {
    value::CVal value;
    if (!operands::EvaluateOperand(document, token, value, value::ValueType::Int, true))
        return false;
    number = value::ValueToInt(value);
    return true;
}

bool BuildDate(engine::CKalvexDoc& document, const ReportTokens& tokens, value::ValueKind kind,
               std::int64_t& time) {
    value::TimeFields fields;
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
    time = value::MakeLocalTime(fields);
    return true;
}

bool ReadTime(engine::CKalvexDoc& document, std::string_view token, std::int64_t& time) {
    std::int32_t number = 0;
    if (!ReadInteger(document, token, number)) return FailParameters(document);
    time = number;
    return true;
}

bool ChooseSpan(engine::CKalvexDoc& document, std::string_view number, std::int64_t& time) {
    std::int32_t span = 0;
    if (!ReadInteger(document, number, span)) return FailParameters(document);
    time = value::MakeSpanRequestTime(time, span);
    return true;
}

void ShiftByToken(engine::CKalvexDoc& document, std::string_view token, value::ValueKind kind,
                  std::int64_t& time) {
    std::int32_t offset = 0;
    if (!token.empty() && ReadInteger(document, token, offset)) time = Shift(time, offset, kind);
}

}  // namespace kalvex::sources
