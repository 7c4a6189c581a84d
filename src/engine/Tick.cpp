#include "engine/Tick.h"

#include <algorithm>

namespace kalvex {

namespace {

constexpr int kTopPriority = 1;
constexpr int kExtraSteps = 9;
constexpr int kExtraStepsMinimised = 10;
constexpr int kMostIdleTicks = 100;

// The pace counter after so many steps that run nothing.
int CounterAfter(int counter, int priority, int steps) {
    if (steps <= counter) return counter - steps;
    return priority - 1 - (steps - counter - 1) % priority;
}

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
        if (document->m_nPriority != kTopPriority) continue;
        const int steps = kExtraSteps + (document->m_bMinimised ? kExtraStepsMinimised : 0);
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
        errorStanding |= document->m_bErrorStanding;
        if (!document->m_bRunning && !document->m_bStepRequested) continue;
        if (document->m_nPriority == kTopPriority || document->m_nPaceCounter == 0) return 0;
        idle = std::min(idle, document->m_nPaceCounter);
    }
    return errorStanding == m_bErrorStanding ? idle : 0;
}

void CTickRunner::SkipTicks(int count) {
    for (CKalvexDoc* document : m_arrDocuments) {
        document->m_nPaceCounter =
            CounterAfter(document->m_nPaceCounter, document->m_nPriority, count);
    }
}

}  // namespace kalvex
