#include "operands/TimeProperties.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/zone_scope.h"

namespace kalvex::operands {
namespace {

constexpr TimePropertyKind Time = TimePropertyKind::Time;
constexpr TimePropertyKind Int = TimePropertyKind::Int;

struct Expected {
    const char* name;
    TimePropertyKind kind;
    std::int64_t value;
    bool hasHelp;
};

// Every property of Monday 2024-07-01 00:30:45 in Warsaw, 22:30:45 GMT of the day before, in the
// order of the help list.
const Expected kExpected[] = {
    {".DAYOFWEEK", Int, 2, true},
    {".FIRSTLOCALHOUR", Time, support::Gmt(2024, 6, 30, 22), false},
    {".FIRSTLOCALDAY", Time, support::Gmt(2024, 6, 30, 22), true},
    {".FIRSTLOCALMONTH", Time, support::Gmt(2024, 6, 30, 22), true},
    {".FIRSTLOCALYEAR", Time, support::Gmt(2023, 12, 31, 23), true},
    {".FIRSTGMTHOUR", Time, support::Gmt(2024, 6, 30, 22), true},
    {".FIRSTGMTDAY", Time, support::Gmt(2024, 6, 30), true},
    {".FIRSTGMTMONTH", Time, support::Gmt(2024, 6, 1), true},
    {".FIRSTGMTYEAR", Time, support::Gmt(2024, 1, 1), true},
    {".LASTLOCALHOUR", Time, support::Gmt(2024, 6, 30, 22, 59, 59), true},
    {".LASTLOCALDAY", Time, support::Gmt(2024, 7, 1, 21, 59, 59), true},
    {".LASTLOCALMONTH", Time, support::Gmt(2024, 7, 31, 21, 59, 59), true},
    {".LASTLOCALYEAR", Time, support::Gmt(2024, 12, 31, 22, 59, 59), true},
    {".LASTGMTHOUR", Time, support::Gmt(2024, 6, 30, 22, 59, 59), true},
    {".LASTGMTDAY", Time, support::Gmt(2024, 6, 30, 23, 59, 59), true},
    {".LASTGMTMONTH", Time, support::Gmt(2024, 6, 30, 23, 59, 59), true},
    {".LASTGMTYEAR", Time, support::Gmt(2024, 12, 31, 23, 59, 59), true},
    {".PREVDAY", Time, support::Gmt(2024, 6, 29, 22, 30, 45), true},
    {".PREVLOCALDAY", Time, support::Gmt(2024, 6, 29, 22, 30, 45), true},
    {".PREVLOCALMONTH", Time, support::Gmt(2024, 5, 31, 22, 30, 45), true},
    {".PREVGMTDAY", Time, support::Gmt(2024, 6, 29, 22, 30, 45), true},
    {".PREVGMTMONTH", Time, support::Gmt(2024, 5, 30, 22, 30, 45), true},
    {".PREVGMTYEAR", Time, support::Gmt(2023, 6, 30, 22, 30, 45), true},
    {".NEXTDAY", Time, support::Gmt(2024, 7, 1, 22, 30, 45), true},
    {".NEXTLOCALDAY", Time, support::Gmt(2024, 7, 1, 22, 30, 45), true},
    {".NEXTLOCALMONTH", Time, support::Gmt(2024, 7, 31, 22, 30, 45), true},
    {".NEXTGMTDAY", Time, support::Gmt(2024, 7, 1, 22, 30, 45), true},
    {".NEXTGMTMONTH", Time, support::Gmt(2024, 7, 30, 22, 30, 45), true},
    {".NEXTGMTYEAR", Time, support::Gmt(2025, 6, 30, 22, 30, 45), true},
    {".GMTTOLOCAL", Time, support::Gmt(2024, 7, 1, 0, 30, 45), true},
    {".LOCALTOGMT", Time, support::Gmt(2024, 6, 30, 20, 30, 45), true},
    {".SEC", Int, 45, true},
    {".MIN", Int, 30, true},
    {".MIN.SEC", Int, 1845, false},
    {".GMTMIN", Int, 30, true},
    {".GMTMIN.SEC", Int, 1845, false},
    {".HOUR", Int, 0, true},
    {".HOUR.MIN", Int, 30, false},
    {".HOUR.MIN.SEC", Int, 1845, false},
    {".GMTHOUR", Int, 22, true},
    {".GMTHOUR.GMTMIN", Int, 1350, false},
    {".GMTHOUR.GMTMIN.SEC", Int, 81045, false},
    {".LOCALHOUR", Int, 0, true},
    {".LOCALHOUR.MIN", Int, 30, false},
    {".LOCALHOUR.MIN.SEC", Int, 1845, false},
    {".WINTERHOUR", Int, 23, true},
    {".WINTERHOUR.MIN", Int, 1410, false},
    {".WINTERHOUR.MIN.SEC", Int, 84645, false},
    {".DAY", Int, 1, true},
    {".GMTDAY", Int, 30, true},
    {".LOCALDAY", Int, 1, true},
    {".WINTERDAY", Int, 30, true},
    {".MONTH", Int, 7, true},
    {".GMTMONTH", Int, 6, true},
    {".LOCALMONTH", Int, 7, true},
    {".WINTERMONTH", Int, 6, true},
    {".YEAR", Int, 2024, false},
    {".GMTYEAR", Int, 2024, true},
    {".LOCALYEAR", Int, 2024, true},
    {".WINTERYEAR", Int, 2024, true},
};

std::int64_t Compute(const char* name, std::int64_t time) {
    const TimeProperty* row = FindTimeProperty(name);
    EXPECT_NE(row, nullptr) << name;
    return row == nullptr ? INT64_MIN : row->compute(time);
}

class TimePropertiesTest : public testing::Test {
  private:
    support::ZoneScope m_zone{"Europe/Warsaw"};
};

TEST_F(TimePropertiesTest, StandInTheirOrderWithTheirResults) {
    ASSERT_EQ(TimeProperties().size(), std::size(kExpected));
    for (std::size_t i = 0; i < std::size(kExpected); ++i) {
        const TimeProperty& row = TimeProperties()[i];
        EXPECT_EQ(row.name, kExpected[i].name);
        EXPECT_EQ(row.kind, kExpected[i].kind) << row.name;
        EXPECT_EQ(row.compute(support::Gmt(2024, 6, 30, 22, 30, 45)), kExpected[i].value)
            << row.name;
        EXPECT_EQ(!row.help.empty(), kExpected[i].hasHelp) << row.name;
    }
}

TEST_F(TimePropertiesTest, BearTheirHelp) {
    EXPECT_EQ(FindTimeProperty(".DAYOFWEEK")->help, "Bieżący dzień tygodnia");
    EXPECT_EQ(FindTimeProperty(".LASTLOCALMONTH")->help,
              "Ostatnia sekunda bieżącego miesiąca czasu lokalnego");
    EXPECT_EQ(FindTimeProperty(".NEXTDAY")->help, "Bieżąca chwila następnego dnia");
    EXPECT_EQ(FindTimeProperty(".GMTTOLOCAL")->help, "Konwersja GMT na czas lokalny");
    EXPECT_EQ(FindTimeProperty(".LOCALTOGMT")->help, "Konwersja czasu lokalnego na GMT");
    EXPECT_EQ(FindTimeProperty(".MONTH")->help, "Bieżąca miesiąc");
    EXPECT_EQ(FindTimeProperty(".WINTERYEAR")->help, "Bieżący rok czasu zimowego");
}

TEST_F(TimePropertiesTest, GMTFormsTakeTheGMTMinute) {
    const support::ZoneScope zone("Asia/Kolkata");  // +05:30
    const std::int64_t time = support::Gmt(2024, 3, 9, 18, 40, 20);
    EXPECT_EQ(Compute(".GMTMIN", time), 40);
    EXPECT_EQ(Compute(".GMTMIN.SEC", time), 2420);
    EXPECT_EQ(Compute(".GMTHOUR.GMTMIN", time), 1120);
    EXPECT_EQ(Compute(".GMTHOUR.GMTMIN.SEC", time), 67220);
    EXPECT_EQ(Compute(".HOUR.MIN.SEC", time), 620);
    EXPECT_EQ(Compute(".MIN.SEC", time), 620);
}

TEST(TimePropertiesHalfHourTest, WinterFormsTakeTheLocalMinute) {
    const support::ZoneScope zone("Australia/Lord_Howe");  // +10:30, in summer +11
    const std::int64_t time =
        support::Gmt(2024, 1, 10, 3, 20, 5);  // 14:20:05, in winter time 13:50:05
    EXPECT_EQ(Compute(".WINTERHOUR", time), 13);
    EXPECT_EQ(Compute(".WINTERHOUR.MIN", time), 13 * 60 + 20);
    EXPECT_EQ(Compute(".WINTERHOUR.MIN.SEC", time), 13 * 3600 + 20 * 60 + 5);
}

TEST_F(TimePropertiesTest, DayOfWeekCountsFromSunday) {
    for (int day = 0; day < 8; ++day) {
        const std::int64_t time =
            support::Gmt(2024, 2, 25, 22, 59, 59) + day * 86400;  // from a Sunday on
        EXPECT_EQ(Compute(".DAYOFWEEK", time), day % 7 + 1);
    }
}

TEST_F(TimePropertiesTest, DateStepsKeepTheClockReadingAcrossAChange) {
    EXPECT_EQ(Compute(".NEXTDAY", support::Gmt(2024, 3, 30, 11)),
              support::Gmt(2024, 3, 30, 11) + 82800);
    EXPECT_EQ(Compute(".PREVDAY", support::Gmt(2024, 3, 31, 10)),
              support::Gmt(2024, 3, 31, 10) - 82800);
    EXPECT_EQ(Compute(".NEXTDAY", support::Gmt(2024, 10, 26, 10)),
              support::Gmt(2024, 10, 26, 10) + 90000);
    EXPECT_EQ(Compute(".PREVDAY", support::Gmt(2024, 10, 27, 11)),
              support::Gmt(2024, 10, 27, 11) - 90000);
    EXPECT_EQ(Compute(".NEXTDAY", support::Gmt(2024, 3, 30, 1, 30)),
              support::Gmt(2024, 3, 31, 1, 30));  // 03:30
    EXPECT_EQ(Compute(".NEXTDAY", support::Gmt(2024, 10, 26, 0, 30)),
              support::Gmt(2024, 10, 27, 0, 30));  // first
    EXPECT_EQ(Compute(".PREVDAY", support::Gmt(2024, 3, 1, 11)), support::Gmt(2024, 2, 29, 11));
    EXPECT_EQ(Compute(".NEXTDAY", support::Gmt(2024, 12, 31, 11)), support::Gmt(2025, 1, 1, 11));
}

TEST_F(TimePropertiesTest, OfANegativeTimeAreMadeOfMissingFields) {
    EXPECT_EQ(Compute(".YEAR", -1), 0);
    EXPECT_EQ(Compute(".DAYOFWEEK", -1), 0);
    EXPECT_EQ(Compute(".HOUR", -1), -1);
    EXPECT_EQ(Compute(".HOUR.MIN", -1), -61);
    EXPECT_EQ(Compute(".HOUR.MIN.SEC", -1), -3661);
    EXPECT_EQ(Compute(".WINTERHOUR.MIN.SEC", -1), -3661);
    EXPECT_EQ(Compute(".GMTMIN.SEC", -1), -61);
}

TEST_F(TimePropertiesTest, LeaveATimeTooFarAwayAsItIs) {
    for (const TimeProperty& row : TimeProperties()) {
        if (row.kind != TimePropertyKind::Time) continue;
        EXPECT_EQ(row.compute(INT64_MAX), INT64_MAX) << row.name;
        EXPECT_EQ(row.compute(INT64_MIN), INT64_MIN) << row.name;
    }
}

TEST(TimePropertiesFindTest, ComparesExactly) {
    EXPECT_EQ(FindTimeProperty(".HOUR.MIN")->name, ".HOUR.MIN");
    for (const char* text : {"", ".", "HOUR", ".YEARS", ".hour", ".HOUR.", ".HOUR.SEC", " .HOUR",
                             ".HREP.HOUR", ".PREVLOCALYEAR", ".NEXTLOCALYEAR"}) {
        EXPECT_EQ(FindTimeProperty(text), nullptr) << text;
    }
}

TEST(TimePropertiesMentionsTest, FindsANameAtPositionOneOrLater) {
    for (const char* text : {"X.DAY", "TIME.HOUR", "1000000000.YEAR", "A.HREP.HOUR", "TIME.YEARS",
                             "A.SECOND", "A..MIN", "1.5.DAY", "..DAY", "A B.WINTERYEAR C"}) {
        EXPECT_TRUE(MentionsTimeProperty(text)) << text;
    }
}

TEST(TimePropertiesMentionsTest, FindsNoneElsewhere) {
    for (const char* text : {"", ".", "X", "TIME", "TIME.", "DAY", "A.HREP", "A.UNIT", "3.14",
                             "A.day", "A.DA", "A.", "A.TIMESTAMP", "XDAY", "A. DAY", "A.\xb3"}) {
        EXPECT_FALSE(MentionsTimeProperty(text)) << text;
    }
}

TEST(TimePropertiesMentionsTest, LooksAtTheFirstOccurrenceOfEachName) {
    EXPECT_FALSE(MentionsTimeProperty(".DAY"));
    EXPECT_FALSE(MentionsTimeProperty(".DAY.DAY"));
    EXPECT_TRUE(MentionsTimeProperty(".DAY.HOUR"));
    EXPECT_TRUE(MentionsTimeProperty(".HOUR.MIN"));  // .MIN
    EXPECT_TRUE(MentionsTimeProperty(".DAY.DAYOFWEEK"));
    EXPECT_TRUE(MentionsTimeProperty(".HOURX.HOUR.MIN"));
    EXPECT_FALSE(MentionsTimeProperty(".DAYOFWEEK.DAY"));
}

// The rule as it is told, name by name, beside the faster search.
TEST(TimePropertiesMentionsTest, AgreesWithASearchForEachName) {
    const std::vector<std::string> pieces = {"",      ".",    "A",    ".DAY", ".DAYOFWEEK",
                                             ".HOUR", "1",    ".MIN", ".SEC", "TIME",
                                             ".GMT",  "HOUR", ".x"};
    int mentioned = 0;
    for (const std::string& a : pieces) {
        for (const std::string& b : pieces) {
            for (const std::string& c : pieces) {
                const std::string text = a + b + c;
                bool expected = false;
                for (const Expected& row : kExpected) {
                    const std::size_t at = text.find(row.name);
                    expected = expected || (at != std::string::npos && at >= 1);
                }
                EXPECT_EQ(MentionsTimeProperty(text), expected) << text;
                mentioned += expected;
            }
        }
    }
    EXPECT_GT(mentioned, 100);
}

}  // namespace
}  // namespace kalvex::operands
