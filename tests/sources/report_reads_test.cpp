#include <gmock/gmock.h>

#include "support/source_world.h"

namespace kalvex::sources {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// The clock stands at 2024-03-10 07:00:00.
class ReportReadsTest : public support::SourceWorld {
  protected:
    // What the line asks of the server; on failure the error on which it stands.
    std::string Asks(const std::string& line) {
        engine::CKalvexDoc& document =
            Run("REMOTE a srv@V\nLOCAL t = MAKE_TIME 2024 3 10 7 23 45\nLOCAL moment = t\n"
                "LOCAL rok = 2023\nLOCAL cztery = 4\nLOCAL abcde = 2023\n" +
                    line,
                2);
        const std::vector<std::string> calls = Calls("Add");
        if (document.State().m_nCurrentLine != 7) return "error " + Error(document);
        return calls.empty() ? "nothing" : calls.front().substr(calls.front().find(' ') + 1);
    }
};

TEST_F(ReportReadsTest, HourByItsDate) {
    EXPECT_EQ(Asks("GET a HREP 2024 3 10 7"), "V 2024-03-10 07:00:00");
    EXPECT_EQ(Asks("GET a HREP rok cztery cztery cztery"), "V 2023-04-04 04:00:00");
    EXPECT_EQ(Asks("GET a.DREP HREP 2024 3 10 7"), "V 2024-03-10 07:00:00");
    EXPECT_EQ(Asks("GET a HREP 2024 4 31 5"), "V 2024-05-01 05:00:00");
}

TEST_F(ReportReadsTest, HourWithAnOffset) {
    EXPECT_EQ(Asks("GET a HREP 2024 3 10 7 -24"), "V 2024-03-09 07:00:00");
    EXPECT_EQ(Asks("GET a HREP 2024 3 10 7 - 25"), "V 2024-03-09 06:00:00");
    EXPECT_EQ(Asks("GET a HREP 2024 3 10 23 1"), "V 2024-03-11 00:00:00");
    EXPECT_EQ(Asks("GET a HREP 2024 3 10 7 cztery"), "V 2024-03-10 11:00:00");
    EXPECT_EQ(Asks("GET a HREP 2024 3 10 7 -cztery"), "V 2024-03-10 07:00:00");
}

TEST_F(ReportReadsTest, OffsetThatSaysNothingMovesNothing) {
    EXPECT_EQ(Asks("GET a HREP 2024 3 10 7 brak"), "V 2024-03-10 07:00:00");
    EXPECT_EQ(Asks("GET a HREP 2024 3 10 7 ;"), "V 2024-03-10 07:00:00");
    EXPECT_EQ(Asks("GET a DREP 2024 3 10 brak"), "V 2024-03-10 00:00:00");
}

TEST_F(ReportReadsTest, HourByATime) {
    EXPECT_EQ(Asks("GET a HREP t"), "V 2024-03-10 07:23:45");
    EXPECT_EQ(Asks("GET a HREP t -1"), "V 2024-03-10 06:23:45");
    EXPECT_EQ(Asks("GET a HREP t - 1"), "V 2024-03-10 06:23:45");
    EXPECT_EQ(Asks("GET a HREP t -49"), "V 2024-03-08 06:23:45");
    EXPECT_EQ(Asks("GET a HREP 2024 3"), "V 1970-01-01 04:33:44");
}

TEST_F(ReportReadsTest, SignsAreJoinedOnlyWhereTheyMayStand) {
    EXPECT_EQ(Asks("GET a HREP 2024 3 - 10 7"), "error 11 Niepoprawna liczba parametrów");
    EXPECT_EQ(Asks("GET a HREP 2024 - 3 10 7"), "error 11 Niepoprawna data");
    EXPECT_EQ(Asks("GET a HREP - 2024 3 10 7"), "error 11 Niepoprawna liczba parametrów");
    EXPECT_EQ(Asks("GET a SREP - 2024 5"), "error 11 Niepoprawna liczba parametrów");
}

TEST_F(ReportReadsTest, DaysGoThroughTheCalendar) {
    EXPECT_EQ(Asks("GET a HREP 2024 3 30 12 24"), "V 2024-03-31 12:00:00");
    EXPECT_EQ(Asks("GET a HREP 2024 3 30 12 25"), "V 2024-03-31 13:00:00");
    EXPECT_EQ(Asks("GET a HREP 2024 3 31 1 1"), "V 2024-03-31 03:00:00");
    EXPECT_EQ(Asks("GET a HREP 2024 4 1 7 -48"), "V 2024-03-30 07:00:00");
    EXPECT_EQ(Asks("GET a HREP 2024 3 10 0 -1"), "V 2024-03-09 23:00:00");
    EXPECT_EQ(Asks("GET a DREP 2024 3 31 1"), "V 2024-04-01 00:00:00");
    EXPECT_EQ(Asks("GET a DREP 2024 10 27 1"), "V 2024-10-28 00:00:00");
}

TEST_F(ReportReadsTest, OffsetsFarAway) {
    EXPECT_EQ(Asks("GET a DREP 2024 3 10 1000"), "V 2026-12-05 00:00:00");
    EXPECT_EQ(Asks("GET a DREP 2024 3 10 -1001"), "V 2021-06-13 00:00:00");
    EXPECT_EQ(Asks("GET a HREP 2024 3 10 7 24025"), "V 2026-12-06 08:00:00");
    EXPECT_EQ(Asks("GET a DREP 2024 3 10 2000000000"), "V 3119-05-10 00:00:00");
    EXPECT_EQ(Asks("GET a MREP 2024 3 -2000000000"), "V 1970-01-01 00:00:00");
}

TEST_F(ReportReadsTest, Day) {
    EXPECT_EQ(Asks("GET a DREP 2024 3 10"), "V 2024-03-10 00:00:00");
    EXPECT_EQ(Asks("GET a DREP 2024 3 1 -1"), "V 2024-02-29 00:00:00");
    EXPECT_EQ(Asks("GET a DREP 2024 3 1 - 1"), "V 2024-02-29 00:00:00");
    EXPECT_EQ(Asks("GET a DREP t"), "V 2024-03-10 07:23:45");
    EXPECT_EQ(Asks("GET a DREP t - 1"), "V 2024-03-09 07:23:45");
}

TEST_F(ReportReadsTest, Month) {
    EXPECT_EQ(Asks("GET a MREP 2024 3"), "V 2024-03-01 00:00:00");
    EXPECT_EQ(Asks("GET a MREP 2024 1 -1"), "V 2023-12-01 00:00:00");
    EXPECT_EQ(Asks("GET a MREP 2024 1 - 1"), "V 2023-12-01 00:00:00");
    EXPECT_EQ(Asks("GET a MREP rok 3"), "V 2023-03-01 00:00:00");
    EXPECT_EQ(Asks("GET a MREP t"), "V 2024-03-10 07:23:45");
    EXPECT_EQ(Asks("GET a MREP t - 1"), "V 2024-02-10 07:23:45");
    EXPECT_EQ(Asks("GET a MREP 12345"), "V 1970-01-01 04:25:45");
    EXPECT_EQ(Asks("GET a MREP 2024"), "error 11 Niepoprawna liczba parametrów");
    EXPECT_EQ(Asks("GET a MREP brak 3"), "error 11 Niepoprawna liczba parametrów");
}

TEST_F(ReportReadsTest, SpanOfAYearOrOfATimeByTheLengthOfTheToken) {
    EXPECT_EQ(Asks("GET a SREP 2024 5"), "V 2024-01-01 00:00:05");
    EXPECT_EQ(Asks("GET a SREP rok 6"), "V 2023-01-01 00:00:06");
    EXPECT_EQ(Asks("GET a SREP moment 7"), "V 2024-03-10 07:00:07");
    EXPECT_EQ(Asks("GET a SREP abcde 1"), "V 1970-01-01 01:00:01");
    EXPECT_EQ(Asks("GET a SREP 2024 - 5"), "V 2023-12-31 23:59:55");
    EXPECT_EQ(Asks("GET a SREP t 1"), "error 11 Niepoprawna data");
    EXPECT_EQ(Asks("GET a SREP 1969 1"), "error 11 Niepoprawna data");
    EXPECT_EQ(Asks("GET a SREP 2024"), "error 11 Niepoprawna liczba parametrów");
    EXPECT_EQ(Asks("GET a SREP brak 1"), "error 11 Niepoprawna liczba parametrów");
    EXPECT_EQ(Asks("GET a SREP niema 1"), "error 11 Niepoprawna liczba parametrów");
}

TEST_F(ReportReadsTest, DatesOutOfRangeAreRefused) {
    for (const char* date : {"1969 12 31 23", "3001 1 1 0", "2024 0 1 0", "2024 13 1 0",
                             "2024 3 0 7", "2024 3 32 7", "2024 3 10 24", "2024 3 10 -1"}) {
        EXPECT_EQ(Asks("GET a HREP " + std::string(date)), "error 11 Niepoprawna data") << date;
    }
    EXPECT_EQ(Asks("GET a HREP 3000 12 31 23"), "V 3000-12-31 23:00:00");
    EXPECT_EQ(Asks("GET a HREP 1970 1 1 0"), "V 1970-01-01 00:00:00");
}

TEST_F(ReportReadsTest, MissingPartsAreRefused) {
    EXPECT_EQ(Asks("GET a HREP"), "error 11 Niepoprawna liczba parametrów");
    EXPECT_EQ(Asks("GET a HREP brak"), "error 11 Niepoprawna liczba parametrów");
    EXPECT_EQ(Asks("GET a HREP 2024 3 10"), "error 11 Niepoprawna liczba parametrów");
    EXPECT_EQ(Asks("GET a HREP 2024 3 brak 7"), "error 11 Niepoprawna liczba parametrów");
    EXPECT_EQ(Asks("GET a HREP 2024 13 brak 7"), "error 11 Niepoprawna liczba parametrów");
}

TEST_F(ReportReadsTest, WordsThatAreUnknown) {
    EXPECT_EQ(Asks("GET brak HREP 2024 3 10 7"), "error 3 brak");
    EXPECT_EQ(Asks("GET brak.HREP"), "error 3 brak.HREP");
    EXPECT_EQ(Asks("GET a ARCH 2024 3 10 7"), "error 1 ARCH");
    EXPECT_EQ(Asks("GET a hrep 2024 3 10 7"), "error 1 hrep");
    EXPECT_EQ(Asks("GET a 2024 3 10 7"), "error 1 2024");
}

TEST_F(ReportReadsTest, FailureIsLoggedOnce) {
    Run("REMOTE a srv@V\nGET a HREP 2024 13 1 0", 20);
    EXPECT_THAT(NewLog(), testing::Contains("main.kx : Linia 2 - Inny błąd : Niepoprawna data"));
}

TEST_F(ReportReadsTest, CurrentDataAsksForNothing) {
    EXPECT_EQ(Asks("GET a CURDATA"), "nothing");
    EXPECT_EQ(Asks("GET a CURDATA 2024 brak"), "nothing");
}

TEST_F(ReportReadsTest, LocalVariableAsksForNothing) {
    EXPECT_EQ(Asks("GET t HREP 2024 3 10 7"), "nothing");
}

TEST_F(ReportReadsTest, PointerAsksForItsTarget) {
    Plant(
        "'variables': {'V': {'current': [{'value': 1}], 'hour': [{'time': "
        "'2024-03-10 06:00:00', 'value': 1.5, 'status': 256}]}}");
    engine::CKalvexDoc& document =
        Run("REMOTE a srv@V\nPOINTER p\nSETPTR p = \"a\"\nGET p HREP 2024 3 10 6\n:c\n"
            "IF NOT READY p.HREP GOTO c\nLOCAL x = p.HREP\nLOCAL k = 0\n"
            "IF REP_INITED p.HREP THEN\nSET k = 1\nENDIF\nGET p.HREP\nPUT p HREP 2024 3 10 5 7\n"
            "INIT p HREP 2024 3 10 5",
            10);
    EXPECT_EQ(document.State().m_nCurrentLine, 14);
    EXPECT_EQ(Value(document, "x"), "171:1.50");
    EXPECT_EQ(Value(document, "k"), "171:1.00");
    EXPECT_THAT(
        Calls("HourReport"),
        ElementsAre("AddHourReportRequest V 2024-03-10 06:00:00", "MakeHourReportRequest",
                    "AddHourReportRequest V 2024-03-10 06:00:00", "MakeHourReportRequest",
                    "AddHourReportModifyRequest V 2024-03-10 05:00:00 7/32768",
                    "MakeHourReportRequest", "MakeHourReportInitRequest V 2024-03-10 05:00:00"));
}

TEST_F(ReportReadsTest, ConditionsOnAVariableThatIsNotThereAreFalse) {
    for (const char* word : {"READY", "REP_LOADED", "REP_INITED"}) {
        engine::CKalvexDoc& document =
            Run("LOCAL k = 0\nIF " + std::string(word) + " brak.HREP THEN\nSET k = 1\nENDIF", 5);
        EXPECT_EQ(Value(document, "k"), "171:0.00") << word;
        EXPECT_EQ(document.LastError().m_nErrorCode, operands::ErrorUndefinedVariable) << word;
    }
}

TEST_F(ReportReadsTest, ByNameAsksForTheTimeOfTheValueAgain) {
    Plant(
        "'variables': {'V': {'current': [{'value': 1}], 'hour': [{'time': "
        "'2024-03-10 06:00:00', 'value': 1.5}]}}");
    engine::CKalvexDoc& document =
        Run("REMOTE a srv@V\nLOCAL x = a\nGET a HREP 2024 3 10 6\n:c\n"
            "IF NOT READY a.HREP GOTO c\nGET a.HREP\nGET a.DREP\nGET a",
            5);
    EXPECT_EQ(document.State().m_nCurrentLine, 8);
    EXPECT_THAT(Calls("Add"), ElementsAre("AddHourReportRequest V 2024-03-10 06:00:00",
                                          "AddHourReportRequest V 2024-03-10 06:00:00"));
}

TEST_F(ReportReadsTest, ByNameWithoutAValueSucceedsAndAsksForNothing) {
    Plant("'variables': {'V': {}}");
    engine::CKalvexDoc& document = Run("REMOTE a srv@V\nGET a.HREP\nGET a.XYZ", 1);
    EXPECT_EQ(document.State().m_nCurrentLine, 3);
    EXPECT_THAT(Calls("Add"), IsEmpty());
}

TEST_F(ReportReadsTest, AnswerLandsInTheSlot) {
    Plant(
        "'latencyTicks': 20, 'variables': {'V': {'current': [{'value': 1}], 'hour': [{'time': "
        "'2024-03-10 06:00:00', 'value': 100.25, 'status': 128}]}}");
    engine::CKalvexDoc& document = Start(
        "REMOTE a srv@V\nLOCAL x = a\nGET a HREP 2024 3 10 7 -1\n"
        "LOCAL k = 0\nIF READY a.HREP THEN\nSET k = 1\nENDIF\n"
        ":c\nIF NOT READY a.HREP GOTO c\nSET x = a.HREP\n"
        "IF REP_LOADED a.HREP THEN\nSET k = k + 10\nENDIF\n"
        "IF REP_INITED a.HREP THEN\nSET k = k + 100\nENDIF");
    Tick(10);
    EXPECT_EQ(Link(document, "a").GetRequestState(value::KindHour), RequestWaiting);
    Tick(20);
    EXPECT_EQ(Value(document, "x"), "171:100.25");
    EXPECT_EQ(Value(document, "k"), "171:10.00");
    value::CVal value;
    document.Variables().Find("x")->GetValue(value, value::KindCurrent, 0);
    EXPECT_EQ(value.GetStatus(), 128);
    EXPECT_EQ(value.GetTime(), Local("2024-03-10 06:00:00"));
}

TEST_F(ReportReadsTest, ReadingTooSoonStandsOnTheLineUntilTheAnswer) {
    Plant(
        "'latencyTicks': 20, 'variables': {'V': {'current': [{'value': 1}], 'hour': [{'time': "
        "'2024-03-10 06:00:00', 'value': 100.25}]}}");
    engine::CKalvexDoc& document =
        Start("REMOTE a srv@V\nLOCAL x = a\nGET a HREP 2024 3 10 6\nSET x = a.HREP");
    Tick(20);
    EXPECT_EQ(Error(document), "15 a.HREP");
    Tick(10);
    EXPECT_EQ(Value(document, "x"), "171:100.25");
    EXPECT_THAT(NewLog(), ElementsAre("main.kx : Linia 4 - Błąd pobrania wartości zdalnej zmiennej "
                                      ": a.HREP"));
}

TEST_F(ReportReadsTest, FailedRequestIsReadyAndCannotBeRead) {
    Plant("'variables': {'V': {'current': [{'value': 1}]}}");
    engine::CKalvexDoc& document =
        Run("REMOTE a srv@V\nLOCAL x = a\nGET a HREP 2024 3 10 3\n:c\n"
            "IF NOT READY a.HREP GOTO c\nSET x = a.HREP",
            10);
    EXPECT_EQ(Error(document), "15 a.HREP");
    EXPECT_EQ(document.State().m_nCurrentLine, 5);
    EXPECT_EQ(Link(document, "a").GetRequestState(value::KindHour), RequestFailed);
}

}  // namespace
}  // namespace kalvex::sources
