#include "server/ReportPeriods.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/zone_scope.h"
#include "value/LocalTime.h"

namespace kalvex::server {
namespace {

using testing::ElementsAre;

constexpr std::int64_t kHour = 3600;

class ReportPeriodsTest : public testing::Test {
    support::ZoneScope m_zone{"Europe/Warsaw"};
};

std::int64_t At(int year, int month, int day, int hour = 0, int minute = 0) {
    return value::MakeLocalTime({year, month, day, hour, minute});
}

TEST_F(ReportPeriodsTest, ReportIsNamedByTheStartOfItsPeriod) {
    const std::int64_t time = At(2024, 3, 10, 7, 25);
    EXPECT_EQ(ReportTime(value::KindHour, time), At(2024, 3, 10, 7));
    EXPECT_EQ(ReportTime(value::KindDay, time), At(2024, 3, 10));
    EXPECT_EQ(ReportTime(value::KindMonth, time), At(2024, 3, 1));
    EXPECT_EQ(ReportTime(value::KindSpan, time), time);
    EXPECT_EQ(ReportTime(value::KindArchive, time), time);
}

TEST_F(ReportPeriodsTest, NextReportFollowsTheCalendar) {
    EXPECT_EQ(NextReportTime(value::KindHour, At(2024, 2, 29, 23)), At(2024, 3, 1));
    EXPECT_EQ(NextReportTime(value::KindDay, At(2024, 2, 29)), At(2024, 3, 1));
    EXPECT_EQ(NextReportTime(value::KindMonth, At(2024, 2, 1)), At(2024, 3, 1));
    EXPECT_EQ(NextReportTime(value::KindMonth, At(2024, 12, 1)), At(2025, 1, 1));
}

TEST_F(ReportPeriodsTest, CalendarDayCoversItself) {
    const std::int64_t day = At(2024, 3, 10);
    EXPECT_EQ(CoveredSpan(value::KindDay, day, 0), (TimeSpan{day, day + 24 * kHour}));
    EXPECT_EQ(CoveredSpan(value::KindHour, day + kHour, 6),
              (TimeSpan{day + kHour, day + 2 * kHour}));
    EXPECT_EQ(CoveredSpan(value::KindMonth, At(2024, 3, 1), 0),
              (TimeSpan{At(2024, 3, 1), At(2024, 4, 1)}));
}

TEST_F(ReportPeriodsTest, GasDayRunsFromSixToSix) {
    EXPECT_EQ(CoveredSpan(value::KindDay, At(2024, 3, 10), 6),
              (TimeSpan{At(2024, 3, 10, 6), At(2024, 3, 11, 6)}));
    EXPECT_EQ(CoveredSpan(value::KindMonth, At(2024, 2, 1), 6),
              (TimeSpan{At(2024, 2, 1, 6), At(2024, 3, 1, 6)}));
}

// On 31 March 2024 the clocks went from 2:00 to 3:00, on 27 October from 3:00 back to 2:00.
TEST_F(ReportPeriodsTest, DaysOfClockChangesHaveTheirHours) {
    EXPECT_EQ(PartsOf(value::KindDay, At(2024, 3, 31), 0).size(), 23u);
    EXPECT_EQ(PartsOf(value::KindDay, At(2024, 10, 27), 0).size(), 25u);
    // The gas day that holds the night before: it began at 6:00 the day before.
    EXPECT_EQ(PartsOf(value::KindDay, At(2024, 3, 30), 6).size(), 23u);
    EXPECT_EQ(PartsOf(value::KindDay, At(2024, 3, 31), 6).size(), 24u);
    EXPECT_EQ(PartsOf(value::KindDay, At(2024, 10, 26), 6).size(), 25u);
    EXPECT_EQ(PartsOf(value::KindDay, At(2024, 10, 27), 6).size(), 24u);
    EXPECT_EQ(PartsOf(value::KindDay, At(2024, 10, 26), 6).back(), At(2024, 10, 27, 5));
    EXPECT_EQ(CoveredSpan(value::KindDay, At(2024, 10, 26), 6),
              (TimeSpan{At(2024, 10, 26, 6), At(2024, 10, 27, 6)}));
}

TEST_F(ReportPeriodsTest, EachOccurrenceOfARepeatedHourHasItsReport) {
    const std::int64_t first = At(2024, 10, 27, 2);
    EXPECT_EQ(ReportTime(value::KindHour, first + 1800), first);
    EXPECT_EQ(ReportTime(value::KindHour, first + kHour + 1800), first + kHour);
    EXPECT_EQ(NextReportTime(value::KindHour, first), first + kHour);
    EXPECT_EQ(NextReportTime(value::KindHour, first + kHour), At(2024, 10, 27, 3));
}

TEST_F(ReportPeriodsTest, DayThatBeginsInALeftOutHourBeginsBehindIt) {
    const TimeSpan span = CoveredSpan(value::KindDay, At(2024, 3, 31), 2);
    EXPECT_EQ(span.begin, At(2024, 3, 31, 3));
    EXPECT_EQ(span.end, At(2024, 4, 1, 2));
    EXPECT_EQ(CoveredSpan(value::KindDay, At(2024, 3, 30), 2).end, span.begin);
}

TEST_F(ReportPeriodsTest, InstantBelongsToTheDayThatCoversIt) {
    EXPECT_EQ(CoveringReport(value::KindHour, At(2024, 3, 10, 5, 59), 6), At(2024, 3, 10, 5));
    EXPECT_EQ(CoveringReport(value::KindDay, At(2024, 3, 10, 5, 59), 6), At(2024, 3, 9));
    EXPECT_EQ(CoveringReport(value::KindDay, At(2024, 3, 10, 6), 6), At(2024, 3, 10));
    EXPECT_EQ(CoveringReport(value::KindMonth, At(2024, 3, 1, 5, 59), 6), At(2024, 2, 1));
    EXPECT_EQ(CoveringReport(value::KindMonth, At(2024, 3, 1, 6), 6), At(2024, 3, 1));
    EXPECT_EQ(CoveringReport(value::KindDay, At(2024, 3, 10, 0), 0), At(2024, 3, 10));
}

TEST_F(ReportPeriodsTest, MonthHasItsDays) {
    const std::vector<std::int64_t> days = PartsOf(value::KindMonth, At(2024, 2, 1), 6);
    ASSERT_EQ(days.size(), 29u);
    EXPECT_EQ(days.front(), At(2024, 2, 1));
    EXPECT_EQ(days[1], At(2024, 2, 2));
    EXPECT_EQ(days.back(), At(2024, 2, 29));
}

TEST_F(ReportPeriodsTest, BoundsOfTimeHaveReports) {
    EXPECT_EQ(PartsOf(value::KindDay, ReportTime(value::KindDay, 0), 6).size(), 24u);
    EXPECT_EQ(PartsOf(value::KindMonth, ReportTime(value::KindMonth, 0), 6).size(), 31u);
    EXPECT_EQ(
        PartsOf(value::KindMonth, ReportTime(value::KindMonth, value::kLargestTime), 6).size(),
        31u);
}

}  // namespace
}  // namespace kalvex::server
