#include "server/ReportComputing.h"

#include <gtest/gtest.h>

#include <limits>

#include "support/value_dump.h"
#include "value/Status.h"

namespace kalvex::server {
namespace {

constexpr TimeSpan kSpan{3600, 7200};
constexpr std::uint16_t kLoaded = value::Status::ReportLoaded;

void ExpectResult(const value::CVal& result, double number, std::uint16_t status) {
    ASSERT_EQ(result.GetType(), value::ValueType::Double);
    EXPECT_DOUBLE_EQ(result.Real(), number);
    EXPECT_EQ(result.GetStatus(), status);
}

void ExpectNothingKnown(const value::CVal& result, std::uint16_t more = 0) {
    EXPECT_EQ(result.GetType(), value::ValueType::None);
    EXPECT_EQ(result.GetStatus(), value::Status::Unknown | kLoaded | more);
}

TEST(ReportComputingRuleTest, Words) {
    EXPECT_EQ(ReportRuleFromWord("mean"), ReportRule::Mean);
    EXPECT_EQ(ReportRuleFromWord("sum"), ReportRule::Sum);
    EXPECT_EQ(ReportRuleFromWord("increase"), ReportRule::Increase);
    EXPECT_EQ(ReportRuleFromWord("Mean"), std::nullopt);
}

// 10 for 1800 s, 20 for 900 s, 40 for 900 s: (18000 + 18000 + 36000) / 3600.
TEST(ReportComputingMeanTest, IsWeightedByTime) {
    const value::CVal result = ComputeFromArchive(
        ReportRule::Mean, kSpan, support::Stamped(value::CVal(10.0), 100),
        {support::Stamped(value::CVal(20.0), 5400), support::Stamped(value::CVal(40.0), 6300)});
    ExpectResult(result, 20.0, kLoaded);
}

TEST(ReportComputingMeanTest, ValueBeforeStandsForTheWholeSpan) {
    ExpectResult(
        ComputeFromArchive(ReportRule::Mean, kSpan, support::Stamped(value::CVal(7), 0), {}), 7.0,
        kLoaded);
}

TEST(ReportComputingMeanTest, ValueAtTheBeginTakesThePlaceOfTheOneBefore) {
    const value::CVal result = ComputeFromArchive(
        ReportRule::Mean, kSpan, support::Stamped(value::CVal(100.0), 10, value::Status::Alarm),
        {support::Stamped(value::CVal(5.0), 3600)});
    ExpectResult(result, 5.0, kLoaded);
}

// Nothing known up to 5400; 30 from there on.
TEST(ReportComputingMeanTest, MissingBeginIsTold) {
    const value::CVal result = ComputeFromArchive(ReportRule::Mean, kSpan, std::nullopt,
                                                  {support::Stamped(value::CVal(30.0), 5400)});
    ExpectResult(result, 30.0, kLoaded | value::Status::CalculateError);
}

// 10 for 900 s, unknown for 1800 s, 50 for 900 s: (10 + 50) / 2.
TEST(ReportComputingMeanTest, UnknownPartIsLeftOutAndTold) {
    const value::CVal result = ComputeFromArchive(
        ReportRule::Mean, kSpan, support::Stamped(value::CVal(10.0), 0),
        {support::Stamped(value::CVal(9999.0), 4500,
                          value::Status::Unknown | value::Status::TransmissionError),
         support::Stamped(value::CVal(50.0), 6300)});
    ExpectResult(result, 30.0,
                 kLoaded | value::Status::CalculateError | value::Status::TransmissionError);
}

TEST(ReportComputingMeanTest, TextThatIsANumberCountsAndAnotherDoesNot) {
    const value::CVal result = ComputeFromArchive(
        ReportRule::Mean, kSpan, std::nullopt,
        {support::Stamped(value::CVal("12"), 3600), support::Stamped(value::CVal("awaria"), 5400)});
    ExpectResult(result, 12.0, kLoaded | value::Status::CalculateError);
}

TEST(ReportComputingMeanTest, NumberThatIsNoneIsUnknown) {
    const double none = std::numeric_limits<double>::quiet_NaN();
    ExpectNothingKnown(ComputeFromArchive(ReportRule::Mean, kSpan, std::nullopt,
                                          {support::Stamped(value::CVal(none), 3600)}));
}

TEST(ReportComputingMeanTest, NothingKnown) {
    ExpectNothingKnown(ComputeFromArchive(ReportRule::Mean, kSpan, std::nullopt, {}));
    ExpectNothingKnown(
        ComputeFromArchive(ReportRule::Mean, kSpan, std::nullopt,
                           {support::Stamped(value::CVal(), 3600, value::Status::Unknown | 2)}),
        value::Status::TransmissionError);
}

TEST(ReportComputingStatusTest, WorstOfAllThatWentInIsTakenOver) {
    const value::CVal result = ComputeFromArchive(
        ReportRule::Mean, kSpan,
        support::Stamped(value::CVal(1.0), 0, value::Status::Alarm | value::Status::SetByUser),
        {support::Stamped(
             value::CVal(1.0), 5400,
             value::Status::SoftLock | value::Status::Supervisory | value::Status::SetByDevice),
         support::Stamped(value::CVal(1.0), 6000, 0x0400 | value::Status::ReportInited)});
    ExpectResult(result, 1.0, kLoaded | value::Status::Alarm | value::Status::SoftLock | 0x0400);
}

TEST(ReportComputingSumTest, AddsTheAmountsOfTheSpan) {
    ExpectResult(
        ComputeFromArchive(
            ReportRule::Sum, kSpan, std::nullopt,
            {support::Stamped(value::CVal(1.5), 3600), support::Stamped(value::CVal(2), 3700),
             support::Stamped(value::CVal(3.0), 7199, value::Status::Alarm)}),
        6.5, kLoaded | value::Status::Alarm);
    ExpectNothingKnown(ComputeFromArchive(ReportRule::Sum, kSpan, std::nullopt, {}));
}

TEST(ReportComputingSumTest, UnknownAmountIsLeftOutAndTold) {
    ExpectResult(
        ComputeFromArchive(ReportRule::Sum, kSpan, std::nullopt,
                           {support::Stamped(value::CVal(1.5), 3600),
                            support::Stamped(value::CVal(2.0), 3700, value::Status::Unknown)}),
        1.5, kLoaded | value::Status::CalculateError);
}

// From 100 to 130; a new beginning with 4; to 10: 30 + 4 + 6.
TEST(ReportComputingIncreaseTest, CounterThatFallsHasBegunAnew) {
    ExpectResult(
        ComputeFromArchive(
            ReportRule::Increase, kSpan, support::Stamped(value::CVal(100.0), 3599),
            {support::Stamped(value::CVal(130.0), 4000), support::Stamped(value::CVal(4.0), 5000),
             support::Stamped(value::CVal(10.0), 6000)}),
        40.0, kLoaded);
}

TEST(ReportComputingIncreaseTest, UnknownReadingLeavesNothingOut) {
    ExpectResult(
        ComputeFromArchive(ReportRule::Increase, kSpan, support::Stamped(value::CVal(100.0), 3599),
                           {support::Stamped(value::CVal(), 4000, value::Status::Unknown),
                            support::Stamped(value::CVal(112.0), 5000)}),
        12.0, kLoaded);
}

TEST(ReportComputingIncreaseTest, WithoutAReadingBeforeAPartIsMissing) {
    ExpectResult(ComputeFromArchive(ReportRule::Increase, kSpan, std::nullopt,
                                    {support::Stamped(value::CVal(100.0), 4000),
                                     support::Stamped(value::CVal(103.0), 5000)}),
                 3.0, kLoaded | value::Status::CalculateError);
    ExpectNothingKnown(ComputeFromArchive(ReportRule::Increase, kSpan, std::nullopt,
                                          {support::Stamped(value::CVal(100.0), 4000)}));
}

TEST(ReportComputingIncreaseTest, WithoutReadingsNothingIsKnown) {
    ExpectNothingKnown(ComputeFromArchive(ReportRule::Increase, kSpan,
                                          support::Stamped(value::CVal(100.0), 3599), {}));
}

// Parts of 1 h and 3 h: (10 + 3 * 50) / 4.
TEST(ReportComputingReportsTest, MeanIsWeightedByTheirLengths) {
    ExpectResult(
        ComputeFromReports(
            ReportRule::Mean,
            {{3600, support::Stamped(value::CVal(10.0), 0, kLoaded)},
             {3 * 3600, support::Stamped(value::CVal(50.0), 0, value::Status::SetByUser)}}),
        40.0, kLoaded);
}

TEST(ReportComputingReportsTest, SumAndIncreaseAreAdded) {
    const std::vector<ReportPart> parts{
        {3600, support::Stamped(value::CVal(10.0), 0)},
        {3 * 3600, support::Stamped(value::CVal(50.0), 0, value::Status::Alarm)}};
    ExpectResult(ComputeFromReports(ReportRule::Sum, parts), 60.0, kLoaded | value::Status::Alarm);
    ExpectResult(ComputeFromReports(ReportRule::Increase, parts), 60.0,
                 kLoaded | value::Status::Alarm);
}

TEST(ReportComputingReportsTest, MissingAndUnknownPartsAreTold) {
    ExpectResult(
        ComputeFromReports(ReportRule::Mean,
                           {{3600, support::Stamped(value::CVal(10.0), 0)}, {3600, std::nullopt}}),
        10.0, kLoaded | value::Status::CalculateError);
    ExpectResult(
        ComputeFromReports(ReportRule::Sum,
                           {{3600, support::Stamped(value::CVal(10.0), 0)},
                            {3600, support::Stamped(value::CVal(5.0), 0, value::Status::Unknown)}}),
        10.0, kLoaded | value::Status::CalculateError);
    ExpectNothingKnown(ComputeFromReports(ReportRule::Sum, {{3600, std::nullopt}}));
    ExpectNothingKnown(ComputeFromReports(ReportRule::Mean, {}));
}

TEST(ReportComputingReportsTest, CalculateErrorOfAPartIsTakenOver) {
    ExpectResult(
        ComputeFromReports(ReportRule::Sum,
                           {{3600, support::Stamped(value::CVal(10.0), 0,
                                                    kLoaded | value::Status::CalculateError)}}),
        10.0, kLoaded | value::Status::CalculateError);
}

}  // namespace
}  // namespace kalvex::server
