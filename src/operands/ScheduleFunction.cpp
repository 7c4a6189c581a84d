// CHECK_EVENT_TIME: whether a schedule entry fits.
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

FunctionResult CheckEventTimeFunction(FunctionCall& call) {
    if (call.arguments[0].empty()) return FunctionResult::Failed;
    const std::string entry = TextArgument(call, 0).value_or(std::string(call.arguments[0]));
    const std::optional<int> a = Seconds(call, 1);
    if (!a) return FunctionResult::Failed;
    const std::optional<int> b = Seconds(call, 2);
    if (!b) return FunctionResult::Failed;
    const bool fits = CheckEventTime(entry, *a, *b, call.script.Services().clock.Now());
    call.out = value::CVal(fits ? 1 : 0);
    return FunctionResult::Done;
}

}  // namespace kalvex::operands
