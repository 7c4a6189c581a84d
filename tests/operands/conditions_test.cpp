#include "operands/Conditions.h"

#include <gtest/gtest.h>

#include "support/fake_script.h"
#include "support/value_dump.h"

namespace kalvex::operands {
namespace {

class ConditionsTest : public testing::Test {
  protected:
    int Compare(std::string_view left, std::string_view op, std::string_view right) {
        script.ClearError();
        return CompareOperands(script, text::FromUtf8(left), text::FromUtf8(right), op);
    }
    int Test(std::string_view word, std::string_view operand) { return Compare(word, operand, ""); }

    support::FakeScript script;
};

TEST_F(ConditionsTest, TestWordsAreFive) {
    std::string words;
    for (const ConditionWordRow& row : ConditionWords()) words += std::string(row.word) + ' ';
    EXPECT_EQ(words, "SET_BY_USER UNKNOWN READY REP_INITED REP_LOADED ");
    EXPECT_EQ(FindConditionWord("UNKNOWN")->help,
              "Sprawdzenie, czy zmienna posiada niepoprawną wartość");
    EXPECT_EQ(FindConditionWord("ready"), nullptr);
    EXPECT_EQ(FindConditionWord(""), nullptr);
}

TEST_F(ConditionsTest, SetByUserLooksAtTheStatus) {
    CVariableLocal& variable = script.Local("A", support::Stamped(value::CVal(1), 0, 33));
    variable.SetValue(support::Stamped(value::CVal(1), 0, 16), value::KindDay);
    EXPECT_EQ(Test("SET_BY_USER", "A"), 1);
    EXPECT_EQ(Test("SET_BY_USER", "A.DREP"), 0);
    EXPECT_EQ(Test("SET_BY_USER", "A.ARCH"), 0);
    EXPECT_EQ(Test("SET_BY_USER", "BRAK"), 0);
    EXPECT_EQ(script.Error(), "3 BRAK");
}

TEST_F(ConditionsTest, UnknownIsATestOfTheReading) {
    script.Local("A", support::Stamped(value::CVal(1), 0, value::Status::Unknown));
    EXPECT_EQ(Test("UNKNOWN", "A"), 0);
    EXPECT_EQ(Test("UNKNOWN", "A.ARCH"), 1);
    EXPECT_EQ(Test("UNKNOWN", "BRAK"), 1);
    EXPECT_EQ(Test("UNKNOWN", "12.5"), 0);
    support::HandRemote& remote = script.Remote("Z");
    remote.answer = ReadUnavailable;
    EXPECT_EQ(Test("UNKNOWN", "Z"), 1);
    EXPECT_EQ(script.Error(), "15 Z");
    remote.answer = ReadNothing;
    EXPECT_EQ(Test("UNKNOWN", "Z"), 1);
    EXPECT_EQ(script.Error(), "27 Z");
    remote.answer = ReadValue;
    EXPECT_EQ(Test("UNKNOWN", "Z"), 0);
    script.List("L", {support::Stamped(value::CVal(1), 0, value::Status::Unknown)}).MoveFirst();
    EXPECT_EQ(Test("UNKNOWN", "L"), 1);
}

TEST_F(ConditionsTest, ReportTestsFollowTheSuffix) {
    support::HandRemote& remote = script.Remote("Z");
    remote.readyKind = value::KindHour;
    remote.initedKind = value::KindDay;
    remote.loadedKind = value::KindMonth;
    EXPECT_EQ(Test("READY", "Z.HREP"), 1);
    EXPECT_EQ(Test("READY", "Z.DREP"), 0);
    EXPECT_EQ(Test("READY", "Z"), 0);
    EXPECT_EQ(Test("REP_INITED", "Z.DREP"), 1);
    EXPECT_EQ(Test("REP_INITED", "Z.HREP"), 0);
    EXPECT_EQ(Test("REP_LOADED", "Z.MREP"), 1);
    EXPECT_EQ(Test("REP_LOADED", "Z.DREP"), 0);
    script.Local("A", value::CVal(1));
    EXPECT_EQ(Test("READY", "A.HREP"), 1);
    for (const char* word : {"READY", "REP_INITED", "REP_LOADED"}) {
        EXPECT_EQ(Test(word, "BRAK.HREP"), 0) << word;
        EXPECT_EQ(script.Error(), "3 BRAK") << word;
    }
}

TEST_F(ConditionsTest, ComparisonOfNumbers) {
    struct Row {
        const char* op;
        int below;
        int equal;
        int above;
    };
    constexpr Row kRows[] = {{"==", 0, 1, 0}, {"!=", 1, 0, 1}, {">", 0, 0, 1},
                             {"<", 1, 0, 0},  {">=", 0, 1, 1}, {"<=", 1, 1, 0}};
    script.Local("A", value::CVal(5));
    for (const Row& row : kRows) {
        EXPECT_EQ(Compare("A", row.op, "6"), row.below) << row.op;
        EXPECT_EQ(Compare("A", row.op, "5"), row.equal) << row.op;
        EXPECT_EQ(Compare("A", row.op, "4"), row.above) << row.op;
    }
}

TEST_F(ConditionsTest, SidesAreFormulas) {
    script.Local("A", value::CVal(5));
    EXPECT_EQ(Compare("A*2-1", "==", "3*3"), 1);
    EXPECT_EQ(Compare("2*SQRT(16)", ">", "A+2"), 1);
    EXPECT_EQ(Compare("", "==", "0"), 1);
}

TEST_F(ConditionsTest, StringLiteralIsItsText) {
    script.Local("NAZWA", value::CVal(text::FromUtf8("Stacja Łódź")));
    EXPECT_EQ(Compare("NAZWA", "==", "\"Stacja Łódź\""), 1);
    EXPECT_EQ(Compare("NAZWA", "!=", "\"Stacja Łódź\""), 0);
    EXPECT_EQ(Compare("NAZWA", "==", "\"Stacja\""), 0);
    EXPECT_EQ(Compare("\"Stacja\"", "<", "NAZWA"), 1);
    EXPECT_EQ(Compare("\"a\"", "==", "\"a\""), 1);
    script.Local("PLIK", value::CVal("x.NAME"));
    EXPECT_EQ(Compare("PLIK", "==", "\"x.NAME\""), 1);
    script.Local("N", value::CVal(12));
    EXPECT_EQ(Compare("N", "==", "\"12.0\""), 1);
}

TEST_F(ConditionsTest, TextThatIsNoSingleLiteralIsAFormula) {
    script.Local("NAZWA", value::CVal("a"));
    EXPECT_EQ(Compare("NAZWA", "==", "\"a\"+\"b\""), -1);
    EXPECT_EQ(Compare("NAZWA", "==", "\"\""), -1);
    EXPECT_EQ(Compare("NAZWA", "==", "\""), -1);
    EXPECT_EQ(Compare("NAZWA", "==", "\"a\"+1"), -1);
}

TEST_F(ConditionsTest, SideThatCannotBeEvaluated) {
    script.Local("A", value::CVal(5));
    EXPECT_EQ(Compare("BRAK", "==", "1"), -1);
    EXPECT_EQ(script.Error(), "3 BRAK");
    EXPECT_EQ(Compare("A", "==", "BRAK"), -1);
    EXPECT_EQ(script.Error(), "3 BRAK");
    EXPECT_EQ(Compare("A+=", "==", "1"), -1);
    EXPECT_EQ(script.Error(), "10");
}

TEST_F(ConditionsTest, UnknownOperator) {
    script.Local("A", value::CVal(5));
    for (const char* op : {"=", "", "=>", "&", "A", "==="}) {
        EXPECT_EQ(Compare("A", op, "5"), -1) << op;
        EXPECT_EQ(script.Error(), "0") << op;
    }
}

}  // namespace
}  // namespace kalvex::operands
