#include <gtest/gtest.h>

#include "operands/FunctionFamilies.h"
#include "support/fake_script.h"
#include "support/value_dump.h"
#include "support/zone_scope.h"

namespace kalvex::operands {
namespace {

constexpr FunctionRow kRows[] = {{"CHECK_EVENT_TIME", CheckEventTimeFunction, "", ""}};

class ScheduleFunctionTest : public testing::Test {
  protected:
    ScheduleFunctionTest() {
        script.clock.SetSystemTime(kNoon);
        script.Local("POLUDNIE", value::CVal("0 0 12 * * *"));
    }

    static const FunctionTable& Table() {
        static const FunctionTable table(kRows);
        return table;
    }

    static constexpr std::int64_t kNoon = support::Gmt(2024, 3, 10, 11);  // 12:00 of winter time

    support::ZoneScope zone{"Europe/Warsaw"};
    support::FakeScript script{Table()};
};

TEST_F(ScheduleFunctionTest, EntryAloneAsksAboutThePresent) {
    EXPECT_EQ(script.Evaluate("CHECK_EVENT_TIME \"0 0 12 * * *\""), "150:1");
    EXPECT_EQ(script.Evaluate("CHECK_EVENT_TIME POLUDNIE"), "150:1");
    EXPECT_EQ(script.Evaluate("CHECK_EVENT_TIME \"1 0 12 * * *\""), "150:0");
    script.clock.Advance(1000);
    EXPECT_EQ(script.Evaluate("CHECK_EVENT_TIME POLUDNIE"), "150:0");
}

TEST_F(ScheduleFunctionTest, WordsNeedNoQuotes) {
    script.clock.SetSystemTime(support::Gmt(2024, 3, 9, 23));
    EXPECT_EQ(script.Evaluate("CHECK_EVENT_TIME @daily"), "150:1");
    EXPECT_EQ(script.Evaluate("CHECK_EVENT_TIME \"@daily\""), "150:1");
    EXPECT_EQ(script.Evaluate("CHECK_EVENT_TIME @monthly"), "150:0");
}

TEST_F(ScheduleFunctionTest, TokenThatDoesNotEvaluateIsTheEntry) {
    script.clock.SetSystemTime(support::Gmt(2024, 3, 9, 23));
    EXPECT_EQ(script.Evaluate("CHECK_EVENT_TIME @Daily"), "150:0");
    EXPECT_EQ(script.Error(), "3 @Daily");
    EXPECT_EQ(script.Evaluate("CHECK_EVENT_TIME BRAK"), "150:0");
}

TEST_F(ScheduleFunctionTest, EntryThatCannotBeReadDoesNotFit) {
    EXPECT_EQ(script.Evaluate("CHECK_EVENT_TIME \"0 0 12 * *\""), "150:0");
    EXPECT_EQ(script.Error(), "0");
}

TEST_F(ScheduleFunctionTest, SmallNumberIsATolerance) {
    script.clock.SetSystemTime(kNoon - 4);
    EXPECT_EQ(script.Evaluate("CHECK_EVENT_TIME POLUDNIE 5"), "150:1");
    EXPECT_EQ(script.Evaluate("CHECK_EVENT_TIME POLUDNIE 4"), "150:0");
    script.Local("ZAPAS", value::CVal("5 sekund"));
    EXPECT_EQ(script.Evaluate("CHECK_EVENT_TIME POLUDNIE ZAPAS"), "150:1");
}

TEST_F(ScheduleFunctionTest, GreatNumberIsATime) {
    script.clock.SetSystemTime(5);
    script.Local("T", value::CVal(kNoon - 4));
    EXPECT_EQ(script.Evaluate("CHECK_EVENT_TIME POLUDNIE T"), "150:0");
    EXPECT_EQ(script.Evaluate("CHECK_EVENT_TIME POLUDNIE T 5"), "150:1");
    EXPECT_EQ(script.Evaluate("CHECK_EVENT_TIME POLUDNIE T 4"), "150:0");
    EXPECT_EQ(script.Evaluate("CHECK_EVENT_TIME POLUDNIE 1710068400"), "150:1");
}

TEST_F(ScheduleFunctionTest, TwoTimesAreARange) {
    script.Local("OD", value::CVal(kNoon - 10));
    script.Local("DO", value::CVal(kNoon));
    EXPECT_EQ(script.Evaluate("CHECK_EVENT_TIME POLUDNIE OD DO"), "150:1");
    EXPECT_EQ(script.Evaluate("CHECK_EVENT_TIME POLUDNIE DO OD"), "150:0");
    script.Variables().Find("DO")->SetValue(value::CVal(kNoon - 1), value::KindCurrent);
    EXPECT_EQ(script.Evaluate("CHECK_EVENT_TIME POLUDNIE OD DO"), "150:0");
}

TEST_F(ScheduleFunctionTest, TextWithoutANumberCountsAsNone) {
    script.Local("TEKST", value::CVal("abc"));
    EXPECT_EQ(script.Evaluate("CHECK_EVENT_TIME POLUDNIE TEKST"), "150:1");
    EXPECT_EQ(script.Evaluate("CHECK_EVENT_TIME POLUDNIE -5 500"), "150:1");
    EXPECT_EQ(script.Evaluate("CHECK_EVENT_TIME POLUDNIE 0 500"), "150:1");
}

TEST_F(ScheduleFunctionTest, MissingEntryOrBadNumbersFail) {
    EXPECT_EQ(script.Evaluate("CHECK_EVENT_TIME"), "failed 0");
    EXPECT_EQ(script.Evaluate("CHECK_EVENT_TIME POLUDNIE BRAK"), "failed 3 BRAK");
    EXPECT_EQ(script.Evaluate("CHECK_EVENT_TIME POLUDNIE 5 BRAK"), "failed 3 BRAK");
}

TEST_F(ScheduleFunctionTest, RestOfTheLineIsDropped) {
    EXPECT_EQ(script.Evaluate("CHECK_EVENT_TIME POLUDNIE 0 0 == 7 ("), "150:1");
}

}  // namespace
}  // namespace kalvex::operands
