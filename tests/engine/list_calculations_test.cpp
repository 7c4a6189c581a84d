#include <gmock/gmock.h>

#include "support/script_world.h"

namespace kalvex::engine {
namespace {

using testing::ElementsAre;

constexpr const char* kOpened = "main.kx : Inicjowanie skryptu ";
constexpr const char* kStarted = "main.kx : Start skryptu ";

class ListCalculationsTest : public support::ScriptWorld {};

TEST_F(ListCalculationsTest, SeriesAndItsSum) {
    CKalvexDoc& document =
        Run("LIST LISTA\n"
            "LOCAL R\n"
            "LOCAL T = TIME\n"
            "LOCAL T2 = T + 7200\n"
            "FILL_IN_LIST LISTA 2.5 ALARM T T2 HREP\n"
            "CALC_IN_LIST LISTA.SUM R\n");
    EXPECT_EQ(Error(document), "0");
    EXPECT_EQ(Value(document, "LISTA"), "[2.50 2.50 2.50]");
    EXPECT_EQ(Value(document, "R"), "171:7.50");
    EXPECT_THAT(Log(), ElementsAre(kOpened, kStarted));
}

TEST_F(ListCalculationsTest, EmptyResultAndReversedRangeAreNoFailure) {
    CKalvexDoc& document =
        Run("LIST LISTA\n"
            "LOCAL R = 1\n"
            "CALC_IN_LIST LISTA.SUM R 0 FROM 2024 2 1 TO 2024 1 1\n"
            "LOCAL S = R\n"
            "CALC_IN_LIST LISTA.SUM R\n");
    EXPECT_EQ(Value(document, "S"), "171:1.00");
    EXPECT_EQ(Value(document, "R"), "255:");
    EXPECT_EQ(document.State().m_nCurrentLine, document.GetLineCount());
    EXPECT_THAT(Log(), ElementsAre(kOpened, kStarted));
}

TEST_F(ListCalculationsTest, FailureStaysOnTheLine) {
    CKalvexDoc& document = Run("LIST L\nLOCAL R\nCALC_IN_LIST L.SUM R\n");
    EXPECT_EQ(Error(document), "22 L.SUM");
    EXPECT_EQ(document.State().m_nCurrentLine, 2);
    EXPECT_THAT(Log(), ElementsAre(kOpened, kStarted,
                                   "main.kx : Linia 3 - Nieprawidłowe lub brakujące argumenty "
                                   "wyrażenia : L.SUM"));
}

TEST_F(ListCalculationsTest, SeriesWithAnUnknownStepFails) {
    CKalvexDoc& document = Run("LIST L\nFILL_IN_LIST L 1 0 2024 2025 SREP\n");
    EXPECT_EQ(Error(document), "22 SREP");
    EXPECT_EQ(Value(document, "L"), "[]");
    EXPECT_THAT(Log(), ElementsAre(kOpened, kStarted,
                                   "main.kx : Linia 2 - Nieprawidłowe lub brakujące argumenty "
                                   "wyrażenia : SREP"));
}

TEST_F(ListCalculationsTest, FunctionGivesItsCode) {
    CKalvexDoc& document =
        Run("LIST LISTA\n"
            "LOCAL R = 1\n"
            "LOCAL KOD = CALC_IN_LIST LISTA.AVERAGE R\n"
            "LOCAL ILE = FILL_IN_LIST LISTA 1 0 2024 2024 MREP\n");
    EXPECT_EQ(Value(document, "KOD"), "150:-2");
    EXPECT_EQ(Value(document, "ILE"), "150:1");
    EXPECT_EQ(Value(document, "LISTA"), "[1.00]");
}

TEST_F(ListCalculationsTest, ErrorsOfTheFunctionStandBeforeThoseOfTheAssignment) {
    EXPECT_EQ(Error(Run("LOCAL R = 1\nSET R = CALC_IN_LIST BRAK.SUM R\n")), "3 BRAK");
}

}  // namespace
}  // namespace kalvex::engine
