#include <gmock/gmock.h>

#include "support/hand_server.h"
#include "support/scratch_file.h"
#include "support/value_dump.h"
#include "vantrel/Codes.h"
#include "vantrel/plant/SimulatedPlant.h"
#include "vantrel/plant/TickJournal.h"

namespace kalvex::vantrel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class SimulatedPlantTest : public testing::Test {
  protected:
    // Builds the plant from the content of the source "srv" and connects at tick 1.
    void Build(std::string_view content) {
        PlantDefinition definition;
        std::string fault;
        const support::ScratchFile file("{\"sources\": {\"srv\": {" + std::string(content) + "}}}");
        ASSERT_TRUE(ReadPlant(file.Path(), definition, fault)) << fault;
        plant = std::make_unique<SimulatedPlant>(std::move(definition), clock);
        AdvanceTo(1);
        connection.Create(23, "srv", "Kalvex", *plant, nullptr);
    }

    void AdvanceTo(std::int64_t last) {
        for (; tick < last; ++tick) plant->AdvanceTo(tick + 1);
    }

    void Register(std::initializer_list<const char*> names) {
        for (const char* name : names) connection.RegisterVariable(name, &owner);
        connection.Subscribe();
    }

    // What has happened since the last call.
    std::vector<std::string> Events() { return std::exchange(connection.events, {}); }
    std::vector<std::string> Answers() { return std::exchange(window.answers, {}); }
    std::string Value(std::string_view name) {
        const value::CVal& value = connection.GetVarVal(name)->Value();
        return support::Describe(value) + "@" + std::to_string(value.GetTime());
    }

    void Read(value::ValueKind kind, std::int64_t from, std::int64_t to,
              value::CArchiveValueList* into = nullptr, std::string_view variable = "V") {
        connection.AddDataRequest(kind, variable, from, to, into, window);
        connection.MakeDataRequest(kind);
    }

    void Write(value::ValueKind kind, std::int64_t time, const value::CVal& value,
               std::string_view variable = "V") {
        connection.AddReportModifyRequest(kind, variable, time, value);
        connection.MakeDataRequest(kind);
    }

    using Owner = support::HeardConnection::Owner;

    platform::VirtualClock clock{1710050400};
    std::unique_ptr<SimulatedPlant> plant;
    std::int64_t tick = 0;
    Owner owner;
    support::HeardWindow window;
    value::CArchiveValueList list;
    support::HeardConnection connection;
};

TEST_F(SimulatedPlantTest, ConnectsBeforeTheNextTickWithItsData) {
    Build("\"variables\": {\"V\": {\"current\": [{\"value\": 12.5}]}}");
    Register({"V"});
    EXPECT_EQ(connection.GetState(), StateOpening);
    AdvanceTo(2);
    EXPECT_EQ(connection.GetState(), StateConnected);
    EXPECT_THAT(Events(), ElementsAre("access ", "connect", "variables", "data"));
    EXPECT_EQ(Value("V"), "12.50/0@1710050400");
}

TEST_F(SimulatedPlantTest, ConnectsAtItsTick) {
    Build("\"connectAtTick\": 400");
    EXPECT_EQ(connection.GetState(), StateDown);
    AdvanceTo(399);
    EXPECT_EQ(connection.GetState(), StateDown);
    AdvanceTo(400);
    EXPECT_EQ(connection.GetState(), StateConnected);
    EXPECT_THAT(Events(), ElementsAre("access ", "connect", "data"));
}

TEST_F(SimulatedPlantTest, NeverConnects) {
    Build("\"connectAtTick\": null");
    AdvanceTo(1000);
    EXPECT_EQ(connection.GetState(), StateDown);
    EXPECT_THAT(Events(), IsEmpty());
}

