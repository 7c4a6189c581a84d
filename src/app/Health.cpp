#include "app/Health.h"

#include "operands/ScriptErrors.h"
#include "platform/ProcessMemory.h"

namespace kalvex::app {

namespace {

constexpr std::int64_t kSecond = 1'000'000;  // microseconds
constexpr std::size_t kSamples = 11;         // the ends of ten seconds

double Seconds(std::int64_t microseconds) {
    return static_cast<double>(microseconds) / kSecond;
}

double Rate(std::uint64_t from, std::uint64_t to, double seconds) {
    return seconds > 0 ? static_cast<double>(to - from) / seconds : 0;
}

}  // namespace

ScriptCondition ConditionOf(engine::CKalvexDoc& script) {
    const engine::RunState& state = script.State();
    if (state.m_bErrorStanding) return ScriptCondition::Error;
    if (state.m_bPaused) return ScriptCondition::Stopped;
    if (!state.m_bRunning) return ScriptCondition::Idle;
    if (state.m_nCurrentLine >= script.GetLineCount()) return ScriptCondition::Finished;
    return script.LastError().IsWaiting() ? ScriptCondition::Waiting : ScriptCondition::Running;
}

Health::Health(std::int64_t now) : m_start(now), m_samples{{now, 0, 0}} {}

void Health::OnTick(std::int64_t now, std::int64_t lateness) {
    m_lateness.Add(lateness);
    if (now - m_samples.back().time < kSecond) return;
    m_samples.push_back({now, m_lateness.GetCount(), m_counts.lines});
    if (m_samples.size() > kSamples) m_samples.pop_front();
}

HealthFigures Health::GetFigures(std::int64_t now, const ScriptList& scripts,
                                 const vantrel::CSourceList* sources) const {
    HealthFigures figures;
    figures.uptime = Seconds(now - m_start);
    figures.ticks = m_lateness.GetCount();
    figures.latenessHalf = Seconds(m_lateness.GetPercentile(0.5));
    figures.lateness99 = Seconds(m_lateness.GetPercentile(0.99));
    figures.latenessMax = Seconds(m_lateness.GetMax());
    figures.latenessSum = Seconds(m_lateness.GetSum());
    figures.counts = m_counts;
    const Sample& oldest = m_samples.front();
    const double span = Seconds(now - oldest.time);
    figures.ticksPerSecond = Rate(oldest.ticks, figures.ticks, span);
    figures.linesPerSecond = Rate(oldest.lines, m_counts.lines, span);
    for (const std::unique_ptr<engine::CKalvexDoc>& script : scripts) {
        ++figures.scripts[static_cast<std::size_t>(ConditionOf(*script))];
    }
    if (sources != nullptr) {
        for (const auto& connection : sources->Connections()) {
            ++figures.connections[connection->GetState()];
        }
    }
    figures.memory = platform::ResidentBytes();
    return figures;
}

}  // namespace kalvex::app
