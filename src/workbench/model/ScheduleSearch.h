// The next time of a schedule entry, found by leaps over the months, days, hours and minutes that
// cannot hold it. Local time, as in LocalTime.h. Any thread.
#pragma once

#include <cstdint>
#include <optional>

#include "operands/Schedule.h"

namespace kalvex::workbench {

// The first second from `from` to `last` that fits; nothing when there is none.
std::optional<std::int64_t> FindScheduleTime(const operands::ScheduleEntry& entry,
                                             std::int64_t from, std::int64_t last);

// The first second after `from`, up to `last`, at which another offset of the zone holds.
std::optional<std::int64_t> FindClockChange(std::int64_t from, std::int64_t last);

}  // namespace kalvex::workbench
