#include "operands/TimeText.h"

#include <gtest/gtest.h>

#include <limits>

#include "support/fake_script.h"
#include "support/value_dump.h"
#include "support/zone_scope.h"

namespace kalvex::operands {
namespace {

class TimeTextDateTest : public testing::Test {
  protected:
    // The time and what is left of the text, or "failed" and what is left.
    std::string Parse(std::string_view text) {
        script.ClearError();
        std::int64_t time = -7;
        const bool read = ParseDateFields(script, text, time);
        if (!read) {
            EXPECT_EQ(time, -7);
        }
        return (read ? std::to_string(time) : "failed") + " |" + std::string(text);
    }
    static std::string At(std::int64_t time, std::string_view rest = "") {
        return std::to_string(time) + " |" + std::string(rest);
    }

    support::ZoneScope zone{"Europe/Warsaw"};
    support::FakeScript script;
};

TEST_F(TimeTextDateTest, MissingFieldsKeepTheirDefaults) {
    EXPECT_EQ(Parse("2024"), At(support::Gmt(2023, 12, 31, 23)));
    EXPECT_EQ(Parse("2024 7"), At(support::Gmt(2024, 6, 30, 22)));
    EXPECT_EQ(Parse("2024 7 5"), At(support::Gmt(2024, 7, 4, 22)));
    EXPECT_EQ(Parse("2024 7 5 6"), At(support::Gmt(2024, 7, 5, 4)));
    EXPECT_EQ(Parse("2024 7 5 6 7"), At(support::Gmt(2024, 7, 5, 4, 7)));
    EXPECT_EQ(Parse("2024 7 5 6 7 8"), At(support::Gmt(2024, 7, 5, 4, 7, 8)));
    EXPECT_EQ(script.Error(), "0");
}

TEST_F(TimeTextDateTest, SeventhNumberAndWhatDoesNotEvaluateAreLeft) {
    EXPECT_EQ(Parse("2024 7 5 6 7 8 9"), At(support::Gmt(2024, 7, 5, 4, 7, 8), " 9"));
    EXPECT_EQ(Parse(" 2024 7 TO 2025"), At(support::Gmt(2024, 6, 30, 22), " TO 2025"));
    EXPECT_EQ(script.Error(), "3 TO");
}

TEST_F(TimeTextDateTest, FieldsAreOperands) {
    script.Local("ROK", value::CVal("2024"));
    script.Local("MIESIAC", value::CVal(7.9));
    EXPECT_EQ(Parse("ROK MIESIAC"), At(support::Gmt(2024, 6, 30, 22)));
    EXPECT_EQ(Parse("TIME.YEAR TIME.MONTH 1 6"), At(support::Gmt(2024, 3, 1, 5)));
}

TEST_F(TimeTextDateTest, FirstNumberOfThreeThousandAndOneIsATime) {
    EXPECT_EQ(Parse("3001"), At(3001));
    EXPECT_EQ(Parse("1700000000"), At(1700000000));
    EXPECT_EQ(Parse("1700000000 99 99"), At(1700000000));
    EXPECT_EQ(Parse("3000"), At(support::Gmt(2999, 12, 31, 23)));
    script.Local("T", value::CVal(std::int64_t{1710050400}));
    EXPECT_EQ(Parse("T"), At(1710050400));
    EXPECT_EQ(Parse("TIME"), At(support::FakeScript::kStart));
}

TEST_F(TimeTextDateTest, TimeBeyondAnIntDoesNotSurvive) {
    script.Local("T", value::CVal(std::int64_t{3000000000}));
    EXPECT_EQ(Parse("T"), At(std::numeric_limits<int>::max()));
}

TEST_F(TimeTextDateTest, BoundsOfEachField) {
    EXPECT_EQ(Parse("1970 1 1 1 0 0"), At(0));
    EXPECT_EQ(Parse("2024 12 31 23 59 59"), At(support::Gmt(2024, 12, 31, 22, 59, 59)));
    for (const char* text :
         {"1969", "0", "-2024", "2024 0", "2024 13", "2024 1 0", "2024 1 32", "2024 1 1 -1",
          "2024 1 1 24", "2024 1 1 0 -1", "2024 1 1 0 60", "2024 1 1 0 0 -1", "2024 1 1 0 0 60"}) {
        EXPECT_EQ(Parse(text), "failed |") << text;
        EXPECT_EQ(script.Error(), "0") << text;
    }
}

TEST_F(TimeTextDateTest, DayPastTheEndOfItsMonthCarriesOver) {
    EXPECT_EQ(Parse("2024 2 31"), At(support::Gmt(2024, 3, 1, 23)));
}

TEST_F(TimeTextDateTest, FirstOperandThatFailsLeavesTheText) {
    EXPECT_EQ(Parse(" BRAK 7"), "failed | BRAK 7");
    EXPECT_EQ(script.Error(), "3 BRAK");
    EXPECT_EQ(Parse(""), "failed |");
    EXPECT_EQ(script.Error(), "3");
}

TEST_F(TimeTextDateTest, RemoteValueIsAskedForQuietly) {
    script.Remote("Z").answer = ReadUnavailable;
    EXPECT_EQ(Parse("Z"), "failed |Z");
    EXPECT_EQ(script.Error(), "27 Z");
}

struct IntegerRow {
    std::string_view text;
    int value;
    std::string_view rest;
};

TEST(TimeTextIntegerTest, WhiteSpaceSignAndDigits) {
    constexpr IntegerRow kRows[] = {
        {"7", 7, ""},
        {"  7", 7, ""},
        {"\t\n\v\f\r 7x", 7, "x"},
        {"-7", -7, ""},
        {"+7", 7, ""},
        {"007", 7, ""},
        {"1:30", 1, ":30"},
        {"1.5", 1, ".5"},
        {"2147483647", 2147483647, ""},
        {"2147483648", 2147483647, ""},
        {"-2147483648", -2147483647 - 1, ""},
        {"-2147483649", -2147483647 - 1, ""},
        {"99999999999999999999999999 1", 2147483647, " 1"},
        {"-99999999999999999999999999", -2147483647 - 1, ""},
    };
    for (const IntegerRow& row : kRows) {
        std::string_view text = row.text;
        int value = 0;
        EXPECT_TRUE(ScanInteger(text, value)) << row.text;
        EXPECT_EQ(value, row.value) << row.text;
        EXPECT_EQ(text, row.rest) << row.text;
    }
}

TEST(TimeTextIntegerTest, NoDigitLeavesBothAlone) {
    for (std::string_view row : {"", " ", "x", "-", "+ 7", "- 7", "--7", ".5",
                                 "\xA0"
                                 "7"}) {
        std::string_view text = row;
        int value = 42;
        EXPECT_FALSE(ScanInteger(text, value)) << row;
        EXPECT_EQ(value, 42) << row;
        EXPECT_EQ(text, row) << row;
    }
}

class TimeTextSleepTest : public testing::Test {
  protected:
    std::string Parse(std::string_view text) {
        script.ClearError();
        SleepTime time;
        if (!ParseSleepTime(script, text::FromUtf8(text), time)) return "failed " + script.Error();
        return std::to_string(time.hours) + "h " + std::to_string(time.minutes) + "m " +
               std::to_string(time.seconds) + "s form " +
               std::to_string(static_cast<int>(time.form));
    }

