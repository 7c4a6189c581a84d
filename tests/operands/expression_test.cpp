#include "operands/Expression.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "operands/FunctionArguments.h"
#include "support/fake_script.h"
#include "support/value_dump.h"

namespace kalvex::operands {
namespace {

// Goes on with a formula that the text of its argument is.
FunctionResult GoOn(FunctionCall& call) {
    const TextArgument text(call, 0);
    if (!text) return FunctionResult::Failed;
    call.formula = std::string(*text) + ' ' + std::string(call.rest);
    return FunctionResult::Continues;
}

constexpr FunctionRow kRows[] = {{"GO_ON", GoOn, "", ""}};

const FunctionTable& Functions() {
    static const FunctionTable table(kRows);
    return table;
}

std::string Outcome(support::FakeScript& script, Expression& expression, int wanted) {
    script.ClearError();
    value::CVal value;
    const bool succeeded = expression.Evaluate(script, value, wanted);
    return (succeeded ? support::DescribeWhole(value) : "failed") + " " + script.Error();
}

// The same as statements have it, each by the shortest way that there is.
std::string ShortOutcome(support::FakeScript& script, Expression& expression, int wanted) {
    script.ClearError();
    if (expression.FailsByName(script)) return "failed " + script.Error();
    if (double real = 0; expression.FindReal(script, real)) {
        const value::CVal value =
            expression.IsComparison() ? value::CVal(static_cast<int>(real)) : value::CVal(real);
        return support::DescribeWhole(value) + " " + script.Error();
    }
    value::CVal scratch;
    const value::CVal* const value = expression.Look(script, scratch, wanted);
    return (value != nullptr ? support::DescribeWhole(*value) : "failed") + " " + script.Error();
}

template <class Value>
std::function<void(support::FakeScript&)> SetA(Value value) {
    return [value](support::FakeScript& script) {
        script.Variables().Find("A")->SetValue(value::CVal(value), value::KindCurrent);
    };
}

// What a script is made to be, one after the other.
using Change = std::function<void(support::FakeScript&)>;

const std::vector<Change>& Changes() {
    static const std::vector<Change> changes = {
        [](support::FakeScript&) {},
        [](support::FakeScript& script) { script.Local("A", value::CVal(7)); },
        [](support::FakeScript& script) { script.Local("B", value::CVal("tekst")); },
        [](support::FakeScript& script) { script.Local("ZERO", value::CVal(0)); },
        SetA(2.5),
        SetA(support::Stamped(value::CVal(2.5), 0, 1)),
        SetA(support::Stamped(value::CVal(2.5), 1710050400)),
        SetA(support::Stamped(value::CVal(2.5), -1)),
        SetA(0.0),
        SetA(std::numeric_limits<double>::infinity()),
        SetA(std::numeric_limits<double>::quiet_NaN()),
        SetA(std::string("2.5")),
        SetA(-8.25),
        [](support::FakeScript& script) {
            script.Variables().Find("B")->SetValue(value::CVal("-12"), value::KindCurrent);
        },
        [](support::FakeScript& script) { script.Variables().RemoveAll(); },
        [](support::FakeScript& script) {
            script.List("A", {value::CVal(1), value::CVal(2)});
        },
        [](support::FakeScript& script) { script.Local("B", value::CVal(3)); },
    };
    return changes;
}

std::string Numbers(int count) {
    std::string text;
    for (int i = 0; i < count; ++i) text += "1 ";
    return text;
}

// Its values all wait in front of the operators.
std::string Nested(int count) {
    std::string text;
    for (int i = 0; i < count; ++i) text += "1+(";
    text += "1";
    return text + std::string(static_cast<std::size_t>(count), ')');
}

class ExpressionKeptTest : public testing::TestWithParam<std::string> {};

TEST_P(ExpressionKeptTest, IsWhatIsReadAnew) {
    support::FakeScript kept(Functions());
    support::FakeScript anew(Functions());
    anew.services.keepForms = false;
    Expression expression{std::string_view(GetParam())};
    for (std::size_t i = 0; i < Changes().size(); ++i) {
        Changes()[i](kept);
        Changes()[i](anew);
        for (const int wanted : {150, 171, 190, 150, 160, 255}) {
            Expression once{std::string_view(GetParam())};
            const std::string outcome = Outcome(anew, once, wanted);
            EXPECT_EQ(Outcome(kept, expression, wanted), outcome)
                << GetParam() << " after change " << i << " as " << wanted;
            EXPECT_EQ(ShortOutcome(kept, expression, wanted), outcome)
                << GetParam() << " seen after change " << i << " as " << wanted;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    Texts, ExpressionKeptTest,
    testing::Values("A", "B", "A.COUNT", "A.HREP", "12", "12.75", "1E3", "\"A\"", "@daily", "TIME",
                    "TIME.YEAR", "A.YEAR", "", "A + 1", "A * 1.01 + 1 - A * 0.01", "-A", "2 - -A",
                    "A == \"B\"", "A == B", "C == A", "A + B == C", "(A)", "(B)", "(C)",
                    "A * 2 - (A + 1) / (A - 2)", "A / (A - A)", "A < 3 == 1", "(A < 8)", "A >= A",
                    "A != A", "A > 2 + 0.5", "A < 1 + (A > 1)", "A * (A - (A / (A + 1)))",
                    "1+(A+(A+(A+(A+(A+(A+(A)))))))", "1+(A+(A+(A+(A+(A+(A+(A+(A))))))))", "A B + C",
                    "B + B", "B + \"x\"", "A % ZERO + C", "C + A % ZERO", "A % ZERO", "A + C",
                    "C + A", "ZERO + A + C + B", "NOT(A)", "NOT A", "ROUND(A, 1)",
                    "SQRT(A) + SQR(A)", "TG(A)", "~A", "A !", "A # 2", "A && ZERO", "A || ZERO",
                    "A & 3 | 8 ^ 1", "A < B", "A <= 7", "(A", "A)", "A + * 2", "1 2 3", "2X",
                    "2X + A", "A + 2X", "1E5 + A", "= A", "GO_ON B", "GO_ON B + 1",
                    "GO_ON B , , * 3", Numbers(1023), Numbers(1024), Numbers(1025),
                    Numbers(1024) + "+", Numbers(1024) + "A +", Numbers(1025) + "+ A", Nested(500),
                    Nested(511)));

TEST(ExpressionTest, MoreContinuationsThanAreKept) {
    support::FakeScript script(Functions());
    CVariableLocal& variable = script.Local("F");
    Expression expression(std::string_view("GO_ON F , , * 2"));
    for (int round = 0; round < 3; ++round) {
        for (int i = 0; i < 20; ++i) {
            variable.SetValue(value::CVal(std::to_string(i)), value::KindCurrent);
            EXPECT_EQ(Outcome(script, expression, value::ValueType::Double),
                      "171:" + std::to_string(2 * i) + ".00/0@0 0");
        }
    }
}

TEST(ExpressionTest, ValueIsLookedAtWhereItStands) {
    support::FakeScript script;
    CVariableLocal& variable = script.Local("A", value::CVal("tekst"));
    value::CVal scratch;
    for (const char* text : {"A", "(A)", " A "}) {
        Expression expression{std::string_view(text)};
        for (int i = 0; i < 2; ++i) {
            value::CVal out;
            ASSERT_TRUE(expression.Evaluate(script, out, value::ValueType::Text)) << text;
            EXPECT_EQ(expression.Look(script, scratch, value::ValueType::Text),
                      variable.At(value::KindCurrent))
                << text;
        }
    }
}

TEST(ExpressionTest, RestEndsWhereTheStatementDoes) {
    EXPECT_EQ(Expression::OfRest(" A + 1 THEN B").Text(), "A + 1");
    EXPECT_EQ(Expression::OfRest("A  +   1 goto B").Text(), "A + 1");
    EXPECT_EQ(Expression::OfRest("A+1").Text(), "A + 1");
    EXPECT_EQ(Expression::OfRest("A ; B").Text(), "A");
    EXPECT_EQ(Expression::OfRest("; B").Text(), "");
}

}  // namespace
}  // namespace kalvex::operands
