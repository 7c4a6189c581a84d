#include <gmock/gmock.h>

#include "sources/VariableRemote.h"
#include "support/source_world.h"

namespace kalvex::sources {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class RemoteVariableTest : public support::SourceWorld {
  protected:
    // "a" bound to V, with its data.
    engine::CKalvexDoc& Declare(std::string_view plantContent) {
        Plant(plantContent);
        engine::CKalvexDoc& document = Run("REMOTE a srv@V", 2);
        Calls("");
        return document;
    }

    static operands::CVariable& Variable(engine::CKalvexDoc& document,
                                         std::string_view name = "a") {
        return *document.Variables().Find(name);
    }

    // The answer of GetValue with what it read, as "answer text/status".
    static std::string Read(engine::CKalvexDoc& document, value::ValueKind kind, int mode = 0) {
        value::CVal value;
        const int answer = Variable(document).GetValue(value, kind, mode);
        return std::to_string(answer) + " " + value::ValueToText(value) + "/" +
               std::to_string(value.GetStatus());
    }

    static std::int64_t Time(engine::CKalvexDoc& document, value::ValueKind kind) {
        std::int64_t time = -7;
        EXPECT_EQ(Variable(document).GetTime(&time, kind), 1);
        return time;
    }

    static int StatusOf(engine::CKalvexDoc& document, value::ValueKind kind) {
        std::uint16_t status = 0xFFFF;
        EXPECT_EQ(Variable(document).GetStatus(&status, kind), 1);
        return status;
    }

