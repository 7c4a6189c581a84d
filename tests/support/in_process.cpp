#include "support/in_process.h"

#include <algorithm>
#include <utility>

#include "vantrel/Codes.h"

namespace kalvex::support {

// One conversation. Either end may be gone while events of it are still under way.
struct InProcessNetwork::Conversation final : public vantrel::ServerLink,
                                              public std::enable_shared_from_this<Conversation> {
    Conversation(InProcessNetwork& network, InProcessTransport& transport)
        : network(network), transport(&transport) {}

    void Send(vantrel::ServerMessage message) override;
    void Close(std::uint32_t reason) override;
    std::size_t Backlog() const override;
    std::string PeerAddress() const override { return {}; }

    InProcessNetwork& network;
    InProcessTransport* transport;  // null when the client has gone
    std::unique_ptr<vantrel::ServerSession> session;
    bool opened = false;
    bool ending = false;  // nothing is taken over any more
    std::size_t backlog = 0;
    mutable bool backlogSeen = false;
};

class InProcessTransport final : public vantrel::ClientTransport {
  public:
    InProcessTransport(InProcessNetwork& network, std::string_view source,
                       vantrel::ClientTransportEvents& events)
        : m_network(network), m_strSource(source), m_events(events) {
        network.m_transports.push_back(this);
    }

    ~InProcessTransport() override {
        std::erase(m_network.m_transports, this);
        if (!m_conversation) return;
        m_conversation->transport = nullptr;
        m_network.Finish(m_conversation, vantrel::ReasonClosed, vantrel::ReasonClientEnded);
    }

    bool Open() override {
        m_wanted = true;
        Check();
        return m_network.FindServer(m_strSource) != nullptr;
    }

    void Check() override {
        if (!m_wanted || m_conversation) return;
        if (m_network.FindServer(m_strSource) != nullptr) m_network.Begin(*this);
    }

    void Send(vantrel::ClientMessage message) override {
        if (!m_conversation || m_conversation->ending) return;
        m_network.Post(m_conversation, [message = std::move(message)](
                                           InProcessNetwork::Conversation& conversation) mutable {
            if (conversation.session) conversation.session->OnMessage(std::move(message));
        });
    }

    void Close(std::uint32_t reason) override {
        m_wanted = false;
        if (!m_conversation) return;
        m_network.Finish(m_conversation, reason,
                         reason == vantrel::ReasonClosed ? vantrel::ReasonClientEnded : reason);
    }

    bool LoadVariableList(const vantrel::LoginRequest& login,
                          std::vector<vantrel::VariableDefinition>& list) override {
        vantrel::SessionAcceptor* server = m_network.FindServer(m_strSource);
        if (server == nullptr) return false;
        const auto answered =
            std::make_shared<std::optional<std::vector<vantrel::VariableDefinition>>>();
        server->ListVariables(login, {}, answered,
                              [answered](auto definitions) { *answered = std::move(definitions); });
        if (*answered) list = std::move(**answered);
        return answered->has_value();
    }

    void AskVariableList(const vantrel::LoginRequest& login, ListTaker done) override {
        vantrel::SessionAcceptor* server = m_network.FindServer(m_strSource);
        if (server == nullptr) return done(std::nullopt);
        server->ListVariables(login, {}, m_asker, std::move(done));
    }

    InProcessNetwork& m_network;
    std::string m_strSource;
    vantrel::ClientTransportEvents& m_events;
    std::shared_ptr<InProcessNetwork::Conversation> m_conversation;
    bool m_wanted = false;
    const std::shared_ptr<char> m_asker = std::make_shared<char>();
};

void InProcessNetwork::Conversation::Send(vantrel::ServerMessage message) {
    if (ending) return;
    ++backlog;
    network.Post(shared_from_this(), [message = std::move(message)](Conversation& self) mutable {
        --self.backlog;
        if (self.transport != nullptr) self.transport->m_events.OnMessage(std::move(message));
        if (self.backlog > 0 || !self.session) return;
        if (std::exchange(self.backlogSeen, false)) self.session->OnDrained();
    });
}

void InProcessNetwork::Conversation::Close(std::uint32_t reason) {
    network.Finish(shared_from_this(), reason, reason);
}

std::size_t InProcessNetwork::Conversation::Backlog() const {
    backlogSeen = backlog > 0;
    return backlog;
}

InProcessNetwork::~InProcessNetwork() = default;

vantrel::SessionAcceptor* InProcessNetwork::FindServer(std::string_view name) const {
    const auto found = m_servers.find(name);
    return found == m_servers.end() ? nullptr : found->second;
}

void InProcessNetwork::AddServer(std::string_view name, vantrel::SessionAcceptor& acceptor) {
    m_servers.insert_or_assign(std::string(name), &acceptor);
    for (InProcessTransport* transport : m_transports) transport->Check();
}

void InProcessNetwork::RemoveServer(std::string_view name) {
    Break(name, vantrel::ReasonServerEnded);
    m_servers.erase(std::string(name));
    Deliver();
}

void InProcessNetwork::Break(std::string_view name, std::uint32_t reason) {
    for (InProcessTransport* transport : m_transports) {
        if (transport->m_strSource != name || !transport->m_conversation) continue;
        Finish(transport->m_conversation, reason, reason);
    }
}

std::unique_ptr<vantrel::ClientTransport> InProcessNetwork::Connect(
    std::string_view source, vantrel::ClientTransportEvents& events, std::uint32_t&) {
    return std::make_unique<InProcessTransport>(*this, source, events);
}

void InProcessNetwork::Begin(InProcessTransport& transport) {
    auto conversation = std::make_shared<Conversation>(*this, transport);
    transport.m_conversation = conversation;
    Post(conversation, [this](Conversation& self) {
        if (self.ending) return;
        InProcessTransport& client = *self.transport;
        vantrel::SessionAcceptor* server = FindServer(client.m_strSource);
        if (server != nullptr) self.session = server->Accept(self);
        if (self.session) {
            self.opened = true;
            client.m_events.OnOpened();
        } else {
            client.m_conversation.reset();
            client.m_events.OnFault(vantrel::ConnectionFault::Open, vantrel::ReasonUnreachable);
        }
    });
}

void InProcessNetwork::Finish(const std::shared_ptr<Conversation>& conversation,
                              std::uint32_t clientReason, std::uint32_t serverReason) {
    if (std::exchange(conversation->ending, true)) return;
    Post(conversation, [clientReason, serverReason](Conversation& self) {
        if (const auto session = std::move(self.session)) session->OnClosed(serverReason);
        if (self.transport == nullptr) return;
        InProcessTransport& client = *std::exchange(self.transport, nullptr);
        client.m_conversation.reset();
        if (self.opened) client.m_events.OnClosed(clientReason);
    });
}

void InProcessNetwork::Post(std::shared_ptr<Conversation> conversation,
                            std::function<void(Conversation&)> event) {
    m_queue.push_back({std::move(conversation), std::move(event)});
}

void InProcessNetwork::Deliver() {
    while (!m_queue.empty()) {
        const Event event = std::move(m_queue.front());
        m_queue.pop_front();
        event.run(*event.conversation);
    }
}

std::unique_ptr<vantrel::ClientTransport> NoTransports::Connect(std::string_view,
                                                                vantrel::ClientTransportEvents&,
                                                                std::uint32_t& reason) {
    reason = vantrel::ReasonUnknownAddress;
    return nullptr;
}

}  // namespace kalvex::support
