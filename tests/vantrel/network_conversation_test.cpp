// Conversations over local sockets and loopback, from the greeting to the farewell.
#include <gmock/gmock.h>

#include <future>
#include <thread>

#include "support/network_world.h"
#include "support/value_dump.h"
#include "support/waiting_loop.h"
#include "text/CodePage.h"
#include "vantrel/Codes.h"

namespace kalvex::vantrel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

class NetworkConversationTest : public testing::Test {
  protected:
    std::unique_ptr<ClientTransport> Connect(support::HeardEvents& heard) {
        std::uint32_t reason = 0;
        auto transport = client.Connect("srv", heard, reason);
        EXPECT_EQ(reason, 0u);
        return transport;
    }

    // Opens the conversation and forgets what was heard on the way.
    void Open() {
        transport = Connect(events);
        EXPECT_TRUE(transport->Open());
        world.RunUntil(events, "opened");
        world.RunUntil([&] { return acceptor.link != nullptr; });
        events.heard.clear();
    }

    // Until what the server said before has arrived.
    void Flush() {
        acceptor.Send(LogMessage{0, 0, "flush"});
        world.RunUntil(events, "log 0 0 flush");
        std::erase(events.heard, "log 0 0 flush");
    }

    std::string Refused() const {
        return "1 Serwer srv nie przyjmuje połączenia przez " + world.folder.Path("srv") +
               " (powód podaje jego log)";
    }
    std::string Absent() const {
        return "Serwer srv jest nieosiągalny: nie ma gniazda " + world.folder.Path("srv") +
               " (czy serwer jest uruchomiony?)";
    }

    support::NetworkWorld world;
    support::HandServer acceptor;
    NetworkClient client{world.ClientSettings(), world.loop, world.log, world.translator};
    support::HeardEvents events;
    std::unique_ptr<ClientTransport> transport;
    // The first to go, so that no client waits for its answer to the farewell.
    std::unique_ptr<NetworkServer> server = world.Listen(world.ServerSettings(), acceptor);
};

TEST_F(NetworkConversationTest, MessagesGoBothWaysInOrder) {
    Open();
    transport->Send(LoginRequest{1, 23, "Kalvex", "jan", "tajne"});
    world.RunUntil(events, "login result 0 ");
    transport->Send(SubscribeRequest{{{1, "Z1"}, {2, text::FromUtf8("Ciśnienie")}}, {}, 577, true});
    transport->Send(ReadRequests{{{1, value::KindHour, "Z1", 0, 3600}}});
    transport->Send(LastMessagesRequest{5});
    world.RunUntil(acceptor, "last 5");
    EXPECT_THAT(acceptor.heard, ElementsAre("login jan/tajne Kalvex 23",
                                            "subscribe +1Z1 +2" + text::FromUtf8("Ciśnienie"),
                                            "read 1:2Z1[0..3600]", "last 5"));
    acceptor.Send(ValueUpdates{{{1, support::Stamped(value::CVal(2.5), 100, 4)}}, true});
    acceptor.Send(ReadAnswer{1, 0, {value::CVal(7)}, true});
    acceptor.Send(ReportChange{value::KindDay, 5});
    world.RunUntil(events, "report change 3 5");
    EXPECT_THAT(events.heard, ElementsAre("login result 0 ", "updates 1=171:2.50/4@100",
                                          "answer 1 0 150:7/0@0", "report change 3 5"));
    EXPECT_THAT(world.log.Take(), IsEmpty());
}

TEST_F(NetworkConversationTest, NothingIsDeliveredWithinACall) {
    transport = Connect(events);
    transport->Open();
    EXPECT_THAT(events.heard, IsEmpty());
    world.RunUntil(events, "opened");
    transport->Send(SubscribeRequest{{{1, std::string(2000, 'A')}}, {}, 0, true});
    EXPECT_THAT(events.heard, ElementsAre("opened"));
    world.RunUntil(events, "access errors 1:4");
    transport->Close(ReasonClosed);
    EXPECT_THAT(events.heard, ElementsAre("opened", "access errors 1:4"));
    world.RunUntil(events, "closed 4102");
}