TEST_F(SimulatedPlantTest, UnknownSourceNeverConnects) {
    Build("");
    support::HeardConnection other;
    EXPECT_TRUE(other.Create(23, "inny", "Kalvex", *plant, nullptr));
    AdvanceTo(1000);
    EXPECT_EQ(other.GetState(), StateDown);
    EXPECT_THAT(other.events, IsEmpty());
    CObjInfoList definitions;
    EXPECT_FALSE(other.LoadVarDefList(definitions));
}

TEST_F(SimulatedPlantTest, FirstDataComeAtTheirTick) {
    Build(
        "\"dataAtTick\": 10, \"latencyTicks\": 100, \"variables\": {\"V\": {\"current\": "
        "[{\"value\": 1}, {\"atTick\": 5, \"value\": 2}]}, \"W\": {}}");
    Register({"V"});
    AdvanceTo(9);
    Register({"W"});
    EXPECT_THAT(Events(), ElementsAre("access ", "connect"));
    EXPECT_EQ(Value("V"), "/0@0");
    AdvanceTo(10);
    EXPECT_THAT(Events(), ElementsAre("variables", "data"));
    EXPECT_EQ(Value("V"), "2/0@1710050400");
    EXPECT_NE(connection.GetVarDefInfo("W"), nullptr);
}

TEST_F(SimulatedPlantTest, LaterSubscriptionIsAnsweredAfterTheLatency) {
    Build(
        "\"latencyTicks\": 10, \"variables\": {\"V\": {\"attributes\": {\"un\": \"bar\"}, "
        "\"current\": [{\"value\": 1}, {\"atTick\": 55, \"value\": 2}]}}");
    AdvanceTo(50);
    Events();
    Register({"V"});
    AdvanceTo(59);
    EXPECT_THAT(Events(), IsEmpty());
    EXPECT_EQ(Value("V"), "/0@0");
    AdvanceTo(60);
    EXPECT_THAT(Events(), ElementsAre("variables", "data"));
    EXPECT_EQ(Value("V"), "2/0@1710050400");
    EXPECT_EQ(connection.GetVarDefInfo("V")->GetText("un"), "bar");
}

TEST_F(SimulatedPlantTest, VariableDroppedBeforeItsAnswer) {
    Build("\"latencyTicks\": 10, \"variables\": {\"V\": {}, \"W\": {\"accessError\": 3}}");
    AdvanceTo(5);
    Events();
    Register({"V", "W"});
    connection.UnRegisterVariable("V", &owner);
    connection.UnRegisterVariable("W", &owner);
    connection.Subscribe();
    AdvanceTo(20);
    EXPECT_THAT(Events(), ElementsAre("data"));
    EXPECT_EQ(connection.GetVarDefInfo("V"), nullptr);
}

TEST_F(SimulatedPlantTest, AccessErrors) {
    Build("\"variables\": {\"V\": {\"accessError\": 7, \"current\": [{\"value\": 1}]}}");
    Register({"V", "BRAK"});
    AdvanceTo(2);
    EXPECT_THAT(Events(), ElementsAre("access ", "connect", "no access V 7", "no access BRAK 0",
                                      "variables", "data"));
    EXPECT_EQ(Value("V"), "/0@0");
}

TEST_F(SimulatedPlantTest, PublishesAtItsTicks) {
    Build(
        "\"variables\": {\"V\": {\"current\": [{\"value\": 1}, {\"atTick\": 30, \"value\": 2, "
        "\"status\": 4, \"time\": 77}]}}");
    Register({"V"});
    AdvanceTo(29);
    EXPECT_EQ(Value("V"), "1/0@1710050400");
    Events();
    AdvanceTo(30);
    EXPECT_EQ(Value("V"), "2/4@77");
    EXPECT_THAT(Events(), ElementsAre("data"));
}

TEST_F(SimulatedPlantTest, StampOfAPublishedValueIsThePresent) {
    Build("\"variables\": {\"V\": {\"current\": [{\"atTick\": 30, \"value\": 2}]}}");
    Register({"V"});
    AdvanceTo(29);
    clock.Advance(5000);
    AdvanceTo(30);
    EXPECT_EQ(Value("V"), "2/0@1710050405");
}

