// A client of a server whose transport is in the hands of the test.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "vantrel/Transport.h"

namespace kalvex::support {

// One client: what it says goes straight to its session, what it hears is kept.
class TestClient final : public vantrel::ServerLink {
  public:
    TestClient(vantrel::SessionAcceptor& server, std::string address = {})
        : m_address(std::move(address)) {
        session = server.Accept(*this);
    }

    void Send(vantrel::ServerMessage message) override { messages.push_back(std::move(message)); }
    void Close(std::uint32_t reason) override { closed = reason; }
    std::size_t Backlog() const override {
        if (busyAnswers == 0) return backlog;
        --busyAnswers;
        return vantrel::kMostBacklog;
    }
    std::string PeerAddress() const override { return m_address; }

    void Say(vantrel::ClientMessage message) { session->OnMessage(std::move(message)); }
    void End(std::uint32_t reason) {
        session->OnClosed(reason);
        session.reset();
    }

    // All messages of that kind that have come since the last call; the others stay.
    template <class Message>
    std::vector<Message> Take() {
        std::vector<Message> taken;
        std::erase_if(messages, [&taken](vantrel::ServerMessage& message) {
            Message* found = std::get_if<Message>(&message);
            if (found != nullptr) taken.push_back(std::move(*found));
            return found != nullptr;
        });
        return taken;
    }

    std::unique_ptr<vantrel::ServerSession> session;
    std::vector<vantrel::ServerMessage> messages;
    std::size_t backlog = 0;
    mutable int busyAnswers = 0;  // so many times more it is found to be behind
    std::uint32_t closed = 0;

  private:
    std::string m_address;
};

}  // namespace kalvex::support
