#include "operands/TimeProperties.h"

#include <algorithm>

#include "value/LocalTime.h"

namespace kalvex::operands {

namespace {

using enum TimePropertyKind;
using GetField = int (*)(std::int64_t);
using StepDate = void (*)(int&, int&, int&);

int GetDayOfWeek(std::int64_t time) {
    return value::SplitLocalTime(time).dayOfWeek;
}
int GetMinute(std::int64_t time) {
    return value::SplitLocalTime(time).minute;
}
int GetSecond(std::int64_t time) {
    return value::SplitLocalTime(time).second;
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
    if (!value::LocalCalendar(time, at)) return time;
    value::TimeFields fields{at.tm_year + 1900, at.tm_mon + 1, at.tm_mday,
                             at.tm_hour,        at.tm_min,     at.tm_sec};
    Step(fields.year, fields.month, fields.day);
    return value::MakeLocalTime(fields);
}

// clang-format off
constexpr TimeProperty kTimeProperties[] = {
    {".DAYOFWEEK", Int, Field<GetDayOfWeek>, "Bieżący dzień tygodnia"},
    {".FIRSTLOCALHOUR", Time, value::GetFirstLocalHourTime, ""},
    {".FIRSTLOCALDAY", Time, value::GetFirstLocalDayTime, "Pierwsza sekunda bieżącego dnia czasu lokalnego"},
    {".FIRSTLOCALMONTH", Time, value::GetFirstLocalMonthTime, "Pierwsza sekunda bieżącego miesiąca czasu lokalnego"},
    {".FIRSTLOCALYEAR", Time, value::GetFirstLocalYearTime, "Pierwsza sekunda bieżącego roku czasu lokalnego"},
    {".FIRSTGMTHOUR", Time, value::GetFirstGMTHourTime, "Pierwsza sekunda bieżącej godziny GMT"},
    {".FIRSTGMTDAY", Time, value::GetFirstGMTDayTime, "Pierwsza sekunda bieżącego dnia GMT"},
    {".FIRSTGMTMONTH", Time, value::GetFirstGMTMonthTime, "Pierwsza sekunda bieżącego miesiąca GMT"},
    {".FIRSTGMTYEAR", Time, value::GetFirstGMTYearTime, "Pierwsza sekunda bieżącego roku GMT"},
    {".LASTLOCALHOUR", Time, value::GetLastLocalHourTime, "Ostatnia sekunda bieżącej godziny czasu lokalnego"},
    {".LASTLOCALDAY", Time, value::GetLastLocalDayTime, "Ostatnia sekunda bieżącego dnia czasu lokalnego"},
    {".LASTLOCALMONTH", Time, value::GetLastLocalMonthTime, "Ostatnia sekunda bieżącego miesiąca czasu lokalnego"},
    {".LASTLOCALYEAR", Time, value::GetLastLocalYearTime, "Ostatnia sekunda bieżącego roku czasu lokalnego"},
    {".LASTGMTHOUR", Time, value::GetLastGMTHourTime, "Ostatnia sekunda bieżącej godziny GMT"},
    {".LASTGMTDAY", Time, value::GetLastGMTDayTime, "Ostatnia sekunda bieżącego dnia GMT"},
    {".LASTGMTMONTH", Time, value::GetLastGMTMonthTime, "Ostatnia sekunda bieżącego miesiąca GMT"},
    {".LASTGMTYEAR", Time, value::GetLastGMTYearTime, "Ostatnia sekunda bieżącego roku GMT"},
    {".PREVDAY", Time, DateAway<value::GetPrevDayTime>, "Bieżąca chwila poprzedniego dnia"},
    {".PREVLOCALDAY", Time, value::GetPrevLocalDayTime, "Bieżąca chwila poprzedniego dnia czasu lokalnego"},
    {".PREVLOCALMONTH", Time, value::GetPrevLocalMonthTime, "Bieżąca chwila poprzedniego miesiąca czasu lokalnego"},
    {".PREVGMTDAY", Time, value::GetPrevGMTDayTime, "Bieżąca chwila poprzedniego dnia GMT"},
    {".PREVGMTMONTH", Time, value::GetPrevGMTMonthTime, "Bieżąca chwila poprzedniego miesiąca GMT"},
    {".PREVGMTYEAR", Time, value::GetPrevGMTYearTime, "Bieżąca chwila poprzedniego roku GMT"},
    {".NEXTDAY", Time, DateAway<value::GetNextDayTime>, "Bieżąca chwila następnego dnia"},
    {".NEXTLOCALDAY", Time, value::GetNextLocalDayTime, "Bieżąca chwila następnego dnia czasu lokalnego"},
    {".NEXTLOCALMONTH", Time, value::GetNextLocalMonthTime, "Bieżąca chwila następnego miesiąca czasu lokalnego"},
    {".NEXTGMTDAY", Time, value::GetNextGMTDayTime, "Bieżąca chwila następnego dnia GMT"},
    {".NEXTGMTMONTH", Time, value::GetNextGMTMonthTime, "Bieżąca chwila następnego miesiąca GMT"},
    {".NEXTGMTYEAR", Time, value::GetNextGMTYearTime, "Bieżąca chwila następnego roku GMT"},
    {".GMTTOLOCAL", Time, value::GMTToLocalDayTime, "Konwersja GMT na czas lokalny"},
    {".LOCALTOGMT", Time, value::LocalToGMTDayTime, "Konwersja czasu lokalnego na GMT"},
    {".SEC", Int, Field<GetSecond>, "Bieżąca sekunda"},
    {".MIN", Int, Field<GetMinute>, "Bieżąca minuta"},
    {".MIN.SEC", Int, MinuteSecond<GetMinute>, ""},
    {".GMTMIN", Int, Field<value::GetGMTMin>, "Bieżąca minuta GMT"},
    {".GMTMIN.SEC", Int, MinuteSecond<value::GetGMTMin>, ""},
    {".HOUR", Int, Field<value::GetLocalHour>, "Bieżąca godzina"},
    {".HOUR.MIN", Int, HourMinute<value::GetLocalHour, GetMinute>, ""},
    {".HOUR.MIN.SEC", Int, HourMinuteSecond<value::GetLocalHour, GetMinute>, ""},
    {".GMTHOUR", Int, Field<value::GetGMTHour>, "Bieżąca godzina GMT"},
    {".GMTHOUR.GMTMIN", Int, HourMinute<value::GetGMTHour, value::GetGMTMin>, ""},
    {".GMTHOUR.GMTMIN.SEC", Int, HourMinuteSecond<value::GetGMTHour, value::GetGMTMin>, ""},
    {".LOCALHOUR", Int, Field<value::GetLocalHour>, "Bieżąca godzina czasu lokalnego"},
    {".LOCALHOUR.MIN", Int, HourMinute<value::GetLocalHour, GetMinute>, ""},
    {".LOCALHOUR.MIN.SEC", Int, HourMinuteSecond<value::GetLocalHour, GetMinute>, ""},
    {".WINTERHOUR", Int, Field<value::GetWinterHour>, "Bieżąca godzina czasu zimowego"},
    {".WINTERHOUR.MIN", Int, HourMinute<value::GetWinterHour, GetMinute>, ""},
    {".WINTERHOUR.MIN.SEC", Int, HourMinuteSecond<value::GetWinterHour, GetMinute>, ""},
    {".DAY", Int, Field<value::GetLocalDay>, "Bieżący dzień"},
    {".GMTDAY", Int, Field<value::GetGMTDay>, "Bieżący dzień GMT"},
    {".LOCALDAY", Int, Field<value::GetLocalDay>, "Bieżący dzień czasu lokalnego"},
    {".WINTERDAY", Int, Field<value::GetWinterDay>, "Bieżący dzień czasu zimowego"},
    {".MONTH", Int, Field<value::GetLocalMonth>, "Bieżąca miesiąc"},
    {".GMTMONTH", Int, Field<value::GetGMTMonth>, "Bieżący miesiąc GMT"},
    {".LOCALMONTH", Int, Field<value::GetLocalMonth>, "Bieżący miesiąc czasu lokalnego"},
    {".WINTERMONTH", Int, Field<value::GetWinterMonth>, "Bieżący miesiąc czasu zimowego"},
    {".YEAR", Int, Field<value::GetLocalYear>, ""},
    {".GMTYEAR", Int, Field<value::GetGMTYear>, "Bieżący rok GMT"},
    {".LOCALYEAR", Int, Field<value::GetLocalYear>, "Bieżący rok czasu lokalnego"},
    {".WINTERYEAR", Int, Field<value::GetWinterYear>, "Bieżący rok czasu zimowego"},
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

}  // namespace kalvex::operands
