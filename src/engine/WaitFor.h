// The times of a WAITFOR statement on one local day. A time passes during the second after it.
#pragma once

#include <cstdint>
#include <string_view>

#include "engine/CallStack.h"
#include "operands/TimeText.h"
#include "value/LocalTime.h"

namespace kalvex::engine {

// Adds the times that a written time means on the day of `today`: one for h:m.s, one an hour for
// m.s, one a minute for s. Fields out of their bounds are brought to the nearest bound.
void AddWaitTimes(CWaitFor& record, const operands::SleepTime& written,
                  const value::TimeFields& today);

// Reads the times of a WAITFOR line, behind its keyword, for the day of `now`, and places the
// record there. False when one of them cannot be read, or the line has nothing.
bool ReadWaitFor(operands::ScriptContext& script, std::string_view text, std::int64_t now,
                 CWaitFor& record);

// Places the record at its first time at or after `time`, or behind its last one.
void LocateWaitTime(CWaitFor& record, std::int64_t time);

// Moves all times to the day after the first one, same clock readings, and places the record at the
// first.
void RollWaitTimes(CWaitFor& record);

// Moves the record on to `now`; true when a time has come, which is then used up.
bool PassWaitTime(CWaitFor& record, std::int64_t now);

// Of a record that PassWaitTime has just left waiting at `now`: the first time from then on at
// which it may do anything but leave it as it is; `now` itself where it may do so at once.
std::int64_t GetStillUntil(const CWaitFor& record, std::int64_t now);

}  // namespace kalvex::engine
