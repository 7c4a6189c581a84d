#include <gmock/gmock.h>

#include "support/hand_server.h"
#include "support/value_dump.h"
#include "value/ValueText.h"
#include "vantrel/Codes.h"

namespace kalvex::vantrel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Tells what a server holds from what it sets.
class ToldVariable final : public CVarVal {
  public:
    ToldVariable(std::string_view name, std::vector<std::string>& told)
        : CVarVal(name), m_told(told) {}

    void SetValue(value::CVal value) override {
        m_told.push_back("holds " + value::ValueToText(value));
    }
    void SetControlValue(value::CVal value) override {
        m_told.push_back("sets " + value::ValueToText(value));
        CVarVal::SetValue(std::move(value));
    }

  private:
    std::vector<std::string>& m_told;
};

class ToldConnection final : public CClientConnection {
  public:
    std::vector<std::string> told;

  protected:
    std::unique_ptr<CVarVal> CreateVarVal(std::string_view name) override {
        return std::make_unique<ToldVariable>(name, told);
    }
};

class ClientConnectionTest : public testing::Test {
  protected:
    void SetUp() override {
        network.AddServer("srv", server);
        connection.SetLoginData("jan", "tajne");
    }

    // Connects with nothing registered and forgets what was heard on the way.
    void Connect() {
        connection.Create(23, "srv", "Kalvex", network, nullptr);
        network.Deliver();
        Forget();
    }

    void Forget() {
        server.heard.clear();
        connection.events.clear();
    }

    std::string Value(std::string_view name) {
        return support::Describe(connection.GetVarVal(name)->Value());
    }

    using Owner = support::HeardConnection::Owner;

    support::InProcessNetwork network;
    support::HandServer server;
    support::HeardConnection connection;
    support::HeardWindow window;
    Owner first;
    Owner second;
};

TEST_F(ClientConnectionTest, LogsInAndIsConnected) {
    EXPECT_TRUE(connection.Create(23, "srv", "Kalvex", network, nullptr));
    EXPECT_EQ(connection.GetState(), StateOpening);
    EXPECT_THAT(server.heard, IsEmpty());
    network.Deliver();
    EXPECT_EQ(connection.GetState(), StateConnected);
    EXPECT_EQ(connection.GetServerName(), "srv");
    EXPECT_THAT(server.heard, ElementsAre("login jan/tajne Kalvex 23"));
    EXPECT_THAT(connection.events, ElementsAre("access ", "connect"));
}

TEST_F(ClientConnectionTest, NoWayToTheSource) {
    support::NoTransports none;
    EXPECT_FALSE(connection.Create(23, "srv", "Kalvex", none, nullptr));
    EXPECT_THAT(connection.events, ElementsAre("fault 0 4109"));
}

TEST_F(ClientConnectionTest, ServerThatComesLater) {
    support::InProcessNetwork empty;
    support::HeardConnection waiting;
    EXPECT_TRUE(waiting.Create(23, "srv", "Kalvex", empty, nullptr));
    EXPECT_EQ(waiting.GetState(), StateDown);
    empty.Deliver();
    EXPECT_EQ(waiting.GetState(), StateDown);
    empty.AddServer("srv", server);
    empty.Deliver();
    EXPECT_EQ(waiting.GetState(), StateConnected);
    EXPECT_THAT(waiting.events, ElementsAre("access ", "connect"));
}

TEST_F(ClientConnectionTest, ServerThatRefusesIsReportedOnceARow) {
    server.accepts = false;
    connection.Create(23, "srv", "Kalvex", network, nullptr);
    network.Deliver();
    EXPECT_EQ(connection.GetState(), StateDown);
    for (int i = 0; i < 3; ++i) {
        connection.CheckConnection();
        network.Deliver();
    }
    EXPECT_THAT(connection.events, ElementsAre("fault 2 4110"));
    server.accepts = true;
    connection.CheckConnection();
    network.Deliver();
    EXPECT_EQ(connection.GetState(), StateConnected);
    Forget();
    server.accepts = false;
    network.Break("srv", ReasonLost);
    network.Deliver();
    connection.CheckConnection();
    network.Deliver();
    EXPECT_THAT(connection.events, ElementsAre("disconnect 4104", "fault 2 4110"));
}

