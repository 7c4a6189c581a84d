// The run cycle: due steps, the frame of a line, errors and their reports.
#include "engine/Procedures.h"
#include "engine/ScriptDocument.h"
#include "operands/Keywords.h"
#include "text/CodePage.h"
#include "text/LineScanner.h"

namespace kalvex {

namespace {

constexpr std::int64_t kLineReportPause = 1;  // seconds

}  // namespace

bool CKalvexDoc::ExecuteStep() {
    if (Services().consoleClient) return false;
    if (m_nPaceCounter >= 1) {
        --m_nPaceCounter;
        return m_bErrorStanding;
    }
    m_nPaceCounter = m_nPriority - 1;
    if (m_bRunning) {
        RunFreely();
    } else if (m_bStepRequested) {
        RunOneStep();
    }
    return m_bErrorStanding;
}

void CKalvexDoc::RunFreely() {
    if (ExecuteLine()) {
        m_bErrorStanding = false;
    } else {
        const bool lineChanged = m_nReportedLine != m_nCurrentLine;
        const bool errorChanged = m_nReportedError != m_nErrorCode;
        const bool waiting = m_nErrorCode == ErrorWaiting;
        if (waiting ? lineChanged : lineChanged || errorChanged) {
            LogLine(FormatErrorReport(m_nCurrentLine, m_nErrorCode, m_strErrorText),
                    waiting ? LogEvents : LogErrors);
        }
        m_nReportedLine = m_nCurrentLine;
        m_nReportedError = m_nErrorCode;
        m_bErrorStanding = !waiting;
    }
    ShowLine(m_nCurrentLine);
    if (!m_bLineReportSend || Services().console == nullptr) return;
    const std::int64_t now = Services().clock.Now();
    if (now - m_tLastLineReport > kLineReportPause) {
        Services().console->SendLine(m_strDocKey, m_nCurrentLine);
        m_tLastLineReport = now;
    }
}

// A step reports an error only where line and code both differ from the reported ones.
void CKalvexDoc::RunOneStep() {
    if (!ExecuteLine()) {
        if (m_nReportedLine != m_nCurrentLine && m_nReportedError != m_nErrorCode) {
            LogLine(FormatErrorReport(m_nCurrentLine, m_nErrorCode, m_strErrorText), LogErrors);
        }
        m_nReportedLine = m_nCurrentLine;
        m_nReportedError = m_nErrorCode;
    }
    ShowLine(m_nCurrentLine);
    if (!m_bControlAllowed && Services().console != nullptr) {
        Services().console->SendState(m_strDocKey, ConsoleStateMessage::Stepped, GetStateWord(),
                                      m_nCurrentLine);
    }
    m_bErrorStanding = false;
    m_bStepRequested = false;
    if (m_pView != nullptr) m_pView->RefreshVariables();
}

void CKalvexDoc::ShowLine(int line) {
    if (m_pView == nullptr) return;
    if (m_bStepRequested && !m_bMinimised) MoveMarker(line);
    m_pView->SelectLine(line);
    if (m_bStepRequested || !m_pView->HasBreakpoint(line)) return;
    Stop();
    if (Services().console != nullptr) {
        Services().console->SendState(m_strDocKey, ConsoleStateMessage::Breakpoint, GetStateWord(),
                                      line);
    }
}

bool CKalvexDoc::ExecuteLine() {
    if (m_nCurrentLine >= GetLineCount()) return true;
    SetError(ErrorNone, {}, true);
    std::string_view line = GetLine(m_nCurrentLine);
    if (!m_lstCallStack.empty()) {
        m_strRewrittenLine = RewriteLine(m_lstCallStack.back(), line);
        line = m_strRewrittenLine;
    }
    bool keepLine = false;
    const bool succeeded = RunStatement(line, keepLine);
    if (!succeeded && m_nErrorCode == ErrorNone) SetError(ErrorOther, {}, false);
    if (Services().counts != nullptr) CountLine(*Services().counts, succeeded);
    if (succeeded && !keepLine) CompleteLine();
    return succeeded;
}

void CKalvexDoc::CountLine(RunCounts& counts, bool succeeded) const {
    ++counts.lines;
    if (succeeded) return;
    ++(m_nErrorCode == ErrorWaiting ? counts.waits : counts.errors);
}

bool CKalvexDoc::RunStatement(std::string_view line, bool& keepLine) {
    if (line.empty() || line.front() == ';') return true;
    std::string_view rest = line;
    const std::string word = ToUpper(NextToken(rest));
    if (word.starts_with(':')) return true;
    const StatementRow* row = Services().statements.Find(word);
    if (m_bInProcedureSkip && word != Keyword::Procedure) return SkipProcedureLine(*this, word);
    if (row == nullptr) {
        SetError(ErrorUnknownKeyword, word, false);
        return false;
    }
    StatementCall call{*this, row->keyword, rest, false};
    const bool succeeded = row->handler(call);
    keepLine = call.keepLine;
    return succeeded;
}

// A finished script that has waited at a WAITFOR goes back to the first one and becomes a cycle.
void CKalvexDoc::CompleteLine() {
    const int lineCount = GetLineCount();
    if (m_nCurrentLine < lineCount - 1) {
        ++m_nCurrentLine;
    } else if (m_nCurrentLine == lineCount - 1) {
        m_nCurrentLine = m_mapWaitFor.empty() ? lineCount : m_mapWaitFor.begin()->second.nLine;
    }
}

void CKalvexDoc::SetError(int code, std::string_view text, bool force) {
    if (!force && m_nErrorCode != ErrorNone && m_nErrorCode != ErrorOther) return;
    m_nErrorCode = code;
    m_strErrorText = text;
}

bool CKalvexDoc::StopOnError(int code, std::string_view text) {
    SetError(code, text, false);
    m_bRunning = false;
    m_bPaused = true;
    return false;
}

std::string CKalvexDoc::GetErrorMessage(int code) const {
    const ScriptErrorRow* row = FindScriptError(code);
    const Translator& translator = Services().translator;
    if (row == nullptr) {
        return translator.Translate(FindScriptError(ErrorOther)->text) + " (" +
               std::to_string(code) + ')';
    }
    return row->translated ? translator.Translate(row->text) : FromUtf8(row->text);
}

std::string CKalvexDoc::FormatErrorReport(int line, int code, std::string_view text) const {
    std::string report = Services().translator.Translate(" : Linia ");
    report += std::to_string(line + 1);
    report += " - ";
    report += GetErrorMessage(code);
    if (!text.empty()) {
        report += " : ";
        report += text;
    }
    return report;
}

}  // namespace kalvex
