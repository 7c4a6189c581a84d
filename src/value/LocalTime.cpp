#include "value/LocalTime.h"

#include <algorithm>
#include <cstdlib>
#include <optional>

namespace kalvex::value {

namespace {

constexpr std::int64_t kWeek = 7 * kSecondsPerDay;

// Within these bounds every year, and every neighbour of it, fits the C library's structure.
constexpr std::int64_t kFarthestTime = 60'000'000'000'000'000;
constexpr std::int64_t kFarthestYear = 1'000'000'000;

enum class Period { Day, Month, Year };

bool IsNear(std::int64_t time) {
    return time >= -kFarthestTime && time <= kFarthestTime;
}

bool GMTCalendar(std::int64_t time, std::tm& out) {
    const std::time_t count = time;
    return IsNear(time) && gmtime_r(&count, &out) != nullptr;
}

std::int64_t Offset(std::int64_t time) {
    std::tm at;
    return LocalCalendar(time, at) ? at.tm_gmtoff : 0;
}

TimeFields FieldsOf(const std::tm& at) {
    return {at.tm_year + 1900, at.tm_mon + 1, at.tm_mday,    at.tm_hour,
            at.tm_min,         at.tm_sec,     at.tm_wday + 1};
}

constexpr TimeFields kNoFields{0, 0, 0, -1, -1, -1, 0};

// The count that the fields make when they are read as GMT.
std::optional<std::int64_t> ReadingOf(const TimeFields& fields) {
    const std::int64_t months = std::int64_t{fields.year} * 12 + fields.month - 1;
    std::int64_t year = months / 12;
    std::int64_t month = months % 12;
    if (month < 0) {
        month += 12;
        --year;
    }
    if (std::abs(year) > kFarthestYear) return std::nullopt;
    std::tm at{};
    at.tm_year = static_cast<int>(year - 1900);
    at.tm_mon = static_cast<int>(month);
    at.tm_mday = fields.day;
    at.tm_hour = fields.hour;
    at.tm_min = fields.minute;
    at.tm_sec = fields.second;
    return timegm(&at);
}

// The instant at which local clocks first show the reading. Both probes lie clear of any change
// near the reading, whatever the zone's offset.
std::int64_t InstantOf(std::int64_t reading) {
    const std::int64_t before = Offset(reading - kSecondsPerDay);
    const std::int64_t first = reading - before;
    if (Offset(first) == before) return first;
    const std::int64_t after = Offset(reading + kSecondsPerDay);
    return Offset(reading - after) == after ? reading - after : first;
}

// What local clocks are set to from one change to the next.
struct Season {
    std::int64_t time;  // one of its instants
    std::int64_t offset;
    bool daylight;
};

std::optional<Season> SeasonAt(std::int64_t time) {
    std::tm at;
    if (!LocalCalendar(time, at)) return std::nullopt;
    return Season{time, at.tm_gmtoff, at.tm_isdst > 0};
}

// The season before or after, nothing when this one goes on for so many weeks.
std::optional<Season> SeasonBeside(const Season& season, int step, int weeks) {
    for (int week = 1; week <= weeks; ++week) {
        const std::optional<Season> beside = SeasonAt(season.time + step * week * kWeek);
        if (!beside) return std::nullopt;
        if (beside->offset != season.offset || beside->daylight != season.daylight) return beside;
    }
    return std::nullopt;
}

// The offset without the daylight saving of a season that has it. The seasons on both sides tell,
// unless the zone itself changed there: an hour is the likeliest shift, and taken for granted where
// neither side tells. Where both are ahead, the zone is recorded as saving daylight in winter.
std::int64_t OffsetWithoutDaylight(const Season& season) {
    constexpr int kLongest = 160;  // weeks; a summer went on for 135
    constexpr std::int64_t kLargestShift = 2 * kSecondsPerHour;
    std::int64_t shift = kSecondsPerHour;
    bool ahead = false;
    bool behind = false;
    for (const int step : {-1, 1}) {
        const std::optional<Season> beside = SeasonBeside(season, step, kLongest);
        if (!beside || beside->daylight) continue;
        const std::int64_t found = season.offset - beside->offset;
        if (found == kSecondsPerHour) return beside->offset;
        ahead |= found < 0 && found >= -kLargestShift;
        if (found <= 0 || found > kLargestShift) continue;
        behind = true;
        shift = found;
    }
    return ahead && !behind ? season.offset : season.offset - shift;
}

// The offset of the clock that stands at winter time all year.
std::int64_t WinterOffset(std::int64_t time) {
    constexpr int kHalfYear = 30;  // weeks, and some more
    const std::optional<Season> season = SeasonAt(time);
    if (!season) return 0;
    if (season->daylight) return OffsetWithoutDaylight(*season);
    for (const int step : {-1, 1}) {
        const std::optional<Season> beside = SeasonBeside(*season, step, kHalfYear);
        if (beside && beside->daylight && beside->offset < season->offset &&
            OffsetWithoutDaylight(*beside) == beside->offset) {
            return beside->offset;
        }
    }
    return season->offset;
}

// The first second whose offset is not the one at `from`; the offsets at both ends differ.
std::int64_t OffsetChange(std::int64_t from, std::int64_t to) {
    const std::int64_t offset = Offset(from);
    while (to - from > 1) {
        const std::int64_t middle = from + (to - from) / 2;
        (Offset(middle) == offset ? from : to) = middle;
    }
    return to;
}

bool SameHour(const std::tm& a, const std::tm& b) {
    return a.tm_hour == b.tm_hour && a.tm_yday == b.tm_yday && a.tm_year == b.tm_year;
}

std::int64_t DayNumber(std::int64_t reading) {
    return reading >= 0 ? reading / kSecondsPerDay : (reading + 1) / kSecondsPerDay - 1;
}

// The reading with which the period of these fields begins, or the one `step` periods later.
std::int64_t PeriodStart(const std::tm& at, Period period, int step) {
    std::tm start{};
    start.tm_year = at.tm_year + (period == Period::Year ? step : 0);
    if (period != Period::Year) start.tm_mon = at.tm_mon + (period == Period::Month ? step : 0);
    start.tm_mday = period == Period::Day ? at.tm_mday + step : 1;
    return timegm(&start);
}

std::int64_t FirstLocal(std::int64_t time, Period period) {
    std::tm at;
    return LocalCalendar(time, at) ? InstantOf(PeriodStart(at, period, 0)) : time;
}

// Where clocks are set back over midnight, the time may lie behind the first end of its day.
std::int64_t LastLocal(std::int64_t time, Period period) {
    std::tm at;
    if (!LocalCalendar(time, at)) return time;
    const std::int64_t end = PeriodStart(at, period, 1);
    const std::int64_t last = InstantOf(end) - 1;
    return last >= time ? last : end - at.tm_gmtoff - 1;
}

std::int64_t FirstGMT(std::int64_t time, Period period) {
    std::tm at;
    return GMTCalendar(time, at) ? PeriodStart(at, period, 0) : time;
}

std::int64_t LastGMT(std::int64_t time, Period period) {
    std::tm at;
    return GMTCalendar(time, at) ? PeriodStart(at, period, 1) - 1 : time;
}

// The reading of these fields some months away, on the month's last day if it has fewer days.
std::int64_t MonthsAway(const std::tm& at, int months) {
    const std::int64_t first = PeriodStart(at, Period::Month, months);
    const std::int64_t days = (PeriodStart(at, Period::Month, months + 1) - first) / kSecondsPerDay;
    const std::int64_t day = std::min<std::int64_t>(at.tm_mday, days);
    return first + (day - 1) * kSecondsPerDay + at.tm_hour * kSecondsPerHour +
           at.tm_min * kSecondsPerMinute + at.tm_sec;
}

std::int64_t StepLocalMonth(std::int64_t time, int months) {
    std::tm at;
    return LocalCalendar(time, at) ? InstantOf(MonthsAway(at, months)) : time;
}

std::int64_t StepGMTMonth(std::int64_t time, int months) {
    std::tm at;
    return GMTCalendar(time, at) ? MonthsAway(at, months) : time;
}

std::int64_t StepLocalDay(std::int64_t time, int step) {
    std::tm at;
    if (!LocalCalendar(time, at)) return time;
    const auto liesOn = [](std::int64_t instant, std::int64_t reading) {
        return DayNumber(instant + Offset(instant)) == DayNumber(reading);
    };
    for (std::int64_t wanted = time + at.tm_gmtoff + step * kSecondsPerDay;;
         wanted += step * kSecondsPerDay) {
        const std::int64_t found = InstantOf(wanted);
        if (liesOn(found, wanted)) return found;
        // The end of that day is left out, or the day as a whole, as where the date line moved.
        const std::int64_t last = GetFirstLocalDayTime(found) - 1;
        if (liesOn(last, wanted)) return last;
    }
}

void StepDate(int& year, int& month, int& day, std::int64_t seconds) {
    const std::optional<std::int64_t> reading = ReadingOf({year, month, day});
    std::tm at;
    if (!reading || !GMTCalendar(*reading + seconds, at)) return;
    year = at.tm_year + 1900;
    month = at.tm_mon + 1;
    day = at.tm_mday;
}

}  // namespace

bool LocalCalendar(std::int64_t time, std::tm& out) {
    const std::time_t count = time;
    return IsNear(time) && localtime_r(&count, &out) != nullptr;
}

TimeFields SplitLocalTime(std::int64_t time) {
    std::tm at;
    return time >= 0 && LocalCalendar(time, at) ? FieldsOf(at) : kNoFields;
}

TimeFields SplitGMTTime(std::int64_t time) {
    std::tm at;
    return time >= 0 && GMTCalendar(time, at) ? FieldsOf(at) : kNoFields;
}

TimeFields SplitWinterTime(std::int64_t time) {
    std::tm at;
    if (time < 0 || !IsNear(time)) return kNoFields;
    return GMTCalendar(time + WinterOffset(time), at) ? FieldsOf(at) : kNoFields;
}

std::int64_t MakeLocalTime(const TimeFields& fields) {
    const std::optional<std::int64_t> reading = ReadingOf(fields);
    return reading ? InstantOf(*reading) : -1;
}

std::int64_t MakeWinterTime(const TimeFields& fields) {
    const std::optional<std::int64_t> reading = ReadingOf(fields);
    if (!reading) return -1;
    return *reading - WinterOffset(*reading - WinterOffset(*reading));
}

std::int64_t GetFirstLocalHourTime(std::int64_t time) {
    std::tm at;
    if (!LocalCalendar(time, at)) return time;
    const std::int64_t start = time - at.tm_min * kSecondsPerMinute - at.tm_sec;
    if (Offset(start) == at.tm_gmtoff) return start;
    const std::int64_t change = OffsetChange(start, time);
    std::tm before;
    const bool goesOn = LocalCalendar(change - 1, before) && SameHour(before, at);
    return goesOn ? GetFirstLocalHourTime(change - 1) : change;
}

std::int64_t GetLastLocalHourTime(std::int64_t time) {
    std::tm at;
    if (!LocalCalendar(time, at)) return time;
    std::int64_t next = time + (59 - at.tm_min) * kSecondsPerMinute + 60 - at.tm_sec;
    if (Offset(next - 1) != at.tm_gmtoff) next = OffsetChange(time, next - 1);
    std::tm after;
    const bool goesOn = LocalCalendar(next, after) && SameHour(after, at) && after.tm_min != 0;
    return goesOn ? GetLastLocalHourTime(next) : next - 1;
}

std::int64_t GetFirstLocalDayTime(std::int64_t time) {
    return FirstLocal(time, Period::Day);
}
std::int64_t GetFirstLocalMonthTime(std::int64_t time) {
    return FirstLocal(time, Period::Month);
}
std::int64_t GetFirstLocalYearTime(std::int64_t time) {
    return FirstLocal(time, Period::Year);
}
std::int64_t GetLastLocalDayTime(std::int64_t time) {
    return LastLocal(time, Period::Day);
}
std::int64_t GetLastLocalMonthTime(std::int64_t time) {
    return LastLocal(time, Period::Month);
}
std::int64_t GetLastLocalYearTime(std::int64_t time) {
    return LastLocal(time, Period::Year);
}

std::int64_t GetFirstGMTHourTime(std::int64_t time) {
    std::tm at;
    return GMTCalendar(time, at) ? time - at.tm_min * kSecondsPerMinute - at.tm_sec : time;
}

std::int64_t GetLastGMTHourTime(std::int64_t time) {
    return IsNear(time) ? GetFirstGMTHourTime(time) + kSecondsPerHour - 1 : time;
}

std::int64_t GetFirstGMTDayTime(std::int64_t time) {
    return FirstGMT(time, Period::Day);
}
std::int64_t GetFirstGMTMonthTime(std::int64_t time) {
    return FirstGMT(time, Period::Month);
}
std::int64_t GetFirstGMTYearTime(std::int64_t time) {
    return FirstGMT(time, Period::Year);
}
std::int64_t GetLastGMTDayTime(std::int64_t time) {
    return LastGMT(time, Period::Day);
}
std::int64_t GetLastGMTMonthTime(std::int64_t time) {
    return LastGMT(time, Period::Month);
}
std::int64_t GetLastGMTYearTime(std::int64_t time) {
    return LastGMT(time, Period::Year);
}

std::int64_t GetPrevLocalDayTime(std::int64_t time) {
    return StepLocalDay(time, -1);
}
std::int64_t GetPrevLocalMonthTime(std::int64_t time) {
    return StepLocalMonth(time, -1);
}
std::int64_t GetNextLocalDayTime(std::int64_t time) {
    return StepLocalDay(time, 1);
}
std::int64_t GetNextLocalMonthTime(std::int64_t time) {
    return StepLocalMonth(time, 1);
}

std::int64_t GetPrevGMTDayTime(std::int64_t time) {
    return IsNear(time) ? time - kSecondsPerDay : time;
}
std::int64_t GetPrevGMTMonthTime(std::int64_t time) {
    return StepGMTMonth(time, -1);
}
std::int64_t GetPrevGMTYearTime(std::int64_t time) {
    return StepGMTMonth(time, -12);
}
std::int64_t GetNextGMTDayTime(std::int64_t time) {
    return IsNear(time) ? time + kSecondsPerDay : time;
}
std::int64_t GetNextGMTMonthTime(std::int64_t time) {
    return StepGMTMonth(time, 1);
}
std::int64_t GetNextGMTYearTime(std::int64_t time) {
    return StepGMTMonth(time, 12);
}

std::int64_t GMTToLocalDayTime(std::int64_t time) {
    return time + Offset(time);
}

std::int64_t LocalToGMTDayTime(std::int64_t time) {
    return IsNear(time) ? InstantOf(time) : time;
}

int GetLocalYear(std::int64_t time) {
    return SplitLocalTime(time).year;
}
int GetLocalMonth(std::int64_t time) {
    return SplitLocalTime(time).month;
}
int GetLocalDay(std::int64_t time) {
    return SplitLocalTime(time).day;
}
int GetLocalHour(std::int64_t time) {
    return SplitLocalTime(time).hour;
}
int GetGMTYear(std::int64_t time) {
    return SplitGMTTime(time).year;
}
int GetGMTMonth(std::int64_t time) {
    return SplitGMTTime(time).month;
}
int GetGMTDay(std::int64_t time) {
    return SplitGMTTime(time).day;
}
int GetGMTHour(std::int64_t time) {
    return SplitGMTTime(time).hour;
}
int GetGMTMin(std::int64_t time) {
    return SplitGMTTime(time).minute;
}
int GetWinterYear(std::int64_t time) {
    return SplitWinterTime(time).year;
}
int GetWinterMonth(std::int64_t time) {
    return SplitWinterTime(time).month;
}
int GetWinterDay(std::int64_t time) {
    return SplitWinterTime(time).day;
}
int GetWinterHour(std::int64_t time) {
    return SplitWinterTime(time).hour;
}

void GetPrevDayTime(int& year, int& month, int& day) {
    StepDate(year, month, day, -kSecondsPerDay);
}
void GetNextDayTime(int& year, int& month, int& day) {
    StepDate(year, month, day, kSecondsPerDay);
}

std::int64_t MakeSpanRequestTime(std::int64_t time, int number) {
    return IsNear(time) ? GetFirstLocalHourTime(time) + number : time;
}

}  // namespace kalvex::value
