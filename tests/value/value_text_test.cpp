#include "value/ValueText.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <string_view>

#include "support/value_dump.h"
#include "text/CodePage.h"

namespace kalvex::value {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr std::int64_t kGreatest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();

struct NumberRow {
    std::string_view text;
    double value;
};

TEST(ValueTextConvertTest, WholeTextThatIsANumber) {
    constexpr NumberRow kRows[] = {
        {"0", 0},
        {"7", 7},
        {" 7 ", 7},
        {"\t7\r\n", 7},
        {"+3", 3},
        {"-3", -3},
        {"007", 7},
        {"12.5", 12.5},
        {"5.", 5},
        {".5", 0.5},
        {"-.5", -0.5},
        {"+5.", 5},
        {"1e5", 100000},
        {"1E5", 100000},
        {"1e+5", 100000},
        {"25e-2", 0.25},
        {"5.e1", 50},
        {".5e1", 5},
        {"1e005", 100000},
        {"0.1", 0.1},
        {"9007199254740993", 9007199254740992.0},
        {"123456789012345678901234567890", 123456789012345678901234567890.0},
        {"4.9406564584124654e-324", 4.9406564584124654e-324},
    };
    for (const NumberRow& row : kRows) {
        double value = -1;
        EXPECT_TRUE(ConvertString2Double(row.text, &value)) << row.text;
        EXPECT_EQ(value, row.value) << row.text;
    }
}

TEST(ValueTextConvertTest, OtherTextIsRefusedAndLeavesTheTarget) {
    constexpr std::string_view kRows[] = {
        "",      " ",   "-",     "+",    ".",   "-.",    "e5",    ".e5",      "1e",
        "1e+",   "1ex", "0x10",  "0x",   "--1", "+-1",   "-+1",   "++1",      "- 1",
        "1 2",   "1,5", "inf",   "-inf", "nan", "INF",   "NaN",   "1.2.3",    "1..2",
        "12abc", "abc", "1e5.5", "1d5",  "1f",  "1e5e5", "1_000", "infinity",
    };
    for (const std::string_view text : kRows) {
        double value = 77;
        EXPECT_FALSE(ConvertString2Double(text, &value)) << text;
        EXPECT_EQ(value, 77) << text;
    }
    double value = 77;
    EXPECT_FALSE(ConvertString2Double(std::string_view("1\0", 2), &value));
    EXPECT_FALSE(ConvertString2Double("1\xA0", &value));
    EXPECT_EQ(value, 77);
}

TEST(ValueTextConvertTest, BeyondTheRangeLieInfinityAndZero) {
    const NumberRow kRows[] = {
        {"1e309", kInfinity},
        {"-1e309", -kInfinity},
        {"1e-400", 0},
        {"0.00001e310", 1e305},
        {"0.1e309", 1e308},
        {"0.01e400", kInfinity},
        {"1000e-400", 0},
        {"1e99999999999999999999", kInfinity},
        {"1e-99999999999999999999", 0},
        {"0e99999999999999999999", 0},
        {"-0e999", 0},
    };
    for (const NumberRow& row : kRows) {
        double value = -1;
        EXPECT_TRUE(ConvertString2Double(row.text, &value)) << row.text;
        EXPECT_EQ(value, row.value) << row.text;
    }
    double value = -1;
    EXPECT_TRUE(ConvertString2Double(std::string(400, '9'), &value));
    EXPECT_EQ(value, kInfinity);
    EXPECT_TRUE(ConvertString2Double("0." + std::string(400, '0') + "1", &value));
    EXPECT_EQ(value, 0);
    EXPECT_TRUE(ConvertString2Double("0." + std::string(400, '0') + "1e401", &value));
    EXPECT_EQ(value, 1);
    EXPECT_TRUE(ConvertString2Double("1" + std::string(400, '0') + "e-400", &value));
    EXPECT_EQ(value, 1);
}

TEST(ValueTextConvertTest, SignOfZeroIsKept) {
    double value = 1;
    EXPECT_TRUE(ConvertString2Double("-0", &value));
    EXPECT_TRUE(std::signbit(value));
}

struct PrefixRow {
    std::string_view text;
    int type;
    double value;
};

TEST(ValueTextPrefixTest, TakesTheLongestNumberAtTheBeginning) {
    constexpr PrefixRow kRows[] = {
        {"12abc", 160, 12},  {"  12 34", 160, 12}, {"-7x", 160, -7},    {"+7", 160, 7},
        {"1.5kg", 171, 1.5}, {"5.", 171, 5},       {".5.5", 171, 0.5},  {"1e", 160, 1},
        {"1e+", 160, 1},     {"1e5x", 171, 1e5},   {"1.2.3", 171, 1.2}, {"0x10", 160, 0},
        {"1,5", 160, 1},     {"2e-1e", 171, 0.2},  {"1.e3", 171, 1000}, {"-.5e1", 171, -5},
        {"-0", 160, 0},      {"\v\f3", 160, 3},    {"12\xB3", 160, 12},
    };
    for (const PrefixRow& row : kRows) {
        CVal out("before");
        EXPECT_TRUE(ReadNumberPrefix(row.text, out)) << row.text;
        EXPECT_EQ(out.GetType(), row.type) << row.text;
        EXPECT_EQ(ValueToDouble(out), row.value) << row.text;
    }
}

TEST(ValueTextPrefixTest, TextWithoutADigitThereGivesTheInteger0) {
    for (const std::string_view text : {"", "  ", "abc", "-", "+", ".", "-.", "--1", "+-1", "- 1",
                                        "e5", ".e5", "x1", "inf", "nan", "$1"}) {
        CVal out("before");
        EXPECT_FALSE(ReadNumberPrefix(text, out)) << text;
        EXPECT_EQ(out.GetType(), 160) << text;
        EXPECT_EQ(out.Integer(), 0) << text;
    }
}

TEST(ValueTextPrefixTest, IntegerIsReadWithoutRounding) {
    CVal out;
    EXPECT_TRUE(ReadNumberPrefix("9007199254740993", out));
    EXPECT_EQ(out.Integer(), 9007199254740993);
    EXPECT_TRUE(ReadNumberPrefix("9223372036854775807", out));
    EXPECT_EQ(out.Integer(), kGreatest);
    EXPECT_TRUE(ReadNumberPrefix("-9223372036854775808", out));
    EXPECT_EQ(out.GetType(), 160);
    EXPECT_EQ(out.Integer(), kLeast);
}

TEST(ValueTextPrefixTest, IntegerBeyond64BitsIsADouble) {
    CVal out;
    EXPECT_TRUE(ReadNumberPrefix("9223372036854775808", out));
    EXPECT_EQ(out.GetType(), 171);
    EXPECT_EQ(out.Real(), 9223372036854775808.0);
    EXPECT_TRUE(ReadNumberPrefix("-9223372036854775809", out));
    EXPECT_EQ(out.GetType(), 171);
    EXPECT_TRUE(ReadNumberPrefix("100000000000000000000", out));
    EXPECT_EQ(out.Real(), 1e20);
}

TEST(ValueTextWholeNumberTest, RefusesWhatTheNumberLeavesOver) {
    CVal out;
    EXPECT_TRUE(ReadWholeNumber(" 12 ", out));
    EXPECT_EQ(out.GetType(), 160);
    EXPECT_EQ(out.Integer(), 12);
    EXPECT_TRUE(ReadWholeNumber("1e2", out));
    EXPECT_EQ(out.Real(), 100);
    for (const std::string_view text : {"12a", "1 2", "", "x", "1e"}) {
        out = CVal("before");
        EXPECT_FALSE(ReadWholeNumber(text, out)) << text;
        EXPECT_EQ(out.GetType(), 160) << text;
        EXPECT_EQ(out.Integer(), 0) << text;
    }
}

struct FormatRow {
    double value;
    std::string_view text;
};

TEST(ValueTextFormatTest, FixedWithTheShortestDigitsButAtLeastTwoDecimals) {
    constexpr FormatRow kRows[] = {
        {0, "0.00"},
        {-0.0, "0.00"},
        {12, "12.00"},
        {-12, "-12.00"},
        {0.5, "0.50"},
        {-0.25, "-0.25"},
        {3.14159, "3.14159"},
        {0.1, "0.10"},
        {0.1 + 0.2, "0.30000000000000004"},
        {1.0 / 3, "0.3333333333333333"},
        {100000, "100000.00"},
        {123456789.125, "123456789.125"},
        {999999999999999, "999999999999999.00"},
        {999999999999999.9, "999999999999999.90"},
        {0.00001, "0.00001"},
        {-0.00001234, "-0.00001234"},
    };
    for (const FormatRow& row : kRows) EXPECT_EQ(FormatDouble(row.value), row.text);
}

TEST(ValueTextFormatTest, ScientificFrom1e15UpAndBelow1eMinus5) {
    constexpr FormatRow kRows[] = {
        {1e15, "1e+15"},
        {-1e15, "-1e+15"},
        {1234567890123456, "1.234567890123456e+15"},
        {1e100, "1e+100"},
        {1.7976931348623157e308, "1.7976931348623157e+308"},
        {0.0000099, "9.9e-06"},
        {-0.000001, "-1e-06"},
        {5e-324, "5e-324"},
    };
    for (const FormatRow& row : kRows) EXPECT_EQ(FormatDouble(row.value), row.text);
}

TEST(ValueTextFormatTest, NotFiniteHasItsWord) {
    EXPECT_EQ(FormatDouble(kInfinity), "inf");
    EXPECT_EQ(FormatDouble(-kInfinity), "-inf");
    EXPECT_EQ(FormatDouble(std::nan("")), "nan");
    EXPECT_EQ(FormatDouble(-std::nan("")), "nan");
}

TEST(ValueTextFormatTest, ReadsBackAsTheSameDouble) {
    std::mt19937_64 random(20210314);
    for (int i = 0; i < 20000; ++i) {
        const std::uint64_t bits = random();
        double value;
        std::memcpy(&value, &bits, sizeof value);
        if (i % 2 == 0) value = static_cast<double>(bits >> 24) / 4096;
        if (!std::isfinite(value)) continue;
        const std::string text = FormatDouble(value);
        double back = 0;
        EXPECT_TRUE(ConvertString2Double(text, &back)) << text;
        EXPECT_EQ(back, value) << text;
    }
}

TEST(ValueTextLocaleTest, DecimalCommaOfTheLocalePlaysNoPart) {
    const char* name = nullptr;
    for (const char* candidate : {"pl_PL.UTF-8", "pl_PL", "de_DE.UTF-8", "de_DE"}) {
        if (name == nullptr) name = std::setlocale(LC_NUMERIC, candidate);
    }
    if (name == nullptr) GTEST_SKIP() << "no locale with a decimal comma here";
    double value = 0;
    const bool point = ConvertString2Double("1.5", &value);
    const bool comma = ConvertString2Double("1,5", &value);
    const std::string text = FormatDouble(2.25);
    std::setlocale(LC_NUMERIC, "C");
    EXPECT_TRUE(point);
    EXPECT_EQ(value, 1.5);
    EXPECT_FALSE(comma);
    EXPECT_EQ(text, "2.25");
}

TEST(ValueTextReadsTest, IntegerSaturates) {
    EXPECT_EQ(ValueToInt(CVal(2147483648LL)), 2147483647);
    EXPECT_EQ(ValueToInt(CVal(-2147483649LL)), -2147483647 - 1);
    EXPECT_EQ(ValueToInt(CVal(1e300)), 2147483647);
    EXPECT_EQ(ValueToInt(CVal(-1e300)), -2147483647 - 1);
    EXPECT_EQ(ValueToInt(CVal(kInfinity)), 2147483647);
    EXPECT_EQ(ValueToInt(CVal("99999999999999999999")), 2147483647);
    EXPECT_EQ(ValueToInt(CVal("-99999999999999999999")), -2147483647 - 1);
}

TEST(ValueTextReadsTest, WhatDoesNotReadIs0OrEmpty) {
    EXPECT_EQ(ValueToInt(CVal("abc")), 0);
    EXPECT_EQ(ValueToDouble(CVal("abc")), 0);
    EXPECT_EQ(ValueToInt(CVal()), 0);
    EXPECT_EQ(ValueToDouble(CVal()), 0);
    EXPECT_EQ(ValueToText(CVal()), "");
    EXPECT_EQ(ValueToInt(CVal(std::nan(""))), 0);
}

TEST(ValueTextReadsTest, FloatingValueIsTruncatedTowardsZero) {
    EXPECT_EQ(ValueToInt(CVal(2.99)), 2);
    EXPECT_EQ(ValueToInt(CVal(-2.99)), -2);
    EXPECT_EQ(ValueToInt(CVal("2.99zł")), 2);
}

TEST(ValueTextReadsTest, TextReadsAsADoubleInFull) {
    EXPECT_EQ(ValueToDouble(CVal(" 2.5 m")), 2.5);
    EXPECT_EQ(ValueToDouble(CVal("100000000000000000000")), 1e20);
    EXPECT_EQ(ValueToDouble(CVal("9007199254740993")), 9007199254740992.0);
}

TEST(ValueTextReadsTest, EveryTypeHasItsText) {
    EXPECT_EQ(ValueToText(CVal(true)), "1");
    EXPECT_EQ(ValueToText(CVal(false)), "0");
    EXPECT_EQ(ValueToText(CVal(short{-5})), "-5");
    EXPECT_EQ(ValueToText(CVal(static_cast<unsigned short>(65535))), "65535");
    EXPECT_EQ(ValueToText(CVal(-2147483647 - 1)), "-2147483648");
    EXPECT_EQ(ValueToText(CVal(4294967295u)), "4294967295");
    EXPECT_EQ(ValueToText(CVal(kLeast)), "-9223372036854775808");
    EXPECT_EQ(ValueToText(CVal(2.0)), "2.00");
    EXPECT_EQ(ValueToText(CVal("")), "");
    EXPECT_EQ(ValueToText(CVal(" a ")), " a ");
}

// A value as it stood before the dialog: a status, a time and a content of its own.
CVal Edited(std::string_view text) {
    CVal value(5);
    value.SetStatus(0x8204);
    value.SetTime(1234);
    ApplyOperatorText(value, text);
    return value;
}

struct OperatorRow {
    std::string_view text;
    int status;
    double number;
};

TEST(ValueTextOperatorTest, NumbersAndMarks) {
    constexpr OperatorRow kRows[] = {
        {"*", 1, 0},          {"$", 545, 0},   {"#", 2080, 0},   {"#12.5", 2080, 12.5},
        {"#*", 2080, 0},      {"#$", 2080, 0}, {"##5", 2080, 0}, {"**", 0, 0},
        {"$5", 0, 0},         {"*5", 0, 0},    {"7", 0, 7},      {" 7 ", 0, 7},
        {"-1.5e2x", 0, -150}, {"abc", 0, 0},   {" ", 0, 0},      {"\"", 0, 0},
        {"\"abc", 0, 0},      {" #5", 0, 0},   {"1,5", 0, 1},    {"#\"", 2080, 0},
    };
    for (const OperatorRow& row : kRows) {
        const CVal value = Edited(row.text);
        EXPECT_EQ(value.GetType(), 171) << row.text;
        EXPECT_EQ(value.Real(), row.number) << row.text;
        EXPECT_EQ(value.GetStatus(), row.status) << row.text;
        EXPECT_EQ(value.GetTime(), 0) << row.text;
    }
}

TEST(ValueTextOperatorTest, TextThatIsReadAsZeroForWantOfANumberIsNone) {
    for (const char* text : {"", "*", "$", "#5", "7", " 7 ", "-1.5e2x", "inf", "0x10", "1,5",
                             "\"\"", "#\"abc\"", "\"12\""}) {
        EXPECT_TRUE(IsOperatorText(text)) << text;
    }
    for (const char* text :
         {"abc", " ", "#", "#*", "##5", "**", "$5", "*5", "\"", "\"abc", "#\""}) {
        EXPECT_FALSE(IsOperatorText(text)) << text;
    }
}

TEST(ValueTextOperatorTest, NumbersAreThoseOfC) {
    constexpr OperatorRow kRows[] = {
        {"inf", 0, kInfinity},
        {"-INFINITY", 0, -kInfinity},
        {"#infi", 2080, kInfinity},
        {"1e400", 0, kInfinity},
        {"0x10", 0, 16},
        {"-0X1.8p3 bar", 0, -12},
        {"0x", 0, 0},
        {"0xg", 0, 0},
        {"1e", 0, 1},
        {"2.5e+", 0, 2.5},
        {"+.5", 0, 0.5},
        {"5.", 0, 5},
        {"\t\n7", 0, 7},
        {".", 0, 0},
        {"e5", 0, 0},
        {"0.1", 0, 0.1},
        {"9007199254740993", 0, 9007199254740992},
    };
    for (const OperatorRow& row : kRows) {
        const CVal value = Edited(row.text);
        EXPECT_EQ(value.GetType(), 171) << row.text;
        EXPECT_EQ(value.Real(), row.number) << row.text;
        EXPECT_EQ(value.GetStatus(), row.status) << row.text;
    }
    EXPECT_EQ(support::Dump(Edited("nan")), "171:nan");
    EXPECT_EQ(support::Dump(Edited("-nan")), "171:nan");
}

TEST(ValueTextOperatorTest, LocaleDoesNotMatter) {
    ASSERT_NE(std::setlocale(LC_ALL, "pl_PL.UTF-8"), nullptr);
    EXPECT_EQ(support::Dump(Edited("2.5")), "171:2.50");
    EXPECT_EQ(support::Dump(Edited("2,5")), "171:2.00");
    std::setlocale(LC_ALL, "C");
}

struct OperatorTextRow {
    std::string_view text;
    int status;
    std::string_view content;
};

TEST(ValueTextOperatorTest, WhatLiesBetweenQuotesIsAText) {
    constexpr OperatorTextRow kRows[] = {
        {"\"abc\"", 0, "abc"},     {"\"\"", 0, ""},   {"\"5\"", 0, "5"}, {"\"a\"b\"", 0, "a\"b"},
        {"#\"abc\"", 2080, "abc"}, {"\"*\"", 0, "*"}, {"\"#\"", 0, "#"}, {"\" x \"", 0, " x "},
    };
    for (const OperatorTextRow& row : kRows) {
        const CVal value = Edited(row.text);
        ASSERT_EQ(value.GetType(), 190) << row.text;
        EXPECT_EQ(value.Text(), row.content);
        EXPECT_EQ(value.GetStatus(), row.status) << row.text;
        EXPECT_EQ(value.GetTime(), 0) << row.text;
    }
}

TEST(ValueTextOperatorTest, EmptyTextLeavesTheValueAsItWas) {
    const CVal value = Edited("");
    EXPECT_EQ(value.GetType(), 150);
    EXPECT_EQ(value.Integer(), 5);
    EXPECT_EQ(value.GetStatus(), 0x8204);
    EXPECT_EQ(value.GetTime(), 1234);
}

TEST(ValueTextOperatorTest, OpensWithTheTextOfTheValue) {
    EXPECT_EQ(OperatorText(CVal(12.0)), "12.00");
    EXPECT_EQ(OperatorText(CVal("abc")), "abc");
    EXPECT_EQ(OperatorText(CVal()), "");
}

TEST(ValueTextOperatorTest, OpensEmptyWhileTheValueIsUnknown) {
    CVal value(12.0);
    value.SetStatus(545);
    EXPECT_EQ(OperatorText(value), "");
    value.SetStatus(2080);
    EXPECT_EQ(OperatorText(value), "12.00");
}

}  // namespace
}  // namespace kalvex::value
