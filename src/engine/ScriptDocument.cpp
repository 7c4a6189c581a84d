#include "engine/ScriptDocument.h"

#include "platform/Files.h"
#include "text/CodePage.h"

namespace kalvex::engine {

namespace {

constexpr int kNoLineReported = 65535;
constexpr int kNoErrorReported = -1;
constexpr int kDefaultPriority = 50;

}  // namespace

CKalvexDoc::CKalvexDoc(const DocumentServices& services, std::unique_ptr<ScriptText> text)
    : operands::ScriptContext(services), m_text(std::move(text)) {}

CKalvexDoc::~CKalvexDoc() {
    ClearRunState();
    DestroyParts();
}

bool CKalvexDoc::Open(std::string_view path, std::string& error) {
    std::string content;
    const std::string file = platform::NativePath(Services().paths.GetFullPath(path));
    if (!platform::ReadWholeFile(file, content, error)) return false;
    TellForeignText(file, content);
    SetFile(path);
    m_text->SetText(content);
    m_modified = false;
    return true;
}

void CKalvexDoc::SetFile(std::string_view path) {
    if (path.empty()) {
        SetPathName({});
        m_strDocKey.clear();
        return;
    }
    SetPathName(Services().paths.GetFullPath(path));
    m_strDocKey = Services().paths.GetShortPath(path);
}

bool CKalvexDoc::Save(std::string& error) {
    if (!platform::WriteWholeFile(platform::NativePath(GetPathName()), m_text->GetText(), error))
        return false;
    m_modified = false;
    if (Services().console != nullptr) Services().console->OnSaved(*this);
    return true;
}

bool CKalvexDoc::SaveOrLog() {
    std::string error;
    if (Save(error)) return true;
    LogLine(" : " + text::FromUtf8(error), platform::LogErrors);
    return false;
}

bool CKalvexDoc::Reload() {
    std::string content;
    std::string error;
    const std::string file = platform::NativePath(GetPathName());
    if (!platform::ReadWholeFile(file, content, error)) {
        LogLine(" : " + text::FromUtf8(error), platform::LogErrors);
        return false;
    }
    TellForeignText(file, content);
    m_text->SetText(content);
    return true;
}

void CKalvexDoc::SetReadOnly(bool readOnly) {
    m_readOnly = readOnly;
    if (m_view != nullptr) m_view->SetReadOnly(readOnly);
}

int CKalvexDoc::GetStateWord() const {
    return (m_bRunning ? StateRunning : 0) | (m_bPaused ? StatePaused : 0) |
           (m_bStepRequested ? StateStep : 0) | (m_bMinimised ? StateMinimised : 0);
}

std::string_view StateName(int stateWord) {
    if ((stateWord & StateRunning) != 0) return "running";
    return (stateWord & (StatePaused | StateStep)) != 0 ? "stopped" : "idle";
}

void CKalvexDoc::LogLine(std::string_view text, int level) {
    Services().log.Log(GetPathName() + std::string(text), level);
}

void CKalvexDoc::FillLineCache() {
    DropLineCache();
    m_arrLineCache.Fill(*m_text);
}

void CKalvexDoc::DropLineCache() {
    EndPromise();
    m_arrLineCache.Clear();
    m_ifBlocks.Clear();
    m_lineForms.Clear();
    m_rewrittenCalls.Clear();
    for (CCallFrame& frame : m_lstCallStack) frame.lines = nullptr;
}

int CKalvexDoc::GetLineCount() const {
    return m_arrLineCache.IsFilled() ? m_arrLineCache.Count() : m_text->GetLineCount();
}

bool CKalvexDoc::CommandGoesToModule(ConsoleCommand command) {
    if (!Services().consoleClient) return false;
    if (m_bControlAllowed && Services().console != nullptr) {
        Services().console->SendCommand(m_strDocKey, command);
    }
    return true;
}

bool CKalvexDoc::SaveChanges() {
    if (!m_modified) return true;
    if (!Services().questions.AskYesNo(Services().translator.Translate("Czy zapisać zmiany?"))) {
        return false;
    }
    return SaveOrLog();
}

void CKalvexDoc::PrepareRun() {
    EndPromise();
    m_waiting = {};
    if (!m_bIncludesExpanded) {
        DropLineCache();
        ExpandIncludes(true);
    }
    ClearLine();
    FillLineCache();
    m_modified = false;
}

bool CKalvexDoc::Start() {
    if (Services().consoleClient && !m_bControlAllowed) return false;
    if (!SaveChanges() || CommandGoesToModule(ConsoleCommand::Start)) return false;
    report.reset();
    LogLine(Services().translator.Translate(" : Inicjowanie skryptu "), platform::LogAlways);
    PrepareRun();
    if (!CheckStructure()) {
        DropLineCache();
        if (m_bIncludesExpanded) ExpandIncludes(false);
        return false;
    }
    m_nReportedLine = kNoLineReported;
    m_nReportedError = kNoErrorReported;
    m_bErrorStanding = false;
    stepFailed = false;
    m_tSleepUntil = 0;
    m_bInProcedureSkip = false;
    m_bInProcedureBody = false;
    Resume();
    SetReadOnly(true);
    if (m_view != nullptr) m_view->RefreshTitle();
    LogLine(Services().translator.Translate(" : Start skryptu "), platform::LogAlways);
    return true;
}

void CKalvexDoc::Stop() {
    if (CommandGoesToModule(ConsoleCommand::Stop)) return;
    StopFor(StopCause::Command);
}

void CKalvexDoc::StopFor(StopCause cause) {
    MarkLine(m_nCurrentLine);
    m_bStepRequested = false;
    if (!m_bPaused) Pause(cause);
    if (m_view != nullptr) {
        m_view->SelectLine(m_nCurrentLine);
        m_view->RefreshTitle();
    }
    LogLine(Services().translator.Translate(" : Stop skryptu "), platform::LogAlways);
}

void CKalvexDoc::Step() {
    if (CommandGoesToModule(ConsoleCommand::Step)) return;
    EndPromise();
    m_nReportedLine = kNoLineReported;
    m_bStepRequested = true;
}

void CKalvexDoc::Reset() {
    if (CommandGoesToModule(ConsoleCommand::Reset)) return;
    LogLine(Services().translator.Translate(" : Reset skryptu "), platform::LogAlways);
    EndRun();
}

void CKalvexDoc::EndRun() {
    ClearLine();
    ClearRunState();
    ExpandIncludes(false);
    SetReadOnly(!m_bControlAllowed);
    if (m_view != nullptr) m_view->RefreshTitle();
}

void CKalvexDoc::ClearRunState() {
    EndPromise();
    m_waiting = {};
    m_bRunning = false;
    m_bStepRequested = false;
    m_bPaused = false;
    if (ScriptSources* sources = Services().sources) {
        sources->BlockSubscribe();
        for (const std::unique_ptr<operands::CVariable>& variable : Variables()) {
            if (variable->GetKind() == operands::VariableRemote) sources->ReleaseRemote(*variable);
        }
        sources->UnblockSubscribe(true);
    }
    Variables().RemoveAll();
    m_tSleepUntil = 0;
    m_mapWaitFor.clear();
    m_lstCallStack.clear();
    DropLineCache();
    ClearParts();
    if (m_view != nullptr) m_view->RefreshVariables();
    m_nCurrentLine = 0;
    m_nPriority = kDefaultPriority;
    m_nPaceCounter = 0;
    SetError(operands::ErrorNone, {}, false);
    m_nReportedError = operands::ErrorNone;
    m_bErrorStanding = false;
    stepFailed = false;
    standing = {};
    report.reset();
}

void CKalvexDoc::ClearLine() {
    MarkLine(-1);
    if (m_view != nullptr) m_view->SelectLine(-1);
}

void CKalvexDoc::MirrorState(int stateWord) {
    EndPromise();
    m_bRunning = (stateWord & StateRunning) != 0;
    m_bPaused = (stateWord & StatePaused) != 0;
    m_bStepRequested = (stateWord & StateStep) != 0;
    if (m_view != nullptr) m_view->RefreshTitle();
}

void CKalvexDoc::MirrorLine(int line) {
    if (line >= 0) m_nCurrentLine = line;
    if (m_view == nullptr || m_bMinimised) return;
    m_view->SelectLine(line < 0 ? -1 : line);
    if (line < 0 || (!m_bStepRequested && !m_bPaused)) return;
    m_view->SetLineMarker(line, true);
    m_nMarkedLine = line;
}

void CKalvexDoc::MarkLine(int line) {
    if (m_view != nullptr) {
        if (m_nMarkedLine != -1) m_view->SetLineMarker(m_nMarkedLine, false);
        if (line != -1) m_view->SetLineMarker(line, true);
    }
    m_nMarkedLine = line;
}

}  // namespace kalvex::engine
