#include "differential/Lockstep.h"

#include <algorithm>

#include "language/Functions.h"
#include "language/Statements.h"

namespace kalvex::differential {

namespace {

constexpr int kWholeEvery = 32;  // ticks
constexpr std::size_t kMostElements = 3000;
constexpr std::size_t kLongestText = 2000;
constexpr std::size_t kDeepest = 2000;  // calls

const Tables& Language() {
    static const Tables tables{language::Statements(), language::Functions()};
    return tables;
}

std::string WithFileEnds(const std::string& text) {
    std::string bytes;
    for (const char c : text) {
        if (c == '\n') bytes += '\r';
        bytes += c;
    }
    return bytes;
}

}  // namespace

Lockstep::Lockstep(const support::ScratchFolder& folder, const Scenario& scenario,
                   const Tables& counted)
    : m_folder(folder),
      m_scenario(scenario),
      m_files((PutFiles(), scenario.scripts)),
      m_kept(folder, scenario, Way::KeepForms, Language()),
      m_read(folder, scenario, Way::ReadAnew, counted),
      m_comparison(m_kept, m_read),
      m_digest(folder.Path()),
      m_rests(scenario.scripts.size()) {}

void Lockstep::PutFiles() {
    for (std::size_t i = 0; i < m_scenario.scripts.size(); ++i) {
        m_folder.Put(FileName(i), WithFileEnds(m_scenario.scripts[i]));
    }
    m_folder.Put("dolaczony.kx", WithFileEnds(m_scenario.included));
}

Verdict Lockstep::Run() {
    if (m_scenario.started) {
        m_kept.StartScripts();
        m_read.StartScripts();
    }
    int tick = 0;
    m_difference = m_comparison.FindDifference(true);
    while (m_difference.empty() && tick < m_scenario.ticks) {
        ++tick;
        const std::int64_t length =
            m_scenario.tickLengths[static_cast<std::size_t>(tick) % m_scenario.tickLengths.size()];
        m_kept.BeginTick(length);
        m_read.BeginTick(length);
        ApplyEvents(tick);
        RunTick();
        if (!m_difference.empty()) break;
        const bool whole = tick % kWholeEvery == 0 || tick == m_scenario.ticks;
        m_difference = m_comparison.FindDifference(whole);
        if (!m_difference.empty()) break;
        m_digest.Add(m_read);
        for (std::size_t i = 0; i < m_rests.size(); ++i) HelpOn(i);
    }
    return {m_difference, tick, m_read.counts.lines, m_digest.Value()};
}

void Lockstep::ApplyEvents(int tick) {
    const std::vector<Event>& events = m_scenario.events;
    for (; m_nextEvent < events.size() && events[m_nextEvent].tick <= tick; ++m_nextEvent) {
        Apply(events[m_nextEvent]);
    }
}

void Lockstep::Apply(const Event& event) {
    if (event.kind == EventKind::IdleTicks) return SkipIdleTicks(std::abs(event.number));
    if (event.kind == EventKind::ChangeFile) {
        const std::size_t script = static_cast<std::size_t>(event.script) % m_files.size();
        m_files[script] += '\n' + event.text;
        m_folder.Put(FileName(script), WithFileEnds(m_files[script]));
    }
    m_kept.Apply(event);
    m_read.Apply(event);
}

// What one of them may skip is skipped in both only as far as the other has nothing to do either.
void Lockstep::SkipIdleTicks(int most) {
    const int idle = std::min({most, m_kept.ticks.GetIdleTicks(), m_read.ticks.GetIdleTicks()});
    if (idle <= 0) return;
    m_kept.ticks.SkipTicks(idle);
    m_read.ticks.SkipTicks(idle);
}

void Lockstep::RunTick() {
    if (!m_scenario.started) {
        for (World* world : {&m_kept, &m_read}) {
            for (const auto& document : world->documents) {
                if (!document->State().m_bRunning) document->Step();
            }
        }
    }
    if (m_scenario.stepwise) {
        RunStepwise();
        return;
    }
    m_kept.ticks.RunTick();
    m_read.ticks.RunTick();
}

// The steps of a tick as the runner of ticks makes them, with a comparison behind each.
bool Lockstep::RunStepwise() {
    constexpr int kSteps = 10;
    for (std::size_t i = 0; i < m_kept.documents.size(); ++i) {
        int steps = kSteps;
        for (int step = 0; step < steps; ++step) {
            m_kept.documents[i]->ExecuteStep();
            m_read.documents[i]->ExecuteStep();
            m_difference = m_comparison.FindDifference(false);
            if (!m_difference.empty()) return false;
            const engine::RunState& state = m_read.documents[i]->State();
            if (state.m_nPriority != 1) break;
            if (step == 0 && state.m_bMinimised) steps += kSteps;
        }
    }
    return true;
}

bool Lockstep::HasGrown(const engine::CKalvexDoc& document) const {
    if (document.State().m_lstCallStack.size() > kDeepest) return true;
    return std::ranges::any_of(document.Variables(), [](const auto& variable) {
        if (variable->GetKind() == operands::VariableList) {
            const auto& elements =
                static_cast<const operands::CVariableList&>(*variable).Elements();
            return elements.size() > kMostElements ||
                   std::ranges::any_of(elements, [](const value::CVal& element) {
                       return element.IsText() && element.Text().size() > kLongestText;
                   });
        }
        if (variable->GetKind() != operands::VariableLocal) return false;
        value::CVal value;
        variable->GetValue(value, value::KindCurrent, operands::kAsStored);
        return value.IsText() && value.Text().size() > kLongestText;
    });
}

// A line that fails would hold the script for the rest of the run. One that has stood on a line for
// long goes on behind it; a finished one begins again, at times with a reset.
void Lockstep::HelpOn(std::size_t script) {
    const engine::CKalvexDoc& document = *m_read.documents[script];
    const engine::RunState& state = document.State();
    Rest& rest = m_rests[script];
    const auto act = [&](EventKind kind, int number = 0) {
        Apply({.kind = kind, .script = static_cast<int>(script), .number = number, .text = {}});
    };
    if (HasGrown(document)) {
        act(EventKind::Reset);
        if (m_scenario.started) act(EventKind::Start);
    }
    if (state.m_nCurrentLine != rest.line) {
        rest.line = state.m_nCurrentLine;
        rest.ticks = 0;
        return;
    }
    const bool waits = state.standing.GetOutcome() == engine::LineOutcome::Stays ||
                       document.LastError().IsWaiting();
    if (++rest.ticks < m_scenario.patience * (waits ? 4 : 1) * std::min(state.m_nPriority, 4)) {
        return;
    }
    rest.ticks = 0;
    ++rest.times;
    if (state.m_nCurrentLine >= document.GetLineCount()) {
        if (rest.times % 4 == 3) {
            act(EventKind::Reset);
            if (m_scenario.started) act(EventKind::Start);
        } else {
            act(EventKind::Jump);
        }
        return;
    }
    act(EventKind::Jump, state.m_nCurrentLine + 1);
    if (m_scenario.started && !state.m_bRunning) act(EventKind::Start);
}

Verdict RunBothWays(const support::ScratchFolder& folder, const Scenario& scenario,
                    const Tables& counted) {
    return Lockstep(folder, scenario, counted).Run();
}

}  // namespace kalvex::differential
