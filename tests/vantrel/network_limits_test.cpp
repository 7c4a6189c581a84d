// Peers that do not keep to the rules.
#include <gmock/gmock.h>

#include <algorithm>
#include <future>
#include <memory>
#include <thread>
#include <vector>

#include "support/network_world.h"
#include "text/CodePage.h"
#include "vantrel/Codes.h"
#include "vantrel/raw_peer.h"

namespace kalvex::vantrel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::string Parcel(const ClientMessage& message) {
    return Pack(message).parcels.at(0);
}
std::string Parcel(const ServerMessage& message) {
    return Pack(message).parcels.at(0);
}

// A client at a server of ours.
class NetworkLimitsClientTest : public testing::Test {
  protected:
    Endpoint Local() const { return {.target = LocalSocketTarget(world.folder.Path("srv"))}; }

    // Until the greeting and the answer to the login have come.
    void LogIn(RawClient& raw) {
        raw.stream->Resume();
        raw.stream->Send(Parcel(ClientMessage(LoginRequest{1, 23, "Obcy", "", ""})));
        world.RunUntil(acceptor, "login / Obcy 23");
        EXPECT_EQ(raw.events->Take(), Pack(Greeting{1}));
        EXPECT_EQ(raw.events->Take(), Parcel(ServerMessage(LoginResult{})));
    }

    support::NetworkWorld world;
    support::HandServer acceptor;
    NetworkServerSettings settings = world.ServerSettings();
    std::unique_ptr<NetworkServer> server;
};

TEST_F(NetworkLimitsClientTest, ServerBeatsAfterTwoSecondsWithoutAWord) {
    server = world.Listen(settings, acceptor);
    RawClient raw(Local(), StreamMethod::Converse);
    LogIn(raw);
    world.now += 1000;
    server->Check();  // it has spoken since it came
    world.now += 2000;
    server->Check();
    EXPECT_EQ(raw.events->Take(), Pack(Heartbeat{}));
}

TEST_F(NetworkLimitsClientTest, ParcelThatDoesNotDecodeEndsTheConversationWithALogLine) {
    server = world.Listen(settings, acceptor);
    RawClient raw(Local(), StreamMethod::Converse);
    LogIn(raw);
    raw.stream->Send("rubbish");
    world.RunUntil(acceptor, "closed 4108");
    EXPECT_EQ(raw.events->Take(), Pack(Farewell{4108}));
    EXPECT_EQ(raw.events->AwaitEnd(), StreamEnd::Orderly);
    EXPECT_THAT(
        world.log.Take(),
        ElementsAre("1 Błąd odbioru pakietu od klienta Obcy (to nie jest komunikat protokołu)"));
}

TEST_F(NetworkLimitsClientTest, ParcelBeyondTheBoundEndsTheConversationWithALogLine) {
    server = world.Listen(settings, acceptor);
    RawClient raw(Local(), StreamMethod::Converse);
    LogIn(raw);
    raw.stream->Send(std::string(kMaxParcelBytes + 1, '\0'));
    world.RunUntil(acceptor, "closed 4108");
    EXPECT_EQ(raw.events->Take(), Pack(Farewell{4108}));
    EXPECT_THAT(world.log.Take(),
                ElementsAre("1 Błąd odbioru pakietu od klienta Obcy (komunikat jest za duży)"));
}

TEST_F(NetworkLimitsClientTest, ParcelFarBeyondTheBoundIsNotEvenTaken) {
    server = world.Listen(settings, acceptor);
    RawClient raw(Local(), StreamMethod::Converse);
    LogIn(raw);
    raw.stream->Send(std::string(3 * kMaxParcelBytes, '\0'));
    EXPECT_EQ(raw.events->AwaitEnd(), StreamEnd::TooLarge);
    world.RunUntil(acceptor, "closed 4104");
}

