#include "vantrel/plant/SimulatedPlant.h"

#include <utility>

#include "vantrel/plant/PlantServer.h"
#include "vantrel/plant/PlantTransport.h"

namespace kalvex::vantrel {

SimulatedPlant::SimulatedPlant(PlantDefinition plant, const platform::Clock& clock)
    : m_clock(clock) {
    for (PlantSource& source : plant.sources) {
        std::string name = source.name;
        m_servers.emplace(std::move(name), std::make_unique<PlantServer>(*this, std::move(source)));
    }
}

SimulatedPlant::~SimulatedPlant() = default;

void SimulatedPlant::At(std::int64_t tick, std::function<void()> event) {
    m_events.emplace(tick, std::move(event));
}

void SimulatedPlant::AdvanceTo(std::int64_t tick) {
    m_tick = tick;
    if (const std::int64_t now = Now(); m_moved != now) {
        m_moved = now;
        for (const auto& [name, server] : m_servers) server->MoveSignals(now);
    }
    while (!m_events.empty() && m_events.begin()->first <= tick) {
        const auto event = m_events.extract(m_events.begin());
        event.mapped()();
    }
}

std::unique_ptr<ClientTransport> SimulatedPlant::Connect(std::string_view source,
                                                         ClientTransportEvents& events,
                                                         std::uint32_t&) {
    const auto server = m_servers.find(source);
    return std::make_unique<PlantTransport>(
        server == m_servers.end() ? nullptr : server->second.get(), events);
}

}  // namespace kalvex::vantrel
