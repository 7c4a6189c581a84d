#include "programs/kalvex-run/RunCarriers.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "text/CodePage.h"

namespace kalvex::run {

namespace {

constexpr std::int64_t kCheckPeriod = 1'000;  // milliseconds

std::vector<std::string> SourceNamesOf(const vantrel::PlantDefinition& plant) {
    std::vector<std::string> names;
    for (const vantrel::PlantSource& source : plant.sources) names.push_back(source.name);
    return names;
}

}  // namespace

RunPlant::RunPlant(vantrel::PlantDefinition plant, const platform::Clock& clock, std::string remedy)
    : m_names(SourceNamesOf(plant)),
      m_remedy(std::move(remedy)),
      m_plant(std::move(plant), clock) {}

std::unique_ptr<vantrel::ClientTransport> RunPlant::Connect(std::string_view source,
                                                            vantrel::ClientTransportEvents& events,
                                                            std::uint32_t& reason) {
    if (std::ranges::find(m_names, source) == m_names.end()) {
        fmt::print(stderr, "kalvex-run: the data server \"{}\" is never reached: {}\n",
                   text::ToUtf8(source), m_remedy);
    }
    return m_plant.Connect(source, events, reason);
}

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
