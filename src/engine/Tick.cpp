#include "engine/Tick.h"

#include <algorithm>

namespace kalvex::engine {

namespace {

constexpr int kTopPriority = 1;
constexpr int kExtraSteps = 9;
constexpr int kExtraStepsMinimised = 10;
constexpr int kMostIdleTicks = 100;

}  // namespace

void CTickRunner::Remove(CKalvexDoc& document) {
    std::erase(m_arrDocuments, &document);
}

void CTickRunner::RunTick() {
    if (m_bInTick || m_bBlocked) return;
    m_bInTick = true;
    bool errorStanding = false;
    for (CKalvexDoc* document : m_arrDocuments) {
        errorStanding |= document->ExecuteStep();
        if (document->State().m_nPriority != kTopPriority) continue;
        const int steps = kExtraSteps + (document->State().m_bMinimised ? kExtraStepsMinimised : 0);
        for (int i = 0; i < steps; ++i) errorStanding |= document->ExecuteStep();
    }
    m_bErrorStanding = errorStanding;
    m_bInTick = false;
}

int CTickRunner::GetIdleTicks() const {
    if (m_bBlocked) return 0;
    int idle = kMostIdleTicks;
    bool errorStanding = false;
    for (const CKalvexDoc* document : m_arrDocuments) {
        const CRunState& state = document->State();
        errorStanding |= state.m_bErrorStanding;
        if (!state.m_bRunning && !state.m_bStepRequested) continue;
        if (state.m_nPriority == kTopPriority || state.m_nPaceCounter == 0) return 0;
        idle = std::min(idle, state.m_nPaceCounter);
    }
    return errorStanding == m_bErrorStanding ? idle : 0;
}

void CTickRunner::SkipTicks(int count) {
    for (CKalvexDoc* document : m_arrDocuments) document->SkipSteps(count);
}

}  // namespace kalvex::engine