TEST_F(ClientConnectionTest, RefusedLoginIsTriedAgainAfterAMinuteOfChecks) {
    server.loginResult = {5, "brak uprawnien"};
    connection.Create(23, "srv", "Kalvex", network, nullptr);
    network.Deliver();
    EXPECT_EQ(connection.GetState(), StateDown);
    EXPECT_THAT(connection.events, ElementsAre("denied brak uprawnien"));
    EXPECT_THAT(server.heard, ElementsAre("login jan/tajne Kalvex 23", "closed 4103"));
    server.loginResult = {};
    for (int i = 0; i < 59; ++i) {
        connection.CheckConnection();
        network.Deliver();
    }
    EXPECT_EQ(server.clients, 1);
    connection.CheckConnection();
    network.Deliver();
    EXPECT_EQ(connection.GetState(), StateConnected);
}

TEST_F(ClientConnectionTest, AnotherUserIsLetInAtOnceAfterARefusal) {
    server.loginResult = {5, "brak uprawnien"};
    connection.Create(23, "srv", "Kalvex", network, nullptr);
    network.Deliver();
    Forget();
    server.loginResult = {};
    connection.SetLoginData("ewa", "inne");
    connection.Login();
    network.Deliver();
    EXPECT_THAT(server.heard, ElementsAre("login ewa/inne Kalvex 23"));
    EXPECT_THAT(connection.events, ElementsAre("access ", "connect"));
}

TEST_F(ClientConnectionTest, LoginAnewOfAConnectedSource) {
    Connect();
    connection.SetLoginData("ewa", "inne");
    connection.Login();
    network.Deliver();
    EXPECT_EQ(connection.GetState(), StateConnected);
    EXPECT_THAT(server.heard, ElementsAre("closed 4101", "login ewa/inne Kalvex 23"));
    EXPECT_THAT(connection.events, ElementsAre("disconnect 4101", "access ", "connect"));
}

TEST_F(ClientConnectionTest, BreakBeforeItWasOpenIsSilent) {
    connection.Create(23, "srv", "Kalvex", network, nullptr);
    network.Break("srv", ReasonLost);
    network.Deliver();
    EXPECT_THAT(connection.events, IsEmpty());
    connection.CheckConnection();
    network.Deliver();
    EXPECT_EQ(connection.GetState(), StateConnected);
}

TEST_F(ClientConnectionTest, BreakWhileLoggingInCountsAsAFailedAttempt) {
    server.answersLogin = false;
    connection.Create(23, "srv", "Kalvex", network, nullptr);
    network.Deliver();
    EXPECT_EQ(connection.GetState(), StateLogin);
    network.Break("srv", ReasonLost);
    network.Deliver();
    EXPECT_EQ(connection.GetState(), StateDown);
    EXPECT_THAT(connection.events, ElementsAre("fault 2 4104"));
}

TEST_F(ClientConnectionTest, BreakAndReturnSubscribeAllAgain) {
    connection.RegisterVariable("A", &first);
    connection.RegisterVariable("B", &first);
    connection.Subscribe();
    Connect();
    network.Break("srv", ReasonSilent);
    network.Deliver();
    EXPECT_EQ(connection.GetState(), StateDown);
    connection.CheckConnection();
    network.Deliver();
    EXPECT_THAT(server.heard,
                ElementsAre("closed 4105", "login jan/tajne Kalvex 23", "subscribe +1A +2B"));
    EXPECT_THAT(connection.events, ElementsAre("disconnect 4105", "access ", "connect"));
}

// ---- variables

TEST_F(ClientConnectionTest, SubscribeTellsTheServerOfWhatHasChanged) {
    Connect();
    connection.RegisterVariable("A", &first);
    connection.RegisterVariable("B", &first);
    network.Deliver();
    EXPECT_THAT(server.heard, IsEmpty());
    connection.Subscribe();
    network.Deliver();
    EXPECT_THAT(server.heard, ElementsAre("subscribe +1A +2B"));
    Forget();
    connection.Subscribe();
    network.Deliver();
    EXPECT_THAT(server.heard, IsEmpty());
    connection.UnRegisterVariable("A", &first);
    connection.RegisterVariable("C", &first);
    connection.Subscribe();
    network.Deliver();
    EXPECT_THAT(server.heard, ElementsAre("subscribe +3C -1"));
    EXPECT_EQ(connection.GetVarVal("A"), nullptr);
    EXPECT_EQ(connection.GetMaxVarValIndex(), 1);
}

