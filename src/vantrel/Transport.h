// What carries messages between a client and a data server: a network, a queue within the process,
// a simulated plant. Everything here is called on the main thread, in both directions; a transport
// that has threads of its own hands over before it calls.
//
// Nothing is delivered from within a call: what Send, Open or Close bring about reaches the other
// side, and comes back, after the call has returned and the main loop, or the owner of the
// transport, has had its turn.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "vantrel/Messages.h"

namespace kalvex::vantrel {

// ---- client side
// ---------------------------------------------------------------------------------

// What can go wrong with a connection besides its break.
enum class ConnectionFault { Create, Destroy, Open, Close, Receive };

// What a client hears of its transport. Reasons are those of vantrel/Codes.h.
class ClientTransportEvents {
  public:
    virtual ~ClientTransportEvents() = default;

    // Messages can be sent and will come in. Also after each break that was mended.
    virtual void OnOpened() = 0;
    virtual void OnMessage(ServerMessage message) = 0;
    // Open: an attempt to open has failed, and the transport goes on trying. Receive: what came in
    // does not decode, and the message is lost. Close: the server could not be told of the end.
    virtual void OnFault(ConnectionFault fault, std::uint32_t reason) = 0;
    // The connection, which had been opened, is gone: by Close, by the server, or broken. After a
    // break the transport goes on trying to open it again; after Close it rests.
    virtual void OnClosed(std::uint32_t reason) = 0;
};

// One conversation with one server. Its events object outlives it. Destroying it ends the
// conversation with ReasonClosed and delivers nothing more.
//
// A transport between processes watches over its peer with signs of life of its own, which are no
// messages of vantrel/Messages.h; a silent peer is a break with ReasonSilent. It splits what is too
// large for one parcel by the `last` fields and joins nothing.
class ClientTransport {
  public:
    virtual ~ClientTransport() = default;

    // Begins to open; from now on until Close the transport keeps the connection up by itself.
    // True when an attempt is under way that will end with OnOpened or with the fault Open; false
    // when the server is known to be out of reach, in which case OnOpened may come at any
    // time. Does nothing else when the transport is opening or open already.
    virtual bool Open() = 0;

    // Takes the message over. Lost without a word when the connection is not open.
    virtual void Send(ClientMessage message) = 0;

    // Ends the conversation; OnClosed comes with the same reason if it was open. The server hears
    // ReasonClientEnded for ReasonClosed, and the reason itself otherwise.
    virtual void Close(std::uint32_t reason) = 0;

    // About once a second, for a transport that has no other time of its own: an attempt to open
    // anew.
    virtual void Check() {}

    // The definitions of all variables of the server in the server's order, also while the
    // connection is not open. May wait for the server for as long as a person would; false when
    // the list is not to be had. A server on the same main thread has to answer at once.
    virtual bool LoadVariableList(const LoginRequest& login,
                                  std::vector<VariableDefinition>& list) = 0;

    // The same without waiting: `done` hears of the list, or of nothing when it is not to be had,
    // from within the call or later on the main thread; never once the transport has gone.
    using ListTaker = std::function<void(std::optional<std::vector<VariableDefinition>>)>;
    virtual void AskVariableList(const LoginRequest& login, ListTaker done) {
        std::vector<VariableDefinition> list;
        const bool loaded = LoadVariableList(login, list);
        done(loaded ? std::optional(std::move(list)) : std::nullopt);
    }
};

// Makes the transport for a source, by the source's name alone. Outlives the transports.
class TransportFactory {
  public:
    virtual ~TransportFactory() = default;

    // Not yet open. Null with a reason when there can be no transport for the name at all, now or
    // later; a server that is out of reach is no such case.
    virtual std::unique_ptr<ClientTransport> Connect(std::string_view source,
                                                     ClientTransportEvents& events,
                                                     std::uint32_t& reason) = 0;
};

// ---- server side
// ---------------------------------------------------------------------------------

// Of messages that a client has not taken yet. A server that has so many under way holds back what
// can wait.
inline constexpr std::size_t kMostBacklog = 8;

// The server's end of one conversation, as the session sees it. Lives longer than the session.
class ServerLink {
  public:
    virtual ~ServerLink() = default;

    virtual void Send(ServerMessage message) = 0;

    // Ends the conversation; the client hears the reason, the session's OnClosed comes with it.
    virtual void Close(std::uint32_t reason) = 0;

    // Messages that the client has not taken yet. A session whose client is slow may hold back
    // value changes and send the newest alone.
    virtual std::size_t Backlog() const = 0;

    // Address of the other machine, empty when the client is on this one.
    virtual std::string PeerAddress() const = 0;
};

// One client at a server; written by the server.
class ServerSession {
  public:
    virtual ~ServerSession() = default;
    virtual void OnMessage(ClientMessage message) = 0;
    // The last call; the session is destroyed afterwards. An orderly end is ReasonClientEnded.
    virtual void OnClosed(std::uint32_t reason) = 0;
    // The backlog, which had been asked for and was not 0, has gone down to 0.
    virtual void OnDrained() {}
};

// Where a server hears of new clients; written by the server, outlives the transport.
class SessionAcceptor {
  public:
    // Takes the definitions of the variables, or nothing when the login is refused.
    using ListAnswer = std::function<void(std::optional<std::vector<VariableDefinition>>)>;

    virtual ~SessionAcceptor() = default;
    // Null refuses the client.
    virtual std::unique_ptr<ServerSession> Accept(ServerLink& link) = 0;

    // For ClientTransport::LoadVariableList. `address` is as ServerLink::PeerAddress gives it.
    // `answer` is called once, from within the call or later, unless the server or the asker goes
    // before.
    virtual void ListVariables(LoginRequest login, std::string address,
                               std::weak_ptr<const void> asker, ListAnswer answer) = 0;
};

// Waits for clients from its making on; destroying it ends all conversations with
// ReasonServerEnded.
class ServerTransport {
  public:
    virtual ~ServerTransport() = default;
};

}  // namespace kalvex::vantrel
