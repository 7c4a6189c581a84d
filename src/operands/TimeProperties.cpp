#include "operands/TimeProperties.h"

#include <algorithm>

#include "value/LocalTime.h"

namespace kalvex {

namespace {

using enum TimePropertyKind;
using GetField = int (*)(std::int64_t);
using StepDate = void (*)(int&, int&, int&);

int GetDayOfWeek(std::int64_t time) {
    return SplitLocalTime(time).dayOfWeek;
}
int GetMinute(std::int64_t time) {
    return SplitLocalTime(time).minute;
}
int GetSecond(std::int64_t time) {
    return SplitLocalTime(time).second;
}

template <GetField Get>
std::int64_t Field(std::int64_t time) {
    return Get(time);
}

template <GetField GetMin>
std::int64_t MinuteSecond(std::int64_t time) {
    return GetMin(time) * 60 + GetSecond(time);
}

template <GetField GetHour, GetField GetMin>
std::int64_t HourMinute(std::int64_t time) {
    return GetHour(time) * 60 + GetMin(time);
}

template <GetField GetHour, GetField GetMin>
std::int64_t HourMinuteSecond(std::int64_t time) {
    return GetHour(time) * 3600 + GetMin(time) * 60 + GetSecond(time);
}

// The same local reading on the date that the step gives.
template <StepDate Step>
std::int64_t DateAway(std::int64_t time) {
    std::tm at;
    if (!LocalCalendar(time, at)) return time;
    TimeFields fields{at.tm_year + 1900, at.tm_mon + 1, at.tm_mday,
                      at.tm_hour,        at.tm_min,     at.tm_sec};
    Step(fields.year, fields.month, fields.day);
    return MakeLocalTime(fields);
}

// clang-format off
constexpr TimeProperty kTimeProperties[] = {
    {".DAYOFWEEK", Int, Field<GetDayOfWeek>, "Bieżący dzień tygodnia"},
    {".FIRSTLOCALHOUR", Time, GetFirstLocalHourTime, ""},
    {".FIRSTLOCALDAY", Time, GetFirstLocalDayTime, "Pierwsza sekunda bieżącego dnia czasu lokalnego"},
    {".FIRSTLOCALMONTH", Time, GetFirstLocalMonthTime, "Pierwsza sekunda bieżącego miesiąca czasu lokalnego"},
    {".FIRSTLOCALYEAR", Time, GetFirstLocalYearTime, "Pierwsza sekunda bieżącego roku czasu lokalnego"},
    {".FIRSTGMTHOUR", Time, GetFirstGMTHourTime, "Pierwsza sekunda bieżącej godziny GMT"},
    {".FIRSTGMTDAY", Time, GetFirstGMTDayTime, "Pierwsza sekunda bieżącego dnia GMT"},
    {".FIRSTGMTMONTH", Time, GetFirstGMTMonthTime, "Pierwsza sekunda bieżącego miesiąca GMT"},
    {".FIRSTGMTYEAR", Time, GetFirstGMTYearTime, "Pierwsza sekunda bieżącego roku GMT"},
    {".LASTLOCALHOUR", Time, GetLastLocalHourTime, "Ostatnia sekunda bieżącej godziny czasu lokalnego"},
    {".LASTLOCALDAY", Time, GetLastLocalDayTime, "Ostatnia sekunda bieżącego dnia czasu lokalnego"},
    {".LASTLOCALMONTH", Time, GetLastLocalMonthTime, "Ostatnia sekunda bieżącego miesiąca czasu lokalnego"},
    {".LASTLOCALYEAR", Time, GetLastLocalYearTime, "Ostatnia sekunda bieżącego roku czasu lokalnego"},
    {".LASTGMTHOUR", Time, GetLastGMTHourTime, "Ostatnia sekunda bieżącej godziny GMT"},
    {".LASTGMTDAY", Time, GetLastGMTDayTime, "Ostatnia sekunda bieżącego dnia GMT"},
    {".LASTGMTMONTH", Time, GetLastGMTMonthTime, "Ostatnia sekunda bieżącego miesiąca GMT"},
    {".LASTGMTYEAR", Time, GetLastGMTYearTime, "Ostatnia sekunda bieżącego roku GMT"},
    {".PREVDAY", Time, DateAway<GetPrevDayTime>, "Bieżąca chwila poprzedniego dnia"},
    {".PREVLOCALDAY", Time, GetPrevLocalDayTime, "Bieżąca chwila poprzedniego dnia czasu lokalnego"},
    {".PREVLOCALMONTH", Time, GetPrevLocalMonthTime, "Bieżąca chwila poprzedniego miesiąca czasu lokalnego"},
    {".PREVGMTDAY", Time, GetPrevGMTDayTime, "Bieżąca chwila poprzedniego dnia GMT"},
    {".PREVGMTMONTH", Time, GetPrevGMTMonthTime, "Bieżąca chwila poprzedniego miesiąca GMT"},
    {".PREVGMTYEAR", Time, GetPrevGMTYearTime, "Bieżąca chwila poprzedniego roku GMT"},
    {".NEXTDAY", Time, DateAway<GetNextDayTime>, "Bieżąca chwila następnego dnia"},
    {".NEXTLOCALDAY", Time, GetNextLocalDayTime, "Bieżąca chwila następnego dnia czasu lokalnego"},
    {".NEXTLOCALMONTH", Time, GetNextLocalMonthTime, "Bieżąca chwila następnego miesiąca czasu lokalnego"},
    {".NEXTGMTDAY", Time, GetNextGMTDayTime, "Bieżąca chwila następnego dnia GMT"},
    {".NEXTGMTMONTH", Time, GetNextGMTMonthTime, "Bieżąca chwila następnego miesiąca GMT"},
    {".NEXTGMTYEAR", Time, GetNextGMTYearTime, "Bieżąca chwila następnego roku GMT"},
    {".GMTTOLOCAL", Time, GMTToLocalDayTime, "Konwersja GMT na czas lokalny"},
    {".LOCALTOGMT", Time, LocalToGMTDayTime, "Konwersja czasu lokalnego na GMT"},
    {".SEC", Int, Field<GetSecond>, "Bieżąca sekunda"},
    {".MIN", Int, Field<GetMinute>, "Bieżąca minuta"},
    {".MIN.SEC", Int, MinuteSecond<GetMinute>, ""},
    {".GMTMIN", Int, Field<GetGMTMin>, "Bieżąca minuta GMT"},
    {".GMTMIN.SEC", Int, MinuteSecond<GetGMTMin>, ""},
    {".HOUR", Int, Field<GetLocalHour>, "Bieżąca godzina"},
    {".HOUR.MIN", Int, HourMinute<GetLocalHour, GetMinute>, ""},
    {".HOUR.MIN.SEC", Int, HourMinuteSecond<GetLocalHour, GetMinute>, ""},
    {".GMTHOUR", Int, Field<GetGMTHour>, "Bieżąca godzina GMT"},
    {".GMTHOUR.GMTMIN", Int, HourMinute<GetGMTHour, GetGMTMin>, ""},
    {".GMTHOUR.GMTMIN.SEC", Int, HourMinuteSecond<GetGMTHour, GetGMTMin>, ""},
    {".LOCALHOUR", Int, Field<GetLocalHour>, "Bieżąca godzina czasu lokalnego"},
    {".LOCALHOUR.MIN", Int, HourMinute<GetLocalHour, GetMinute>, ""},
    {".LOCALHOUR.MIN.SEC", Int, HourMinuteSecond<GetLocalHour, GetMinute>, ""},
    {".WINTERHOUR", Int, Field<GetWinterHour>, "Bieżąca godzina czasu zimowego"},
    {".WINTERHOUR.MIN", Int, HourMinute<GetWinterHour, GetMinute>, ""},
    {".WINTERHOUR.MIN.SEC", Int, HourMinuteSecond<GetWinterHour, GetMinute>, ""},
    {".DAY", Int, Field<GetLocalDay>, "Bieżący dzień"},
    {".GMTDAY", Int, Field<GetGMTDay>, "Bieżący dzień GMT"},
    {".LOCALDAY", Int, Field<GetLocalDay>, "Bieżący dzień czasu lokalnego"},
    {".WINTERDAY", Int, Field<GetWinterDay>, "Bieżący dzień czasu zimowego"},
    {".MONTH", Int, Field<GetLocalMonth>, "Bieżąca miesiąc"},
    {".GMTMONTH", Int, Field<GetGMTMonth>, "Bieżący miesiąc GMT"},
    {".LOCALMONTH", Int, Field<GetLocalMonth>, "Bieżący miesiąc czasu lokalnego"},
    {".WINTERMONTH", Int, Field<GetWinterMonth>, "Bieżący miesiąc czasu zimowego"},
    {".YEAR", Int, Field<GetLocalYear>, ""},
    {".GMTYEAR", Int, Field<GetGMTYear>, "Bieżący rok GMT"},
    {".LOCALYEAR", Int, Field<GetLocalYear>, "Bieżący rok czasu lokalnego"},
    {".WINTERYEAR", Int, Field<GetWinterYear>, "Bieżący rok czasu zimowego"},
};
// clang-format on

constexpr std::uint32_t Bit(char letter) {
    return letter >= 'A' && letter <= 'Z' ? std::uint32_t{1} << (letter - 'A') : 0;
}

// The letters that stand behind the leading dots: most dots of operands are ruled out by them.
constexpr std::uint32_t kFirstLetters = [] {
    std::uint32_t letters = 0;
    for (const TimeProperty& row : kTimeProperties) letters |= Bit(row.name[1]);
    return letters;
}();

}  // namespace

std::span<const TimeProperty> TimeProperties() {
    return kTimeProperties;
}

const TimeProperty* FindTimeProperty(std::string_view rest) {
    const auto row = std::ranges::find(kTimeProperties, rest, &TimeProperty::name);
    return row == std::end(kTimeProperties) ? nullptr : row;
}

bool MentionsTimeProperty(std::string_view text) {
    for (std::size_t dot = text.find('.', 1); dot != std::string_view::npos;
         dot = text.find('.', dot + 1)) {
        const std::string_view tail = text.substr(dot);
        if (tail.size() < 2 || (Bit(tail[1]) & kFirstLetters) == 0) continue;
        for (const TimeProperty& row : kTimeProperties) {
            if (tail.starts_with(row.name) && !text.starts_with(row.name)) return true;
        }
    }
    return false;
}

}  // namespace kalvex