TEST_F(NetworkConversationTest, RefusedLoginTravels) {
    acceptor.loginResult = {7, text::FromUtf8("złe hasło")};
    Open();
    transport->Send(LoginRequest{1, 23, "Kalvex", "jan", "?"});
    world.RunUntil(events, "login result 7 " + text::FromUtf8("złe hasło"));
    transport->Close(ReasonLoginRefused);
    world.RunUntil(acceptor, "closed 4103");
    world.RunUntil(events, "closed 4103");
}

TEST_F(NetworkConversationTest, ConnectionOfTheLibraryLogsInAndSubscribes) {
    support::HeardConnection connection;
    connection.SetLoginData("jan", "tajne");
    ASSERT_TRUE(connection.Create(23, "srv", "Kalvex", client, nullptr));
    connection.RegisterVariable("Z1");
    connection.Subscribe();
    world.RunUntil(acceptor, "subscribe +1Z1");
    acceptor.SendValue(1, value::CVal(5));
    world.RunUntil([&] { return connection.GetVarVal("Z1")->Value().GetType() == 150; });
    EXPECT_THAT(connection.events, ElementsAre("access ", "connect", "data"));
}

TEST_F(NetworkConversationTest, ClientEndsWithAWordToTheServer) {
    for (const auto& [reason, heard] :
         {std::pair(ReasonClosed, "closed 4106"), std::pair(ReasonLoginChanged, "closed 4101")}) {
        Open();
        transport->Close(reason);
        world.RunUntil(acceptor, heard);
        world.RunUntil(events, "closed " + std::to_string(reason));
    }
}

TEST_F(NetworkConversationTest, DestroyedClientSaysFarewellAndHearsNothing) {
    Open();
    transport.reset();
    world.RunUntil(acceptor, "closed 4106");
    EXPECT_THAT(events.heard, IsEmpty());
}

TEST_F(NetworkConversationTest, WhatWasSentBeforeTheEndArrives) {
    Open();
    transport->Send(LoginRequest{1, 23, "Kalvex", "", ""});
    std::vector<std::string> expected{"login / Kalvex 23"};
    for (std::uint32_t count = 1; count <= 100; ++count) {
        transport->Send(LastMessagesRequest{count});
        expected.push_back("last " + std::to_string(count));
    }
    transport->Close(ReasonClosed);
    expected.emplace_back("closed 4106");
    world.RunUntil(acceptor, "closed 4106");
    EXPECT_EQ(acceptor.heard, expected);
}

TEST_F(NetworkConversationTest, ServerEndsAConversationWithItsReason) {
    Open();
    acceptor.Send(LogMessage{1, 2, "ostatnie"});
    acceptor.link->Close(ReasonLoginRefused);
    EXPECT_THAT(acceptor.heard, IsEmpty());
    world.RunUntil(acceptor, "closed 4103");
    world.RunUntil(events, "closed 4103");
    EXPECT_EQ(events.heard.front(), "log 1 2 ostatnie");
}

TEST_F(NetworkConversationTest, ServerThatEndsTellsAllClientsAndSessions) {
    Open();
    support::HeardEvents otherEvents;
    const auto other = Connect(otherEvents);
    other->Open();
    world.RunUntil(otherEvents, "opened");
    server.reset();
    EXPECT_THAT(acceptor.heard, ElementsAre("closed 4107", "closed 4107"));
    world.RunUntil(events, "closed 4107");
    world.RunUntil(otherEvents, "closed 4107");
}

TEST_F(NetworkConversationTest, ServerThatRefusesIsOneThatCannotBeReached) {
    acceptor.accepts = false;
    transport = Connect(events);
    EXPECT_TRUE(transport->Open());
    world.RunUntil(events, "fault 2 4110");
    EXPECT_THAT(events.heard, ElementsAre("fault 2 4110"));
    EXPECT_THAT(world.log.Take(), ElementsAre(Refused()));
}

TEST_F(NetworkConversationTest, ConversationsAreBounded) {
    server.reset();
    NetworkServerSettings settings = world.ServerSettings();
    settings.conversationLimit = 1;
    server = world.Listen(settings, acceptor);
    Open();
    support::HeardEvents otherEvents;
    const auto other = Connect(otherEvents);
    other->Open();
    world.RunUntil(otherEvents, "fault 2 4110");
    EXPECT_EQ(acceptor.clients, 1);
    EXPECT_THAT(world.log.Take(),
                ElementsAre("1 Odmowa połączenia z klientem na tym komputerze: za dużo klientów",
                            Refused()));
    Flush();
}

