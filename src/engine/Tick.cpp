#include "engine/Tick.h"

#include <algorithm>

namespace kalvex::engine {

namespace {

constexpr int kTopPriority = 1;
constexpr int kMostIdleTicks = 100;
constexpr std::size_t kAhead = 8;  // documents that are fetched before their turn

}  // namespace

void TickRunner::Remove(CKalvexDoc& document) {
    std::erase(m_documents, &document);
}

void TickRunner::RunTick() {
    if (m_inTick || m_blocked) return;
    m_inTick = true;
    bool errorStanding = false;
    TickMoment moment;
    const std::size_t count = m_documents.size();
    for (std::size_t i = 0; i < count; ++i) {
        if (i + kAhead < count) m_documents[i + kAhead]->Prefetch();
        CKalvexDoc& document = *m_documents[i];
        const RunState& state = document.State();
        const bool passed = state.m_nPriority != kTopPriority && document.PassStep();
        errorStanding |= passed ? state.m_bErrorStanding : document.ExecuteTick(moment);
    }
    m_bErrorStanding = errorStanding;
    m_inTick = false;
}

int TickRunner::GetIdleTicks() const {
    if (m_blocked) return 0;
    int idle = kMostIdleTicks;
    bool errorStanding = false;
    for (const CKalvexDoc* document : m_documents) {
        const RunState& state = document->State();
        errorStanding |= state.m_bErrorStanding;
        if (!state.m_bRunning && !state.m_bStepRequested) continue;
        if (state.m_nPriority == kTopPriority || state.m_nPaceCounter == 0) return 0;
        idle = std::min(idle, state.m_nPaceCounter);
    }
    return errorStanding == m_bErrorStanding ? idle : 0;
}

void TickRunner::SkipTicks(int count) {
    for (CKalvexDoc* document : m_documents) document->SkipSteps(count);
}

}  // namespace kalvex::engine
