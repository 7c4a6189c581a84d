// What a call of CHECK_EVENT_TIME asks. Main thread.
#pragma once

#include <optional>
#include <string>

#include "operands/KeywordFunction.h"

namespace kalvex::operands {

struct ScheduleQuestion {
    std::string entry;
    int a = 0;
    int b = 0;
};

// Nothing when the expression fails, for the reason in the error slot.
std::optional<ScheduleQuestion> ReadScheduleQuestion(const FunctionCall& call);

}  // namespace kalvex::operands
