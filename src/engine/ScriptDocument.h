// One open script file together with the whole state of its interpreter. Documents share nothing
// but their services. Everything runs on the main thread; nothing here blocks but the end of a
// document, which waits for its connectivity checks, and a line that waits for a program to end.
#pragma once

#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/CallStack.h"
#include "engine/DocumentServices.h"
#include "engine/IfBlocks.h"
#include "engine/LineCache.h"
#include "engine/LineForm.h"
#include "engine/LinePromise.h"
#include "engine/LineStanding.h"
#include "engine/ScriptText.h"
#include "engine/ScriptView.h"
#include "operands/ScriptContext.h"

namespace kalvex::engine {

// Bits of the state word that the console publishes.
enum ScriptStateBit : int { StateRunning = 1, StatePaused = 2, StateStep = 4, StateMinimised = 8 };

// "running", "stopped" or "idle".
std::string_view StateName(int stateWord);

// A line of the log about a line of the script.
struct ScriptReport {
    std::int64_t time = 0;
    int level = 0;  // of the log
    int line = 0;
    std::string text;      // behind the line's number
    bool waiting = false;  // for data; else an error
};

// A label that a line jumps to. Its line is found once, as the text stands still as long as the
// form of the line does.
struct LabelTarget {
    explicit LabelTarget(std::string_view written) : label(written) {}  // outlives the target

    std::string_view label;  // without its ":"
    int line = -1;           // where it is not known
};

// The state of a script's run. The document alone changes it. Line numbers count from 0.
// It begins with what a tick looks at in a script that has nothing to do.
struct alignas(64) RunState {
    LinePromise promise;            // of the current line, in a script that runs freely
    int m_nPaceCounter = 0;         // ticks left until the next line is due
    int m_nPriority = 50;           // a line runs every so many ticks
    int m_nCurrentLine = 0;         // the next line to run
    bool m_bRunning = false;        // runs freely; also when it has passed its last line
    bool m_bStepRequested = false;  // the next due step runs one line
    bool m_bMinimised = false;
    bool m_bErrorStanding = false;  // the last line failed with a real error
    bool m_bPaused = false;         // stands in step mode with all of its state
    bool stepFailed = false;        // so did the last single step, which leaves no error standing
    bool m_bIncludesExpanded = false;
    // What a line looks at.
    bool m_bInProcedureSkip = false;
    bool m_bInProcedureBody = false;
    bool m_bLineReportSend = false;
    bool m_bControlAllowed = true;
    bool m_bIgnoreUnknown = false;
    std::list<CCallFrame> m_lstCallStack;  // newest at the tail
    LineStanding standing;
    int m_nReportedLine = 0;
    int m_nReportedError = 0;
    std::int64_t m_tSleepUntil = 0;
    std::int64_t m_tLastLineReport = 0;
    int m_nMarkedLine = -1;
    std::map<std::uint16_t, CWaitFor> m_mapWaitFor;  // by line number cut to 16 bits
    std::optional<ScriptReport> report;              // the newest since the start or the reset
    SlowLines slowLines;
};

class CKalvexDoc final : public operands::ScriptContext, private RunState {
  public:
    // Makes an empty, idle document. Lines live in a line list unless another text is given.
    explicit CKalvexDoc(const DocumentServices& services,
                        std::unique_ptr<ScriptText> text = std::make_unique<LineList>());
    ~CKalvexDoc() override;

    // Loads the file and takes its path (Windows-1250); false with the system's words in `error`.
    bool Open(std::string_view path, std::string& error);
    // Has no file until it is given one, which Save writes. The path is an engine text; an empty
    // one takes the file away.
    void SetFile(std::string_view path);
    // Writes the text to the file, line ends CR LF; clears the modified flag.
    bool Save(std::string& error);
    // The same; the log is told why it could not be written.
    bool SaveOrLog();

