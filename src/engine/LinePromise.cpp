#include "engine/LinePromise.h"

#include <utility>

#include "engine/Procedures.h"
#include "engine/ScriptDocument.h"
#include "operands/KeywordFunction.h"
#include "operands/Keywords.h"
#include "text/CodePage.h"
#include "text/LineScanner.h"

namespace kalvex::engine {

void CKalvexDoc::Promise(LinePromise promise) {
    // A text that is not started may change under the line.
    if (!Services().keepForms || !m_arrLineCache.IsFilled()) return;
    promise.error = LastError().m_nErrorCode;
    promise.shows = m_view != nullptr || m_bLineReportSend;
    promise.standing = true;
    RunState::promise = promise;
}

std::uint64_t CKalvexDoc::DataCount() const {
    const ScriptSources* const sources = Services().sources;
    return sources == nullptr ? 0 : sources->GetChangeCount();
}

// A window that reads a pointer without a target leaves its error in the slot, from which the next
// try takes it away.
bool CKalvexDoc::PromiseHolds(TickMoment& moment) const {
    if (!m_bRunning || promise.error != LastError().m_nErrorCode) return false;
    if (promise.data != LinePromise::kAnyData && promise.data != DataCount()) return false;
    if (!promise.tries) return true;
    const std::int64_t now = moment.Now(Services().clock);
    return promise.from <= now && now < promise.until;
}

void CKalvexDoc::CountKept(int tries) const {
    RunCounts* const counts = Services().counts;
    if (counts == nullptr || !promise.tries) return;
    const auto count = static_cast<std::uint64_t>(tries);
    counts->lines += count;
    if (promise.error == operands::ErrorWaiting) counts->waits += count;
    if (m_bErrorStanding) counts->errors += count;
}

// A keyword function may do more than read, or read more than variables.
WaitingLine CKalvexDoc::JudgeLine(std::string_view line) const {
    std::string_view rest = line;
    const std::string word = text::ToUpper(text::NextToken(rest));
    const StatementRow* const row = Services().statements.Find(word);
    WaitingLine judged;
    if (row == nullptr || !row->waitsAlike) return judged;
    for (std::string_view token = text::NextToken(rest); !token.empty();
         token = text::NextToken(rest)) {
        if (Services().functions.Find(token) != nullptr) return judged;
    }
    judged.alike = true;
    judged.readsClock = text::ToUpper(line).find(operands::Keyword::Time) != std::string::npos;
    return judged;
}

void CKalvexDoc::PromiseToWait() {
    if (!Services().keepForms) return;
    const bool called = !m_lstCallStack.empty();
    if (called || m_waiting.line != m_nCurrentLine) {
        const std::string_view line = GetLine(m_nCurrentLine);
        m_waiting = called ? JudgeLine(RewriteLine(m_lstCallStack.back(), line)) : JudgeLine(line);
        m_waiting.line = called ? -1 : m_nCurrentLine;
    }
    if (!m_waiting.alike) return;
    if (!m_waiting.readsClock) {
        Promise({.data = DataCount()});
        return;
    }
    // The second of a try is known only where the try before was in the same one.
    const std::int64_t now = Services().clock.Now();
    if (now == std::exchange(m_waiting.tried, now))
        Promise({.from = now, .until = now + 1, .data = DataCount()});
}

}  // namespace kalvex::engine
