#include "workbench/model/ScheduleSearch.h"

#include <algorithm>

#include "value/LocalTime.h"

namespace kalvex::workbench {

namespace {

using operands::ScheduleEntry;

bool Holds(std::uint64_t bits, int index) {
    return (bits >> index & 1) != 0;
}

bool HoldsDay(const ScheduleEntry& entry, const std::tm& at) {
    const bool month = Holds(entry.daysOfMonth, at.tm_mday - 1);
    const bool week = Holds(entry.daysOfWeek, at.tm_wday);
    return entry.flags != 0 ? month && week : month || week;
}

bool CanFit(const ScheduleEntry& entry) {
    const bool days = entry.flags != 0 ? entry.daysOfMonth != 0 && entry.daysOfWeek != 0
                                       : (entry.daysOfMonth | entry.daysOfWeek) != 0;
    return entry.seconds != 0 && entry.minutes != 0 && entry.hours != 0 && entry.months != 0 &&
           days;
}

// The last second of the longest period around the time of which no second fits; the time before
// when the time itself may fit.
std::int64_t LastMisfit(const ScheduleEntry& entry, std::int64_t time, const std::tm& at) {
    if (!Holds(entry.months, at.tm_mon)) return value::GetLastLocalMonthTime(time);
    if (!HoldsDay(entry, at)) return value::GetLastLocalDayTime(time);
    const std::int64_t hourEnd = value::GetLastLocalHourTime(time);
    if (!Holds(entry.hours, at.tm_hour)) return hourEnd;
    if (!Holds(entry.minutes, at.tm_min))
        return std::min<std::int64_t>(hourEnd, time + std::max(59 - at.tm_sec, 0));
    return Holds(entry.seconds, at.tm_sec) ? time - 1 : time;
}

long OffsetAt(std::int64_t time) {
    std::tm at;
    return value::LocalCalendar(time, at) ? at.tm_gmtoff : 0;
}

}  // namespace

std::optional<std::int64_t> FindScheduleTime(const ScheduleEntry& entry, std::int64_t from,
                                             std::int64_t last) {
    if (!CanFit(entry)) return std::nullopt;
    for (std::int64_t time = std::max<std::int64_t>(from, 0); time <= last;) {
        std::tm at;
        if (!value::LocalCalendar(time, at)) return std::nullopt;
        const std::int64_t misfit = LastMisfit(entry, time, at);
        if (misfit < time) {
            if (operands::FitsSchedule(entry, time)) return time;
            ++time;
        } else {
            time = misfit + 1;
        }
    }
    return std::nullopt;
}

std::optional<std::int64_t> FindClockChange(std::int64_t from, std::int64_t last) {
    for (std::int64_t low = from; low < last;) {
        std::int64_t high = std::min(low + value::kSecondsPerDay, last);
        const long offset = OffsetAt(low);
        if (OffsetAt(high) == offset) {
            low = high;
            continue;
        }
        while (high - low > 1) {
            const std::int64_t middle = low + (high - low) / 2;
            (OffsetAt(middle) == offset ? low : high) = middle;
        }
        return high;
    }
    return std::nullopt;
}

}  // namespace kalvex::workbench
