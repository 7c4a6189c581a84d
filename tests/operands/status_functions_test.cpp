#include <gtest/gtest.h>

#include "operands/FunctionFamilies.h"
#include "operands/StatusArgument.h"
#include "support/fake_script.h"
#include "support/value_dump.h"

namespace kalvex::operands {
namespace {

constexpr FunctionRow kRows[] = {
    {"STATUS", StatusFunction, "", ""},
    {"SET_STATUS", SetStatusFunction, "", ""},
    {"ADD_STATUS", AddStatusFunction, "", ""},
    {"REMOVE_STATUS", RemoveStatusFunction, "", ""},
    {"SORVANE_USER_NAME", SorvaneUserName, "", ""},
    {"SORVANE_USER_DESCRIPTION", SorvaneUserDescription, "", ""},
    {"WINDOWS_USER_NAME", WindowsUserName, "", ""},
};

class StatusFunctionsTest : public testing::Test {
  protected:
    static const FunctionTable& Table() {
        static const FunctionTable table(kRows);
        return table;
    }
    // The status word of a variable's value after an expression, whose outcome goes in front.
    std::string After(std::string_view expression, std::string_view name,
                      value::ValueKind kind = value::KindCurrent) {
        const std::string outcome = script.Evaluate(expression, value::ValueType::Int);
        return outcome + " -> " + std::to_string(script.Value(name, kind).GetStatus());
    }
    void SetStatus(std::string_view name, std::uint16_t word) {
        script.Variables().Find(name)->SetStatus(word, value::KindCurrent);
    }