TEST_F(SimulatedPlantTest, OutageBreaksAndComesBackWithData) {
    Build(
        "\"outages\": [{\"fromTick\": 100, \"toTick\": 200, \"reason\": 4100}], "
        "\"variables\": {\"V\": {\"current\": [{\"value\": 1}, {\"atTick\": 150, "
        "\"value\": 2}]}}");
    Register({"V"});
    AdvanceTo(99);
    Events();
    AdvanceTo(100);
    EXPECT_THAT(Events(), ElementsAre("disconnect 4100"));
    AdvanceTo(199);
    EXPECT_EQ(connection.GetState(), StateDown);
    EXPECT_EQ(Value("V"), "1/3@1710050400");
    AdvanceTo(200);
    EXPECT_THAT(Events(), ElementsAre("access ", "connect", "variables", "data"));
    EXPECT_EQ(Value("V"), "2/0@1710050400");
}

TEST_F(SimulatedPlantTest, ConnectionAskedForDuringAnOutage) {
    Build("\"outages\": [{\"fromTick\": 0, \"toTick\": 200}]");
    EXPECT_EQ(connection.GetState(), StateDown);
    AdvanceTo(199);
    EXPECT_EQ(connection.GetState(), StateDown);
    AdvanceTo(200);
    EXPECT_EQ(connection.GetState(), StateConnected);
}

TEST_F(SimulatedPlantTest, SingleReportRead) {
    Build(
        "\"latencyTicks\": 10, \"variables\": {\"V\": {\"hour\": [{\"time\": 3600, "
        "\"value\": 1.5, \"status\": 128}]}}");
    AdvanceTo(20);
    Read(value::KindHour, 3600, 3600);
    Read(value::KindHour, 3601, 3601);
    Read(value::KindDay, 3600, 3600);
    Read(value::KindHour, 3600, 3600, nullptr, "BRAK");
    AdvanceTo(29);
    EXPECT_THAT(Answers(), IsEmpty());
    AdvanceTo(30);
    EXPECT_THAT(Answers(), ElementsAre("2V 0 1.50/128", "2V 1 /0", "3V 1 /0", "2BRAK 1 /0"));
}

TEST_F(SimulatedPlantTest, RangeReadHasItsBoundsIncluded) {
    Build(
        "\"variables\": {\"V\": {\"archive\": [{\"time\": 300, \"value\": 3}, {\"time\": 100, "
        "\"value\": 1}, {\"time\": 200, \"value\": 2}]}}");
    AdvanceTo(20);
    Read(value::KindArchive, 100, 200, &list);
    AdvanceTo(21);
    EXPECT_THAT(Answers(), ElementsAre("6V 0 [1/0 2/0]"));
    Read(value::KindArchive, 400, 500, &list);
    AdvanceTo(22);
    EXPECT_THAT(Answers(), ElementsAre("6V 0 []"));
    Read(value::KindArchive, 300, 300, &list);
    AdvanceTo(23);
    EXPECT_THAT(Answers(), ElementsAre("6V 0 [3/0]"));
    Read(value::KindArchive, 300, 100, &list);
    AdvanceTo(24);
    EXPECT_THAT(Answers(), ElementsAre("6V 0 []"));
}

TEST_F(SimulatedPlantTest, ReadAndWriteErrors) {
    Build("\"variables\": {\"V\": {\"readError\": 8, \"writeError\": 9}}");
    AdvanceTo(20);
    Events();
    Read(value::KindHour, 3600, 3600);
    Write(value::KindHour, 3600, value::CVal(1));
    connection.AddCurrentDataModifyRequest("V", value::CVal(1));
    connection.MakeCurrentDataModifyRequest();
    Write(value::KindDay, 3600, value::CVal(1), "BRAK");
    AdvanceTo(21);
    EXPECT_THAT(Answers(), ElementsAre("2V 8 /0"));
    EXPECT_THAT(Events(), ElementsAre("report not written 2V 9", "not written V 9",
                                      "report not written 3BRAK 1"));
}

