#include "app/KalvexApp.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "platform/Threads.h"
#include "text/CodePage.h"
#include "text/TextFormat.h"
#include "value/LocalTimeText.h"

namespace kalvex::app {

namespace {

constexpr platform::ThreadIdentity kMainThread{"MainThread", 101};

constexpr int kMayRefuse = 0;  // flags of CloseInstance
constexpr int kMustClose = 1;

constexpr const char* kMirrors = platform::Translatable(" (zdalna konsola - połączona)");
constexpr const char* kMirrorsNothing =
    platform::Translatable(" (zdalna konsola - brak połączenia)");

enum Broadcast : unsigned int { BroadcastUser = 0, BroadcastInfo = 1 };

}  // namespace

CKalvexApp::CKalvexApp(const AppWorld& world)
    : m_world(world),
      m_cmdLine(world.arguments),
      m_log(m_world.clock, m_world.translator),
      m_diagnosticLog(m_world.clock, m_world.translator) {
    platform::SetThreadIdentity(kMainThread);
    if (m_world.window == nullptr) m_cmdLine.PassOverScripts();
}

CKalvexApp::~CKalvexApp() = default;

// ---- the end

void CKalvexApp::OnCloseMainWindow() {
    if (std::exchange(m_closing, true)) return;
    MainWindow* const window = m_world.window;
    const bool allowed =
        window == nullptr ||
        (m_world.users.CheckRight(m_closeLevel) &&
         (!m_cmdLine.HasOption("Q") || window->AskYesNo(m_world.translator.Translate(
                                           "Czy zakończyć działanie programu Kalvex?"))));
    if (allowed) CloseFrame();
    m_closing = false;
}

void CKalvexApp::CloseFrame() {
    if (CloseInstance(kMayRefuse) == 0) m_world.loop.Quit();
}

int CKalvexApp::CloseInstance(int flag) {
    MainWindow* const window = m_world.window;
    if (window != nullptr) {
        if (flag == kMayRefuse && !window->SaveModified()) return -1;
        window->Hide();
    }
    ReleaseScripts();
    return 0;
}

void CKalvexApp::ReleaseScripts() {
    while (m_documents && !m_documents->All().empty()) CloseDocument(*m_documents->All().front());
    if (m_services) {
        m_services->console = nullptr;
        m_services->sources = nullptr;
    }
    m_console.reset();
    m_clientInterface.reset();
    m_clientConsole.reset();
    m_configuration.autostart.clear();
}

void CKalvexApp::CloseDocument(engine::CKalvexDoc& document) {
    if (m_console && !document.GetDocKey().empty()) m_console->OnClosing(document);
    m_documents->Close(document);
}

void CKalvexApp::OnEndSession(bool ending) {
    if (m_world.service || !ending) return;
    m_log.LogAlways(m_world.translator.Translate("Sesja Windows została zakończona"));
    CloseInstance(kMustClose);
}

int CKalvexApp::ExitInstance() {
    ReleaseScripts();
    LogAppStop();
    m_log.SetLogFile({}, 0);
    m_diagnosticLog.SetLogFile({}, 0);
    m_log.SetOutlets(nullptr);
    m_frame.reset();
    while (m_librariesStarted > 0) m_world.libraries[--m_librariesStarted]->Stop();
    return m_end.exitStatus;
}

void CKalvexApp::LogAppStart() {
    m_log.Log(text::FormatText(m_world.translator.Translate("Uruchomienie modułu %s"),
                               {m_configuration.moduleName}),
              platform::LogAlways);
    m_startLogged = true;
    std::vector<std::string> warnings = m_cmdLine.GetWarnings(m_world.translator);
    std::ranges::move(m_store->FindFaults(m_configuration, m_profile, m_world.translator),
                      std::back_inserter(warnings));
    if (!m_logFault.empty()) warnings.push_back(m_logFault);
    for (const std::string& warning : warnings) m_log.Log(warning, platform::LogErrors);
}

void CKalvexApp::LogAppStop() {
    if (!std::exchange(m_startLogged, false)) return;
    m_log.Log(text::FormatText(m_world.translator.Translate("Zatrzymanie modułu %s"),
                               {m_configuration.moduleName}),
              platform::LogAlways);
}

// ---- while the process runs

void CKalvexApp::DoPeriodicWork() {
    if (m_clientInterface) m_clientInterface->SourceList().CheckConnections();
    if (m_console) m_console->Check();
    RemindOfErrors();
    if (m_log.GetLostLines() != m_linesLost || !m_logFault.empty()) CheckLogFile();
}

std::string CKalvexApp::FindLogFault() const {
    std::string reason;
    if (m_log.CanOpenLogFile(reason)) return {};
    return text::FormatText(
        m_world.translator.Translate("Nie można zapisać pliku rejestru %s (%s)"),
        {text::FromUtf8(m_logBase + ".log"), text::FromUtf8(reason)});
}

// Whoever does not read the file hears of it.
void CKalvexApp::CheckLogFile() {
    std::string fault = FindLogFault();
    const bool isNew = !fault.empty() && fault != m_logFault;
    m_logFault = std::move(fault);
    if (isNew) m_log.Log(m_logFault, platform::LogErrors);
    m_linesLost = m_log.GetLostLines();
}

void CKalvexApp::RemindOfErrors() {
    std::vector<engine::CKalvexDoc*> scripts;
    std::vector<StandingFault> faults;
    for (const std::unique_ptr<engine::CKalvexDoc>& script : m_documents->All()) {
        const engine::RunState& state = script->State();
        if (!state.m_bErrorStanding) continue;
        scripts.push_back(script.get());
        faults.push_back({script->GetPathName(), state.m_nCurrentLine,
                          state.standing.GetError().code, state.standing.GetSince()});
    }
    for (const std::size_t index : m_reminder.FindDue(faults)) {
        const StandingFault& fault = faults[index];
        const engine::StandingError& error = scripts[index]->State().standing.GetError();
        scripts[index]->LogLine(
            text::FormatText(m_world.translator.Translate("%s (błąd trwa od %s, razy: %s)"),
                             {scripts[index]->FormatErrorReport(fault.line, fault.code, error.text),
                              value::FormatLocalTime(fault.since), std::to_string(error.times)}),
            platform::LogErrors);
    }
}

void CKalvexApp::OnUserBroadcast(unsigned int parameter, std::string_view info) {
    if (parameter <= BroadcastInfo) m_log.Log(info, platform::LogAlways);
    if (parameter == BroadcastUser && m_clientInterface) m_clientInterface->SourceList().Login();
    UpdateCloseEntry();
}

void CKalvexApp::UpdateCloseEntry() {
    if (m_world.window == nullptr) return;
    m_world.window->EnableCloseEntry(m_world.users.CheckRight(m_closeLevel));
}

void CKalvexApp::UpdateTitle() {
    if (m_world.window == nullptr) return;
    std::string title = WithInstance(" [%d]", "Kalvex");
    if (m_clientConsole) {
        title += m_world.translator.Translate(
            m_clientConsole->Console().IsConnected() ? kMirrors : kMirrorsNothing);
    }
    m_world.window->SetTitle(title);
}

void CKalvexApp::ReopenLogFiles() {
    m_log.ReopenLogFile();
    m_diagnosticLog.ReopenLogFile();
    if (m_console) m_console->ReopenTrail();
    CheckLogFile();
}

void CKalvexApp::SetLogLevel(int level) {
    m_log.SetLevel(level);
    m_log.PublishLevel();
}

void CKalvexApp::ShowStatusLine(std::string_view text) {
    m_frame->SetStatusLine(text);
}

void CKalvexApp::OnLogLevel(int level) {
    if (m_clientConsole) return m_clientConsole->Console().SendLogLevel(level);
    if (m_console) m_console->PublishLevel(level);
    m_configuration.logLevel = level;
    if (m_store->WriteLogLevel(m_configuration)) return;
    m_log.Log(m_store->WhyNoLogLevel(m_profile, m_world.translator), platform::LogErrors);
}

}  // namespace kalvex::app
