#include "engine/Tick.h"

#include <algorithm>

namespace kalvex::engine {

namespace {

constexpr int kTopPriority = 1;
constexpr int kExtraSteps = 9;
constexpr int kExtraStepsMinimised = 10;
constexpr int kMostIdleTicks = 100;

}  // namespace

void TickRunner::Remove(CKalvexDoc& document) {
    std::erase(m_documents, &document);
}

void TickRunner::RunTick() {
    if (m_inTick || m_blocked) return;
    m_inTick = true;
    bool errorStanding = false;
    for (CKalvexDoc* document : m_documents) {
        errorStanding |= document->ExecuteStep();
        if (document->State().m_nPriority != kTopPriority) continue;
        const int steps = kExtraSteps + (document->State().m_bMinimised ? kExtraStepsMinimised : 0);
        for (int i = 0; i < steps; ++i) errorStanding |= document->ExecuteStep();
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
