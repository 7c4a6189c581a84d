#include <gtest/gtest.h>

#include "operands/FunctionFamilies.h"
#include "support/fake_script.h"
#include "support/value_dump.h"

namespace kalvex::operands {
namespace {

constexpr FunctionRow kRows[] = {
    {"TO_STRING", ToStringFunction, "", ""},
    {"TO_FLOAT", ToFloat, "", ""},
    {"TO_INT", ToInt, "", ""},
    {"STRING_LEN", StringLen, "", ""},
    {"STRING_MAKE_LOWER", StringMakeLower, "", ""},
    {"STRING_MAKE_REVERSE", StringMakeReverse, "", ""},
    {"STRING_MAKE_UPPER", StringMakeUpper, "", ""},
    {"STRING_APPEND", StringAppend, "", ""},
    {"STRING_SPAN_EXCLUDING", StringSpanExcluding, "", ""},
    {"STRING_SPAN_INCLUDING", StringSpanIncluding, "", ""},
    {"STRING_TRIM", StringTrim, "", ""},
    {"STRING_TRIM_LEFT", StringTrimLeft, "", ""},
    {"STRING_TRIM_RIGHT", StringTrimRight, "", ""},
    {"STRING_LEFT", StringLeft, "", ""},
    {"STRING_RIGHT", StringRight, "", ""},
    {"STRING_MID", StringMid, "", ""},
};

class StringFunctionsTest : public testing::Test {
  protected:
    StringFunctionsTest() { script.Local("PUSTY", value::CVal("")); }

    static const FunctionTable& Table() {
        static const FunctionTable table(kRows);
        return table;
    }

