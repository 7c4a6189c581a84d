#include "programs/kalvex-run/RunCarriers.h"

#include <utility>

namespace kalvex {

namespace {

constexpr std::int64_t kCheckPeriod = 1'000;  // milliseconds

std::vector<std::string> SourceNamesOf(const PlantDefinition& plant) {
    std::vector<std::string> names;
    for (const PlantSource& source : plant.sources) names.push_back(source.name);
    return names;
}

}  // namespace

CRunPlant::CRunPlant(PlantDefinition plant, const Clock& clock)
    : m_arrNames(SourceNamesOf(plant)), m_plant(std::move(plant), clock) {}

CRunNetwork::CRunNetwork(NetworkClientSettings settings, LogSink& log, const Translator& translator)
    : m_clock(settings.clock),
      m_tNextCheck(m_clock() + kCheckPeriod),
      m_client(std::move(settings), m_loop, log, translator) {}

void CRunNetwork::BeginTick(std::int64_t, CSourceList& sources) {
    m_loop.Run();
    const std::int64_t now = m_clock();
    if (now < m_tNextCheck) return;
    m_tNextCheck = now + kCheckPeriod;
    m_client.KeepAlive();
    sources.CheckConnections();
}

}  // namespace kalvex
