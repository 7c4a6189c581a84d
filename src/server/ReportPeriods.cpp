#include "server/ReportPeriods.h"

#include "value/LocalTime.h"

namespace kalvex {

namespace {

// The instant at which the calendar day that begins at `day` becomes the day of reports.
std::int64_t DayBegin(std::int64_t day, int dayStart) {
    std::tm at;
    if (!LocalCalendar(day, at)) return day;
    return MakeLocalTime({at.tm_year + 1900, at.tm_mon + 1, at.tm_mday, dayStart});
}

}  // namespace

std::int64_t ReportTime(ValueKind kind, std::int64_t time) {
    switch (kind) {
        case KindHour:
            return GetFirstLocalHourTime(time);
        case KindDay:
            return GetFirstLocalDayTime(time);
        case KindMonth:
            return GetFirstLocalMonthTime(time);
        default:
            return time;
    }
}

std::int64_t NextReportTime(ValueKind kind, std::int64_t reportTime) {
    switch (kind) {
        case KindHour:
            return GetLastLocalHourTime(reportTime) + 1;
        case KindDay:
            return GetLastLocalDayTime(reportTime) + 1;
        default:
            return GetLastLocalMonthTime(reportTime) + 1;
    }
}

TimeSpan CoveredSpan(ValueKind kind, std::int64_t reportTime, int dayStart) {
    const std::int64_t next = NextReportTime(kind, reportTime);
    if (kind == KindHour) return {reportTime, next};
    return {DayBegin(reportTime, dayStart), DayBegin(next, dayStart)};
}

std::int64_t CoveringReport(ValueKind kind, std::int64_t instant, int dayStart) {
    const std::int64_t time = ReportTime(kind, instant);
    if (CoveredSpan(kind, time, dayStart).begin <= instant) return time;
    return ReportTime(kind, time - 1);
}

std::vector<std::int64_t> PartsOf(ValueKind kind, std::int64_t reportTime, int dayStart) {
    const ValueKind part = kind == KindMonth ? KindDay : KindHour;
    std::vector<std::int64_t> parts;
    if (kind == KindMonth) {
        const std::int64_t next = NextReportTime(KindMonth, reportTime);
        for (std::int64_t day = reportTime; day < next; day = NextReportTime(part, day)) {
            parts.push_back(day);
        }
        return parts;
    }
    const TimeSpan span = CoveredSpan(kind, reportTime, dayStart);
    for (std::int64_t hour = span.begin; hour < span.end; hour = NextReportTime(part, hour)) {
        parts.push_back(hour);
    }
    return parts;
}

}  // namespace kalvex