    support::FakeScript script;
};

TEST_F(TimeTextSleepTest, ThreeForms) {
    EXPECT_EQ(Parse("1:30.15"), "1h 30m 15s form 0");
    EXPECT_EQ(Parse("1.30"), "0h 1m 30s form 1");
    EXPECT_EQ(Parse("90"), "0h 0m 90s form 2");
    EXPECT_EQ(Parse("0:0.0"), "0h 0m 0s form 0");
}

TEST_F(TimeTextSleepTest, WhatStandsBehindTheNumbersIsLeftOut) {
    EXPECT_EQ(Parse("1:30.15 po"), "1h 30m 15s form 0");
    EXPECT_EQ(Parse("1.30.15"), "0h 1m 30s form 1");
    EXPECT_EQ(Parse("90s"), "0h 0m 90s form 2");
    EXPECT_EQ(Parse("1:30"), "0h 0m 1s form 2");
    EXPECT_EQ(Parse("1:30:15"), "0h 0m 1s form 2");
    EXPECT_EQ(Parse("1.x"), "0h 0m 1s form 2");
}

TEST_F(TimeTextSleepTest, EachNumberMayHaveWhiteSpaceAndASign) {
    EXPECT_EQ(Parse(" 1: 30. +15"), "1h 30m 15s form 0");
    EXPECT_EQ(Parse("-1:-30.-15"), "-1h -30m -15s form 0");
    EXPECT_EQ(Parse("1 :30.15"), "0h 0m 1s form 2");
    EXPECT_EQ(Parse("99999999999:1.2"), "2147483647h 1m 2s form 0");
}

TEST_F(TimeTextSleepTest, VariableHoldsTheText) {
    script.Local("PAUZA", value::CVal("0:5.30"));
    script.Local("SEKUNDY", value::CVal(45));
    script.Local("ULAMEK", value::CVal(1.5));
    EXPECT_EQ(Parse("PAUZA"), "0h 5m 30s form 0");
    EXPECT_EQ(Parse("SEKUNDY"), "0h 0m 45s form 2");
    EXPECT_EQ(Parse("ULAMEK"), "0h 1m 50s form 1");
    script.Variables().Find("PAUZA")->SetValue(value::CVal("2.10"), value::KindDay);
    EXPECT_EQ(Parse("PAUZA.DREP"), "0h 2m 10s form 1");
}

TEST_F(TimeTextSleepTest, VariableNamedLikeANumberGoesFirst) {
    script.Local("90", value::CVal(5));
    EXPECT_EQ(Parse("90"), "0h 0m 5s form 2");
}

TEST_F(TimeTextSleepTest, TextThatIsNoTimeFails) {
    script.Local("TEKST", value::CVal("wkrótce"));
    script.Local("NIC");
    script.Remote("Z").answer = ReadUnavailable;
    EXPECT_EQ(Parse("BRAK"), "failed 3 BRAK");
    EXPECT_EQ(Parse(""), "failed 3");
    EXPECT_EQ(Parse("TEKST"), "failed 0");
    EXPECT_EQ(Parse("NIC"), "failed 0");
    EXPECT_EQ(Parse("Z"), "failed 0");
}

TEST_F(TimeTextSleepTest, LookupOfALiteralLeavesItsErrorBehind) {
    EXPECT_EQ(Parse("1:30.15"), "1h 30m 15s form 0");
    EXPECT_EQ(script.Error(), "3 1:30");
}

}  // namespace
}  // namespace kalvex::operands
