#include "programs/kalvex-run/RunCarriers.h"

#include <utility>

namespace kalvex::run {

namespace {

constexpr std::int64_t kCheckPeriod = 1'000;  // milliseconds

std::vector<std::string> SourceNamesOf(const vantrel::PlantDefinition& plant) {
    std::vector<std::string> names;
    for (const vantrel::PlantSource& source : plant.sources) names.push_back(source.name);
    return names;
}

}  // namespace

CRunPlant::CRunPlant(vantrel::PlantDefinition plant, const platform::Clock& clock)
    : m_arrNames(SourceNamesOf(plant)), m_plant(std::move(plant), clock) {}

CRunNetwork::CRunNetwork(vantrel::NetworkClientSettings settings, platform::LogSink& log,
                         const platform::Translator& translator)
    : m_clock(settings.clock),
      m_tNextCheck(m_clock() + kCheckPeriod),
      m_client(std::move(settings), m_loop, log, translator) {}

void CRunNetwork::BeginTick(std::int64_t, vantrel::CSourceList& sources) {
    m_loop.Run();
    const std::int64_t now = m_clock();
    if (now < m_tNextCheck) return;
    m_tNextCheck = now + kCheckPeriod;
    m_client.KeepAlive();
    sources.CheckConnections();
}

}  // namespace kalvex::run
