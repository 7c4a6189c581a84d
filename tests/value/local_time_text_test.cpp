#include "support/zone_scope.h"
#include "value/LocalTimeText.h"

#include <gtest/gtest.h>

namespace kalvex::value {
namespace {

class LocalTimeTextTest : public testing::Test {
  protected:
    support::ZoneScope zone{"Europe/Warsaw"};
};

TEST_F(LocalTimeTextTest, ReadsLocalTime) {
    EXPECT_EQ(ParseLocalTime("2024-03-10 07:00:00"), 1710050400);  // 06:00 GMT
    EXPECT_EQ(ParseLocalTime("2024-07-15 07:08:09"), 1721020089);  // 05:08:09 GMT
    EXPECT_EQ(ParseLocalTime("2024-02-29 23:59:59"), 1709247599);
}

TEST_F(LocalTimeTextTest, HourThatSpringLeavesOutIsReadWithTheOffsetBefore) {
    EXPECT_EQ(ParseLocalTime("2024-03-31 02:30:00"), ParseLocalTime("2024-03-31 03:30:00"));
}

TEST_F(LocalTimeTextTest, HourThatAutumnRepeatsIsItsFirst) {
    EXPECT_EQ(ParseLocalTime("2024-10-27 02:30:00"), 1729989000);  // 00:30 GMT
}

TEST_F(LocalTimeTextTest, OtherFormsAreNone) {
    for (const char* text :
         {"", "2024-03-10", "2024-03-10 07:00", "2024-03-10T07:00:00", "2024-03-10 07:00:00 ",
          " 2024-03-10 07:00:00", "2024-3-10 07:00:00", "24-03-10 07:00:00", "2024/03/10 07:00:00",
          "2024-03-10 7:00:00", "2024-03-10 07:00:0a", "+024-03-10 07:00:00"}) {
        EXPECT_EQ(ParseLocalTime(text), std::nullopt) << text;
    }
}

TEST_F(LocalTimeTextTest, DaysAndTimesThatDoNotExistAreNone) {
    for (const char* text : {"2024-00-10 07:00:00", "2024-13-10 07:00:00", "2024-03-00 07:00:00",
                             "2024-03-32 07:00:00", "2024-04-31 07:00:00", "2023-02-29 07:00:00",
                             "2100-02-29 07:00:00", "2024-03-10 24:00:00", "2024-03-10 07:60:00",
                             "2024-03-10 07:00:60"}) {
        EXPECT_EQ(ParseLocalTime(text), std::nullopt) << text;
    }
}

TEST_F(LocalTimeTextTest, WritesLocalTime) {
    EXPECT_EQ(FormatLocalTime(1710050400), "2024-03-10 07:00:00");
    EXPECT_EQ(FormatLocalTime(1721020089), "2024-07-15 07:08:09");
    EXPECT_EQ(FormatLocalTime(0), "1970-01-01 01:00:00");
}

TEST_F(LocalTimeTextTest, EachSecondOfTheYearsChangesComesBackAsItWas) {
    for (const std::int64_t change :
         {support::Gmt(2024, 3, 31, 1), support::Gmt(2024, 10, 27, 1)}) {
        for (std::int64_t time = change - 7300; time < change + 7300; ++time) {
            std::int64_t read = 0;
            ASSERT_EQ(ReadExactLocalTime(FormatExactLocalTime(time), read), LocalReading::Exact);
            ASSERT_EQ(read, time);
        }
    }
}

TEST_F(LocalTimeTextTest, OffsetStandsWhereTheReadingComesTwice) {
    const std::int64_t change = support::Gmt(2024, 10, 27, 1);
    EXPECT_EQ(FormatExactLocalTime(change - 3601), "2024-10-27 01:59:59");
    EXPECT_EQ(FormatExactLocalTime(change - 3600), "2024-10-27 02:00:00+02:00");
    EXPECT_EQ(FormatExactLocalTime(change - 1), "2024-10-27 02:59:59+02:00");
    EXPECT_EQ(FormatExactLocalTime(change), "2024-10-27 02:00:00+01:00");
    EXPECT_EQ(FormatExactLocalTime(change + 3600), "2024-10-27 03:00:00");
    const support::ZoneScope west("America/St_Johns");
    EXPECT_EQ(FormatExactLocalTime(support::Gmt(2024, 11, 3, 5, 0)), "2024-11-03 01:30:00-03:30");
}

TEST_F(LocalTimeTextTest, ExactReadingTellsWhatIsWrong) {
    struct Row {
        const char* text;
        LocalReading reading;
        std::int64_t time = 7;
    };
    const Row rows[] = {
        {"2024-03-10 07:00:00", LocalReading::Exact, 1710050400},
        {"2024-03-10 07:00:00+01:00", LocalReading::Exact, 1710050400},
        {"2024-03-10 07:00:00-05:30", LocalReading::Exact, 1710050400 + 6 * 3600 + 1800},
        {"2024-10-27 02:30:00", LocalReading::Twice},
        {"2024-03-31 02:30:00", LocalReading::LeftOut},
        {"2024-03-31 03:00:00", LocalReading::Exact, 1711846800},
        {"2024-03-10 07:00", LocalReading::Unreadable},
        {"2024-02-30 07:00:00", LocalReading::Unreadable},
        {"2024-03-10 07:00:00+1:00", LocalReading::Unreadable},
        {"2024-03-10 07:00:00+16:00", LocalReading::Unreadable},
        {"2024-03-10 07:00:00+01:60", LocalReading::Unreadable},
        {"2024-03-10 07:00:00Z", LocalReading::Unreadable},
        {"", LocalReading::Unreadable},
    };
    for (const Row& row : rows) {
        std::int64_t time = 7;
        EXPECT_EQ(ReadExactLocalTime(row.text, time), row.reading) << row.text;
        EXPECT_EQ(time, row.time) << row.text;
    }
}

}  // namespace
}  // namespace kalvex::value
