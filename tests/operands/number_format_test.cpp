#include "operands/NumberFormat.h"

#include <gtest/gtest.h>

#include <clocale>
#include <limits>
#include <string>

#include "value/ValueText.h"

namespace kalvex::operands {
namespace {

TEST(NumberFormatValidTest, LooksAtBothEndsAndTheFirstDigit) {
    for (const char* format : {"%f", "%d", "%F", "%D", "%5.2f", "%.2f", "%.f", "%05d", "%5xd",
                               "%2f", "%0f", "%5.f", "%.0D", "%.3lf", "%1 km/d"}) {
        EXPECT_TRUE(IsValidNumberFormat(format)) << format;
    }
    for (const char* format : {"", "%", "f", "d", "abc", "5d", "d%", "%s", "%5", "%-5d", "%+d",
                               "%xd", "% d", "%#f", "%ld", "%1.2.3f", "%..f", "x%d", "%%d"}) {
        EXPECT_FALSE(IsValidNumberFormat(format)) << format;
    }
}

std::string Format(double value, const char* format) {
    return FormatNumber(value::CVal(value), format);
}

TEST(NumberFormatTest, RealNumbers) {
    EXPECT_EQ(Format(3.14159, "%.3f"), "3.142");
    EXPECT_EQ(Format(3.14159, "%f"), "3.141590");
    EXPECT_EQ(Format(3.14159, "%.0f"), "3");
    EXPECT_EQ(Format(3.14159, "%.f"), "3");
    EXPECT_EQ(Format(2.5, "%.0f"), "2");
    EXPECT_EQ(Format(3.5, "%.0f"), "4");
    EXPECT_EQ(Format(3.14159, "%8.2f"), "    3.14");
    EXPECT_EQ(Format(-3.14159, "%8.2f"), "   -3.14");
    EXPECT_EQ(Format(-3.14159, "%08.2f"), "-0003.14");
    EXPECT_EQ(Format(3.14159, "%2.2f"), "3.14");
    EXPECT_EQ(Format(3.14159, "%5f"), "3.141590");
    EXPECT_EQ(Format(-0.001, "%.2f"), "-0.00");
    EXPECT_EQ(Format(1e20, "%.1f"), "100000000000000000000.0");
    EXPECT_EQ(Format(3.14159, "%.3lf"), "3.142");
    EXPECT_EQ(Format(3.14159, "%.1F"), "3.1");
}

TEST(NumberFormatTest, NumbersThatAreNotFiniteAreFilledUpWithBlanks) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(Format(kInfinity, "%.2f"), "inf");
    EXPECT_EQ(Format(-kInfinity, "%06.2f"), "  -inf");
    EXPECT_EQ(Format(std::numeric_limits<double>::quiet_NaN(), "%5f"), "  nan");
    EXPECT_EQ(Format(kInfinity, "%4F"), " INF");
}

TEST(NumberFormatTest, WholeNumbers) {
    EXPECT_EQ(Format(7, "%d"), "7");
    EXPECT_EQ(Format(7, "%3d"), "  7");
    EXPECT_EQ(Format(7, "%03d"), "007");
    EXPECT_EQ(Format(-7, "%03d"), "-07");
    EXPECT_EQ(Format(-7, "%3d"), " -7");
    EXPECT_EQ(Format(7.9, "%d"), "7");
    EXPECT_EQ(Format(-7.9, "%d"), "-7");
    EXPECT_EQ(Format(7, "%.3d"), "007");
    EXPECT_EQ(Format(7, "%5.3d"), "  007");
    EXPECT_EQ(Format(7, "%05.3d"), "  007");
    EXPECT_EQ(Format(0, "%.0d"), "");
    EXPECT_EQ(Format(0, "%.d"), "");
    EXPECT_EQ(Format(0, "%d"), "0");
    EXPECT_EQ(Format(1e12, "%d"), "2147483647");
    EXPECT_EQ(Format(-1e12, "%d"), "-2147483648");
    EXPECT_EQ(Format(12345, "%2d"), "12345");
    EXPECT_EQ(Format(12345, "%8ld"), "   12345");
}

TEST(NumberFormatTest, TextBehindTheNumber) {
    EXPECT_EQ(Format(12.5, "%5d m3/d"), "   12 m3/d");
    EXPECT_EQ(Format(12.5, "%.1f%% of"), "12.5% of");
    EXPECT_EQ(Format(12.5, "%.1f%f"), "12.50");
    EXPECT_EQ(Format(12.5, "%1d %d"), "12.50");
}

TEST(NumberFormatTest, FormatThatMeansNothingGivesTwoDecimals) {
    for (const char* format : {"", "abc", "%", "%s", "%x", "%D", "%5xd", "%.3D", "%-5d", "%5 f",
                               "%1.2.3f", "%5%f", "%.0f GJ/d", "%5n d", "%lld"}) {
        EXPECT_EQ(Format(7, format), "7.00") << format;
    }
}

TEST(NumberFormatTest, WidthAndPrecisionHaveALimit) {
    EXPECT_EQ(Format(7, "%1000d"), std::string(999, ' ') + "7");
    EXPECT_EQ(Format(7, "%1001d"), "7.00");
    EXPECT_EQ(Format(7, "%.1000f"), "7." + std::string(1000, '0'));
    EXPECT_EQ(Format(7, "%.1001f"), "7.00");
    EXPECT_EQ(Format(7, "%99999999999999999999d"), "7.00");
    EXPECT_EQ(Format(7, "%.99999999999999999999f"), "7.00");
    EXPECT_EQ(Format(-1e308, "%.1000f").size(), 1 + 309 + 1 + 1000);
}

TEST(NumberFormatTest, ValuesReadAsNumbers) {
    EXPECT_EQ(FormatNumber(value::CVal("12.5 bar"), "%.1f"), "12.5");
    EXPECT_EQ(FormatNumber(value::CVal("bar"), "%d"), "0");
    EXPECT_EQ(FormatNumber(value::CVal(), "%.1f"), "0.0");
    EXPECT_EQ(FormatNumber(value::CVal(9007199254740993), "%d"), "2147483647");
    EXPECT_EQ(FormatNumber(value::CVal(true), "%d"), "1");
}

TEST(NumberFormatTest, LocaleDoesNotMatter) {
    ASSERT_NE(std::setlocale(LC_NUMERIC, "pl_PL.UTF-8"), nullptr);
    EXPECT_EQ(Format(1234.5, "%.2f"), "1234.50");
    std::setlocale(LC_NUMERIC, "C");
}

}  // namespace
}  // namespace kalvex::operands
