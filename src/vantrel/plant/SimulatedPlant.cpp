#include "vantrel/plant/SimulatedPlant.h"

#include <utility>

#include "vantrel/plant/PlantServer.h"
#include "vantrel/plant/PlantTransport.h"

namespace kalvex::vantrel {

SimulatedPlant::SimulatedPlant(PlantDefinition plant, const platform::Clock& clock)
    : m_clock(clock) {
    for (PlantSource& source : plant.sources) {
        std::string name = source.name;
        m_mapServers.emplace(std::move(name),
                             std::make_unique<PlantServer>(*this, std::move(source)));
    }
}

SimulatedPlant::~SimulatedPlant() = default;

void SimulatedPlant::At(std::int64_t tick, std::function<void()> event) {
    m_mapEvents.emplace(tick, std::move(event));
}

void SimulatedPlant::AdvanceTo(std::int64_t tick) {
    m_nTick = tick;
    while (!m_mapEvents.empty() && m_mapEvents.begin()->first <= tick) {
        const auto event = m_mapEvents.extract(m_mapEvents.begin());
        event.mapped()();
    }
}

std::unique_ptr<ClientTransport> SimulatedPlant::Connect(std::string_view source,
                                                         ClientTransportEvents& events,
                                                         std::uint32_t&) {
    const auto server = m_mapServers.find(source);
    return std::make_unique<PlantTransport>(
        server == m_mapServers.end() ? nullptr : server->second.get(), events);
}

}  // namespace kalvex::vantrel
