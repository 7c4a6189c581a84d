// What carries the messages of a run between its scripts and their servers. Main thread.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Clock.h"
#include "platform/LogSink.h"
#include "platform/MainLoop.h"
#include "platform/Translator.h"
#include "vantrel/SourceList.h"
#include "vantrel/network/NetworkClient.h"
#include "vantrel/plant/SimulatedPlant.h"

namespace kalvex::run {

class RunCarrier {
  public:
    virtual ~RunCarrier() = default;

    virtual vantrel::TransportFactory& Transports() = 0;
    // That are known without a script naming them.
    virtual const std::vector<std::string>& SourceNames() const = 0;
    // Before the tick's actions and its first line: delivers what is there for the sources, and
    // does their periodic work when it is due.
    virtual void BeginTick(std::int64_t tick, vantrel::CSourceList& sources) = 0;
};

// Servers that are simulated by ticks. A source that is none of them never connects: standard error
// is told so when a script first names it, with `remedy`, what is to be done about it.
class RunPlant final : public RunCarrier, private vantrel::TransportFactory {
  public:
    RunPlant(vantrel::PlantDefinition plant, const platform::Clock& clock, std::string remedy);

    vantrel::TransportFactory& Transports() override { return *this; }
    const std::vector<std::string>& SourceNames() const override { return m_names; }
    void BeginTick(std::int64_t tick, vantrel::CSourceList&) override { m_plant.AdvanceTo(tick); }

  private:
    std::unique_ptr<vantrel::ClientTransport> Connect(std::string_view source,
                                                      vantrel::ClientTransportEvents& events,
                                                      std::uint32_t& reason) override;

    std::vector<std::string> m_names;
    std::string m_remedy;
    vantrel::SimulatedPlant m_plant;
};

// Servers of the network. Their time is that of the settings' clock, whatever clock the scripts
// have.
class RunNetwork final : public RunCarrier {
  public:
    // Log and translator outlive it.
    RunNetwork(vantrel::NetworkClientSettings settings, platform::LogSink& log,
               const platform::Translator& translator);

    vantrel::TransportFactory& Transports() override { return m_client; }
    const std::vector<std::string>& SourceNames() const override { return m_names; }
    void BeginTick(std::int64_t tick, vantrel::CSourceList& sources) override;

  private:
    const std::vector<std::string> m_names;
    vantrel::SteadyClock m_clock;
    std::int64_t m_nextCheck = 0;
    platform::PostedWork m_loop;
    vantrel::NetworkClient m_client;
};

}  // namespace kalvex::run
