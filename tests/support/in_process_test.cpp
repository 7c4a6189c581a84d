#include <gmock/gmock.h>

#include "support/hand_server.h"
#include "support/heard_events.h"
#include "vantrel/Codes.h"

namespace kalvex::support {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class InProcessTest : public testing::Test {
  protected:
    void SetUp() override {
        network.AddServer("srv", server);
        std::uint32_t reason = 0;
        transport = network.Connect("srv", client, reason);
    }

    void Open() {
        transport->Open();
        network.Deliver();
        client.heard.clear();
    }

    InProcessNetwork network;
    HandServer server;
    HeardEvents client;
    std::unique_ptr<vantrel::ClientTransport> transport;
};

TEST_F(InProcessTest, NothingIsDeliveredFromWithinACall) {
    EXPECT_TRUE(transport->Open());
    EXPECT_THAT(client.heard, IsEmpty());
    network.Deliver();
    EXPECT_THAT(client.heard, ElementsAre("opened"));
    transport->Send(vantrel::LoginRequest{});
    EXPECT_THAT(server.heard, IsEmpty());
    network.Deliver();
    EXPECT_THAT(server.heard, ElementsAre("login /  0"));
    EXPECT_THAT(client.heard, ElementsAre("opened", "login result 0 "));
}

TEST_F(InProcessTest, OpenTwiceMakesOneConversation) {
    transport->Open();
    EXPECT_TRUE(transport->Open());
    network.Deliver();
    EXPECT_TRUE(transport->Open());
    network.Deliver();
    EXPECT_THAT(client.heard, ElementsAre("opened"));
    EXPECT_EQ(server.clients, 1);
}

TEST_F(InProcessTest, UnknownNameIsOutOfReach) {
    std::uint32_t reason = 0;
    const auto other = network.Connect("inny", client, reason);
    EXPECT_FALSE(other->Open());
    network.Deliver();
    EXPECT_THAT(client.heard, IsEmpty());
    std::vector<vantrel::VariableDefinition> list;
    EXPECT_FALSE(other->LoadVariableList({}, list));
}

TEST_F(InProcessTest, ListOfVariablesIsHadAtOnceOrNotAtAll) {
    server.definitions = {{"A", {{"un", "MPa"}}}, {"B", {}}};
    std::vector<vantrel::VariableDefinition> list;
    vantrel::LoginRequest login;
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

TEST_F(InProcessTest, CloseByTheClient) {
    Open();
    transport->Send(vantrel::LastMessagesRequest{5});
    transport->Close(vantrel::ReasonClosed);
    transport->Send(vantrel::LastMessagesRequest{6});
    network.Deliver();
    EXPECT_THAT(server.heard, ElementsAre("last 5", "closed 4106"));
    EXPECT_THAT(client.heard, ElementsAre("closed 4102"));
    transport->Check();
    network.Deliver();
    EXPECT_THAT(client.heard, ElementsAre("closed 4102"));
    EXPECT_TRUE(transport->Open());
    network.Deliver();
    EXPECT_THAT(client.heard, ElementsAre("closed 4102", "opened"));
}

TEST_F(InProcessTest, CloseByTheServerComesBackWithTheNextCheck) {
    Open();
    server.Send(vantrel::ReportChange{});
    server.link->Close(vantrel::ReasonBadMessage);
    server.Send(vantrel::ReportChange{});
    network.Deliver();
    EXPECT_THAT(client.heard, ElementsAre("report change 0 0", "closed 4108"));
    EXPECT_THAT(server.heard, ElementsAre("closed 4108"));
    transport->Check();
    network.Deliver();
    EXPECT_THAT(client.heard, ElementsAre("report change 0 0", "closed 4108", "opened"));
}

TEST_F(InProcessTest, CloseBeforeItWasOpenIsSilent) {
    transport->Open();
    transport->Close(vantrel::ReasonClosed);
    network.Deliver();
    EXPECT_THAT(client.heard, IsEmpty());
    EXPECT_EQ(server.clients, 0);
}

TEST_F(InProcessTest, DestroyedTransportEndsTheConversation) {
    Open();
    server.Send(vantrel::ReportChange{});
    transport.reset();
    network.Deliver();
    EXPECT_THAT(client.heard, IsEmpty());
    EXPECT_THAT(server.heard, ElementsAre("closed 4106"));
}

TEST_F(InProcessTest, RemovedServerEndsItsConversations) {
    Open();
    network.RemoveServer("srv");
    EXPECT_THAT(client.heard, ElementsAre("closed 4107"));
    EXPECT_THAT(server.heard, ElementsAre("closed 4107"));
    transport->Check();
    network.Deliver();
    EXPECT_THAT(client.heard, ElementsAre("closed 4107"));
    network.AddServer("srv", server);
    network.Deliver();
    EXPECT_THAT(client.heard, ElementsAre("closed 4107", "opened"));
}

TEST_F(InProcessTest, BacklogGoesDownAndIsToldWhenAskedFor) {
    Open();
    server.Send(vantrel::ReportChange{});
    network.Deliver();
    EXPECT_THAT(server.heard, IsEmpty());
    server.Send(vantrel::ReportChange{});
    server.Send(vantrel::ReportChange{});
    EXPECT_EQ(server.link->Backlog(), 2u);
    network.Deliver();
    EXPECT_EQ(server.link->Backlog(), 0u);
    EXPECT_THAT(server.heard, ElementsAre("drained"));
}

}  // namespace
}  // namespace kalvex::support
