#include "value/LocalTime.h"

#include <gtest/gtest.h>

#include <climits>
#include <ostream>
#include <string>
#include <vector>

#include "support/zone_scope.h"

namespace kalvex::value {

void PrintTo(const TimeFields& f, std::ostream* out) {
    *out << f.year << '-' << f.month << '-' << f.day << ' ' << f.hour << ':' << f.minute << ':'
         << f.second << " day " << f.dayOfWeek;
}

namespace {

using TimeFunction = std::int64_t (*)(std::int64_t);

// Clocks go from 02:00 to 03:00 at 01:00 GMT on 2024-03-31, and back from 03:00 to 02:00 at 01:00
// GMT on 2024-10-27.
class LocalTimeTest : public testing::Test {
  private:
    support::ZoneScope m_zone{"Europe/Warsaw"};
};

using LocalTimeNoFieldsTest = LocalTimeTest;

constexpr std::int64_t kSpring = support::Gmt(2024, 3, 31, 1);
constexpr std::int64_t kAutumn = support::Gmt(2024, 10, 27, 1);

TEST(LocalTimeLargestTest, IsTheEndOf2999InWinterTimeOfWarsaw) {
    EXPECT_EQ(kLargestTime, support::Gmt(2999, 12, 31, 22, 59, 59));
}

TEST_F(LocalTimeTest, SplitsIntoLocalFields) {
    EXPECT_EQ(SplitLocalTime(0), (TimeFields{1970, 1, 1, 1, 0, 0, 5}));
    EXPECT_EQ(SplitLocalTime(support::Gmt(2024, 2, 29, 22, 59, 59)),
              (TimeFields{2024, 2, 29, 23, 59, 59, 5}));
    EXPECT_EQ(SplitLocalTime(support::Gmt(2024, 6, 30, 22, 30, 45)),
              (TimeFields{2024, 7, 1, 0, 30, 45, 2}));
    EXPECT_EQ(SplitLocalTime(kSpring - 1), (TimeFields{2024, 3, 31, 1, 59, 59, 1}));
    EXPECT_EQ(SplitLocalTime(kSpring), (TimeFields{2024, 3, 31, 3, 0, 0, 1}));
    EXPECT_EQ(SplitLocalTime(kAutumn - 1), (TimeFields{2024, 10, 27, 2, 59, 59, 1}));
    EXPECT_EQ(SplitLocalTime(kAutumn), (TimeFields{2024, 10, 27, 2, 0, 0, 1}));
    EXPECT_EQ(SplitLocalTime(kLargestTime), (TimeFields{2999, 12, 31, 23, 59, 59, 3}));
}

TEST_F(LocalTimeTest, SplitsIntoGMTFields) {
    EXPECT_EQ(SplitGMTTime(0), (TimeFields{1970, 1, 1, 0, 0, 0, 5}));
    EXPECT_EQ(SplitGMTTime(support::Gmt(2024, 6, 30, 22, 30, 45)),
              (TimeFields{2024, 6, 30, 22, 30, 45, 1}));
}

TEST_F(LocalTimeTest, SplitsIntoWinterFieldsInEverySeason) {
    EXPECT_EQ(SplitWinterTime(support::Gmt(2024, 1, 15, 11, 0, 0)),
              (TimeFields{2024, 1, 15, 12, 0, 0, 2}));
    EXPECT_EQ(SplitWinterTime(support::Gmt(2024, 6, 30, 22, 30, 45)),
              (TimeFields{2024, 6, 30, 23, 30, 45, 1}));
    EXPECT_EQ(SplitWinterTime(kSpring), (TimeFields{2024, 3, 31, 2, 0, 0, 1}));
    EXPECT_EQ(SplitWinterTime(kAutumn - 1), (TimeFields{2024, 10, 27, 1, 59, 59, 1}));
    EXPECT_EQ(SplitWinterTime(kAutumn), (TimeFields{2024, 10, 27, 2, 0, 0, 1}));
}

TEST_F(LocalTimeNoFieldsTest, OfANegativeTime) {
    const TimeFields none{0, 0, 0, -1, -1, -1, 0};
    for (const std::int64_t time : {std::int64_t{-1}, std::int64_t{-86400}, INT64_MIN}) {
        EXPECT_EQ(SplitLocalTime(time), none);
        EXPECT_EQ(SplitGMTTime(time), none);
        EXPECT_EQ(SplitWinterTime(time), none);
    }
    EXPECT_EQ(GetLocalYear(-1), 0);
    EXPECT_EQ(GetGMTDay(-1), 0);
    EXPECT_EQ(GetGMTMin(-1), -1);
    EXPECT_EQ(GetWinterMonth(-1), 0);
    EXPECT_EQ(GetWinterHour(-1), -1);
}

TEST_F(LocalTimeNoFieldsTest, OfATimeTooFarAway) {
    const TimeFields none{0, 0, 0, -1, -1, -1, 0};
    for (const std::int64_t time : {INT64_MAX, std::int64_t{60'000'000'000'000'001}}) {
        EXPECT_EQ(SplitLocalTime(time), none);
        EXPECT_EQ(SplitGMTTime(time), none);
        EXPECT_EQ(SplitWinterTime(time), none);
        std::tm at;
        EXPECT_FALSE(LocalCalendar(time, at));
    }
}

TEST_F(LocalTimeNoFieldsTest, LeaveATimeAsItIs) {
    constexpr TimeFunction kFunctions[] = {
        GetFirstLocalHourTime, GetFirstLocalDayTime,  GetFirstLocalMonthTime, GetFirstLocalYearTime,
        GetLastLocalHourTime,  GetLastLocalDayTime,   GetLastLocalMonthTime,  GetLastLocalYearTime,
        GetFirstGMTHourTime,   GetFirstGMTDayTime,    GetFirstGMTMonthTime,   GetFirstGMTYearTime,
        GetLastGMTHourTime,    GetLastGMTDayTime,     GetLastGMTMonthTime,    GetLastGMTYearTime,
        GetPrevLocalDayTime,   GetPrevLocalMonthTime, GetNextLocalDayTime,    GetNextLocalMonthTime,
        GetPrevGMTDayTime,     GetPrevGMTMonthTime,   GetPrevGMTYearTime,     GetNextGMTDayTime,
        GetNextGMTMonthTime,   GetNextGMTYearTime,    GMTToLocalDayTime,      LocalToGMTDayTime,
    };
    for (const TimeFunction function : kFunctions) {
        EXPECT_EQ(function(INT64_MAX), INT64_MAX);
        EXPECT_EQ(function(INT64_MIN), INT64_MIN);
    }
    EXPECT_EQ(MakeSpanRequestTime(INT64_MAX, INT_MAX), INT64_MAX);
    EXPECT_EQ(MakeSpanRequestTime(INT64_MIN, INT_MIN), INT64_MIN);
}

TEST_F(LocalTimeTest, CalendarOfNegativeTimesHolds) {
    EXPECT_EQ(GetFirstGMTDayTime(-1), -86400);
    EXPECT_EQ(GetFirstGMTHourTime(-1), -3600);
    EXPECT_EQ(GetLastGMTHourTime(-3600), -1);
    EXPECT_EQ(GetFirstLocalDayTime(-1), -3600);
    EXPECT_EQ(GetPrevLocalDayTime(-7200), -7200 - 86400);
    EXPECT_EQ(GetPrevGMTYearTime(0), support::Gmt(1969, 1, 1));
}

TEST_F(LocalTimeTest, MakesTimesOfLocalReadings) {
    EXPECT_EQ(MakeLocalTime({2024}), support::Gmt(2023, 12, 31, 23));
    EXPECT_EQ(MakeLocalTime({1970, 1, 1, 1}), 0);
    EXPECT_EQ(MakeLocalTime({2024, 7, 5, 7, 8, 9}), support::Gmt(2024, 7, 5, 5, 8, 9));
    EXPECT_EQ(MakeLocalTime({2024, 12, 31, 23, 59, 59}), support::Gmt(2024, 12, 31, 22, 59, 59));
    EXPECT_EQ(MakeLocalTime({2999, 12, 31, 23, 59, 59}), kLargestTime);
}

TEST_F(LocalTimeTest, RepeatedReadingMeansItsFirstOccurrenceWhateverWasAskedBefore) {
    EXPECT_EQ(MakeLocalTime({2024, 10, 27, 2, 30, 0}), support::Gmt(2024, 10, 27, 0, 30));
    MakeLocalTime({2024, 12, 24});
    MakeWinterTime({2024, 10, 27, 2, 30, 0});
    EXPECT_EQ(MakeLocalTime({2024, 10, 27, 2, 30, 0}), support::Gmt(2024, 10, 27, 0, 30));
    EXPECT_EQ(MakeLocalTime({2024, 10, 27, 2, 0, 0}), support::Gmt(2024, 10, 27, 0));
    EXPECT_EQ(MakeLocalTime({2024, 10, 27, 2, 59, 59}), support::Gmt(2024, 10, 27, 0, 59, 59));
    EXPECT_EQ(MakeLocalTime({2024, 10, 27, 1, 59, 59}), support::Gmt(2024, 10, 26, 23, 59, 59));
    EXPECT_EQ(MakeLocalTime({2024, 10, 27, 3, 0, 0}), support::Gmt(2024, 10, 27, 2));
}

TEST_F(LocalTimeTest, MissingReadingTakesTheOffsetBeforeTheChangeWhateverWasAskedBefore) {
    EXPECT_EQ(MakeLocalTime({2024, 3, 31, 2, 30, 0}), support::Gmt(2024, 3, 31, 1, 30));
    MakeLocalTime({2024, 7, 1});
    EXPECT_EQ(MakeLocalTime({2024, 3, 31, 2, 30, 0}), support::Gmt(2024, 3, 31, 1, 30));
    EXPECT_EQ(GetLocalHour(MakeLocalTime({2024, 3, 31, 2, 30, 0})), 3);
    EXPECT_EQ(MakeLocalTime({2024, 3, 31, 2, 0, 0}), kSpring);
    EXPECT_EQ(MakeLocalTime({2024, 3, 31, 1, 59, 59}), kSpring - 1);
    EXPECT_EQ(MakeLocalTime({2024, 3, 31, 3, 0, 0}), kSpring);
}

TEST_F(LocalTimeTest, FieldsOutOfBoundsCarryOver) {
    EXPECT_EQ(MakeLocalTime({2024, 2, 31}), support::Gmt(2024, 3, 1, 23));
    EXPECT_EQ(MakeLocalTime({2024, 13, 1}), support::Gmt(2024, 12, 31, 23));
    EXPECT_EQ(MakeLocalTime({2024, 0, 1}), support::Gmt(2023, 11, 30, 23));
    EXPECT_EQ(MakeLocalTime({2024, -12, 1}), support::Gmt(2022, 11, 30, 23));
    EXPECT_EQ(MakeLocalTime({2024, 5, 10, 24, 0, 0}), support::Gmt(2024, 5, 10, 22));
    EXPECT_EQ(MakeLocalTime({2024, 5, 10, 0, 0, -1}), support::Gmt(2024, 5, 9, 21, 59, 59));
}

TEST_F(LocalTimeTest, YearBeyondReachGivesMinusOne) {
    EXPECT_EQ(MakeLocalTime({INT_MAX}), -1);
    EXPECT_EQ(MakeLocalTime({INT_MIN}), -1);
    EXPECT_EQ(MakeWinterTime({INT_MAX, INT_MAX, INT_MAX}), -1);
    EXPECT_EQ(MakeLocalTime({INT_MIN, INT_MIN, INT_MIN, INT_MIN, INT_MIN, INT_MIN}), -1);
    // 2147483647 months are 178956970 years and 7 months.
    const std::int64_t late = MakeLocalTime({2000, INT_MAX});
    EXPECT_EQ(GetLocalYear(late), 2000 + 178956970);
    EXPECT_EQ(GetLocalMonth(late), 7);
}

TEST_F(LocalTimeTest, MakesTimesOfWinterReadingsInEverySeason) {
    EXPECT_EQ(MakeWinterTime({2024, 1, 5, 7, 8, 9}), support::Gmt(2024, 1, 5, 6, 8, 9));
    EXPECT_EQ(MakeWinterTime({2024, 7, 5, 7, 8, 9}), support::Gmt(2024, 7, 5, 6, 8, 9));
    EXPECT_EQ(MakeWinterTime({2024, 3, 31, 2, 30, 0}), support::Gmt(2024, 3, 31, 1, 30));
    EXPECT_EQ(MakeWinterTime({2024, 10, 27, 2, 30, 0}), support::Gmt(2024, 10, 27, 1, 30));
    EXPECT_EQ(MakeWinterTime({2024, 1, 5, 24, 0, 0}), support::Gmt(2024, 1, 5, 23));
}

TEST_F(LocalTimeTest, BoundsOfLocalPeriods) {
    const std::int64_t time = support::Gmt(2024, 3, 10, 6, 8, 9);  // 07:08:09
    EXPECT_EQ(GetFirstLocalHourTime(time), support::Gmt(2024, 3, 10, 6));
    EXPECT_EQ(GetLastLocalHourTime(time), support::Gmt(2024, 3, 10, 6, 59, 59));
    EXPECT_EQ(GetFirstLocalDayTime(time), support::Gmt(2024, 3, 9, 23));
    EXPECT_EQ(GetLastLocalDayTime(time), support::Gmt(2024, 3, 10, 22, 59, 59));
    EXPECT_EQ(GetFirstLocalMonthTime(time), support::Gmt(2024, 2, 29, 23));
    EXPECT_EQ(GetLastLocalMonthTime(time), support::Gmt(2024, 3, 31, 21, 59, 59));
    EXPECT_EQ(GetFirstLocalYearTime(time), support::Gmt(2023, 12, 31, 23));
    EXPECT_EQ(GetLastLocalYearTime(time), support::Gmt(2024, 12, 31, 22, 59, 59));
}

TEST_F(LocalTimeTest, BoundsOfGMTPeriods) {
    const std::int64_t time = support::Gmt(2024, 2, 29, 23, 8, 9);  // already March in Warsaw
    EXPECT_EQ(GetFirstGMTHourTime(time), support::Gmt(2024, 2, 29, 23));
    EXPECT_EQ(GetLastGMTHourTime(time), support::Gmt(2024, 2, 29, 23, 59, 59));
    EXPECT_EQ(GetFirstGMTDayTime(time), support::Gmt(2024, 2, 29));
    EXPECT_EQ(GetLastGMTDayTime(time), support::Gmt(2024, 2, 29, 23, 59, 59));
    EXPECT_EQ(GetFirstGMTMonthTime(time), support::Gmt(2024, 2, 1));
    EXPECT_EQ(GetLastGMTMonthTime(time), support::Gmt(2024, 2, 29, 23, 59, 59));
    EXPECT_EQ(GetFirstGMTYearTime(time), support::Gmt(2024, 1, 1));
    EXPECT_EQ(GetLastGMTYearTime(time), support::Gmt(2024, 12, 31, 23, 59, 59));
}

TEST_F(LocalTimeTest, FirstSecondOfAPeriodIsItsOwnFirst) {
    const std::int64_t newYear = support::Gmt(2023, 12, 31, 23);
    for (const TimeFunction first : {GetFirstLocalHourTime, GetFirstLocalDayTime,
                                     GetFirstLocalMonthTime, GetFirstLocalYearTime}) {
        EXPECT_EQ(first(newYear), newYear);
    }
    for (const TimeFunction last :
         {GetLastLocalHourTime, GetLastLocalDayTime, GetLastLocalMonthTime, GetLastLocalYearTime}) {
        EXPECT_EQ(last(newYear - 1), newYear - 1);
    }
}

TEST_F(LocalTimeTest, DayOfTheSpringChangeHas23Hours) {
    const std::int64_t noon = support::Gmt(2024, 3, 31, 10);
    EXPECT_EQ(GetFirstLocalDayTime(noon), support::Gmt(2024, 3, 30, 23));
    EXPECT_EQ(GetLastLocalDayTime(noon), support::Gmt(2024, 3, 31, 21, 59, 59));
}

TEST_F(LocalTimeTest, DayOfTheAutumnChangeHas25Hours) {
    const std::int64_t noon = support::Gmt(2024, 10, 27, 11);
    EXPECT_EQ(GetFirstLocalDayTime(noon), support::Gmt(2024, 10, 26, 22));
    EXPECT_EQ(GetLastLocalDayTime(noon), support::Gmt(2024, 10, 27, 22, 59, 59));
}

TEST_F(LocalTimeTest, EachOccurrenceOfTheRepeatedHourIsAnHour) {
    EXPECT_EQ(GetFirstLocalHourTime(support::Gmt(2024, 10, 27, 0, 30)),
              support::Gmt(2024, 10, 27, 0));
    EXPECT_EQ(GetLastLocalHourTime(support::Gmt(2024, 10, 27, 0, 30)),
              support::Gmt(2024, 10, 27, 0, 59, 59));
    EXPECT_EQ(GetFirstLocalHourTime(support::Gmt(2024, 10, 27, 1, 30)),
              support::Gmt(2024, 10, 27, 1));
    EXPECT_EQ(GetLastLocalHourTime(support::Gmt(2024, 10, 27, 1, 30)),
              support::Gmt(2024, 10, 27, 1, 59, 59));
}

TEST_F(LocalTimeTest, HoursBesideTheMissingOneAreWhole) {
    EXPECT_EQ(GetLastLocalHourTime(support::Gmt(2024, 3, 31, 0, 30)), kSpring - 1);
    EXPECT_EQ(GetFirstLocalHourTime(support::Gmt(2024, 3, 31, 1, 30)), kSpring);
}

TEST_F(LocalTimeTest, LocalDayStepsKeepTheClockReading) {
    EXPECT_EQ(GetNextLocalDayTime(support::Gmt(2024, 3, 30, 11)), support::Gmt(2024, 3, 31, 10));
    EXPECT_EQ(GetPrevLocalDayTime(support::Gmt(2024, 3, 31, 10)), support::Gmt(2024, 3, 30, 11));
    EXPECT_EQ(GetNextLocalDayTime(support::Gmt(2024, 10, 26, 10)), support::Gmt(2024, 10, 27, 11));
    EXPECT_EQ(GetPrevLocalDayTime(support::Gmt(2024, 10, 27, 11)), support::Gmt(2024, 10, 26, 10));
    EXPECT_EQ(GetNextLocalDayTime(support::Gmt(2024, 12, 31, 11)), support::Gmt(2025, 1, 1, 11));
    EXPECT_EQ(GetPrevLocalDayTime(support::Gmt(2024, 3, 1, 11)), support::Gmt(2024, 2, 29, 11));
}

TEST_F(LocalTimeTest, LocalDayStepsOntoAMissingOrRepeatedReading) {
    EXPECT_EQ(GetNextLocalDayTime(support::Gmt(2024, 3, 30, 1, 30)),
              support::Gmt(2024, 3, 31, 1, 30));  // 03:30
    EXPECT_EQ(GetPrevLocalDayTime(support::Gmt(2024, 4, 1, 0, 30)),
              support::Gmt(2024, 3, 31, 1, 30));  // 03:30
    EXPECT_EQ(GetNextLocalDayTime(support::Gmt(2024, 10, 26, 0, 30)),
              support::Gmt(2024, 10, 27, 0, 30));  // first
    EXPECT_EQ(GetPrevLocalDayTime(support::Gmt(2024, 10, 28, 1, 30)),
              support::Gmt(2024, 10, 27, 0, 30));  // first
    // From the second 02:30 of the day.
    EXPECT_EQ(GetNextLocalDayTime(support::Gmt(2024, 10, 27, 1, 30)),
              support::Gmt(2024, 10, 28, 1, 30));
}

TEST_F(LocalTimeTest, LocalMonthStepsLandOnTheLastDayAtMost) {
    const std::int64_t endOfMarch = support::Gmt(2024, 3, 31, 3, 6, 7);  // 05:06:07
    EXPECT_EQ(GetPrevLocalMonthTime(endOfMarch), support::Gmt(2024, 2, 29, 4, 6, 7));
    EXPECT_EQ(GetNextLocalMonthTime(endOfMarch), support::Gmt(2024, 4, 30, 3, 6, 7));
    EXPECT_EQ(GetNextLocalMonthTime(support::Gmt(2023, 1, 30, 23)), support::Gmt(2023, 2, 27, 23));
    EXPECT_EQ(GetPrevLocalMonthTime(support::Gmt(2023, 1, 30, 23)), support::Gmt(2022, 12, 30, 23));
    EXPECT_EQ(GetNextLocalMonthTime(support::Gmt(2023, 12, 15, 11)), support::Gmt(2024, 1, 15, 11));
    EXPECT_EQ(GetNextLocalMonthTime(support::Gmt(2024, 2, 29, 1, 30)),
              support::Gmt(2024, 3, 29, 1, 30));
    EXPECT_EQ(GetPrevLocalMonthTime(support::Gmt(2024, 4, 30, 0, 30)),
              support::Gmt(2024, 3, 30, 1, 30));
}

TEST_F(LocalTimeTest, GMTStepsKnowNoDaylightSaving) {
    EXPECT_EQ(GetNextGMTDayTime(support::Gmt(2024, 3, 30, 11)), support::Gmt(2024, 3, 31, 11));
    EXPECT_EQ(GetPrevGMTDayTime(support::Gmt(2024, 10, 27, 11)), support::Gmt(2024, 10, 26, 11));
    EXPECT_EQ(GetPrevGMTMonthTime(support::Gmt(2024, 3, 31, 5, 6, 7)),
              support::Gmt(2024, 2, 29, 5, 6, 7));
    EXPECT_EQ(GetNextGMTMonthTime(support::Gmt(2024, 3, 31, 5, 6, 7)),
              support::Gmt(2024, 4, 30, 5, 6, 7));
    EXPECT_EQ(GetNextGMTMonthTime(support::Gmt(2024, 12, 31, 23)), support::Gmt(2025, 1, 31, 23));
    EXPECT_EQ(GetPrevGMTYearTime(support::Gmt(2024, 2, 29, 12)), support::Gmt(2023, 2, 28, 12));
    EXPECT_EQ(GetNextGMTYearTime(support::Gmt(2024, 2, 29, 12)), support::Gmt(2025, 2, 28, 12));
    EXPECT_EQ(GetNextGMTYearTime(support::Gmt(2023, 2, 28, 12)), support::Gmt(2024, 2, 28, 12));
}

TEST_F(LocalTimeTest, ShiftsByTheOffsetAtTheInstant) {
    EXPECT_EQ(GMTToLocalDayTime(kSpring - 1), kSpring - 1 + 3600);
    EXPECT_EQ(GMTToLocalDayTime(kSpring), kSpring + 7200);
    EXPECT_EQ(LocalToGMTDayTime(support::Gmt(2024, 1, 10, 12)), support::Gmt(2024, 1, 10, 11));
    EXPECT_EQ(LocalToGMTDayTime(support::Gmt(2024, 7, 10, 12)), support::Gmt(2024, 7, 10, 10));
    EXPECT_EQ(LocalToGMTDayTime(support::Gmt(2024, 3, 31, 2, 30)),
              support::Gmt(2024, 3, 31, 1, 30));
    EXPECT_EQ(LocalToGMTDayTime(support::Gmt(2024, 10, 27, 2, 30)),
              support::Gmt(2024, 10, 27, 0, 30));
}

TEST_F(LocalTimeTest, SingleFields) {
    const std::int64_t newYear = support::Gmt(2023, 12, 31, 23, 45, 6);
    EXPECT_EQ(GetLocalYear(newYear), 2024);
    EXPECT_EQ(GetLocalMonth(newYear), 1);
    EXPECT_EQ(GetLocalDay(newYear), 1);
    EXPECT_EQ(GetLocalHour(newYear), 0);
    EXPECT_EQ(GetGMTYear(newYear), 2023);
    EXPECT_EQ(GetGMTMonth(newYear), 12);
    EXPECT_EQ(GetGMTDay(newYear), 31);
    EXPECT_EQ(GetGMTHour(newYear), 23);
    EXPECT_EQ(GetGMTMin(newYear), 45);
    const std::int64_t july = support::Gmt(2024, 6, 30, 22, 30);
    EXPECT_EQ(GetWinterYear(july), 2024);
    EXPECT_EQ(GetWinterMonth(july), 6);
    EXPECT_EQ(GetWinterDay(july), 30);
    EXPECT_EQ(GetWinterHour(july), 23);
}

std::string Stepped(void (*step)(int&, int&, int&), int year, int month, int day) {
    step(year, month, day);
    return std::to_string(year) + "-" + std::to_string(month) + "-" + std::to_string(day);
}

TEST(LocalTimeStepsTest, CrossMonthAndYearEnds) {
    EXPECT_EQ(Stepped(GetNextDayTime, 2024, 2, 28), "2024-2-29");
    EXPECT_EQ(Stepped(GetNextDayTime, 2024, 2, 29), "2024-3-1");
    EXPECT_EQ(Stepped(GetNextDayTime, 2023, 2, 28), "2023-3-1");
    EXPECT_EQ(Stepped(GetNextDayTime, 2100, 2, 28), "2100-3-1");
    EXPECT_EQ(Stepped(GetNextDayTime, 2024, 12, 31), "2025-1-1");
    EXPECT_EQ(Stepped(GetPrevDayTime, 2024, 3, 1), "2024-2-29");
    EXPECT_EQ(Stepped(GetPrevDayTime, 2025, 1, 1), "2024-12-31");
    EXPECT_EQ(Stepped(GetPrevDayTime, 1970, 1, 1), "1969-12-31");
}

TEST(LocalTimeStepsTest, DateThatIsNoneCarriesOverFirst) {
    EXPECT_EQ(Stepped(GetNextDayTime, 2024, 2, 31), "2024-3-3");
    EXPECT_EQ(Stepped(GetPrevDayTime, 2024, 13, 1), "2024-12-31");
    EXPECT_EQ(Stepped(GetPrevDayTime, INT_MAX, 5, 6), "2147483647-5-6");
}

TEST_F(LocalTimeTest, SpanRequestCountsFromTheFirstSecondOfTheHour) {
    EXPECT_EQ(MakeSpanRequestTime(support::Gmt(2024, 3, 10, 6, 8, 9), 5),
              support::Gmt(2024, 3, 10, 6, 0, 5));
    EXPECT_EQ(MakeSpanRequestTime(support::Gmt(2023, 12, 31, 23), 0),
              support::Gmt(2023, 12, 31, 23));
    EXPECT_EQ(MakeSpanRequestTime(support::Gmt(2024, 10, 27, 1, 30), 1),
              support::Gmt(2024, 10, 27, 1, 0, 1));
    EXPECT_EQ(MakeSpanRequestTime(support::Gmt(2024, 3, 10, 6), -1),
              support::Gmt(2024, 3, 10, 5, 59, 59));
}

TEST(LocalTimeZoneTest, WithoutDaylightSavingHasItsHoursOffTheGMTHours) {
    const support::ZoneScope zone("Asia/Kolkata");  // +05:30
    const std::int64_t time = support::Gmt(2024, 3, 9, 18, 40, 20);
    EXPECT_EQ(SplitLocalTime(time), (TimeFields{2024, 3, 10, 0, 10, 20, 1}));
    EXPECT_EQ(SplitWinterTime(time), SplitLocalTime(time));
    EXPECT_EQ(GetFirstLocalHourTime(time), support::Gmt(2024, 3, 9, 18, 30));
    EXPECT_EQ(GetLastLocalHourTime(time), support::Gmt(2024, 3, 9, 19, 29, 59));
    EXPECT_EQ(GetFirstGMTHourTime(time), support::Gmt(2024, 3, 9, 18));
    EXPECT_EQ(GetFirstLocalDayTime(time), support::Gmt(2024, 3, 9, 18, 30));
    EXPECT_EQ(GetNextLocalDayTime(time), time + 86400);
    EXPECT_EQ(MakeLocalTime({2024, 3, 10, 0, 10, 20}), time);
    EXPECT_EQ(MakeWinterTime({2024, 3, 10, 0, 10, 20}), time);
    EXPECT_EQ(GMTToLocalDayTime(time), time + 19800);
    EXPECT_EQ(LocalToGMTDayTime(time), time - 19800);
}

TEST(LocalTimeZoneTest, SouthOfTheEquatorHasItsWinterTimeInJuly) {
    const support::ZoneScope zone("Australia/Sydney");  // +10, in summer +11
    const std::int64_t newYear = support::Gmt(2023, 12, 31, 13, 30);
    EXPECT_EQ(SplitLocalTime(newYear), (TimeFields{2024, 1, 1, 0, 30, 0, 2}));
    EXPECT_EQ(SplitWinterTime(newYear), (TimeFields{2023, 12, 31, 23, 30, 0, 1}));
    EXPECT_EQ(GetFirstLocalYearTime(newYear), support::Gmt(2023, 12, 31, 13));
    EXPECT_EQ(SplitWinterTime(support::Gmt(2024, 7, 1, 2)), (TimeFields{2024, 7, 1, 12, 0, 0, 2}));
    EXPECT_EQ(MakeWinterTime({2024, 1, 1, 0, 30, 0}), support::Gmt(2023, 12, 31, 14, 30));
    EXPECT_EQ(MakeLocalTime({2024, 4, 7, 2, 30, 0}), support::Gmt(2024, 4, 6, 15, 30));  // repeated
    EXPECT_EQ(MakeLocalTime({2024, 10, 6, 2, 30, 0}),
              support::Gmt(2024, 10, 5, 16, 30));  // missing
}

TEST(LocalTimeZoneTest, ThatChangesAtMidnightStartsTheDayWhereItsClockStarts) {
    const support::ZoneScope zone("America/Santiago");
    // On 2024-09-08 clocks go from 00:00 (-04) to 01:00 (-03).
    EXPECT_EQ(GetFirstLocalDayTime(support::Gmt(2024, 9, 8, 15)), support::Gmt(2024, 9, 8, 4));
    EXPECT_EQ(GetLastLocalDayTime(support::Gmt(2024, 9, 7, 15)),
              support::Gmt(2024, 9, 8, 3, 59, 59));
    EXPECT_EQ(GetNextLocalDayTime(support::Gmt(2024, 9, 7, 4, 30)),
              support::Gmt(2024, 9, 8, 4, 30));  // 01:30
    EXPECT_EQ(GetPrevLocalDayTime(support::Gmt(2024, 9, 9, 3, 30)),
              support::Gmt(2024, 9, 8, 4, 30));  // 01:30
    // On 2024-04-07 clocks go from 00:00 (-03) back to 23:00 (-04) of the 6th.
    EXPECT_EQ(GetFirstLocalDayTime(support::Gmt(2024, 4, 7, 15)), support::Gmt(2024, 4, 7, 4));
    EXPECT_EQ(GetLastLocalDayTime(support::Gmt(2024, 4, 6, 15)),
              support::Gmt(2024, 4, 7, 3, 59, 59));
    EXPECT_EQ(MakeLocalTime({2024, 4, 6, 23, 30, 0}), support::Gmt(2024, 4, 7, 2, 30));
    EXPECT_EQ(GetFirstLocalHourTime(support::Gmt(2024, 4, 7, 3, 30)), support::Gmt(2024, 4, 7, 3));
}

TEST(LocalTimeZoneTest, WithHalfAnHourOfShiftRepeatsOrDropsHalfAnHour) {
    const support::ZoneScope zone("Australia/Lord_Howe");
    // On 2024-04-07 at 15:00 GMT (of the 6th) clocks go from 02:00 (+11) back to 01:30 (+10:30).
    EXPECT_EQ(MakeLocalTime({2024, 4, 7, 1, 45, 0}), support::Gmt(2024, 4, 6, 14, 45));
    EXPECT_EQ(MakeLocalTime({2024, 4, 7, 2, 0, 0}), support::Gmt(2024, 4, 6, 15, 30));
    for (const std::int64_t time :
         {support::Gmt(2024, 4, 6, 14, 10), support::Gmt(2024, 4, 6, 14, 45),
          support::Gmt(2024, 4, 6, 15, 15)}) {
        EXPECT_EQ(GetFirstLocalHourTime(time), support::Gmt(2024, 4, 6, 14));
        EXPECT_EQ(GetLastLocalHourTime(time), support::Gmt(2024, 4, 6, 15, 29, 59));
    }
    // On 2024-10-06 at 15:30 GMT (of the 5th) clocks go from 02:00 (+10:30) to 02:30 (+11).
    EXPECT_EQ(MakeLocalTime({2024, 10, 6, 2, 15, 0}), support::Gmt(2024, 10, 5, 15, 45));  // 02:45
    EXPECT_EQ(GetLastLocalHourTime(support::Gmt(2024, 10, 5, 15, 0)),
              support::Gmt(2024, 10, 5, 15, 29, 59));
    EXPECT_EQ(GetFirstLocalHourTime(support::Gmt(2024, 10, 5, 15, 50)),
              support::Gmt(2024, 10, 5, 15, 30));
    EXPECT_EQ(GetLastLocalHourTime(support::Gmt(2024, 10, 5, 15, 30)),
              support::Gmt(2024, 10, 5, 15, 59, 59));
    EXPECT_EQ(SplitWinterTime(support::Gmt(2024, 12, 31, 13)),
              (TimeFields{2024, 12, 31, 23, 30, 0, 3}));
}

TEST(LocalTimeZoneTest, ThatSavesDaylightInWinterOnPaperStillHasItsWinterClock) {
    const support::ZoneScope zone("Europe/Dublin");  // GMT in winter, +01 in summer
    EXPECT_EQ(GetWinterHour(support::Gmt(2024, 1, 10, 12)), 12);
    EXPECT_EQ(GetWinterHour(support::Gmt(2024, 7, 10, 12)), 12);
    EXPECT_EQ(MakeWinterTime({2024, 1, 10, 12}), support::Gmt(2024, 1, 10, 12));
    EXPECT_EQ(MakeWinterTime({2024, 7, 10, 12}), support::Gmt(2024, 7, 10, 12));
}

TEST(LocalTimeZoneTest, ThatChangedItsOffsetHasTheWinterClockOfTheSeason) {
    const support::ZoneScope zone(
        "Europe/Istanbul");  // +02 and in summer +03, from September 2016 +03
    EXPECT_EQ(GetWinterHour(support::Gmt(2016, 8, 20, 12)), 14);
    EXPECT_EQ(GetWinterHour(support::Gmt(2016, 9, 20, 12)), 15);
    EXPECT_EQ(GetWinterHour(support::Gmt(2024, 7, 1, 12)), 15);
}

TEST(LocalTimeZoneTest, WhoseLastSummerHadNoEndHadItsWinterClockInIt) {
    const support::ZoneScope zone("Asia/Amman");  // +02 to 2022-02-25, then +03 for good
    EXPECT_EQ(GetWinterHour(support::Gmt(2022, 2, 10, 12)), 14);
    EXPECT_EQ(GetWinterHour(support::Gmt(2022, 10, 20, 12)), 14);
    EXPECT_EQ(GetWinterHour(support::Gmt(2022, 11, 20, 12)), 15);
    EXPECT_EQ(GetWinterHour(support::Gmt(2012, 12, 20, 12)), 14);  // in a summer of 21 months
}

TEST(LocalTimeZoneTest, ThatChangedInASummerIsAnHourBehindIt) {
    // Clocks go from -06 to -04 in March 2007, and back by one hour in November.
    const support::ZoneScope winamac("America/Indiana/Winamac");
    EXPECT_EQ(GetWinterHour(support::Gmt(2007, 4, 1, 12)), 7);
    {
        // -05 in 1973, a summer of -05 in 1974, -05 again.
        const support::ZoneScope marengo("America/Indiana/Marengo");
        EXPECT_EQ(GetWinterHour(support::Gmt(1974, 6, 1, 12)), 6);
    }
    // From -01 and a summer of 00 to 00 without one.
    const support::ZoneScope danmarkshavn("America/Danmarkshavn");
    EXPECT_EQ(GetWinterHour(support::Gmt(1996, 2, 1, 12)), 12);
}

TEST(LocalTimeZoneTest, ThatLeftOutADayStepsOverIt) {
    const support::ZoneScope zone("Pacific/Apia");  // 2011-12-30 does not exist: -10 became +14
    EXPECT_EQ(GetNextLocalDayTime(support::Gmt(2011, 12, 29, 22)),
              support::Gmt(2011, 12, 30, 22));  // 29th, 31st
    EXPECT_EQ(GetPrevLocalDayTime(support::Gmt(2011, 12, 30, 22)), support::Gmt(2011, 12, 29, 22));
    EXPECT_EQ(GetLastLocalDayTime(support::Gmt(2011, 12, 29, 22)),
              support::Gmt(2011, 12, 30, 9, 59, 59));
}

TEST(LocalTimeZoneTest, ThatLeavesOutTheEndOfADayStaysOnTheNeighbouringDay) {
    const support::ZoneScope zone("America/Nuuk");
    // On Saturday 2025-03-29 clocks go from 23:00 (-02) to 00:00 (-01) of Sunday, at 01:00 GMT.
    EXPECT_EQ(GetNextLocalDayTime(support::Gmt(2025, 3, 29, 1, 30)),
              support::Gmt(2025, 3, 30, 0, 59, 59));
    EXPECT_EQ(GetPrevLocalDayTime(support::Gmt(2025, 3, 31, 0, 30)),
              support::Gmt(2025, 3, 30, 0, 59, 59));
    EXPECT_EQ(GetFirstLocalDayTime(support::Gmt(2025, 3, 30, 12)), support::Gmt(2025, 3, 30, 1));
}

TEST(LocalTimeZoneTest, ThatChangesPastMidnightKeepsATimeWithinItsDay) {
    const support::ZoneScope zone("America/St_Johns");
    // On 2009-11-01 clocks went from 00:01 (-02:30) back to 23:01 (-03:30) of October 31.
    EXPECT_EQ(GetLastLocalDayTime(support::Gmt(2009, 11, 1, 2)),
              support::Gmt(2009, 11, 1, 2, 29, 59));
    EXPECT_EQ(GetLastLocalDayTime(support::Gmt(2009, 11, 1, 3)),
              support::Gmt(2009, 11, 1, 3, 29, 59));
    EXPECT_EQ(GetLastLocalMonthTime(support::Gmt(2009, 11, 1, 3)),
              support::Gmt(2009, 11, 1, 3, 29, 59));
    EXPECT_EQ(GetFirstLocalHourTime(support::Gmt(2009, 11, 1, 3)),
              support::Gmt(2009, 11, 1, 2, 31));
    EXPECT_EQ(GetLastLocalHourTime(support::Gmt(2009, 11, 1, 2, 30)),
              support::Gmt(2009, 11, 1, 2, 30, 59));
}

// Walks through the days around changes of many zones and asks each time for the bounds of its day.
TEST(LocalTimeDaysTest, HoldTheirTimesAndTouchTheirNeighbours) {
    const std::vector<std::string> zones = {"Europe/Warsaw",    "Asia/Kolkata", "Australia/Sydney",
                                            "America/Santiago", "America/Nuuk", "America/Havana",
                                            "Pacific/Chatham",  "Pacific/Apia", "UTC",
                                            "Asia/Kathmandu",   "Africa/Cairo", "Atlantic/Azores",
                                            "America/New_York", "Asia/Amman",   "Asia/Beirut",
                                            "America/Asuncion", "Asia/Tehran",  "Europe/London"};
    for (const std::string& name : zones) {
        const support::ZoneScope zone(name.c_str());
        for (std::int64_t time = support::Gmt(2011, 1, 1); time < support::Gmt(2012, 2, 1);
             time += 3001) {
            const std::int64_t first = GetFirstLocalDayTime(time);
            const std::int64_t last = GetLastLocalDayTime(time);
            ASSERT_LE(first, time) << name;
            ASSERT_GE(last, time) << name;
            ASSERT_EQ(GetLocalDay(first), GetLocalDay(time)) << name << ' ' << time;
            ASSERT_EQ(GetLocalDay(last), GetLocalDay(time)) << name << ' ' << time;
            ASSERT_NE(GetLocalDay(first - 1), GetLocalDay(time)) << name << ' ' << time;
            ASSERT_NE(GetLocalDay(last + 1), GetLocalDay(time)) << name << ' ' << time;
        }
    }
}

}  // namespace
}  // namespace kalvex::value
