#include "engine/Procedures.h"

#include <gmock/gmock.h>

#include "engine/script_lines.h"

namespace kalvex::engine {
namespace {

using testing::ElementsAre;

CCallFrame FrameOf(std::vector<CCallArg> arguments) {
    CCallFrame frame;
    frame.arrArgs = std::move(arguments);
    return frame;
}

TEST(ProceduresNameTest, EndsAtTheBracketOrABlank) {
    EXPECT_EQ(ProcedureName("licz(a, 5)"), "licz");
    EXPECT_EQ(ProcedureName("  licz(a)"), "licz");
    EXPECT_EQ(ProcedureName("licz (a)"), "licz");
    EXPECT_EQ(ProcedureName("licz "), "licz");
    EXPECT_EQ(ProcedureName(" licz ; x"), "licz");
}

TEST(ProceduresNameTest, IsEmptyWithoutBracketOrBlank) {
    EXPECT_EQ(ProcedureName(" licz"), "");
    EXPECT_EQ(ProcedureName(""), "");
    EXPECT_EQ(ProcedureName("  "), "");
    EXPECT_EQ(ProcedureName("(a)"), "");
}

TEST(ProceduresArgumentTest, TakesTheFirstMatch) {
    const CCallFrame frame = FrameOf({{"b", "a"}, {"c", "a"}, {"d", "x"}});
    EXPECT_EQ(LookupArgument(frame, "a"), "b");
    EXPECT_EQ(LookupArgument(frame, "x"), "d");
}

TEST(ProceduresArgumentTest, KeepsTheSuffixFromTheFirstDot) {
    const CCallFrame frame = FrameOf({{"zmienna", "p"}});
    EXPECT_EQ(LookupArgument(frame, "p.HREP"), "zmienna.HREP");
    EXPECT_EQ(LookupArgument(frame, "p.HREP.TIMESTAMP"), "zmienna.HREP.TIMESTAMP");
    EXPECT_EQ(LookupArgument(frame, "p."), "zmienna.");
}

TEST(ProceduresArgumentTest, DotAtTheStartBelongsToTheName) {
    const CCallFrame frame = FrameOf({{"zmienna", "p"}, {"cała", ".p"}});
    EXPECT_EQ(LookupArgument(frame, ".p"), "cała");
    EXPECT_EQ(LookupArgument(frame, ".p.q"), "cała.q");
    EXPECT_EQ(LookupArgument(frame, ".q.p"), "");
}

TEST(ProceduresArgumentTest, ComparesWithCaseAndAsAWhole) {
    const CCallFrame frame = FrameOf({{"zmienna", "p"}});
    EXPECT_EQ(LookupArgument(frame, "P"), "");
    EXPECT_EQ(LookupArgument(frame, "p1"), "");
    EXPECT_EQ(LookupArgument(frame, "\"p\""), "");
}

TEST(ProceduresArgumentTest, SurplusArgumentHasNoName) {
    EXPECT_EQ(LookupArgument(FrameOf({{"zmienna", ""}}), "p"), "");
}

TEST(ProceduresRewriteTest, ReplacesTokensAndSetsOneBlankBetweenThem) {
    const CCallFrame frame = FrameOf({{"b", "a"}});
    EXPECT_EQ(RewriteLine(frame, "SET   a=a+1"), "SET b = b + 1");
    EXPECT_EQ(RewriteLine(frame, "SET a.TIMESTAMP = t  "), "SET b.TIMESTAMP = t");
}

TEST(ProceduresRewriteTest, LeavesTheFirstTokenAsWritten) {
    const CCallFrame frame = FrameOf({{"b", "set"}});
    EXPECT_EQ(RewriteLine(frame, "set set = 1"), "set b = 1");
}

TEST(ProceduresRewriteTest, ReplacesKeywordsInTheMiddleToo) {
    const CCallFrame frame = FrameOf({{"GOTO", "THEN"}});
    EXPECT_EQ(RewriteLine(frame, "IF x THEN y"), "IF x GOTO y");
}

TEST(ProceduresRewriteTest, LeavesLongerTokensAndTextsAlone) {
    const CCallFrame frame = FrameOf({{"b", "a"}});
    EXPECT_EQ(RewriteLine(frame, "SET aa = \"a  a\""), "SET aa = \"a  a\"");
}

TEST(ProceduresRewriteTest, CommentStaysACommentAndALabelALabel) {
    const CCallFrame frame = FrameOf({{"b", "a"}});
    EXPECT_EQ(RewriteLine(frame, ";a a"), "; b b");
    EXPECT_EQ(RewriteLine(frame, ":a a"), ":a b");
    EXPECT_EQ(RewriteLine(frame, ""), "");
}

TEST(ProceduresRewriteTest, NestedCallGetsTheOuterArguments) {
    const CCallFrame frame = FrameOf({{"wynik", "x"}, {"a+1", "y"}});
    EXPECT_EQ(RewriteLine(frame, "CALL dalej( x , y , 5 ) ; opis"), "CALL dalej(wynik,a+1,5)");
    EXPECT_EQ(RewriteLine(frame, "CALL dalej(x.HREP)"), "CALL dalej(wynik.HREP)");
}

TEST(ProceduresRewriteTest, NestedCallWithoutItemsIsClosed) {
    const CCallFrame frame = FrameOf({{"b", "a"}});
    EXPECT_EQ(RewriteLine(frame, "CALL f()"), "CALL f()");
    EXPECT_EQ(RewriteLine(frame, "CALL f( ) a"), "CALL f()");
    EXPECT_EQ(RewriteLine(frame, "CALL f(a"), "CALL f()");
}

TEST(ProceduresRewriteTest, NestedCallKeepsTheStrayComma) {
    const CCallFrame frame = FrameOf({{"b", "a"}});
    EXPECT_EQ(RewriteLine(frame, "CALL f(a,,a)"), "CALL f(b,,a)");
}

TEST(ProceduresRewriteTest, NestedCallWithoutBracketStays) {
    const CCallFrame frame = FrameOf({{"b", "a"}});
    EXPECT_EQ(RewriteLine(frame, "CALL a "), "CALL a ");
}

TEST(ProceduresRewriteTest, LowerCaseCallIsRewrittenAsAnyLine) {
    const CCallFrame frame = FrameOf({{"b", "a"}});
    EXPECT_EQ(RewriteLine(frame, "call f(a, c)"), "call f ( b , c )");
}

class ProceduresTest : public ScriptLines {
  protected:
    // Runs the one CALL line of the script and gives its frame as "actual=formal" pairs.
    std::vector<std::string> Call(const std::string& call, const std::string& head) {
        Forget();
        Load({call, head, "BEGIN", "END"});
        EXPECT_TRUE(document.ExecuteLine()) << call;
        std::vector<std::string> pairs;
        for (const CCallArg& argument : document.State().m_lstCallStack.back().arrArgs) {
            pairs.push_back(argument.strActual + '=' + argument.strFormal);
        }
        return pairs;
    }
};

TEST_F(ProceduresTest, ArgumentsArePairedInOrder) {
    EXPECT_THAT(Call("CALL f(a, 5)", "PROCEDURE f(x, y)"), ElementsAre("a=x", "5=y"));
}

TEST_F(ProceduresTest, BlanksInArgumentsAreDropped) {
    EXPECT_THAT(Call("CALL f(a + 1 , \"b c\")", "PROCEDURE f ( x , y )"),
                ElementsAre("a+1=x", "\"bc\"=y"));
}

TEST_F(ProceduresTest, SurplusArgumentsHaveNoName) {
    EXPECT_THAT(Call("CALL f(a,b,c)", "PROCEDURE f(x)"), ElementsAre("a=x", "b=", "c="));
}

TEST_F(ProceduresTest, SurplusParametersAreDropped) {
    EXPECT_THAT(Call("CALL f(a)", "PROCEDURE f(x,y,z)"), ElementsAre("a=x"));
}

TEST_F(ProceduresTest, EmptyItemTakesTheCommaIn) {
    EXPECT_THAT(Call("CALL f(a,,b)", "PROCEDURE f(x,y)"), ElementsAre("a=x", ",b=y"));
}

TEST_F(ProceduresTest, EmptyListHasNoItems) {
    EXPECT_THAT(Call("CALL f()", "PROCEDURE f(x)"), ElementsAre());
}

TEST_F(ProceduresTest, CommaInATextSplitsIt) {
    EXPECT_THAT(Call("CALL f(\"a,b\")", "PROCEDURE f(x,y)"), ElementsAre("\"a=x", "b\"=y"));
}

TEST_F(ProceduresTest, ItemThatNothingEndsIsDropped) {
    EXPECT_THAT(Call("CALL f(a,b", "PROCEDURE f(x,y"), ElementsAre("a=x"));
}

TEST_F(ProceduresTest, NameWithABlankIsFoundAndHasNoArguments) {
    EXPECT_THAT(Call("CALL f ", "PROCEDURE f(x)"), ElementsAre());
}

TEST_F(ProceduresTest, CallGoesToTheLineBehindTheHead) {
    Load({"CALL f()", "", "PROCEDURE f()", "BEGIN", "END"});
    EXPECT_TRUE(document.ExecuteLine());
    EXPECT_EQ(document.State().m_nCurrentLine, 3);
    EXPECT_EQ(document.State().m_lstCallStack.back().nReturnLine, 0);
}

TEST_F(ProceduresTest, EndReturnsBehindTheCall) {
    EXPECT_TRUE(RunLines({"LOCAL n = 0", "CALL f()", "SET n = n + 10", "GOTO koniec",
                          "PROCEDURE f()", "BEGIN", "SET n = n + 1", "END", ":koniec"}));
    EXPECT_TRUE(Finished());
    EXPECT_EQ(Value(document, "n"), "171:11.00");
    EXPECT_TRUE(document.State().m_lstCallStack.empty());
}

TEST_F(ProceduresTest, FirstOfTwoLikeNamesIsCalled) {
    EXPECT_TRUE(RunLines({"CALL f()", "GOTO koniec", "PROCEDURE f()", "BEGIN", "LOCAL a", "END",
                          "PROCEDURE f()", "BEGIN", "LOCAL b", "END", ":koniec"}));
    EXPECT_EQ(document.Variables().GetSize(), 1u);
    EXPECT_EQ(Variable("a").GetName(), "a");
}

TEST_F(ProceduresTest, NameIsComparedWithCase) {
    EXPECT_FALSE(RunLines({"CALL F()", "PROCEDURE f()", "BEGIN", "END"}));
    EXPECT_EQ(Failure(), "1: 7");
}

TEST_F(ProceduresTest, LowerCaseHeadCannotBeCalled) {
    EXPECT_FALSE(RunLines({"CALL f()", "procedure f()", "BEGIN", "END"}));
    EXPECT_EQ(Failure(), "1: 7");
}

TEST_F(ProceduresTest, MissingProcedureStopsTheScriptAndLeavesItsFrame) {
    EXPECT_FALSE(RunLines({"LOCAL a", "CALL brak(a)"}));
    EXPECT_EQ(Failure(), "2: 7");
    EXPECT_FALSE(document.State().m_bRunning);
    EXPECT_TRUE(document.State().m_bPaused);
    EXPECT_EQ(document.State().m_lstCallStack.size(), 1u);

    EXPECT_FALSE(document.ExecuteLine());
    EXPECT_EQ(document.State().m_lstCallStack.size(), 2u);
}

TEST_F(ProceduresTest, CallWithoutBracketAndBlankStopsTheScript) {
    EXPECT_FALSE(RunLines({"CALL f", "PROCEDURE f()", "BEGIN", "END"}));
    EXPECT_EQ(Failure(), "1: 7");
    EXPECT_TRUE(document.State().m_bPaused);
}

TEST_F(ProceduresTest, EndWithoutACallFails) {
    EXPECT_FALSE(RunLines({"END"}));
    EXPECT_EQ(Failure(), "1: 11");
}

TEST_F(ProceduresTest, BeginInPlainFlowDoesNothing) {
    EXPECT_TRUE(RunLines({"BEGIN", "LOCAL a"}));
    EXPECT_TRUE(Finished());
}

TEST_F(ProceduresTest, ReachedFromAboveItIsPassedOver) {
    EXPECT_TRUE(RunLines({"PROCEDURE f(x)", "; opis", "", ":etykieta", "BEGIN", "FOO", "GOTO brak",
                          "CALL brak()", "IF", "PROCEDURE g()", "END", "LOCAL a"}));
    EXPECT_TRUE(Finished());
    EXPECT_EQ(document.Variables().GetSize(), 1u);
    EXPECT_FALSE(document.State().m_bInProcedureSkip);
    EXPECT_FALSE(document.State().m_bInProcedureBody);
}

TEST_F(ProceduresTest, FirstEndEndsThePassingOver) {
    EXPECT_FALSE(RunLines({"PROCEDURE f()", "BEGIN", "END", "END"}));
    EXPECT_EQ(Failure(), "4: 11");
}

TEST_F(ProceduresTest, StatementBeforeBeginFailsFromAbove) {
    EXPECT_FALSE(RunLines({"PROCEDURE f()", "LOCAL a", "BEGIN", "END"}));
    EXPECT_EQ(Failure(), "2: 11");
    EXPECT_TRUE(document.State().m_bInProcedureSkip);
}

TEST_F(ProceduresTest, BeginOnTheHeadsLineIsNotSeenFromAbove) {
    EXPECT_FALSE(RunLines({"PROCEDURE f() BEGIN", "LOCAL a", "END"}));
    EXPECT_EQ(Failure(), "2: 11");
}

TEST_F(ProceduresTest, EndBeforeBeginFailsFromAbove) {
    EXPECT_FALSE(RunLines({"PROCEDURE f()", "END"}));
    EXPECT_EQ(Failure(), "2: 11");
}

TEST_F(ProceduresTest, LowerCaseKeywordsArePassedOverToo) {
    EXPECT_TRUE(RunLines({"procedure f()", "begin", "FOO", "end", "LOCAL a"}));
    EXPECT_TRUE(Finished());
}

TEST_F(ProceduresTest, RecursionStacksFrames) {
    EXPECT_TRUE(RunLines({"LOCAL n = 100", "LOCAL suma = 0", "CALL licz(n)", "GOTO koniec",
                          "PROCEDURE licz(k)", "BEGIN", "IF k < 1 GOTO wyj", "SET k = k - 1",
                          "CALL licz(k)", ":wyj", "SET suma = suma + 1", "END", ":koniec"}));
    EXPECT_TRUE(Finished());
    EXPECT_EQ(Value(document, "n"), "171:0.00");
    EXPECT_EQ(Value(document, "suma"), "171:101.00");
    EXPECT_TRUE(document.State().m_lstCallStack.empty());
}

TEST_F(ProceduresTest, GotoOutOfAProcedureKeepsItsFrame) {
    EXPECT_TRUE(RunLines({"LOCAL b", "CALL f(b)", "GOTO koniec", "PROCEDURE f(a)", "BEGIN",
                          "GOTO poza", "END", ":poza", "SET a = 5", "END", ":koniec"}));
    EXPECT_TRUE(Finished());
    EXPECT_EQ(Value(document, "b"), "171:5.00");
}

TEST_F(ProceduresTest, OnlyTheNewestFrameRewrites) {
    EXPECT_TRUE(
        RunLines({"LOCAL b", "LOCAL y", "CALL f(b)", "GOTO koniec", "PROCEDURE f(a)", "BEGIN",
                  "CALL g(1)", "END", "PROCEDURE g(x)", "BEGIN", "LOCAL a = x", "END", ":koniec"}));
    EXPECT_TRUE(Finished());
    EXPECT_EQ(Value(document, "a"), "171:1.00");
}

TEST_F(ProceduresTest, HeadIsSearchedInTheTextAsItStands) {
    // The call is made while a frame is active whose parameter is called like the procedure.
    EXPECT_TRUE(RunLines({"CALL f(x)", "GOTO koniec", "PROCEDURE f(g)", "BEGIN", "CALL g(1)", "END",
                          "PROCEDURE g(y)", "BEGIN", "LOCAL a = y", "END", ":koniec"}));
    EXPECT_TRUE(Finished());
    EXPECT_EQ(Value(document, "a"), "171:1.00");
}

}  // namespace
}  // namespace kalvex::engine
