#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "support/value_dump.h"
#include "value/Value.h"

namespace kalvex::value {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kTwoTo63 = 9223372036854775808.0;
constexpr std::int64_t kGreatest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();
const double kNaN = std::nan("");

CVal Typed(int type, std::int64_t number) {
    CVal value(number);
    EXPECT_TRUE(value.Cast(type));
    return value;
}

using Operation = CVal& (CVal::*)(const CVal&);

struct ArithmeticRow {
    CVal left;
    Operation operation;
    CVal right;
    std::string_view result;
};

constexpr Operation kAdd = &CVal::operator+=;
constexpr Operation kSubtract = &CVal::operator-=;
constexpr Operation kMultiply = &CVal::operator*=;
constexpr Operation kDivide = &CVal::operator/=;

void ExpectResults(const std::vector<ArithmeticRow>& rows) {
    for (const ArithmeticRow& row : rows) {
        CVal value(row.left);
        const CVal right(row.right);
        EXPECT_EQ(&(value.*row.operation)(right), &value);
        EXPECT_EQ(support::Dump(value), row.result)
            << support::Dump(row.left) << " with " << support::Dump(row.right);
        EXPECT_EQ(support::Dump(right), support::Dump(row.right));
    }
}

TEST(ValueArithmeticTest, IntegersGiveTheWiderType) {
    ExpectResults({
        {CVal(2), kAdd, CVal(3), "150:5"},
        {CVal(2), kSubtract, CVal(3), "150:-1"},
        {CVal(2), kMultiply, CVal(3), "150:6"},
        {CVal(short{2}), kAdd, CVal(short{3}), "140:5"},
        {CVal(short{2}), kAdd, CVal(3), "150:5"},
        {CVal(2), kMultiply, CVal(short{3}), "150:6"},
        {CVal(2), kAdd, CVal(3LL), "160:5"},
        {CVal(true), kAdd, CVal(short{3}), "140:4"},
        {CVal(short{2}), kAdd, Typed(141, 3), "141:5"},
        {CVal(2), kAdd, CVal(3u), "151:5"},
        {CVal(true), kMultiply, CVal(true), "120:1"},
        {Typed(161, 2), kAdd, CVal(3LL), "161:5"},
    });
}

TEST(ValueArithmeticTest, WhatDoesNotFitTheWiderTypeHas64Bits) {
    ExpectResults({
        {CVal(2147483647), kAdd, CVal(1), "160:2147483648"},
        {CVal(-2147483647 - 1), kSubtract, CVal(1), "160:-2147483649"},
        {CVal(2147483647), kMultiply, CVal(2147483647), "160:4611686014132420609"},
        {CVal(short{32767}), kAdd, CVal(short{1}), "160:32768"},
        {CVal(short{32767}), kAdd, CVal(1), "150:32768"},
        {CVal(true), kAdd, CVal(true), "160:2"},
        {CVal(2u), kSubtract, CVal(3u), "160:-1"},
        {CVal(2147483647), kAdd, CVal(1u), "151:2147483648"},
        {CVal(short{-32768}), kSubtract, CVal(short{1}), "160:-32769"},
        {Typed(141, 65535), kAdd, CVal(short{1}), "160:65536"},
    });
}

TEST(ValueArithmeticTest, LimitsOfATypeStillFitIt) {
    ExpectResults({
        {CVal(2147483646), kAdd, CVal(1), "150:2147483647"},
        {CVal(-2147483647), kSubtract, CVal(1), "150:-2147483648"},
        {CVal(short{32766}), kAdd, CVal(short{1}), "140:32767"},
        {CVal(short{-32767}), kSubtract, CVal(short{1}), "140:-32768"},
        {CVal(2u), kSubtract, CVal(2u), "151:0"},
        {CVal(4294967294u), kAdd, CVal(1u), "151:4294967295"},
        {Typed(141, 65534), kAdd, CVal(short{1}), "141:65535"},
        {CVal(true), kSubtract, CVal(true), "120:0"},
    });
}

TEST(ValueArithmeticTest, WhatDoesNotFit64BitsIsADouble) {
    ExpectResults({
        {CVal(kGreatest), kAdd, CVal(1), "171:9.223372036854776e+18"},
        {CVal(kLeast), kSubtract, CVal(1), "171:-9.223372036854776e+18"},
        {CVal(kGreatest), kAdd, CVal(0), "160:9223372036854775807"},
        {CVal(kLeast), kAdd, CVal(kGreatest), "160:-1"},
        {CVal(0), kSubtract, CVal(kLeast), "171:9.223372036854776e+18"},
        {CVal(kLeast), kMultiply, CVal(-1), "171:9.223372036854776e+18"},
        {CVal(kLeast), kMultiply, CVal(1), "160:-9223372036854775808"},
        {CVal(4294967296), kMultiply, CVal(4294967296), "171:1.8446744073709552e+19"},
        {CVal(kLeast), kMultiply, CVal(kLeast), "171:8.507059173023462e+37"},
    });
}

TEST(ValueArithmeticTest, DoubleTakesAllToDouble) {
    ExpectResults({
        {CVal(2.5), kAdd, CVal(2), "171:4.50"},
        {CVal(2), kAdd, CVal(2.5), "171:4.50"},
        {CVal(2LL), kSubtract, CVal(0.5), "171:1.50"},
        {CVal(0.5), kMultiply, CVal(0.5), "171:0.25"},
        {CVal(2.0), kAdd, CVal(3.0), "171:5.00"},
        {CVal(1e308), kMultiply, CVal(10), "171:inf"},
        {CVal(kInfinity), kSubtract, CVal(kInfinity), "171:nan"},
    });
}

TEST(ValueArithmeticTest, QuotientIsADouble) {
    ExpectResults({
        {CVal(6), kDivide, CVal(3), "171:2.00"},
        {CVal(7), kDivide, CVal(2), "171:3.50"},
        {CVal(1.0), kDivide, CVal(4), "171:0.25"},
        {CVal(1), kDivide, CVal(0), "171:inf"},
        {CVal(-1), kDivide, CVal(0), "171:-inf"},
        {CVal(0), kDivide, CVal(0), "171:nan"},
        {CVal(1), kDivide, CVal(-0.0), "171:-inf"},
        {CVal("7"), kDivide, CVal("2"), "171:3.50"},
    });
}

TEST(ValueArithmeticTest, TextsJoinAndOtherwiseCountAsNumbers) {
    ExpectResults({
        {CVal("ab"), kAdd, CVal("cd"), "190:abcd"},
        {CVal("1"), kAdd, CVal("2"), "190:12"},
        {CVal(""), kAdd, CVal(""), "190:"},
        {CVal("1"), kAdd, CVal(2), "160:3"},
        {CVal(2), kAdd, CVal("1"), "160:3"},
        {CVal("1.5"), kAdd, CVal(2), "171:3.50"},
        {CVal("4kg"), kSubtract, CVal("1kg"), "160:3"},
        {CVal("4"), kMultiply, CVal("1.5"), "171:6.00"},
        {CVal("abc"), kAdd, CVal(2), "160:2"},
        {CVal("abc"), kMultiply, CVal(2.5), "171:0.00"},
        {CVal("9007199254740993"), kAdd, CVal(0), "160:9007199254740993"},
        {CVal("ab"), kAdd, CVal(), "160:0"},
    });
}

TEST(ValueArithmeticTest, NoContentCountsAsTheInt0) {
    ExpectResults({
        {CVal(), kAdd, CVal(5), "150:5"},
        {CVal(5), kSubtract, CVal(), "150:5"},
        {CVal(), kSubtract, CVal(2.5), "171:-2.50"},
        {CVal(), kAdd, CVal(), "150:0"},
        {CVal(short{5}), kMultiply, CVal(), "150:0"},
        {CVal(5), kDivide, CVal(), "171:inf"},
    });
}

TEST(ValueArithmeticTest, WithItself) {
    CVal number(21);
    number += number;
    EXPECT_EQ(support::Dump(number), "150:42");
    CVal text("a text that is too long to be kept inside its string ");
    text += text;
    EXPECT_EQ(text.Text().size(), 106u);
    CVal digits("12");
    digits *= digits;
    EXPECT_EQ(support::Dump(digits), "160:144");
}

TEST(ValueArithmeticTest, JoinsStatusWordsAndTakesTheLaterTime) {
    for (const Operation operation : {kAdd, kSubtract, kMultiply, kDivide}) {
        CVal value = support::Stamped(CVal(6), 100, 0x0021);
        (value.*operation)(support::Stamped(CVal(3), 200, 0x8004));
        EXPECT_EQ(value.GetStatus(), 0x8025);
        EXPECT_EQ(value.GetTime(), 200);
        (value.*operation)(support::Stamped(CVal(3.5), 150));
        EXPECT_EQ(value.GetStatus(), 0x8025);
        EXPECT_EQ(value.GetTime(), 200);
    }
    CVal text = support::Stamped(CVal("a"), 100, 4);
    text += support::Stamped(CVal("b"), 200, 32);
    EXPECT_EQ(text.GetStatus(), 36);
    EXPECT_EQ(text.GetTime(), 200);
}

TEST(ValueArithmeticTest, ProductIsANewValue) {
    const CVal left = support::Stamped(CVal(6), 100, 1);
    const CVal right = support::Stamped(CVal(7), 50, 2);
    const CVal product = left * right;
    EXPECT_EQ(support::Dump(product), "150:42");
    EXPECT_EQ(product.GetStatus(), 3);
    EXPECT_EQ(product.GetTime(), 100);
    EXPECT_EQ(support::Dump(left), "150:6");
    EXPECT_EQ(left.GetStatus(), 1);
}

TEST(ValueArithmeticTest, ComplementKeepsAnIntegerTypeThatHoldsIt) {
    EXPECT_EQ(support::Dump(~CVal(5)), "150:-6");
    EXPECT_EQ(support::Dump(~CVal(short{-1})), "140:0");
    EXPECT_EQ(support::Dump(~CVal(kGreatest)), "160:-9223372036854775808");
    EXPECT_EQ(support::Dump(~CVal(5u)), "160:-6");
    EXPECT_EQ(support::Dump(~CVal(true)), "160:-2");
    EXPECT_EQ(support::Dump(~CVal(5.9)), "150:-6");
    EXPECT_EQ(support::Dump(~CVal(1e10)), "160:-10000000001");
    EXPECT_EQ(support::Dump(~CVal("5")), "160:-6");
    EXPECT_EQ(support::Dump(~CVal("abc")), "160:-1");
    EXPECT_EQ(support::Dump(~CVal()), "150:-1");
}

TEST(ValueArithmeticTest, ComplementHasNeitherStatusNorTime) {
    for (const CVal& number : {CVal("5"), CVal(5), CVal(5.5)}) {
        const CVal value = ~support::Stamped(CVal(number), 7, 36);
        EXPECT_EQ(value.GetStatus(), 0);
        EXPECT_EQ(value.GetTime(), 0);
    }
}

TEST(ValueArithmeticTest, PowerIsADouble) {
    EXPECT_EQ(support::Dump(pow(CVal(2), CVal(10))), "171:1024.00");
    EXPECT_EQ(support::Dump(pow(CVal(4), CVal(0.5))), "171:2.00");
    EXPECT_EQ(support::Dump(pow(CVal("2"), CVal(-1))), "171:0.50");
    EXPECT_EQ(support::Dump(pow(CVal(-1), CVal(0.5))), "171:nan");
    EXPECT_EQ(support::Dump(pow(CVal(), CVal())), "171:1.00");
    const CVal power = pow(support::Stamped(CVal(2), -9, 1), support::Stamped(CVal(3), -5, 4));
    EXPECT_EQ(power.GetStatus(), 5);
    EXPECT_EQ(power.GetTime(), -5);
}

// The results of == != < <= > >= in one text of digits.
std::string Comparisons(const CVal& left, const CVal& right) {
    std::string text;
    for (const int result :
         {left == right, left != right, left<right, left <= right, left> right, left >= right}) {
        text += std::to_string(result);
    }
    return text;
}

constexpr std::string_view kEqual = "100101";
constexpr std::string_view kLess = "011100";
constexpr std::string_view kGreater = "010011";
constexpr std::string_view kUnordered = "010000";

struct ComparisonRow {
    CVal left;
    CVal right;
    std::string_view result;
};

void ExpectComparisons(const std::vector<ComparisonRow>& rows) {
    for (const ComparisonRow& row : rows) {
        const std::string_view mirrored = row.result == kLess      ? kGreater
                                          : row.result == kGreater ? kLess
                                                                   : row.result;
        EXPECT_EQ(Comparisons(row.left, row.right), row.result)
            << support::Dump(row.left) << " with " << support::Dump(row.right);
        EXPECT_EQ(Comparisons(row.right, row.left), mirrored)
            << support::Dump(row.right) << " with " << support::Dump(row.left);
    }
}

TEST(ValueArithmeticComparisonTest, Numbers) {
    ExpectComparisons({
        {CVal(2), CVal(2), kEqual},
        {CVal(2), CVal(3), kLess},
        {CVal(-2), CVal(-3), kGreater},
        {CVal(short{2}), CVal(2LL), kEqual},
        {CVal(true), CVal(1), kEqual},
        {CVal(-1), CVal(4294967295u), kLess},
        {CVal(2.5), CVal(2.5), kEqual},
        {CVal(2.5), CVal(2.25), kGreater},
        {CVal(2), CVal(2.0), kEqual},
        {CVal(2), CVal(2.5), kLess},
        {CVal(3), CVal(2.5), kGreater},
        {CVal(-2), CVal(-2.5), kGreater},
        {CVal(-3), CVal(-2.5), kLess},
        {CVal(0), CVal(-0.0), kEqual},
        {CVal(0), CVal(5e-324), kLess},
        {CVal(0), CVal(-5e-324), kGreater},
    });
}

TEST(ValueArithmeticComparisonTest, LargeIntegersAreNotRounded) {
    ExpectComparisons({
        {CVal(9007199254740993), CVal(9007199254740992.0), kGreater},
        {CVal(9007199254740992), CVal(9007199254740992.0), kEqual},
        {CVal(-9007199254740993), CVal(-9007199254740992.0), kLess},
        {CVal(kGreatest), CVal(kTwoTo63), kLess},
        {CVal(kLeast), CVal(-kTwoTo63), kEqual},
        {CVal(kLeast), CVal(-9223372036854777856.0), kGreater},
        {CVal(kGreatest), CVal(9223372036854774784.0), kGreater},
        {CVal(kGreatest), CVal(kGreatest - 1), kGreater},
        {CVal(kGreatest), CVal(kInfinity), kLess},
        {CVal(kLeast), CVal(-kInfinity), kGreater},
    });
}

TEST(ValueArithmeticComparisonTest, NaNIsUnequalToAll) {
    ExpectComparisons({
        {CVal(kNaN), CVal(kNaN), kUnordered},
        {CVal(kNaN), CVal(1.0), kUnordered},
        {CVal(kNaN), CVal(1), kUnordered},
        {CVal(kNaN), CVal("1"), kUnordered},
        {CVal(kNaN), CVal("nan"), kUnordered},
        {CVal(kNaN), CVal(), kUnordered},
    });
}

TEST(ValueArithmeticComparisonTest, TextsByTheirBytes) {
    ExpectComparisons({
        {CVal("abc"), CVal("abc"), kEqual},
        {CVal("abc"), CVal("abd"), kLess},
        {CVal("abc"), CVal("ABC"), kGreater},
        {CVal("abc"), CVal("ab"), kGreater},
        {CVal(""), CVal("a"), kLess},
        {CVal("10"), CVal("9"), kLess},
        {CVal("1"), CVal("1.0"), kLess},
        {CVal("z"), CVal("\xB9"), kLess},
    });
}

TEST(ValueArithmeticComparisonTest, TextAndNumber) {
    ExpectComparisons({
        {CVal("10"), CVal(9), kGreater},
        {CVal(" 10 "), CVal(10), kEqual},
        {CVal("1e1"), CVal(10.0), kEqual},
        {CVal("9007199254740993"), CVal(9007199254740992.0), kGreater},
        {CVal("100000000000000000000"), CVal(1e20), kEqual},
        {CVal("abc"), CVal(5), kGreater},
        {CVal("5x"), CVal(5), kGreater},
        {CVal("5 x"), CVal(6.5), kLess},
        {CVal(""), CVal(0), kLess},
        {CVal("inf"), CVal(kInfinity), kEqual},
    });
}

TEST(ValueArithmeticComparisonTest, NoContentCountsAs0AndBesideATextAsEmpty) {
    ExpectComparisons({
        {CVal(), CVal(0), kEqual},
        {CVal(), CVal(), kEqual},
        {CVal(), CVal(-0.5), kGreater},
        {CVal(), CVal(1), kLess},
        {CVal(), CVal("0"), kEqual},
        {CVal(), CVal(""), kEqual},
        {CVal(), CVal("abc"), kLess},
        {CVal(), CVal("-1"), kGreater},
    });
}

TEST(ValueArithmeticComparisonTest, StatusAndTimePlayNoPart) {
    EXPECT_EQ(Comparisons(support::Stamped(CVal(5), 100, 1), support::Stamped(CVal(5), 200, 2)),
              kEqual);
}

}  // namespace
}  // namespace kalvex::value