    static constexpr const char* kPlain =
        "'variables': {'V': {'current': [{'value': 12.5, 'status': 16, 'time': 1710050000}]}}";
};

TEST_F(RemoteVariableTest, DeclarationSplitsTheTargetAtTheFirstAt) {
    engine::CKalvexDoc& document = Run("REMOTE a srv@V@W\nREMOTE a srv@inny", 2);
    EXPECT_EQ(Link(document, "a").GetSource(), "srv");
    EXPECT_EQ(Link(document, "a").GetVariable(), "V@W");
    EXPECT_EQ(&Link(document, "a").GetDocument(), &document);
    EXPECT_EQ(document.Variables().GetSize(), 1u);
    EXPECT_EQ(Variable(document).GetKind(), operands::VariableRemote);
    EXPECT_THAT(Calls("Register"), ElementsAre("RegisterVariable V@W"));
}

TEST_F(RemoteVariableTest, BadDeclarationsStopTheScript) {
    engine::CKalvexDoc& document = Run("REMOTE a.b srv@V", 2);
    EXPECT_EQ(Error(document), "23 a.b");
    EXPECT_EQ(document.GetStateWord(), engine::StatePaused);
    engine::CKalvexDoc& other = Run("REMOTE a srv", 2);
    EXPECT_EQ(Error(other), "2 srv");
    EXPECT_EQ(other.GetStateWord(), engine::StatePaused);
    EXPECT_EQ(other.Variables().GetSize(), 0u);
}

TEST_F(RemoteVariableTest, ReadingWaitsForDataAndGoesOn) {
    Plant("'connectAtTick': 20, 'variables': {'V': {'current': [{'value': 12.5}]}}");
    engine::CKalvexDoc& document = Start("REMOTE a srv@V\nLOCAL x\nSET x = a");
    Tick(19);
    EXPECT_EQ(Error(document), "27 a");
    EXPECT_FALSE(document.State().m_bErrorStanding);
    EXPECT_THAT(NewLog(platform::LogEvents),
                ElementsAre("main.kx : Linia 3 - Oczekiwanie na pobranie danych "
                            "bieżących : a"));
    Tick(1);
    EXPECT_EQ(Value(document, "x"), "171:12.50");
    EXPECT_EQ(document.State().m_nCurrentLine, 3);
}

TEST_F(RemoteVariableTest, ServerThatGoesAwayHoldsTheLine) {
    Plant(
        "'outages': [{'fromTick': 20, 'toTick': 40}], 'variables': {'V': {'current': "
        "[{'value': 1}]}}");
    engine::CKalvexDoc& document = Start("REMOTE a srv@V\nLOCAL n = 0\n:p\nSET n = n + a\nGOTO p");
    Tick(19);
    Tick(1);
    EXPECT_EQ(Error(document), "27 a");
    const std::string held = Value(document, "n");
    Tick(19);
    EXPECT_EQ(Value(document, "n"), held);
    Tick(1);
    EXPECT_NE(Value(document, "n"), held);
    EXPECT_EQ(Error(document), "0");
}

TEST_F(RemoteVariableTest, AnswersOfGetValue) {
    engine::CKalvexDoc& document = Declare(kPlain);
    EXPECT_EQ(Read(document, value::KindCurrent), "1 12.50/16");
    EXPECT_EQ(Read(document, value::KindHour), "2 /0");
    EXPECT_EQ(Read(document, value::KindArchive), "2 /0");
    EXPECT_EQ(Read(document, value::KindNone), "2 /0");
    EXPECT_EQ(Read(document, value::KindArchive, 1), "2 /0");
}

TEST_F(RemoteVariableTest, WithoutDataTheAnswerIsNothingWhateverWasRead) {
    Plant("'dataAtTick': 10, 'variables': {'V': {'current': [{'value': 1}]}}");
    engine::CKalvexDoc& document = Run("REMOTE a srv@V\nSET a.HREP = 4", 5);
    EXPECT_EQ(Read(document, value::KindHour), "0 4.00/32768");
    EXPECT_EQ(Read(document, value::KindCurrent), "0 /0");
}

TEST_F(RemoteVariableTest, SuffixesOfNames) {
    Plant("'variables': {'V': {'current': [{'value': 7}]}}");
    engine::CKalvexDoc& document =
        Run("REMOTE a srv@V\nSET a.hrep = 4\nLOCAL x = a.HREP\nLOCAL y = a.CURDATA", 3);
    EXPECT_EQ(Value(document, "x"), "171:4.00");
    EXPECT_EQ(Value(document, "y"), "150:7");
    EXPECT_EQ(Error(Run("REMOTE a srv@V\nLOCAL x = a\nLOCAL y = a.XYZ", 3)), "15 a.XYZ");
    EXPECT_EQ(Error(Run("REMOTE a srv@V\nLOCAL x = a\nLOCAL y = a.ARCH", 3)), "15 a.ARCH");
}

// ---- unknown values

TEST_F(RemoteVariableTest, UnknownValueIsRefusedUnlessIgnored) {
    engine::CKalvexDoc& document =
        Declare("'variables': {'V': {'current': [{'value': 3.5, 'status': 1}]}}");
    EXPECT_EQ(Read(document, value::KindCurrent), "2 /0");
    EXPECT_EQ(Read(document, value::KindCurrent, 1), "1 3.50/1");
    EXPECT_EQ(Variable(document).SetIgnoreUnknown(true), 1);
    EXPECT_EQ(Read(document, value::KindCurrent), "1 3.50/1");
    Variable(document).SetIgnoreUnknown(false);
    EXPECT_EQ(Read(document, value::KindCurrent), "2 /0");
}

TEST_F(RemoteVariableTest, UnknownWithoutAValueIsRefusedEvenIfIgnored) {
    engine::CKalvexDoc& document =
        Declare("'variables': {'V': {'current': [{'value': null, 'status': 1}]}}");
    Variable(document).SetIgnoreUnknown(true);
    EXPECT_EQ(Read(document, value::KindCurrent), "2 /1");
}

TEST_F(RemoteVariableTest, NoValueIsRefused) {
    engine::CKalvexDoc& document = Declare("'variables': {'V': {}}");
    EXPECT_EQ(Read(document, value::KindCurrent), "2 /0");
    Variable(document).SetIgnoreUnknown(true);
    EXPECT_EQ(Read(document, value::KindCurrent), "2 /0");
}

TEST_F(RemoteVariableTest, IgnoringAppliesToOldAndNewVariables) {
    Plant("'variables': {'V': {'current': [{'value': 3.5, 'status': 1}]}}");
    engine::CKalvexDoc& document =
        Run("REMOTE a srv@V\nIGNORE_UNKNOWN_ON\nLOCAL x = a\nREMOTE b srv@V\nLOCAL y = b\n"
            "IGNORE_UNKNOWN_OFF\nREMOTE c srv@V\nLOCAL z = c",
            5);
    EXPECT_EQ(Value(document, "x"), "171:3.50");
    EXPECT_EQ(Value(document, "y"), "171:3.50");
    EXPECT_EQ(Error(document), "15 c");
    EXPECT_FALSE(Link(document, "a").IsIgnoreUnknown());
}

TEST_F(RemoteVariableTest, ReportSlotIsUsableOnlyWhenReady) {
    engine::CKalvexDoc& document = Declare(
        "'variables': {'V': {'hour': [{'time': 3600, 'value': 1, "
        "'status': 1}]}}");
    Variable(document).RequestRange(value::KindHour, 3600, 3600);
    EXPECT_EQ(Read(document, value::KindHour, 1), "2 /0");
    Tick(1);
    EXPECT_EQ(Read(document, value::KindHour), "2 /0");
    EXPECT_EQ(Read(document, value::KindHour, 1), "1 1/1");
    Variable(document).SetIgnoreUnknown(true);
    EXPECT_EQ(Read(document, value::KindHour), "1 1/1");
}

// ---- types, status words, times

TEST_F(RemoteVariableTest, TypeOfTheValue) {
    engine::CKalvexDoc& document =
        Declare("'variables': {'V': {'current': [{'value': 3, 'status': 1}]}}");
    operands::CVariable& variable = Variable(document);
    EXPECT_EQ(variable.GetValueType(value::KindCurrent, 1), value::ValueType::Int);
    EXPECT_EQ(variable.GetValueType(value::KindCurrent, 0), value::ValueType::None);
    EXPECT_EQ(variable.GetValueType(value::KindHour, 1), value::ValueType::None);
    EXPECT_EQ(variable.GetValueType(value::KindArchive, 1), value::ValueType::None);
}

TEST_F(RemoteVariableTest, StatusIsThatOfTheStoredValue) {
    engine::CKalvexDoc& document = Declare(
        "'latencyTicks': 5, 'variables': {'V': {'current': [{'value': 3, "
        "'status': 16}], 'hour': [{'time': 3600, 'value': 1, "
        "'status': 384}]}}");
    Tick(5);
    EXPECT_EQ(StatusOf(document, value::KindCurrent), 16);
    EXPECT_EQ(StatusOf(document, value::KindHour), 0);
    EXPECT_EQ(StatusOf(document, value::KindArchive), 1);
    EXPECT_EQ(StatusOf(document, value::KindNone), 1);
    Variable(document).RequestRange(value::KindHour, 3600, 3600);
    Tick(5);
    EXPECT_EQ(StatusOf(document, value::KindHour), 384);
    Variable(document).RequestRange(value::KindHour, 7, 7);
    EXPECT_EQ(StatusOf(document, value::KindHour), 384);
    EXPECT_EQ(Variable(document).IsReportLoaded(value::KindHour), 1);
    EXPECT_EQ(Variable(document).IsReportInited(value::KindHour), 1);
    EXPECT_EQ(Variable(document).IsReportLoaded(value::KindDay), 0);
    EXPECT_EQ(Variable(document).IsReportLoaded(value::KindCurrent), 0);
    EXPECT_EQ(Variable(document).IsReportInited(value::KindArchive), 0);
}

TEST_F(RemoteVariableTest, NewStatusGoesToTheServerMarked) {
    engine::CKalvexDoc& document = Declare(kPlain);
    EXPECT_EQ(Variable(document).SetStatus(4, value::KindCurrent), 1);
    EXPECT_THAT(Calls("Modify"), ElementsAre("AddCurrentDataModifyRequest V 12.50/32772",
                                             "MakeCurrentDataModifyRequest"));
    EXPECT_EQ(Read(document, value::KindCurrent), "1 12.50/32772");
    Variable(document).SetValue(value::CVal(3), value::KindDay);
    EXPECT_EQ(Variable(document).SetStatus(8, value::KindDay), 1);
    EXPECT_EQ(Read(document, value::KindDay), "1 3/32776");
    EXPECT_EQ(Variable(document).SetStatus(8, value::KindArchive), 0);
}

TEST_F(RemoteVariableTest, TimeOfAReportIsTheStartOfItsPeriod) {
    engine::CKalvexDoc& document = Declare(kPlain);
    value::CVal value(1);
    value.SetTime(Local("2024-03-10 07:23:45"));
    for (const value::ValueKind kind : value::kReportKinds)
        Variable(document).SetValue(value, kind);
    EXPECT_EQ(Time(document, value::KindCurrent), 1710050000);
    EXPECT_EQ(Time(document, value::KindHour), Local("2024-03-10 07:00:00"));
    EXPECT_EQ(Time(document, value::KindDay), Local("2024-03-10 00:00:00"));
    EXPECT_EQ(Time(document, value::KindMonth), Local("2024-03-01 00:00:00"));
    EXPECT_EQ(Time(document, value::KindSpan), Local("2024-03-10 07:00:00"));
    EXPECT_EQ(Time(document, value::KindArchive), 0);
    EXPECT_EQ(Time(document, value::KindNone), 0);
}

TEST_F(RemoteVariableTest, NewTimeOfAReportStaysHere) {
    engine::CKalvexDoc& document = Declare(kPlain);
    Variable(document).SetValue(value::CVal(77.5), value::KindHour);
    EXPECT_EQ(Variable(document).SetTime(Local("2024-03-09 06:23:45"), value::KindHour), 1);
    EXPECT_EQ(Read(document, value::KindHour), "1 77.50/32768");
    EXPECT_EQ(Time(document, value::KindHour), Local("2024-03-09 06:00:00"));
    EXPECT_THAT(Calls(""), IsEmpty());
}

TEST_F(RemoteVariableTest, NameAndText) {
    engine::CKalvexDoc& document = Declare(
        "'variables': {'V': {'current': [{'value': 1}, {'atTick': 5, "
        "'value': 2}]}}");
    Variable(document).SetLocked(true);
    Tick(5);
    std::string text;
    EXPECT_EQ(Variable(document).GetNameValueText(text, value::KindHour), 1);
    EXPECT_EQ(text, "a:2");
}

TEST_F(RemoteVariableTest, TextIsWrittenAsCurrentData) {
    engine::CKalvexDoc& document = Declare(kPlain);
    EXPECT_EQ(Variable(document).SetValueText("praca", value::KindDay), 1);
    EXPECT_THAT(Calls("Add"), ElementsAre("AddCurrentDataModifyRequest V praca/32768"));
}

TEST_F(RemoteVariableTest, CopyTakesStatusAndTimeAlong) {
    engine::CKalvexDoc& document = Declare(kPlain);
    operands::CVariableLocal source("x");
    value::CVal value(8);
    value.SetStatus(4);
    value.SetTime(1710000000);
    source.SetValue(value, value::KindDay);
    EXPECT_EQ(Variable(document).CopyFrom(&source, value::KindDay), 1);
    EXPECT_EQ(Read(document, value::KindDay), "1 8/32772");
    EXPECT_EQ(Variable(document).CopyFrom(nullptr, value::KindDay), 0);
    operands::CVariableList empty("l");
    EXPECT_EQ(Variable(document).CopyFrom(&empty, value::KindCurrent), 0);
    EXPECT_THAT(Calls(""), IsEmpty());
}

// ---- writing

TEST_F(RemoteVariableTest, WriteIsSeenAtOnceAndConfirmed) {
    engine::CKalvexDoc& document = Declare(
        "'latencyTicks': 10, 'variables': {'V': {'current': "
        "[{'value': 1}, {'atTick': 8, 'value': 2}]}}");
    EXPECT_EQ(Variable(document).SetValue(value::CVal(5), value::KindCurrent), 1);
    EXPECT_EQ(Read(document, value::KindCurrent), "1 5/32768");
    Tick(6);
    EXPECT_EQ(Read(document, value::KindCurrent), "1 2/0");
    Tick(4);
    EXPECT_EQ(Read(document, value::KindCurrent), "1 5/32768");
    EXPECT_THAT(NewLog(platform::LogTransmission), ElementsAre("Nawiązanie połączenia z srv"));
}

TEST_F(RemoteVariableTest, RefusedWriteStaysUntilTheNextUpdate) {
    engine::CKalvexDoc& document = Declare(
        "'variables': {'V': {'writeError': 9, 'current': [{'value': 1}, "
        "{'atTick': 20, 'value': 2}]}}");
    Variable(document).SetValue(value::CVal(5), value::KindCurrent);
    Tick(10);
    EXPECT_EQ(Read(document, value::KindCurrent), "1 5/32768");
    Tick(10);
    EXPECT_EQ(Read(document, value::KindCurrent), "1 2/0");
    EXPECT_THAT(NewLog(), ElementsAre("main.kx - Odrzucono zapis wartości 5 (kod 9) (srv@V)"));
}

TEST_F(RemoteVariableTest, AssignedReportValueMakesNoTraffic) {
    engine::CKalvexDoc& document = Declare(kPlain);
    EXPECT_EQ(Variable(document).SetValue(value::CVal(5), value::KindMonth), 1);
    EXPECT_EQ(Link(document, "a").GetRequestState(value::KindMonth), RequestReady);
    EXPECT_EQ(Variable(document).SetValue(value::CVal(5), value::KindArchive), 0);
    EXPECT_EQ(Variable(document).SetValue(value::CVal(5), value::KindNone), 0);
    EXPECT_THAT(Calls(""), IsEmpty());
}

TEST_F(RemoteVariableTest, AssignmentCancelsTheRequestUnderWay) {
    engine::CKalvexDoc& document = Declare(
        "'latencyTicks': 10, 'variables': {'V': {'hour': [{'time': 3600, "
        "'value': 1}]}}");
    Variable(document).RequestRange(value::KindHour, 3600, 3600);
    Variable(document).SetValue(value::CVal(5), value::KindHour);
    EXPECT_THAT(Calls("Cancel"), ElementsAre("CancelHourReportRequest"));
    Tick(20);
    EXPECT_EQ(Read(document, value::KindHour), "1 5/32768");
    Variable(document).SetValue(value::CVal(6), value::KindHour);
    EXPECT_THAT(Calls("Cancel"), IsEmpty());
}

// ---- locking

TEST_F(RemoteVariableTest, LockReadsASnapshot) {
    engine::CKalvexDoc& document = Declare(
        "'variables': {'V': {'current': [{'value': 1}, {'atTick': 10, "
        "'value': 2, 'status': 4, 'time': 77}]}}");
    EXPECT_EQ(Variable(document).SetLocked(true), 1);
    Tick(10);
    EXPECT_EQ(Read(document, value::KindCurrent), "1 1/0");
    EXPECT_EQ(StatusOf(document, value::KindCurrent), 0);
    EXPECT_EQ(Time(document, value::KindCurrent), kStart);
    Variable(document).SetLocked(true);
    EXPECT_EQ(Read(document, value::KindCurrent), "1 2/4");
    Variable(document).SetLocked(false);
    EXPECT_EQ(Read(document, value::KindCurrent), "1 2/4");
    EXPECT_EQ(Time(document, value::KindCurrent), 77);
}

TEST_F(RemoteVariableTest, WriteUnderLockGoesToTheServerAndTheSnapshot) {
    engine::CKalvexDoc& document = Declare(
        "'latencyTicks': 10, 'variables': {'V': {'current': "
        "[{'value': 1}]}}");
    Variable(document).SetLocked(true);
    Variable(document).SetValue(value::CVal(9), value::KindCurrent);
    EXPECT_EQ(Read(document, value::KindCurrent), "1 9/32768");
    Variable(document).SetLocked(false);
    EXPECT_EQ(Read(document, value::KindCurrent), "1 1/0");
    Tick(10);
    EXPECT_EQ(Read(document, value::KindCurrent), "1 9/32768");
}

TEST_F(RemoteVariableTest, LockDoesNotReachNewVariables) {
    Plant("'variables': {'V': {'current': [{'value': 1}, {'atTick': 20, 'value': 2}]}}");
    engine::CKalvexDoc& document = Run("REMOTE a srv@V\nLOCAL x = a\nLOCK\nREMOTE b srv@V", 25);
    EXPECT_EQ(Stored(document, "a"), "1/0");
    EXPECT_EQ(Stored(document, "b"), "2/0");
    EXPECT_TRUE(Link(document, "a").IsLocked());
    EXPECT_FALSE(Link(document, "b").IsLocked());
}

// ---- sharing

TEST_F(RemoteVariableTest, TwoNamesShareTheValueAndNothingElse) {
    Plant(kPlain);
    engine::CKalvexDoc& document =
        Run("REMOTE a srv@V\nREMOTE b srv@V\nLOCAL x = a\nSET a = 9\n"
            "LOCAL y = b\nSET a.HREP = 4",
            3);
    EXPECT_EQ(Value(document, "y"), "171:9.00");
    EXPECT_EQ(Link(document, "a").GetRequestState(value::KindHour), RequestReady);
    EXPECT_EQ(Link(document, "b").GetRequestState(value::KindHour), RequestNone);
    EXPECT_EQ(Connection().GetVarVal("V"), Link(document, "a").GetVarVal());
    EXPECT_EQ(Connection().GetVarVal("V"), Link(document, "b").GetVarVal());
}

// ---- ready

TEST_F(RemoteVariableTest, ReadyIsFalseOnlyWhileAnAnswerIsOutstanding) {
    engine::CKalvexDoc& document = Declare("'latencyTicks': 10, 'variables': {'V': {}}");
    operands::CVariable& variable = Variable(document);
    for (const value::ValueKindRow& row : value::ValueKinds()) {
        EXPECT_EQ(variable.IsReady(row.kind), 1) << row.kind;
    }
    EXPECT_EQ(variable.IsReady(value::KindNone), 0);
    EXPECT_EQ(variable.IsReady(value::ValueKind(7)), 0);
    constexpr value::ValueKind kStored[] = {value::KindHour, value::KindDay, value::KindMonth,
                                            value::KindSpan, value::KindArchive};
    for (const value::ValueKind kind : kStored) {
        variable.RequestRange(kind, 1, 2);
        EXPECT_EQ(variable.IsReady(kind), 0) << kind;
    }
    Tick(10);
    for (const value::ValueKind kind : kStored) {
        EXPECT_EQ(variable.IsReady(kind), 1) << kind;
    }
}

TEST_F(RemoteVariableTest, CurrentValueIsReadyWithoutAConnection) {
    Plant("'connectAtTick': null");
    EXPECT_EQ(Variable(Run("REMOTE a srv@V", 5)).IsReady(value::KindCurrent), 1);
}

// ---- requests

TEST_F(RemoteVariableTest, RangeIsRemembered) {
    engine::CKalvexDoc& document = Declare(kPlain);
    operands::CVariable& variable = Variable(document);
    EXPECT_EQ(variable.RequestRange(value::KindHour, 100, 200), 1);
    EXPECT_EQ(variable.GetRequestStart(), 100);
    EXPECT_EQ(variable.GetRequestEnd(), 200);
    EXPECT_EQ(variable.RequestRange(value::KindCurrent, 300, 400), 0);
    EXPECT_EQ(variable.GetRequestStart(), 0);
    EXPECT_EQ(variable.GetRequestEnd(), 0);
    EXPECT_EQ(variable.RequestRange(value::KindNone, 300, 400), 0);
}

TEST_F(RemoteVariableTest, SingleReportHasNoListAndTheArchiveAlwaysHasOne) {
    engine::CKalvexDoc& document = Declare(kPlain);
    operands::CVariable& variable = Variable(document);
    variable.RequestRange(value::KindDay, Local("2024-03-10 00:00:00"),
                          Local("2024-03-10 00:00:00"));
    variable.RequestRange(value::KindMonth, Local("2024-02-01 00:00:00"),
                          Local("2024-03-01 00:00:00"));
    variable.RequestRange(value::KindArchive, Local("2024-03-10 00:00:00"),
                          Local("2024-03-10 00:00:00"));
    EXPECT_THAT(Calls(""),
                ElementsAre("AddDayReportRequest V 2024-03-10 00:00:00", "MakeDayReportRequest",
                            "AddMonthReportRequest V 2024-02-01 00:00:00 - 2024-03-01 "
                            "00:00:00 into a list",
                            "MakeMonthReportRequest",
                            "AddArchiveDataRequest V 2024-03-10 00:00:00 into a list",
                            "MakeArchiveDataRequest"));
}

TEST_F(RemoteVariableTest, NewRequestOfAKindCancelsTheOlder) {
    engine::CKalvexDoc& document = Declare(
        "'latencyTicks': 10, 'variables': {'V': {'hour': [{'time': 1, "
        "'value': 1}, {'time': 2, 'value': 2}]}}");
    operands::CVariable& variable = Variable(document);
    variable.RequestRange(value::KindHour, 1, 1);
    variable.RequestRange(value::KindDay, 1, 1);
    Tick(5);
    Calls("");
    variable.RequestRange(value::KindHour, 2, 2);
    EXPECT_THAT(Calls("Cancel"), ElementsAre("CancelHourReportRequest"));
    Tick(5);
    EXPECT_EQ(variable.IsReady(value::KindHour), 0);
    EXPECT_EQ(variable.IsReady(value::KindDay), 1);
    Tick(5);
    EXPECT_EQ(Read(document, value::KindHour), "1 2/0");
    variable.RequestRange(value::KindHour, 1, 1);
    EXPECT_THAT(Calls("Cancel"), IsEmpty());
}

TEST_F(RemoteVariableTest, FailedRequestLeavesAnUnknownEmptyValue) {
    engine::CKalvexDoc& document = Declare("'variables': {'V': {'readError': 8}}");
    value::CVal value(5);
    value.SetTime(Local("2024-03-10 07:00:00"));
    Variable(document).SetValue(value, value::KindHour);
    Variable(document).RequestRange(value::KindHour, 1, 1);
    Tick(1);
    EXPECT_EQ(Link(document, "a").GetRequestState(value::KindHour), RequestFailed);
    EXPECT_EQ(StatusOf(document, value::KindHour), value::Status::Unknown);
    EXPECT_EQ(Read(document, value::KindHour, 1), "2 /0");
    EXPECT_EQ(Variable(document).IsReady(value::KindHour), 1);
    Variable(document).RequestRange(value::KindArchive, 1, 2);
    Tick(1);
    EXPECT_EQ(Link(document, "a").GetRequestState(value::KindArchive), RequestFailed);
}

TEST_F(RemoteVariableTest, RangeAnswerLeavesTheSlotsValueAlone) {
    engine::CKalvexDoc& document =
        Declare("'variables': {'V': {'hour': [{'time': 1, 'value': 1}]}}");
    Variable(document).SetValue(value::CVal(5), value::KindHour);
    Variable(document).RequestRange(value::KindHour, 0, 9);
    Tick(1);
    EXPECT_EQ(Read(document, value::KindHour), "1 5/32768");
    EXPECT_EQ(Link(document, "a").GetArchValues().GetSize(), 1u);
}

TEST_F(RemoteVariableTest, EveryRequestEmptiesTheOneList) {
    engine::CKalvexDoc& document =
        Declare("'variables': {'V': {'archive': [{'time': 1, 'value': 1}]}}");
    Variable(document).RequestRange(value::KindArchive, 0, 9);
    Tick(1);
    EXPECT_EQ(Link(document, "a").GetArchValues().GetSize(), 1u);
    Variable(document).RequestRange(value::KindDay, 1, 1);
    EXPECT_EQ(Link(document, "a").GetArchValues().GetSize(), 0u);
}

TEST_F(RemoteVariableTest, RequestToAServerThatIsOutFailsAtOnce) {
    Plant("'connectAtTick': null");
    engine::CKalvexDoc& document =
        Run("REMOTE a srv@V\nLOCAL k = 0\nGET a HREP 2024 3 10 6\n"
            "IF READY a.HREP THEN\nSET k = 1\nENDIF\nLOCAL x = a.HREP",
            1);
    EXPECT_EQ(Value(document, "k"), "171:1.00");
    EXPECT_EQ(Link(document, "a").GetRequestState(value::KindHour), RequestFailed);
    EXPECT_EQ(Error(document), "27 a.HREP");
}

TEST_F(RemoteVariableTest, BreakFailsTheRequestUnderWay) {
    engine::CKalvexDoc& document = Declare(
        "'latencyTicks': 50, 'outages': [{'fromTick': 10, 'toTick': 20}],"
        "'variables': {'V': {}}");
    Variable(document).RequestRange(value::KindHour, 1, 1);
    Tick(7);
    EXPECT_EQ(Link(document, "a").GetRequestState(value::KindHour), RequestWaiting);
    Tick(1);
    EXPECT_EQ(Link(document, "a").GetRequestState(value::KindHour), RequestFailed);
}

TEST_F(RemoteVariableTest, PutMarksAndSendsWhenTold) {
    engine::CKalvexDoc& document = Declare(kPlain);
    operands::CVariable& variable = Variable(document);
    value::CVal value(5);
    value.SetStatus(4);
    EXPECT_EQ(variable.PutValue(value::KindHour, Local("2024-03-10 06:00:00"), value, false), 1);
    EXPECT_EQ(variable.PutValue(value::KindHour, Local("2024-03-10 07:00:00"), value, true), 1);
    EXPECT_EQ(variable.PutValue(value::KindArchive, 1, value, true), 0);
    EXPECT_EQ(variable.PutValue(value::KindCurrent, 1, value, true), 0);
    EXPECT_THAT(Calls(""), ElementsAre("AddHourReportModifyRequest V 2024-03-10 06:00:00 5/32772",
                                       "AddHourReportModifyRequest V 2024-03-10 07:00:00 5/32772",
                                       "MakeHourReportRequest"));
    EXPECT_EQ(Link(document, "a").GetRequestState(value::KindHour), RequestNone);
}

TEST_F(RemoteVariableTest, WritesToAServerThatIsOutAreLostAndTold) {
    Plant(
        "'outages': [{'fromTick': 5, 'toTick': 10}], 'variables': {'V': {'current': "
        "[{'value': 1}]}}");
    engine::CKalvexDoc& document = Run("REMOTE a srv@V", 6);
    NewLog();
    Variable(document).PutValue(value::KindHour, 3600, value::CVal(5), true);
    EXPECT_EQ(Variable(document).SetValue(value::CVal(5), value::KindCurrent), 1);
    Tick(10);
    EXPECT_THAT(NewLog(), ElementsAre("main.kx - Brak połączenia z serwerem, przepadło polecenie "
                                      "PUT HREP 1970-01-01 02:00:00 o wartości 5 (srv@V)",
                                      "main.kx - Brak połączenia z serwerem, przepadło polecenie "
                                      "SET o wartości 5 (srv@V)"));
    EXPECT_EQ(Read(document, value::KindCurrent), "1 1/0");
    Variable(document).RequestRange(value::KindHour, 3600, 3600);
    Tick(1);
    EXPECT_EQ(Link(document, "a").GetRequestState(value::KindHour), RequestFailed);
}

}  // namespace
}  // namespace kalvex::sources
