#include <gmock/gmock.h>

#include "engine/script_lines.h"
#include "value/Bounds.h"
#include "value/ValueText.h"

namespace kalvex::engine {
namespace {

using testing::ElementsAre;

class ListStatementsTest : public ScriptLines {
  protected:
    bool RunOnList(std::vector<std::string> lines) {
        lines.insert(lines.begin(), {"LIST L", "LOCAL x = 1"});
        return RunLines(lines);
    }
    bool RunOnThree(std::vector<std::string> lines) {
        lines.insert(lines.begin(), {"ADD L \"a\"", "ADD L \"b\"", "ADD L \"c\""});
        return RunOnList(lines);
    }
};

TEST_F(ListStatementsTest, EveryStatementWantsAList) {
    for (const char* line : {"MOVE_FIRST x", "MOVE_NEXT x", "MOVE_TO x 0", "ADD x 1",
                             "INSERT x 0 1", "REMOVE x 0", "REMOVE_ALL x", "REMOVEALL x"}) {
        Forget();
        EXPECT_FALSE(RunOnList({line})) << line;
        EXPECT_EQ(Failure(), "3: 21 x") << line;
    }
}

TEST_F(ListStatementsTest, EveryStatementNamesAMissingListAsWritten) {
    for (const char* line :
         {"MOVE_FIRST B.x", "MOVE_NEXT B.x", "MOVE_TO B.x zly", "ADD B.x zly", "INSERT B.x zly 1",
          "REMOVE B.x zly", "REMOVE_ALL B.x", "REMOVEALL B.x"}) {
        Forget();
        EXPECT_FALSE(RunOnList({line})) << line;
        EXPECT_EQ(Failure(), "3: 3 B.x") << line;
    }
}

TEST_F(ListStatementsTest, MissingNameIsAMissingList) {
    EXPECT_FALSE(RunOnList({"MOVE_FIRST"}));
    EXPECT_EQ(Failure(), "3: 3");
}

TEST_F(ListStatementsTest, SuffixOfTheNameIsLeftAside) {
    EXPECT_TRUE(RunOnList({"ADD L.HREP \"a\""}));
    EXPECT_THAT(Elements("L"), ElementsAre("a"));
}

TEST_F(ListStatementsTest, PointerIsNoList) {
    EXPECT_FALSE(RunOnList({"POINTER p", "SETPTR p = \"L\"", "MOVE_FIRST p"}));
    EXPECT_EQ(Failure(), "5: 21 p");
}

TEST_F(ListStatementsTest, MoveFirstOnAnEmptyListIsNotValid) {
    EXPECT_TRUE(RunOnList({"MOVE_FIRST L"}));
    EXPECT_EQ(List("L").GetIterator(), 0);
    EXPECT_FALSE(List("L").IsIteratorValid());
}

TEST_F(ListStatementsTest, MoveNextHasNoEnd) {
    EXPECT_TRUE(RunOnThree({"MOVE_NEXT L"}));
    EXPECT_EQ(List("L").GetIterator(), 0);
    EXPECT_TRUE(RunOnThree({"MOVE_TO L 2", "MOVE_NEXT L", "MOVE_NEXT L"}));
    EXPECT_EQ(List("L").GetIterator(), 4);
}

TEST_F(ListStatementsTest, MoveToTakesAnyIndex) {
    EXPECT_TRUE(RunOnThree({"MOVE_TO L 1"}));
    EXPECT_EQ(List("L").GetIterator(), 1);
    EXPECT_TRUE(RunLines({"MOVE_TO L -5"}));
    EXPECT_EQ(List("L").GetIterator(), -5);
    EXPECT_TRUE(RunLines({"LOCAL i = 99.9", "MOVE_TO L i"}));
    EXPECT_EQ(List("L").GetIterator(), 99);
}

TEST_F(ListStatementsTest, IndexIsOneToken) {
    EXPECT_TRUE(RunOnThree({"MOVE_TO L 1 + 1"}));
    EXPECT_EQ(List("L").GetIterator(), 1);
}

TEST_F(ListStatementsTest, UnknownIndexIsNamed) {
    EXPECT_FALSE(RunOnThree({"MOVE_TO L gdzie"}));
    EXPECT_EQ(Failure(), "6: 3 gdzie");
}

TEST_F(ListStatementsTest, ErrorOfTheEvaluationStandsBeforeTheStatementsOwn) {
    EXPECT_FALSE(RunOnThree({"MOVE_TO L x.NAME.NAME"}));
    EXPECT_EQ(Failure(), "6: 15");
}

TEST_F(ListStatementsTest, AddKeepsTheTypeThatTheElementHas) {
    EXPECT_TRUE(RunOnList({"ADD L 5", "ADD L \"tekst\"", "ADD L x", "ADD L TIME"}));
    std::vector<int> types;
    for (const value::CVal& element : List("L").Elements()) types.push_back(element.GetType());
    EXPECT_THAT(types, ElementsAre(value::ValueType::Double, value::ValueType::Text,
                                   value::ValueType::Double, value::ValueType::Int64));
}

TEST_F(ListStatementsTest, NumberTakesTheTypeOfTheCurrentElement) {
    EXPECT_TRUE(RunOnList({"ADD L \"tekst\"", "MOVE_FIRST L", "ADD L 5", "INSERT L 0 6"}));
    EXPECT_THAT(Elements("L"), ElementsAre("6.00", "tekst", "5.00"));
    EXPECT_EQ(List("L").Elements()[0].GetType(), value::ValueType::Text);
    EXPECT_EQ(List("L").Elements()[2].GetType(), value::ValueType::Text);
}

TEST_F(ListStatementsTest, AddedElementIsACopyWithStatusAndTime) {
    EXPECT_TRUE(RunOnList({"SET x.TIMESTAMP = 500", "ADD L x", "SET x = 2"}));
    EXPECT_THAT(Elements("L"), ElementsAre("1.00"));
    EXPECT_EQ(List("L").Elements()[0].GetTime(), 500);
}

TEST_F(ListStatementsTest, BadElementFails) {
    EXPECT_FALSE(RunOnList({"ADD L co"}));
    EXPECT_EQ(Failure(), "3: 3 co");
    EXPECT_THAT(Elements("L"), ElementsAre());
}

TEST_F(ListStatementsTest, InsertGoesInFrontOrBehindTheEnd) {
    EXPECT_TRUE(RunOnThree(
        {"INSERT L 0 \"p\"", "INSERT L 2 \"q\"", "INSERT L 99 \"r\"", "INSERT L 6 \"s\""}));
    EXPECT_THAT(Elements("L"), ElementsAre("p", "a", "q", "b", "c", "r", "s"));
}

TEST_F(ListStatementsTest, InsertLeavesTheIteratorWhereItIs) {
    EXPECT_TRUE(RunOnThree({"MOVE_TO L 1", "INSERT L 0 \"p\""}));
    EXPECT_EQ(List("L").GetIterator(), 1);
}

TEST_F(ListStatementsTest, InsertAtANegativeIndexFails) {
    EXPECT_FALSE(RunOnThree({"INSERT L -1 \"p\""}));
    EXPECT_EQ(Failure(), "6: 16 -1");
    EXPECT_THAT(Elements("L"), ElementsAre("a", "b", "c"));
}

TEST_F(ListStatementsTest, InsertLooksAtTheIndexFirst) {
    EXPECT_FALSE(RunOnThree({"INSERT L gdzie co"}));
    EXPECT_EQ(Failure(), "6: 3 gdzie");
    EXPECT_FALSE(RunLines({"INSERT L -1 co"}));
    EXPECT_EQ(Failure(), "1: 3 co");
}

TEST_F(ListStatementsTest, RemoveWorksOnTheIterator) {
    EXPECT_TRUE(RunOnThree({"MOVE_TO L 1", "REMOVE L 5"}));
    EXPECT_THAT(Elements("L"), ElementsAre("a", "c"));
    EXPECT_EQ(List("L").GetIterator(), 0);
}

TEST_F(ListStatementsTest, RemoveOfTheFirstStaysAtTheFirst) {
    EXPECT_TRUE(RunOnThree({"MOVE_FIRST L", "REMOVE L 0"}));
    EXPECT_THAT(Elements("L"), ElementsAre("b", "c"));
    EXPECT_EQ(List("L").GetIterator(), 0);
}

TEST_F(ListStatementsTest, RemoveWithoutAValidIteratorDoesNothing) {
    EXPECT_TRUE(
        RunOnThree({"REMOVE L 0", "MOVE_TO L 3", "REMOVE L 0", "MOVE_TO L -2", "REMOVE L 0"}));
    EXPECT_THAT(Elements("L"), ElementsAre("a", "b", "c"));
    EXPECT_EQ(List("L").GetIterator(), -2);
}

TEST_F(ListStatementsTest, RemoveNeedsAValidIndexAllTheSame) {
    EXPECT_FALSE(RunOnThree({"MOVE_FIRST L", "REMOVE L gdzie"}));
    EXPECT_EQ(Failure(), "7: 3 gdzie");
    EXPECT_THAT(Elements("L"), ElementsAre("a", "b", "c"));
}

TEST_F(ListStatementsTest, RemoveAllHasTwoNames) {
    for (const char* line : {"REMOVE_ALL L", "REMOVEALL L"}) {
        Forget();
        EXPECT_TRUE(RunOnThree({"MOVE_FIRST L", line})) << line;
        EXPECT_THAT(Elements("L"), ElementsAre());
        EXPECT_EQ(List("L").GetIterator(), -1);
    }
}

class ListStatementsSplitTest : public ScriptLines {
  protected:
    std::vector<std::string> Split(const std::string& text, const std::string& separator) {
        Forget();
        EXPECT_TRUE(RunLines({"LOCAL s", "LIST L"}));
        Variable("s").SetValue(value::CVal(text::FromUtf8(text)), value::KindCurrent);
        EXPECT_TRUE(RunLines({"SPLIT s " + separator + " L"}));
        return Elements("L");
    }
};

TEST_F(ListStatementsSplitTest, RunsOfSeparatorsCountAsOne) {
    EXPECT_THAT(Split("a,,b", ","), ElementsAre("a", "b"));
    EXPECT_THAT(Split(",,a,b,,", ","), ElementsAre("a", "b"));
    EXPECT_THAT(Split("a, b ,c", ","), ElementsAre("a", " b ", "c"));
}

TEST_F(ListStatementsSplitTest, EveryCharacterOfTheTokenSeparates) {
    EXPECT_THAT(Split("a-b.c", "-."), ElementsAre("a", "b", "c"));
    EXPECT_THAT(Split("a\"b,c d", "\",\""), ElementsAre("a", "b", "c d"));
    EXPECT_THAT(Split("a;b c", "\" ;\""), ElementsAre("a", "b", "c"));
}

TEST_F(ListStatementsSplitTest, PolishLettersSeparateToo) {
    EXPECT_THAT(Split("aąbęc", "ąę"), ElementsAre("a", "b", "c"));
}

TEST_F(ListStatementsSplitTest, SeparatorIsNotEvaluated) {
    EXPECT_THAT(Split("a,s,b", "s"), ElementsAre("a,", ",b"));
}

TEST_F(ListStatementsSplitTest, TextOfSeparatorsAloneGivesNothing) {
    EXPECT_THAT(Split(",,,", ","), ElementsAre());
    EXPECT_THAT(Split("", ","), ElementsAre());
}

TEST_F(ListStatementsSplitTest, TextWithoutASeparatorIsOnePiece) {
    EXPECT_THAT(Split("abc", ","), ElementsAre("abc"));
}

TEST_F(ListStatementsSplitTest, PiecesAreTextsAndAppended) {
    EXPECT_TRUE(RunLines({"LOCAL s = \"1;2\"", "LIST L", "SPLIT s ; L", "SPLIT s ; L"}));
    EXPECT_THAT(Elements("L"), ElementsAre("1", "2", "1", "2"));
    for (const value::CVal& element : List("L").Elements())
        EXPECT_EQ(element.GetType(), value::ValueType::Text);
    EXPECT_EQ(List("L").GetIterator(), -1);
}

TEST_F(ListStatementsSplitTest, NumberIsSplitAsItsText) {
    EXPECT_TRUE(RunLines({"LOCAL s = 12.5", "LIST L", "SPLIT s . L"}));
    EXPECT_THAT(Elements("L"), ElementsAre("12", "50"));
}

TEST_F(ListStatementsSplitTest, WhatCannotBeReadGivesNothing) {
    EXPECT_TRUE(RunLines({"LIST s", "LIST L", "SPLIT s , L"}));
    EXPECT_THAT(Elements("L"), ElementsAre());
}

TEST_F(ListStatementsSplitTest, ListIsSplitIntoItself) {
    EXPECT_TRUE(RunLines({"LIST L", "ADD L \"a,b\"", "MOVE_FIRST L", "SPLIT L , L"}));
    EXPECT_THAT(Elements("L"), ElementsAre("a,b", "a", "b"));
}

TEST_F(ListStatementsSplitTest, MissingArgumentFails) {
    for (const char* line : {"SPLIT", "SPLIT s", "SPLIT s ,"}) {
        Forget();
        EXPECT_FALSE(RunLines({"LOCAL s = \"a,b\"", line})) << line;
        EXPECT_EQ(Failure(), "2: 22") << line;
    }
}

TEST_F(ListStatementsSplitTest, MissingSourceAndListAreNamed) {
    EXPECT_FALSE(RunLines({"SPLIT brak , tez_brak"}));
    EXPECT_EQ(Failure(), "1: 3 brak");
    EXPECT_FALSE(RunLines({"LOCAL s", "SPLIT s , brak"}));
    EXPECT_EQ(Failure(), "2: 3 brak");
    EXPECT_FALSE(RunLines({"LOCAL s", "SPLIT s , s"}));
    EXPECT_EQ(Failure(), "2: 21 s");
}

TEST_F(ListStatementsTest, ListBeyondItsBoundTakesNothingMore) {
    EXPECT_TRUE(RunOnList({"LOCAL slowo = \"a\"", "LOCAL kiedy = MAKE_TIME 2024 1 1"}));
    operands::CVariableList& list = List("L");
    const value::CVal element(1);
    while (list.Elements().size() < value::kMostElements - 1) list.Add(element);
    EXPECT_TRUE(RunLines({"ADD L 2"}));
    for (const char* line : {"ADD L 3", "INSERT L 0 3", "INSERT L 5 3", "SPLIT slowo , L",
                             "CREATE_VAR_LIST L slow*", "FILL_IN_LIST L 1 0 kiedy kiedy HREP"}) {
        EXPECT_FALSE(RunLines({line})) << line;
        EXPECT_EQ(Failure(), "1: 16 lista dłuższa niż 10000000 elementów") << line;
        EXPECT_EQ(list.Elements().size(), value::kMostElements) << line;
    }
    EXPECT_EQ(value::ValueToInt(list.Elements().front()), 1);
    EXPECT_EQ(value::ValueToInt(list.Elements().back()), 2);
    EXPECT_TRUE(RunLines({"REMOVE_ALL L", "ADD L 3"}));
}

}  // namespace
}  // namespace kalvex::engine