TEST_F(NetworkConversationTest, SubscribedVariablesAreBounded) {
    server.reset();
    NetworkServerSettings settings = world.ServerSettings();
    settings.variableLimit = 2;
    server = world.Listen(settings, acceptor);
    Open();
    transport->Send(LoginRequest{1, 23, "Kalvex", "", ""});
    transport->Send(SubscribeRequest{{{1, "A"}, {2, "B"}, {3, "C"}}, {}, 0, true});
    world.RunUntil(events, "access errors 3:4");
    transport->Send(SubscribeRequest{{{4, "D"}}, {1}, 0, true});
    world.RunUntil(acceptor, "subscribe +4D -1");
    EXPECT_THAT(acceptor.heard,
                ElementsAre("login / Kalvex 23", "subscribe +1A +2B", "subscribe +4D -1"));
    EXPECT_THAT(world.log.Take(), ElementsAre("1 Klient Kalvex subskrybuje za dużo zmiennych"));
}

TEST_F(NetworkConversationTest, WhatTheServerDoesNotTakeIsNoSubscription) {
    server.reset();
    NetworkServerSettings settings = world.ServerSettings();
    settings.variableLimit = 2;
    server = world.Listen(settings, acceptor);
    Open();
    transport->Send(LoginRequest{1, 23, "Kalvex", "", ""});
    transport->Send(SubscribeRequest{{{1, "A"}, {2, "B"}}, {}, 0, true});
    world.RunUntil(acceptor, "subscribe +1A +2B");
    acceptor.Send(AccessErrors{{{1, 0}, {2, ResultBadRequest}}});
    world.RunUntil(events, "access errors 1:0 2:4");
    transport->Send(SubscribeRequest{{{3, "C"}, {4, "D"}}, {}, 0, true});
    world.RunUntil(events, "access errors 4:4");
    EXPECT_THAT(acceptor.heard,
                ElementsAre("login / Kalvex 23", "subscribe +1A +2B", "subscribe +3C"));
}

TEST_F(NetworkConversationTest, TextThatIsTooLongIsLeftOutWithALogLine) {
    Open();
    transport->Send(LoginRequest{1, 23, "Kalvex", "", ""});
    world.RunUntil(events, "login result 0 ");
    acceptor.Send(
        ValueUpdates{{{1, value::CVal(std::string(2 << 20, 'x'))}, {2, value::CVal(1)}}, true});
    world.RunUntil(events, "updates 2=150:1/0@0");
    EXPECT_THAT(world.log.Take(),
                ElementsAre("1 Klient Kalvex nie otrzyma za długich danych (pozycje: 1)"));
}

// ---- breaks and attempts

TEST_F(NetworkConversationTest, ClientComesBackByItselfWhenTheServerDoes) {
    Open();
    server.reset();
    world.RunUntil(events, "closed 4107");
    world.now += 500;
    client.Check();
    world.RunUntil(events, "fault 2 4110");
    server = world.Listen(world.ServerSettings(), acceptor);
    world.now += 1000;
    client.Check();
    world.RunUntil(events, "opened");
    EXPECT_THAT(events.heard, ElementsAre("closed 4107", "fault 2 4110", "opened"));
    const std::vector<std::string> lines = world.log.Take();
    EXPECT_THAT(lines, ElementsAre("1 " + Absent(), StartsWith("3 Brak połączenia z srv ("),
                                   "1 Serwer srv odpowiada (" + world.folder.Path("srv") + ")"));
    world.RunUntil([&] { return acceptor.link != nullptr; });
    events.heard.clear();
    Flush();
}

TEST_F(NetworkConversationTest, EachReturnIsToldThoughNoFaultLiesBetween) {
    Open();
    for (int i = 0; i < 2; ++i) {
        server.reset();
        world.RunUntil(events, "closed 4107");
        events.heard.clear();
        server = world.Listen(world.ServerSettings(), acceptor);
        world.now += 60'000;
        client.Check();
        world.RunUntil(events, "opened");
        events.heard.clear();
        EXPECT_THAT(world.log.Take(),
                    ElementsAre("1 Serwer srv odpowiada (" + world.folder.Path("srv") + ")"));
    }
}

