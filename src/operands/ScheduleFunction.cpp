// CHECK_EVENT_TIME: whether a schedule entry fits.
#include "operands/ScheduleFunction.h"

#include "operands/FunctionArguments.h"
#include "operands/FunctionFamilies.h"
#include "operands/Schedule.h"
#include "operands/ScriptContext.h"
#include "operands/TimeText.h"

namespace kalvex::operands {

namespace {

// An absent token, and a text with no number at its beginning, count as 0.
std::optional<int> Seconds(const FunctionCall& call, std::size_t index) {
    if (call.arguments[index].empty()) return 0;
    const std::optional<std::string> text = TextArgument(call, index);
    if (!text) return std::nullopt;
    std::string_view rest = *text;
    int seconds = 0;
    ScanInteger(rest, seconds);
    return seconds;
}

}  // namespace

std::optional<ScheduleQuestion> ReadScheduleQuestion(const FunctionCall& call) {
    if (call.arguments[0].empty()) return std::nullopt;
    ScheduleQuestion question;
    question.entry = TextArgument(call, 0).value_or(std::string(call.arguments[0]));
    const std::optional<int> a = Seconds(call, 1);
    if (!a) return std::nullopt;
    const std::optional<int> b = Seconds(call, 2);
    if (!b) return std::nullopt;
    question.a = *a;
    question.b = *b;
    return question;
}

FunctionResult CheckEventTimeFunction(FunctionCall& call) {
    const std::optional<ScheduleQuestion> question = ReadScheduleQuestion(call);
    if (!question) return FunctionResult::Failed;
    const bool fits = CheckEventTime(question->entry, question->a, question->b,
                                     call.script.Services().clock.Now());
    call.out = value::CVal(fits ? 1 : 0);
    return FunctionResult::Done;
}

}  // namespace kalvex::operands
