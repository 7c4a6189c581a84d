// The periods of reports. A report is named by the start of its local hour, of its calendar day or
// month; the day that it covers begins at a configured hour. Any thread. Times lie between 0 and
// kLargestTime.
#pragma once

#include <cstdint>
#include <vector>

#include "value/Status.h"

namespace kalvex::server {

// From `begin` on, before `end`.
struct TimeSpan {
    std::int64_t begin = 0;
    std::int64_t end = 0;

    bool operator==(const TimeSpan&) const = default;
};

// A time that a value can have.
bool IsTime(std::int64_t time);

// The name of the report that any time within the period stands for; the time itself for span
// reports and the archive.
std::int64_t ReportTime(value::ValueKind kind, std::int64_t time);

// The name of the next hour, day or month report.
std::int64_t NextReportTime(value::ValueKind kind, std::int64_t reportTime);

// What the hour, day or month report of that name covers when days begin at `dayStart` o'clock. A
// reading that the clocks leave out on that day begins where they go on.
TimeSpan CoveredSpan(value::ValueKind kind, std::int64_t reportTime, int dayStart);

// The name of the hour, day or month report that covers the instant.
std::int64_t CoveringReport(value::ValueKind kind, std::int64_t instant, int dayStart);

struct ReportName {
    value::ValueKind kind = value::KindNone;
    std::int64_t time = 0;
};

// The report that is computed from what has that kind and time: an hour from the archive, a day
// from hours, a month from days. KindNone where nothing is.
ReportName ReportAbove(value::ValueKind kind, std::int64_t time, int dayStart);

// The reports from which the day or month report of that name is computed: hours or days.
std::vector<std::int64_t> PartsOf(value::ValueKind kind, std::int64_t reportTime, int dayStart);

}  // namespace kalvex::server