TEST_F(NetworkConversationTest, FaultIsToldOnceForEachChange) {
    server.reset();
    transport = Connect(events);
    transport->Open();
    const auto fail = [this] {
        world.RunUntil(events, "fault 2 4110");
        events.heard.clear();
        world.now += 60'000;
        client.Check();
    };
    fail();
    EXPECT_EQ(world.log.Take().front(), "1 " + Absent());
    fail();
    fail();
    EXPECT_THAT(world.log.Take(), IsEmpty());
    world.folder.Put("srv", "");
    while (world.log.lines.empty()) fail();
    EXPECT_EQ(world.log.Take().front(),
              "1 Serwer srv jest nieosiągalny: nikt nie obsługuje gniazda " +
                  world.folder.Path("srv") + " (czy serwer jest uruchomiony?)");
    transport.reset();
}

TEST_F(NetworkConversationTest, ClientMayKeepFaultsToItself) {
    server.reset();
    NetworkClientSettings settings = world.ClientSettings();
    settings.tellsFaults = false;
    NetworkClient quiet(settings, world.loop, world.log, world.translator);
    std::uint32_t reason = 0;
    EXPECT_EQ(quiet.Connect("a/b", events, reason), nullptr);
    transport = quiet.Connect("srv", events, reason);
    transport->Open();
    world.RunUntil(events, "fault 2 4110");
    server = world.Listen(world.ServerSettings(), acceptor);
    world.now += 500;
    quiet.Check();
    world.RunUntil(events, "opened");
    EXPECT_THAT(world.log.Take(), IsEmpty());
    server.reset();
    transport.reset();
}

TEST_F(NetworkConversationTest, ConnectionOfTheLibraryLogsInAndSubscribesAgain) {
    support::HeardConnection connection;
    ASSERT_TRUE(connection.Create(23, "srv", "Kalvex", client, nullptr));
    connection.RegisterVariable("Z1");
    connection.RegisterVariable("Z2");
    connection.Subscribe();
    world.RunUntil(acceptor, "subscribe +1Z1 +2Z2");
    support::HeardWindow window;
    connection.AddDataRequest(value::KindHour, "Z1", 0, 0, nullptr, window);
    connection.MakeDataRequest(value::KindHour);
    server.reset();
    world.RunUntil([&] { return !window.answers.empty(); });
    EXPECT_THAT(window.answers, ElementsAre("2Z1 1 /0"));
    acceptor.heard.clear();
    server = world.Listen(world.ServerSettings(), acceptor);
    world.now += 500;
    client.Check();
    world.RunUntil(acceptor, "subscribe +1Z1 +2Z2");
    EXPECT_THAT(acceptor.heard, ElementsAre("login / Kalvex 23", "subscribe +1Z1 +2Z2"));
}

TEST_F(NetworkConversationTest, PausesBetweenAttemptsGrowToFiveSeconds) {
    // An attempt without its certificate fails at once.
    NetworkClientSettings settings = world.ClientSettings();
    settings.addresses["far"] = {.address = "localhost:1", .tls = TlsFiles{.authority = "/none"}};
    NetworkClient lone(settings, world.loop, world.log, world.translator);
    std::uint32_t reason = 0;
    transport = lone.Connect("far", events, reason);
    transport->Open();
    world.loop.Run();
    EXPECT_THAT(events.heard, ElementsAre("fault 2 4110"));
    for (const int pause : {500, 1000, 2000, 4000, 5000, 5000}) {
        events.heard.clear();
        world.now += pause - 1;
        lone.Check();
        world.loop.Run();
        EXPECT_THAT(events.heard, IsEmpty());
        world.now += 1;
        lone.Check();
        world.loop.Run();
        EXPECT_THAT(events.heard, ElementsAre("fault 2 4110"));
    }
    EXPECT_THAT(world.log.Take(),
                ElementsAre("1 Brak połączenia z far (Brak dostępu do pliku /none (No such file or "
                            "directory))"));
    transport.reset();
}

TEST_F(NetworkConversationTest, ClosedClientRestsUntilItIsOpenedAgain) {
    Open();
    transport->Close(ReasonClosed);
    world.RunUntil(events, "closed 4102");
    world.now += 60'000;
    client.Check();
    EXPECT_EQ(acceptor.clients, 1);
    events.heard.clear();
    EXPECT_TRUE(transport->Open());
    world.RunUntil(events, "opened");
    EXPECT_EQ(acceptor.clients, 2);
}