TEST_F(NetworkLimitsClientTest, ClientThatDoesNotReadIsCutOffAndOthersLoseNothing) {
    settings.outboxLimit = 1 << 20;
    server = world.Listen(settings, acceptor);
    RawClient raw(Local(), StreamMethod::Converse);
    raw.stream->Send(Parcel(ClientMessage(LoginRequest{1, 23, "Obcy", "", ""})));
    world.RunUntil(acceptor, "login / Obcy 23");  // and from now on it reads nothing
    ServerLink* const deaf = acceptor.link;

    NetworkClient client(world.ClientSettings(), world.loop, world.log, world.translator);
    support::HeardEvents events;
    std::uint32_t reason = 0;
    const auto reader = client.Connect("srv", events, reason);
    reader->Open();
    world.RunUntil(events, "opened");
    world.RunUntil([&] { return acceptor.clients == 2; });

    events.heard.clear();
    const std::string ballast(100'000, 'x');
    std::vector<std::string> wanted;
    while (world.log.lines.empty()) {
        const auto number = static_cast<std::int64_t>(wanted.size());
        const LogMessage message{0, number, ballast};
        deaf->Send(message);
        acceptor.link->Send(message);
        wanted.push_back(support::Describe(ServerMessage(message)));
        world.RunUntil(events, wanted.back());
    }
    world.RunUntil(acceptor, "closed 4105");
    EXPECT_EQ(events.heard, wanted);
    EXPECT_THAT(world.log.Take(),
                ElementsAre("1 Klient Obcy nie odbiera komunikatów - połączenie zerwane"));
    EXPECT_THAT(acceptor.heard, ElementsAre("login / Obcy 23", "closed 4105"));
    raw.stream->Resume();
    EXPECT_EQ(raw.events->AwaitEnd(), StreamEnd::Lost);
    server.reset();
}

TEST_F(NetworkLimitsClientTest, ClientThatTakesNothingForTenSecondsIsCutOffThoughItSpeaks) {
    server = world.Listen(settings, acceptor);
    RawClient raw(Local(), StreamMethod::Converse);
    raw.stream->Send(Parcel(ClientMessage(LoginRequest{1, 23, "Obcy", "", ""})));
    world.RunUntil(acceptor, "login / Obcy 23");
    acceptor.heard.clear();
    // Far more than the sockets take on the way.
    for (int count = 0; count < 100; ++count) {
        acceptor.Send(LogMessage{0, 0, std::string(500'000, 'x')});
    }
    EXPECT_GT(acceptor.link->Backlog(), 0u);
    std::uint32_t second = 0;
    while (world.log.lines.empty()) {
        raw.stream->Send(Parcel(ClientMessage(LastMessagesRequest{++second})));
        world.RunUntil(acceptor, "last " + std::to_string(second));
        world.now += 1000;
        server->Check();
    }
    EXPECT_GE(second, 10u);
    world.RunUntil(acceptor, "closed 4105");
    EXPECT_THAT(world.log.Take(),
                ElementsAre("1 Klient Obcy nie odbiera komunikatów - połączenie zerwane"));
}

TEST_F(NetworkLimitsClientTest, WhatIsSaidBeforeTheLoginIsPassedOver) {
    settings.variableLimit = 1;
    acceptor.loginResult = {1, "nie"};
    server = world.Listen(settings, acceptor);
    RawClient raw(Local(), StreamMethod::Converse);
    raw.stream->Send(Parcel(ClientMessage(SubscribeRequest{{{1, "A"}}, {}, 0, true})));
    raw.stream->Send(Parcel(ClientMessage(LoginRequest{1, 23, "Obcy", "jan", ""})));
    world.RunUntil(acceptor, "login jan/ Obcy 23");
    acceptor.loginResult = {};
    raw.stream->Send(Parcel(ClientMessage(SubscribeRequest{{{2, "B"}}, {}, 0, true})));
    raw.stream->Send(Parcel(ClientMessage(LoginRequest{1, 23, "Obcy", "ewa", ""})));
    raw.stream->Send(Parcel(ClientMessage(SubscribeRequest{{{3, "C"}}, {}, 0, true})));
    world.RunUntil(acceptor, "subscribe +3C");
    EXPECT_THAT(acceptor.heard,
                ElementsAre("login jan/ Obcy 23", "login ewa/ Obcy 23", "subscribe +3C"));
    EXPECT_THAT(world.log.Take(), IsEmpty());
}

TEST_F(NetworkLimitsClientTest, SessionHearsWhenItsBacklogHasGone) {
    server = world.Listen(settings, acceptor);
    RawClient raw(Local(), StreamMethod::Converse);
    raw.stream->Send(Parcel(ClientMessage(LoginRequest{1, 23, "Obcy", "", ""})));
    world.RunUntil(acceptor, "login / Obcy 23");
    for (int count = 0; count < 20; ++count) {
        acceptor.Send(LogMessage{0, 0, std::string(500'000, 'x')});
    }
    EXPECT_GT(acceptor.link->Backlog(), 0u);
    raw.stream->Resume();
    world.RunUntil(acceptor, "drained");
    EXPECT_EQ(acceptor.link->Backlog(), 0u);
}

TEST_F(NetworkLimitsClientTest, BreakWithoutAFarewellIsALoss) {
    server = world.Listen(settings, acceptor);
    {
        RawClient raw(Local(), StreamMethod::Converse);
        LogIn(raw);
    }
    world.RunUntil(acceptor, "closed 4104");
    EXPECT_THAT(world.log.Take(), IsEmpty());
}

TEST_F(NetworkLimitsClientTest, CallerThatWaitsWhenTheServerGoesIsTurnedAway) {
    std::promise<void> arrived;
    platform::PostedWork idle([&] { arrived.set_value(); });
    std::string error;
    server = ListenOnNetwork(settings, acceptor, idle, world.log, world.translator, error);
    RawClient raw(Local(), StreamMethod::Converse);
    raw.stream->Resume();
    arrived.get_future().wait();
    server.reset();  // the loop has not run
    EXPECT_NE(raw.events->AwaitEnd(), StreamEnd::Orderly);
    EXPECT_EQ(acceptor.clients, 0);
}

TEST_F(NetworkLimitsClientTest, ListIsAskedForWithALogin) {
    server = world.Listen(settings, acceptor);
    for (const std::string& parcel :
         {Parcel(ClientMessage(LastMessagesRequest{1})), std::string("rubbish")}) {
        RawClient raw(Local(), StreamMethod::ListVariables);
        raw.stream->Resume();
        raw.stream->Send(parcel);
        bool ended = false;
        std::thread waiting([&] {
            EXPECT_EQ(raw.events->AwaitEnd(), StreamEnd::Refused);
            world.loop.Post([&] { ended = true; });
        });
        world.RunUntil([&] { return ended; });
        waiting.join();
    }
    EXPECT_THAT(acceptor.heard, IsEmpty());
    EXPECT_THAT(world.log.Take(), ElementsAre("1 Błąd odbioru pakietu od klienta na tym komputerze "
                                              "(to nie jest komunikat protokołu)"));
}

TEST_F(NetworkLimitsClientTest, ListMayBeAnsweredLater) {
    acceptor.answersList = false;
    server = world.Listen(settings, acceptor);
    RawClient raw(Local(), StreamMethod::ListVariables);
    raw.stream->Resume();
    raw.stream->Send(Parcel(ClientMessage(LoginRequest{1, 23, "Obcy", "jan", ""})));
    raw.stream->Finish(StreamEnd::Orderly);
    world.RunUntil(acceptor, "list jan");
    for (int second = 0; second < 30; ++second) {
        world.loop.Run();
        world.now += 1000;
        server->Check();
    }
    acceptor.definitions = {{"A", {}}};
    acceptor.listAnswer(acceptor.definitions);
    EXPECT_EQ(raw.events->Take(),
              Parcel(ServerMessage(VariableDefinitions{acceptor.definitions, true})));
    EXPECT_EQ(raw.events->AwaitEnd(), StreamEnd::Orderly);
}

TEST_F(NetworkLimitsClientTest, ListCallerThatHasGoneIsNotAnswered) {
    acceptor.answersList = false;
    server = world.Listen(settings, acceptor);
    {
        RawClient raw(Local(), StreamMethod::ListVariables);
        raw.stream->Resume();
        raw.stream->Send(Parcel(ClientMessage(LoginRequest{1, 23, "Obcy", "jan", ""})));
        world.RunUntil(acceptor, "list jan");
    }
    RawClient other(Local(), StreamMethod::Converse);
    LogIn(other);
    acceptor.listAnswer(std::nullopt);
    server.reset();
    acceptor.listAnswer(acceptor.definitions);
    EXPECT_THAT(world.log.Take(), IsEmpty());
}

TEST_F(NetworkLimitsClientTest, ListCallersThatSayNothingKeepNobodyOut) {
    settings.conversationLimit = 4;
    server = world.Listen(settings, acceptor);
    std::vector<std::unique_ptr<RawClient>> silent;
    for (int call = 0; call < 6; ++call) {
        silent.push_back(std::make_unique<RawClient>(Local(), StreamMethod::ListVariables));
        silent.back()->stream->Resume();
    }
    RawClient first(Local(), StreamMethod::Converse);
    LogIn(first);
    RawClient asking(Local(), StreamMethod::ListVariables);
    asking.stream->Resume();
    asking.stream->Send(Parcel(ClientMessage(LoginRequest{1, 23, "Obcy", "jan", ""})));
    world.RunUntil(acceptor, "list jan");
    EXPECT_EQ(asking.events->AwaitEnd(), StreamEnd::Orderly);
    EXPECT_THAT(world.log.Take(), IsEmpty());
}

TEST_F(NetworkLimitsClientTest, ListCallersThatWaitAreBounded) {
    settings.conversationLimit = 1;
    acceptor.answersList = false;
    server = world.Listen(settings, acceptor);
    RawClient first(Local(), StreamMethod::ListVariables);
    first.stream->Resume();
    first.stream->Send(Parcel(ClientMessage(LoginRequest{1, 23, "Obcy", "jan", ""})));
    world.RunUntil([&] { return acceptor.heard.size() == 1; });
    RawClient second(Local(), StreamMethod::ListVariables);
    second.stream->Resume();
    world.RunUntil([&] { return !world.log.lines.empty(); });
    EXPECT_EQ(second.events->AwaitEnd(), StreamEnd::Refused);
    EXPECT_THAT(world.log.Take(),
                ElementsAre("1 Odmowa połączenia z klientem na tym komputerze: za dużo klientów"));
}

TEST_F(NetworkLimitsClientTest, WhoIsNotLoggedInHasALineASecondInTheLog) {
    server = world.Listen(settings, acceptor);
    std::vector<std::unique_ptr<RawClient>> clients;
    for (int call = 0; call < 3; ++call) {
        clients.push_back(std::make_unique<RawClient>(Local(), StreamMethod::Converse));
        clients.back()->stream->Resume();
        clients.back()->stream->Send("rubbish");
    }
    world.RunUntil([&] { return std::ranges::count(acceptor.heard, "closed 4108") == 3; });
    EXPECT_THAT(world.log.Take(), ElementsAre("1 Błąd odbioru pakietu od klienta na tym komputerze "
                                              "(to nie jest komunikat protokołu)"));
    world.now += 1000;
    server->Check();
    EXPECT_THAT(world.log.Take(),
                ElementsAre("1 Odmowy klientom na tym komputerze, których nie ma w logu: 2"));
}

TEST_F(NetworkLimitsClientTest, ListCallerThatSaysNothingIsGivenUp) {
    server = world.Listen(settings, acceptor);
    RawClient raw(Local(), StreamMethod::ListVariables);
    raw.stream->Resume();
    while (world.log.lines.empty()) {
        if (!world.loop.Run()) std::this_thread::yield();
        world.now += 1000;
        server->Check();
    }
    EXPECT_NE(raw.events->AwaitEnd(), StreamEnd::Orderly);
    EXPECT_THAT(world.log.Take(),
                ElementsAre("1 Klient na tym komputerze nie odpowiada - połączenie zerwane"));
}

// A client of ours at a server.
class NetworkLimitsServerTest : public testing::Test {
  protected:
    void Open() {
        std::uint32_t reason = 0;
        transport = client.Connect("srv", events, reason);
        transport->Open();
        raw.AwaitClient();
        raw.stream->Send(Pack(Greeting{1}));
        world.RunUntil(events, "opened");
        events.heard.clear();
    }

    support::NetworkWorld world;
    support::HeardEvents events;
    NetworkClientSettings settings = world.ClientSettings();
    NetworkClient client{settings, world.loop, world.log, world.translator};
    std::unique_ptr<ClientTransport> transport;
    // The first to go, so that no client waits for its answer to the farewell.
    RawServer raw{world.folder.Path("srv")};
};

TEST_F(NetworkLimitsServerTest, ClientBeatsAfterTwoSecondsWithoutAWord) {
    Open();
    world.now += 2000;
    client.Check();
    EXPECT_EQ(raw.events->Take(), Pack(Heartbeat{}));
}

TEST_F(NetworkLimitsServerTest, ClientEndsWithAFarewellAndLeavesTheRestToTheServer) {
    Open();
    transport->Close(ReasonClosed);
    EXPECT_EQ(raw.events->Take(), Pack(Farewell{4106}));
    raw.events->AwaitEnd();
    raw.stream->Finish(StreamEnd::Orderly);
}

TEST_F(NetworkLimitsServerTest, MessageThatDoesNotDecodeIsLostAndTheConversationGoesOn) {
    Open();
    raw.stream->Send("rubbish");
    raw.stream->Send(std::string(kMaxParcelBytes + 1, '\0'));
    raw.stream->Send(Parcel(ServerMessage(ReportChange{value::KindHour, 1})));
    world.RunUntil(events, "report change 2 1");
    EXPECT_THAT(events.heard, ElementsAre("fault 4 4108", "fault 4 4108", "report change 2 1"));
}

TEST_F(NetworkLimitsServerTest, ServerThatBreaksOffIsALoss) {
    Open();
    raw.stream->Cancel();
    world.RunUntil(events, "closed 4104");
}

TEST_F(NetworkLimitsServerTest, NothingCountsBeforeTheGreeting) {
    std::uint32_t reason = 0;
    transport = client.Connect("srv", events, reason);
    transport->Open();
    raw.AwaitClient();
    transport->Send(LastMessagesRequest{1});
    raw.stream->Send(Parcel(ServerMessage(LogMessage{0, 0, "za wcześnie"})));
    raw.stream->Send(Pack(Greeting{1}));
    world.RunUntil(events, "opened");
    transport->Send(LastMessagesRequest{2});
    EXPECT_EQ(raw.events->Take(), Parcel(ClientMessage(LastMessagesRequest{2})));
    EXPECT_THAT(events.heard, ElementsAre("opened"));
}

TEST_F(NetworkLimitsServerTest, RubbishForAGreetingFailsTheAttempt) {
    std::uint32_t reason = 0;
    transport = client.Connect("srv", events, reason);
    transport->Open();
    raw.AwaitClient();
    raw.stream->Send("rubbish");
    world.RunUntil(events, "fault 2 4108");
    EXPECT_THAT(world.log.Take(), ElementsAre("1 Serwer srv jest nieosiągalny: pod " +
                                              world.folder.Path("srv") + " działa inny program"));
}

TEST_F(NetworkLimitsServerTest, ServerThatDoesNotReadCountsAsGone) {
    settings.outboxLimit = 10'000;
    NetworkClient narrow(settings, world.loop, world.log, world.translator);
    std::uint32_t reason = 0;
    transport = narrow.Connect("srv", events, reason);
    transport->Open();
    raw.AwaitClient();
    raw.stream->Send(Pack(Greeting{1}));
    world.RunUntil(events, "opened");
    transport->Send(
        ModifyRequests{{{1, value::KindCurrent, "A", 0, value::CVal(std::string(20'000, 'x'))}}});
    EXPECT_THAT(events.heard, ElementsAre("opened"));
    world.RunUntil(events, "closed 4105");
    EXPECT_THAT(
        world.log.Take(),
        ElementsAre("1 Serwer srv nie odbiera komunikatów (brak odpowiedzi drugiej strony)"));
    transport.reset();
}

}  // namespace
}  // namespace kalvex::vantrel
