// The two kinds of calls at a server: conversations, and the asking for the list of variables. Main
// thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "vantrel/Refusals.h"
#include "vantrel/network/NetworkServer.h"
#include "vantrel/network/Reception.h"

namespace kalvex::vantrel {

// A client that has called. One that nobody takes is turned away.
struct Caller {
    std::shared_ptr<Stream> stream;
    std::shared_ptr<Reception<ClientParcel>> reception;
    StreamMethod method = StreamMethod::Converse;
    std::string address;  // empty: this machine
};

class ServerCall;

// What the calls need of their server.
struct CallServices {
    const NetworkServerSettings& settings;
    SessionAcceptor& acceptor;
    platform::LogSink& log;
    const platform::Translator& translator;
    // Bounds what the log takes of those who have not logged in.
    Refusals& refusals;
    // Removes the call after the present piece of work, with a last word to it.
    std::function<void(ServerCall&)> retire;
    // Somebody has logged in from that machine.
    std::function<void(const std::string& host)> onLogin;
};

class ServerCall : protected ReceptionListener<ClientParcel> {
  public:
    ~ServerCall() override = default;

    // Ends the call unless it has ended; then the last word to who takes part in it.
    void Bury(std::uint32_t reason);
    void Check(std::int64_t now);
    bool HasEnded() const { return m_ended; }
    const std::string& Address() const { return m_caller.address; }

  protected:
    enum class Ending { Farewell, Quiet, Refusal, Cut };

    ServerCall(const CallServices& services, Caller caller);

    // Once; later calls have no effect. The call is retired.
    void End(std::uint32_t reason, Ending ending);
    void Put(std::string parcel);
    // A line about the client; the text takes its name, then the detail (UTF-8). Of those who have
    // not logged in, what the log takes of them.
    void Log(const char* polish, const std::string& detail = {});
    void LogFault(WireFault fault);
    // Does a piece of work for the client, whose call ends when there is no memory for it.
    template <class Work>
    void Serve(Work work) {
        try {
            work();
        } catch (const std::bad_alloc&) {
            EndWithoutMemory();
        }
    }
    void Start() { m_caller.reception->Start(m_caller.stream, *this); }

    virtual void OnBuried(std::uint32_t) {}
    virtual bool Beats() const = 0;
    virtual bool MayBeSilent() const { return false; }
    void OnEnded(StreamEnd end, const std::string& detail) override;

    const CallServices& m_services;
    const Caller m_caller;
    std::string m_client;  // its name, once it has said it
    bool m_loggedIn = false;

  private:
    void EndWithoutMemory();

    PeerWatch m_watch;
    bool m_spoke = false;
    bool m_ended = false;
    std::uint32_t m_reason = 0;
};

class Conversation final : public ServerCall, private ServerLink {
  public:
    // Begins with the acceptor's consent, or ends without it.
    Conversation(const CallServices& services, Caller caller, bool tooMany);

  private:
    void Send(ServerMessage message) override;
    void Close(std::uint32_t reason) override;
    std::size_t Backlog() const override;
    std::string PeerAddress() const override { return m_caller.address; }

    void OnParcel(ClientParcel parcel) override;
    void Take(ClientParcel parcel);
    void OnWireFault(WireFault fault) override;
    void OnDrained() override;
    void OnBuried(std::uint32_t reason) override;
    bool Beats() const override { return true; }

    void Deliver(const ServerMessage& message);
    // Keeps the subscription within the bound; what is beyond it is answered.
    void BoundSubscription(SubscribeRequest& request);

    std::unordered_set<VariableHandle> m_handles;
    std::unique_ptr<ServerSession> m_session;
};

class ListCall final : public ServerCall {
  public:
    ListCall(const CallServices& services, Caller caller, bool tooMany);

    bool HasAsked() const { return m_asked; }
    void TurnAway();

  private:
    void Answer(std::optional<std::vector<VariableDefinition>> definitions);

    void OnParcel(ClientParcel parcel) override;
    void OnWireFault(WireFault fault) override;
    bool Beats() const override { return false; }
    bool MayBeSilent() const override { return m_asked; }

    bool m_asked = false;
    const std::shared_ptr<ListCall*> m_self;  // for an answer that comes when the call has gone
};

}  // namespace kalvex::vantrel
