#include "app/Health.h"

#include <algorithm>

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

// Since a line finished, or the script was started if none has.
std::int64_t StandingSeconds(const engine::CKalvexDoc& script) {
    const engine::LineStanding& standing = script.State().standing;
    if (standing.GetOutcome() == engine::LineOutcome::Finished) return 0;
    const std::int64_t finished = standing.GetLastFinished();
    const std::int64_t from = finished != 0 ? finished : standing.GetSince();
    return std::max<std::int64_t>(script.Services().clock.Now() - from, 0);
}

ScriptFigures FiguresOf(const engine::TickedScript& ticked) {
    engine::CKalvexDoc& script = *ticked.document;
    ScriptFigures figures{
        .name = script.GetDocKey(), .condition = ConditionOf(script), .counts = ticked.counts};
    const engine::RunState& state = script.State();
    if (figures.condition == ScriptCondition::Error) figures.error = state.standing.GetError().code;
    const bool hasLine = figures.condition != ScriptCondition::Idle &&
                         figures.condition != ScriptCondition::Finished;
    if (!hasLine) return figures;
    figures.line = state.m_nCurrentLine + 1;
    figures.standing = static_cast<double>(StandingSeconds(script));
    return figures;
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

HealthFigures Health::GetFigures(std::int64_t now, const engine::TickRunner& ticks,
                                 const vantrel::CSourceList* sources, const CLog& log) const {
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
    for (const engine::TickedScript& script : ticks.Scripts()) {
        const ScriptFigures& own = figures.byScript.emplace_back(FiguresOf(script));
        ++figures.scripts[static_cast<std::size_t>(own.condition)];
    }
    if (sources != nullptr) {
        for (const auto& connection : sources->Connections()) {
            ++figures.connections[connection->GetState()];
        }
    }
    figures.memory = platform::ResidentBytes();
    figures.linesLost = log.GetLostLines();
    return figures;
}

}  // namespace kalvex::app
