#include <gtest/gtest.h>

#include "operands/FunctionFamilies.h"
#include "support/fake_script.h"
#include "support/value_dump.h"

namespace kalvex::operands {
namespace {

constexpr FunctionRow kRows[] = {
    {"TOKENIZE", Tokenize, "", ""},
    {"JOIN", Join, "", ""},
};

class StringPiecesTest : public testing::Test {
  protected:
    static const FunctionTable& Table() {
        static const FunctionTable table(kRows);
        return table;
    }
    std::string Position() { return support::Dump(script.Value("P")); }

    support::FakeScript script{Table()};
};

TEST_F(StringPiecesTest, TokenizeTakesOnePieceAfterTheOther) {
    script.Local("S", value::CVal("a;b"));
    script.Local("P", value::CVal(0));
    EXPECT_EQ(script.Evaluate("TOKENIZE S ; P"), "190:a");
    EXPECT_EQ(Position(), "150:2");
    EXPECT_EQ(script.Evaluate("TOKENIZE S ; P"), "190:b");
    EXPECT_EQ(Position(), "150:4");
    EXPECT_EQ(script.Evaluate("TOKENIZE S ; P"), "190:");
    EXPECT_EQ(Position(), "150:-1");
    EXPECT_EQ(script.Evaluate("TOKENIZE S ; P"), "failed 0");
    EXPECT_EQ(Position(), "150:-1");
}

TEST_F(StringPiecesTest, TokenizePassesOverRunsOfSeparators) {
    script.Local("S", value::CVal(",,a,,b,,"));
    script.Local("P", value::CVal(0));
    EXPECT_EQ(script.Evaluate("TOKENIZE S , P"), "190:a");
    EXPECT_EQ(Position(), "150:4");
    EXPECT_EQ(script.Evaluate("TOKENIZE S , P"), "190:b");
    EXPECT_EQ(Position(), "150:7");
    EXPECT_EQ(script.Evaluate("TOKENIZE S , P"), "190:");
    EXPECT_EQ(Position(), "150:-1");
}

TEST_F(StringPiecesTest, TokenizeTakesItsSeparatorAsItIsWritten) {
    script.Local("S", value::CVal("x\"y;z"));
    script.Local("ZNAK", value::CVal(";"));
    script.Local("P", value::CVal(0));
    EXPECT_EQ(script.Evaluate("TOKENIZE S \";\" P"), "190:x");
    EXPECT_EQ(script.Evaluate("TOKENIZE S \";\" P"), "190:y");
    script.Local("T", value::CVal("abZcd"));
    script.Variables().Find("P")->SetValue(value::CVal(0), value::KindCurrent);
    EXPECT_EQ(script.Evaluate("TOKENIZE T ZNAK P"), "190:ab");
    EXPECT_EQ(Position(), "150:3");
}

TEST_F(StringPiecesTest, TokenizeBeginsAnywhere) {
    script.Local("S", value::CVal("alfa beta"));
    script.Local("P", value::CVal(2.9));
    EXPECT_EQ(script.Evaluate("TOKENIZE S _ P"), "190:fa beta");
    EXPECT_EQ(Position(), "150:10");
    script.Variables().Find("P")->SetValue(value::CVal(9), value::KindCurrent);
    EXPECT_EQ(script.Evaluate("TOKENIZE S _ P"), "190:");
    EXPECT_EQ(Position(), "150:-1");
    script.Variables().Find("P")->SetValue(value::CVal(2147483647), value::KindCurrent);
    EXPECT_EQ(script.Evaluate("TOKENIZE S _ P"), "190:");
    EXPECT_EQ(Position(), "150:-1");
}

TEST_F(StringPiecesTest, TokenizeReadsThePositionAsANumber) {
    script.Local("S", value::CVal("a b"));
    script.Local("BEZ_WARTOSCI");
    EXPECT_EQ(script.Evaluate("TOKENIZE S - BEZ_WARTOSCI"), "190:a b");
    EXPECT_EQ(support::Dump(script.Value("BEZ_WARTOSCI")), "150:4");
    script.Local("P", value::CVal("1x"));
    EXPECT_EQ(script.Evaluate("TOKENIZE S - P"), "190: b");
    script.Local("TEKST", value::CVal("abc"));
    EXPECT_EQ(script.Evaluate("TOKENIZE S - TEKST"), "failed 0");
    EXPECT_EQ(support::Dump(script.Value("TEKST")), "190:abc");
}

TEST_F(StringPiecesTest, TokenizeWantsThreeTokens) {
    script.Local("S", value::CVal("a"));
    EXPECT_EQ(script.Evaluate("TOKENIZE"), "failed 0");
    EXPECT_EQ(script.Evaluate("TOKENIZE S"), "failed 0");
    EXPECT_EQ(script.Evaluate("TOKENIZE S ;"), "failed 0");
}

TEST_F(StringPiecesTest, TokenizeFailsWithoutTextOrPosition) {
    script.Local("S", value::CVal("a"));
    script.Local("P", value::CVal(0));
    EXPECT_EQ(script.Evaluate("TOKENIZE BRAK ; P"), "failed 3 BRAK");
    EXPECT_EQ(script.Evaluate("TOKENIZE S ; BRAK"), "failed 3 BRAK");
    EXPECT_EQ(script.Evaluate("TOKENIZE S ; 0"), "failed 3 0");
    script.Remote("Z").answer = ReadUnavailable;
    EXPECT_EQ(script.Evaluate("TOKENIZE S ; Z"), "failed 0");
}

TEST_F(StringPiecesTest, TokenizeNegativePositionFails) {
    script.Local("S", value::CVal("a"));
    script.Local("P", value::CVal(-5));
    EXPECT_EQ(script.Evaluate("TOKENIZE S ; P"), "failed 0");
    EXPECT_EQ(Position(), "150:-5");
}

TEST_F(StringPiecesTest, JoinPutsTheSeparatorBetween) {
    CVariableList& list = script.List("L", {value::CVal("a"), value::CVal(2), value::CVal(0.5)});
    EXPECT_EQ(script.Evaluate("JOIN L \", \""), "190:a, 2, 0.50");
    EXPECT_EQ(list.GetIterator(), 3);
    EXPECT_FALSE(list.IsIteratorValid());
    EXPECT_EQ(script.Evaluate("JOIN L"), "190:a20.50");
}

TEST_F(StringPiecesTest, JoinOfAnEmptyListIsEmpty) {
    CVariableList& list = script.List("L");
    EXPECT_EQ(script.Evaluate("JOIN L \",\""), "190:");
    EXPECT_EQ(list.GetIterator(), 0);
}

TEST_F(StringPiecesTest, JoinSeparatorIsEvaluatedOrStandsForItself) {
    script.List("L", {value::CVal("a"), value::CVal("b")});
    script.Local("ZNAK", value::CVal(" - "));
    EXPECT_EQ(script.Evaluate("JOIN L ZNAK"), "190:a - b");
    EXPECT_EQ(script.Evaluate("JOIN L BRAK"), "190:aBRAKb");
    EXPECT_EQ(script.Error(), "3 BRAK");
    EXPECT_EQ(script.Evaluate("JOIN L ;"), "190:a;b");
    EXPECT_EQ(script.Evaluate("JOIN L 1"), "190:a1.00b");
}

TEST_F(StringPiecesTest, JoinTakesUnknownAndValuelessElementsIn) {
    script.List("L",
                {value::CVal("a"), support::Stamped(value::CVal("b"), 0, value::Status::Unknown),
                 value::CVal(), value::CVal("c")});
    EXPECT_EQ(script.Evaluate("JOIN L +"), "190:a+b++c");
}

TEST_F(StringPiecesTest, JoinWantsAList) {
    script.Local("A", value::CVal("a"));
    script.List("L", {value::CVal("a")});
    script.Pointer("W", "L");
    EXPECT_EQ(script.Evaluate("JOIN A \",\""), "failed 0");
    EXPECT_EQ(script.Evaluate("JOIN W \",\""), "failed 0");
    EXPECT_EQ(script.Evaluate("JOIN BRAK \",\""), "failed 3 BRAK");
    EXPECT_EQ(script.Evaluate("JOIN"), "failed 3");
}

}  // namespace
}  // namespace kalvex::operands
