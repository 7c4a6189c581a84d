#include "audit/Since.h"

#include <gtest/gtest.h>

#include "support/zone_scope.h"

namespace kalvex::audit {
namespace {

using support::Gmt;

constexpr std::int64_t kNow = Gmt(2024, 3, 10, 6);

class SinceTest : public testing::Test {
  protected:
    support::ZoneScope m_zone{"Europe/Warsaw"};
};

TEST_F(SinceTest, TimesAreLocal) {
    EXPECT_EQ(ParseSince("2024-03-10", kNow), Gmt(2024, 3, 9, 23));
    EXPECT_EQ(ParseSince("2024-03-10 07:05", kNow), Gmt(2024, 3, 10, 6, 5));
    EXPECT_EQ(ParseSince("2024-03-10 07:05:09", kNow), Gmt(2024, 3, 10, 6, 5, 9));
    EXPECT_EQ(ParseSince("2024-07-01", kNow), Gmt(2024, 6, 30, 22));
}

TEST_F(SinceTest, SpansGoBackFromNow) {
    EXPECT_EQ(ParseSince("30m", kNow), kNow - 1800);
    EXPECT_EQ(ParseSince("2h", kNow), kNow - 7200);
    EXPECT_EQ(ParseSince("7d", kNow), kNow - 7 * 86400);
    EXPECT_EQ(ParseSince("0h", kNow), kNow);
    // Ten characters, as a date has.
    EXPECT_EQ(ParseSince("000000002h", kNow), kNow - 7200);
}

TEST_F(SinceTest, OtherTextsAreNone) {
    for (const char* text : {"",
                             "h",
                             "2",
                             "2x",
                             "-2h",
                             "+2h",
                             " 2h",
                             "2 h",
                             "2H",
                             "2.5h",
                             "99999999999999999999d",
                             "400000000d",
                             "2024-03-32",
                             "2024-3-10",
                             "2024-03-10 ",
                             "2024-03-10 7:00",
                             "2024-03-10 24:00",
                             "2024-03-10T07:00",
                             "2024-03-10 07:00:60",
                             "2024-03-10 07:00:00 "}) {
        EXPECT_EQ(ParseSince(text, kNow), std::nullopt) << text;
    }
}

}  // namespace
}  // namespace kalvex::audit
