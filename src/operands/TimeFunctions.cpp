// Time stamps of variables, and times built from numbers and texts.
#include "operands/FunctionArguments.h"
#include "operands/FunctionFamilies.h"
#include "operands/TimeFormat.h"
#include "operands/TimeText.h"
#include "value/LocalTime.h"

namespace kalvex::operands {

namespace {

constexpr int kFirstYear = 1970;
constexpr int kLastYear = 3000;
constexpr int kGasDayStart = 6;  // hour at which the gas industry's day begins

FunctionResult Give(FunctionCall& call, std::int64_t time) {
    call.out = value::CVal(time);
    return FunctionResult::Done;
}

}  // namespace

FunctionResult TimestampFunction(FunctionCall& call) {
    std::int64_t time = 0;
    if (!GetVariableTime(call.script, call.arguments[0], &time)) return FunctionResult::Failed;
    return Give(call, time);
}

FunctionResult FormatedTimestamp(FunctionCall& call) {
    const std::string format = TextArgument(call, 1).ValueOr(kDefaultTimeFormat);
    std::int64_t time = 0;
    std::tm fields;
    if (!GetVariableTime(call.script, call.arguments[0], &time) ||
        !value::LocalCalendar(time, fields)) {
        return FunctionResult::Failed;
    }
    call.out = value::CVal(FormatTime(fields, format));
    return FunctionResult::Done;
}

FunctionResult MakeTime(FunctionCall& call) {
    std::string_view text = TextBehindKeyword(call);
    std::int64_t time = 0;
    if (!ParseDateFields(call.script, text, time)) return FunctionResult::Failed;
    return Give(call, time);
}

// The text is read as winter time throughout the year.
FunctionResult MakeTimeFromString(FunctionCall& call) {
    if (call.arguments[0].empty()) return FunctionResult::Failed;
    const TextArgument text(call, 0);
    if (!text) return FunctionResult::Failed;
    std::string format(kDefaultTimeFormat);
    if (!call.arguments[1].empty()) {
        const TextArgument given(call, 1);
        if (!given) return FunctionResult::Failed;
        format = *given;
    }
    const std::optional<std::tm> read = ReadTime(*text, format);
    if (!read) return FunctionResult::Failed;
    return Give(call, value::MakeWinterTime({read->tm_year + 1900, read->tm_mon + 1, read->tm_mday,
                                             read->tm_hour, read->tm_min, read->tm_sec}));
}

// The end of the last gas day of the month. The days are counted in seconds, so that around a
// change of daylight saving the clock may show another hour.
FunctionResult LastDay(FunctionCall& call) {
    const std::optional<int> year = NumberArgument(call, 0);
    const std::optional<int> month = NumberArgument(call, 1);
    if (!year || !month) return FunctionResult::Failed;
    if (*month < 1 || *month > 12 || *year < kFirstYear || *year > kLastYear) {
        return FunctionResult::Failed;
    }
    std::int64_t time = value::MakeLocalTime({*year, *month, 1, kGasDayStart});
    while (value::GetLocalMonth(time) == *month) time += value::kSecondsPerDay;
    return Give(call, time);
}

}  // namespace kalvex::operands
