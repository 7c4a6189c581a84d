#include <gtest/gtest.h>

#include <cmath>

#include "operands/FunctionFamilies.h"
#include "support/fake_script.h"
#include "support/value_dump.h"

namespace kalvex::operands {
namespace {

constexpr FunctionRow kRows[] = {
    {"SIN", Sine, "", ""},         {"COS", Cosine, "", ""},          {"TG", Tangent, "", ""},
    {"CTG", Cotangent, "", ""},    {"ARCSIN", ArcSine, "", ""},      {"ARCCOS", ArcCosine, "", ""},
    {"ARCTG", ArcTangent, "", ""}, {"ARCCTG", ArcCotangent, "", ""}, {"SQR", Square, "", ""},
    {"SQRT", SquareRoot, "", ""},  {"FACTORIAL", Factorial, "", ""}, {"INT", IntegerPart, "", ""},
    {"ROUND", Round, "", ""},
};

class MathFunctionsTest : public testing::Test {
  protected:
    static const FunctionTable& Table() {
        static const FunctionTable table(kRows);
        return table;
    }
    static std::string Number(double x) { return support::Dump(value::CVal(x)); }

    support::FakeScript script{Table()};
};

TEST_F(MathFunctionsTest, TakeOneArgument) {
    EXPECT_EQ(script.Evaluate("SIN 1"), Number(std::sin(1.0)));
    EXPECT_EQ(script.Evaluate("COS 1"), Number(std::cos(1.0)));
    EXPECT_EQ(script.Evaluate("TG 1"), Number(std::tan(1.0)));
    EXPECT_EQ(script.Evaluate("CTG 1"), Number(1.0 / std::tan(1.0)));
    EXPECT_EQ(script.Evaluate("ARCSIN 0.5"), Number(std::asin(0.5)));
    EXPECT_EQ(script.Evaluate("ARCCOS 0.5"), Number(std::acos(0.5)));
    EXPECT_EQ(script.Evaluate("ARCTG 0.5"), Number(std::atan(0.5)));
    EXPECT_EQ(script.Evaluate("ARCCTG 0.5"), Number(1.5707963267948966 - std::atan(0.5)));
    EXPECT_EQ(script.Evaluate("SQR 1.5"), "171:2.25");
    EXPECT_EQ(script.Evaluate("SQRT 16"), "171:4.00");
    EXPECT_EQ(script.Evaluate("INT 2.9"), "150:2");
    EXPECT_EQ(script.Evaluate("ROUND 3.14159 2"), "171:3.14");
    EXPECT_EQ(script.Evaluate("ROUND -2.5 0.9"), "171:-2.00");
}

TEST_F(MathFunctionsTest, RestOfTheLineIsDropped) {
    EXPECT_EQ(script.Evaluate("SIN 0 + 1"), "171:0.00");
    EXPECT_EQ(script.Evaluate("2*SIN(1)/2"), script.Evaluate("SIN 1"));
}

TEST_F(MathFunctionsTest, FormulaCannotBeginWithAFunction) {
    script.Local("A", value::CVal(1));
    EXPECT_EQ(script.Evaluate("SIN(A)*2"), "failed 3 (");
    EXPECT_EQ(script.Evaluate("(SIN(A))*2"), Number(std::sin(1.0) * 2));
}

TEST_F(MathFunctionsTest, FactorialGrowsWithItsValues) {
    EXPECT_EQ(script.Evaluate("FACTORIAL 5"), "150:120");
    EXPECT_EQ(script.Evaluate("FACTORIAL 0"), "150:1");
    EXPECT_EQ(script.Evaluate("FACTORIAL -2"), "150:1");
    EXPECT_EQ(script.Evaluate("FACTORIAL 20"), "160:2432902008176640000");
    EXPECT_EQ(script.Evaluate("FACTORIAL 2147483647"), "171:inf");
}

TEST_F(MathFunctionsTest, SquareLosesTheStatusOfItsArgument) {
    value::CVal unknown(3);
    unknown.SetStatus(value::Status::Alarm);
    script.Local("A", unknown);
    std::string_view text = "SQR A";
    value::CVal value;
    ASSERT_TRUE(EvaluateExpression(script, text, value, value::ValueType::Double));
    EXPECT_EQ(value.GetStatus(), 0);
}

TEST_F(MathFunctionsTest, ArgumentThatCannotBeReadFailsTheExpression) {
    for (const FunctionRow& row : kRows) {
        EXPECT_EQ(script.Evaluate(std::string(row.keyword) + " BRAK"), "failed 3 BRAK")
            << row.keyword;
    }
    EXPECT_EQ(script.Evaluate("ROUND 1 BRAK"), "failed 3 BRAK");
}

}  // namespace
}  // namespace kalvex::operands
