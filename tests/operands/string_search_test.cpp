#include <gtest/gtest.h>

#include "operands/FunctionFamilies.h"
#include "support/fake_script.h"

namespace kalvex::operands {
namespace {

constexpr FunctionRow kRows[] = {
    {"STRING_COMPARE", StringCompare, "", ""},
    {"STRING_COMPARE_NO_CASE", StringCompareNoCase, "", ""},
    {"STRING_FIND_ONE_OF", StringFindOneOf, "", ""},
    {"STRING_REVERSE_FIND", StringReverseFind, "", ""},
    {"STRING_FIND", StringFind, "", ""},
};

class StringSearchTest : public testing::Test {
  protected:
    StringSearchTest() { script.Local("PUSTY", value::CVal("")); }

    static const FunctionTable& Table() {
        static const FunctionTable table(kRows);
        return table;
    }

    support::FakeScript script{Table()};
};

TEST_F(StringSearchTest, CompareGivesTheOrderOfBytes) {
    EXPECT_EQ(script.Evaluate("STRING_COMPARE \"a\" \"a\""), "171:0.00");
    EXPECT_EQ(script.Evaluate("STRING_COMPARE \"a\" \"c\""), "171:-1.00");
    EXPECT_EQ(script.Evaluate("STRING_COMPARE \"c\" \"a\""), "171:1.00");
    EXPECT_EQ(script.Evaluate("STRING_COMPARE \"a\" \"ab\""), "171:-1.00");
    EXPECT_EQ(script.Evaluate("STRING_COMPARE \"abc\" \"ab\""), "171:1.00");
    EXPECT_EQ(script.Evaluate("STRING_COMPARE \"a\" \"A\""), "171:1.00");
    EXPECT_EQ(script.Evaluate("STRING_COMPARE \"ą\" \"z\""), "171:1.00");
    EXPECT_EQ(script.Evaluate("STRING_COMPARE \"a\" PUSTY"), "171:1.00");
}

TEST_F(StringSearchTest, CompareWithoutCaseIncludesPolishLetters) {
    EXPECT_EQ(script.Evaluate("STRING_COMPARE_NO_CASE \"Żółw\" \"żÓŁW\""), "171:0.00");
    EXPECT_EQ(script.Evaluate("STRING_COMPARE_NO_CASE \"b\" \"A\""), "171:1.00");
    EXPECT_EQ(script.Evaluate("STRING_COMPARE_NO_CASE \"A\" \"b\""), "171:-1.00");
    // Upper case counts: "_" stands behind "Z" and before "z".
    EXPECT_EQ(script.Evaluate("STRING_COMPARE_NO_CASE \"_\" \"z\""), "171:1.00");
}

TEST_F(StringSearchTest, FindOneOfGivesTheFirstPosition) {
    EXPECT_EQ(script.Evaluate("STRING_FIND_ONE_OF \"abcd\" \"dc\""), "171:2.00");
    EXPECT_EQ(script.Evaluate("STRING_FIND_ONE_OF \"abcd\" \"a\""), "171:0.00");
    EXPECT_EQ(script.Evaluate("STRING_FIND_ONE_OF \"abcd\" \"x\""), "171:-1.00");
    EXPECT_EQ(script.Evaluate("STRING_FIND_ONE_OF \"abcd\" PUSTY"), "171:-1.00");
}

TEST_F(StringSearchTest, ReverseFindLooksForOneCharacter) {
    EXPECT_EQ(script.Evaluate("STRING_REVERSE_FIND \"abca\" \"a\""), "171:3.00");
    EXPECT_EQ(script.Evaluate("STRING_REVERSE_FIND \"abca\" \"xa\""), "171:-1.00");
    EXPECT_EQ(script.Evaluate("STRING_REVERSE_FIND \"abca\" \"ax\""), "171:3.00");
    EXPECT_EQ(script.Evaluate("STRING_REVERSE_FIND \"abca\" PUSTY"), "171:0.00");
    EXPECT_EQ(script.Evaluate("STRING_REVERSE_FIND PUSTY PUSTY"), "171:0.00");
}

TEST_F(StringSearchTest, FindBeginsAtAPosition) {
    EXPECT_EQ(script.Evaluate("STRING_FIND \"abcabc\" \"c\" 3"), "171:5.00");
    EXPECT_EQ(script.Evaluate("STRING_FIND \"abcabc\" \"c\" 2"), "171:2.00");
    EXPECT_EQ(script.Evaluate("STRING_FIND \"abcabc\" \"bca\" 0"), "171:1.00");
    EXPECT_EQ(script.Evaluate("STRING_FIND \"abc\" \"x\" 0"), "171:-1.00");
    EXPECT_EQ(script.Evaluate("STRING_FIND \"abc\" \"a\" -1"), "171:-1.00");
    EXPECT_EQ(script.Evaluate("STRING_FIND \"abc\" \"a\" 9"), "171:-1.00");
    EXPECT_EQ(script.Evaluate("STRING_FIND \"abc\" \"a\" 3"), "171:-1.00");
    EXPECT_EQ(script.Evaluate("STRING_FIND \"abc\" PUSTY 2"), "171:2.00");
    EXPECT_EQ(script.Evaluate("STRING_FIND \"abc\" PUSTY 3"), "171:3.00");
    EXPECT_EQ(script.Evaluate("STRING_FIND \"abc\" PUSTY 4"), "171:-1.00");
}

TEST_F(StringSearchTest, ResultIsADoubleWhateverWasWanted) {
    EXPECT_EQ(script.Evaluate("STRING_COMPARE \"a\" \"a\"", value::ValueType::Text), "171:0.00");
    EXPECT_EQ(script.Evaluate("STRING_FIND \"abc\" \"c\" 0", value::ValueType::Int), "171:2.00");
}

TEST_F(StringSearchTest, LineGoesOnBehindTheFunction) {
    EXPECT_EQ(script.Evaluate("STRING_FIND \"abcabc\" \"c\" 3 > 2"), "150:1");
    EXPECT_EQ(script.Evaluate("STRING_FIND \"abc\" \"x\" 0 > 2"), "150:0");
    EXPECT_EQ(script.Evaluate("STRING_FIND \"abc\" \"x\" 0 + 3 * 2"), "171:5.00");
    EXPECT_EQ(script.Evaluate("STRING_COMPARE \"b\" \"a\" 0 == 1"), "150:1");
}

TEST_F(StringSearchTest, ThirdTokenIsTakenFromTheLineInAnyCase) {
    EXPECT_EQ(script.Evaluate("STRING_COMPARE \"b\" \"a\" == 0"), "171:0.00");
    EXPECT_EQ(script.Evaluate("STRING_COMPARE \"b\" \"a\" == 7"), "171:7.00");
    EXPECT_EQ(script.Evaluate("STRING_REVERSE_FIND \"ab\" \"b\" BRAK + 1"), "171:2.00");
}

TEST_F(StringSearchTest, MissingVariableFailsWithItsName) {
    for (const FunctionRow& row : kRows) {
        const std::string name(row.keyword);
        EXPECT_EQ(script.Evaluate(name + " BRAK \"a\" 0"), "failed 3 BRAK") << name;
        EXPECT_EQ(script.Evaluate(name + " \"a\" BRAK 0"), "failed 3 BRAK") << name;
        EXPECT_EQ(script.Evaluate(name), "failed 3") << name;
    }
    EXPECT_EQ(script.Evaluate("STRING_FIND \"a\" \"a\" BRAK"), "failed 3 BRAK");
    EXPECT_EQ(script.Evaluate("STRING_FIND \"a\" \"a\""), "failed 3");
}

TEST_F(StringSearchTest, FormulaBehindTheFunctionMayFail) {
    EXPECT_EQ(script.Evaluate("STRING_FIND \"abc\" \"c\" 0 + BRAK"), "failed 3 BRAK");
    EXPECT_EQ(script.Evaluate("STRING_FIND \"abc\" \"c\" 0 += 1"), "failed 10");
}

TEST_F(StringSearchTest, EmptyFirstTextIsReadAsASingleWordFirst) {
    EXPECT_EQ(script.Evaluate("STRING_FIND PUSTY \"a\" 0"), "171:-1.00");
    EXPECT_EQ(script.Error(), "3 STRING_FIND");
    EXPECT_EQ(script.Evaluate("STRING_FIND PUSTY \"a\" 0 += 1"), "failed 3 STRING_FIND");
}

}  // namespace
}  // namespace kalvex::operands
