#include "sources/DataStates.h"

#include <gtest/gtest.h>

#include "engine/ScriptStanding.h"
#include "sources/ClientInterface.h"
#include "support/hand_server.h"
#include "support/script_world.h"

namespace kalvex::sources {
namespace {

using engine::DataState;

class DataStatesTest : public support::ScriptWorld {
  protected:
    DataStatesTest() { services.sources = client.get(); }
    ~DataStatesTest() override {
        documents.clear();
        client.reset();
        network.Deliver();
    }

    // A script that declares "a", the server's variable 1, and whatever follows.
    void Declare(const std::string& lines = "") { Run("REMOTE a srv@V" + lines, 5); }
    // The same, on a server that has let it in.
    void Connect(const std::string& lines = "") {
        network.AddServer("srv", server);
        Declare(lines);
        network.Deliver();
    }
    void Reconnect() {
        client->SourceList().CheckConnections();
        network.Deliver();
    }

    void Send(vantrel::ServerMessage message) {
        server.Send(std::move(message));
        network.Deliver();
    }
    void SendValue(const value::CVal& value) { Send(vantrel::ValueUpdates{{{1, value}}, true}); }
    // No value of "a", but the end of what the server has to say.
    void SendNothing() { Send(vantrel::ValueUpdates{{}, true}); }
    void Refuse(std::uint16_t code) { Send(vantrel::AccessErrors{{{1, code}}}); }

    operands::CVariable& A() { return *documents.back()->Variables().Find("a"); }
    engine::DataCondition Condition(value::ValueKind kind = value::KindCurrent) {
        return client->GetCondition(A(), kind);
    }
    DataState State(value::ValueKind kind = value::KindCurrent) { return Condition(kind).state; }

    static value::CVal UnknownValue() {
        value::CVal value(5);
        value.SetStatus(value::Status::Unknown);
        return value;
    }

