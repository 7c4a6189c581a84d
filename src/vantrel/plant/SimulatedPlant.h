// Simulated data servers as a transport. Everything in them happens at ticks, so that a run with
// the same scripts is the same every time.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Clock.h"
#include "vantrel/Transport.h"
#include "vantrel/plant/PlantFile.h"

namespace kalvex::vantrel {

class PlantServer;

// Outlives the transports. A source that the plant does not have can be connected to and is never
// reached.
class SimulatedPlant final : public TransportFactory {
  public:
    SimulatedPlant(PlantDefinition plant, const platform::Clock& clock);
    ~SimulatedPlant() override;

    // Lets everything happen that is due before the first line of the tick, in a fixed order. Ticks
    // only grow.
    void AdvanceTo(std::int64_t tick);

    std::unique_ptr<ClientTransport> Connect(std::string_view source, ClientTransportEvents& events,
                                             std::uint32_t& reason) override;

    // For the servers: the tick that is running, and something to happen at a tick. What is set for
    // a tick that is running or past happens at the next AdvanceTo, or still within the present
    // one.
    std::int64_t Tick() const { return m_tick; }
    std::int64_t Now() const { return m_clock.Now(); }
    void At(std::int64_t tick, std::function<void()> event);

  private:
    const platform::Clock& m_clock;
    std::int64_t m_tick = 0;
    std::optional<std::int64_t> m_moved;  // the time to which the signals have moved
    std::multimap<std::int64_t, std::function<void()>> m_events;
    std::map<std::string, std::unique_ptr<PlantServer>, std::less<>> m_servers;
};

}  // namespace kalvex::vantrel
