// The points of a trend and what is drawn of them.
#include "workbench/model/TrendSeries.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>

#include "value/Status.h"
#include "workbench/model/ListTrend.h"

namespace kalvex::workbench {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TrendPoint Point(std::int64_t x, double value) {
    return {.x = x, .value = value};
}

TrendPoint Gap(std::int64_t x) {
    return {.x = x, .status = value::Status::Unknown, .good = false};
}

std::vector<std::int64_t> Places(const TrendSeries& series) {
    std::vector<std::int64_t> places;
    for (const TrendPoint& point : series.Points()) places.push_back(point.x);
    return places;
}

// Each stroke as "x:value ...".
std::vector<std::string> Told(const std::vector<TrendStroke>& strokes) {
    std::vector<std::string> told;
    for (const TrendStroke& stroke : strokes) {
        std::string text;
        for (const TrendPosition& position : stroke) {
            if (!text.empty()) text += ' ';
            text += std::to_string(std::lround(position.x)) + ":" +
                    std::to_string(std::lround(position.value));
        }
        told.push_back(text);
    }
    return told;
}

TEST(TrendSeriesPointTest, ValuesThatAreNoneAreGaps) {
    EXPECT_TRUE(MakeTrendPoint(1, value::CVal(2.5)).good);
    EXPECT_EQ(MakeTrendPoint(1, value::CVal(2.5)).value, 2.5);
    EXPECT_EQ(MakeTrendPoint(1, value::CVal("12.5")).value, 12.5);
    EXPECT_TRUE(MakeTrendPoint(1, value::CVal("12.5")).good);
    EXPECT_FALSE(MakeTrendPoint(1, value::CVal("12 m")).good);
    EXPECT_FALSE(MakeTrendPoint(1, value::CVal()).good);
    EXPECT_FALSE(MakeTrendPoint(1, value::CVal(std::nan(""))).good);
    EXPECT_EQ(MakeTrendPoint(1, value::CVal(std::numeric_limits<double>::infinity())).value, 0);
    for (const auto& [status, good] : {std::pair{value::Status::Unknown, false},
                                       std::pair{value::Status::TransmissionError, false},
                                       std::pair{value::Status::SetByUser, true}}) {
        value::CVal value(7);
        value.SetStatus(status);
        EXPECT_EQ(MakeTrendPoint(1, value).good, good);
        EXPECT_EQ(MakeTrendPoint(1, value).status, status);
    }
}

TEST(TrendSeriesTest, LiveValuesStandBehindTheArchive) {
    TrendSeries series;
    series.AddLive(Point(10, 1));
    series.AddLive(Point(20, 2));
    series.AddLive(Point(15, 9));
    series.AddLive(Point(20, 9));
    EXPECT_THAT(Places(series), ElementsAre(10, 20));
    series.SetArchive({Point(12, 5), Point(3, 4)});
    EXPECT_THAT(Places(series), ElementsAre(3, 12, 20));
    series.SetArchive({Point(4, 5)});
    EXPECT_THAT(Places(series), ElementsAre(4, 20));
    series.SetArchive({});
    EXPECT_THAT(Places(series), ElementsAre(20));
    series.Clear();
    EXPECT_THAT(Places(series), IsEmpty());
    series.AddLive(Point(1, 1));
    series.SetArchive({});
    EXPECT_THAT(Places(series), ElementsAre(1));
}

TEST(TrendSeriesTest, EqualLiveValuesInARowAreTwoPoints) {
    TrendSeries series;
    series.SetArchive({Point(1, 7), Point(2, 7)});
    for (int x = 3; x <= 9; ++x) series.AddLive(Point(x, 7));
    EXPECT_THAT(Places(series), ElementsAre(1, 2, 3, 9));
    series.AddLive(Gap(10));
    series.AddLive(Gap(11));
    series.AddLive(Gap(12));
    EXPECT_THAT(Places(series), ElementsAre(1, 2, 3, 9, 10, 12));
}

TEST(TrendSeriesTest, GapsEndALineAndALonelyPointIsADot) {
    TrendSeries series;
    series.SetArchive({Point(0, 1), Point(10, 2), Gap(20), Point(30, 3), Gap(40), Gap(50),
                       Point(60, 4), Point(70, 5)});
    EXPECT_THAT(Told(series.Strokes(0, 80, 800)), ElementsAre("0:1 10:2", "30:3", "60:4 70:5"));
    EXPECT_THAT(Told(TrendSeries().Strokes(0, 80, 800)), IsEmpty());
    TrendSeries gaps;
    gaps.SetArchive({Gap(1), Gap(2)});
    EXPECT_THAT(Told(gaps.Strokes(0, 80, 800)), IsEmpty());
}

TEST(TrendSeriesTest, LinesGoOnToTheNextPointOutside) {
    TrendSeries series;
    series.SetArchive({Point(0, 1), Point(10, 2), Point(20, 3), Point(30, 4)});
    EXPECT_THAT(Told(series.Strokes(12, 18, 100)), ElementsAre("10:2 20:3"));
    EXPECT_THAT(Told(series.Strokes(40, 50, 100)), ElementsAre("30:4"));
    EXPECT_THAT(Told(series.Strokes(-9, -5, 100)), ElementsAre("0:1"));
}

TEST(TrendSeriesTest, ColumnKeepsWhatStandsOut) {
    TrendSeries series;
    series.SetArchive({Point(0, 5), Point(1, 9), Point(2, 1), Point(3, 6), Point(4, 5),
                       Point(10, 2), Point(11, 2), Gap(12), Point(13, 8), Point(20, 1)});
    EXPECT_THAT(Told(series.Strokes(0, 30, 3)), ElementsAre("0:5 1:9 2:1 4:5 10:2 13:8", "20:1"));
}

TEST(TrendSeriesTest, AMillionPointsAreAFewThousandPositions) {
    std::vector<TrendPoint> points;
    for (int x = 0; x < 1'000'000; ++x)
        points.push_back(x % 2 == 0 ? Point(x, x == 500'000 ? 1e6 : std::sin(x)) : Gap(x));
    TrendSeries series;
    series.SetArchive(std::move(points));
    const auto strokes = series.Strokes(0, 1'000'000, 1000);
    std::size_t count = 0;
    double greatest = 0;
    for (const TrendStroke& stroke : strokes) {
        count += stroke.size();
        for (const TrendPosition& position : stroke) greatest = std::max(greatest, position.value);
    }
    EXPECT_LE(count, 4000u);
    EXPECT_LE(strokes.size(), 1001u);
    EXPECT_EQ(greatest, 1e6);
}

TEST(TrendSeriesTest, RangesAndTheNearestPoint) {
    TrendSeries series;
    EXPECT_FALSE(series.ValuesBetween(0, 1));
    EXPECT_FALSE(series.Extent());
    EXPECT_FALSE(series.Nearest(0));
    series.SetArchive({Point(0, 1), Point(10, -4), Gap(20), Point(30, 8)});
    EXPECT_EQ(series.Extent()->low, 0);
    EXPECT_EQ(series.Extent()->high, 30);
    EXPECT_EQ(series.ValuesBetween(1, 9)->low, -4);
    EXPECT_EQ(series.ValuesBetween(1, 9)->high, 1);
    EXPECT_EQ(series.ValuesBetween(11, 40)->high, 8);
    EXPECT_EQ(series.Nearest(-100), 0u);
    EXPECT_EQ(series.Nearest(5), 0u);
    EXPECT_EQ(series.Nearest(6), 1u);
    EXPECT_EQ(series.Nearest(21), 2u);
    EXPECT_EQ(series.Nearest(1000), 3u);
}

}  // namespace
}  // namespace kalvex::workbench
