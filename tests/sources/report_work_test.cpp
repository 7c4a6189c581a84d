#include <gmock/gmock.h>

#include "support/source_world.h"

namespace kalvex::sources {
namespace {

class ReportWorkTest : public support::SourceWorld {
  protected:
    // What the line orders of the server; on failure the error on which it stands.
    std::string Orders(const std::string& line) {
        engine::CKalvexDoc& document = Run("REMOTE a srv@V\nLOCAL x = 5\n" + line, 2);
        const std::vector<std::string> calls = Calls("Make");
        if (document.State().m_nCurrentLine != 3) return "error " + Error(document);
        return calls.empty() ? "nothing" : calls.front();
    }
};

TEST_F(ReportWorkTest, InitOfEachKind) {
    EXPECT_EQ(Orders("INIT a HREP 2024 3 10 7"), "MakeHourReportInitRequest V 2024-03-10 07:00:00");
    EXPECT_EQ(Orders("INIT a HREP 2024 3 10 7 - 1"),
              "MakeHourReportInitRequest V 2024-03-10 06:00:00");
    EXPECT_EQ(Orders("INIT a DREP 2024 3 1 -1"), "MakeDayReportInitRequest V 2024-02-29 00:00:00");
    EXPECT_EQ(Orders("INIT a MREP 2024 3 - 3"), "MakeMonthReportInitRequest V 2023-12-01 00:00:00");
    EXPECT_EQ(Orders("INIT a SREP 2024 5"), "MakeSpanReportInitRequest V 2024-01-01 00:00:05");
    EXPECT_EQ(Orders("INIT a SREP 2024 - 5"), "MakeSpanReportInitRequest V 2023-12-31 23:59:55");
}

TEST_F(ReportWorkTest, SignsAreJoinedOnlyInTheOffset) {
    EXPECT_EQ(Orders("INIT a HREP 2024 3 - 10 7"), "error 11 Niepoprawna liczba parametrów");
    EXPECT_EQ(Orders("INIT a HREP 2024 3 10 7 brak"),
              "MakeHourReportInitRequest V 2024-03-10 07:00:00");
}

TEST_F(ReportWorkTest, InitKnowsNoTimeInOneToken) {
    EXPECT_EQ(Orders("INIT a HREP 1710050400"), "error 11 Niepoprawna liczba parametrów");
    EXPECT_EQ(Orders("INIT a SREP 1710050400 1"), "error 11 Niepoprawna data");
    EXPECT_EQ(Orders("INIT a SREP 2024"), "error 11 Niepoprawna liczba parametrów");
}

TEST_F(ReportWorkTest, LoadOfEachKind) {
    EXPECT_EQ(Orders("INIT_LOAD a HREP 2024 3 10 7"),
              "MakeHourReportLoadRequest V 2024-03-10 07:00:00");
    EXPECT_EQ(Orders("INIT_LOAD a DREP 2024 3 10"),
              "MakeDayReportLoadRequest V 2024-03-10 00:00:00");
    EXPECT_EQ(Orders("INIT_LOAD a MREP 2024 3"),
              "MakeMonthReportLoadRequest V 2024-03-01 00:00:00");
    EXPECT_EQ(Orders("INIT_LOAD a SREP 2024 5"), "MakeSpanReportLoadRequest V 2024-01-01 00:00:05");
}

TEST_F(ReportWorkTest, MidnightOfAnArchiveCountsToTheDayThatEnds) {
    EXPECT_EQ(Orders("INIT_LOAD a ARCH 2024 3 10 7"),
              "MakeArchiveDataUpdateRequest V 2024-03-10 07:00:00");
    EXPECT_EQ(Orders("INIT_LOAD a ARCH 2024 3 10 0"),
              "MakeArchiveDataUpdateRequest V 2024-03-09 23:59:59");
    EXPECT_EQ(Orders("INIT_LOAD a ARCH 2024 3 10 7 - 7"),
              "MakeArchiveDataUpdateRequest V 2024-03-09 23:59:59");
    EXPECT_EQ(Orders("INIT_LOAD_REFRESH a ARCH 2024 3 10 7 1"),
              "MakeArchiveDataRefreshRequest V 2024-03-10 08:00:00");
    EXPECT_EQ(Orders("INIT_LOAD a ARCH 2024 3 10"), "error 11 Niepoprawna liczba parametrów");
    EXPECT_EQ(Orders("INIT_LOAD a ARCH brak"), "error 11 Niepoprawna liczba parametrów");
}

TEST_F(ReportWorkTest, ArchiveWithoutATime) {
    EXPECT_EQ(Orders("INIT_LOAD a ARCH"), "MakeArchiveDataUpdateRequest V 1970-01-01 01:00:00");
    EXPECT_EQ(Orders("INIT_LOAD_REFRESH a ARCH"),
              "MakeArchiveDataRefreshRequest V 1970-01-01 01:00:00");
    const support::ZoneScope gmt("UTC");
    EXPECT_EQ(Orders("INIT_LOAD a ARCH"), "MakeArchiveDataUpdateRequest V 1969-12-31 23:59:59");
}

TEST_F(ReportWorkTest, CalculationOfEachKind) {
    EXPECT_EQ(Orders("INIT_CALC a HREP 2024 3 10 7"),
              "MakeHourReportCalcRequest V 2024-03-10 07:00:00");
    EXPECT_EQ(Orders("INIT_CALC a DREP 2024 3 10 -1"),
              "MakeDayReportCalcRequest V 2024-03-09 00:00:00");
    EXPECT_EQ(Orders("INIT_CALC a MREP 2024 3"), "nothing");
    EXPECT_EQ(Orders("INIT_CALC a SREP 2024 5"),
              "MakeMonthReportCalcRequest V 2024-01-01 00:00:05");
}

TEST_F(ReportWorkTest, WordsThatAreUnknown) {
    EXPECT_EQ(Orders("INIT brak HREP 2024 3 10 7"), "error 3 brak");
    EXPECT_EQ(Orders("INIT a ARCH 2024 3 10 7"), "error 1 ARCH");
    EXPECT_EQ(Orders("INIT a CURDATA"), "error 1 CURDATA");
    EXPECT_EQ(Orders("INIT a"), "error 1");
    EXPECT_EQ(Orders("INIT_LOAD a hrep 2024 3 10 7"), "error 1 hrep");
    EXPECT_EQ(Orders("INIT_LOAD_REFRESH a HREP 2024 3 10 7"), "error 1 HREP");
    EXPECT_EQ(Orders("INIT_CALC a ARCH"), "error 1 ARCH");
}

TEST_F(ReportWorkTest, DatesOutOfRangeAreRefused) {
    EXPECT_EQ(Orders("INIT a HREP 2024 3 10 24"), "error 11 Niepoprawna data");
    EXPECT_EQ(Orders("INIT_LOAD a DREP 2024 3 32"), "error 11 Niepoprawna data");
    EXPECT_EQ(Orders("INIT_CALC a SREP 3001 1"), "error 11 Niepoprawna data");
    EXPECT_EQ(Orders("INIT_LOAD_REFRESH a ARCH 2024 13 1 0"), "error 11 Niepoprawna data");
}

TEST_F(ReportWorkTest, LocalVariableOrdersNothing) {
    EXPECT_EQ(Orders("INIT x HREP 2024 3 10 7"), "nothing");
    EXPECT_EQ(Orders("INIT_LOAD x ARCH"), "nothing");
    EXPECT_EQ(Orders("INIT_CALC x DREP 2024 3 10"), "nothing");
}

}  // namespace
}  // namespace kalvex::sources
