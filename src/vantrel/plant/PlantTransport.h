// A client's conversation with a server of the simulated plant.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <vector>

#include "vantrel/plant/PlantServer.h"

namespace kalvex::vantrel {

class PlantTransport final : public ClientTransport {
  public:
    // `server` is null for a name that the plant does not have.
    PlantTransport(PlantServer* server, ClientTransportEvents& events);
    ~PlantTransport() override;

    bool Open() override;
    void Send(ClientMessage message) override;
    void Close(std::uint32_t reason) override;
    bool LoadVariableList(const LoginRequest& login,
                          std::vector<VariableDefinition>& list) override;

    // For the server.
    bool IsWanted() const { return m_wanted; }
    bool IsOpen() const { return m_conversation != nullptr; }
    void Begin();
    void End(std::uint32_t reason);
    void Deliver(ServerMessage message);
    // Sends the value to the client if the variable's subscription has been answered with data.
    void Publish(const PlantServer::Variable& variable);

  private:
    void Take(LoginRequest& message);
    void Take(SubscribeRequest& message);
    void Take(ReadRequests& message);
    void Take(CancelRequests&) {}  // the client passes over what it has cancelled
    void Take(ModifyRequests& message);
    void Take(ArchiveModifyRequest& message);
    void Take(PeriodRequest& message);
    void Take(LastMessagesRequest&) {}  // the plant keeps no log
    void Take(TakeTerm&) { Deliver(TermResult{}); }
    void Take(AcknowledgeRequests&) {}  // nor alarms

    void After(std::int64_t ticks, std::function<void()> event);
    void BeginData();
    void AnswerSubscription(const std::vector<SubscribeRequest::Entry>& added);

    PlantServer* m_server;
    ClientTransportEvents& m_events;
    bool m_wanted = false;
    std::shared_ptr<int> m_conversation;  // lives as long as the conversation
    bool m_loggedIn = false;
    bool m_dataBegun = false;
    std::vector<SubscribeRequest::Entry> m_early;  // subscribed before the first data
    std::set<VariableHandle> m_subscribed;
    std::multimap<const PlantServer::Variable*, VariableHandle> m_live;  // answered with data
};

}  // namespace kalvex::vantrel