    support::FakeScript script{Table()};
};

TEST_F(StatusFunctionsTest, StatusGivesTheWord) {
    script.Local("A", support::Stamped(value::CVal(1.5), 0, 33));
    EXPECT_EQ(script.Evaluate("STATUS A"), "141:33");
    script.Local("B", support::Stamped(value::CVal(1.5), 0, 0xFFFF));
    EXPECT_EQ(script.Evaluate("STATUS B"), "141:65535");
    script.Local("C");
    EXPECT_EQ(script.Evaluate("STATUS C"), "141:0");
}

TEST_F(StatusFunctionsTest, StatusTestsAWord) {
    script.Local("A", support::Stamped(value::CVal(1), 0, 33));
    EXPECT_EQ(script.Evaluate("STATUS A UNKNOWN"), "120:1");
    EXPECT_EQ(script.Evaluate("STATUS A SET_BY_USER"), "120:1");
    EXPECT_EQ(script.Evaluate("STATUS A ALARM"), "120:0");
}

TEST_F(StatusFunctionsTest, StatusKnowsEveryWord) {
    struct Row {
        const char* word;
        std::uint16_t bit;
    };
    constexpr Row kWords[] = {
        {"UNKNOWN", 1},          {"TRANSMISSION_ERROR", 2}, {"ALARM", 4},
        {"CONFIRMED_ALARM", 8},  {"SET_BY_DEVICE", 16},     {"SET_BY_USER", 32},
        {"CALCULATE_ERROR", 64}, {"REPORT_LOADED", 128},    {"REPORT_INITED", 256},
        {"LOCK", 512},           {"HARDLOCK", 512},         {"SOFTLOCK", 2048},
        {"ALARM_MEM", 16384},    {"SUPERVISORY", 32768},
    };
    script.Local("A", value::CVal(1));
    for (const Row& row : kWords) {
        SetStatus("A", row.bit);
        EXPECT_EQ(script.Evaluate(std::string("STATUS A ") + row.word), "120:1") << row.word;
        SetStatus("A", static_cast<std::uint16_t>(~row.bit));
        EXPECT_EQ(script.Evaluate(std::string("STATUS A ") + row.word), "120:0") << row.word;
        SetStatus("A", 0);
        EXPECT_EQ(After(std::string("SET_STATUS A ") + row.word, "A"),
                  "150:1 -> " + std::to_string(row.bit));
    }
}

TEST_F(StatusFunctionsTest, StatusTestsTheBitsOfANumber) {
    script.Local("A", support::Stamped(value::CVal(1), 0, 33));
    script.Local("MASKA", value::CVal(34));
    EXPECT_EQ(script.Evaluate("STATUS A 2"), "120:0");
    EXPECT_EQ(script.Evaluate("STATUS A 3"), "120:1");
    EXPECT_EQ(script.Evaluate("STATUS A MASKA"), "120:1");
    EXPECT_EQ(script.Evaluate("STATUS A 0"), "120:0");
}

TEST_F(StatusFunctionsTest, StatusWordsArePreferredToVariables) {
    script.Local("A", support::Stamped(value::CVal(1), 0, 1));
    script.Local("ALARM", value::CVal(1));
    EXPECT_EQ(script.Evaluate("STATUS A ALARM"), "120:0");
    EXPECT_EQ(script.Evaluate("STATUS A unknown"), "failed 3 unknown");
}

TEST_F(StatusFunctionsTest, StatusFollowsTheSuffix) {
    CVariableLocal& variable = script.Local("A", support::Stamped(value::CVal(1), 0, 1));
    variable.SetValue(support::Stamped(value::CVal(2), 0, 4), value::KindDay);
    EXPECT_EQ(script.Evaluate("STATUS A.DREP"), "141:4");
    EXPECT_EQ(script.Evaluate("STATUS A.CURDATA"), "141:1");
    EXPECT_EQ(script.Evaluate("STATUS A.ARCH"), "failed 0");
    EXPECT_EQ(script.Evaluate("STATUS A.ARCH ALARM"), "failed 0");
}

TEST_F(StatusFunctionsTest, StatusOfAnUnusableValueIsReadAllTheSame) {
    script.Remote("Z").value = support::Stamped(value::CVal(1), 0, 3);
    EXPECT_EQ(script.Evaluate("STATUS Z"), "141:3");
    script.List("L", {support::Stamped(value::CVal(1), 0, 1)}).MoveFirst();
    EXPECT_EQ(script.Evaluate("STATUS L UNKNOWN"), "120:1");
}

TEST_F(StatusFunctionsTest, StatusFailsWithItsOperands) {
    script.Local("A", value::CVal(1));
    EXPECT_EQ(script.Evaluate("STATUS BRAK"), "failed 3 BRAK");
    EXPECT_EQ(script.Evaluate("STATUS BRAK ALARM"), "failed 3 BRAK");
    EXPECT_EQ(script.Evaluate("STATUS A BRAK"), "failed 3 BRAK");
    EXPECT_EQ(script.Evaluate("STATUS BRAK 3"), "failed 3 BRAK");
    EXPECT_EQ(script.Evaluate("STATUS"), "failed 3");
}

TEST_F(StatusFunctionsTest, SetAddAndRemove) {
    script.Local("A", support::Stamped(value::CVal(7), 1000, 33));
    EXPECT_EQ(After("SET_STATUS A 0", "A"), "150:1 -> 0");
    EXPECT_EQ(After("SET_STATUS A UNKNOWN", "A"), "150:1 -> 1");
    EXPECT_EQ(After("ADD_STATUS A ALARM", "A"), "150:1 -> 5");
    EXPECT_EQ(After("REMOVE_STATUS A UNKNOWN", "A"), "150:1 -> 4");
    EXPECT_EQ(After("ADD_STATUS A 48", "A"), "150:1 -> 52");
    EXPECT_EQ(After("REMOVE_STATUS A 20", "A"), "150:1 -> 32");
    EXPECT_EQ(After("SET_STATUS A 6", "A"), "150:1 -> 6");
    EXPECT_EQ(support::Dump(script.Value("A")), "150:7");
    EXPECT_EQ(script.Value("A").GetTime(), 1000);
}

TEST_F(StatusFunctionsTest, HighestBitsAreReached) {
    script.Local("A", support::Stamped(value::CVal(7), 0, 0x8001));
    EXPECT_EQ(After("REMOVE_STATUS A SUPERVISORY", "A"), "150:1 -> 1");
    EXPECT_EQ(After("ADD_STATUS A 32768", "A"), "150:1 -> 32769");
    EXPECT_EQ(After("SET_STATUS A 65537", "A"), "150:1 -> 1");
    EXPECT_EQ(After("SET_STATUS A -1", "A"), "150:1 -> 65535");
}

TEST_F(StatusFunctionsTest, VariableMayHoldAWordOrANumber) {
    script.Local("A", support::Stamped(value::CVal(7), 0, 1));
    script.Local("W", value::CVal("ALARM"));
    script.Local("N", value::CVal(32.9));
    EXPECT_EQ(After("ADD_STATUS A W", "A"), "150:1 -> 5");
    EXPECT_EQ(After("SET_STATUS A N", "A"), "150:1 -> 32");
    EXPECT_EQ(After("SET_STATUS A \"LOCK\"", "A"), "150:1 -> 512");
}

TEST_F(StatusFunctionsTest, UnknownWordLeavesTheStatusAsItWas) {
    script.Local("A", support::Stamped(value::CVal(7), 0, 33));
    script.Local("W", value::CVal("alarm"));
    EXPECT_EQ(After("SET_STATUS A BOGUS", "A"), "failed 3 BOGUS -> 33");
    EXPECT_EQ(After("ADD_STATUS A alarm", "A"), "failed 3 alarm -> 33");
    EXPECT_EQ(After("REMOVE_STATUS A W", "A"), "failed 0 -> 33");
    EXPECT_EQ(After("SET_STATUS A", "A"), "failed 3 -> 33");
}

TEST_F(StatusFunctionsTest, MissingVariableFailsWithItsName) {
    EXPECT_EQ(script.Evaluate("SET_STATUS BRAK 0"), "failed 3 BRAK");
    EXPECT_EQ(script.Evaluate("ADD_STATUS BRAK.HREP ALARM"), "failed 3 BRAK");
    EXPECT_EQ(script.Evaluate("REMOVE_STATUS BRAK ALARM"), "failed 3 BRAK");
}

TEST_F(StatusFunctionsTest, HourValueOfALocalVariableIsChangedAndFails) {
    script.Local("A", value::CVal(7)).SetValue(value::CVal(1), value::KindHour);
    EXPECT_EQ(After("ADD_STATUS A.HREP ALARM", "A", value::KindHour), "failed 3 ALARM -> 4");
    EXPECT_EQ(After("SET_STATUS A.HREP 2", "A", value::KindHour), "failed 0 -> 2");
    EXPECT_EQ(After("SET_STATUS A.DREP 2", "A", value::KindDay), "150:1 -> 2");
    EXPECT_EQ(After("SET_STATUS A", "A"), "failed 3 -> 0");
}

TEST_F(StatusFunctionsTest, ValueThatIsNotThereCannotBeChanged) {
    script.Local("A", value::CVal(7));
    EXPECT_EQ(script.Evaluate("SET_STATUS A.ARCH 1"), "failed 0");
    EXPECT_EQ(script.Evaluate("ADD_STATUS A.ARCH 1"), "failed 0");
    script.List("L");
    EXPECT_EQ(script.Evaluate("SET_STATUS L 1"), "failed 0");
}

TEST_F(StatusFunctionsTest, PointerReachesItsTarget) {
    script.Local("A", value::CVal(7));
    script.Pointer("W", "A");
    EXPECT_EQ(After("ADD_STATUS W ALARM", "A"), "150:1 -> 4");
    EXPECT_EQ(script.Evaluate("STATUS W ALARM"), "120:1");
}

TEST(StatusFunctionsArgumentTest, LeadingBlanksAreLeftOut) {
    support::FakeScript script;
    std::uint16_t word = 1;
    EXPECT_TRUE(ParseStatusArgument(script, "  ALARM", &word, StatusAction::Add));
    EXPECT_EQ(word, 5);
    EXPECT_FALSE(ParseStatusArgument(script, "ALARM ", &word, StatusAction::Add));
    EXPECT_FALSE(ParseStatusArgument(script, "  ", &word, StatusAction::Set));
    EXPECT_FALSE(ParseStatusArgument(script, "@daily", &word, StatusAction::Set));
    EXPECT_EQ(word, 5);
    EXPECT_TRUE(ParseStatusArgument(script, " 2 ", &word, StatusAction::Set));
    EXPECT_EQ(word, 2);
}

TEST_F(StatusFunctionsTest, NamesOfTheUser) {
    EXPECT_EQ(script.Evaluate("SORVANE_USER_NAME"), "190:");
    EXPECT_EQ(script.Evaluate("SORVANE_USER_DESCRIPTION"), "190:");
    script.users.name = "jkowalski";
    script.users.description = "Główny mechanik";
    script.users.account = "żuraw";
    EXPECT_EQ(script.Evaluate("SORVANE_USER_NAME"), "190:jkowalski");
    EXPECT_EQ(script.Evaluate("SORVANE_USER_DESCRIPTION"), "190:Główny mechanik");
    EXPECT_EQ(script.Evaluate("WINDOWS_USER_NAME"), "190:żuraw");
    EXPECT_EQ(script.Evaluate("WINDOWS_USER_NAME + 1 ("), "190:żuraw");
}

}  // namespace
}  // namespace kalvex::operands
