#include "vantrel/plant/PlantTransport.h"

#include <algorithm>
#include <utility>

#include "vantrel/Codes.h"

namespace kalvex::vantrel {

PlantTransport::PlantTransport(PlantServer* server, ClientTransportEvents& events)
    : m_pServer(server), m_events(events) {
    if (m_pServer != nullptr) m_pServer->Add(*this);
}

PlantTransport::~PlantTransport() {
    if (m_pServer != nullptr) m_pServer->Remove(*this);
}

bool PlantTransport::Open() {
    m_bWanted = true;
    if (m_pServer == nullptr || !m_pServer->IsUp(m_pServer->Plant().Tick())) return false;
    if (IsOpen()) return true;
    m_pServer->Plant().At(m_pServer->Plant().Tick(),
                          [server = m_pServer] { server->SettleConnections(ReasonLost); });
    return true;
}

void PlantTransport::Begin() {
    m_pConversation = std::make_shared<int>();
    m_events.OnOpened();
}

void PlantTransport::End(std::uint32_t reason) {
    m_pConversation.reset();
    m_bLoggedIn = false;
    m_bDataBegun = false;
    m_arrEarly.clear();
    m_setSubscribed.clear();
    m_mapLive.clear();
    m_events.OnClosed(reason);
}

void PlantTransport::Close(std::uint32_t reason) {
    m_bWanted = false;
    if (IsOpen()) After(0, [this, reason] { End(reason); });
}

bool PlantTransport::LoadVariableList(const LoginRequest&, std::vector<VariableDefinition>& list) {
    if (m_pServer == nullptr) return false;
    list = m_pServer->Definitions();
    return true;
}

// What is under way when the conversation ends, ends with it.
void PlantTransport::After(std::int64_t ticks, std::function<void()> event) {
    SimulatedPlant& plant = m_pServer->Plant();
    const std::weak_ptr<int> conversation = m_pConversation;
    plant.At(plant.Tick() + ticks, [conversation, event = std::move(event)] {
        if (!conversation.expired()) event();
    });
}

void PlantTransport::Deliver(ServerMessage message) {
    if (m_bLoggedIn) m_events.OnMessage(std::move(message));
}

void PlantTransport::Send(ClientMessage message) {
    if (!IsOpen()) return;
    std::visit([this](auto& content) { Take(content); }, message);
}

void PlantTransport::Take(LoginRequest&) {
    After(0, [this] {
        m_bLoggedIn = true;
        const std::int64_t wait = m_pServer->DataAtTick() - m_pServer->Plant().Tick();
        After(std::max<std::int64_t>(wait, 0), [this] { BeginData(); });
        Deliver(LoginResult{});
    });
}

void PlantTransport::Take(SubscribeRequest& message) {
    for (const VariableHandle handle : message.removed) m_setSubscribed.erase(handle);
    if (!message.removed.empty()) {
        std::erase_if(m_mapLive,
                      [this](const auto& live) { return !m_setSubscribed.contains(live.second); });
    }
    for (const SubscribeRequest::Entry& entry : message.added) m_setSubscribed.insert(entry.handle);
    if (message.added.empty()) return;
    if (m_bDataBegun) {
        After(m_pServer->Latency(),
              [this, added = std::move(message.added)] { AnswerSubscription(added); });
    } else {
        m_arrEarly.insert(m_arrEarly.end(), message.added.begin(), message.added.end());
    }
}

void PlantTransport::BeginData() {
    m_bDataBegun = true;
    AnswerSubscription(std::exchange(m_arrEarly, {}));
}

void PlantTransport::AnswerSubscription(const std::vector<SubscribeRequest::Entry>& added) {
    VariableDefinitions definitions;
    ValueUpdates values;
    AccessErrors errors;
    for (const SubscribeRequest::Entry& entry : added) {
        if (!m_setSubscribed.contains(entry.handle)) continue;
        const PlantServer::Variable* variable = m_pServer->Find(entry.name);
        if (variable == nullptr) {
            errors.entries.push_back({entry.handle, 0});
            continue;
        }
        definitions.definitions.push_back(DefinitionOf(variable->definition));
        if (variable->definition.accessError) {
            errors.entries.push_back({entry.handle, *variable->definition.accessError});
            continue;
        }
        m_mapLive.emplace(variable, entry.handle);
        values.entries.push_back({entry.handle, variable->value});
    }
    if (!errors.entries.empty()) Deliver(std::move(errors));
    if (!definitions.definitions.empty()) Deliver(std::move(definitions));
    Deliver(std::move(values));
}

void PlantTransport::Publish(const PlantServer::Variable& variable) {
    ValueUpdates update;
    const auto [first, last] = m_mapLive.equal_range(&variable);
    for (auto live = first; live != last; ++live) {
        update.entries.push_back({live->second, variable.value});
    }
    if (!update.entries.empty()) Deliver(std::move(update));
}

void PlantTransport::Take(ReadRequests& message) {
    After(m_pServer->Latency(), [this, message = std::move(message)] {
        for (const ReadRequest& request : message.requests) Deliver(m_pServer->Read(request));
    });
}

void PlantTransport::Take(ModifyRequests& message) {
    After(m_pServer->Latency(), [this, message = std::move(message)]() mutable {
        ModifyResults results;
        for (ModifyRequest& request : message.requests) {
            results.entries.push_back({request.id, m_pServer->Modify(request)});
        }
        Deliver(std::move(results));
    });
}

void PlantTransport::Take(ArchiveModifyRequest& message) {
    After(m_pServer->Latency(), [this, message = std::move(message)]() mutable {
        Deliver(ModifyResults{{{message.id, m_pServer->Modify(message)}}});
    });
}

void PlantTransport::Take(PeriodRequest& message) {
    After(m_pServer->Latency(), [this, message = std::move(message)] { m_pServer->Work(message); });
}

}  // namespace kalvex::vantrel
