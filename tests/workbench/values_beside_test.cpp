// The values beside the lines that name them.
#include "workbench/model/ValuesBeside.h"

#include <gmock/gmock.h>

#include "support/script_world.h"

namespace kalvex::workbench {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(ValuesBesideNamesTest, WordsWithoutKeywordTextsAndComment) {
    EXPECT_THAT(NamesInLine("\tSET A = B.HREP + \"C\" + A ; D"), ElementsAre("A", "B.HREP"));
    EXPECT_THAT(NamesInLine("IF A-B > 5 GOTO koniec"), ElementsAre("A-B", "5", "GOTO", "koniec"));
    EXPECT_THAT(NamesInLine("; A"), IsEmpty());
    EXPECT_THAT(NamesInLine(""), IsEmpty());
}

class ValuesBesideTest : public support::ScriptWorld {
  protected:
    std::string Beside(const engine::CKalvexDoc& document, int line) {
        const std::string text = text::ToUtf8(ValuesBeside(document, line));
        EXPECT_EQ(text::ToUtf8(m_lines.Beside(document, line)), text);
        EXPECT_EQ(text::ToUtf8(m_lines.Beside(document, line)), text);
        return text;
    }

    LineValues m_lines;
};

TEST_F(ValuesBesideTest, EachKindOfVariable) {
    engine::CKalvexDoc& document =
        Run("LOCAL licznik = 12.5\nLIST lista\nADD lista 1\nADD lista 2\nADD lista 7\n"
            "LOCAL napis = \"a b\"\nPOINTER wsk\nSETPTR wsk = \"licznik\"\nREMOTE zdalna srv@V\n"
            "LOCAL puste\nMOVEFIRST lista\n"
            "SET licznik = lista + napis + wsk + zdalna + puste + lista.STATUS\n");
    EXPECT_EQ(Beside(document, 0), "  licznik = 12.50");
    EXPECT_EQ(Beside(document, 4), "  lista = 3 el.");
    EXPECT_EQ(Beside(document, 5), "  napis = \"a b\"");
    EXPECT_EQ(Beside(document, 7), "  wsk -> licznik = 12.50");
    EXPECT_EQ(Beside(document, 8), "  zdalna = brak");
    EXPECT_EQ(Beside(document, 9), "  puste = brak");
    EXPECT_EQ(Beside(document, 12), "");
    EXPECT_EQ(Beside(document, -1), "");
    EXPECT_EQ(Beside(document, 99), "");
}

TEST_F(ValuesBesideTest, LineOfSeveralVariablesIsCut) {
    engine::CKalvexDoc& document =
        Run("LOCAL A = \"0123456789012345678901234567890123456789\"\nLOCAL B = A\nLOCAL C = A\n"
            "SLEEP 60\nSET A = A + B + C\n");
    const std::string beside = Beside(document, 4);
    EXPECT_EQ(beside.size(), kValuesBesideLength);
    EXPECT_EQ(beside,
              "  A = \"0123456789012345678901234567890123456789\""
              "   B = \"0123456789012345678901234567890123456789\""
              "   C = \"012345678901...");
}

TEST_F(ValuesBesideTest, UnknownValueSaysSoAndADanglingPointerLeavesTheErrorSlotAlone) {
    engine::CKalvexDoc& document =
        Run("REMOTE R srv@V\nPOINTER P\nSETPTR P = \"nic\"\nSLEEP 60\nSET R = P\n");
    auto& remote = static_cast<support::HandRemote&>(*document.Variables().Find("R"));
    remote.answer = operands::ReadValue;
    remote.value = value::CVal(7);
    remote.value.AddStatus(value::Status::Unknown);
    document.SetError(operands::ErrorNone, {}, true);
    EXPECT_EQ(Beside(document, 4), "  R = 7 (nieznana)   P -> nic = brak");
    EXPECT_EQ(Error(document), "0");
}

TEST_F(ValuesBesideTest, LineThatHasChangedIsTakenApartAnew) {
    engine::CKalvexDoc& document = Run("LOCAL A = 1\nLOCAL B = 2\n");
    EXPECT_EQ(Beside(document, 1), "  B = 2.00");
    document.Text().SetText("LOCAL A = 1\nLOCAL A = 2\n");
    EXPECT_EQ(Beside(document, 1), "  A = 1.00");
    document.Reset();
    EXPECT_EQ(Beside(document, 0), "");
}

}  // namespace
}  // namespace kalvex::workbench
