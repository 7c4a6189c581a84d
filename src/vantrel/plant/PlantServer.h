// One server of the simulated plant, with the transports that are connected to it.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "vantrel/plant/PlantFile.h"
#include "vantrel/plant/SimulatedPlant.h"

namespace kalvex::vantrel {

class PlantTransport;

class PlantServer {
  public:
    PlantServer(SimulatedPlant& plant, PlantSource source);

    SimulatedPlant& Plant() const { return m_plant; }
    std::int64_t Latency() const { return m_source.latencyTicks; }
    std::int64_t DataAtTick() const { return m_source.dataAtTick; }
    bool IsUp(std::int64_t tick) const;
    // Makes and breaks conversations by whether the server is up at the running tick.
    void SettleConnections(std::uint32_t reason);

    void Add(PlantTransport& transport) { m_transports.push_back(&transport); }
    void Remove(PlantTransport& transport) { std::erase(m_transports, &transport); }

    struct Variable {
        SimulatedVariable definition;
        value::CVal value;
    };

    // Null for a name that the server does not have.
    Variable* Find(std::string_view name);
    std::vector<VariableDefinition> Definitions() const;

    ReadAnswer Read(const ReadRequest& request);
    std::uint16_t Modify(ModifyRequest& request);
    std::uint16_t Modify(ArchiveModifyRequest& request);
    void Work(const PeriodRequest& request);
    // A value that comes out the same keeps its time.
    void MoveSignals(std::int64_t now);

  private:
    void Publish(Variable& variable, value::CVal value);

    SimulatedPlant& m_plant;
    PlantSource m_source;
    std::vector<Variable> m_arrVariables;
    std::map<std::string_view, Variable*> m_byName;
    std::vector<PlantTransport*> m_transports;
};

VariableDefinition DefinitionOf(const SimulatedVariable& variable);

}  // namespace kalvex::vantrel
