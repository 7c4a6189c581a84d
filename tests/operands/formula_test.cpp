#include "operands/FormulaParser.h"

#include <gtest/gtest.h>

#include <cmath>

#include "operands/FormulaOperators.h"
#include "support/fake_script.h"
#include "support/value_dump.h"

namespace kalvex::operands {
namespace {

class FormulaTest : public testing::Test {
  protected:
    std::string Postfix(std::string_view text) {
        script.ClearError();
        FormulaParser parser(script);
        std::string postfix;
        return parser.CompileFormula(text::FromUtf8(text), postfix) ? text::ToUtf8(postfix)
                                                                    : "failed " + script.Error();
    }
    std::string Evaluate(std::string_view text) {
        script.ClearError();
        FormulaParser parser(script);
        std::string postfix;
        value::CVal value;
        if (!parser.CompileFormula(text::FromUtf8(text), postfix) ||
            !parser.EvaluatePostfix(value, postfix)) {
            return "failed " + script.Error();
        }
        return support::Dump(value);
    }

    support::FakeScript script;
};

TEST_F(FormulaTest, CompilesToPostfix) {
    const std::pair<const char*, const char*> cases[] = {
        {"2+3*4", "2 3 4 * + "},
        {"(2+3)*4", "2 3 + 4 * "},
        {"2#3#2", "2 3 # 2 # "},
        {"-2#2", "2 P 2 # "},
        {"2#-1", "2 # 1 P "},
        {"2#(-1)", "2 1 P # "},
        {"2*-3", "2 3 P * "},
        {"2 - -3", "2 3 P - "},
        {"-(-3)", "3 P P "},
        {"1<2 && 2<3", "1 2 < 2 3 < && "},
        {"1||0&&0", "1 0 0 && || "},
        {"1|2^3&1", "1 2 3 1 & ^ | "},
        {"1&2^3|4", "1 2 & 3 ^ 4 | "},
        {"1==2|3", "1 2 3 | == "},
        {"a!=b<=c>=d>e", "a b != c <= d >= e > "},
        {"7%3/2", "7 3 % 2 / "},
        {"5! + 1", "5 1 + ! "},
        {"(5!)+1", "5 ! 1 + "},
        {"B + ~A", "B + A ~ "},
        {"SIN(1)+cos(2)", "1 SIN 2 COS + "},
        {"ctg(x)*arcctg (y)", "x CTG y ARCCTG * "},
        {"2*TG(X)", "2 X TG * "},
        {"NOT(A)&&B", "A NOT B && "},
        {"ROUND(3.14159, 2)", "3.14159 2 ROUND "},
        {"ROUND(-2.5, 0)", "2.5 P 0 ROUND "},
        {"SQRT(2)+SQR(3)+INT(4)+FACTORIAL(5)", "2 SQRT 3 SQR + 4 INT + 5 FACTORIAL + "},
        {"ARCSIN(1)+ARCCOS(1)+ARCTG(1)", "1 ARCSIN 1 ARCCOS + 1 ARCTG + "},
        {"SQRT(2)SQR(3)", "2 3 SQR SQRT "},
        {"7,-1", "7 1 - "},
        {"1 2", "1 2 "},
        {"1+2;3", "1 2 + "},
        {"zażółć_1.HREP+.5", "zażółć_1.HREP .5 + "},
        {"a\t+\tb", "a b + "},
        {"", ""},
        {"   ", ""},
    };
    for (const auto& [text, postfix] : cases) EXPECT_EQ(Postfix(text), postfix) << text;
}

TEST_F(FormulaTest, MalformedTextNamesItsKindOfError) {
    const std::pair<const char*, const char*> cases[] = {
        {"1+=2", "failed 10"},  {"1&=2", "failed 10"},  {"a-=1", "failed 10"},
        {"SIN 1", "failed 13"}, {"2*sin", "failed 13"}, {"1+*2", "failed 14"},
        {"1**2", "failed 14"},  {"(1+2", "failed 14"},  {"1+2)", "failed 14"},
        {"1||*2", "failed 14"}, {")", "failed 14"},     {"((1)", "failed 14"},
        {"1&&&2", "failed 14"},
    };
    for (const auto& [text, outcome] : cases) EXPECT_EQ(Postfix(text), outcome) << text;
}

TEST_F(FormulaTest, Arithmetic) {
    const std::pair<const char*, const char*> cases[] = {
        {"2+3*4", "171:14.00"},   {"(2+3)*4", "171:20.00"},
        {"2#3", "171:8.00"},      {"2#3#2", "171:64.00"},
        {"-2#2", "171:4.00"},     {"2#-1", "171:-1.00"},
        {"2#(-1)", "171:0.50"},   {"7%3", "150:1"},
        {"-7%3", "150:-1"},       {"7%-3", "150:1"},
        {"-3+5", "171:2.00"},     {"2*-3", "171:-6.00"},
        {"2 - -3", "171:5.00"},   {"1/4", "171:0.25"},
        {"1<2 && 2<3", "150:1"},  {"5&&0", "150:0"},
        {"0||3", "150:1"},        {"6&3", "150:2"},
        {"5^1", "150:4"},         {"6|1", "150:7"},
        {"1|2^3&1", "150:3"},     {"1==1", "150:1"},
        {"1!=1", "150:0"},        {"2<=1", "150:0"},
        {"2>=2", "150:1"},        {"2>3", "150:0"},
        {"NOT(0)", "150:1"},      {"NOT(5)", "150:0"},
        {"not(0)", "150:1"},      {"INT(2.9)", "150:2"},
        {"INT(-2.9)", "150:-2"},  {"FACTORIAL(5)", "150:120"},
        {"(5!)+1", "171:121.00"}, {"5! + 1", "150:720"},
        {"SQR(1.5)", "171:2.25"}, {"SQRT(16)", "171:4.00"},
        {"1 2", "171:2.00"},      {"", "150:0"},
        {"-", "150:0"},
    };
    for (const auto& [text, value] : cases) EXPECT_EQ(Evaluate(text), value) << text;
}

TEST_F(FormulaTest, FunctionsAreTheStandardOnes) {
    const auto number = [](double x) { return support::Dump(value::CVal(x)); };
    EXPECT_EQ(Evaluate("(SIN(1))"), number(std::sin(1.0)));
    EXPECT_EQ(Evaluate("(COS(1))"), number(std::cos(1.0)));
    EXPECT_EQ(Evaluate("(CTG(1))"), number(1.0 / std::tan(1.0)));
    EXPECT_EQ(Evaluate("(ARCSIN(0.5))"), number(std::asin(0.5)));
    EXPECT_EQ(Evaluate("(ARCCOS(0.5))"), number(std::acos(0.5)));
    EXPECT_EQ(Evaluate("(ARCTG(0.5))"), number(std::atan(0.5)));
    EXPECT_EQ(Evaluate("(ARCCTG(0.5))"), number(1.5707963267948966 - std::atan(0.5)));
    EXPECT_EQ(Evaluate("SQRT(-1)").substr(0, 4), "171:");
    EXPECT_EQ(Evaluate("ARCSIN(2)").substr(0, 4), "171:");
}

TEST_F(FormulaTest, RoundTakesHalvesUp) {
    const std::pair<const char*, const char*> cases[] = {
        {"ROUND(3.14159, 2)", "171:3.14"}, {"ROUND(2.5, 0)", "171:3.00"},
        {"ROUND(-2.5, 0)", "171:-2.00"},   {"ROUND(-1.25, 1)", "171:-1.20"},
        {"ROUND(-0.4, 0)", "171:0.00"},    {"ROUND(7.5, (-1))", "171:8.00"},
    };
    for (const auto& [text, value] : cases) EXPECT_EQ(Evaluate(text), value) << text;
    EXPECT_TRUE(std::isnan(RoundToDigits(1.5, 2000000000)));
}

TEST_F(FormulaTest, VariablesBringTypeStatusAndTime) {
    value::CVal stamped(7);
    stamped.SetStatus(4);
    stamped.SetTime(99);
    script.Local("A", stamped);
    script.Local("B", value::CVal(2));
    EXPECT_EQ(Evaluate("A+B"), "150:9");
    EXPECT_EQ(Evaluate("A-B"), "150:5");
    FormulaParser parser(script);
    const std::pair<const char*, int> cases[] = {{"A ", 4},     {"A B + ", 4}, {"A P ", 4},
                                                 {"A SQR ", 4}, {"A B > ", 0}, {"A INT ", 0}};
    for (const auto& [postfix, status] : cases) {
        value::CVal value;
        ASSERT_TRUE(parser.EvaluatePostfix(value, postfix));
        EXPECT_EQ(value.GetStatus(), status) << postfix;
        EXPECT_EQ(value.GetTime(), status == 0 ? 0 : 99) << postfix;
    }
}

TEST_F(FormulaTest, MissingOperandCountsAsZero) {
    script.Local("A", value::CVal(7));
    EXPECT_EQ(Evaluate("A +"), "150:7");
    EXPECT_EQ(Evaluate("A -"), "150:-7");
    EXPECT_EQ(Evaluate("* A"), "150:0");
}

TEST_F(FormulaTest, NumberWithALetterFailsWithoutAnError) {
    EXPECT_EQ(Evaluate("1e5+1"), "failed 0");
    EXPECT_EQ(Evaluate("2E3"), "failed 0");
}

TEST_F(FormulaTest, RemainderByZeroFails) {
    EXPECT_EQ(Evaluate("7%0"), "failed 14");
    EXPECT_EQ(Evaluate("(-2147483648)%(-1)"), "150:0");
}

TEST_F(FormulaTest, OperandThatCannotBeRead) {
    EXPECT_EQ(Evaluate("BRAK+1"), "failed 3 BRAK");
    script.Remote("R").answer = ReadUnavailable;
    EXPECT_EQ(Evaluate("R+1"), "failed 15 R");
    script.Local("A");
    EXPECT_EQ(Evaluate("A.HREP.UNIT+1"), "failed 15");
    EXPECT_EQ(Evaluate("1=2"), "failed 3 =");
}

TEST_F(FormulaTest, TextLiteralsDoNotExist) {
    EXPECT_EQ(Evaluate("\"a\"+1"), "failed 14");
    EXPECT_EQ(Evaluate("\"a\""), "failed 3 a");
}

TEST_F(FormulaTest, VariableNamedPIsTheMinus) {
    script.Local("P", value::CVal(7));
    EXPECT_EQ(Evaluate("2 P"), "171:-2.00");
}

TEST_F(FormulaTest, TangentIsReadAsAVariable) {
    script.Local("X", value::CVal(1));
    EXPECT_EQ(Evaluate("2*TG(X)"), "failed 3 TG");
    script.Local("TG", value::CVal(5));
    EXPECT_EQ(Evaluate("2*TG(X)"), "150:5");
}

TEST_F(FormulaTest, FactorialWrapsInThirtyTwoBits) {
    EXPECT_EQ(Evaluate("FACTORIAL(13)"), "150:1932053504");
    EXPECT_EQ(Evaluate("FACTORIAL(0)"), "150:1");
    EXPECT_EQ(Evaluate("FACTORIAL(-3)"), "150:1");
    EXPECT_EQ(Evaluate("FACTORIAL(2147483647)"), "150:0");
}

TEST_F(FormulaTest, ComplementKeepsTheInteger) {
    script.Local("A", value::CVal(5));
    EXPECT_EQ(Evaluate("~A"), "150:-6");
    EXPECT_EQ(Evaluate("B + ~A"), "failed 3 B");
    script.Local("B", value::CVal(100));
    EXPECT_EQ(Evaluate("B + ~A"), "150:-6");
}

TEST_F(FormulaTest, StackHasItsLimit) {
    EXPECT_EQ(Postfix(std::string(1024, '(')), "failed 14");
    EXPECT_EQ(Postfix(std::string(1025, '(')), "");
    EXPECT_EQ(script.Error(), "12");
    std::string numbers;
    for (int i = 0; i < 1025; ++i) numbers += "1 ";
    EXPECT_EQ(Evaluate(numbers), "150:0");
    FormulaParser parser(script);
    value::CVal value;
    script.ClearError();
    EXPECT_TRUE(parser.EvaluatePostfix(value, numbers));
    EXPECT_EQ(script.Error(), "12");
    EXPECT_EQ(Evaluate(numbers.substr(2)), "171:1.00");
    EXPECT_EQ(script.Error(), "0");
}

TEST_F(FormulaTest, EveryTextEnds) {
    std::uint32_t seed = 1;
    const std::string_view alphabet = "12.aP(+-*/%#&|^=!<>~), ;\"NOTSIN_";
    for (int round = 0; round < 20000; ++round) {
        std::string text;
        for (int i = 0; i < 12; ++i) {
            seed = seed * 1664525 + 1013904223;
            text += alphabet[(seed >> 16) % alphabet.size()];
        }
        const std::string outcome = Evaluate(text);
        EXPECT_FALSE(outcome.empty());
    }
}

}  // namespace
}  // namespace kalvex::operands
