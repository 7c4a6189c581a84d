#include "operands/OperandEvaluator.h"

#include <gmock/gmock.h>

#include "support/fake_script.h"
#include "support/value_dump.h"

namespace kalvex::operands {
namespace {

class OperandTest : public testing::Test {
  protected:
    // Type and content of an operand, or "failed" with the error slot.
    std::string Read(std::string_view operand, int wanted = value::ValueType::Double,
                     bool report = true) {
        script.ClearError();
        value::CVal value;
        if (!EvaluateOperand(script, text::FromUtf8(operand), value, wanted, report)) {
            return "failed " + script.Error();
        }
        return std::to_string(value.GetType()) + ":" + text::ToUtf8(value::ValueToText(value));
    }

    support::FakeScript script;
};

TEST_F(OperandTest, ScheduleWordsAreTexts) {
    for (const char* word : {"@annually", "@yearly", "@monthly", "@weekly", "@daily", "@midnight",
                             "@hourly", "@every_minute"}) {
        EXPECT_EQ(Read(word), std::string("190:") + word);
    }
    EXPECT_EQ(Read("  @daily  "), "190:@daily");
    EXPECT_EQ(Read("@DAILY"), "failed 3 @DAILY");
    EXPECT_EQ(Read("@every"), "failed 3 @every");
}

TEST_F(OperandTest, NumbersAreConvertedToTheWantedType) {
    EXPECT_EQ(Read("12.7", value::ValueType::Int), "150:12");
    EXPECT_EQ(Read("12.7", value::ValueType::Double), "171:12.70");
    EXPECT_EQ(Read("12", value::ValueType::Text), "190:12.00");
    EXPECT_EQ(Read("9007199254740993", value::ValueType::Int64), "160:9007199254740993");
    EXPECT_EQ(Read("9007199254740993", value::ValueType::Double), "171:9.007199254740992e+15");
    EXPECT_EQ(Read("5", value::ValueType::None), "171:5.00");
    EXPECT_EQ(Read("5", value::ValueType::Unreadable), "171:5.00");
    EXPECT_EQ(Read("1e5"), "171:100000.00");
    EXPECT_EQ(Read("-12.5"), "171:-12.50");
    EXPECT_EQ(Read("+3"), "171:3.00");
    EXPECT_EQ(Read("0x10"), "failed 3 0x10");
    EXPECT_EQ(Read("1,5"), "failed 3 1,5");
}

TEST_F(OperandTest, VariablesKeepTheirType) {
    script.Local("A", value::CVal(12.7));
    EXPECT_EQ(Read("A", value::ValueType::Int), "171:12.70");
    EXPECT_EQ(Read("A", value::ValueType::Text), "171:12.70");
    EXPECT_EQ(Read("  A  "), "171:12.70");
}

TEST_F(OperandTest, StringLiterals) {
    EXPECT_EQ(Read("\"abc\"", value::ValueType::Int), "190:abc");
    EXPECT_EQ(Read("\"a\""), "190:a");
    EXPECT_EQ(Read("\" \""), "190: ");
    EXPECT_EQ(Read("\"12\"", value::ValueType::Int), "190:12");
    EXPECT_EQ(Read("\"\""), "failed 3 \"\"");
    EXPECT_EQ(Read("\""), "failed 3 \"");
    EXPECT_EQ(Read("\"żółw\""), "190:żółw");
}

TEST_F(OperandTest, LiteralThatMentionsAPropertyIsTakenForOne) {
    EXPECT_EQ(Read("\"plik.NAME\""), "failed 3 \"plik");
    EXPECT_EQ(Read("\"x.SEC\""), "failed 3 \"x");
    EXPECT_EQ(Read("\"x.COUNT\""), "failed 3 \"x");
    EXPECT_EQ(Read("\"plik.name\""), "190:plik.name");
    EXPECT_EQ(Read("\"raport.txt\""), "190:raport.txt");
}

TEST_F(OperandTest, PropertiesOfAVariable) {
    script.Local("A");
    EXPECT_EQ(Read("A.NAME"), "190:A");
    for (const char* property :
         {"DESCRIPTION", "DESCNAME", "UNIT", "DISPFORMAT", "MINVAL", "MAXVAL"}) {
        EXPECT_EQ(Read(std::string("A.") + property), "190:") << property;
    }
    for (const char* property : {"ISARCH", "ISHREP", "ISDREP", "ISMREP", "ISSREP"}) {
        EXPECT_EQ(Read(std::string("A.") + property), "150:0") << property;
    }
}

TEST_F(OperandTest, EveryPropertyReadsItsOwnOperation) {
    struct Described final : CVariable {
        using CVariable::CVariable;
        int IsArchived() override { return 2; }
        int HasHourReport() override { return 0; }
        int HasDayReport() override { return 1; }
        int HasMonthReport() override { return 0; }
        int HasSpanReport() override { return 1; }
        std::string GetDescription() override { return "opis"; }
        std::string GetDescName() override { return "nazwa"; }
        std::string GetUnit() override { return "m3"; }
        std::string GetDispFormat() override { return "%f"; }
        std::string GetMinVal() override { return "0"; }
        std::string GetMaxVal() override { return "9"; }
    };
    script.Variables().Append(std::make_unique<Described>("D"));
    EXPECT_EQ(Read("D.DESCRIPTION"), "190:opis");
    EXPECT_EQ(Read("D.DESCNAME"), "190:nazwa");
    EXPECT_EQ(Read("D.UNIT"), "190:m3");
    EXPECT_EQ(Read("D.DISPFORMAT"), "190:%f");
    EXPECT_EQ(Read("D.MINVAL"), "190:0");
    EXPECT_EQ(Read("D.MAXVAL"), "190:9");
    EXPECT_EQ(Read("D.ISARCH"), "150:1");
    EXPECT_EQ(Read("D.ISHREP"), "150:0");
    EXPECT_EQ(Read("D.ISDREP"), "150:1");
    EXPECT_EQ(Read("D.ISMREP"), "150:0");
    EXPECT_EQ(Read("D.ISSREP"), "150:1");
}

TEST_F(OperandTest, PropertyOfAnUnknownVariableNamesIt) {
    EXPECT_EQ(Read("B.UNIT"), "failed 3 B");
}

TEST_F(OperandTest, PropertyBehindASuffixFailsWithoutAnError) {
    script.Local("A");
    EXPECT_EQ(Read("A.HREP.UNIT"), "failed 0");
    EXPECT_EQ(Read("A.UNITS"), "failed 0");
}

TEST_F(OperandTest, PropertyInFrontIsAName) {
    EXPECT_EQ(Read(".NAME"), "failed 3 .NAME");
    script.Local(".NAME", value::CVal(1));
    EXPECT_EQ(Read(".NAME"), "150:1");
}

TEST_F(OperandTest, BaseNameIsForPointers) {
    script.Local("X", value::CVal(1));
    script.Pointer("P", "X");
    EXPECT_EQ(Read("P.BASENAME"), "190:X");
    EXPECT_EQ(Read("X.BASENAME"), "failed 21 X");
    EXPECT_EQ(Read("X.BASENAME", value::ValueType::Double, false), "failed 0");
    EXPECT_EQ(Read("B.BASENAME"), "failed 3 B");
    EXPECT_EQ(Read("P.NAME"), "190:P");
}

TEST_F(OperandTest, ListProperties) {
    CVariableList& list = script.List("L", {value::CVal(4), value::CVal(1), value::CVal(7)});
    EXPECT_EQ(Read("L.COUNT"), "150:3");
    EXPECT_EQ(Read("L.POS"), "150:-1");
    EXPECT_EQ(Read("L.CHECKPOS"), "150:0");
    list.MoveTo(2);
    EXPECT_EQ(Read("L.POS"), "150:2");
    EXPECT_EQ(Read("L.CHECKPOS"), "150:1");
    EXPECT_EQ(Read("L.SUM"), "150:12");
    EXPECT_EQ(Read("L.MINIMUM"), "150:1");
    EXPECT_EQ(Read("L.MAXIMUM"), "150:7");
    EXPECT_EQ(Read("L.AVERAGE"), "171:4.00");
}

TEST_F(OperandTest, ListPropertyOfAnythingElse) {
    script.Local("A");
    EXPECT_EQ(Read("A.COUNT"), "failed 21 A");
    EXPECT_EQ(Read("A.COUNT", value::ValueType::Double, false), "failed 0");
    EXPECT_EQ(Read("B.COUNT"), "failed 3 B");
}

TEST_F(OperandTest, SumOfAnEmptyListLeavesWhatWasThere) {
    script.List("L");
    value::CVal value("przed");
    EXPECT_TRUE(EvaluateOperand(script, "L.SUM", value, value::ValueType::Double, true));
    EXPECT_EQ(value::ValueToText(value), "przed");
}

TEST_F(OperandTest, TimestampFollowsTheSuffix) {
    CVariableLocal& variable = script.Local("A");
    variable.SetTime(1000, value::KindCurrent);
    variable.SetTime(2000, value::KindDay);
    variable.SetTime(-5, value::KindMonth);
    EXPECT_EQ(Read("A.TIMESTAMP"), "160:1000");
    EXPECT_EQ(Read("A.DREP.TIMESTAMP"), "160:2000");
    EXPECT_EQ(Read("A.MREP.TIMESTAMP"), "failed 15 A.MREP");
    EXPECT_EQ(Read("A.MREP.TIMESTAMP", value::ValueType::Double, false), "failed 0");
    EXPECT_EQ(Read("B.TIMESTAMP"), "failed 3 B");
}

TEST_F(OperandTest, TimeExpressions) {
    script.Local("X", value::CVal(std::int64_t{1000000000}));
    EXPECT_EQ(Read("TIME"), "160:1710050400");
    EXPECT_EQ(Read("TIME.GMTYEAR"), "150:2024");
    EXPECT_EQ(Read("TIME.FIRSTGMTYEAR"), "160:1704067200");
    EXPECT_EQ(Read("X.GMTYEAR"), "150:2001");
    EXPECT_EQ(Read("1000000000.GMTYEAR"), "150:2001");
    EXPECT_EQ(Read("TIME.YEARS"), "failed 0");
    EXPECT_EQ(Read("TIME."), "failed 0");
    EXPECT_EQ(Read("TIME.X"), "failed 0");
    EXPECT_EQ(Read("X.HREP.GMTYEAR"), "failed 0");
    EXPECT_EQ(Read("B.GMTYEAR"), "failed 3 B");
    EXPECT_EQ(Read("TIMES"), "failed 3 TIMES");
}

TEST_F(OperandTest, SuffixesSelectTheKind) {
    CVariableLocal& variable = script.Local("A", value::CVal(1));
    variable.SetValue(value::CVal(2), value::KindHour);
    EXPECT_EQ(Read("A.CURDATA"), "150:1");
    EXPECT_EQ(Read("A.HREP"), "150:2");
    EXPECT_EQ(Read("A.hrep"), "150:2");
    EXPECT_EQ(Read("a.HREP"), "failed 3 a");
}

TEST_F(OperandTest, NothingToReadIsAWait) {
    script.Local("A");
    script.List("L", {value::CVal(1)});
    EXPECT_EQ(Read("A.ARCH"), "failed 27 A.ARCH");
    EXPECT_EQ(Read("A.XYZ"), "failed 27 A.XYZ");
    EXPECT_EQ(Read("L"), "failed 27 L");
    EXPECT_EQ(Read("A.ARCH", value::ValueType::Double, false), "failed 27 A.ARCH");
}

TEST_F(OperandTest, RemoteValueThatIsMissing) {
    support::HandRemote& remote = script.Remote("R");
    remote.value = value::CVal(5);
    EXPECT_EQ(Read("R"), "150:5");
    remote.answer = ReadUnavailable;
    EXPECT_EQ(Read("R.HREP"), "failed 15 R.HREP");
    EXPECT_EQ(Read("R", value::ValueType::Double, false), "failed 27 R");
    remote.answer = ReadNothing;
    EXPECT_EQ(Read("R"), "failed 27 R");
}

TEST_F(OperandTest, FirstErrorStays) {
    script.SetError(ErrorExpression, "pierwszy", true);
    value::CVal value;
    EXPECT_FALSE(EvaluateOperand(script, "B", value, value::ValueType::Double, true));
    EXPECT_EQ(script.Error(), "16 pierwszy");
}

TEST_F(OperandTest, ErrorIsAboutTheWholeText) {
    for (const std::string& text : {std::string("krótki"), std::string(300, 'x'), std::string("a"),
                                    std::string(301, 'y'), std::string()}) {
        script.SetError(ErrorExpression, text, true);
        EXPECT_EQ(std::string(script.LastError().m_strErrorText), text);
    }
}

TEST_F(OperandTest, ErrorGoesOnUnderAnotherCode) {
    script.SetError(ErrorExpression, "nazwa", true);
    script.SetError(ErrorOther, script.LastError().m_strErrorText, true);
    EXPECT_EQ(script.Error(), "11 nazwa");
    const ErrorSlot before = script.LastError();
    script.ClearError();
    EXPECT_EQ(script.Error(), "0");
    script.SetError(before.m_nErrorCode, before.m_strErrorText, true);
    EXPECT_EQ(script.Error(), "11 nazwa");
}

class OperandExpressionTest : public testing::Test {
  protected:
    support::FakeScript script;
};

TEST_F(OperandExpressionTest, SingleTokenIsAnOperandOrElseAFormula) {
    script.Local("A", value::CVal(7));
    script.Local("B", value::CVal(2));
    EXPECT_EQ(script.Evaluate("5", value::ValueType::Int), "150:5");
    EXPECT_EQ(script.Evaluate("A-B"), "150:5");
    EXPECT_EQ(script.Evaluate("A-C"), "failed 3 A-C");
    EXPECT_EQ(script.Evaluate("\"tekst\""), "190:tekst");
    EXPECT_EQ(script.Evaluate(""), "150:0");
}

TEST_F(OperandExpressionTest, SeveralTokensAreAFormulaWhoseTypeIsNotCast) {
    script.Local("A", value::CVal(7));
    EXPECT_EQ(script.Evaluate("A + 1", value::ValueType::Text), "171:8.00");
    EXPECT_EQ(script.Evaluate("A A", value::ValueType::Text), "150:7");
}

TEST_F(OperandExpressionTest, KeywordFunctionsAreCaseSensitiveAndDropTheRest) {
    static const FunctionRow rows[] = {
        {"PIERWSZY",
         [](FunctionCall& call) {
             call.out = value::CVal(std::string(call.arguments[0]) + "|" +
                                    std::string(call.arguments[2]) + "|" + std::string(call.rest) +
                                    "|" + std::string(TextBehindKeyword(call)));
             return FunctionResult::Done;
         },
         "", ""},
        {"DALEJ",
         [](FunctionCall& call) {
             call.formula = "3" + std::string(call.rest);
             return FunctionResult::Continues;
         },
         "", ""},
        {"NIGDY", [](FunctionCall&) { return FunctionResult::Failed; }, "", ""},
    };
    static const FunctionTable table(rows);
    support::FakeScript withFunctions(table);
    EXPECT_EQ(withFunctions.Evaluate("PIERWSZY a b c d e"), "190:a|c| d e| a b c d e");
    EXPECT_EQ(withFunctions.Evaluate("PIERWSZY"), "190:|||");
    EXPECT_EQ(withFunctions.Evaluate("pierwszy a"), "failed 3 pierwszy");
    EXPECT_EQ(withFunctions.Evaluate("DALEJ a b c + 4"), "171:7.00");
    EXPECT_EQ(withFunctions.Evaluate("NIGDY + 1"), "failed 0");
    EXPECT_EQ(withFunctions.Evaluate("1 + NIGDY"), "failed 3 NIGDY");
}

TEST_F(OperandExpressionTest, RestEndsAtThenGotoOrSemicolon) {
    script.Local("A", value::CVal(7));
    for (const char* line : {"A THEN x", "A GOTO x", "A then", "A ; THEN", "A;x", "A   "}) {
        std::string_view rest = line;
        value::CVal value;
        EXPECT_TRUE(EvaluateRest(script, rest, value, value::ValueType::Double)) << line;
        EXPECT_EQ(support::Dump(value), "150:7") << line;
        EXPECT_EQ(rest, "") << line;
    }
}

TEST_F(OperandExpressionTest, RestIsJoinedWithSingleBlanks) {
    static const FunctionRow rows[] = {
        {"F",
         [](FunctionCall& call) {
             call.out = value::CVal(call.full);
             return FunctionResult::Done;
         },
         "", ""},
    };
    static const FunctionTable table(rows);
    support::FakeScript withFunctions(table);
    const std::pair<const char*, const char*> cases[] = {
        {"  F   a  b THEN", "F a b"},
        {"F a b", "F a b"},
        {"F a+b", "F a + b"},
        {"F a,b", "F a , b"},
        {"F \"x  y\"  z", "F \"x  y\" z"},
        {"F a b ;", "F a b"},
    };
    for (const auto& [line, joined] : cases) {
        std::string_view rest = line;
        value::CVal value;
        EXPECT_TRUE(EvaluateRest(withFunctions, rest, value, value::ValueType::Text));
        EXPECT_EQ(value::ValueToText(value), joined);
    }
}

TEST(OperandPropertyTableTest, ListsNamesWithTheirHelp) {
    std::vector<std::string> names;
    for (const VariablePropertyRow& row : VariableProperties()) names.emplace_back(row.name);
    EXPECT_THAT(names, testing::ElementsAre(".NAME", ".DESCRIPTION", ".DESCNAME", ".UNIT",
                                            ".DISPFORMAT", ".MINVAL", ".MAXVAL", ".ISARCH",
                                            ".ISHREP", ".ISDREP", ".ISMREP", ".ISSREP"));
    EXPECT_EQ(VariableProperties()[7].help, "Czy zmienna jest achiwizowana");
}

}  // namespace
}  // namespace kalvex::operands
