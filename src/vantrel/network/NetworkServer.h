// Lets clients come over a network. Main thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "platform/LogSink.h"
#include "platform/MainLoop.h"
#include "platform/SteadyTime.h"
#include "platform/Translator.h"
#include "vantrel/Listening.h"
#include "vantrel/Transport.h"
#include "vantrel/network/Endpoint.h"
#include "vantrel/network/FurtherMethods.h"
#include "vantrel/network/Patience.h"

namespace kalvex::vantrel {

struct NetworkServerSettings {
    std::string name;  // by which the server greets; an engine text
    // A local socket of this name in the folder; an engine text, empty: none. It is open to its
    // owner alone, or to the group as well when one is named.
    std::string source;
    std::string runtimeFolder = RuntimeFolder();
    std::string group;
    // "host:port"; port 0: one that is free; empty: nothing listens but the local socket.
    std::string address;
    // With an authority, clients must show a certificate that it has signed.
    std::optional<TlsFiles> tls;
    bool plainTextAllowed = false;  // without TLS also where other machines can hear

    SteadyClock clock = platform::SteadyMilliseconds;
    // Bytes that wait on one conversation: above the first, reading pauses; above the second, the
    // client is cut off.
    std::size_t inboxLimit = 4 << 20;
    std::size_t outboxLimit = 64 << 20;
    int patience = 10'000;                  // milliseconds that a connection may be without a call
    std::size_t conversationLimit = 4096;   // and so many calls for lists of variables
    std::size_t variableLimit = 1'000'000;  // subscribed on one conversation
};

// Those of a server of this name, an engine text, which its local socket bears as well.
NetworkServerSettings SettingsFor(const std::string& name, const Listening& listening);

// Loop, log, translator and acceptor outlive it.
class NetworkServer : public ServerTransport {
  public:
    virtual int TcpPort() const = 0;  // 0 without TCP

    // Periodic work, signs of life among it: about once a second.
    virtual void Check() = 0;
};

// Null with an engine text in `error` when it cannot listen as told. `further`, which may be null,
// outlives it as well.
std::unique_ptr<NetworkServer> ListenOnNetwork(const NetworkServerSettings& settings,
                                               SessionAcceptor& acceptor, platform::MainLoop& loop,
                                               platform::LogSink& log,
                                               const platform::Translator& translator,
                                               std::string& error,
                                               FurtherMethods* further = nullptr);

}  // namespace kalvex::vantrel
