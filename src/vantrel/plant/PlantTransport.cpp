#include "vantrel/plant/PlantTransport.h"

#include <algorithm>
#include <utility>

#include "vantrel/Codes.h"

namespace kalvex::vantrel {

PlantTransport::PlantTransport(PlantServer* server, ClientTransportEvents& events)
    : m_server(server), m_events(events) {
    if (m_server != nullptr) m_server->Add(*this);
}

PlantTransport::~PlantTransport() {
    if (m_server != nullptr) m_server->Remove(*this);
}

bool PlantTransport::Open() {
    m_wanted = true;
    if (m_server == nullptr || !m_server->IsUp(m_server->Plant().Tick())) return false;
    if (IsOpen()) return true;
    m_server->Plant().At(m_server->Plant().Tick(),
                         [server = m_server] { server->SettleConnections(ReasonLost); });
    return true;
}

void PlantTransport::Begin() {
    m_conversation = std::make_shared<int>();
    m_events.OnOpened();
}

void PlantTransport::End(std::uint32_t reason) {
    m_conversation.reset();
    m_loggedIn = false;
    m_dataBegun = false;
    m_early.clear();
    m_subscribed.clear();
    m_live.clear();
    m_events.OnClosed(reason);
}

void PlantTransport::Close(std::uint32_t reason) {
    m_wanted = false;
    if (IsOpen()) After(0, [this, reason] { End(reason); });
}

bool PlantTransport::LoadVariableList(const LoginRequest&, std::vector<VariableDefinition>& list) {
    if (m_server == nullptr) return false;
    list = m_server->Definitions();
    return true;
}

// What is under way when the conversation ends, ends with it.
void PlantTransport::After(std::int64_t ticks, std::function<void()> event) {
    SimulatedPlant& plant = m_server->Plant();
    const std::weak_ptr<int> conversation = m_conversation;
    plant.At(plant.Tick() + ticks, [conversation, event = std::move(event)] {
        if (!conversation.expired()) event();
    });
}

void PlantTransport::Deliver(ServerMessage message) {
    if (m_loggedIn) m_events.OnMessage(std::move(message));
}

void PlantTransport::Send(ClientMessage message) {
    if (!IsOpen()) return;
    std::visit([this](auto& content) { Take(content); }, message);
}

void PlantTransport::Take(LoginRequest&) {
    After(0, [this] {
        m_loggedIn = true;
        const std::int64_t wait = m_server->DataAtTick() - m_server->Plant().Tick();
        After(std::max<std::int64_t>(wait, 0), [this] { BeginData(); });
        Deliver(LoginResult{});
    });
}

void PlantTransport::Take(SubscribeRequest& message) {
    for (const VariableHandle handle : message.removed) m_subscribed.erase(handle);
    if (!message.removed.empty()) {
        std::erase_if(m_live,
                      [this](const auto& live) { return !m_subscribed.contains(live.second); });
    }
    for (const SubscribeRequest::Entry& entry : message.added) m_subscribed.insert(entry.handle);
    if (message.added.empty()) return;
    if (m_dataBegun) {
        After(m_server->Latency(),
              [this, added = std::move(message.added)] { AnswerSubscription(added); });
    } else {
        m_early.insert(m_early.end(), message.added.begin(), message.added.end());
    }
}

void PlantTransport::BeginData() {
    m_dataBegun = true;
    AnswerSubscription(std::exchange(m_early, {}));
}

void PlantTransport::AnswerSubscription(const std::vector<SubscribeRequest::Entry>& added) {
    VariableDefinitions definitions;
    ValueUpdates values;
    AccessErrors errors;
    for (const SubscribeRequest::Entry& entry : added) {
        if (!m_subscribed.contains(entry.handle)) continue;
        const PlantServer::Variable* variable = m_server->Find(entry.name);
        if (variable == nullptr) {
            errors.entries.push_back({entry.handle, 0});
            continue;
        }
        definitions.definitions.push_back(DefinitionOf(variable->definition));
        if (variable->definition.accessError) {
            errors.entries.push_back({entry.handle, *variable->definition.accessError});
            continue;
        }
        m_live.emplace(variable, entry.handle);
        values.entries.push_back({entry.handle, variable->value});
    }
    if (!errors.entries.empty()) Deliver(std::move(errors));
    if (!definitions.definitions.empty()) Deliver(std::move(definitions));
    Deliver(std::move(values));
}

void PlantTransport::Publish(const PlantServer::Variable& variable) {
    ValueUpdates update;
    const auto [first, last] = m_live.equal_range(&variable);
    for (auto live = first; live != last; ++live) {
        update.entries.push_back({live->second, variable.value});
    }
    if (!update.entries.empty()) Deliver(std::move(update));
}

void PlantTransport::Take(ReadRequests& message) {
    After(m_server->Latency(), [this, message = std::move(message)] {
        for (const ReadRequest& request : message.requests) Deliver(m_server->Read(request));
    });
}

void PlantTransport::Take(ModifyRequests& message) {
    After(m_server->Latency(), [this, message = std::move(message)]() mutable {
        ModifyResults results;
        for (ModifyRequest& request : message.requests) {
            results.entries.push_back({request.id, m_server->Modify(request)});
        }
        Deliver(std::move(results));
    });
}

void PlantTransport::Take(ArchiveModifyRequest& message) {
    After(m_server->Latency(), [this, message = std::move(message)]() mutable {
        Deliver(ModifyResults{{{message.id, m_server->Modify(message)}}});
    });
}

void PlantTransport::Take(PeriodRequest& message) {
    After(m_server->Latency(), [this, message = std::move(message)] { m_server->Work(message); });
}

}  // namespace kalvex::vantrel
