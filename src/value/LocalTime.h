// Times and their fields. A time is a signed count of seconds since 1970-01-01 00:00:00 GMT; local,
// GMT and winter are ways of cutting it into fields and never properties of the count.
//
// The zone is the C library's, from TZ, which the program sets once at its start; tzset has been
// called before anything here is used. The functions keep no state: the same arguments give the
// same answer whatever was asked before. No function fails or raises an error: a time too far away
// to have a calendar (beyond 6e16 seconds either way) has no fields, and every function that takes
// a time and gives one hands it back as it is.
#pragma once

#include <cstdint>
#include <ctime>

namespace kalvex::value {

inline constexpr std::int64_t kSecondsPerMinute = 60;
inline constexpr std::int64_t kSecondsPerHour = 3600;
inline constexpr std::int64_t kSecondsPerDay = 86400;

// Stands for "no limit": 2999-12-31 22:59:59 GMT.
inline constexpr std::int64_t kLargestTime = 32503676399;

struct TimeFields {
    int year = 1970;  // in full
    int month = 1;    // 1 to 12
    int day = 1;
    int hour = 0;
    int minute = 0;
    int second = 0;
    int dayOfWeek = 0;  // 1 Sunday to 7 Saturday; not read when a time is built

    bool operator==(const TimeFields&) const = default;
};

// The local calendar of a time, negative ones included, as the C library has it. False, with `out`
// undefined, for a time too far away.
bool LocalCalendar(std::int64_t time, std::tm& out);

// The fields of a time. A negative time, and one too far away, gives 0 for year, month, day and day
// of week, and -1 for hour, minute and second.
TimeFields SplitLocalTime(std::int64_t time);
TimeFields SplitGMTTime(std::int64_t time);
TimeFields SplitWinterTime(std::int64_t time);

// The time of a local reading, daylight saving left to the system: a reading that occurs twice
// means its first occurrence, one that is left out is read with the offset in force before the
// change. Fields out of their bounds carry over, so that February 31 is early March. -1 when the
// year is beyond reach.
std::int64_t MakeLocalTime(const TimeFields& fields);

// The same for a reading of winter time, whatever the season.
std::int64_t MakeWinterTime(const TimeFields& fields);

// First and last second of the local period that holds the time. Of an hour that occurs twice each
// occurrence is an hour of its own; one that a shift of less than an hour repeats in part is one
// longer hour.
std::int64_t GetFirstLocalHourTime(std::int64_t time);
std::int64_t GetFirstLocalDayTime(std::int64_t time);
std::int64_t GetFirstLocalMonthTime(std::int64_t time);
std::int64_t GetFirstLocalYearTime(std::int64_t time);
std::int64_t GetLastLocalHourTime(std::int64_t time);
std::int64_t GetLastLocalDayTime(std::int64_t time);
std::int64_t GetLastLocalMonthTime(std::int64_t time);
std::int64_t GetLastLocalYearTime(std::int64_t time);

std::int64_t GetFirstGMTHourTime(std::int64_t time);
std::int64_t GetFirstGMTDayTime(std::int64_t time);
std::int64_t GetFirstGMTMonthTime(std::int64_t time);
std::int64_t GetFirstGMTYearTime(std::int64_t time);
std::int64_t GetLastGMTHourTime(std::int64_t time);
std::int64_t GetLastGMTDayTime(std::int64_t time);
std::int64_t GetLastGMTMonthTime(std::int64_t time);
std::int64_t GetLastGMTYearTime(std::int64_t time);

// The same clock reading on the neighbouring local day or month. A day step lands on the
// neighbouring day that exists, on its last second where the reading is left out at the end of that
// day. A month step past the end of a month lands on its last day.
std::int64_t GetPrevLocalDayTime(std::int64_t time);
std::int64_t GetPrevLocalMonthTime(std::int64_t time);
std::int64_t GetNextLocalDayTime(std::int64_t time);
std::int64_t GetNextLocalMonthTime(std::int64_t time);

std::int64_t GetPrevGMTDayTime(std::int64_t time);
std::int64_t GetPrevGMTMonthTime(std::int64_t time);
std::int64_t GetPrevGMTYearTime(std::int64_t time);
std::int64_t GetNextGMTDayTime(std::int64_t time);
std::int64_t GetNextGMTMonthTime(std::int64_t time);
std::int64_t GetNextGMTYearTime(std::int64_t time);

// The time plus the local offset at it, and the instant whose local reading is the time read as
// GMT.
std::int64_t GMTToLocalDayTime(std::int64_t time);
std::int64_t LocalToGMTDayTime(std::int64_t time);

// Single fields, as the functions that split give them.
int GetLocalYear(std::int64_t time);
int GetLocalMonth(std::int64_t time);
int GetLocalDay(std::int64_t time);
int GetLocalHour(std::int64_t time);
int GetGMTYear(std::int64_t time);
int GetGMTMonth(std::int64_t time);
int GetGMTDay(std::int64_t time);
int GetGMTHour(std::int64_t time);
int GetGMTMin(std::int64_t time);
int GetWinterYear(std::int64_t time);
int GetWinterMonth(std::int64_t time);
int GetWinterDay(std::int64_t time);
int GetWinterHour(std::int64_t time);

// Step a calendar date by one day in place. A date that is none carries over first; one with a year
// beyond reach stays as it is.
void GetPrevDayTime(int& year, int& month, int& day);
void GetNextDayTime(int& year, int& month, int& day);

// The time that a request for the span data of this number bears: the first second of the time's
// local hour plus number seconds.
std::int64_t MakeSpanRequestTime(std::int64_t time, int number);

}  // namespace kalvex::value
