// Axes and texts of a trend.
#include "workbench/model/TrendScale.h"

#include <gmock/gmock.h>

#include "support/zone_scope.h"
#include "text/CodePage.h"
#include "value/LocalTimeText.h"
#include "value/Status.h"

namespace kalvex::workbench {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> Labels(const std::vector<TrendStep>& steps) {
    std::vector<std::string> labels;
    for (const TrendStep& step : steps) labels.push_back(step.label);
    return labels;
}

TEST(TrendScaleTest, ValueStepsAreRound) {
    EXPECT_THAT(Labels(ValueSteps(0, 10, 5)), ElementsAre("0", "2", "4", "6", "8", "10"));
    EXPECT_THAT(Labels(ValueSteps(-0.13, 0.31, 5)),
                ElementsAre("-0.1", "0.0", "0.1", "0.2", "0.3"));
    EXPECT_THAT(Labels(ValueSteps(1234, 5678, 4)), ElementsAre("2000", "4000"));
    EXPECT_THAT(Labels(ValueSteps(0.9995, 1.0007, 6)),
                ElementsAre("0.9996", "0.9998", "1.0000", "1.0002", "1.0004", "1.0006"));
    EXPECT_THAT(Labels(ValueSteps(5, 5, 5)), IsEmpty());
    EXPECT_THAT(Labels(ValueSteps(6, 5, 5)), IsEmpty());
}

class TrendScaleTimeTest : public testing::Test {
  protected:
    static std::vector<std::string> Steps(std::string_view from, std::string_view to, int most) {
        return Labels(TimeSteps(*value::ParseLocalTime(from), *value::ParseLocalTime(to), most));
    }

    support::ZoneScope m_zone{"Europe/Warsaw"};
};

TEST_F(TrendScaleTimeTest, EachUnitOfTheClock) {
    EXPECT_THAT(
        Steps("2024-03-10 07:00:01", "2024-03-10 07:00:11", 5),
        ElementsAre("07:00:02\n2024-03-10", "07:00:04", "07:00:06", "07:00:08", "07:00:10"));
    EXPECT_THAT(
        Steps("2024-03-10 23:40:00", "2024-03-11 00:31:00", 6),
        ElementsAre("23:40\n2024-03-10", "23:50", "00:00\n2024-03-11", "00:10", "00:20", "00:30"));
    EXPECT_THAT(Steps("2024-03-10 07:00:00", "2024-03-11 07:00:00", 4),
                ElementsAre("12:00\n2024-03-10", "18:00", "00:00\n2024-03-11", "06:00"));
    EXPECT_THAT(Steps("2024-02-27 07:00:00", "2024-03-02 07:00:00", 5),
                ElementsAre("2024-02-28", "2024-02-29", "2024-03-01", "2024-03-02"));
    EXPECT_THAT(Steps("2024-01-20 07:00:00", "2024-07-20 07:00:00", 3),
                ElementsAre("2024-04", "2024-07"));
    EXPECT_THAT(Steps("2021-01-20 07:00:00", "2024-07-20 07:00:00", 4),
                ElementsAre("2022", "2023", "2024"));
    EXPECT_THAT(Steps("2024-03-10 07:00:01", "2024-03-10 07:00:01", 5), IsEmpty());
}

TEST_F(TrendScaleTimeTest, NightOfSpring) {
    EXPECT_THAT(Steps("2024-03-31 00:30:00", "2024-03-31 05:00:00", 6),
                ElementsAre("01:00 CET\n2024-03-31", "03:00 CEST", "04:00 CEST", "05:00 CEST"));
    EXPECT_THAT(Steps("2024-03-30 20:00:00", "2024-03-31 09:00:00", 6),
                ElementsAre("20:00 CET\n2024-03-30", "22:00 CET", "00:00 CET\n2024-03-31",
                            "04:00 CEST", "06:00 CEST", "08:00 CEST"));
}

TEST_F(TrendScaleTimeTest, NightOfAutumnHasAReadingTwice) {
    EXPECT_THAT(
        Steps("2024-10-27 01:00:00", "2024-10-27 04:00:00", 6),
        ElementsAre("01:00 CEST\n2024-10-27", "02:00 CEST", "02:00 CET", "03:00 CET", "04:00 CET"));
    EXPECT_THAT(Steps("2024-10-26 00:00:00", "2024-10-29 00:00:00", 4),
                ElementsAre("2024-10-26", "2024-10-27", "2024-10-28", "2024-10-29"));
}

TEST(TrendScaleHalfHourTest, ClockThatChangesByHalfAnHour) {
    const support::ZoneScope zone("Australia/Lord_Howe");
    const std::int64_t change = support::Gmt(2024, 10, 5, 15, 30);  // 02:00 becomes 02:30
    EXPECT_THAT(Labels(TimeSteps(change - 5400, change + 7200, 6)),
                ElementsAre("01:00 +1030\n2024-10-06", "03:00 +11", "04:00 +11"));
}

TEST(TrendScaleTest, MarginGivesEveryRangeAHeight) {
    EXPECT_EQ(WithMargin({0, 10}).low, -0.5);
    EXPECT_EQ(WithMargin({0, 10}).high, 10.5);
    EXPECT_EQ(WithMargin({0, 0}).low, -0.5);
    EXPECT_EQ(WithMargin({100, 100}).high, 105);
}

TEST(TrendScaleTest, TextsOfTheCursor) {
    const support::ZoneScope zone("Europe/Warsaw");
    const platform::Translator translator;
    const TrendPoint point{.x = support::Gmt(2024, 10, 27, 1), .value = 12.5, .status = 0x24};
    EXPECT_EQ(TrendValueText(point, "m3/h", translator), "12.50 m3/h (ALARM SET_BY_USER)");
    EXPECT_EQ(TrendValueText({.x = 1, .value = 3}, "", translator), "3.00");
    const TrendPoint bad{.x = 1, .status = value::Status::Unknown, .good = false};
    EXPECT_EQ(text::ToUtf8(TrendValueText(bad, "m3/h", translator)), "bez wartości (UNKNOWN)");
    EXPECT_EQ(TrendPlaceText(point, true, translator), "2024-10-27 02:00:00 CET");
    EXPECT_EQ(TrendPlaceText({.x = 11}, false, translator), "element 12");
    EXPECT_EQ(StatusText(value::Status::HardLock), "LOCK");
}

TEST(TrendScaleViewTest, ZoomKeepsItsPlaceAndHasBounds) {
    TrendView view;
    view.Show({100, 200});
    view.Zoom(0.5, 125);
    EXPECT_EQ(view.From(), 112.5);
    EXPECT_EQ(view.To(), 162.5);
    view.Move(0.5);
    EXPECT_EQ(view.From(), 137.5);
    EXPECT_EQ(view.To(), 187.5);
    for (int i = 0; i < 200; ++i) view.Zoom(0.5, 150);
    EXPECT_EQ(view.Width(), 2);
    for (int i = 0; i < 200; ++i) view.Zoom(2, 150);
    EXPECT_NEAR(view.Width(), 1e11, 1);
    view.Show({5, 5});
    EXPECT_EQ(view.From(), 4);
    EXPECT_EQ(view.To(), 6);
}

}  // namespace
}  // namespace kalvex::workbench
