#include <gmock/gmock.h>

#include "support/script_world.h"

namespace kalvex::engine {
namespace {

using testing::ElementsAre;

class BranchingTest : public support::ScriptWorld {
  protected:
    // The path of a script through its "ADD S <letter>" lines.
    std::string Path(const std::string& text) {
        CKalvexDoc& document = Run("LIST S\n" + text, 100);
        const bool finished = document.State().m_nCurrentLine >= document.GetLineCount();
        return Value(document, "S") + (finished ? "" : " " + Error(document));
    }
    // Which branch a condition takes.
    std::string Branch(const std::string& setup, const std::string& condition) {
        return Path(setup + "\nIF " + condition + " THEN\nADD S \"T\"\nELSE\nADD S \"N\"\nENDIF");
    }
};

TEST_F(BranchingTest, ThenElse) {
    EXPECT_EQ(Branch("LOCAL A = 2", "A > 1"), "[T]");
    EXPECT_EQ(Branch("LOCAL A = 1", "A > 1"), "[N]");
    EXPECT_EQ(Path("IF 0 THEN\nADD S \"T\"\nENDIF\nADD S \"K\""), "[K]");
    EXPECT_EQ(Path("IF 1 THEN\nADD S \"T\"\nENDIF\nADD S \"K\""), "[T K]");
}

TEST_F(BranchingTest, WhatFollowsThenOnTheLineIsNotExecuted) {
    EXPECT_EQ(Path("IF 1 THEN ADD S \"X\"\nADD S \"T\"\nENDIF"), "[T]");
}

TEST_F(BranchingTest, FalseGotoNeedsNoLabel) {
    EXPECT_EQ(Path("LOCAL A = 1\nIF A > 1 GOTO brak\nADD S \"K\""), "[K]");
}

TEST_F(BranchingTest, TrueGotoJumpsBehindItsLabel) {
    EXPECT_EQ(Path("IF 1 GOTO dalej\nADD S \"X\"\n:dalej\nADD S \"K\""), "[K]");
}

TEST_F(BranchingTest, MissingLabelStopsTheScript) {
    CKalvexDoc& document = Run("LOCAL A = 1\nGOTO brak");
    EXPECT_EQ(Error(document), "6 :brak");
    EXPECT_EQ(document.GetStateWord(), StatePaused);
    EXPECT_EQ(document.State().m_nCurrentLine, 1);
    EXPECT_EQ(Log().back(), "main.kx : Linia 2 - Nie znaleziono etykiety : :brak");
}

TEST_F(BranchingTest, LabelsAreCaseSensitiveAndTheFirstWins) {
    EXPECT_EQ(Error(Run(":Koniec\nGOTO koniec")), "6 :koniec");
    EXPECT_EQ(Path("GOTO x\n:x\nADD S \"1\"\nGOTO k\n:x\nADD S \"2\"\n:k"), "[1]");
}

TEST_F(BranchingTest, LabelWithABlankIsNotReached) {
    EXPECT_EQ(Error(Run(": x\nGOTO x")), "6 :x");
}

TEST_F(BranchingTest, LabelsAreTheSameInAStartedTextAndInOneThatIsOnlyStepped) {
    const std::string text = "\n:a x\n  :b\n:b\n\t:c:d\n: e\nLOCAL F";
    for (const std::string label : {"a", "b", "c:d", "c", "e", "", "A", "x"}) {
        CKalvexDoc& started = Open("GOTO " + label + text);
        started.Start();
        CKalvexDoc& idle = Open("GOTO " + label + text);
        EXPECT_EQ(started.ExecuteLine(), idle.ExecuteLine()) << label;
        EXPECT_EQ(started.State().m_nCurrentLine, idle.State().m_nCurrentLine) << label;
        EXPECT_EQ(Error(started), Error(idle)) << label;
    }
}

TEST_F(BranchingTest, StepOfATextThatIsNotStartedRunsItsOwnLine) {
    const std::string longLine = "; " + std::string(5000, 'x') + " A == 2 THEN";
    CKalvexDoc& document = Open(longLine +
                                "\nLOCAL A = 1\nLOCAL NAZWA = \"a\"\n"
                                "IF A == 1 THEN\nSET A = 5\nELSE\nSET A = 7\nENDIF\n"
                                "IF NAZWA == \"a\" GOTO k\nSET A = 8\n:k\n"
                                "CALL f(A)\nGOTO koniec\n"
                                "PROCEDURE f(B)\nBEGIN\nIF B == 5 THEN\nSET B = B + 1\nENDIF\nEND\n"
                                ":koniec");
    for (int line = 0; line < 20; ++line) EXPECT_TRUE(document.ExecuteLine()) << line;
    EXPECT_EQ(document.State().m_nCurrentLine, document.GetLineCount());
    EXPECT_EQ(Value(document, "A"), "171:6.00");
}

TEST_F(BranchingTest, TextMayChangeBetweenTwoStepsBeforeItsStart) {
    CKalvexDoc& document = Open("GOTO k\n:k\nIF 1 THEN\nENDIF\nLOCAL A\n");
    EXPECT_TRUE(document.ExecuteLine());
    EXPECT_EQ(document.State().m_nCurrentLine, 2);
    document.Text().SetText("\n\nGOTO k\nIF 1 THEN\n:k\nENDIF\nLOCAL B\n");
    for (int line = 0; line < 3; ++line) EXPECT_TRUE(document.ExecuteLine()) << line;
    EXPECT_EQ(document.GetLineCount(), 8);
    EXPECT_EQ(Value(document, "B"), "255:");
}

TEST_F(BranchingTest, LabelOnTheLastLineEndsTheScript) {
    CKalvexDoc& document = Run("GOTO k\nSET Q = 1\n:k");
    EXPECT_EQ(document.State().m_nCurrentLine, 3);
    EXPECT_EQ(Error(document), "0");
}

TEST_F(BranchingTest, NestedBlockBelongsToItsOwnIf) {
    const std::string text =
        "IF %s THEN\nIF %s THEN\nADD S \"1\"\nELSE\nADD S \"2\"\nENDIF\nELSE\nADD S \"3\"\nENDIF";
    const auto fill = [&text](const std::string& a, const std::string& b) {
        std::string filled = text;
        filled.replace(filled.find("%s"), 2, a);
        filled.replace(filled.find("%s"), 2, b);
        return filled;
    };
    EXPECT_EQ(Path(fill("1", "1")), "[1]");
    EXPECT_EQ(Path(fill("1", "0")), "[2]");
    EXPECT_EQ(Path(fill("0", "1")), "[3]");
}

TEST_F(BranchingTest, ElseSkipsNestedBlocks) {
    EXPECT_EQ(
        Path("IF 1 THEN\nADD S \"1\"\nELSE\nIF 1 THEN\nADD S \"2\"\nENDIF\nADD S \"3\"\nENDIF\n"
             "ADD S \"4\""),
        "[1 4]");
}

TEST_F(BranchingTest, OneLineGotoDoesNotDisturbTheSearch) {
    EXPECT_EQ(Path("IF 0 THEN\nIF 1 GOTO x\nADD S \"1\"\nELSE\nADD S \"2\"\nENDIF\n:x"), "[2]");
}

TEST_F(BranchingTest, WordIfAnywhereInALineStartsANestedSearch) {
    // The second line opens a block of its own, to which the ENDIF belongs.
    EXPECT_EQ(Path("IF 0 THEN\nLOCAL Q ANY IF THEN\nENDIF\nADD S \"1\""), "[] 24");
    EXPECT_EQ(Path("IF 0 THEN\nLOCAL Q ANY IF GOTO\nENDIF\nADD S \"1\""), "[1]");
}

TEST_F(BranchingTest, LastOfSeveralElseLinesWins) {
    EXPECT_EQ(Path("IF 0 THEN\nADD S \"1\"\nELSE\nADD S \"2\"\nELSE\nADD S \"3\"\nENDIF"), "[3]");
}

TEST_F(BranchingTest, IfWithoutThenOrGoto) {
    CKalvexDoc& document = Run("LOCAL A = 1\nIF A > 0");
    EXPECT_EQ(Error(document), "13");
    EXPECT_EQ(document.State().m_nCurrentLine, 1);
    EXPECT_EQ(Log().back(), "main.kx : Linia 2 - Błąd w zapisie funkcji");
}

TEST_F(BranchingTest, MissingEndifAtRunTime) {
    CKalvexDoc& document = Open("LOCAL A = 1\nIF A > 0 THEN\nLOCAL B");
    document.SetPriority(1);
    document.Resume();
    Tick(2);
    EXPECT_EQ(Error(document), "24");
    EXPECT_EQ(document.State().m_nCurrentLine, 1);
}

TEST_F(BranchingTest, NestedSearchThatNeverEndsIsCut) {
    std::string text = "IF 1 THEN\n";
    for (int i = 0; i < 400; ++i) text += "SLOWO IF THEN\n";
    CKalvexDoc& document = Run(text + "ENDIF");
    EXPECT_EQ(Error(document), "24");
}

TEST_F(BranchingTest, ElseWithoutEndifNamesWhereItEnded) {
    CKalvexDoc& document = Run("LOCAL A = 1\nELSE\nLOCAL B\nLOCAL C");
    EXPECT_EQ(Error(document), "13");
    EXPECT_EQ(document.State().m_nCurrentLine, 4);
    EXPECT_EQ(Log().back(), "main.kx : Linia 5 - Błąd w zapisie funkcji");
}

TEST_F(BranchingTest, StrayEndifRefusesTheStart) {
    CKalvexDoc& document = Open("LOCAL A\nENDIF");
    EXPECT_FALSE(document.Start());
    EXPECT_EQ(document.GetStateWord(), 0);
    EXPECT_THAT(
        Log(),
        ElementsAre("main.kx : Inicjowanie skryptu ",
                    "main.kx : Linia 2 - Brak instrukcji IF...THEN dla użytej komendy ENDIF"));
}

TEST_F(BranchingTest, OpenIfRefusesTheStart) {
    CKalvexDoc& document = Open("IF 1 THEN\nIF 1 THEN\nENDIF");
    EXPECT_FALSE(document.Start());
    EXPECT_THAT(Log(), ElementsAre("main.kx : Inicjowanie skryptu ",
                                   "main.kx : Brak instrukcji ENDIF dla instrukcji IF...THEN"));
}

TEST_F(BranchingTest, StructureCheckPassesOverCommentsGotoAndElse) {
    EXPECT_TRUE(Open("; ENDIF\nif 1 GOTO x THEN\nELSE\nIF 1 ; THEN\n:x\nIF 1 then\nendif").Start());
}

TEST_F(BranchingTest, FormulaConditions) {
    EXPECT_EQ(Branch("LOCAL a = 2\nLOCAL b = 1", "a > 1 && b < 2"), "[T]");
    EXPECT_EQ(Branch("LOCAL a = 2\nLOCAL b = 3", "a > 1 && b < 2"), "[N]");
    EXPECT_EQ(Branch("LOCAL a = 2", "(a > 5) || (a == 2)"), "[T]");
    EXPECT_EQ(Branch("LOCAL a = 0", "NOT(a)"), "[T]");
    EXPECT_EQ(Branch("", "0.5"), "[T]");
}

TEST_F(BranchingTest, TextIsComparedInTheChain) {
    EXPECT_EQ(Branch("LOCAL NAZWA = \"x\"", "NAZWA == \"x\""), "[T]");
    EXPECT_EQ(Branch("LOCAL NAZWA = \"y\"", "NAZWA == \"x\""), "[N]");
    EXPECT_EQ(Branch("LOCAL NAZWA = \"y\"", "NAZWA != \"x\""), "[T]");
    EXPECT_EQ(Branch("LOCAL NAZWA = \"x\"", "\"x\" == NAZWA"), "[N]");
    EXPECT_EQ(Branch("LOCAL NAZWA = \"X\"", "\"x\" == NAZWA"), "[T]");
}

TEST_F(BranchingTest, BracketsAreTakenOutOfTheChainEverywhere) {
    EXPECT_EQ(Branch("LOCAL NAZWA = \"ab\"", "(NAZWA == \"a(b)\")"), "[T]");
}

TEST_F(BranchingTest, LeftSideIsReadInUpperCase) {
    EXPECT_EQ(Branch("LOCAL nazwa = \"x\"", "nazwa == \"x\""), "[] 3 x");
    EXPECT_EQ(Branch("LOCAL NAZWA = \"x\"", "nazwa == \"x\""), "[T]");
}

TEST_F(BranchingTest, SingleEqualsSignFails) {
    EXPECT_EQ(Branch("LOCAL NAZWA = \"x\"\nLOCAL x = 1", "NAZWA = \"x\""), "[] 3 \"");
}

TEST_F(BranchingTest, NotInvertsAllComparisonsOfTheChain) {
    const std::string setup = "LOCAL NAZWA = \"a\"\nLOCAL KOD = \"b\"";
    EXPECT_EQ(Branch(setup, "NOT NAZWA == \"x\" & KOD == \"y\""), "[T]");
    EXPECT_EQ(Branch(setup, "NOT NAZWA == \"x\" & KOD == \"b\""), "[N]");
    EXPECT_EQ(Branch(setup, "NOT NAZWA == \"a\" | KOD == \"y\""), "[T]");
}

TEST_F(BranchingTest, ChainIsReadFromLeftToRight) {
    const std::string setup = "LOCAL A = \"1\"\nLOCAL B = \"2\"\nLOCAL C = \"3\"";
    EXPECT_EQ(Branch(setup, "A == \"1\" | B == \"x\" & C == \"x\""), "[N]");
    EXPECT_EQ(Branch(setup, "A == \"x\" & B == \"2\" | C == \"3\""), "[T]");
    EXPECT_EQ(Branch(setup, "A == \"x\" | B == \"x\" | C == \"3\""), "[T]");
}

TEST_F(BranchingTest, EveryComparisonOfTheChainRuns) {
    EXPECT_EQ(Branch("LOCAL A = \"1\"", "A == \"1\" | BRAK == \"x\""), "[] 3 BRAK");
}

TEST_F(BranchingTest, LowerCaseThenIsPartOfTheRightSide) {
    EXPECT_EQ(Path("LOCAL A = \"x\"\nIF A == \"x\" then\nADD S \"1\"\nENDIF"), "[] 3 x");
    EXPECT_EQ(Path("LOCAL A = 1\nIF A == 1 then\nADD S \"1\"\nENDIF"), "[1]");
}

TEST_F(BranchingTest, FalseGotoEndsTheChain) {
    EXPECT_EQ(Path("LOCAL A = \"x\"\nIF A == \"y\" GOTO brak\nADD S \"1\""), "[1]");
    EXPECT_EQ(Path("LOCAL A = \"x\"\nIF A == \"x\" GOTO dalej\nADD S \"1\"\n:dalej\nADD S \"2\""),
              "[2]");
}

TEST_F(BranchingTest, TestWordsReachTheChain) {
    const std::string setup = "REMOTE A srv@x\nLOCAL L = 5";
    EXPECT_EQ(Branch(setup, "READY A.HREP"), "[T]");
    EXPECT_EQ(Branch(setup, "NOT READY A.HREP"), "[N]");
    EXPECT_EQ(Branch(setup, "UNKNOWN A"), "[T]");
    EXPECT_EQ(Branch(setup, "NOT UNKNOWN L"), "[T]");
    EXPECT_EQ(Branch(setup, "REP_LOADED L.HREP & REP_INITED L.DREP"), "[T]");
    EXPECT_EQ(Branch(setup, "SET_BY_USER L"), "[N]");
    EXPECT_EQ(Path("LOCAL L = 5\nIF READY L.HREP GOTO x\nADD S \"1\"\n:x"), "[]");
}

TEST_F(BranchingTest, TrueTestWordWithNothingBehindFails) {
    EXPECT_EQ(Path("LOCAL L = 5\nIF READY L ; THEN"), "[] 13");
}

TEST_F(BranchingTest, BlocksAreSearchedAnewAfterTheTextChanged) {
    CKalvexDoc& document = Open("IF 0 THEN\nENDIF");
    document.Start();
    document.SetPriority(1);
    Tick(1);
    document.Reset();
    WriteFile("main.kx", "LOCAL A\nIF 0 THEN\nLOCAL B\nENDIF\nLOCAL C");
    document.Start();
    document.SetPriority(1);
    Tick(1);
    EXPECT_EQ(Value(document, "B"), "missing");
    EXPECT_EQ(Value(document, "C"), "255:");
}

}  // namespace
}  // namespace kalvex::engine