TEST_F(ClientConnectionTest, VariableWithAnotherOwnerStays) {
    Connect();
    CVarVal& variable = connection.RegisterVariable("A", &first);
    EXPECT_EQ(&connection.RegisterVariable("A", &second), &variable);
    connection.Subscribe();
    connection.UnRegisterVariable("A", &first);
    connection.Subscribe();
    EXPECT_EQ(connection.GetVarVal("A"), &variable);
    connection.UnRegisterVariable("A", &second);
    EXPECT_EQ(connection.GetVarVal("A"), &variable);
    connection.Subscribe();
    EXPECT_EQ(connection.GetVarVal("A"), nullptr);
}

TEST_F(ClientConnectionTest, RegisteredAgainBeforeSubscribeKeepsItsObject) {
    connection.RegisterVariable("A", &first);
    connection.Subscribe();
    Connect();
    CVarVal* variable = connection.GetVarVal("A");
    connection.UnRegisterVariable("A", &first);
    connection.RegisterVariable("A", &second);
    connection.Subscribe();
    network.Deliver();
    EXPECT_EQ(connection.GetVarVal("A"), variable);
    EXPECT_THAT(server.heard, IsEmpty());
}

TEST_F(ClientConnectionTest, DroppedTwiceBeforeSubscribeGoesOnce) {
    connection.RegisterVariable("A", &first);
    connection.Subscribe();
    Connect();
    connection.UnRegisterVariable("A", &first);
    connection.RegisterVariable("A", &first);
    connection.UnRegisterVariable("A", &first);
    connection.Subscribe();
    network.Deliver();
    EXPECT_THAT(server.heard, ElementsAre("subscribe -1"));
    EXPECT_EQ(connection.GetMaxVarValIndex(), -1);
}

TEST_F(ClientConnectionTest, RegisteredAndDroppedBeforeSubscribeIsNeverTold) {
    Connect();
    connection.RegisterVariable("A", &first);
    connection.UnRegisterVariable("A", &first);
    connection.Subscribe();
    network.Deliver();
    EXPECT_THAT(server.heard, IsEmpty());
    EXPECT_EQ(connection.GetVarVal("A"), nullptr);
}

TEST_F(ClientConnectionTest, FirstValueOfAConversationIsWhatTheServerHolds) {
    ToldConnection client;
    client.RegisterVariable("A");
    client.Subscribe();
    client.Create(23, "srv", "Kalvex", network, nullptr);
    network.Deliver();
    for (const int number : {1, 2, 3}) server.SendValue(1, value::CVal(number));
    network.Deliver();
    EXPECT_THAT(client.told, ElementsAre("holds 1", "sets 2", "sets 3"));
    client.told.clear();
    network.Break("srv", ReasonLost);
    network.Deliver();
    client.CheckConnection();
    network.Deliver();
    for (const int number : {4, 5}) server.SendValue(1, value::CVal(number));
    network.Deliver();
    EXPECT_THAT(client.told, ElementsAre("holds 4", "sets 5"));
    client.told.clear();
    server.Send(AccessErrors{{{1, ResultOk}}});
    for (const int number : {6, 7}) server.SendValue(1, value::CVal(number));
    network.Deliver();
    EXPECT_THAT(client.told, ElementsAre("holds ", "holds 6", "sets 7"));
}

TEST_F(ClientConnectionTest, HandleOfADroppedVariableIsNotGivenAgain) {
    Connect();
    connection.RegisterVariable("A", &first);
    connection.Subscribe();
    connection.UnRegisterVariable("A", &first);
    connection.Subscribe();
    connection.RegisterVariable("B", &first);
    connection.Subscribe();
    network.Deliver();
    EXPECT_THAT(server.heard, ElementsAre("subscribe +1A", "subscribe -1", "subscribe +2B"));
    server.SendValue(1, value::CVal(7));
    network.Deliver();
    EXPECT_EQ(Value("B"), "/0");
}

