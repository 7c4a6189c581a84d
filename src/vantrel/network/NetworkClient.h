// Reaches data servers over a network. Main thread.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "platform/LogSink.h"
#include "platform/MainLoop.h"
#include "platform/SteadyTime.h"
#include "platform/Translator.h"
#include "vantrel/Transport.h"
#include "vantrel/network/ClientCarrier.h"
#include "vantrel/network/Endpoint.h"
#include "vantrel/network/Patience.h"

namespace kalvex::vantrel {

struct NetworkClientSettings {
    ServerAddresses addresses;
    std::string runtimeFolder = RuntimeFolder();
    SteadyClock clock = platform::SteadyMilliseconds;
    // Bytes that wait on one conversation: above the first, reading pauses; above the second, the
    // server counts as gone.
    std::size_t inboxLimit = 4 << 20;
    std::size_t outboxLimit = 64 << 20;
    // Whether the log is told why a server cannot be reached, and that it answers again.
    bool tellsFaults = true;
    // For a list of variables. While it lasts this side gives no sign of life.
    std::chrono::milliseconds listPatience{5'000};
};

class NetworkTransport;

// Loop, log and translator outlive it.
class NetworkClient final : public TransportFactory {
  public:
    NetworkClient(NetworkClientSettings settings, platform::MainLoop& loop, platform::LogSink& log,
                  const platform::Translator& translator);
    ~NetworkClient() override;
    NetworkClient(const NetworkClient&) = delete;
    NetworkClient& operator=(const NetworkClient&) = delete;

    std::unique_ptr<ClientTransport> Connect(std::string_view source, ClientTransportEvents& events,
                                             std::uint32_t& reason) override;

    // The periodic work of all transports, about once a second: attempts to open anew, signs of
    // life. Nobody else does it for them.
    void Check();

  private:
    friend class NetworkTransport;

    NetworkClientSettings m_settings;
    platform::MainLoop& m_loop;
    platform::LogSink& m_log;
    const platform::Translator& m_translator;
    ClientCarrier m_carrier;
    std::vector<NetworkTransport*> m_transports;
    std::set<std::string, std::less<>> m_noWayTold;  // sources
};

}  // namespace kalvex::vantrel
