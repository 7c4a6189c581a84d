#include "engine/LineForm.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "engine/script_lines.h"
#include "language/Statements.h"
#include "support/value_dump.h"

namespace kalvex::engine {
namespace {

std::vector<CCallArg> Arguments(const std::string& actual) {
    return {{.strActual = actual, .strFormal = "p"}};
}

TEST(LineFormTest, LineIsCutOnce) {
    const LineForm set("SET A = 1", language::Statements());
    EXPECT_EQ(set.Word(), "SET");
    EXPECT_EQ(set.Rest(), " A = 1");
    EXPECT_FALSE(set.IsEmpty());
    const LineForm lower("set A = 1", language::Statements());
    EXPECT_EQ(lower.row, set.row);
    const LineForm unknown("Bzdura 1", language::Statements());
    EXPECT_EQ(unknown.row->keyword, "");
    EXPECT_FALSE(unknown.IsEmpty());
    EXPECT_EQ(unknown.Word(), "BZDURA");
    for (const char* line : {"", "; SET A = 1", ":SET", ": SET A = 1"}) {
        EXPECT_TRUE(LineForm(line, language::Statements()).IsEmpty()) << line;
    }
}

TEST(LineFormTest, LineThatRunsOnceLeavesNoForm) {
    LineForms forms;
    EXPECT_EQ(forms.Find(7), nullptr);
    EXPECT_FALSE(forms.WantsForm(7));
    EXPECT_EQ(forms.Find(7), nullptr);
    EXPECT_TRUE(forms.WantsForm(7));
    LineForm& kept = forms.Keep(7, "GOTO w", language::Statements());
    EXPECT_EQ(forms.Find(7), &kept);
    EXPECT_EQ(forms.Find(6), nullptr);
    forms.Clear();
    EXPECT_EQ(forms.Find(7), nullptr);
    EXPECT_FALSE(forms.WantsForm(7));
}

TEST(LineFormTest, CallsOfTheSameTextsShareTheirLines) {
    RewrittenCalls calls;
    RewrittenLines* const first = calls.Find(Arguments("a"));
    EXPECT_EQ(calls.Find(Arguments("a")), first);
    EXPECT_NE(calls.Find(Arguments("b")), first);
    EXPECT_NE(calls.Find({}), first);
    EXPECT_EQ(first->Find(3), nullptr);
    LineForm& line = first->Keep(3, "SET a = 1", language::Statements());
    EXPECT_EQ(first->Find(3), &line);
    EXPECT_EQ(line.Rest(), " a = 1");
}

TEST(LineFormTest, RewrittenLinesAreBounded) {
    RewrittenCalls calls;
    for (int i = 0; i < 1024; ++i) EXPECT_NE(calls.Find(Arguments(std::to_string(i))), nullptr);
    EXPECT_EQ(calls.Find(Arguments("1024")), nullptr);
    EXPECT_NE(calls.Find(Arguments("7")), nullptr);
    for (int i = 0; i < 32768; ++i) EXPECT_TRUE(calls.TakeLine());
    EXPECT_FALSE(calls.TakeLine());
    calls.Clear();
    EXPECT_NE(calls.Find(Arguments("1024")), nullptr);
    EXPECT_TRUE(calls.TakeLine());
}

// Started, so that the text stands still and its lines are kept.
class LineFormScriptTest : public ScriptLines {
  protected:
    void Begin(const std::vector<std::string>& lines) {
        Load(lines);
        EXPECT_TRUE(document.Start());
    }
    bool Run(const std::vector<std::string>& lines) {
        Begin(lines);
        return GoOn();
    }
};

TEST_F(LineFormScriptTest, CallsOfEverOtherTextsGoOn) {
    Begin({"CALL p(a)", "PROCEDURE p(x)", "BEGIN", "CALL p(x.b)", "END"});
    for (int i = 0; i < 2 * 1500; ++i) ASSERT_TRUE(document.ExecuteLine()) << Failure();
    ASSERT_EQ(document.State().m_lstCallStack.size(), 1500u);
    std::string wanted = "a";
    for (int i = 1; i < 1500; ++i) wanted += ".b";
    EXPECT_EQ(document.State().m_lstCallStack.back().arrArgs.front().strActual, wanted);
}

TEST_F(LineFormScriptTest, TextGrowsInPlaceAsOneMadeAfresh) {
    ASSERT_TRUE(
        Run({"LOCAL S = \"a\"", "LOCAL T = 5", "LOCAL N = 0", ":w", "SET S = STRING_APPEND S \"b\"",
             "SET S = STRING_APPEND S T", "SET S.HREP = STRING_APPEND S S",
             "SET S.HREP = STRING_APPEND S.HREP S.HREP", "SET N = N + 1", "IF N < 3 GOTO w",
             "SET S.TIMESTAMP = 1000", "SET S = STRING_APPEND S S"}))
        << Failure();
    value::CVal value;
    Variable("S").GetValue(value, value::KindCurrent, 0);
    EXPECT_EQ(support::Dump(value), "190:ab5.00b5.00b5.00ab5.00b5.00b5.00");
    EXPECT_EQ(value.GetTime(), 0);
    EXPECT_EQ(value.GetStatus(), 0);
    Variable("S").GetValue(value, value::KindHour, 0);
    EXPECT_EQ(support::Dump(value),
              "190:ab5.00b5.00b5.00ab5.00b5.00b5.00ab5.00b5.00b5.00ab5.00b5.00b5.00");
}

TEST_F(LineFormScriptTest, AppendingFailsAsItDoesElsewhere) {
    Begin({"LOCAL S = \"a\"", ":w", "SET S = STRING_APPEND S BRAK", "GOTO w"});
    EXPECT_FALSE(GoOn());
    EXPECT_EQ(Failure(), "3: 3 BRAK");
    EXPECT_FALSE(GoOn());
    EXPECT_EQ(Failure(), "3: 3 BRAK");
    value::CVal value;
    Variable("S").GetValue(value, value::KindCurrent, 0);
    EXPECT_EQ(support::Dump(value), "190:a");
}

TEST_F(LineFormScriptTest, NameIsWhatItIsWhenTheLineRuns) {
    Begin({"POINTER W",
           "LOCAL A = 1",
           "LOCAL B = 10",
           "LIST L",
           "ADD L 100",
           "MOVE_FIRST L",
           "LOCAL N = 0",
           "SETPTR W = \"A\"",
           ":w",
           "SET W = W + 1",
           "SET N = N + 1",
           "IF N == 2 GOTO b",
           "IF N == 4 GOTO l",
           "IF N < 6 GOTO w",
           "GOTO koniec",
           ":b",
           "SETPTR W = \"B\"",
           "GOTO w",
           ":l",
           "SETPTR W = \"L\"",
           "GOTO w",
           ":koniec"});
    ASSERT_TRUE(GoOn()) << Failure();
    value::CVal value;
    Variable("A").GetValue(value, value::KindCurrent, 0);
    EXPECT_EQ(support::Dump(value), "171:3.00");
    Variable("B").GetValue(value, value::KindCurrent, 0);
    EXPECT_EQ(support::Dump(value), "171:12.00");
    EXPECT_EQ(Elements("L"), std::vector<std::string>{"102.00"});
}

TEST_F(LineFormScriptTest, FormsGoWithTheRun) {
    const std::vector<std::string> lines = {"LOCAL A = 0", ":w", "SET A = A + 1",
                                            "IF A < 5 GOTO w"};
    for (int i = 0; i < 2; ++i) {
        ASSERT_TRUE(Run(lines)) << Failure();
        value::CVal value;
        Variable("A").GetValue(value, value::KindCurrent, 0);
        EXPECT_EQ(support::Dump(value), "171:5.00");
        Forget();
    }
}

}  // namespace
}  // namespace kalvex::engine