TEST_F(ClientConnectionTest, UnregisteringAnUnknownVariableDoesNothing) {
    Connect();
    connection.UnRegisterVariable("A", &first);
    connection.Subscribe();
    network.Deliver();
    EXPECT_THAT(server.heard, IsEmpty());
}

TEST_F(ClientConnectionTest, ValuesArriveInPlace) {
    connection.RegisterVariable("A", &first);
    connection.RegisterVariable("B", &first);
    connection.Subscribe();
    Connect();
    value::CVal value(12.5);
    value.SetStatus(value::Status::SetByDevice);
    value.SetTime(1710050400);
    server.Send(ValueUpdates{{{1, value}, {2, value::CVal("praca")}, {9, value::CVal(1)}}, true});
    network.Deliver();
    EXPECT_EQ(Value("A"), "12.50/16");
    EXPECT_EQ(connection.GetVarVal("A")->Value().GetTime(), 1710050400);
    EXPECT_EQ(Value("B"), "praca/0");
    EXPECT_THAT(connection.events, ElementsAre("data"));
}

TEST_F(ClientConnectionTest, DataOfASubscriptionInPiecesArriveAtTheLast) {
    connection.RegisterVariable("A", &first);
    connection.Subscribe();
    Connect();
    server.Send(ValueUpdates{{{1, value::CVal(1)}}, false});
    network.Deliver();
    EXPECT_THAT(connection.events, IsEmpty());
    server.Send(ValueUpdates{{}, true});
    network.Deliver();
    EXPECT_THAT(connection.events, ElementsAre("data"));
}

TEST_F(ClientConnectionTest, BreakMarksTheValues) {
    connection.RegisterVariable("A", &first);
    connection.Subscribe();
    Connect();
    value::CVal value(12.5);
    value.SetStatus(value::Status::SetByDevice);
    server.SendValue(1, value);
    network.Deliver();
    network.Break("srv", ReasonLost);
    network.Deliver();
    EXPECT_EQ(Value("A"), "12.50/19");
}

TEST_F(ClientConnectionTest, AccessErrorsNameTheVariable) {
    connection.RegisterVariable("A", &first);
    connection.RegisterVariable("B", &first);
    connection.Subscribe();
    Connect();
    server.Send(AccessErrors{{{1, 0}, {2, 7}, {9, 1}}});
    network.Deliver();
    EXPECT_THAT(connection.events, ElementsAre("no access A 0", "no access B 7"));
}

TEST_F(ClientConnectionTest, AccessErrorOfAVariableThatWasThereTakesItsValueAndDefinition) {
    connection.RegisterVariable("A", &first);
    connection.RegisterVariable("B", &first);
    connection.Subscribe();
    Connect();
    server.Send(VariableDefinitions{{{"A", {{"un", "m3"}}}, {"B", {}}}, true});
    server.Send(ValueUpdates{{{1, value::CVal(12.5)}, {2, value::CVal(3)}}, true});
    server.Send(AccessErrors{{{1, 0}}});
    network.Deliver();
    EXPECT_THAT(connection.events, ElementsAre("variables", "data", "variables", "no access A 0"));
    EXPECT_EQ(Value("A"), "/1");
    EXPECT_EQ(Value("B"), "3/0");
    EXPECT_EQ(connection.GetVarDefInfo("A"), nullptr);
    EXPECT_NE(connection.GetVarDefInfo("B"), nullptr);
    server.Send(VariableDefinitions{{{"A", {{"un", "bar"}}}}, true});
    server.SendValue(1, value::CVal(7));
    network.Deliver();
    EXPECT_EQ(Value("A"), "7/0");
    EXPECT_EQ(connection.GetVarDefInfo("A")->GetText("un"), "bar");
}

