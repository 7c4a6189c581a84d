// One open script file together with the whole state of its interpreter. Documents share nothing
// but their services. Everything runs on the main thread; nothing here blocks but the end of a
// document, which waits for its connectivity checks, and a line that waits for a program to end.
#pragma once

#include <array>
#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "engine/CallStack.h"
#include "engine/DocumentPart.h"
#include "engine/DocumentServices.h"
#include "engine/IfBlocks.h"
#include "engine/ScriptText.h"
#include "engine/ScriptView.h"
#include "operands/ScriptContext.h"

namespace kalvex {

// Bits of the state word that the console publishes.
enum ScriptStateBit : int { StateRunning = 1, StatePaused = 2, StateStep = 4, StateMinimised = 8 };

// The interpreter's state that statements work on. Line numbers count from 0.
struct CRunState {
    int m_nErrorCode = 0;
    std::string m_strErrorText;
    bool m_bIncludesExpanded = false;
    bool m_bRunning = false;        // runs freely; also when it has passed its last line
    bool m_bStepRequested = false;  // the next due step runs one line
    bool m_bMinimised = false;
    bool m_bPaused = false;  // stands in step mode with all of its state
    int m_nCurrentLine = 0;  // the next line to run
    int m_nReportedLine = 0;
    int m_nReportedError = 0;
    bool m_bErrorStanding = false;  // the last line failed with a real error
    int m_nPriority = 50;           // a line runs every so many ticks
    std::int64_t m_tSleepUntil = 0;
    int m_nPaceCounter = 0;  // ticks left until the next line is due
    int m_nMarkedLine = -1;
    bool m_bInProcedureSkip = false;
    bool m_bInProcedureBody = false;
    std::list<CCallFrame> m_lstCallStack;            // newest at the tail
    std::map<std::uint16_t, CWaitFor> m_mapWaitFor;  // by line number cut to 16 bits
    bool m_bControlAllowed = true;
    bool m_bLineReportSend = false;
    std::int64_t m_tLastLineReport = 0;
    bool m_bIgnoreUnknown = false;
};

class CKalvexDoc final : public CScriptContext, public CRunState {
  public:
    // Makes an empty, idle document. Lines live in a line list unless another text is given.
    explicit CKalvexDoc(const DocumentServices& services,
                        std::unique_ptr<CScriptText> text = std::make_unique<CLineList>());
    ~CKalvexDoc() override;

    // Loads the file and takes its path (Windows-1250); false with the system's words in `error`.
    bool Open(std::string_view path, std::string& error);
    // Writes the text to the file, line ends CR LF; clears the modified flag.
    bool Save(std::string& error);

    const DocumentServices& Services() const { return m_documentServices; }
    const std::string& GetPathName() const { return m_strPath; }  // full path, Windows-1250
    const std::string& GetDocKey() const { return m_strDocKey; }  // short path
    CScriptText& Text() { return *m_pText; }
    const CScriptText& Text() const { return *m_pText; }
    void SetView(CScriptView* view) { m_pView = view; }  // not owned, may be null
    bool IsModified() const { return m_bModified; }
    void SetModified(bool modified) { m_bModified = modified; }
    bool IsReadOnly() const { return m_bReadOnly; }
    void SetReadOnly(bool readOnly);
    void SetMinimised(bool minimised) { m_bMinimised = minimised; }
    int GetStateWord() const;

    // Commands. Start is also the resume after a stop; false when the script does not run now.
    bool Start();
    void Stop();
    void Step();
    void Reset();
    void ClearRunState();

    // One step by pacing; returns m_bErrorStanding.
    bool ExecuteStep();
    // Runs the current line; true when it finished or waits without error.
    bool ExecuteLine();

    int GetLineCount() const;
    // Line n normalised: tabs are blanks, leading blanks gone. Valid until the next call.
    std::string_view GetLine(int n);

    void SetError(int code, std::string_view text, bool force) override;
    // Records the error and puts the script into step mode; always false, for a handler to return.
    bool StopOnError(int code, std::string_view text);
    std::string GetErrorMessage(int code) const;  // translated
    // " : Linia N - message" and " : text" if there is one.
    std::string FormatErrorReport(int line, int code, std::string_view text) const;
    void LogLine(std::string_view text, int level);  // the path followed by the text

    // Preparation. With `expand` the file is reloaded and its INCLUDE and INCLUDE_VAR lines
    // replaced; without it is only reloaded. False when a file failed in the middle of its reading.
    bool ExpandIncludes(bool expand);
    // The counts of IF...THEN and ENDIF; false, with a log line, when they do not match.
    bool CheckStructure();
    // Where the blocks of the text end.
    CIfBlocks& IfBlocks();
    // Moves to the label's line; a missing label stops the script with error 6.
    bool GotoLabel(std::string_view label);

    // A variable of kind local, pointer or list. One that exists already stays as it is. A dot in
    // the name stops the script.
    bool CreateVariable(std::string_view name, VariableKind kind);
    // A remote variable for "server@variable"; a target without "@" stops the script.
    bool CreateRemoteVariable(std::string_view name, std::string_view target);

    // The part of a subsystem, made at first use.
    template <class Part, class... Arguments>
    Part& GetPart(DocumentPart id, Arguments&&... arguments) {
        std::unique_ptr<CDocumentPart>& slot = m_arrParts[static_cast<std::size_t>(id)];
        if (!slot) slot = std::make_unique<Part>(std::forward<Arguments>(arguments)...);
        return static_cast<Part&>(*slot);
    }

  private:
    bool Reload();
    void ShowLine(int line);
    void MoveMarker(int line);
    void RunFreely();
    void RunOneStep();
    void CompleteLine();
    bool RunStatement(std::string_view line, bool& keepLine);
    void CountLine(RunCounts& counts, bool succeeded) const;
    bool CommandGoesToModule(ConsoleCommand command);
    void FillLineCache();
    void DropLineCache();
    bool SaveChanges();
    int FindLabel(std::string_view target);
    bool NameMayBeDeclared(std::string_view name);

    const DocumentServices& m_documentServices;
    std::unique_ptr<CScriptText> m_pText;
    CScriptView* m_pView = nullptr;
    std::string m_strPath;
    std::string m_strDocKey;
    bool m_bModified = false;
    bool m_bReadOnly = false;
    std::vector<std::string> m_arrLineCache;  // all lines, normalised; filled while the text stands
    // First line of each label of the cached lines, by the label's token.
    std::unordered_map<std::string_view, int> m_mapLabels;
    CIfBlocks m_ifBlocks;
    std::string m_strLineBuffer;
    std::string m_strRewrittenLine;
    std::array<std::unique_ptr<CDocumentPart>, static_cast<std::size_t>(DocumentPart::Count)>
        m_arrParts;
};

// First token of a line of the document, upper-cased; empty for a blank line.
std::string FirstKeyword(CKalvexDoc& document, int line);

}  // namespace kalvex