    support::InProcessNetwork network;
    support::HandServer server;
    std::unique_ptr<CClientInterface> client =
        std::make_unique<CClientInterface>(SourceServices{log, translator, users, network});
};

TEST_F(DataStatesTest, NamesTheServersVariable) {
    Declare();
    EXPECT_EQ(Condition().source, "srv");
    EXPECT_EQ(Condition().variable, "V");
}

TEST_F(DataStatesTest, SourceWithoutAnAddress) {
    support::NoTransports none;
    client = std::make_unique<CClientInterface>(SourceServices{log, translator, users, none});
    services.sources = client.get();
    Declare();
    EXPECT_EQ(State(), DataState::NoAddress);
    EXPECT_EQ(Condition().reason, "");
    documents.clear();
    client.reset();
}

TEST_F(DataStatesTest, SourceThatHasNeverBeenReached) {
    Declare();
    EXPECT_EQ(State(), DataState::Down);
    EXPECT_EQ(Condition().reason, "");
}

TEST_F(DataStatesTest, SourceThatDoesNotAnswerTellsWhy) {
    server.accepts = false;
    network.AddServer("srv", server);
    Declare();
    EXPECT_EQ(State(), DataState::Opening);
    network.Deliver();
    EXPECT_EQ(State(), DataState::Down);
    EXPECT_EQ(Condition().reason, "serwer nie odpowiada");
}

TEST_F(DataStatesTest, LoginThatIsNotAnswered) {
    server.answersLogin = false;
    Connect();
    EXPECT_EQ(State(), DataState::Login);
}

TEST_F(DataStatesTest, LoginThatIsRefused) {
    server.loginResult = {5, "nie"};
    Connect();
    EXPECT_EQ(State(), DataState::LoginRefused);
    server.loginResult = {};
    client->SourceList().Login();
    network.Deliver();
    EXPECT_EQ(State(), DataState::NoData);
}

TEST_F(DataStatesTest, ConnectedAndNothingHasCome) {
    Connect();
    EXPECT_EQ(State(), DataState::NoData);
    EXPECT_EQ(State(value::KindHour), DataState::NoData);
}

TEST_F(DataStatesTest, ValuesOfAllStates) {
    Connect();
    SendValue(value::CVal(5));
    EXPECT_EQ(State(), DataState::Usable);
    SendValue(UnknownValue());
    EXPECT_EQ(State(), DataState::Unknown);
    SendValue(value::CVal());
    EXPECT_EQ(State(), DataState::NoValue);
}

TEST_F(DataStatesTest, UnknownValueIsTakenWhereTheScriptSaysSo) {
    Connect("\nIGNORE_UNKNOWN_ON");
    SendValue(UnknownValue());
    EXPECT_EQ(State(), DataState::Usable);
}

TEST_F(DataStatesTest, VariableThatTheServerDoesNotHave) {
    Connect();
    Refuse(0);
    EXPECT_EQ(State(), DataState::NoVariable);
    SendNothing();
    EXPECT_EQ(State(), DataState::NoVariable);
    SendValue(value::CVal(5));
    EXPECT_EQ(State(), DataState::Usable);
    Refuse(0);
    EXPECT_EQ(State(), DataState::NoVariable);
}

TEST_F(DataStatesTest, VariableThatTheServerDoesNotShow) {
    Connect();
    Refuse(2);
    EXPECT_EQ(State(), DataState::NoAccess);
}

TEST_F(DataStatesTest, RefusalEndsWithItsConnection) {
    Connect();
    Refuse(0);
    network.Break("srv", vantrel::ReasonLost);
    network.Deliver();
    EXPECT_EQ(State(), DataState::Down);
    EXPECT_EQ(text::ToUtf8(Condition().reason), "utrata połączenia");
    Reconnect();
    EXPECT_EQ(State(), DataState::NoData);
    EXPECT_EQ(Condition().reason, "");
    EXPECT_EQ(client->FindConnection("srv")->GetDownReason(), 0u);
}

TEST_F(DataStatesTest, ValueFromBeforeABreakCountsForNothingUntilDataHaveCome) {
    Connect("\nIGNORE_UNKNOWN_ON");
    SendValue(value::CVal(5));
    network.Break("srv", vantrel::ReasonLost);
    network.Deliver();
    Reconnect();
    EXPECT_EQ(State(), DataState::NoData);
    SendNothing();
    EXPECT_EQ(State(), DataState::Usable);
}

TEST_F(DataStatesTest, ValueFromBeforeABreakIsUnknownUntilTheNext) {
    Connect();
    SendValue(value::CVal(5));
    network.Break("srv", vantrel::ReasonLost);
    network.Deliver();
    Reconnect();
    SendNothing();
    EXPECT_EQ(State(), DataState::Unknown);
}

TEST_F(DataStatesTest, SubscriptionThatIsHeldBack) {
    network.AddServer("srv", server);
    Run("SUBSCRIBE STOP\nREMOTE a srv@V", 5);
    network.Deliver();
    EXPECT_EQ(State(), DataState::NotSubscribed);
    client->UnblockSubscribe(false);
    EXPECT_EQ(State(), DataState::NoData);
}

TEST_F(DataStatesTest, LockKeepsAValueThatCannotBeRead) {
    Connect("\nLOCK");
    EXPECT_EQ(State(), DataState::Locked);
    SendValue(value::CVal(5));
    EXPECT_EQ(State(), DataState::Locked);
    A().SetLocked(false);
    EXPECT_EQ(State(), DataState::Usable);
    A().SetLocked(true);
    EXPECT_EQ(State(), DataState::Usable);
}

TEST_F(DataStatesTest, ReportsOfAllStates) {
    Connect();
    SendValue(value::CVal(5));
    EXPECT_EQ(State(value::KindHour), DataState::NotAsked);
    A().RequestRange(value::KindHour, 3600, 3600);
    EXPECT_EQ(State(value::KindHour), DataState::Asked);
    network.Deliver();
    Send(vantrel::ReadAnswer{.id = 1, .result = 0, .values = {value::CVal(7)}});
    EXPECT_EQ(State(value::KindHour), DataState::Usable);
    A().RequestRange(value::KindHour, 3600, 3600);
    network.Deliver();
    Send(vantrel::ReadAnswer{.id = 2, .result = 0, .values = {UnknownValue()}});
    EXPECT_EQ(State(value::KindHour), DataState::NoReport);
    A().RequestRange(value::KindHour, 3600, 3600);
    network.Deliver();
    Send(vantrel::ReadAnswer{.id = 3, .result = 1, .values = {}});
    EXPECT_EQ(State(value::KindHour), DataState::NotThere);
    EXPECT_EQ(State(value::KindDay), DataState::NotAsked);
}

TEST_F(DataStatesTest, ReportIsAskedForWhateverBecameOfTheSubscription) {
    Connect();
    Refuse(0);
    EXPECT_EQ(State(value::KindHour), DataState::NoVariable);
    SendNothing();
    EXPECT_EQ(State(value::KindHour), DataState::NotAsked);
}

TEST_F(DataStatesTest, DataThatCannotBeReadByTheirName) {
    Connect();
    SendValue(value::CVal(5));
    EXPECT_EQ(State(value::KindArchive), DataState::NotReadable);
    EXPECT_EQ(State(value::KindNone), DataState::NotReadable);
}

TEST_F(DataStatesTest, ScriptStandsOnWhatItsSourceIsIn) {
    network.AddServer("srv", server);
    Run("REMOTE a srv@V\nLOCAL x = a", 5);
    network.Deliver();
    Tick(1);
    const engine::ScriptStanding standing = engine::GetStanding(*documents.back());
    EXPECT_EQ(standing.state, engine::StandingState::Waiting);
    EXPECT_EQ(standing.release, engine::Release::Value);
    ASSERT_EQ(standing.missing.size(), 1u);
    EXPECT_EQ(standing.missing[0].condition.state, DataState::NoData);
    SendValue(value::CVal(5));
    EXPECT_EQ(engine::GetStanding(*documents.back()).release, engine::Release::NextTry);
    Tick(1);
    EXPECT_EQ(engine::GetStanding(*documents.back()).state, engine::StandingState::Finished);
}

}  // namespace
}  // namespace kalvex::sources
