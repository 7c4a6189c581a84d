// The times of a WAITFOR statement on one local day. A time passes during the second after it.
#pragma once

#include <cstdint>

#include "engine/CallStack.h"
#include "operands/TimeText.h"
#include "value/LocalTime.h"

namespace kalvex::engine {

// Adds the times that a written time means on the day of `today`: one for h:m.s, one an hour for
// m.s, one a minute for s. Fields out of their bounds are brought to the nearest bound.
void AddWaitTimes(CWaitFor& record, const operands::SleepTime& written,
                  const value::TimeFields& today);

// Places the record at its first time at or after `time`, or behind its last one.
void LocateWaitTime(CWaitFor& record, std::int64_t time);

// Moves all times to the day after the first one, same clock readings, and places the record at the
// first.
void RollWaitTimes(CWaitFor& record);

// Moves the record on to `now`; true when a time has come, which is then used up.
bool PassWaitTime(CWaitFor& record, std::int64_t now);

}  // namespace kalvex::engine
