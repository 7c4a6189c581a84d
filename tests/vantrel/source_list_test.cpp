#include <gmock/gmock.h>

#include "support/hand_server.h"
#include "vantrel/SourceList.h"

namespace kalvex::vantrel {
namespace {

using testing::ElementsAre;

class HandSourceList final : public CSourceList {
  public:
    explicit HandSourceList(support::InProcessNetwork& network) : m_network(network) {}

    std::vector<std::string> made;

  protected:
    std::unique_ptr<CClientConnection> CreateConnection(std::string_view name) override {
        made.emplace_back(name);
        if (name == "nie") return nullptr;
        auto connection = std::make_unique<support::HeardConnection>();
        connection->Create(23, name, "Kalvex", m_network, nullptr);
        return connection;
    }

  private:
    support::InProcessNetwork& m_network;
};

class SourceListTest : public testing::Test {
  protected:
    support::InProcessNetwork network;
    support::HandServer first;
    support::HandServer second;
    HandSourceList list{network};
};

TEST_F(SourceListTest, ConnectionIsMadeOnceByName) {
    EXPECT_EQ(list.Get("srv"), nullptr);
    CClientConnection* connection = list.AddSource("srv");
    ASSERT_NE(connection, nullptr);
    EXPECT_EQ(list.AddSource("srv"), connection);
    EXPECT_EQ(list.Get("srv"), connection);
    EXPECT_EQ(list.Get("SRV"), nullptr);
    EXPECT_THAT(list.made, ElementsAre("srv"));
}

TEST_F(SourceListTest, SourceThatCannotBeMadeIsTriedEachTime) {
    EXPECT_EQ(list.RegisterVariable("nie", "V"), nullptr);
    EXPECT_EQ(list.AddSource("nie"), nullptr);
    EXPECT_THAT(list.made, ElementsAre("nie", "nie"));
    EXPECT_TRUE(list.Connections().empty());
    list.UnRegisterVariable("nie", "V");
    EXPECT_EQ(list.made.size(), 2u);
}

TEST_F(SourceListTest, RegistrationsReachTheServersWithSubscribe) {
    network.AddServer("jeden", first);
    network.AddServer("dwa", second);
    CVarVal* variable = list.RegisterVariable("jeden", "A");
    list.RegisterVariable("dwa", "B");
    network.Deliver();
    EXPECT_EQ(variable, list.Get("jeden")->GetVarVal("A"));
    EXPECT_THAT(first.heard, ElementsAre("login / Kalvex 23"));
    list.Subscribe();
    network.Deliver();
    EXPECT_EQ(first.heard.back(), "subscribe +1A");
    EXPECT_EQ(second.heard.back(), "subscribe +1B");
    list.UnRegisterVariable("jeden", "A");
    list.Subscribe();
    network.Deliver();
    EXPECT_EQ(first.heard.back(), "subscribe -1");
    EXPECT_EQ(second.heard.back(), "subscribe +1B");
}

TEST_F(SourceListTest, AllConnectionsAreCheckedAndLoggedIn) {
    network.AddServer("jeden", first);
    network.AddServer("dwa", second);
    list.AddSource("jeden");
    list.AddSource("dwa");
    network.Deliver();
    network.Break("jeden", 4104);
    network.Break("dwa", 4104);
    network.Deliver();
    list.CheckConnections();
    network.Deliver();
    EXPECT_EQ(first.clients, 2);
    EXPECT_EQ(second.clients, 2);
    list.Login();
    network.Deliver();
    EXPECT_EQ(first.clients, 3);
    EXPECT_EQ(second.clients, 3);
    for (const auto& connection : list.Connections()) {
        EXPECT_EQ(connection->GetState(), StateConnected);
    }
}

}  // namespace
}  // namespace kalvex::vantrel