TEST_F(NetworkConversationTest, ClosingWhileOpeningIsHeardByNobody) {
    transport = Connect(events);
    transport->Open();
    transport->Close(ReasonClosed);
    transport->Open();
    world.RunUntil(events, "opened");
    EXPECT_THAT(events.heard, ElementsAre("opened"));
}

// ---- signs of life

TEST_F(NetworkConversationTest, SilentServerCountsAsGoneAfterTenSeconds) {
    Open();
    Flush();
    for (int second = 0; second < 10; ++second) {
        EXPECT_THAT(events.heard, IsEmpty());
        world.now += 1000;
        client.Check();  // the server's is not called: it hangs
        world.loop.Run();
    }
    // The word of the last Flush counts at the first look.
    world.now += 1000;
    client.Check();
    world.RunUntil(events, "closed 4105");
    EXPECT_THAT(world.log.Take(), IsEmpty());
}

TEST_F(NetworkConversationTest, SilentClientCountsAsGoneAfterTenSeconds) {
    Open();
    transport->Send(LoginRequest{1, 23, "Kalvex", "", ""});
    world.RunUntil(events, "login result 0 ");
    for (int second = 0; second < 11; ++second) {
        world.now += 1000;
        server->Check();
    }
    world.RunUntil(acceptor, "closed 4105");
    world.RunUntil(events, "closed 4104");
    EXPECT_THAT(world.log.Take(),
                ElementsAre("1 Klient Kalvex nie odpowiada - połączenie zerwane"));
}

TEST_F(NetworkConversationTest, ServerThatNeverGreetsIsGivenUp) {
    transport = Connect(events);
    transport->Open();
    for (int second = 0; second < 10; ++second) {
        world.now += 1000;
        client.Check();
    }
    world.loop.Run();
    EXPECT_THAT(events.heard, testing::Contains("fault 2 4105"));
    EXPECT_THAT(world.log.Take(),
                ElementsAre("1 Serwer srv jest nieosiągalny: brak odpowiedzi z " +
                            world.folder.Path("srv") +
                            " (czy serwer nie jest zawieszony, a komputer i sieć działają?)"));
}

// ---- the list of variables

class NetworkConversationListTest : public NetworkConversationTest {
  protected:
    // The client waits, so the server has a thread of its own.
    void Serve() {
        server.reset();
        thread = std::thread([this] {
            std::string error;
            const auto listening = ListenOnNetwork(world.ServerSettings(), acceptor, serverLoop,
                                                   serverLog, world.translator, error);
            ready.set_value();
            while (!over) serverLoop.WaitAndRun();
        });
        ready.get_future().wait();
    }
    ~NetworkConversationListTest() override {
        serverLoop.Post([this] { over = true; });
        if (thread.joinable()) thread.join();
    }

    const LoginRequest login{1, 23, "Kalvex", "jan", "tajne"};
    std::vector<VariableDefinition> list;
    support::WaitingLoop serverLoop;
    support::LogRecorder serverLog;
    std::promise<void> ready;
    bool over = false;
    std::thread thread;
};

TEST_F(NetworkConversationListTest, WholeListComesInTheServersOrder) {
    for (int number = 0; number < 20000; ++number) {
        acceptor.definitions.push_back({"Z" + std::to_string(20000 - number), {{"un", "m3/h"}}});
    }
    Serve();
    transport = Connect(events);
    ASSERT_TRUE(transport->LoadVariableList(login, list));
    ASSERT_EQ(list.size(), 20000u);
    EXPECT_EQ(support::Describe(ServerMessage(VariableDefinitions{list, true})),
              support::Describe(ServerMessage(VariableDefinitions{acceptor.definitions, true})));
    EXPECT_THAT(acceptor.heard, ElementsAre("list jan"));
    EXPECT_THAT(events.heard, IsEmpty());
}

TEST_F(NetworkConversationListTest, EmptyListIsAListToo) {
    Serve();
    transport = Connect(events);
    list.push_back({"X", {}});
    EXPECT_TRUE(transport->LoadVariableList(login, list));
    EXPECT_THAT(list, IsEmpty());
}

TEST_F(NetworkConversationListTest, RefusedListFails) {
    acceptor.lists = false;
    Serve();
    transport = Connect(events);
    EXPECT_FALSE(transport->LoadVariableList(login, list));
    EXPECT_THAT(acceptor.heard, ElementsAre("list jan"));
}