    const DocumentServices& Services() const {
        return static_cast<const DocumentServices&>(ScriptContext::Services());
    }
    const std::string& GetDocKey() const { return m_strDocKey; }  // short path
    ScriptText& Text() { return *m_text; }
    const ScriptText& Text() const { return *m_text; }
    // Not owned, may be null.
    void SetView(ScriptView* view) {
        m_view = view;
        EndPromise();
    }
    bool IsModified() const { return m_modified; }
    void SetModified(bool modified) { m_modified = modified; }
    bool IsReadOnly() const { return m_readOnly; }
    void SetReadOnly(bool readOnly);
    void SetMinimised(bool minimised) { m_bMinimised = minimised; }
    int GetStateWord() const;
    const RunState& State() const { return *this; }

    // Commands. Start is also the resume after a stop; false when the script does not run now.
    bool Start();
    void Stop();
    void Step();
    void Reset();
    void ClearRunState();

    // ---- a console, where nothing runs, makes its copy show what its module does

    // The text as it is while a script runs, with nothing marked or selected.
    void PrepareRun();
    // Running, stopped, step ordered; whether the window is minimised is this side's own.
    void MirrorState(int stateWord);
    // The line on which the module is, -1 for none. Lines marked before stay marked.
    void MirrorLine(int line);
    // No current line.
    void ClearLine();
    // The end of a run: idle, with the text that is in the file.
    void EndRun();

    // Without control a console client commands nothing. Lines go to the console once it wants
    // them.
    void AllowControl(bool allowed) { m_bControlAllowed = allowed; }
    void SendLineReports(bool wanted) {
        m_bLineReportSend = wanted;
        EndPromise();
    }

    // The value of a variable has been set, but not by a line of the script.
    void OnValueSet() { EndPromise(); }

    // All steps of a tick; true when one of them leaves an error standing.
    bool ExecuteTick(TickMoment& moment);
    // Ahead of a tick: what it looks at first is fetched from memory meanwhile.
    void Prefetch() const {
        __builtin_prefetch(this);
        __builtin_prefetch(static_cast<const RunState*>(this));
    }
    // The same for the line that is due next, a step after the other.
    static constexpr int kFetchSteps = 5;
    void FetchLine(int step) const;
    // Takes the step where the pace has no line for it.
    bool PassStep() {
        if (m_nPaceCounter < 1) return false;
        --m_nPaceCounter;
        return true;
    }
    // One step by pacing; returns m_bErrorStanding.
    bool ExecuteStep(TickMoment& moment);
    bool ExecuteStep();
    // Runs the current line; true when it finished or waits without error.
    bool ExecuteLine();
    // Counts the pace on as so many steps do that have no line to run.
    void SkipSteps(int count);
    // Into step mode, all state kept, and out of it to run freely.
    void Pause(StopCause cause);
    void Resume();

    // The text of a started script stands still until its reset, whether its window shows or not.
    int GetLineCount() const;
    // Line n normalised: tabs are blanks, leading blanks gone; empty where there is none. Only
    // while the script is started or a line runs; valid until the line that runs has ended.
    std::string_view GetLine(int n) const { return m_arrLineCache.Get(n); }
    // All of them, at the same time.
    const LineCache& Lines() const { return m_arrLineCache; }

    // Records the error and puts the script into step mode, for a handler to return.
    operands::Failure StopOnError(int code, std::string_view text);
    std::string GetErrorMessage(int code) const;  // translated
    // The message and " : text" if there is one.
    std::string FormatError(int code, std::string_view text) const;
    // The same behind " : Linia N - ".
    std::string FormatErrorReport(int line, int code, std::string_view text) const;
    // That goes into the log, and is kept.
    void Report(int line, int code, std::string_view text, int level);
    void LogLine(std::string_view text, int level);  // the path followed by the text

