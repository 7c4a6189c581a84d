#include "workbench/model/StandingRefresh.h"

namespace kalvex::workbench {

StandingRefresh::Look StandingRefresh::LookAt(const engine::CKalvexDoc* document) {
    Look look;
    if (document == nullptr) return look;
    const engine::RunState& state = document->State();
    look.document = document;
    look.stateWord = document->GetStateWord() & ~engine::StateMinimised;
    look.line = state.m_nCurrentLine;
    look.outcome = state.standing.GetOutcome();
    look.since = state.standing.GetSince();
    look.error = state.standing.GetError().code;
    look.sleepUntil = state.m_tSleepUntil;
    return look;
}

bool StandingRefresh::IsDue(const engine::CKalvexDoc* document, std::int64_t now) {
    const Look look = LookAt(document);
    const bool other =
        !m_shown || look.document != m_shown->document || look.stateWord != m_shown->stateWord;
    const std::int64_t passed = now - m_last;
    const bool moved = m_shown && look != *m_shown && passed >= kNextLine;
    const bool outside = look.stateWord != 0 && passed >= kOutside;
    if (!other && !moved && !outside) return false;
    m_shown = look;
    m_last = now;
    return true;
}

}  // namespace kalvex::workbench
