#include <gtest/gtest.h>

#include <clocale>

#include "operands/FunctionFamilies.h"
#include "support/fake_script.h"
#include "support/value_dump.h"
#include "support/zone_scope.h"

namespace kalvex::operands {
namespace {

constexpr FunctionRow kRows[] = {
    {"LAST_DAY", LastDay, "", ""},
    {"TIMESTAMP", TimestampFunction, "", ""},
    {"FORMATED_TIMESTAMP", FormatedTimestamp, "", ""},
    {"MAKE_TIME", MakeTime, "", ""},
    {"MAKE_TIME_FROM_STRING", MakeTimeFromString, "", ""},
};

class TimeFunctionsTest : public testing::Test {
  protected:
    static const FunctionTable& Table() {
        static const FunctionTable table(kRows);
        return table;
    }
    static std::string Time(std::int64_t time) { return "160:" + std::to_string(time); }

    support::ZoneScope zone{"Europe/Warsaw"};
    support::FakeScript script{Table()};
};

TEST_F(TimeFunctionsTest, TimestampFollowsTheSuffix) {
    CVariableLocal& variable = script.Local("A", support::Stamped(value::CVal(1), 1000));
    variable.SetValue(support::Stamped(value::CVal(1), 2000), value::KindHour);
    EXPECT_EQ(script.Evaluate("TIMESTAMP A"), Time(1000));
    EXPECT_EQ(script.Evaluate("TIMESTAMP A.HREP"), Time(2000));
    EXPECT_EQ(script.Evaluate("TIMESTAMP A.DREP"), Time(0));
    EXPECT_EQ(script.Evaluate("TIMESTAMP A BRAK + ("), Time(1000));
}

TEST_F(TimeFunctionsTest, TimestampThatIsNotThereFails) {
    script.Local("A", support::Stamped(value::CVal(1), -5));
    EXPECT_EQ(script.Evaluate("TIMESTAMP A"), "failed 0");
    EXPECT_EQ(script.Evaluate("TIMESTAMP A.ARCH"), "failed 0");
    EXPECT_EQ(script.Evaluate("TIMESTAMP BRAK"), "failed 3 BRAK");
    EXPECT_EQ(script.Evaluate("TIMESTAMP"), "failed 3");
}

TEST_F(TimeFunctionsTest, FormatedTimestampIsLocal) {
    script.Local("A", support::Stamped(value::CVal(1), support::Gmt(2024, 3, 10, 6, 7, 8)));
    script.Local("B", support::Stamped(value::CVal(1), support::Gmt(2024, 7, 10, 6, 7, 8)));
    EXPECT_EQ(script.Evaluate("FORMATED_TIMESTAMP A"), "190:2024-03-10 07:07:08");
    EXPECT_EQ(script.Evaluate("FORMATED_TIMESTAMP B"), "190:2024-07-10 08:07:08");
    EXPECT_EQ(script.Evaluate("FORMATED_TIMESTAMP A \"%d.%m.%y, %H%%\""), "190:10.03.24, 07%");
    EXPECT_EQ(script.Evaluate("FORMATED_TIMESTAMP A \"%A %d %B %j %Z\""),
              "190:Sunday 10 March 070 CET");
    script.Local("F", value::CVal("%Hh"));
    EXPECT_EQ(script.Evaluate("FORMATED_TIMESTAMP A F"), "190:07h");
    script.Local("PUSTY", value::CVal(""));
    EXPECT_EQ(script.Evaluate("FORMATED_TIMESTAMP A PUSTY"), "190:");
}

TEST_F(TimeFunctionsTest, FormatThatCannotBeReadLeavesTheUsualOne) {
    script.Local("A", support::Stamped(value::CVal(1), support::Gmt(2024, 3, 10, 6, 7, 8)));
    EXPECT_EQ(script.Evaluate("FORMATED_TIMESTAMP A BRAK"), "190:2024-03-10 07:07:08");
    EXPECT_EQ(script.Error(), "3 BRAK");
    EXPECT_EQ(script.Evaluate("FORMATED_TIMESTAMP A"), "190:2024-03-10 07:07:08");
    EXPECT_EQ(script.Error(), "3");
}

TEST_F(TimeFunctionsTest, FormatMayHoldAnything) {
    script.Local("A", support::Stamped(value::CVal(1), support::Gmt(2024, 3, 10, 6, 7, 8)));
    EXPECT_EQ(script.Evaluate("FORMATED_TIMESTAMP A \"dzień %d, godzina ćwierć %H\""),
              "190:dzień 10, godzina ćwierć 07");
    EXPECT_EQ(script.Evaluate("FORMATED_TIMESTAMP A \"%9999999999Y %H\""), "190:%9999999999Y 07");
    EXPECT_EQ(script.Evaluate("FORMATED_TIMESTAMP A \"%H %\""), "190:07 %");
    EXPECT_EQ(script.Evaluate("FORMATED_TIMESTAMP A \"%q %Od %Eq %E\""), "190:%q 10 %Eq %E");
    EXPECT_EQ(script.Evaluate("FORMATED_TIMESTAMP A \"%s %n%t%-d\""), "190:%s \n\t%-d");
    EXPECT_EQ(script.Evaluate("FORMATED_TIMESTAMP A \"%ą %H\""), "190:%ą 07");
    std::string longFormat;
    for (int i = 0; i < 5000; ++i) longFormat += "%A";
    script.Local("DLUGI", value::CVal(longFormat));
    EXPECT_EQ(script.Evaluate("FORMATED_TIMESTAMP A DLUGI").size(), 4 + 5000 * 6);
}

TEST_F(TimeFunctionsTest, LocaleDoesNotMatter) {
    ASSERT_NE(std::setlocale(LC_ALL, "pl_PL.UTF-8"), nullptr);
    script.Local("A", support::Stamped(value::CVal(1), support::Gmt(2024, 3, 10, 6)));
    EXPECT_EQ(script.Evaluate("FORMATED_TIMESTAMP A \"%A %B\""), "190:Sunday March");
    EXPECT_EQ(script.Evaluate("MAKE_TIME_FROM_STRING \"10 March 2024\" \"%d %B %Y\""),
              Time(support::Gmt(2024, 3, 9, 23)));
    std::setlocale(LC_ALL, "C");
}

TEST_F(TimeFunctionsTest, FormatedTimestampThatIsNotThereFails) {
    script.Local("A", support::Stamped(value::CVal(1), -1));
    script.Local("B", support::Stamped(value::CVal(1), std::int64_t{1} << 60));
    EXPECT_EQ(script.Evaluate("FORMATED_TIMESTAMP A \"%H\""), "failed 0");
    EXPECT_EQ(script.Evaluate("FORMATED_TIMESTAMP B \"%H\""), "failed 0");
    EXPECT_EQ(script.Evaluate("FORMATED_TIMESTAMP BRAK \"%H\""), "failed 3 BRAK");
}

TEST_F(TimeFunctionsTest, MakeTimeTakesAllOfTheLine) {
    EXPECT_EQ(script.Evaluate("MAKE_TIME 2024"), Time(support::Gmt(2023, 12, 31, 23)));
    EXPECT_EQ(script.Evaluate("MAKE_TIME 2024 7 5 6 7 8"), Time(support::Gmt(2024, 7, 5, 4, 7, 8)));
    EXPECT_EQ(script.Evaluate("MAKE_TIME 2024 2 31"), Time(support::Gmt(2024, 3, 1, 23)));
    EXPECT_EQ(script.Evaluate("MAKE_TIME 1700000000"), Time(1700000000));
    EXPECT_EQ(script.Evaluate("MAKE_TIME 2024 7 BRAK 8"), Time(support::Gmt(2024, 6, 30, 22)));
    EXPECT_EQ(script.Evaluate("  MAKE_TIME   2024  7", value::ValueType::Text),
              Time(support::Gmt(2024, 6, 30, 22)));
}

TEST_F(TimeFunctionsTest, MakeTimeOutOfBoundsFails) {
    EXPECT_EQ(script.Evaluate("MAKE_TIME 2024 13"), "failed 0");
    EXPECT_EQ(script.Evaluate("MAKE_TIME 1969"), "failed 0");
    EXPECT_EQ(script.Evaluate("MAKE_TIME BRAK"), "failed 3 BRAK");
    EXPECT_EQ(script.Evaluate("MAKE_TIME"), "failed 3");
}

TEST_F(TimeFunctionsTest, MakeTimeAroundTheChangesOfTheClock) {
    EXPECT_EQ(script.Evaluate("MAKE_TIME 2024 3 31 2 30"), Time(support::Gmt(2024, 3, 31, 1, 30)));
    EXPECT_EQ(script.Evaluate("MAKE_TIME 2024 10 27 2 30"),
              Time(support::Gmt(2024, 10, 27, 0, 30)));
}

TEST_F(TimeFunctionsTest, TimeFromTextIsWinterTime) {
    EXPECT_EQ(script.Evaluate("MAKE_TIME_FROM_STRING \"2024-01-05 07:08:09\""),
              Time(support::Gmt(2024, 1, 5, 6, 8, 9)));
    EXPECT_EQ(script.Evaluate("MAKE_TIME_FROM_STRING \"2024-07-05 07:08:09\""),
              Time(support::Gmt(2024, 7, 5, 6, 8, 9)));
    EXPECT_EQ(script.Evaluate("MAKE_TIME 2024 7 5 7 8 9"), Time(support::Gmt(2024, 7, 5, 5, 8, 9)));
}

TEST_F(TimeFunctionsTest, TimeFromTextTakesAFormat) {
    EXPECT_EQ(script.Evaluate("MAKE_TIME_FROM_STRING \"05.01.2024 07:08\" \"%d.%m.%Y %H:%M\""),
              Time(support::Gmt(2024, 1, 5, 6, 8)));
    script.Local("D", value::CVal("2024/02/29"));
    script.Local("F", value::CVal("%Y/%m/%d"));
    EXPECT_EQ(script.Evaluate("MAKE_TIME_FROM_STRING D F"), Time(support::Gmt(2024, 2, 28, 23)));
    EXPECT_EQ(script.Evaluate("MAKE_TIME_FROM_STRING \"dzień 05.01.2024\" \"dzień %d.%m.%Y\""),
              Time(support::Gmt(2024, 1, 4, 23)));
    EXPECT_EQ(script.Evaluate("MAKE_TIME_FROM_STRING \"2024-02-31\" \"%Y-%m-%d\""),
              Time(support::Gmt(2024, 3, 1, 23)));
}

TEST_F(TimeFunctionsTest, TimeFromTextMustBeWrittenAsTheFormatSays) {
    for (const char* text : {"2024-1-05 00:00:00",   "2024-01-5 00:00:00",   "2024-1-5 00:00:00",
                             "2024-01-05 7:08:09",   "2024-01-05",           "2024-01-05 07:08:09 ",
                             " 2024-01-05 07:08:09", "2024-01-05  07:08:09", "2024-13-05 07:08:09",
                             "2024-00-05 07:08:09",  "2024-01-32 07:08:09",  "2024-01-00 07:08:09",
                             "2024-01-05 25:08:09",  "2024-01-05 07:60:09",  "2024-01-05 07:08:61",
                             "2024-01-05 07:08:60",  "2024-01-05T07:08:09",  "wczoraj",
                             "24-01-05 07:08:09",    "02024-01-05 07:08:09"}) {
        EXPECT_EQ(script.Evaluate("MAKE_TIME_FROM_STRING \"" + std::string(text) + "\""),
                  "failed 0")
            << text;
    }
    EXPECT_EQ(script.Evaluate("MAKE_TIME_FROM_STRING \"07:08\" \"%H:%M\""), "failed 0");
    EXPECT_EQ(script.Evaluate("MAKE_TIME_FROM_STRING \"2024\" \"%Y\""), "failed 0");
}

TEST_F(TimeFunctionsTest, TimeFromTextFailsWithItsOperands) {
    EXPECT_EQ(script.Evaluate("MAKE_TIME_FROM_STRING"), "failed 0");
    EXPECT_EQ(script.Evaluate("MAKE_TIME_FROM_STRING BRAK"), "failed 3 BRAK");
    EXPECT_EQ(script.Evaluate("MAKE_TIME_FROM_STRING \"2024-01-05 07:08:09\" BRAK"),
              "failed 3 BRAK");
}

TEST_F(TimeFunctionsTest, LastDayEndsTheLastGasDay) {
    EXPECT_EQ(script.Evaluate("LAST_DAY 2024 2"), Time(support::Gmt(2024, 3, 1, 5)));
    EXPECT_EQ(script.Evaluate("LAST_DAY 2023 2"), Time(support::Gmt(2023, 3, 1, 5)));
    EXPECT_EQ(script.Evaluate("LAST_DAY 2024 12"), Time(support::Gmt(2025, 1, 1, 5)));
    EXPECT_EQ(script.Evaluate("LAST_DAY 2024 6"), Time(support::Gmt(2024, 7, 1, 4)));
}

TEST_F(TimeFunctionsTest, LastDayCountsDaysInSeconds) {
    // From 6:00 of winter time on in steps of a day: 7:00 by the clock of summer, and vice versa.
    EXPECT_EQ(script.Evaluate("LAST_DAY 2024 3"), Time(support::Gmt(2024, 4, 1, 5)));
    EXPECT_EQ(script.Evaluate("LAST_DAY 2024 10"), Time(support::Gmt(2024, 11, 1, 4)));
}

TEST_F(TimeFunctionsTest, LastDayReadsBothOperands) {
    script.Local("ROK", value::CVal("2024"));
    EXPECT_EQ(script.Evaluate("LAST_DAY ROK 2.9", value::ValueType::Text),
              Time(support::Gmt(2024, 3, 1, 5)));
    EXPECT_EQ(script.Evaluate("LAST_DAY BRAK 2"), "failed 3 BRAK");
    EXPECT_EQ(script.Evaluate("LAST_DAY 2024 BRAK"), "failed 3 BRAK");
    EXPECT_EQ(script.Evaluate("LAST_DAY 2024"), "failed 3");
    script.Remote("Z").answer = ReadUnavailable;
    EXPECT_EQ(script.Evaluate("LAST_DAY Z BRAK"), "failed 15 Z");
}

TEST_F(TimeFunctionsTest, LastDayOutOfBoundsFails) {
    for (const char* text : {"LAST_DAY 2024 0", "LAST_DAY 2024 13", "LAST_DAY 1969 12",
                             "LAST_DAY 3001 1", "LAST_DAY -1 1"}) {
        EXPECT_EQ(script.Evaluate(text), "failed 0") << text;
    }
    EXPECT_EQ(script.Evaluate("LAST_DAY 1970 1"), Time(support::Gmt(1970, 2, 1, 5)));
    EXPECT_EQ(script.Evaluate("LAST_DAY 3000 12"), Time(support::Gmt(3001, 1, 1, 5)));
}

}  // namespace
}  // namespace kalvex::operands
