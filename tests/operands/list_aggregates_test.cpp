#include "operands/ListAggregates.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

#include "support/value_dump.h"

namespace kalvex::operands {
namespace {

constexpr std::int64_t kNow = 5000;

value::CVal Element(int number, std::uint16_t status, std::int64_t time) {
    value::CVal value(number);
    value.SetStatus(status);
    value.SetTime(time);
    return value;
}

class ListAggregatesTest : public testing::Test {
  protected:
    void SetUp() override {
        list.Add(Element(5, 0, 100));
        list.Add(Element(2, value::Status::Unknown, 200));
        list.Add(Element(5, value::Status::Alarm, 300));
        list.Add(Element(3, 0, 400));
    }

    CVariableList list{"L"};
};

TEST_F(ListAggregatesTest, CountFollowsMaskAndRange) {
    EXPECT_EQ(CountItems(list, {}), 4);
    EXPECT_EQ(CountItems(list, {value::Status::Unknown}), 3);
    EXPECT_EQ(CountItems(list, {value::Status::Unknown | value::Status::Alarm}), 2);
    EXPECT_EQ(CountItems(list, {0, 200, 300}), 2);
    EXPECT_EQ(CountItems(list, {0, 201, 299}), 0);
    list.Add(Element(1, 0, value::kLargestTime + 1));
    EXPECT_EQ(CountItems(list, {}), 5);
    EXPECT_EQ(CountItems(list, {value::Status::Unknown}), 3);
}

TEST_F(ListAggregatesTest, SumHasTheTimeOfItsMaking) {
    value::CVal result;
    EXPECT_TRUE(SumItems(list, result, {}, kNow));
    EXPECT_EQ(support::Dump(result), "150:15");
    EXPECT_EQ(result.GetStatus(), value::Status::SetByUser);
    EXPECT_EQ(result.GetTime(), kNow);
    EXPECT_TRUE(SumItems(list, result, {value::Status::Unknown}, kNow));
    EXPECT_EQ(support::Dump(result), "150:13");
}

TEST_F(ListAggregatesTest, AverageIsADouble) {
    value::CVal result;
    EXPECT_TRUE(AverageItems(list, result, {0, 300, 400}, kNow));
    EXPECT_EQ(support::Dump(result), "171:4.00");
    EXPECT_EQ(result.GetStatus(), value::Status::SetByUser);
    EXPECT_EQ(result.GetTime(), kNow);
}

TEST_F(ListAggregatesTest, ExtremesAreTheElementsThemselves) {
    value::CVal result;
    EXPECT_TRUE(MaxItem(list, result, {}));
    EXPECT_EQ(support::Dump(result), "150:5");
    EXPECT_EQ(result.GetTime(), 100);
    EXPECT_EQ(result.GetStatus(), 0);
    EXPECT_TRUE(MinItem(list, result, {}));
    EXPECT_EQ(result.GetTime(), 200);
    EXPECT_EQ(result.GetStatus(), value::Status::Unknown);
    EXPECT_TRUE(MinItem(list, result, {value::Status::Unknown}));
    EXPECT_EQ(result.GetTime(), 400);
}

TEST_F(ListAggregatesTest, NothingThatCountsLeavesTheResult) {
    value::CVal result("przed");
    const ElementFilter nothing{0, 1, 2};
    EXPECT_FALSE(SumItems(list, result, nothing, kNow));
    EXPECT_FALSE(AverageItems(list, result, nothing, kNow));
    EXPECT_FALSE(MaxItem(list, result, nothing));
    EXPECT_FALSE(MinItem(list, result, nothing));
    EXPECT_FALSE(SumItems(CVariableList("E"), result, {}, kNow));
    EXPECT_EQ(support::Dump(result), "190:przed");
}

TEST_F(ListAggregatesTest, ElementsAreNotChanged) {
    value::CVal result;
    SumItems(list, result, {}, kNow);
    EXPECT_EQ(support::Dump(list.Elements()[0]), "150:5");
    EXPECT_EQ(list.Elements()[0].GetTime(), 100);
}

TEST_F(ListAggregatesTest, AverageDividesByTheCount) {
    list.Add(Element(7, 0, -1));
    value::CVal result;
    EXPECT_TRUE(SumItems(list, result, {}, kNow));
    EXPECT_EQ(support::Dump(result), "150:15");
    EXPECT_TRUE(AverageItems(list, result, {}, kNow));
    EXPECT_EQ(support::Dump(result), "171:3.00");
    EXPECT_TRUE(AverageItems(list, result, {value::Status::Unknown}, kNow));
    EXPECT_EQ(support::Dump(result), "171:4.333333333333333");
}

// Doubles mostly, so that rows of them begin and end at every place.
value::CVal AnyContent(std::mt19937& random) {
    switch (random() % 12) {
        case 0:
            return value::CVal(static_cast<int>(random()));
        case 1:
            return value::CVal(std::numeric_limits<std::int64_t>::max());
        case 2:
            return value::CVal("12.25");
        case 3:
            return value::CVal("x");
        case 4:
            return value::CVal();
        default:
            return value::CVal(static_cast<double>(random()) / 3e9 - 0.7);
    }
}

TEST(ListAggregatesFoldTest, SumIsThatOfEachElementToTheOnesBefore) {
    std::mt19937 random(11);
    for (int round = 0; round < 2000; ++round) {
        CVariableList list("L");
        value::CVal sum;
        const ElementFilter known{value::Status::Unknown};
        int count = 0;
        for (std::size_t left = random() % 12; left > 0; --left) {
            value::CVal element = AnyContent(random);
            element.SetStatus(random() % 5 == 0 ? value::Status::Unknown : 0);
            list.Insert(static_cast<int>(list.Elements().size()) / 2, element);
        }
        for (const value::CVal& element : list.Elements()) {
            if (element.GetStatus() != 0) continue;
            if (count++ == 0) {
                sum = element;
            } else {
                sum += element;
            }
        }
        value::CVal result;
        ASSERT_EQ(SumItems(list, result, known, kNow), count > 0);
        ASSERT_EQ(support::Dump(result), support::Dump(sum)) << round;
        ASSERT_EQ(AverageItems(list, result, known, kNow), count > 0);
        if (count > 0) sum /= value::CVal(count);
        ASSERT_EQ(support::Dump(result), support::Dump(sum)) << round;
    }
}

TEST(ListAggregatesArchiveTest, SortsByTimeAndKeepsTheOrderOfEqualTimes) {
    value::CArchiveValueList values;
    values.Add(Element(1, 0, 30));
    values.Add(Element(2, 0, 10));
    values.Add(Element(3, 0, 30));
    values.SortTimes();
    EXPECT_EQ(support::Dump(*values.Get(0)), "150:2");
    EXPECT_EQ(support::Dump(*values.Get(1)), "150:1");
    EXPECT_EQ(support::Dump(*values.Get(2)), "150:3");
    EXPECT_EQ(values.Get(3), nullptr);
    EXPECT_EQ(values.GetSize(), 3u);
    values.RemoveAll();
    EXPECT_EQ(values.Get(0), nullptr);
}

}  // namespace
}  // namespace kalvex::operands
