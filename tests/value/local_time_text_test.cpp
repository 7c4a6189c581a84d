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

}  // namespace
}  // namespace kalvex::value
