#include <gmock/gmock.h>

#include "vantrel/Codes.h"
#include "vantrel/hand_server.h"

namespace kalvex {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class HeardEvents final : public ClientTransportEvents {
  public:
    void OnOpened() override { events.push_back("opened"); }
    void OnMessage(ServerMessage message) override {
        events.push_back("message " + std::to_string(message.index()));
    }
    void OnFault(ConnectionFault fault, std::uint32_t reason) override {
        events.push_back("fault " + std::to_string(static_cast<int>(fault)) + " " +
                         std::to_string(reason));
    }
    void OnClosed(std::uint32_t reason) override {
        events.push_back("closed " + std::to_string(reason));
    }

    std::vector<std::string> events;
};

class InProcess : public testing::Test {
  protected:
    void SetUp() override {
        network.AddServer("srv", server);
        std::uint32_t reason = 0;
        transport = network.Connect("srv", client, reason);
    }

    void Open() {
        transport->Open();
        network.Deliver();
        client.events.clear();
    }

    InProcessNetwork network;
    HandServer server;
    HeardEvents client;
    std::unique_ptr<ClientTransport> transport;
};

TEST_F(InProcess, NothingIsDeliveredFromWithinACall) {
    EXPECT_TRUE(transport->Open());
    EXPECT_THAT(client.events, IsEmpty());
    network.Deliver();
    EXPECT_THAT(client.events, ElementsAre("opened"));
    transport->Send(LoginRequest{});
    EXPECT_THAT(server.heard, IsEmpty());
    network.Deliver();
    EXPECT_THAT(server.heard, ElementsAre("login /  0"));
    EXPECT_THAT(client.events, ElementsAre("opened", "message 0"));
}

TEST_F(InProcess, OpenTwiceMakesOneConversation) {
    transport->Open();
    EXPECT_TRUE(transport->Open());
    network.Deliver();
    EXPECT_TRUE(transport->Open());
    network.Deliver();
    EXPECT_THAT(client.events, ElementsAre("opened"));
    EXPECT_EQ(server.clients, 1);
}

TEST_F(InProcess, UnknownNameIsOutOfReach) {
    std::uint32_t reason = 0;
    const auto other = network.Connect("inny", client, reason);
    EXPECT_FALSE(other->Open());
    network.Deliver();
    EXPECT_THAT(client.events, IsEmpty());
    std::vector<VariableDefinition> list;
    EXPECT_FALSE(other->LoadVariableList({}, list));
}

TEST_F(InProcess, ListOfVariablesIsHadAtOnceOrNotAtAll) {
    server.definitions = {{"A", {{"un", "MPa"}}}, {"B", {}}};
    std::vector<VariableDefinition> list;
    LoginRequest login;
    login.user = "jan";
    ASSERT_TRUE(transport->LoadVariableList(login, list));
    ASSERT_EQ(list.size(), 2u);
    EXPECT_EQ(list[0].name, "A");
    EXPECT_EQ(list[1].name, "B");
    server.lists = false;
    EXPECT_FALSE(transport->LoadVariableList(login, list));
    server.answersList = false;
    EXPECT_FALSE(transport->LoadVariableList(login, list));
    server.listAnswer(server.definitions);
    EXPECT_EQ(list.size(), 2u);
    EXPECT_THAT(server.heard, ElementsAre("list jan", "list jan", "list jan"));
}

TEST_F(InProcess, CloseByTheClient) {
    Open();
    transport->Send(LastMessagesRequest{5});
    transport->Close(ReasonClosed);
    transport->Send(LastMessagesRequest{6});
    network.Deliver();
    EXPECT_THAT(server.heard, ElementsAre("last 5", "closed 4106"));
    EXPECT_THAT(client.events, ElementsAre("closed 4102"));
    transport->Check();
    network.Deliver();
    EXPECT_THAT(client.events, ElementsAre("closed 4102"));
    EXPECT_TRUE(transport->Open());
    network.Deliver();
    EXPECT_THAT(client.events, ElementsAre("closed 4102", "opened"));
}

TEST_F(InProcess, CloseByTheServerComesBackWithTheNextCheck) {
    Open();
    server.Send(ReportChange{});
    server.link->Close(ReasonBadMessage);
    server.Send(ReportChange{});
    network.Deliver();
    EXPECT_THAT(client.events, ElementsAre("message 6", "closed 4108"));
    EXPECT_THAT(server.heard, ElementsAre("closed 4108"));
    transport->Check();
    network.Deliver();
    EXPECT_THAT(client.events, ElementsAre("message 6", "closed 4108", "opened"));
}

TEST_F(InProcess, CloseBeforeItWasOpenIsSilent) {
    transport->Open();
    transport->Close(ReasonClosed);
    network.Deliver();
    EXPECT_THAT(client.events, IsEmpty());
    EXPECT_EQ(server.clients, 0);
}

TEST_F(InProcess, DestroyedTransportEndsTheConversation) {
    Open();
    server.Send(ReportChange{});
    transport.reset();
    network.Deliver();
    EXPECT_THAT(client.events, IsEmpty());
    EXPECT_THAT(server.heard, ElementsAre("closed 4106"));
}

TEST_F(InProcess, RemovedServerEndsItsConversations) {
    Open();
    network.RemoveServer("srv");
    EXPECT_THAT(client.events, ElementsAre("closed 4107"));
    EXPECT_THAT(server.heard, ElementsAre("closed 4107"));
    transport->Check();
    network.Deliver();
    EXPECT_THAT(client.events, ElementsAre("closed 4107"));
    network.AddServer("srv", server);
    network.Deliver();
    EXPECT_THAT(client.events, ElementsAre("closed 4107", "opened"));
}

TEST_F(InProcess, BacklogGoesDownAndIsToldWhenAskedFor) {
    Open();
    server.Send(ReportChange{});
    network.Deliver();
    EXPECT_THAT(server.heard, IsEmpty());
    server.Send(ReportChange{});
    server.Send(ReportChange{});
    EXPECT_EQ(server.link->Backlog(), 2u);
    network.Deliver();
    EXPECT_EQ(server.link->Backlog(), 0u);
    EXPECT_THAT(server.heard, ElementsAre("drained"));
}

TEST(ConnectionReasons, HaveWords) {
    EXPECT_EQ(ConnectionReasonText(ReasonUnknownAddress, Translator()), "nieznany adres serwera");
    EXPECT_EQ(ConnectionReasonText(17, Translator()), "kod 17");
}

}  // namespace
}  // namespace kalvex
