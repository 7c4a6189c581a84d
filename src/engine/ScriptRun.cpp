// The run cycle: due steps, the frame of a line, errors and their reports.
#include "engine/Procedures.h"
#include "engine/ScriptDocument.h"
#include "operands/Keywords.h"
#include "text/CodePage.h"
#include "text/LineScanner.h"

namespace kalvex::engine {

namespace {

constexpr std::int64_t kLineReportPause = 1;  // seconds

// The pace counter after so many steps that run nothing.
int CounterAfter(int counter, int priority, int steps) {
    if (steps <= counter) return counter - steps;
    return priority - 1 - (steps - counter - 1) % priority;
}

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

void CKalvexDoc::SkipSteps(int count) {
    m_nPaceCounter = CounterAfter(m_nPaceCounter, m_nPriority, count);
}

void CKalvexDoc::Pause(StopCause cause) {
    m_bRunning = false;
    m_bPaused = true;
    standing.OnStop(cause, Services().clock);
}

void CKalvexDoc::Resume() {
    m_bRunning = true;
    m_bPaused = false;
    standing.OnStart(Services().clock);
}

void CKalvexDoc::RunFreely() {
    if (ExecuteLine()) {
        m_bErrorStanding = false;
    } else {
        const bool lineChanged = m_nReportedLine != m_nCurrentLine;
        const bool errorChanged = m_nReportedError != LastError().m_nErrorCode;
        const bool waiting = LastError().IsWaiting();
        if (waiting ? lineChanged : lineChanged || errorChanged) {
            ReportError(waiting ? platform::LogEvents : platform::LogErrors);
        }
        m_nReportedLine = m_nCurrentLine;
        m_nReportedError = LastError().m_nErrorCode;
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
    standing.OnStep();
    const bool succeeded = ExecuteLine();
    standing.Settle(Services().clock);
    stepFailed = !succeeded && !LastError().IsWaiting();
    if (!succeeded) {
        const int code = LastError().m_nErrorCode;
        if (m_nReportedLine != m_nCurrentLine && m_nReportedError != code)
            ReportError(platform::LogErrors);
        m_nReportedLine = m_nCurrentLine;
        m_nReportedError = code;
    }
    ShowLine(m_nCurrentLine);
    if (!m_bControlAllowed && Services().console != nullptr) {
        Services().console->SendState(m_strDocKey, ConsoleStateMessage::Stepped, GetStateWord(),
                                      m_nCurrentLine);
    }
    m_bErrorStanding = false;
    m_bStepRequested = false;
    if (m_view != nullptr) m_view->RefreshVariables();
}

void CKalvexDoc::ReportError(int level) {
    const operands::ErrorSlot& error = LastError();
    Report(m_nCurrentLine, error.m_nErrorCode, error.m_strErrorText, level);
    report->waiting = error.IsWaiting();
}

void CKalvexDoc::ShowLine(int line) {
    if (m_view == nullptr) return;
    if (m_bStepRequested && !m_bMinimised) MarkLine(line);
    m_view->SelectLine(line);
    const bool behindText = line >= GetLineCount();
    if (m_bStepRequested || behindText || !m_view->HasBreakpoint(line)) return;
    StopFor(StopCause::Breakpoint);
    if (Services().console != nullptr) {
        Services().console->SendState(m_strDocKey, ConsoleStateMessage::Breakpoint, GetStateWord(),
                                      line);
    }
}

bool CKalvexDoc::ExecuteLine() {
    if (m_nCurrentLine >= GetLineCount()) {
        standing.Settle(Services().clock);
        return true;
    }
    if (m_arrLineCache.IsFilled()) return RunLine();
    // A text that is not started may change between two lines, but not within one.
    FillLineCache();
    const bool succeeded = RunLine();
    DropLineCache();
    return succeeded;
}

bool CKalvexDoc::RunLine() {
    SetError(operands::ErrorNone, {}, true);
    std::string_view line = GetLine(m_nCurrentLine);
    if (!m_lstCallStack.empty()) {
        m_rewrittenLine = RewriteLine(m_lstCallStack.back(), line);
        line = m_rewrittenLine;
    }
    const LineOutcome outcome = RunStatement(line);
    const bool failed = outcome == LineOutcome::Failed;
    if (failed && LastError().m_nErrorCode == operands::ErrorNone)
        SetError(operands::ErrorOther, {}, false);
    if (Services().counts != nullptr) CountLine(*Services().counts, failed);
    standing.OnLine(outcome, LastError(), Services().clock);
    if (outcome == LineOutcome::Finished) CompleteLine();
    return !failed;
}

void CKalvexDoc::CountLine(RunCounts& counts, bool failed) const {
    ++counts.lines;
    if (!failed) return;
    ++(LastError().IsWaiting() ? counts.waits : counts.errors);
}

LineOutcome CKalvexDoc::RunStatement(std::string_view line) {
    if (line.empty() || line.front() == ';') return LineOutcome::Finished;
    std::string_view rest = line;
    const std::string word = text::ToUpper(text::NextToken(rest));
    if (word.starts_with(':')) return LineOutcome::Finished;
    const StatementRow* row = Services().statements.Find(word);
    if (m_bInProcedureSkip && word != operands::Keyword::Procedure) return PassProcedureLine(word);
    if (row == nullptr) return Fail(operands::ErrorUnknownKeyword, word);
    StatementCall call{*this, row->keyword, rest};
    return row->handler(call);
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

operands::Failure CKalvexDoc::StopOnError(int code, std::string_view text) {
    Pause(StopCause::Error);
    return Fail(code, text);
}

std::string CKalvexDoc::GetErrorMessage(int code) const {
    const operands::ScriptErrorRow* row = operands::FindScriptError(code);
    const platform::Translator& translator = Services().translator;
    if (row == nullptr) {
        return translator.Translate(operands::FindScriptError(operands::ErrorOther)->text) + " (" +
               std::to_string(code) + ')';
    }
    return row->translated ? translator.Translate(row->text) : text::FromUtf8(row->text);
}

std::string CKalvexDoc::FormatError(int code, std::string_view text) const {
    std::string words = GetErrorMessage(code);
    if (!text.empty()) {
        words += " : ";
        words += text;
    }
    return words;
}

std::string CKalvexDoc::FormatErrorReport(int line, int code, std::string_view text) const {
    std::string words = Services().translator.Translate(" : Linia ");
    words += std::to_string(line + 1);
    words += " - ";
    words += FormatError(code, text);
    return words;
}

void CKalvexDoc::Report(int line, int code, std::string_view text, int level) {
    report = {Services().clock.Now(), level, line, FormatError(code, text)};
    LogLine(FormatErrorReport(line, code, text), level);
}

}  // namespace kalvex::engine
