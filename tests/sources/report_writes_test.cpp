#include <gmock/gmock.h>

#include "support/source_world.h"

namespace kalvex::sources {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ReportWritesTest : public support::SourceWorld {
  protected:
    ReportWritesTest() { Plant("'variables': {'V': {'current': [{'value': 1.5}]}}"); }

    // What the line writes on the server; on failure the error on which it stands.
    std::string Writes(const std::string& line) {
        engine::CKalvexDoc& document =
            Run("REMOTE a srv@V\nLOCAL x = a\nLOCAL t = MAKE_TIME 2024 3 9 5 23 45\n"
                "LOCAL moment = t\nLOCAL liczba = 12.5\n" +
                    line,
                5);
        const std::vector<std::string> calls = Calls("Modify");
        if (document.State().m_nCurrentLine != 6) return "error " + Error(document);
        return calls.empty() ? "nothing" : calls.front();
    }
};

TEST_F(ReportWritesTest, Hour) {
    EXPECT_EQ(Writes("PUT a HREP 2024 3 10 7 12.5"),
              "AddHourReportModifyRequest V 2024-03-10 07:00:00 12.50/32768");
    EXPECT_EQ(Writes("PUT a HREP 2024 3 10 7 13.5 -1"),
              "AddHourReportModifyRequest V 2024-03-10 06:00:00 13.50/32768");
    EXPECT_EQ(Writes("PUT a HREP 2024 3 10 7 13.5 - 25"),
              "AddHourReportModifyRequest V 2024-03-09 06:00:00 13.50/32768");
    EXPECT_EQ(Writes("PUT a HREP 2024 3 10 7 liczba"),
              "AddHourReportModifyRequest V 2024-03-10 07:00:00 12.50/32768");
    EXPECT_EQ(Writes("PUT a HREP t 15.5"),
              "AddHourReportModifyRequest V 2024-03-09 05:23:45 15.50/32768");
    EXPECT_EQ(Writes("PUT a HREP t - 17.5 - 1"),
              "AddHourReportModifyRequest V 2024-03-09 04:23:45 -17.50/32768");
}

TEST_F(ReportWritesTest, Day) {
    EXPECT_EQ(Writes("PUT a DREP 2024 3 10 24.5"),
              "AddDayReportModifyRequest V 2024-03-10 00:00:00 24.50/32768");
    EXPECT_EQ(Writes("PUT a DREP 2024 3 10 24.5 - 1"),
              "AddDayReportModifyRequest V 2024-03-09 00:00:00 24.50/32768");
    EXPECT_EQ(Writes("PUT a DREP t - 26.5 1"),
              "AddDayReportModifyRequest V 2024-03-10 05:23:45 -26.50/32768");
}

TEST_F(ReportWritesTest, Month) {
    EXPECT_EQ(Writes("PUT a MREP 2024 3 700.5"),
              "AddMonthReportModifyRequest V 2024-03-01 00:00:00 700.50/32768");
    EXPECT_EQ(Writes("PUT a MREP 2024 3 - 700.5 - 1"),
              "AddMonthReportModifyRequest V 2024-02-01 00:00:00 -700.50/32768");
    EXPECT_EQ(Writes("PUT a MREP t 703.5 1"),
              "AddMonthReportModifyRequest V 2024-04-09 05:23:45 703.50/32768");
    EXPECT_EQ(Writes("PUT a MREP 123456 703.5"),
              "AddMonthReportModifyRequest V 1970-01-02 11:17:36 703.50/32768");
    EXPECT_EQ(Writes("PUT a MREP 12345 7 5"), "error 11 Niepoprawna data");
    EXPECT_EQ(Writes("PUT a MREP 2024 3"), "error 11 Niepoprawna liczba parametrów");
}

TEST_F(ReportWritesTest, Span) {
    EXPECT_EQ(Writes("PUT a SREP 2024 5 9.25"),
              "AddSpanReportModifyRequest V 2024-01-01 00:00:05 9.25/32768");
    EXPECT_EQ(Writes("PUT a SREP moment - 5 9.25"),
              "AddSpanReportModifyRequest V 2024-03-09 04:59:55 9.25/32768");
    EXPECT_EQ(Writes("PUT a SREP 2024 5"), "error 11 Niepoprawna liczba parametrów");
    EXPECT_EQ(Writes("PUT a SREP 2024"), "error 11 Niepoprawna liczba parametrów");
}

TEST_F(ReportWritesTest, LiteralTakesTheTypeOfTheVariable) {
    Plant("'variables': {'V': {'current': [{'value': 1}]}, 'T': {'current': [{'value': 'x'}]}}");
    EXPECT_EQ(Writes("PUT a HREP 2024 3 10 7 12"),
              "AddHourReportModifyRequest V 2024-03-10 07:00:00 12/32768");
    EXPECT_EQ(Writes("PUT a DREP 2024 3 10 \"praca\""),
              "AddDayReportModifyRequest V 2024-03-10 00:00:00 praca/32768");
}

TEST_F(ReportWritesTest, ValueThatDoesNotEvaluate) {
    EXPECT_EQ(Writes("PUT a HREP t brak"), "nothing");
    EXPECT_EQ(Writes("PUT a HREP 2024 3 10 7 brak"), "nothing");
    EXPECT_EQ(Writes("PUT a DREP t brak"),
              "AddDayReportModifyRequest V 2024-03-09 05:23:45 ra/32768");
    EXPECT_EQ(Writes("PUT a MREP t brak"),
              "AddMonthReportModifyRequest V 2024-03-09 05:23:45 ra/32768");
    EXPECT_EQ(Writes("PUT a SREP 2024 5 brak"),
              "AddSpanReportModifyRequest V 2024-01-01 00:00:05 ra/32768");
    EXPECT_EQ(Writes("PUT a DREP t \"\""),
              "AddDayReportModifyRequest V 2024-03-09 05:23:45 /32768");
    EXPECT_EQ(Writes("PUT a DREP t +"), "AddDayReportModifyRequest V 2024-03-09 05:23:45 /32768");
}

TEST_F(ReportWritesTest, MissingValueOrPartsAreRefused) {
    EXPECT_EQ(Writes("PUT a HREP 2024 3 10 7"), "error 11 Niepoprawna liczba parametrów");
    EXPECT_EQ(Writes("PUT a HREP t"), "error 11 Niepoprawna liczba parametrów");
    EXPECT_EQ(Writes("PUT a HREP"), "error 11 Niepoprawna liczba parametrów");
    EXPECT_EQ(Writes("PUT a DREP 2024 3 10 brak 7 8"),
              "AddDayReportModifyRequest V 2024-03-17 00:00:00 ra/32768");
    EXPECT_EQ(Writes("PUT a HREP 2024 13 10 7 1"), "error 11 Niepoprawna data");
}

TEST_F(ReportWritesTest, WordsThatAreUnknown) {
    EXPECT_EQ(Writes("PUT brak HREP 2024 3 10 7 1"), "error 3 brak");
    EXPECT_EQ(Writes("PUT a ARCH 2024 3 10 7 1"), "error 1 ARCH");
    EXPECT_EQ(Writes("PUT a drep 2024 3 10 1"), "error 1 drep");
}

TEST_F(ReportWritesTest, CurrentDataWritesNothing) {
    EXPECT_EQ(Writes("PUT a CURDATA"), "nothing");
    EXPECT_EQ(Writes("PUT a CURDATA 5"), "nothing");
}

TEST_F(ReportWritesTest, EachWriteIsSentAtOnce) {
    Run("REMOTE a srv@V\nPUT a HREP 2024 3 10 7 1\nPUT a DREP 2024 3 10 1", 5);
    EXPECT_THAT(Calls("Make"), ElementsAre("MakeHourReportRequest", "MakeDayReportRequest"));
}

TEST_F(ReportWritesTest, ByNameSendsTheAssignedValueAtItsTime) {
    engine::CKalvexDoc& document =
        Run("REMOTE a srv@V\nLOCAL x = a\nLOCAL t = MAKE_TIME 2024 3 9 6 23 45\nSET a.HREP = 77.5\n"
            "SET a.HREP.TIMESTAMP = t\nPUT a.HREP\nPUT a.DREP\nPUT a\nPUT a.XYZ\nLOCAL y = a.HREP",
            5);
    EXPECT_EQ(document.State().m_nCurrentLine, 10);
    EXPECT_EQ(Value(document, "y"), "171:77.50");
    EXPECT_THAT(Calls("Request"),
                ElementsAre("AddHourReportModifyRequest V 2024-03-09 06:23:45 77.50/32768",
                            "MakeHourReportRequest"));
}

TEST_F(ReportWritesTest, WrittenReportIsReadBack) {
    engine::CKalvexDoc& document =
        Run("REMOTE a srv@V\nLOCAL x = a\nPUT a HREP 2024 3 10 6 55.5\n"
            "GET a HREP 2024 3 10 6\n:c\nIF NOT READY a.HREP GOTO c\nSET x = a.HREP",
            10);
    EXPECT_EQ(Value(document, "x"), "171:55.50");
}

TEST_F(ReportWritesTest, SlotIsLeftAlone) {
    engine::CKalvexDoc& document =
        Run("REMOTE a srv@V\nLOCAL x = a\nPUT a HREP 2024 3 10 6 55.5", 5);
    EXPECT_EQ(Link(document, "a").GetRequestState(value::KindHour), RequestNone);
    EXPECT_EQ(Stored(document, "a", value::KindHour), "/0");
}

}  // namespace
}  // namespace kalvex::sources
