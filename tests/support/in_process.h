// Clients and servers within one process. Main thread.
#pragma once

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "vantrel/Transport.h"

namespace kalvex::support {

class InProcessTransport;

// Servers by name and the conversations with them. Outlives its transports and its servers' links.
class InProcessNetwork final : public vantrel::TransportFactory {
  public:
    ~InProcessNetwork() override;

    // Clients that have been waiting for the name are let in at the next Deliver.
    void AddServer(std::string_view name, vantrel::SessionAcceptor& acceptor);
    // Ends all conversations with the server with ReasonServerEnded.
    void RemoveServer(std::string_view name);
    // Ends all conversations with the server as a fault of the line would. They come up again at
    // the clients' next Check.
    void Break(std::string_view name, std::uint32_t reason);

    // Carries what is under way, and what that brings about, until nothing is left.
    void Deliver();
    bool IsIdle() const { return m_queue.empty(); }

    std::unique_ptr<vantrel::ClientTransport> Connect(std::string_view source,
                                                      vantrel::ClientTransportEvents& events,
                                                      std::uint32_t& reason) override;

  private:
    friend class InProcessTransport;
    struct Conversation;

    vantrel::SessionAcceptor* FindServer(std::string_view name) const;
    void Begin(InProcessTransport& transport);
    void Finish(const std::shared_ptr<Conversation>& conversation, std::uint32_t clientReason,
                std::uint32_t serverReason);
    void Post(std::shared_ptr<Conversation> conversation, std::function<void(Conversation&)> event);

    struct Event {
        std::shared_ptr<Conversation> conversation;
        std::function<void(Conversation&)> run;
    };

    std::map<std::string, vantrel::SessionAcceptor*, std::less<>> m_servers;
    std::vector<InProcessTransport*> m_transports;
    std::deque<Event> m_queue;
};

// Knows no server's address.
class NoTransports final : public vantrel::TransportFactory {
  public:
    std::unique_ptr<vantrel::ClientTransport> Connect(std::string_view source,
                                                      vantrel::ClientTransportEvents& events,
                                                      std::uint32_t& reason) override;
};

}  // namespace kalvex::support
