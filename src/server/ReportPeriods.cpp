#include "server/ReportPeriods.h"

#include "value/LocalTime.h"

namespace kalvex::server {

namespace {

// The instant at which the calendar day that begins at `day` becomes the day of reports.
std::int64_t DayBegin(std::int64_t day, int dayStart) {
    std::tm at;
    if (!value::LocalCalendar(day, at)) return day;
    return value::MakeLocalTime({at.tm_year + 1900, at.tm_mon + 1, at.tm_mday, dayStart});
}

}  // namespace

bool IsTime(std::int64_t time) {
    return time >= 0 && time <= value::kLargestTime;
}

std::int64_t ReportTime(value::ValueKind kind, std::int64_t time) {
    switch (kind) {
        case value::KindHour:
            return value::GetFirstLocalHourTime(time);
        case value::KindDay:
            return value::GetFirstLocalDayTime(time);
        case value::KindMonth:
            return value::GetFirstLocalMonthTime(time);
        default:
            return time;
    }
}

std::int64_t NextReportTime(value::ValueKind kind, std::int64_t reportTime) {
    switch (kind) {
        case value::KindHour:
            return value::GetLastLocalHourTime(reportTime) + 1;
        case value::KindDay:
            return value::GetLastLocalDayTime(reportTime) + 1;
        default:
            return value::GetLastLocalMonthTime(reportTime) + 1;
    }
}

TimeSpan CoveredSpan(value::ValueKind kind, std::int64_t reportTime, int dayStart) {
    const std::int64_t next = NextReportTime(kind, reportTime);
    if (kind == value::KindHour) return {reportTime, next};
    return {DayBegin(reportTime, dayStart), DayBegin(next, dayStart)};
}

std::int64_t CoveringReport(value::ValueKind kind, std::int64_t instant, int dayStart) {
    const std::int64_t time = ReportTime(kind, instant);
    if (CoveredSpan(kind, time, dayStart).begin <= instant) return time;
    return ReportTime(kind, time - 1);
}

ReportName ReportAbove(value::ValueKind kind, std::int64_t time, int dayStart) {
    switch (kind) {
        case value::KindArchive:
            return {value::KindHour, ReportTime(value::KindHour, time)};
        case value::KindHour:
            return {value::KindDay, CoveringReport(value::KindDay, time, dayStart)};
        case value::KindDay:
            return {value::KindMonth, ReportTime(value::KindMonth, time)};
        default:
            return {};
    }
}

std::vector<std::int64_t> PartsOf(value::ValueKind kind, std::int64_t reportTime, int dayStart) {
    const value::ValueKind part = kind == value::KindMonth ? value::KindDay : value::KindHour;
    std::vector<std::int64_t> parts;
    if (kind == value::KindMonth) {
        const std::int64_t next = NextReportTime(value::KindMonth, reportTime);
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

}  // namespace kalvex::server
