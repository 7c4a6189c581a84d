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
    const TextArgument text(call, index);
    if (!text) return std::nullopt;
    std::string_view rest = *text;
    int seconds = 0;
    ScanInteger(rest, seconds);
    return seconds;
}

// The entry of the last call, which is nearly always that of the next one.
struct EntryForm final : FunctionForm {
    void Read(std::string_view written) {
        if (known && written == text) return;
        known = true;
        text = written;
        readable = ReadScheduleEntry(text, entry);
    }

    bool known = false;
    std::string text;
    bool readable = false;
    ScheduleEntry entry;
};

}  // namespace

std::optional<ScheduleQuestion> ReadScheduleQuestion(const FunctionCall& call) {
    if (call.arguments[0].empty()) return std::nullopt;
    ScheduleQuestion question;
    question.entry = TextArgument(call, 0).ValueOr(call.arguments[0]);
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
    if (call.form == nullptr) call.form = std::make_unique<EntryForm>();
    auto& form = static_cast<EntryForm&>(*call.form);
    form.Read(question->entry);
    const bool fits = form.readable && CheckEventTime(form.entry, question->a, question->b,
                                                      call.script.Services().clock.Now());
    call.out = value::CVal(fits ? 1 : 0);
    return FunctionResult::Done;
}

}  // namespace kalvex::operands
