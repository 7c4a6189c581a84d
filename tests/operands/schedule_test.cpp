#include "operands/Schedule.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "support/zone_scope.h"

namespace kalvex::operands {
namespace {

// Warsaw is an hour ahead of GMT in winter, two hours in summer.
class ScheduleTest : public testing::Test {
  private:
    support::ZoneScope m_zone{"Europe/Warsaw"};
};

using ScheduleFieldsTest = ScheduleTest;
using ScheduleWordsTest = ScheduleTest;
using ScheduleQuestionsTest = ScheduleTest;
using ScheduleRandomEntriesTest = ScheduleTest;

// Sunday 2024-03-10 12:00:00 in Warsaw.
constexpr std::int64_t kNoon = support::Gmt(2024, 3, 10, 11);

constexpr std::int64_t kDay = 86400;

bool MatchScheduleEntry(std::string_view text, std::int64_t time) {
    return CheckEventTime(text, 0, 0, time);
}

// Which of the seconds 0 to 59 of that noon's minute fit, as a list.
std::string Seconds(const std::string& field) {
    std::string list;
    for (int second = 0; second < 60; ++second) {
        if (!MatchScheduleEntry(field + " 0 12 * * *", kNoon + second)) continue;
        if (!list.empty()) list += ',';
        list += std::to_string(second);
    }
    return list;
}

// The same for the days of January 2024.
std::string Days(const std::string& field) {
    std::string list;
    for (int day = 1; day <= 31; ++day) {
        if (!MatchScheduleEntry("0 0 12 " + field + " * *", support::Gmt(2024, 1, day, 11)))
            continue;
        if (!list.empty()) list += ',';
        list += std::to_string(day);
    }
    return list;
}

// The same for the months of 2024, at noon of the 15th.
std::string Months(const std::string& field) {
    std::string list;
    for (int month = 1; month <= 12; ++month) {
        const int hour = month >= 4 && month <= 10 ? 10 : 11;
        if (!MatchScheduleEntry("0 0 12 * " + field + " *", support::Gmt(2024, month, 15, hour)))
            continue;
        if (!list.empty()) list += ',';
        list += std::to_string(month);
    }
    return list;
}

// The same for the days of a week that begins with Sunday 2024-03-10, 0 to 6.
std::string Week(const std::string& field) {
    std::string list;
    for (int day = 0; day < 7; ++day) {
        if (!MatchScheduleEntry("0 0 12 * * " + field, kNoon + day * kDay)) continue;
        if (!list.empty()) list += ',';
        list += std::to_string(day);
    }
    return list;
}

TEST_F(ScheduleFieldsTest, StarsAlwaysFit) {
    for (const std::int64_t time :
         {std::int64_t{0}, kNoon, kNoon + 1, support::Gmt(2024, 10, 27, 1, 30)}) {
        EXPECT_TRUE(MatchScheduleEntry("* * * * * *", time));
    }
}

TEST_F(ScheduleFieldsTest, NoonFitsAtNoonOnly) {
    for (std::int64_t time = kNoon - kDay / 2; time < kNoon + kDay / 2; ++time) {
        ASSERT_EQ(MatchScheduleEntry("0 0 12 * * *", time), time == kNoon) << time;
    }
}

TEST_F(ScheduleFieldsTest, HourIsTheLocalOneOfTheSeason) {
    EXPECT_TRUE(MatchScheduleEntry("0 0 12 * * *", support::Gmt(2024, 7, 1, 10)));
    EXPECT_FALSE(MatchScheduleEntry("0 0 12 * * *", support::Gmt(2024, 7, 1, 11)));
    EXPECT_TRUE(MatchScheduleEntry("0 30 2 * * *", support::Gmt(2024, 10, 27, 0, 30)));
    EXPECT_TRUE(MatchScheduleEntry("0 30 2 * * *", support::Gmt(2024, 10, 27, 1, 30)));
    for (std::int64_t time = support::Gmt(2024, 3, 30, 23); time < support::Gmt(2024, 3, 31, 22);
         time += 1800) {
        EXPECT_FALSE(MatchScheduleEntry("0 30 2 * * *", time)) << time;
    }
}

TEST_F(ScheduleFieldsTest, ListsRangesAndStepsOfSeconds) {
    EXPECT_EQ(Seconds("*/15"), "0,15,30,45");
    EXPECT_EQ(Seconds("*/10"), "0,10,20,30,40,50");
    EXPECT_EQ(Seconds("10-50/20"), "10,30,50");
    EXPECT_EQ(Seconds("5,10-13,25-35/5"), "5,10,11,12,13,25,30,35");
    EXPECT_EQ(Seconds("30-30"), "30");
    EXPECT_EQ(Seconds("57-59"), "57,58,59");
    EXPECT_EQ(Seconds("07"), "7");
    EXPECT_EQ(Seconds("7,7,7"), "7");
    EXPECT_EQ(Seconds("*/60"), "0");
    EXPECT_EQ(Seconds("*/70"), "0");
    EXPECT_EQ(Seconds("50-59/99999999999999999999"), "50");
}

TEST_F(ScheduleFieldsTest, SingleNumberTakesNoStep) {
    EXPECT_EQ(Seconds("5/10"), "5");
    EXPECT_EQ(Seconds("5/0"), "5");
}

TEST_F(ScheduleFieldsTest, RangeThatRunsBackwardsSetsNothing) {
    EXPECT_EQ(Seconds("5-3"), "");
    EXPECT_EQ(Seconds("5-3,8"), "8");
    EXPECT_EQ(Seconds("99-98,8"), "8");
}

TEST_F(ScheduleFieldsTest, StepMayPassTheEndOfItsRange) {
    EXPECT_EQ(Seconds("5-60/20"), "5,25,45");
    EXPECT_EQ(Seconds("5-65/20"), "");
}

TEST_F(ScheduleFieldsTest, StepOfZeroFailsTheEntry) {
    EXPECT_EQ(Seconds("*/0"), "");
    EXPECT_EQ(Seconds("*/"), "");
    EXPECT_EQ(Seconds("7,10-20/0"), "");
    EXPECT_EQ(Seconds("*/-1"), "");
}

TEST_F(ScheduleFieldsTest, EmptyNumberIsZero) {
    EXPECT_EQ(Seconds(","), "0");
    EXPECT_EQ(Seconds("7,"), "0,7");
    EXPECT_EQ(Seconds("-3"), "0,1,2,3");
    EXPECT_EQ(Seconds("3-"), "");
    EXPECT_EQ(Seconds("?"), "0");
    EXPECT_EQ(Days(","), "");
    EXPECT_EQ(Months("?"), "");
}

TEST_F(ScheduleFieldsTest, RubbishBehindAGoodElementIsIgnored) {
    EXPECT_EQ(Seconds("7?!:"), "7");
    EXPECT_EQ(Seconds("7;8,9"), "7");
    EXPECT_EQ(Seconds("7-8-9"), "7,8");
    EXPECT_EQ(Seconds("*5").size(), Seconds("*").size());
    EXPECT_EQ(Seconds("0-10/5/2"), "0,5,10");
    EXPECT_EQ(Seconds(std::string("7\0008", 3)), "7");
}

TEST_F(ScheduleFieldsTest, LettersInANumberFailTheEntry) {
    EXPECT_EQ(Seconds("7x"), "");
    EXPECT_EQ(Seconds("x"), "");
    EXPECT_EQ(Seconds("Jan"), "");
    EXPECT_EQ(Seconds("0x7"), "");
    EXPECT_EQ(Seconds("*/x"), "");
    EXPECT_EQ(Seconds("7\x9c"), "");  // a Polish letter
    EXPECT_EQ(Week("\x8cro"), "");
}

TEST_F(ScheduleFieldsTest, NumberOutOfItsFieldFailsTheEntry) {
    for (const char* entry :
         {"61 * * * * *", "60 * * * * *", "0,60 * * * * *", "0-60 * * * * *", "* 60 * * * *",
          "* * 24 * * *", "* * * 0 * *", "* * * 32 * *", "* * * 10,32 * *", "* * * 0-5 * *",
          "* * * * 0 *", "* * * * 13 *", "* * * * * 8", "* * * * * 0,8", "0 0 0 32 * *",
          "0 0 0 * * 8", "4294967296 * * * * *", "99999999999999999999999999999999 * * * * *",
          "0-18446744073709551616 * * * * *"}) {
        ScheduleEntry out;
        EXPECT_FALSE(ReadScheduleEntry(entry, out)) << entry;
    }
}

TEST_F(ScheduleFieldsTest, HundredLettersOrDigitsFailTheEntry) {
    EXPECT_EQ(Seconds(std::string(98, '0') + "7"), "7");
    EXPECT_EQ(Seconds(std::string(99, '0') + "7"), "");
    EXPECT_EQ(Seconds(std::string(100, 'a')), "");
    EXPECT_EQ(Seconds(std::string(1'000'000, '0')), "");
}

TEST_F(ScheduleFieldsTest, BoundsOfEachField) {
    EXPECT_TRUE(MatchScheduleEntry("59 59 23 31 12 *", support::Gmt(2024, 12, 31, 22, 59, 59)));
    EXPECT_TRUE(MatchScheduleEntry("0 0 0 1 1 *", support::Gmt(2023, 12, 31, 23)));
    EXPECT_EQ(Days("1,31"), "1,31");
    EXPECT_EQ(Days("*/3"), "1,4,7,10,13,16,19,22,25,28,31");
    EXPECT_EQ(Days("2-30/14"), "2,16,30");
    EXPECT_EQ(Months("*/2"), "1,3,5,7,9,11");
}

TEST_F(ScheduleFieldsTest, MonthsHaveNames) {
    EXPECT_EQ(Months("Jan"), "1");
    EXPECT_EQ(Months("feb,MAR,aPr"), "2,3,4");
    EXPECT_EQ(Months("May-Jul"), "5,6,7");
    EXPECT_EQ(Months("Aug-Dec/2"), "8,10,12");
    EXPECT_EQ(Months("Sep-10,Nov"), "9,10,11");
    EXPECT_EQ(Months("March"), "");
    EXPECT_EQ(Months("Mon"), "");
    EXPECT_EQ(Months("*/Feb"), "");
    EXPECT_TRUE(MatchScheduleEntry("0 0 0 1 Jan *", support::Gmt(2023, 12, 31, 23)));
    EXPECT_FALSE(MatchScheduleEntry("0 0 0 1 Jan *", support::Gmt(2024, 1, 31, 23)));
}

TEST_F(ScheduleFieldsTest, DaysOfWeekHaveNames) {
    EXPECT_EQ(Week("Sun"), "0");
    EXPECT_EQ(Week("mon"), "1");
    EXPECT_EQ(Week("Mon-Fri"), "1,2,3,4,5");
    EXPECT_EQ(Week("TUE,thu,Sat"), "2,4,6");
    EXPECT_EQ(Week("Wed-6/2"), "3,5");
    EXPECT_EQ(Week("Fri-Sun"), "");  // Sun is 0
    EXPECT_EQ(Week("Jan"), "");
    EXPECT_TRUE(MatchScheduleEntry("0 30 6 * * Mon-Fri", support::Gmt(2024, 3, 11, 5, 30)));
    EXPECT_FALSE(MatchScheduleEntry("0 30 6 * * Mon-Fri", support::Gmt(2024, 3, 10, 5, 30)));
}

TEST_F(ScheduleFieldsTest, SundayIsZeroAndSeven) {
    EXPECT_EQ(Week("0"), "0");
    EXPECT_EQ(Week("7"), "0");
    EXPECT_EQ(Week("5-7"), "0,5,6");
    EXPECT_EQ(Week("0-2"), "0,1,2");
}

TEST_F(ScheduleFieldsTest, DayOfMonthOrDayOfWeekFitsUnlessOneIsAStar) {
    const std::int64_t wednesday13 = support::Gmt(2024, 3, 12, 23);
    const std::int64_t thursday14 = support::Gmt(2024, 3, 13, 23);
    const std::int64_t friday15 = support::Gmt(2024, 3, 14, 23);
    const std::int64_t friday13 = support::Gmt(2024, 9, 12, 22);
    const auto fits = [&](const char* entry) {
        std::string list;
        for (const std::int64_t time : {wednesday13, thursday14, friday15, friday13}) {
            list += MatchScheduleEntry(entry, time) ? '1' : '0';
        }
        return list;
    };
    EXPECT_EQ(fits("0 0 0 13 * 5"), "1011");
    EXPECT_EQ(fits("0 0 0 13 * *"), "1001");
    EXPECT_EQ(fits("0 0 0 * * 5"), "0011");
    EXPECT_EQ(fits("0 0 0 */2 * 5"), "0011");  // a star with a step is a star
    EXPECT_EQ(fits("0 0 0 13 * */5"), "0001");
    EXPECT_EQ(fits("0 0 0 1-31 * 5"), "1111");
    EXPECT_EQ(fits("0 0 0 14,* * 5"), "1111");  // the star does not stand at the start
    EXPECT_EQ(fits("0 0 0 5-3 * 5"), "0011");
}

TEST_F(ScheduleFieldsTest, ThereAreExactlySix) {
    for (const char* entry :
         {"", " ", "*", "* *", "* * *", "* * * *", "0 0 12 * *", "* * * * * ", "0 0 12 * * * *",
          "* * * * * * *", "* * * * * * 2024", "* * * * * * ?", "poniedzialek", "\t", "\n"}) {
        EXPECT_FALSE(MatchScheduleEntry(entry, kNoon)) << entry;
    }
}

TEST_F(ScheduleFieldsTest, BlanksAndTabsPartThem) {
    EXPECT_TRUE(MatchScheduleEntry("0\t0  12 \t * * *", kNoon));
    EXPECT_TRUE(MatchScheduleEntry("0 0 12 * * *   ", kNoon));
    EXPECT_TRUE(MatchScheduleEntry("0 0 12 * * *\t", kNoon));
    EXPECT_FALSE(MatchScheduleEntry("0 0 12 * * *\n", kNoon));
    EXPECT_FALSE(MatchScheduleEntry("0\n0 12 * * *", kNoon));
}

// The blank makes a field of its own, an empty one, which reads as 0.
TEST_F(ScheduleFieldsTest, LeadingBlankIsTheSecondZero) {
    EXPECT_FALSE(MatchScheduleEntry(" 0 0 12 * * *", kNoon));
    EXPECT_TRUE(MatchScheduleEntry(" 0 12 * * *", kNoon));
    EXPECT_FALSE(MatchScheduleEntry(" 0 12 * * *", kNoon + 1));
}

// A newline ends a field and is not skipped, so that the next one is empty.
TEST_F(ScheduleFieldsTest, NewlineLeavesTheNextFieldsEmpty) {
    EXPECT_FALSE(MatchScheduleEntry("*\n* * * * *", kNoon));
    EXPECT_FALSE(MatchScheduleEntry("* * * * *\n", kNoon));
    EXPECT_FALSE(MatchScheduleEntry("* * * * * \n", kNoon));
}

TEST_F(ScheduleFieldsTest, NegativeTimeFitsNothing) {
    EXPECT_FALSE(MatchScheduleEntry("* * * * * *", -1));
    EXPECT_FALSE(MatchScheduleEntry("@every_minute", -60));
    EXPECT_FALSE(MatchScheduleEntry("* * * * * *", INT64_MIN));
    EXPECT_FALSE(MatchScheduleEntry("* * * * * *", INT64_MAX));
}

TEST(ScheduleElsewhereTest, FollowsTheZone) {
    {
        const support::ZoneScope zone("Asia/Kolkata");
        EXPECT_TRUE(MatchScheduleEntry("0 30 12 * * *", support::Gmt(2024, 3, 10, 7)));
    }
    {
        const support::ZoneScope zone("Australia/Sydney");
        EXPECT_TRUE(MatchScheduleEntry("0 30 0 1 Jan Mon", support::Gmt(2023, 12, 31, 13, 30)));
    }
    {
        // Clocks go from 02:00 to 02:30 at 15:30 GMT.
        const support::ZoneScope zone("Australia/Lord_Howe");
        EXPECT_TRUE(MatchScheduleEntry("0 30 2 6 10 *", support::Gmt(2024, 10, 5, 15, 30)));
        EXPECT_FALSE(CheckEventTime("* 0-29 2 * * *", 1728141300, 3600, 0));  // 01:45 and an hour
        EXPECT_TRUE(CheckEventTime("* 30 2 * * *", 1728141300, 901, 0));
    }
}

// The words at the moments around a start of minute, hour, day, week, month and year.
TEST_F(ScheduleWordsTest, FitAtTheirMoments) {
    const std::int64_t times[] = {
        support::Gmt(2023, 12, 31, 23),      // Monday, start of the year
        support::Gmt(2024, 1, 31, 23),       // Thursday, start of a month
        support::Gmt(2024, 3, 9, 23),        // Sunday, start of a day
        support::Gmt(2024, 3, 11, 23),       // Tuesday, start of a day
        support::Gmt(2024, 3, 11, 22),       // start of an hour
        support::Gmt(2024, 3, 11, 22, 1),    // start of a minute
        support::Gmt(2024, 3, 11, 22, 1, 1)  // no start
    };
    const std::pair<const char*, const char*> expected[] = {
        {"@yearly", "1000000"}, {"@annually", "1000000"},     {"@monthly", "1100000"},
        {"@weekly", "0010000"}, {"@daily", "1111000"},        {"@midnight", "1111000"},
        {"@hourly", "1111100"}, {"@every_minute", "1111110"},
    };
    for (const auto& [word, fits] : expected) {
        std::string list;
        for (const std::int64_t time : times) list += MatchScheduleEntry(word, time) ? '1' : '0';
        EXPECT_EQ(list, fits) << word;
        EXPECT_TRUE(IsScheduleWord(word));
    }
}

TEST_F(ScheduleWordsTest, AreComparedExactly) {
    for (const char* entry : {"@Daily", "@DAILY", "@daily ", " @daily", "@", "@@daily", "daily",
                              "@reboot", "@dail", "@dailyx", "@every_second", "\"@daily\""}) {
        ScheduleEntry out;
        EXPECT_FALSE(ReadScheduleEntry(entry, out)) << entry;
        EXPECT_FALSE(IsScheduleWord(entry)) << entry;
    }
}

TEST_F(ScheduleWordsTest, MeanWhatTheirFieldsWouldMean) {
    const std::pair<const char*, const char*> pairs[] = {
        {"@yearly", "0 0 0 1 1 *"}, {"@monthly", "0 0 0 1 * *"}, {"@weekly", "0 0 0 * * 0"},
        {"@daily", "0 0 0 * * *"},  {"@hourly", "0 0 * * * *"},  {"@every_minute", "0 * * * * *"},
    };
    for (const auto& [word, fields] : pairs) {
        for (std::int64_t time = support::Gmt(2023, 12, 30); time < support::Gmt(2024, 4, 2);
             time += 900) {
            ASSERT_EQ(MatchScheduleEntry(word, time), MatchScheduleEntry(fields, time)) << word;
        }
    }
}

TEST_F(ScheduleQuestionsTest, NoNumbersAskAboutThePresent) {
    EXPECT_TRUE(CheckEventTime("0 0 12 * * *", 0, 0, kNoon));
    EXPECT_FALSE(CheckEventTime("0 0 12 * * *", 0, 0, kNoon - 1));
    EXPECT_TRUE(CheckEventTime("0 0 12 * * *", -5, 0, kNoon));
}

TEST_F(ScheduleQuestionsTest, SecondNumberWithoutAFirstHasNoEffect) {
    EXPECT_FALSE(CheckEventTime("0 0 12 * * *", 0, 500, kNoon - 1));
    EXPECT_TRUE(CheckEventTime("0 0 12 * * *", 0, 500, kNoon));
    EXPECT_FALSE(CheckEventTime("0 0 12 * * *", -1, 1700000000, kNoon - 1));
    EXPECT_FALSE(CheckEventTime("0 0 12 * * *", 4, 500, kNoon - 4));
}

TEST_F(ScheduleQuestionsTest, ToleranceAboutThePresentLooksForward) {
    std::string list;
    for (int before = 6; before >= -1; --before) {
        list += CheckEventTime("0 0 12 * * *", 5, 0, kNoon - before) ? '1' : '0';
    }
    EXPECT_EQ(list, "00111110");
    EXPECT_TRUE(CheckEventTime("0 0 12 * * *", 1, 0, kNoon));
    EXPECT_FALSE(CheckEventTime("0 0 12 * * *", 1, 0, kNoon - 1));
}

TEST_F(ScheduleQuestionsTest, GivenTimeTakesThePlaceOfThePresent) {
    EXPECT_TRUE(CheckEventTime("0 0 12 * * *", static_cast<std::int32_t>(kNoon), 0, 5));
    EXPECT_TRUE(CheckEventTime("0 0 12 * * *", static_cast<std::int32_t>(kNoon), -7, 5));
    EXPECT_FALSE(CheckEventTime("0 0 12 * * *", static_cast<std::int32_t>(kNoon) + 1, 0, kNoon));
}

TEST_F(ScheduleQuestionsTest, ToleranceAboutAGivenTimeLooksForward) {
    const auto noon = static_cast<std::int32_t>(kNoon);
    EXPECT_TRUE(CheckEventTime("0 0 12 * * *", noon - 4, 5, 0));
    EXPECT_FALSE(CheckEventTime("0 0 12 * * *", noon - 4, 4, 0));
    EXPECT_FALSE(CheckEventTime("0 0 12 * * *", noon + 1, 30, 0));
    EXPECT_TRUE(CheckEventTime("0 0 12 * * *", noon - 3600, 3601, 0));
    EXPECT_FALSE(CheckEventTime("0 0 12 * * *", noon - 3600, 3600, 0));
}

TEST_F(ScheduleQuestionsTest, HundredThousandIsATime) {
    // 99999 seconds from 1970-01-01 01:00:00 on hold 04:46:39 of the 2nd, at 99999 they do not yet.
    EXPECT_TRUE(CheckEventTime("38 46 4 2 1 *", 99999, 0, 0));
    EXPECT_FALSE(CheckEventTime("39 46 4 2 1 *", 99999, 0, 0));
    EXPECT_TRUE(CheckEventTime("40 46 4 2 1 *", 100000, 0, 0));
    EXPECT_FALSE(CheckEventTime("39 46 4 2 1 *", 100000, 0, 0));
    EXPECT_TRUE(CheckEventTime("0 0 12 * * *", 100000, 99999, 0));
    EXPECT_FALSE(CheckEventTime("0 0 12 * * *", 100000, 100000, kNoon));  // a range of one second
}

TEST_F(ScheduleQuestionsTest, RangeHoldsThePresentWithItsBounds) {
    const auto noon = static_cast<std::int32_t>(kNoon);
    const char* always = "* * * * * *";
    EXPECT_TRUE(CheckEventTime(always, noon, noon + 10, kNoon));
    EXPECT_TRUE(CheckEventTime(always, noon, noon + 10, kNoon + 10));
    EXPECT_FALSE(CheckEventTime(always, noon, noon + 10, kNoon + 11));
    EXPECT_FALSE(CheckEventTime(always, noon, noon + 10, kNoon - 1));
    EXPECT_TRUE(CheckEventTime(always, noon, noon, kNoon));
    EXPECT_FALSE(CheckEventTime(always, noon + 10, noon, kNoon + 5));
    EXPECT_FALSE(CheckEventTime("1 0 12 * * *", noon, noon + 10, kNoon));
    EXPECT_TRUE(CheckEventTime("1 0 12 * * *", noon, noon + 10, kNoon + 1));
}

TEST_F(ScheduleQuestionsTest, NumbersMayBeTheLargest) {
    constexpr std::int32_t largest = std::numeric_limits<std::int32_t>::max();  // 2038-01-19
    EXPECT_TRUE(CheckEventTime("7 14 4 19 1 *", largest, 0, 0));
    EXPECT_TRUE(CheckEventTime("0 0 5 19 1 *", largest, 99999, 0));
    EXPECT_FALSE(CheckEventTime("* * * * * *", 99999, 0, INT64_MAX));
    EXPECT_FALSE(CheckEventTime("* * * * * *", 99999, 0, INT64_MIN));
    EXPECT_FALSE(CheckEventTime("* * * * * *", 5, 0, -5));
    EXPECT_TRUE(CheckEventTime("* * * * * *", 6, 0, -5));
}

TEST_F(ScheduleQuestionsTest, UnreadableEntryFitsInNoForm) {
    EXPECT_FALSE(CheckEventTime("* * * * *", 0, 0, kNoon));
    EXPECT_FALSE(CheckEventTime("* * * * *", 99999, 0, kNoon));
    EXPECT_FALSE(CheckEventTime("* * * * *", static_cast<std::int32_t>(kNoon), 99999, kNoon));
}

// A tolerance is the question asked for each of its seconds, also across a change of the clocks and
// where a minute is cut off at either end.
TEST_F(ScheduleQuestionsTest, ToleranceAgreesWithSingleSeconds) {
    const char* entries[] = {"0 0 * * * *",    "59 59 1,2 * * *", "0 0 3 * * *", "30 30 2 * * *",
                             "*/7 13 * * * *", "0 0 0 * * *",     "5 * * 31 * *"};
    for (const char* zoneName : {"Europe/Warsaw", "Australia/Lord_Howe", "America/St_Johns"}) {
        const support::ZoneScope zone(zoneName);
        for (const char* entry : entries) {
            for (const std::int64_t base :
                 {support::Gmt(2024, 3, 30, 23), support::Gmt(2024, 10, 26, 23, 30),
                  support::Gmt(2024, 4, 6, 13), support::Gmt(2009, 11, 1, 2, 15)}) {
                for (std::int64_t start = base; start < base + 7200; start += 397) {
                    constexpr int kTolerance = 1000;
                    int wait = 0;  // seconds to the next fit
                    while (wait < kTolerance && !MatchScheduleEntry(entry, start + wait)) ++wait;
                    const auto time = static_cast<std::int32_t>(start);
                    ASSERT_EQ(CheckEventTime(entry, time, kTolerance, 0), wait < kTolerance);
                    if (wait == kTolerance) continue;
                    ASSERT_TRUE(CheckEventTime(entry, wait + 1, 0, start)) << entry << ' ' << start;
                    if (wait == 0) continue;
                    ASSERT_FALSE(CheckEventTime(entry, wait, 0, start)) << entry << ' ' << start;
                }
            }
        }
    }
}

// Clocks go from 02:00:30 to 03:00:30.
TEST(ScheduleElsewhereTest, ToleranceSeesAChangeWithinAMinute) {
    const support::ZoneScope zone("STD0DST-1,M3.5.0/2:00:30,M10.5.0/3");
    const auto two = static_cast<std::int32_t>(support::Gmt(2024, 3, 31, 2));
    EXPECT_FALSE(CheckEventTime("40 0 2 * * *", two, 120, 0));
    EXPECT_TRUE(CheckEventTime("40 0 3 * * *", two, 41, 0));
    EXPECT_FALSE(CheckEventTime("40 0 3 * * *", two, 40, 0));
}

// Whatever the text, the question ends, a trailing blank changes nothing, and neither does the form
// in which it is asked.
TEST_F(ScheduleRandomEntriesTest, AnyTextIsAnswered) {
    static constexpr const char* kPieces[] = {
        "*",   "*",  "*/2", "0", "5", "1-30", "9-3", "Jan", "sun", "Mon-5", "@daily", "1,2",
        "*/0", "60", ",",   "-", "/", "\t",   "\n",  "?",   "x",   "\xb3",  "\xff",   "99999999999",
    };
    std::mt19937 random(20240331);
    int readable = 0;
    int fitting = 0;
    for (int round = 0; round < 100000; ++round) {
        std::string text;
        for (std::size_t left = 4 + random() % 4; left > 0; --left) {
            // Mostly the pieces at the front, which make good fields.
            const std::size_t choice = random() % 4 == 0 ? std::size(kPieces) : 6;
            text += kPieces[random() % choice];
            if (random() % 8 == 0) text += kPieces[random() % std::size(kPieces)];
            if (left > 1) text += ' ';
        }
        ScheduleEntry entry;
        const bool read = ReadScheduleEntry(text, entry);
        readable += read;
        const std::int64_t time = kNoon + random() % 1000000;
        const bool fits = MatchScheduleEntry(text, time);
        fitting += fits;
        ASSERT_TRUE(read || !fits) << text;
        ASSERT_EQ(CheckEventTime(text, 1, 0, time), fits) << text;
        if (!text.starts_with('@')) {
            ASSERT_EQ(MatchScheduleEntry(text + ' ', time), fits) << text;
        }
    }
    EXPECT_GT(readable, 1000);
    EXPECT_GT(fitting, 100);
}

TEST_F(ScheduleRandomEntriesTest, AnyBytesAreAnswered) {
    std::mt19937 random(20241027);
    for (int round = 0; round < 20000; ++round) {
        std::string text(random() % 300, '\0');
        for (char& c : text) c = static_cast<char>(random());
        ScheduleEntry entry;
        EXPECT_TRUE(ReadScheduleEntry(text, entry) || !MatchScheduleEntry(text, kNoon));
    }
    ScheduleEntry entry;
    EXPECT_FALSE(ReadScheduleEntry(std::string(1'000'000, ','), entry));
    EXPECT_FALSE(ReadScheduleEntry(std::string(1'000'000, ' '), entry));
    EXPECT_TRUE(ReadScheduleEntry(std::string(1'000'000, ',') + " * * * * *", entry));
}

// A field made at random together with the values that it means.
std::string RandomField(std::mt19937& random, int low, int high, std::set<int>& values) {
    const auto pick = [&random](int from, int to) {
        return from + static_cast<int>(random() % static_cast<unsigned>(to - from + 1));
    };
    std::string text;
    for (int elements = pick(1, 3); elements > 0; --elements) {
        const int first = pick(low, high);
        const int last = pick(low, high);
        const int step = pick(1, 9);
        switch (pick(0, 4)) {
            case 0:
                text += std::to_string(first);
                values.insert(first);
                break;
            case 1:
                text += std::to_string(first) + '-' + std::to_string(last);
                for (int value = first; value <= last; ++value) values.insert(value);
                break;
            case 2:
                text +=
                    std::to_string(first) + '-' + std::to_string(last) + '/' + std::to_string(step);
                for (int value = first; value <= last; value += step) values.insert(value);
                break;
            case 3:
                text += "*/" + std::to_string(step);
                for (int value = low; value <= high; value += step) values.insert(value);
                break;
            default:
                text += '*';
                for (int value = low; value <= high; ++value) values.insert(value);
        }
        if (elements > 1) text += ',';
    }
    return text;
}

TEST(ScheduleRandomFieldsTest, FitWhereTheirValuesSay) {
    const support::ZoneScope zone("UTC");
    constexpr std::pair<int, int> kBounds[] = {{0, 59}, {0, 59}, {0, 23}, {1, 31}, {1, 12}, {0, 7}};
    std::mt19937 random(7);
    int fitting = 0;
    for (int round = 0; round < 20000; ++round) {
        std::set<int> values[6];
        std::string text;
        bool star[6];
        for (int i = 0; i < 6; ++i) {
            const std::string field =
                RandomField(random, kBounds[i].first, kBounds[i].second, values[i]);
            star[i] = field[0] == '*';
            text += (i > 0 ? " " : "") + field;
        }
        for (int i = 0; i < 5; ++i) {
            using namespace std::chrono;
            const sys_seconds time{seconds(support::Gmt(2024, 1, 1) + random() % (366 * kDay))};
            const sys_days date = floor<days>(time);
            const year_month_day day{date};
            const hh_mm_ss clock{time - date};
            const auto holds = [&values](int field, auto value) {
                return values[field].count(static_cast<int>(value)) > 0;
            };
            const unsigned weekday = std::chrono::weekday(date).c_encoding();
            const bool dayOfMonth = holds(3, static_cast<unsigned>(day.day()));
            const bool dayOfWeek = holds(5, weekday) || (weekday == 0 && holds(5, 7));
            const bool expected =
                holds(0, clock.seconds().count()) && holds(1, clock.minutes().count()) &&
                holds(2, clock.hours().count()) && holds(4, static_cast<unsigned>(day.month())) &&
                (star[3] || star[5] ? dayOfMonth && dayOfWeek : dayOfMonth || dayOfWeek);
            ASSERT_EQ(MatchScheduleEntry(text, time.time_since_epoch().count()), expected) << text;
            fitting += expected;
        }
    }
    EXPECT_GT(fitting, 1000);
}

}  // namespace
}  // namespace kalvex::operands
