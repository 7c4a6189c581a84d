// The server's end of streams from clients.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Translator.h"
#include "vantrel/network/Endpoint.h"
#include "vantrel/network/Stream.h"

namespace kalvex::vantrel {

struct PortSettings {
    std::string localSocket = {};  // path; empty: none
    std::string address = {};      // "host:port", port 0: one that is free; empty: none
    // With an authority, clients must show a certificate that it has signed.
    std::optional<TlsFiles> tls = {};
    std::size_t outboxLimit = 0;
    int patience = 0;                    // milliseconds that a connection may be without a call
    std::size_t streamLimit = SIZE_MAX;  // at a time; what is beyond it is turned away
};

// The methods beside those of sorvane.proto. Called on the library's threads.
class FurtherPort {
  public:
    virtual ~FurtherPort() = default;

    // Nothing when the server does not offer it.
    virtual std::optional<std::size_t> Find(std::string_view name) const = 0;
    // As those of PortEvents.
    virtual std::shared_ptr<StreamEvents> MakeEvents() = 0;
    virtual void OnCaller(std::shared_ptr<Stream> stream, std::shared_ptr<StreamEvents> events,
                          std::size_t method, std::string address) = 0;
};

// Called on the library's threads.
class PortEvents {
  public:
    virtual ~PortEvents() = default;

    // What hears of the next stream.
    virtual std::shared_ptr<StreamEvents> MakeEvents() = 0;
    // A client has called. `address` is that of its machine, empty when it is this one. The stream
    // reads from Resume on, and must be finished or cancelled at some time.
    virtual void OnCaller(std::shared_ptr<Stream> stream, std::shared_ptr<StreamEvents> events,
                          StreamMethod method, std::string address) = 0;
};

// Listens from its making on. It goes when all streams have come to their end; one that has been
// neither finished nor cancelled is cancelled after a few seconds. Main thread.
class ServerPort {
  public:
    virtual ~ServerPort() = default;
    virtual int TcpPort() const = 0;  // 0 without TCP

    // See Listener.
    virtual std::vector<platform::Notice> Check(std::int64_t now, bool& remade) = 0;
    virtual void OnLogin(const std::string& host) = 0;
    // Streams that somebody still holds.
    virtual std::size_t StreamCount() const = 0;
};

// Null with the reason in `error`. The events and the further methods, which may be null, outlive
// the port.
std::unique_ptr<ServerPort> OpenPort(const PortSettings& settings, PortEvents& events,
                                     FurtherPort* further, platform::Notice& error);

}  // namespace kalvex::vantrel