    // Preparation. With `expand` the file is reloaded and its INCLUDE and INCLUDE_VAR lines
    // replaced; without it is only reloaded. False when a file failed in the middle of its reading.
    bool ExpandIncludes(bool expand);
    // The counts of IF...THEN and ENDIF; false, with a log line, when they do not match.
    bool CheckStructure();
    // Where the blocks of the text end.
    IfBlockIndex& IfBlocks() { return m_ifBlocks; }
    // Moves to a line, which is passed over when the statement that jumps has finished.
    void JumpTo(int line) {
        m_nCurrentLine = line;
        EndPromise();
    }
    // Jumps to the label's line; a missing label stops the script with error 6.
    bool GotoLabel(LabelTarget& label) {
        if (label.line < 0) return GotoNewLabel(label);
        JumpTo(label.line);
        return true;
    }
    // A frame for a CALL on the current line. Going back ends the newest one and jumps to its CALL;
    // false when there is none.
    CCallFrame& PushFrame(const std::vector<CCallArg>& arguments);
    // Where the lines are kept as these arguments rewrite them; null where they are not.
    RewrittenLines* FindLinesOf(const std::vector<CCallArg>& arguments);
    bool ReturnFromCall();
    // The lines from here to the END of the procedure are passed over.
    void SkipProcedure() { m_bInProcedureSkip = true; }

    // A line runs every so many ticks.
    void SetPriority(int ticks);
    // Begins to sleep or goes on sleeping: finished once the time is up.
    LineOutcome Sleep(std::int64_t seconds);
    // The line that runs, and does not finish now, can do nothing else as long as this holds.
    void Promise(LinePromise promise);
    // The change count of the sources.
    std::uint64_t DataCount() const;
    // The wait record of the current line, null until it has one.
    CWaitFor* FindWaitFor();
    void AddWaitFor(CWaitFor record);
    // For all variables, and the remote ones to come.
    void IgnoreUnknown(bool ignore);

    // A variable of kind local, pointer or list. One that exists already stays as it is. A dot in
    // the name stops the script.
    bool CreateVariable(std::string_view name, operands::VariableKind kind);
    // A remote variable for "server@variable"; a target without "@" stops the script.
    bool CreateRemoteVariable(std::string_view name, std::string_view target);

  private:
    bool GotoNewLabel(LabelTarget& label);
    bool Reload();
    void ReportError(int level);
    void ShowLine(int line);
    void StopFor(StopCause cause);
    void MarkLine(int line);
    void RunFreely(TickMoment& moment);
    void HandleTry(bool succeeded);
    void SendLine();
    void RunOneStep();
    bool RunLine();
    void CompleteLine();
    bool EndLine(LineOutcome outcome);
    int RunKeptLines(int most);
    // The form of the current line, null where none is kept.
    LineForm* FindKept() {
        return m_lstCallStack.empty() ? m_lineForms.Find(m_nCurrentLine) : FindRewritten();
    }
    LineForm* FindRewritten();
    LineOutcome RunNewLine();
    LineOutcome RunStatement(LineForm& line) {
        return m_bInProcedureSkip ? PassLine(line) : line.row->handler(*this, line);
    }
    // At the edge of the line, which is left by no exception.
    template <class Run>
    LineOutcome RunAtEdge(Run run);
    void CountSlowLine(int line, std::int64_t took);
    LineOutcome PassLine(LineForm& line);
    LineOutcome PassProcedureLine(std::string_view keyword);
    void CountLine(RunCounts& counts, bool failed) const;
    bool CommandGoesToModule(ConsoleCommand command);
    void FillLineCache();
    void DropLineCache();
    bool SaveChanges();
    bool NameMayBeDeclared(std::string_view name);

    void EndPromise() { promise.standing = false; }
    bool KeepsPromise(TickMoment& moment) const { return promise.standing && PromiseHolds(moment); }
    bool PromiseHolds(TickMoment& moment) const;
    bool PassSteps(int count, TickMoment& moment) const;
    void CountFailures(int tries);
    void PromiseToWait();
    WaitingLine JudgeLine(std::string_view line) const;
    void CountKept(int tries) const;

    alignas(64) ScriptView* m_view = nullptr;
    LineForms m_lineForms;
    LineCache m_arrLineCache;  // filled while the text stands
    std::unique_ptr<ScriptText> m_text;
    std::string m_strDocKey;
    bool m_modified = false;
    bool m_readOnly = false;
    IfBlockIndex m_ifBlocks;
    RewrittenCalls m_rewrittenCalls;
    std::string m_rewrittenLine;          // one that is not kept
    std::list<CCallFrame> m_endedFrames;  // for the calls to come
    WaitingLine m_waiting;
};

}  // namespace kalvex::engine
