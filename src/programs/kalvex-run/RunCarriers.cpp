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

RunPlant::RunPlant(vantrel::PlantDefinition plant, const platform::Clock& clock)
    : m_names(SourceNamesOf(plant)), m_plant(std::move(plant), clock) {}

RunNetwork::RunNetwork(vantrel::NetworkClientSettings settings, platform::LogSink& log,
                       const platform::Translator& translator)
    : m_clock(settings.clock),
      m_nextCheck(m_clock() + kCheckPeriod),
      m_client(std::move(settings), m_loop, log, translator) {}

void RunNetwork::BeginTick(std::int64_t, vantrel::CSourceList& sources) {
    m_loop.Run();
    const std::int64_t now = m_clock();
    if (now < m_nextCheck) return;
    m_nextCheck = now + kCheckPeriod;
    m_client.Check();
    sources.CheckConnections();
}

}  // namespace kalvex::run