TEST_F(ClientConnectionTest, DefinitionsAreKeptAndReplacedInPlace) {
    Connect();
    EXPECT_EQ(connection.GetVarDefInfo("A"), nullptr);
    server.Send(VariableDefinitions{{{"A", {{"un", "m3"}, {"at", "6"}}}}, false});
    server.Send(VariableDefinitions{{{"B", {}}}, true});
    network.Deliver();
    EXPECT_THAT(connection.events, ElementsAre("variables"));
    const CVarDefInfo* definition = connection.GetVarDefInfo("A");
    ASSERT_NE(definition, nullptr);
    EXPECT_EQ(definition->GetName(), "A");
    EXPECT_EQ(definition->GetText("un"), "m3");
    EXPECT_EQ(definition->GetText("de"), "");
    EXPECT_EQ(definition->GetNumber("at"), 6);
    EXPECT_EQ(definition->GetNumber("rt"), 0);
    server.Send(VariableDefinitions{{{"A", {{"un", "bar"}}}}, true});
    network.Deliver();
    EXPECT_EQ(connection.GetVarDefInfo("A"), definition);
    EXPECT_EQ(definition->GetText("un"), "bar");
}

TEST_F(ClientConnectionTest, VariableListIsHadWithoutAConnection) {
    server.definitions = {{"B", {{"nd", "Be"}}}, {"A", {}}};
    connection.Create(23, "srv", "Kalvex", network, nullptr);
    CObjInfoList list;
    EXPECT_TRUE(connection.LoadVarDefList(list));
    ASSERT_EQ(list.size(), 2u);
    EXPECT_EQ(list[0].GetName(), "B");
    EXPECT_EQ(list[0].GetText("nd"), "Be");
    EXPECT_EQ(list[1].GetName(), "A");
    EXPECT_THAT(server.heard, ElementsAre("list jan"));
    server.lists = false;
    EXPECT_FALSE(connection.LoadVarDefList(list));
}

TEST_F(ClientConnectionTest, VariableListIsAskedForWithoutWaiting) {
    server.definitions = {{"B", {{"nd", "Be"}}}, {"A", {}}};
    server.answersList = false;
    connection.Create(23, "srv", "Kalvex", network, nullptr);
    std::vector<std::string> answers;
    const auto take = [&answers](std::optional<CObjInfoList> list) {
        answers.push_back(list ? list->front().GetName() + list->front().GetText("nd") +
                                     std::to_string(list->size())
                               : "nothing");
    };
    connection.AskVarDefList(take);
    EXPECT_THAT(answers, IsEmpty());
    server.listAnswer(server.definitions);
    EXPECT_THAT(answers, ElementsAre("BBe2"));
    connection.AskVarDefList(take);
    server.listAnswer(std::nullopt);
    EXPECT_THAT(answers, ElementsAre("BBe2", "nothing"));
}

TEST_F(ClientConnectionTest, ReportChangesAndLogLinesArePassedOn) {
    Connect();
    server.Send(ReportChange{value::KindDay, 1710025200});
    server.Send(LogMessage{2, 1710050400, "linia"});
    network.Deliver();
    EXPECT_THAT(connection.events,
                ElementsAre("report changed 3 1710025200", "log 2 1710050400 linia"));
}

TEST_F(ClientConnectionTest, NothingIsTakenBeforeTheLogin) {
    server.answersLogin = false;
    connection.Create(23, "srv", "Kalvex", network, nullptr);
    network.Deliver();
    server.Send(ReportChange{value::KindDay, 1710025200});
    server.Send(LoginResult{});
    server.Send(LoginResult{3, "za pozno"});
    network.Deliver();
    EXPECT_THAT(connection.events, ElementsAre("access ", "connect"));
    EXPECT_EQ(connection.GetState(), StateConnected);
}

// The first login asks for nothing; each later one for what has come since.
TEST_F(ClientConnectionTest, ComesBackWithTheLastReportChangeThatItKnows) {
    const auto comeBack = [this] {
        network.Break("srv", ReasonLost);
        network.Deliver();
        connection.CheckConnection();
        network.Deliver();
        return server.logins.back().changesSince;
    };
    server.loginResult.sequence = 40;
    Connect();
    EXPECT_EQ(server.logins.back().changesSince, std::nullopt);
    server.loginResult.sequence = 45;
    EXPECT_EQ(comeBack(), 40u);
    EXPECT_EQ(comeBack(), 40u);
    server.Send(ReportChange{value::KindDay, 1710025200, 43});
    server.Send(ReportChange{value::KindDay, 1710025201});
    network.Deliver();
    server.loginResult.sequence = 7;  // another store
    EXPECT_EQ(comeBack(), 43u);
    EXPECT_EQ(comeBack(), 7u);
}

}  // namespace
}  // namespace kalvex::vantrel