TEST_F(SimulatedPlantTest, ReportWriteReplacesOrAdds) {
    Build(
        "\"latencyTicks\": 5, \"variables\": {\"V\": {\"hour\": [{\"time\": 3600, "
        "\"value\": 1}]}}");
    AdvanceTo(20);
    value::CVal value(2);
    value.SetStatus(value::Status::Supervisory);
    Write(value::KindHour, 3600, value);
    Write(value::KindHour, 7200, value::CVal(3));
    Read(value::KindHour, 0, 9000, &list);
    AdvanceTo(25);
    EXPECT_THAT(Answers(), ElementsAre("2V 0 [2/32768 3/0]"));
    EXPECT_EQ(list.Get(0)->GetTime(), 3600);
}

TEST_F(SimulatedPlantTest, ArchiveWriteReplacesOrAdds) {
    Build("\"variables\": {\"V\": {\"archive\": [{\"time\": 100, \"value\": 1}]}}");
    AdvanceTo(20);
    value::CVal value(2);
    value.SetTime(100);
    list.Add(value);
    value.SetTime(200);
    list.Add(value);
    connection.AddArchiveModifyRequest("V", list, value::TIMEW{100}, value::TIMEW{200});
    connection.MakeArchiveModifyRequest();
    Read(value::KindArchive, 0, 300, &list);
    AdvanceTo(21);
    EXPECT_THAT(Answers(), ElementsAre("6V 0 [2/0 2/0]"));
}

TEST_F(SimulatedPlantTest, CurrentWriteIsPublishedAsWritten) {
    Build("\"latencyTicks\": 10, \"variables\": {\"V\": {\"current\": [{\"value\": 1}]}}");
    Register({"V"});
    AdvanceTo(20);
    Events();
    value::CVal value(5.0);
    value.SetStatus(value::Status::Supervisory);
    connection.AddCurrentDataModifyRequest("V", value);
    connection.MakeCurrentDataModifyRequest();
    AdvanceTo(29);
    EXPECT_THAT(Events(), IsEmpty());
    AdvanceTo(30);
    EXPECT_THAT(Events(), ElementsAre("data", "written V 5.00/32768"));
    EXPECT_EQ(Value("V"), "5.00/32768@0");
}

TEST_F(SimulatedPlantTest, InitAndLoadLeaveTheirMarks) {
    Build("\"variables\": {\"V\": {\"day\": [{\"time\": 100, \"value\": 1.5, \"status\": 4}]}}");
    AdvanceTo(20);
    connection.MakePeriodRequest(PeriodAction::Init, value::KindDay, "V", 100);
    connection.MakePeriodRequest(PeriodAction::Init, value::KindDay, "V", 200);
    connection.MakePeriodRequest(PeriodAction::Load, value::KindDay, "V", 300);
    connection.MakePeriodRequest(PeriodAction::Load, value::KindDay, "V", 200);
    connection.MakePeriodRequest(PeriodAction::Calculate, value::KindDay, "V", 400);
    connection.MakePeriodRequest(PeriodAction::Update, value::KindArchive, "V", 100);
    connection.MakePeriodRequest(PeriodAction::Refresh, value::KindArchive, "V", 100);
    connection.MakePeriodRequest(PeriodAction::Init, value::KindDay, "BRAK", 100);
    Read(value::KindDay, 0, 900, &list);
    AdvanceTo(21);
    EXPECT_THAT(Answers(), ElementsAre("3V 0 [1.50/260 0.00/384 0.00/128]"));
    EXPECT_EQ(list.Get(1)->GetTime(), 200);
    EXPECT_EQ(list.Get(1)->GetType(), value::ValueType::Double);
    Read(value::KindArchive, 0, 900, &list);
    AdvanceTo(22);
    EXPECT_THAT(Answers(), ElementsAre("6V 0 []"));
}

