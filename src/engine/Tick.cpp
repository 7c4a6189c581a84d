#include "engine/Tick.h"

#include <algorithm>

namespace kalvex::engine {

namespace {

constexpr int kTopPriority = 1;
constexpr int kMostIdleTicks = 100;
// Documents that are fetched before their turn, and how far apart the steps of that are.
constexpr std::size_t kAhead = 24;
constexpr std::size_t kApart = 4;

}  // namespace

void TickRunner::Remove(CKalvexDoc& document) {
    const auto removed = std::ranges::find(m_scripts, &document, &TickedScript::document);
    if (removed == m_scripts.end()) return;
    const auto index = static_cast<std::size_t>(removed - m_scripts.begin());
    if (index < m_firstTurn) --m_firstTurn;
    m_scripts.erase(removed);
}

// A script that has not come to a line yet, or has promised that there is nothing to run, costs
// next to nothing and rests in no tick.
bool TickRunner::IsLeftOut(std::size_t index, Turns& turns) const {
    const RunState& state = m_scripts[index].document->State();
    const bool rests = !state.m_bRunning || state.promise.standing || !state.standing.GetOutcome();
    if (rests) return false;
    if (index < m_firstTurn || turns.next != 0) return true;
    if (turns.hadOne && m_clock() > turns.until) {
        turns.next = index;
        return true;
    }
    turns.hadOne = true;
    return false;
}

// Where a script has a line to run, those behind it often have one too, and what a line needs lies
// at the end of a row of pointers. So each of them is fetched a few documents ahead of the next
// one.
void TickRunner::FetchLines(std::size_t current) const {
    for (int step = 0; step < CKalvexDoc::kFetchSteps; ++step) {
        const auto ahead = static_cast<std::size_t>(CKalvexDoc::kFetchSteps - step) * kApart;
        if (current + ahead < m_scripts.size()) {
            m_scripts[current + ahead].document->FetchLine(step);
        }
    }
}

// Nobody else counts meanwhile, so what has been added to the counts of all is the script's own.
bool TickRunner::Execute(std::size_t index, TickMoment& moment) {
    CKalvexDoc& document = *m_scripts[index].document;
    const RunCounts* const all = document.Services().counts;
    if (all == nullptr) return document.ExecuteTick(moment);
    const RunCounts before = *all;
    const bool errorStanding = document.ExecuteTick(moment);
    // A person who was asked may have closed scripts.
    if (index >= m_scripts.size() || m_scripts[index].document != &document) return errorStanding;
    RunCounts& own = m_scripts[index].counts;
    own.lines += all->lines - before.lines;
    own.errors += all->errors - before.errors;
    own.waits += all->waits - before.waits;
    own.slow += all->slow - before.slow;
    return errorStanding;
}

void TickRunner::RunTick() {
    if (m_inTick || m_blocked) return;
    m_inTick = true;
    bool errorStanding = false;
    TickMoment moment;
    if (m_lineWatch != nullptr) m_lineWatch->Begin();
    Turns turns{.until = m_clock ? m_clock() + m_budget : 0};
    const std::size_t count = m_scripts.size();
    for (std::size_t i = 0; i < count; ++i) {
        if (i + kAhead < count) m_scripts[i + kAhead].document->Prefetch();
        CKalvexDoc& document = *m_scripts[i].document;
        const RunState& state = document.State();
        if (state.m_nPriority != kTopPriority) {
            if (document.PassStep()) {
                errorStanding |= state.m_bErrorStanding;
                continue;
            }
            if (!state.promise.standing) FetchLines(i);
        } else if (m_clock && IsLeftOut(i, turns)) {
            errorStanding |= state.m_bErrorStanding;
            continue;
        }
        errorStanding |= Execute(i, moment);
    }
    m_firstTurn = turns.next;
    m_bErrorStanding = errorStanding;
    m_inTick = false;
}

int TickRunner::GetIdleTicks() const {
    if (m_blocked) return 0;
    int idle = kMostIdleTicks;
    bool errorStanding = false;
    for (const TickedScript& script : m_scripts) {
        const RunState& state = script.document->State();
        errorStanding |= state.m_bErrorStanding;
        if (!state.m_bRunning && !state.m_bStepRequested) continue;
        if (state.m_nPriority == kTopPriority || state.m_nPaceCounter == 0) return 0;
        idle = std::min(idle, state.m_nPaceCounter);
    }
    return errorStanding == m_bErrorStanding ? idle : 0;
}

void TickRunner::SkipTicks(int count) {
    for (const TickedScript& script : m_scripts) script.document->SkipSteps(count);
}

}  // namespace kalvex::engine
