#include <gmock/gmock.h>

#include "support/source_world.h"

namespace kalvex::sources {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ValueSetsTest : public support::SourceWorld {
  protected:
    // What the line asks of the server; on failure the error on which it stands.
    std::string Asks(const std::string& line) {
        engine::CKalvexDoc& document =
            Run("REMOTE a srv@V\nLOCAL x = 5\nLIST L\nPOINTER p\nSETPTR p = \"a\"\nPOINTER q\n"
                "SETPTR q = \"x\"\nLOCAL t = MAKE_TIME 2024 3 10 7 23 45\n" +
                    line,
                2);
        const std::vector<std::string> calls = Calls("Add");
        if (document.State().m_nCurrentLine != 9) return "error " + Error(document);
        return calls.empty() ? "nothing" : calls.front();
    }

    std::string Texts(engine::CKalvexDoc& document) { return Value(document, "L"); }
};

TEST_F(ValueSetsTest, RangeOfEachKind) {
    EXPECT_EQ(Asks("MGET a ARCH FROM 2024 3 TO 2024 4"),
              "AddArchiveDataRequest V 2024-03-01 00:00:00 - 2024-04-01 00:00:00 into a list");
    EXPECT_EQ(Asks("MGET a HREP FROM 2024 3 10 0 TO 2024 3 10 4"),
              "AddHourReportRequest V 2024-03-10 00:00:00 - 2024-03-10 04:00:00 into a list");
    EXPECT_EQ(Asks("MGET a DREP FROM 2024 3 1 TO 2024 3 10 4 5 6"),
              "AddDayReportRequest V 2024-03-01 00:00:00 - 2024-03-10 04:05:06 into a list");
    EXPECT_EQ(Asks("MGET a MREP FROM 2023 TO 2024"),
              "AddMonthReportRequest V 2023-01-01 00:00:00 - 2024-01-01 00:00:00 into a list");
    EXPECT_EQ(Asks("MGET a SREP FROM 2023 TO 2024"),
              "AddSpanReportRequest V 2023-01-01 00:00:00 - 2024-01-01 00:00:00 into a list");
}

TEST_F(ValueSetsTest, RangeAsItStands) {
    EXPECT_EQ(Asks("MGET a HREP FROM 2024 4 TO 2024 3"),
              "AddHourReportRequest V 2024-04-01 00:00:00 - 2024-03-01 00:00:00 into a list");
    EXPECT_EQ(Asks("MGET a HREP FROM 2024 3 TO 2024 3"),
              "AddHourReportRequest V 2024-03-01 00:00:00");
    EXPECT_EQ(Asks("MGET a ARCH FROM 2024 3 TO 2024 3"),
              "AddArchiveDataRequest V 2024-03-01 00:00:00 into a list");
}

TEST_F(ValueSetsTest, NumberFrom3001OnIsATime) {
    EXPECT_EQ(Asks("MGET a HREP FROM 3001 13 99 TO t"),
              "AddHourReportRequest V 1970-01-01 01:50:01 - 2024-03-10 07:23:45 into a list");
}

TEST_F(ValueSetsTest, PointerToARemoteVariable) {
    EXPECT_EQ(Asks("MGET p HREP FROM 2024 3 TO 2024 4"),
              "AddHourReportRequest V 2024-03-01 00:00:00 - 2024-04-01 00:00:00 into a list");
    EXPECT_EQ(Asks("MGET q HREP FROM 2024 3 TO 2024 4"), "error 3 q");
}

TEST_F(ValueSetsTest, WordsThatAreWrong) {
    EXPECT_EQ(Asks("MGET brak HREP FROM 2024 3 TO 2024 4"), "error 3 brak");
    EXPECT_EQ(Asks("MGET x HREP FROM 2024 3 TO 2024 4"), "error 3 x");
    EXPECT_EQ(Asks("MGET a CURDATA FROM 2024 3 TO 2024 4"), "error 1 CURDATA");
    EXPECT_EQ(Asks("MGET a arch FROM 2024 3 TO 2024 4"), "error 1 arch");
    EXPECT_EQ(Asks("MGET a HREP 2024 3"), "error 1 2024");
    EXPECT_EQ(Asks("MGET a HREP from 2024 3 TO 2024 4"), "error 1 from");
    EXPECT_EQ(Asks("MGET a HREP FROM 2024 3 DO 2024 4"), "error 1 FROM");
    EXPECT_EQ(Asks("MGET a HREP FROM 2024 3"), "error 1 FROM");
}

TEST_F(ValueSetsTest, DatesThatAreWrong) {
    EXPECT_EQ(Asks("MGET a HREP FROM 2024 13 TO 2024 4"), "error 19 2024 13 TO 2024 4");
    EXPECT_EQ(Asks("MGET a HREP FROM TO 2024 4"), "error 19 TO 2024 4");
    EXPECT_EQ(Asks("MGET a HREP FROM 2024 3 TO 2024 4 31 24"), "error 19 2024 4 31 24");
    EXPECT_EQ(Asks("MGET a HREP FROM 2024 3 TO"), "error 19");
    EXPECT_EQ(Asks("MGET a HREP FROM 1969 TO 2024"), "error 19 1969 TO 2024");
}

TEST_F(ValueSetsTest, DataAreCopiedBetweenTheBounds) {
    Plant(
        "'variables': {'V': {'archive': [{'time': '2024-02-29 23:59:59', 'value': 0}, "
        "{'time': '2024-03-01 00:00:00', 'value': 1}, {'time': '2024-03-01 00:00:01', 'value': 2, "
        "'status': 5}, {'time': '2024-03-31 23:59:59', 'value': 3}, "
        "{'time': '2024-04-01 00:00:00', 'value': 4}]}}");
    engine::CKalvexDoc& document =
        Run("REMOTE a srv@V\nLIST L\nADD L 99\nMGET a ARCH FROM 2024 3 TO 2024 4\n"
            "MGET a GETDATA L\nLOCAL n = L.COUNT\n:c\n"
            "IF NOT READY a.ARCH GOTO c\nMGET a GETDATA L\nMGET a GETDATA L",
            5);
    EXPECT_EQ(Value(document, "n"), "150:0");
    EXPECT_EQ(Texts(document), "[2 3]");
    const auto& elements =
        static_cast<operands::CVariableList&>(*document.Variables().Find("L")).Elements();
    EXPECT_EQ(elements[0].GetStatus(), 5);
    EXPECT_EQ(elements[0].GetTime(), Local("2024-03-01 00:00:01"));
    EXPECT_EQ(Link(document, "a").GetArchValues().GetSize(), 4u);
}

TEST_F(ValueSetsTest, DataComeThroughAPointer) {
    Plant(
        "'variables': {'V': {'hour': [{'time': '2024-03-10 02:00:00', 'value': 1}, "
        "{'time': '2024-03-10 03:00:00', 'value': 2}]}}");
    engine::CKalvexDoc& document =
        Run("REMOTE a srv@V\nPOINTER p\nSETPTR p = \"a\"\nLIST L\n"
            "MGET p HREP FROM 2024 3 10 1 TO 2024 3 10 3\n:c\nIF NOT READY p.HREP GOTO c\n"
            "MGET p GETDATA L",
            5);
    EXPECT_EQ(Texts(document), "[1]");
}

TEST_F(ValueSetsTest, RangeTheWrongWayRoundCopiesNothing) {
    Plant("'variables': {'V': {'hour': [{'time': '2024-03-10 02:00:00', 'value': 1}]}}");
    engine::CKalvexDoc& document =
        Run("REMOTE a srv@V\nLIST L\nMGET a HREP FROM 2024 3 10 4 TO 2024 3 10 1\n"
            ":c\nIF NOT READY a.HREP GOTO c\nMGET a GETDATA L",
            5);
    EXPECT_EQ(document.State().m_nCurrentLine, 6);
    EXPECT_EQ(Texts(document), "[]");
}

TEST_F(ValueSetsTest, SingleReportFillsTheSlotAndNoList) {
    Plant("'variables': {'V': {'hour': [{'time': '2024-03-10 02:00:00', 'value': 1}]}}");
    engine::CKalvexDoc& document =
        Run("REMOTE a srv@V\nLIST L\nADD L 99\n"
            "LOCAL s = 0\nSLEEP 0\n:d\nMGET a HREP FROM 2024 3 10 2 TO 2024 3 10 2\n"
            ":c\nIF NOT READY a.HREP GOTO c\nMGET a GETDATA L\nLOCAL x = a.HREP",
            10);
    EXPECT_EQ(Texts(document), "[]");
    EXPECT_EQ(Value(document, "x"), "150:1");
}

TEST_F(ValueSetsTest, AnotherRequestBetweenEmptiesTheData) {
    Plant("'variables': {'V': {'archive': [{'time': '2024-03-10 02:00:00', 'value': 1}]}}");
    engine::CKalvexDoc& document =
        Run("REMOTE a srv@V\nLIST L\nMGET a ARCH FROM 2024 3 TO 2024 4\n:c\n"
            "IF NOT READY a.ARCH GOTO c\nGET a DREP 2024 3 9\nMGET a GETDATA L",
            5);
    EXPECT_EQ(document.State().m_nCurrentLine, 7);
    EXPECT_EQ(Texts(document), "[]");
}

TEST_F(ValueSetsTest, FailedRequestLeavesNothingToCopy) {
    Plant(
        "'variables': {'V': {'readError': 8, 'archive': [{'time': '2024-03-10 02:00:00', "
        "'value': 1}]}}");
    engine::CKalvexDoc& document =
        Run("REMOTE a srv@V\nLIST L\nADD L 99\nMGET a ARCH FROM 2024 3 TO 2024 4\n"
            ":c\nIF NOT READY a.ARCH GOTO c\nMGET a GETDATA L",
            5);
    EXPECT_EQ(Link(document, "a").GetRequestState(value::KindArchive), RequestFailed);
    EXPECT_EQ(Texts(document), "[]");
}

TEST_F(ValueSetsTest, ListsThatAreNone) {
    EXPECT_EQ(Asks("MGET a GETDATA brak"), "error 3 brak");
    EXPECT_EQ(Asks("MGET a GETDATA x"), "error 21 x");
    EXPECT_EQ(Asks("MGET x GETDATA L"), "error 3 x");
    EXPECT_EQ(Asks("MPUT a HREP brak"), "error 3 brak");
    EXPECT_EQ(Asks("MPUT a HREP x"), "error 21 x");
}

// ---- writing

TEST_F(ValueSetsTest, WritesOfAListGoTogether) {
    engine::CKalvexDoc& document =
        Run("REMOTE a srv@V\nLIST L\nLOCAL od = MAKE_TIME 2024 3 9 6\n"
            "LOCAL ko = MAKE_TIME 2024 3 9 8\nFILL_IN_LIST L 5 4 od ko HREP\n"
            "MPUT a HREP L",
            5);
    EXPECT_EQ(document.State().m_nCurrentLine, 6);
    EXPECT_THAT(Calls("Request"),
                ElementsAre("AddHourReportModifyRequest V 2024-03-09 06:00:00 5.00/32772",
                            "AddHourReportModifyRequest V 2024-03-09 07:00:00 5.00/32772",
                            "AddHourReportModifyRequest V 2024-03-09 08:00:00 5.00/32772",
                            "MakeHourReportRequest"));
    EXPECT_EQ(static_cast<operands::CVariableList&>(*document.Variables().Find("L")).GetIterator(),
              3);
}

TEST_F(ValueSetsTest, UnknownElementsAreWrittenToo) {
    Run("REMOTE a srv@V\nLIST L\nADD L 7\nMOVE_FIRST L\nSET_STATUS L 1\nMPUT a DREP L", 5);
    EXPECT_THAT(Calls("Request"),
                ElementsAre("AddDayReportModifyRequest V 1970-01-01 01:00:00 7.00/32769",
                            "MakeDayReportRequest"));
}

TEST_F(ValueSetsTest, ArchiveIsSortedAndUnmarked) {
    engine::CKalvexDoc& document = Run(
        "REMOTE a srv@V\nLIST L\nLOCAL t1 = MAKE_TIME 2024 3 9 6\nLOCAL t2 = MAKE_TIME 2024 3 9 7\n"
        "LOCAL t3 = MAKE_TIME 2024 3 9 2\nFILL_IN_LIST L 5 4 t1 t2 HREP\n"
        "FILL_IN_LIST L 7 0 t3 t3 HREP\nMPUT a ARCH L\nMPUT a ARCH L",
        5);
    EXPECT_EQ(Texts(document), "[5.00 5.00 7.00]");
    EXPECT_THAT(Calls("Request"),
                ElementsAre("AddArchiveModifyRequest V 2024-03-09 02:00:00 - 2024-03-09 07:00:00 "
                            "7.00/0 5.00/4 5.00/4",
                            "MakeArchiveModifyRequest",
                            "AddArchiveModifyRequest V 2024-03-09 02:00:00 - 2024-03-09 07:00:00 "
                            "7.00/0 5.00/4 5.00/4",
                            "MakeArchiveModifyRequest"));
}

TEST_F(ValueSetsTest, EmptyListWritesNothing) {
    EXPECT_EQ(Asks("MPUT a HREP L"), "nothing");
    EXPECT_EQ(Asks("MPUT a ARCH L"), "nothing");
}

TEST_F(ValueSetsTest, WritingThroughAPointer) {
    Run("REMOTE a srv@V\nPOINTER p\nSETPTR p = \"a\"\nLIST L\nADD L 7\nMPUT p MREP L", 5);
    EXPECT_THAT(Calls("Add"),
                ElementsAre("AddMonthReportModifyRequest V 1970-01-01 01:00:00 7.00/32768"));
}

TEST_F(ValueSetsTest, WrongWordsInWriting) {
    EXPECT_EQ(Asks("MPUT x HREP L"), "error 3 x");
    EXPECT_EQ(Asks("MPUT brak HREP L"), "error 3 brak");
    EXPECT_EQ(Asks("MPUT a CURDATA L"), "error 1 CURDATA");
    EXPECT_EQ(Asks("MPUT a GETDATA L"), "error 1 GETDATA");
}

TEST_F(ValueSetsTest, RefusedWritesAreLoggedOneByOne) {
    Plant("'variables': {'V': {'writeError': 9, 'current': [{'value': 1}]}}");
    Run("REMOTE a srv@V\nLIST L\nADD L 7\nADD L 8\nLOCAL x = a\nMPUT a DREP L\nMPUT a ARCH L", 5);
    EXPECT_THAT(NewLog(), ElementsAre("main.kx - Błąd modyfikacji raportu dobowego (srv@V)",
                                      "main.kx - Błąd modyfikacji raportu dobowego (srv@V)",
                                      "main.kx - Błąd modyfikacji danych archiwalnych - kod 9, nie "
                                      "przyjęto żadnej wartości (srv@V)"));
}

TEST_F(ValueSetsTest, WritesThatABreakLeavesWithoutAnAnswerAreTold) {
    Plant(
        "'latencyTicks': 10, 'outages': [{'fromTick': 6, 'toTick': 40}], "
        "'variables': {'V': {'current': [{'value': 1}]}}");
    Run("REMOTE a srv@V\nLIST L\nADD L 7\nMPUT a ARCH L", 60);
    EXPECT_THAT(NewLog(), ElementsAre("Połączenie z srv zerwane (utrata połączenia)",
                                      "Zapisy i polecenia bez odpowiedzi źródła srv: 1, zostaną "
                                      "wysłane ponownie"));
    EXPECT_EQ(Connection().WritesWaiting(), 0u);
}

}  // namespace
}  // namespace kalvex::sources
