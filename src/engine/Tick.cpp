#include "engine/Tick.h"

#include <algorithm>

namespace kalvex {

namespace {

constexpr int kTopPriority = 1;
constexpr int kExtraSteps = 9;
constexpr int kExtraStepsMinimised = 10;

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

}  // namespace kalvex
