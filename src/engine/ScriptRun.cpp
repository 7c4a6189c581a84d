// The run cycle: due steps, the frame of a line, errors and their reports.
#include <new>
#include <utility>

#include "engine/ErrorReport.h"
#include "engine/Procedures.h"
#include "engine/ScriptDocument.h"
#include "operands/Keywords.h"
#include "text/CodePage.h"
#include "text/LineScanner.h"
#include "text/TextFormat.h"
#include "value/Bounds.h"

namespace kalvex::engine {

namespace {

constexpr std::int64_t kLineReportPause = 1;  // seconds
// Seconds until what was refused is tried again.
constexpr std::int64_t kBoundPause = 60;
constexpr std::int64_t kMemoryPause = 1;
constexpr std::int64_t kSlowLinesPause = 60'000'000;  // microseconds

constexpr const char* kSlowLine =
    platform::Translatable(" : Linia %s trwała %s ms (takich linii: %s)");

constexpr int kTopPriority = 1;
constexpr int kCacheLine = 64;  // most forms of statements take two
constexpr int kExtraSteps = 9;
constexpr int kExtraStepsMinimised = 10;

// The pace counter after so many steps that run nothing.
int CounterAfter(int counter, int priority, int steps) {
    if (steps <= counter) return counter - steps;
    return priority - 1 - (steps - counter - 1) % priority;
}

// What a line asks for and cannot have, memory or a text or list beyond its bound, fails the line
// and nothing else. To ask again may cost as much as to get it, so that is done seldom: nothing of
// the script changes meanwhile, and no value of a source is as large.
LineOutcome FailBeyond(CKalvexDoc& document, const char* polish, std::int64_t pause) {
    document.SetError(operands::ErrorExpression, document.Services().translator.Translate(polish),
                      true);
    const std::int64_t now = document.Services().clock.Now();
    document.Promise({.from = now, .until = now + pause});
    return LineOutcome::Failed;
}

template <class Run>
LineOutcome RunBounded(CKalvexDoc& document, Run run) {
    try {
        return run();
    } catch (const value::TextTooLong&) {
        return FailBeyond(document, platform::Translatable("tekst dłuższy niż 64 MiB"),
                          kBoundPause);
    } catch (const value::ListTooLong&) {
        return FailBeyond(document, platform::Translatable("lista dłuższa niż 10000000 elementów"),
                          kBoundPause);
    } catch (const std::bad_alloc&) {
        return FailBeyond(document, platform::Translatable("brak pamięci"), kMemoryPause);
    }
}

}  // namespace

template <class Run>
LineOutcome CKalvexDoc::RunAtEdge(Run run) {
    LineWatch* const watch = Services().lineWatch;
    if (watch == nullptr) return RunBounded(*this, run);
    const int line = m_nCurrentLine;
    const LineOutcome outcome = RunBounded(*this, run);
    const std::int64_t took = watch->Take();
    if (took > LineWatch::kUnnoticed) [[unlikely]]
        CountSlowLine(line, took);
    return outcome;
}

void CKalvexDoc::CountSlowLine(int line, std::int64_t took) {
    const DocumentServices& services = Services();
    if (services.counts != nullptr) ++services.counts->slow;
    ++slowLines.untold;
    const std::int64_t now = services.lineWatch->Now();
    if (slowLines.told != 0 && now - slowLines.told < kSlowLinesPause) return;
    slowLines.told = now;
    const std::string count = std::to_string(std::exchange(slowLines.untold, 0));
    LogLine(text::FormatText(services.translator.Translate(kSlowLine),
                             {std::to_string(line + 1), std::to_string(took / 1000), count}),
            platform::LogErrors);
}

void CKalvexDoc::FetchLine(int step) const {
    const auto fetch = [](const void* place) { __builtin_prefetch(place); };
    if (step == 0) {
        fetch(&Variables());
        fetch(&standing);
        fetch(&m_view);
        fetch(&m_arrLineCache);
        return;
    }
    const std::unique_ptr<LineForm>* const slot = m_lineForms.Slot(m_nCurrentLine);
    if (slot == nullptr) return;
    if (step == 1) return fetch(slot);
    const LineForm* const form = slot->get();
    if (form == nullptr) return;
    if (step == 2) return fetch(form);
    if (form->statement == nullptr) return;
    if (step == 3) {
        const auto* const statement = reinterpret_cast<const char*>(form->statement.get());
        fetch(statement);
        fetch(statement + kCacheLine);
    } else {
        form->statement->Fetch();
    }
}

// So many steps of a tick at once. Nothing can end the promise between two of them but the clock,
// and no script can tell when in a tick that is seen.
bool CKalvexDoc::PassSteps(int count, TickMoment& moment) const {
    const bool allDue = m_nPriority == kTopPriority && m_nPaceCounter == 0;
    if (!allDue || !KeepsPromise(moment)) return false;
    CountKept(count);
    return true;
}

bool CKalvexDoc::ExecuteTick(TickMoment& moment) {
    const int all = 1 + kExtraSteps + (m_bMinimised ? kExtraStepsMinimised : 0);
    bool errorStanding = false;
    for (int left = all; left > 0;) {
        // Whoever looks at the line has seen it after the first step.
        const bool unseen = promise.standing && promise.shows && left == all;
        if (!unseen && PassSteps(left, moment)) {
            if (m_bErrorStanding) CountFailures(left);
            return errorStanding || m_bErrorStanding;
        }
        if (const int run = unseen ? 0 : RunKeptLines(left); run > 0) {
            left -= run;
            moment.Forget();
            errorStanding |= m_bErrorStanding;
        } else {
            --left;
            errorStanding |= ExecuteStep(moment);
        }
        if (left == all - 1 && m_nPriority != kTopPriority) break;
    }
    return errorStanding;
}

// The steps of a tick at the top priority, as long as each finds a line whose form is kept and
// nobody looks on in between: how many there were.
int CKalvexDoc::RunKeptLines(int most) {
    if (m_nPriority != kTopPriority || m_nPaceCounter != 0 || !m_bRunning) return 0;
    const bool watched =
        m_bLineReportSend || m_bStepRequested || (m_view != nullptr && m_view->HasBreakpoints());
    if (watched) return 0;
    const int lastLine = GetLineCount() - 1;
    RunCounts* const counts = Services().counts;
    int finished = 0;
    LineOutcome outcome = LineOutcome::Finished;
    while (finished < most && m_nPriority == kTopPriority) {
        LineForm* const kept = FindKept();
        if (kept == nullptr) break;
        EndPromise();
        ClearError();
        outcome = RunAtEdge([this, kept] { return RunStatement(*kept); });
        if (outcome != LineOutcome::Finished) break;
        ++finished;
        standing.OnFinish();
        if (m_nCurrentLine < lastLine) {
            ++m_nCurrentLine;
        } else {
            CompleteLine();
        }
    }
    KeepError();
    const bool stays = outcome != LineOutcome::Finished;
    if (finished > 0) {
        m_bErrorStanding = false;
        if (counts != nullptr) counts->lines += static_cast<std::uint64_t>(finished);
    }
    if (stays) HandleTry(EndLine(outcome));
    const int steps = finished + (stays ? 1 : 0);
    if (steps > 0) ShowLine(m_nCurrentLine);
    return steps;
}

bool CKalvexDoc::ExecuteStep() {
    TickMoment moment;
    return ExecuteStep(moment);
}

bool CKalvexDoc::ExecuteStep(TickMoment& moment) {
    if (PassStep()) return m_bErrorStanding;
    if (Services().consoleClient) return false;
    m_nPaceCounter = m_nPriority - 1;
    if (m_bRunning) {
        RunFreely(moment);
    } else if (m_bStepRequested) {
        RunOneStep();
        moment.Forget();
    }
    return m_bErrorStanding;
}

// Tries that would have failed as the last one did.
void CKalvexDoc::CountFailures(int tries) {
    for (int i = 0; i < tries; ++i)
        standing.OnLine(LineOutcome::Failed, LastError(), Services().clock);
}

void CKalvexDoc::SkipSteps(int count) {
    m_nPaceCounter = CounterAfter(m_nPaceCounter, m_nPriority, count);
}

void CKalvexDoc::Pause(StopCause cause) {
    EndPromise();
    m_bRunning = false;
    m_bPaused = true;
    standing.OnStop(cause, Services().clock);
}

void CKalvexDoc::Resume() {
    EndPromise();
    m_bRunning = true;
    m_bPaused = false;
    standing.OnStart(Services().clock);
}

void CKalvexDoc::RunFreely(TickMoment& moment) {
    if (KeepsPromise(moment)) {
        CountKept(1);
        if (m_bErrorStanding) CountFailures(1);
        if (!promise.shows) return;
    } else {
        EndPromise();
        HandleTry(ExecuteLine());
        moment.Forget();
    }
    ShowLine(m_nCurrentLine);
    SendLine();
}

// What becomes of a script that runs freely when a line was tried.
void CKalvexDoc::HandleTry(bool succeeded) {
    if (succeeded) {
        m_bErrorStanding = false;
        return;
    }
    const bool lineChanged = m_nReportedLine != m_nCurrentLine;
    const bool errorChanged = m_nReportedError != LastError().m_nErrorCode;
    const bool waiting = LastError().IsWaiting();
    if (waiting ? lineChanged : lineChanged || errorChanged) {
        ReportError(waiting ? platform::LogEvents : platform::LogErrors);
    }
    m_nReportedLine = m_nCurrentLine;
    m_nReportedError = LastError().m_nErrorCode;
    m_bErrorStanding = !waiting;
    if (waiting) PromiseToWait();
}

void CKalvexDoc::SendLine() {
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
        Promise({.tries = false});
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
    ClearError();
    LineForm* const kept = FindKept();
    return EndLine(
        RunAtEdge([this, kept] { return kept != nullptr ? RunStatement(*kept) : RunNewLine(); }));
}

bool CKalvexDoc::EndLine(LineOutcome outcome) {
    KeepError();
    const bool failed = outcome == LineOutcome::Failed;
    if (failed && LastError().m_nErrorCode == operands::ErrorNone)
        SetError(operands::ErrorOther, {}, false);
    if (Services().counts != nullptr) CountLine(*Services().counts, failed);
    standing.OnLine(outcome, LastError(), Services().clock);
    if (outcome == LineOutcome::Finished) CompleteLine();
    return !failed;
}

// The form of the current line as the newest call rewrites it; null where none is kept.
LineForm* CKalvexDoc::FindRewritten() {
    CCallFrame& frame = m_lstCallStack.back();
    if (frame.lines == nullptr) frame.lines = FindLinesOf(frame.arrArgs);
    return frame.lines == nullptr ? nullptr : frame.lines->Find(m_nCurrentLine);
}

LineOutcome CKalvexDoc::RunNewLine() {
    const StatementTable& statements = Services().statements;
    std::string_view line = GetLine(m_nCurrentLine);
    if (m_lstCallStack.empty()) {
        if (Services().keepForms && m_lineForms.WantsForm(m_nCurrentLine)) {
            return RunStatement(m_lineForms.Keep(m_nCurrentLine, line, statements));
        }
    } else {
        const CCallFrame& frame = m_lstCallStack.back();
        m_rewrittenLine = RewriteLine(frame, line);
        line = m_rewrittenLine;
        if (frame.lines != nullptr && m_rewrittenCalls.TakeLine()) {
            return RunStatement(frame.lines->Keep(m_nCurrentLine, m_rewrittenLine, statements));
        }
    }
    LineForm once(line, statements);
    return RunStatement(once);
}

void CKalvexDoc::CountLine(RunCounts& counts, bool failed) const {
    ++counts.lines;
    if (!failed) return;
    ++(LastError().IsWaiting() ? counts.waits : counts.errors);
}

// A line of a procedure that is passed over.
LineOutcome CKalvexDoc::PassLine(LineForm& line) {
    if (line.IsEmpty()) return LineOutcome::Finished;
    const std::string word = line.Word();
    if (word != operands::Keyword::Procedure) return PassProcedureLine(word);
    return line.row->handler(*this, line);
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
    std::string words = Services().translator.Translate(kLineMark);
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
