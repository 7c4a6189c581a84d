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
    std::erase(m_documents, &document);
}

// Where a script has a line to run, those behind it often have one too, and what a line needs lies
// at the end of a row of pointers. So each of them is fetched a few documents ahead of the next
// one.
void TickRunner::FetchLines(std::size_t current) const {
    for (int step = 0; step < CKalvexDoc::kFetchSteps; ++step) {
        const auto ahead = static_cast<std::size_t>(CKalvexDoc::kFetchSteps - step) * kApart;
        if (current + ahead < m_documents.size()) m_documents[current + ahead]->FetchLine(step);
    }
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
        if (state.m_nPriority != kTopPriority) {
            if (document.PassStep()) {
                errorStanding |= state.m_bErrorStanding;
                continue;
            }
            if (!state.promise.standing) FetchLines(i);
        }
        errorStanding |= document.ExecuteTick(moment);
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
