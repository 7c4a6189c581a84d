#include "vantrel/plant/PlantServer.h"

#include <algorithm>
#include <utility>

#include "vantrel/Codes.h"
#include "vantrel/plant/PlantTransport.h"

namespace kalvex::vantrel {

PlantServer::PlantServer(SimulatedPlant& plant, PlantSource source)
    : m_plant(plant), m_source(std::move(source)) {
    m_arrVariables.reserve(m_source.variables.size());
    for (SimulatedVariable& definition : m_source.variables) {
        Variable& variable =
            m_arrVariables.emplace_back(Variable{std::move(definition), value::CVal()});
        m_byName.emplace(variable.definition.name, &variable);
        for (PlantCurrent& current : variable.definition.current) {
            plant.At(current.atTick, [this, &variable, &current] {
                value::CVal value = current.value;
                if (!current.stamped) value.SetTime(m_plant.Now());
                Publish(variable, std::move(value));
            });
        }
    }
    for (const PlantOutage& outage : m_source.outages) {
        plant.At(outage.from, [this, &outage] { SettleConnections(outage.reason); });
        plant.At(outage.to, [this] { SettleConnections(ReasonLost); });
    }
    if (m_source.connectAtTick) {
        plant.At(*m_source.connectAtTick, [this] { SettleConnections(ReasonLost); });
    }
    for (const PlantReportChange& change : m_source.reportChanges) {
        plant.At(change.atTick, [this, &change] {
            for (PlantTransport* transport : m_transports) {
                transport->Deliver(ReportChange{change.kind, change.time});
            }
        });
    }
}

bool PlantServer::IsUp(std::int64_t tick) const {
    if (!m_source.connectAtTick || tick < *m_source.connectAtTick) return false;
    return std::none_of(
        m_source.outages.begin(), m_source.outages.end(),
        [tick](const PlantOutage& outage) { return tick >= outage.from && tick < outage.to; });
}

void PlantServer::SettleConnections(std::uint32_t reason) {
    const bool up = IsUp(m_plant.Tick());
    for (PlantTransport* transport : m_transports) {
        if (up && transport->IsWanted() && !transport->IsOpen()) transport->Begin();
        if (!up && transport->IsOpen()) transport->End(reason);
    }
}

PlantServer::Variable* PlantServer::Find(std::string_view name) {
    const auto found = m_byName.find(name);
    return found == m_byName.end() ? nullptr : found->second;
}

VariableDefinition DefinitionOf(const SimulatedVariable& variable) {
    return {variable.name, variable.attributes};
}

std::vector<VariableDefinition> PlantServer::Definitions() const {
    std::vector<VariableDefinition> definitions;
    definitions.reserve(m_arrVariables.size());
    for (const Variable& variable : m_arrVariables) {
        definitions.push_back(DefinitionOf(variable.definition));
    }
    return definitions;
}

void PlantServer::Publish(Variable& variable, value::CVal value) {
    variable.value = std::move(value);
    for (PlantTransport* transport : m_transports) transport->Publish(variable);
}

void PlantServer::MoveSignals(std::int64_t now) {
    for (Variable& variable : m_arrVariables) {
        if (!variable.definition.signal) continue;
        value::CVal value = variable.definition.signal(now);
        const value::CVal& old = variable.value;
        const bool same = old.GetStatus() == 0 && old.GetType() == value.GetType() && old == value;
        if (same) continue;
        value.SetTime(now);
        Publish(variable, std::move(value));
    }
}

ReadAnswer PlantServer::Read(const ReadRequest& request) {
    ReadAnswer answer;
    answer.id = request.id;
    Variable* variable = Find(request.variable);
    if (variable == nullptr) {
        answer.result = ResultNothing;
        return answer;
    }
    if (variable->definition.readError) {
        answer.result = *variable->definition.readError;
        return answer;
    }
    const std::map<std::int64_t, value::CVal>& stored = variable->definition.stored[request.kind];
    auto value = stored.lower_bound(request.from);
    for (; value != stored.end() && value->first <= request.to; ++value) {
        answer.values.push_back(value->second);
    }
    const bool single = request.kind != value::KindArchive && request.from == request.to;
    if (single && answer.values.empty()) answer.result = ResultNothing;
    return answer;
}

std::uint16_t PlantServer::Modify(ModifyRequest& request) {
    Variable* variable = Find(request.variable);
    if (variable == nullptr) return ResultNothing;
    if (variable->definition.writeError) return *variable->definition.writeError;
    if (request.kind == value::KindCurrent) {
        Publish(*variable, std::move(request.value));
        return ResultOk;
    }
    request.value.SetTime(request.time);
    variable->definition.stored[request.kind].insert_or_assign(request.time,
                                                               std::move(request.value));
    return ResultOk;
}

std::uint16_t PlantServer::Modify(ArchiveModifyRequest& request) {
    Variable* variable = Find(request.variable);
    if (variable == nullptr) return ResultNothing;
    if (variable->definition.writeError) return *variable->definition.writeError;
    for (value::CVal& value : request.values) {
        const std::int64_t time = value.GetTime();
        variable->definition.stored[value::KindArchive].insert_or_assign(time, std::move(value));
    }
    return ResultOk;
}

void PlantServer::Work(const PeriodRequest& request) {
    Variable* variable = Find(request.variable);
    const bool leavesTrace =
        request.action == PeriodAction::Init || request.action == PeriodAction::Load;
    if (variable == nullptr || !leavesTrace) return;
    std::map<std::int64_t, value::CVal>& stored = variable->definition.stored[request.kind];
    value::CVal& value = stored.try_emplace(request.time, value::CVal(0.0)).first->second;
    value.SetTime(request.time);
    value.AddStatus(request.action == PeriodAction::Init ? value::Status::ReportInited
                                                         : value::Status::ReportLoaded);
}

}  // namespace kalvex::vantrel