    support::FakeScript script{Table()};
};

TEST_F(StringFunctionsTest, NumberToText) {
    EXPECT_EQ(script.Evaluate("TO_STRING 3.14159"), "190:3.14");
    EXPECT_EQ(script.Evaluate("TO_STRING 3.14159 \"%.3f\""), "190:3.142");
    EXPECT_EQ(script.Evaluate("TO_STRING 7 \"%3d\""), "190:  7");
    EXPECT_EQ(script.Evaluate("TO_STRING 7 \"abc\""), "190:7.00");
    script.Local("L", value::CVal(12.345));
    script.Local("F", value::CVal("%.1f"));
    EXPECT_EQ(script.Evaluate("TO_STRING L F"), "190:12.3");
    EXPECT_EQ(script.Evaluate("TO_STRING L PUSTY"), "190:12.35");
    EXPECT_EQ(script.Evaluate("TO_STRING L \"%d\""), "190:12");
}

TEST_F(StringFunctionsTest, QuotedTextIsNotFormatted) {
    EXPECT_EQ(script.Evaluate("TO_STRING \"abc\" \"%d\""), "190:abc");
    EXPECT_EQ(script.Evaluate("TO_STRING \"12.5\""), "190:12.5");
    EXPECT_EQ(script.Evaluate("TO_STRING \"abc\" BRAK"), "190:abc");
}

TEST_F(StringFunctionsTest, TextOfAVariableIsFormattedAsItsNumber) {
    script.Local("T", value::CVal("12.345"));
    script.Local("S", value::CVal("abc"));
    EXPECT_EQ(script.Evaluate("TO_STRING T"), "190:12.35");
    EXPECT_EQ(script.Evaluate("TO_STRING S"), "190:0.00");
    EXPECT_EQ(script.Evaluate("TO_STRING S \"%d\""), "190:0");
}

TEST_F(StringFunctionsTest, TextToNumber) {
    script.Local("T", value::CVal(" 12.7 bar"));
    EXPECT_EQ(script.Evaluate("TO_FLOAT T"), "171:12.70");
    EXPECT_EQ(script.Evaluate("TO_INT T"), "150:12");
    EXPECT_EQ(script.Evaluate("TO_FLOAT \"-0.5\""), "171:-0.50");
    EXPECT_EQ(script.Evaluate("TO_INT \"abc\""), "150:0");
    EXPECT_EQ(script.Evaluate("TO_FLOAT PUSTY"), "171:0.00");
    EXPECT_EQ(script.Evaluate("TO_INT 12.9", value::ValueType::Text), "150:12");
    EXPECT_EQ(script.Evaluate("TO_FLOAT 12", value::ValueType::Text), "171:12.00");
}

TEST_F(StringFunctionsTest, LengthCountsCharacters) {
    EXPECT_EQ(script.Evaluate("STRING_LEN \"abc\""), "150:3");
    EXPECT_EQ(script.Evaluate("STRING_LEN \"zażółć gęślą\""), "150:12");
    EXPECT_EQ(script.Evaluate("STRING_LEN PUSTY"), "150:0");
}

TEST_F(StringFunctionsTest, CaseFollowsWindows1250) {
    EXPECT_EQ(script.Evaluate("STRING_MAKE_LOWER \"ŻÓŁĆ Gaz 12\""), "190:żółć gaz 12");
    EXPECT_EQ(script.Evaluate("STRING_MAKE_UPPER \"żółć Gaz 12\""), "190:ŻÓŁĆ GAZ 12");
    EXPECT_EQ(script.Evaluate("STRING_MAKE_UPPER PUSTY"), "190:");
}

TEST_F(StringFunctionsTest, Reverse) {
    EXPECT_EQ(script.Evaluate("STRING_MAKE_REVERSE \"abcó\""), "190:ócba");
    EXPECT_EQ(script.Evaluate("STRING_MAKE_REVERSE PUSTY"), "190:");
}

TEST_F(StringFunctionsTest, Append) {
    EXPECT_EQ(script.Evaluate("STRING_APPEND \"ab\" \"cd\""), "190:abcd");
    EXPECT_EQ(script.Evaluate("STRING_APPEND \"ab\" PUSTY"), "190:ab");
    EXPECT_EQ(script.Evaluate("STRING_APPEND PUSTY PUSTY"), "190:");
    EXPECT_EQ(script.Evaluate("STRING_APPEND PUSTY \"\""), "failed 3 \"\"");
}

TEST_F(StringFunctionsTest, SpansTakeTheBeginning) {
    EXPECT_EQ(script.Evaluate("STRING_SPAN_INCLUDING \"112a1\" \"12\""), "190:112");
    EXPECT_EQ(script.Evaluate("STRING_SPAN_INCLUDING \"112\" \"21\""), "190:112");
    EXPECT_EQ(script.Evaluate("STRING_SPAN_INCLUDING \"abc\" \"x\""), "190:");
    EXPECT_EQ(script.Evaluate("STRING_SPAN_INCLUDING \"abc\" PUSTY"), "190:");
    EXPECT_EQ(script.Evaluate("STRING_SPAN_EXCLUDING \"ab,c\" \",\""), "190:ab");
    EXPECT_EQ(script.Evaluate("STRING_SPAN_EXCLUDING \"abc\" \",;\""), "190:abc");
    EXPECT_EQ(script.Evaluate("STRING_SPAN_EXCLUDING \"abc\" PUSTY"), "190:abc");
    EXPECT_EQ(script.Evaluate("STRING_SPAN_EXCLUDING PUSTY \"a\""), "190:");
}

TEST_F(StringFunctionsTest, TrimTakesASetOfCharacters) {
    EXPECT_EQ(script.Evaluate("STRING_TRIM \"xxaxx\" \"x\""), "190:a");
    EXPECT_EQ(script.Evaluate("STRING_TRIM \"xya yx\" \"xy\""), "190:a ");
    EXPECT_EQ(script.Evaluate("STRING_TRIM_LEFT \"xyaxy\" \"yx\""), "190:axy");
    EXPECT_EQ(script.Evaluate("STRING_TRIM_RIGHT \"xyaxy\" \"yx\""), "190:xya");
    EXPECT_EQ(script.Evaluate("STRING_TRIM \"xxx\" \"x\""), "190:");
    EXPECT_EQ(script.Evaluate("STRING_TRIM_LEFT \"xxx\" \"x\""), "190:");
    EXPECT_EQ(script.Evaluate("STRING_TRIM_RIGHT \"xxx\" \"x\""), "190:");
    EXPECT_EQ(script.Evaluate("STRING_TRIM \"abc\" PUSTY"), "190:abc");
    EXPECT_EQ(script.Evaluate("STRING_TRIM PUSTY \"x\""), "190:");
}

TEST_F(StringFunctionsTest, LeftAndRight) {
    EXPECT_EQ(script.Evaluate("STRING_LEFT \"abc\" 2"), "190:ab");
    EXPECT_EQ(script.Evaluate("STRING_LEFT \"abc\" 0"), "190:");
    EXPECT_EQ(script.Evaluate("STRING_LEFT \"abc\" -1"), "190:");
    EXPECT_EQ(script.Evaluate("STRING_LEFT \"abc\" 9"), "190:abc");
    EXPECT_EQ(script.Evaluate("STRING_RIGHT \"abc\" 2"), "190:bc");
    EXPECT_EQ(script.Evaluate("STRING_RIGHT \"abc\" 0"), "190:");
    EXPECT_EQ(script.Evaluate("STRING_RIGHT \"abc\" -2147483648"), "190:");
    EXPECT_EQ(script.Evaluate("STRING_RIGHT \"abc\" 2147483647"), "190:abc");
    EXPECT_EQ(script.Evaluate("STRING_LEFT PUSTY 1"), "190:");
}

TEST_F(StringFunctionsTest, Middle) {
    EXPECT_EQ(script.Evaluate("STRING_MID \"abcdef\" 2 2"), "190:cd");
    EXPECT_EQ(script.Evaluate("STRING_MID \"abc\" -1 2"), "190:ab");
    EXPECT_EQ(script.Evaluate("STRING_MID \"abc\" 2 9"), "190:c");
    EXPECT_EQ(script.Evaluate("STRING_MID \"abc\" 9 1"), "190:");
    EXPECT_EQ(script.Evaluate("STRING_MID \"abc\" 3 1"), "190:");
    EXPECT_EQ(script.Evaluate("STRING_MID \"abc\" 1 -1"), "190:");
    EXPECT_EQ(script.Evaluate("STRING_MID \"abc\" 1 2147483647"), "190:bc");
}

TEST_F(StringFunctionsTest, ResultIsATextWhateverWasWanted) {
    EXPECT_EQ(script.Evaluate("STRING_LEFT \"123\" 2", value::ValueType::Int), "190:12");
    EXPECT_EQ(script.Evaluate("STRING_APPEND \"1\" \"2\"", value::ValueType::Double), "190:12");
}

TEST_F(StringFunctionsTest, RestOfTheLineIsDropped) {
    EXPECT_EQ(script.Evaluate("STRING_LEFT \"abc\" 2 BRAK + ("), "190:ab");
    EXPECT_EQ(script.Evaluate("STRING_LEN \"abc\" + 2"), "150:3");
    EXPECT_EQ(script.Evaluate("TO_INT \"4\" * 2"), "150:4");
}

TEST_F(StringFunctionsTest, LowerCaseSpellingIsNoFunction) {
    EXPECT_EQ(script.Evaluate("string_len \"abc\""), "failed 3 string_len");
}

TEST_F(StringFunctionsTest, ResultCarriesNeitherStatusNorTime) {
    script.Local("T", support::Stamped(value::CVal("abc"), 1000, 5));
    std::string_view text = "STRING_LEFT T 2";
    value::CVal value = support::Stamped(value::CVal(), 7, 7);
    ASSERT_TRUE(EvaluateExpression(script, text, value, value::ValueType::Text));
    EXPECT_EQ(support::Dump(value), "190:ab");
    EXPECT_EQ(value.GetStatus(), 0);
    EXPECT_EQ(value.GetTime(), 0);
}

TEST_F(StringFunctionsTest, MissingVariableFailsWithItsName) {
    for (const FunctionRow& row : kRows) {
        const std::string name(row.keyword);
        EXPECT_EQ(script.Evaluate(name + " BRAK 1 1"), "failed 3 BRAK") << name;
        EXPECT_EQ(script.Evaluate(name), "failed 3") << name;
    }
    for (const char* name :
         {"TO_STRING 1", "STRING_APPEND \"a\"", "STRING_SPAN_EXCLUDING \"a\"",
          "STRING_SPAN_INCLUDING \"a\"", "STRING_TRIM \"a\"", "STRING_TRIM_LEFT \"a\"",
          "STRING_TRIM_RIGHT \"a\"", "STRING_LEFT \"a\"", "STRING_RIGHT \"a\"", "STRING_MID \"a\"",
          "STRING_MID \"a\" 1"}) {
        EXPECT_EQ(script.Evaluate(std::string(name) + " DRUGI"), "failed 3 DRUGI") << name;
    }
}

TEST_F(StringFunctionsTest, RemoteValueThatIsMissingFailsOrWaits) {
    support::HandRemote& remote = script.Remote("Z");
    remote.answer = ReadUnavailable;
    EXPECT_EQ(script.Evaluate("STRING_LEN Z"), "failed 15 Z");
    remote.answer = ReadNothing;
    EXPECT_EQ(script.Evaluate("STRING_LEN Z"), "failed 27 Z");
}

}  // namespace
}  // namespace kalvex::operands
