// Times as scripts write them.
#pragma once

#include <cstdint>
#include <string_view>

#include "operands/ScriptContext.h"

namespace kalvex::operands {

// Up to six integer operands (year, month, day, hour, minute, second) taken off `text`, or one
// number of 3001 or more that is a time as it stands. Local fields. False leaves `out` as it was;
// what does not evaluate stays in `text`.
bool ParseDateFields(ScriptContext& script, std::string_view& text, std::int64_t& out);

// The decimal integer at the front of `text` after white space, a sign before it if any, taken off.
// What does not fit an int is its nearest bound. False, with both as they were, when no digit
// stands there.
bool ScanInteger(std::string_view& text, int& out);

enum class SleepForm { HoursMinutesSeconds = 0, MinutesSeconds = 1, Seconds = 2 };

struct SleepTime {
    int hours = 0;
    int minutes = 0;
    int seconds = 0;
    SleepForm form = SleepForm::Seconds;
};

// "h:m.s", "m.s" or "s", or a variable that holds such a text.
bool ParseSleepTime(ScriptContext& script, std::string_view text, SleepTime& out);

}  // namespace kalvex::operands