TEST_F(SimulatedPlantTest, OutageOvertakesWhatIsOutstanding) {
    Build(
        "\"latencyTicks\": 10, \"outages\": [{\"fromTick\": 30, \"toTick\": 40}], "
        "\"variables\": {\"V\": {\"hour\": [{\"time\": 3600, \"value\": 1}]}}");
    AdvanceTo(20);
    Events();
    Read(value::KindHour, 3600, 3600);
    Write(value::KindHour, 3600, value::CVal(2));
    AdvanceTo(30);
    EXPECT_THAT(Answers(), ElementsAre("2V 1 /0"));
    EXPECT_THAT(Events(), ElementsAre("disconnect 4104"));
    // The write is sent again.
    AdvanceTo(50);
    Read(value::KindHour, 3600, 3600);
    AdvanceTo(60);
    EXPECT_THAT(Answers(), ElementsAre("2V 0 2/0"));
}

TEST_F(SimulatedPlantTest, ReportChangesReachAConnectedClient) {
    Build(
        "\"outages\": [{\"fromTick\": 30, \"toTick\": 40}], \"reportChanges\": "
        "[{\"atTick\": 20, \"kind\": \"HREP\", \"time\": 3600}, {\"atTick\": 35, "
        "\"kind\": \"DREP\", \"time\": 3600}, {\"atTick\": 45, \"kind\": \"SREP\", "
        "\"time\": 7}]");
    AdvanceTo(19);
    Events();
    AdvanceTo(29);
    EXPECT_THAT(Events(), ElementsAre("report changed 2 3600"));
    AdvanceTo(40);
    Events();
    AdvanceTo(50);
    EXPECT_THAT(Events(), ElementsAre("report changed 5 7"));
}

TEST_F(SimulatedPlantTest, NothingComesWithinTheCallEvenWithoutLatency) {
    Build("\"latencyTicks\": 0, \"variables\": {\"V\": {}}");
    AdvanceTo(20);
    Read(value::KindHour, 1, 1);
    EXPECT_THAT(Answers(), IsEmpty());
    AdvanceTo(21);
    EXPECT_THAT(Answers(), ElementsAre("2V 1 /0"));
}

TEST_F(SimulatedPlantTest, VariableListCanBeHadFromTheStart) {
    Build("\"connectAtTick\": null, \"variables\": {\"Z\": {}, \"A\": {}}");
    CObjInfoList definitions;
    EXPECT_TRUE(connection.LoadVarDefList(definitions));
    ASSERT_EQ(definitions.size(), 2u);
    EXPECT_EQ(definitions[0].GetName(), "Z");
}

TEST_F(SimulatedPlantTest, LoginAnewBreaksAndComesBack) {
    Build("");
    AdvanceTo(5);
    Events();
    connection.Login();
    AdvanceTo(6);
    EXPECT_THAT(Events(), ElementsAre("disconnect 4101", "access ", "connect", "data"));
}

TEST(SimulatedPlantJournalTest, StampsTheCalls) {
    support::InProcessNetwork network;
    TickJournal journal;
    support::HeardConnection connection;
    connection.Create(23, "srv", "Kalvex", network, &journal);
    journal.SetTick(5);
    connection.Subscribe();
    journal.SetTick(7);
    connection.MakeCurrentDataModifyRequest();
    ASSERT_EQ(journal.Rows(connection).size(), 2u);
    EXPECT_EQ(journal.Rows(connection)[0].tick, 5);
    EXPECT_EQ(journal.Rows(connection)[0].entry.operation, "Subscribe");
    EXPECT_EQ(journal.Rows(connection)[1].tick, 7);
}

}  // namespace
}  // namespace kalvex::vantrel