TEST_F(NetworkConversationListTest, ListOfAServerThatIsNotThereFails) {
    server.reset();
    transport = Connect(events);
    EXPECT_FALSE(transport->LoadVariableList(login, list));
}

TEST_F(NetworkConversationListTest, ListOfAServerThatHangsFails) {
    NetworkClientSettings settings = world.ClientSettings();
    settings.listPatience = std::chrono::milliseconds(1);
    NetworkClient hasty(settings, world.loop, world.log, world.translator);
    std::uint32_t reason = 0;
    transport = hasty.Connect("srv", events, reason);
    EXPECT_FALSE(transport->LoadVariableList(login, list));  // its loop does not run
    transport.reset();
}

TEST_F(NetworkConversationListTest, LoginThatCannotBeSentFails) {
    transport = Connect(events);
    EXPECT_FALSE(transport->LoadVariableList({1, 23, std::string(2000, 'x'), "", ""}, list));
}

// ---- the list of variables, without waiting

class NetworkConversationAskedListTest : public NetworkConversationTest {
  protected:
    NetworkConversationAskedListTest() { transport = Connect(events); }

    void Ask(const char* name = "Kalvex") {
        transport->AskVariableList({1, 23, name, "jan", "tajne"}, [this](auto list) {
            answers.push_back(list ? support::Describe(VariableDefinitions{*std::move(list), true})
                                   : "nothing");
        });
    }
    void RunUntilAnswered(std::size_t count) {
        world.RunUntil([&] { return answers.size() >= count; });
    }

    std::vector<std::string> answers;
};

TEST_F(NetworkConversationAskedListTest, ListComesWithTheMainLoop) {
    acceptor.definitions = {{"B", {{"un", "bar"}}}, {"A", {}}};
    const std::string whole = support::Describe(VariableDefinitions{acceptor.definitions, true});
    Ask();
    EXPECT_THAT(answers, IsEmpty());
    RunUntilAnswered(1);
    EXPECT_THAT(answers, ElementsAre(whole));
    EXPECT_THAT(acceptor.heard, ElementsAre("list jan"));
    Ask();
    Ask();
    RunUntilAnswered(3);
    EXPECT_THAT(answers, ElementsAre(whole, whole, whole));
    world.now += 60'000;
    client.Check();
    EXPECT_EQ(answers.size(), 3u);
}

TEST_F(NetworkConversationAskedListTest, RefusedListIsNothing) {
    acceptor.lists = false;
    Ask();
    RunUntilAnswered(1);
    EXPECT_THAT(answers, ElementsAre("nothing"));
}

TEST_F(NetworkConversationAskedListTest, ListOfAServerThatIsNotThereIsNothing) {
    server.reset();
    Ask();
    RunUntilAnswered(1);
    EXPECT_THAT(answers, ElementsAre("nothing"));
}

TEST_F(NetworkConversationAskedListTest, ServerThatHangsIsGivenUpAfterFiveSeconds) {
    acceptor.answersList = false;
    Ask();
    world.now += 1000;
    Ask();
    world.now += 3999;
    client.Check();
    world.loop.Run();
    EXPECT_THAT(answers, IsEmpty());
    world.now += 1;
    client.Check();
    client.Check();
    EXPECT_THAT(answers, IsEmpty());
    world.loop.Run();
    EXPECT_THAT(answers, ElementsAre("nothing"));
    world.now += 1000;
    client.Check();
    world.loop.Run();
    EXPECT_THAT(answers, ElementsAre("nothing", "nothing"));
    world.now += 60'000;
    client.Check();
    world.loop.Run();
    EXPECT_EQ(answers.size(), 2u);
}

TEST_F(NetworkConversationAskedListTest, LoginThatCannotBeSentIsNothing) {
    Ask(std::string(2000, 'x').c_str());
    EXPECT_THAT(answers, ElementsAre("nothing"));
}

TEST_F(NetworkConversationAskedListTest, TransportThatGoesDoesNotAnswer) {
    Ask();
    world.RunUntil(acceptor, "list jan");
    transport.reset();
    transport = Connect(events);
    acceptor.lists = false;
    Ask();
    RunUntilAnswered(1);
    EXPECT_THAT(answers, ElementsAre("nothing"));
}

}  // namespace
}  // namespace kalvex::vantrel
