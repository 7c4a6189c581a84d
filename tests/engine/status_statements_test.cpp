#include <gmock/gmock.h>

#include "support/script_world.h"

namespace kalvex::engine {
namespace {

using testing::ElementsAre;

constexpr const char* kOpened = "main.kx : Inicjowanie skryptu ";
constexpr const char* kStarted = "main.kx : Start skryptu ";

class StatusStatementsTest : public support::ScriptWorld {
  protected:
    static int StatusOf(CKalvexDoc& document, std::string_view name,
                        value::ValueKind kind = value::KindCurrent) {
        value::CVal value;
        document.Variables().Find(name)->GetValue(value, kind, 1);
        return value.GetStatus();
    }
};

TEST_F(StatusStatementsTest, ChangeTheStatus) {
    CKalvexDoc& document =
        Run("LOCAL A = 1\n"
            "SET_STATUS A UNKNOWN\n"
            "add_status A ALARM\n"
            "ADD_STATUS A 32 ; uwaga\n"
            "REMOVE_STATUS A UNKNOWN\n");
    EXPECT_EQ(Error(document), "0");
    EXPECT_EQ(StatusOf(document, "A"), 36);
    EXPECT_THAT(Log(), ElementsAre(kOpened, kStarted));
}

TEST_F(StatusStatementsTest, FailureNamesTheRestOfTheLine) {
    CKalvexDoc& document = Run("LOCAL A = 1\nSET_STATUS  A   BZDURA \n");
    EXPECT_EQ(Error(document), "16 A   BZDURA");
    EXPECT_EQ(StatusOf(document, "A"), 0);
    EXPECT_EQ(document.State().m_nCurrentLine, 1);
    EXPECT_THAT(Log(), ElementsAre(kOpened, kStarted,
                                   "main.kx : Linia 2 - Błąd obliczenia wyrażenia : A   BZDURA"));
}

TEST_F(StatusStatementsTest, FailureTakesThePlaceOfTheOperandsError) {
    EXPECT_EQ(Error(Run("ADD_STATUS BRAK ALARM\n")), "16 BRAK ALARM");
}

TEST_F(StatusStatementsTest, ErrorOfTheOperandIsHidden) {
    EXPECT_EQ(Error(Run("LOCAL A = 1\nREMOVE_STATUS A ALARM2 ; uwaga\n")), "16 A ALARM2 ; uwaga");
}

TEST_F(StatusStatementsTest, HourValueOfALocalVariableIsChangedAndFails) {
    CKalvexDoc& document = Run("LOCAL A = 1\nADD_STATUS A.HREP ALARM\n");
    EXPECT_EQ(Error(document), "16 A.HREP ALARM");
    EXPECT_EQ(StatusOf(document, "A", value::KindHour), 4);
}

}  // namespace
}  // namespace kalvex::engine
