// The start of the application: the steps of InitInstance, and what runs once after them.
#include "app/KalvexApp.h"
#include "app/ProfileKeys.h"
#include "language/Functions.h"
#include "language/Statements.h"
#include "platform/FileTexts.h"
#include "text/CodePage.h"
#include "text/TextFormat.h"

namespace kalvex::app {

namespace {

constexpr const char* kProgram = "Kalvex";
constexpr const char* kClientLock = "Kalvex_RC";
constexpr const char* kClientSuffix = "_RC";
constexpr const char* kClientLogSuffix = "_rc";
constexpr const char* kDiagnosticSuffix = "_d";
constexpr const char* kTrailSuffix = ".audit";

constexpr int kFirstInstance = 1;
constexpr int kCloseLevel = 1;
constexpr int kLoginLevel = 1;
constexpr std::size_t kLogBytes = 10000000;
constexpr std::int64_t kTickBudget = 500;  // microseconds: half of the time between two ticks
constexpr unsigned int kUsualRefreshPeriod = 1000;  // milliseconds

}  // namespace

// clang-format off
const CKalvexApp::Step CKalvexApp::kSteps[] = {
    &CKalvexApp::ShowParameters,
    &CKalvexApp::ReadRole,
    &CKalvexApp::RefuseOptionC,
    &CKalvexApp::DecideRole,
    &CKalvexApp::LockInstance,
    &CKalvexApp::ConfigureProfile,
    &CKalvexApp::NameLogFiles,
    &CKalvexApp::StartLibraries,
    &CKalvexApp::RequirePrimaryInstance,
    &CKalvexApp::OpenProfile,
    &CKalvexApp::TakeNames,
    &CKalvexApp::LoadSettings,
    &CKalvexApp::OpenLogFile,
    &CKalvexApp::MakeDocuments,
    &CKalvexApp::CreateMainFrame,
    &CKalvexApp::CreateClientInterface,
    &CKalvexApp::TellRole,
    &CKalvexApp::StartConsole,
    &CKalvexApp::ScheduleAutoStart,
    &CKalvexApp::CompleteFrame,
};
// clang-format on

bool CKalvexApp::InitInstance() {
    for (const Step step : kSteps) {
        if (!(this->*step)()) return false;
    }
    return true;
}

bool CKalvexApp::Fail(std::string text) {
    if (!text.empty()) {
        m_diagnosticLog.AddMessage(text, platform::LogAlways);
        m_log.LogAlways(text);
    }
    m_end = {EXIT_FAILURE, std::move(text)};
    return false;
}

bool CKalvexApp::FailWithBox(std::string text) {
    if (m_world.window != nullptr) m_world.window->ShowMessage(text);
    return Fail(std::move(text));
}

std::string CKalvexApp::WithInstance(std::string_view format, std::string_view name) const {
    std::string text(name);
    if (m_instance != kFirstInstance)
        text += text::FormatText(format, {std::to_string(m_instance)});
    return text;
}

// ---- the role

bool CKalvexApp::ShowParameters() {
    if (!m_cmdLine.HasOption("?")) return true;
    std::string help = CCmdLine::GetHelp(m_world.translator);
    if (m_world.window != nullptr) return !m_world.window->ShowCmdLineParamsDlg(help);
    m_end.text = std::move(help);
    return false;
}

bool CKalvexApp::ReadRole() {
    if (m_cmdLine.HasOption("RC")) m_consoleClient = true;
    return true;
}

bool CKalvexApp::RefuseOptionC() {
    if (!m_cmdLine.HasOption("C")) return true;
    return FailWithBox(m_world.translator.Translate(
        "Opcja  /C nie jest wspierana w tej wersji systemu. Należy zmodyfikować konfigurację "
        "systemu z wykorzystaniem opcji /INST"));
}

// Nobody sits at a service, so a second one does not become a console by itself.
bool CKalvexApp::DecideRole() {
    m_instance = m_cmdLine.GetIntOption("INST").value_or(kFirstInstance);
    if (!m_consoleClient && !m_world.instances.SetPrimaryInstance(kProgram)) {
        const int automatic = m_world.profile.GetProfileIntEx(
            Section::General, Key::AutoClient, 1, m_world.profile.GetCommonProfilePath());
        m_consoleClient = automatic != 0 && !m_world.service;
    }
    if (m_consoleClient) m_log.BecomeConsoleClient();
    return true;
}

bool CKalvexApp::LockInstance() {
    std::string error;
    const char* name = m_consoleClient ? kClientLock : kProgram;
    if (m_world.instances.LockInstance(name, m_instance, error)) return true;
    if (error.empty()) return Fail({});
    return Fail(
        text::FormatText(m_world.translator.Translate("Nie można zablokować instancji (%s)"),
                         {text::FromUtf8(error)}));
}

// ---- profile, logs, libraries

bool CKalvexApp::ConfigureProfile() {
    m_profile = m_world.workingDir + '/' + ProfileFileName(m_instance);
    m_world.profile.SetProfileConfigEx(m_profile);
    return true;
}

bool CKalvexApp::NameLogFiles() {
    m_logBase = m_world.logFolder + '/' + WithInstance("%d", kProgram);
    if (m_consoleClient) m_logBase += kClientLogSuffix;
    m_diagnosticLog.SetLogFile(m_logBase + kDiagnosticSuffix, kLogBytes);
    return true;
}

bool CKalvexApp::StartLibraries() {
    for (AppLibrary* library : m_world.libraries) {
        std::string error;
        if (!library->Start(error)) return Fail(std::move(error));
        ++m_librariesStarted;
    }
    return true;
}

bool CKalvexApp::RequirePrimaryInstance() {
    if (m_consoleClient || m_world.instances.IsPrimaryInstance()) return true;
    return FailWithBox(m_world.translator.Translate(
        "Ten program może być uruchamiany wyłącznie w pierwszej instancji systemu Sorvane"));
}

// ---- settings

bool CKalvexApp::OpenProfile() {
    std::string error;
    if (!m_world.profile.IsReadable(error)) {
        const platform::Notice fault{
            platform::kUnreadableFile,
            {m_profile, platform::InWords({error.c_str()}, m_world.translator)}};
        return Fail(text::FromUtf8(platform::InWords(fault, m_world.translator)));
    }
    m_paths.emplace(m_world.workingDir, ReadRootFolder(m_world.profile, m_world.workingDir));
    m_store.emplace(m_world.profile, m_world.crypt, *m_paths, m_consoleClient);
    return true;
}

bool CKalvexApp::TakeNames() {
    m_configuration.configurationRight = m_configuration.controlRight = "100";
    m_closeLevel = kCloseLevel;
    m_store->ReadName(m_configuration);
    std::string& name = m_configuration.moduleName;
    if (name.empty()) name = WithInstance(" [%d]", kProgram);
    m_clientIdentity = name + '_' + text::FromUtf8(m_world.hostName);
    if (m_consoleClient) m_clientIdentity += kClientSuffix;
    return true;
}

bool CKalvexApp::LoadSettings() {
    m_store->ReadSources(m_configuration);
    m_store->ReadWindows(m_configuration);
    m_store->ReadColumns(m_configuration);
    m_store->ReadRights(m_configuration);
    m_store->ReadLogLevel(m_configuration);
    m_log.SetLevel(m_configuration.logLevel);
    return true;
}

bool CKalvexApp::OpenLogFile() {
    m_log.SetLogFile(m_logBase, m_consoleClient ? 0 : kLogBytes);
    m_logFault = FindLogFault();
    return true;
}

// ---- documents, frame, sources

platform::Questions& CKalvexApp::Questions() {
    if (m_world.window != nullptr) return *m_world.window;
    return m_noAnswers;
}

bool CKalvexApp::MakeDocuments() {
    m_services.reset(new engine::DocumentServices{
        {m_world.clock, m_log, m_world.translator, m_world.users, *m_paths, language::Functions()},
        language::Statements(),
        Questions()});
    m_services->consoleClient = m_consoleClient;
    m_services->processes = &m_world.processes;
    m_services->files = &m_world.files;
    m_services->probes = &m_world.probes;
    m_services->loop = &m_world.loop;
    m_services->toldFiles = &m_toldFiles;
    m_services->crypt = &m_world.crypt;
    m_services->counts = m_world.counts;
    m_services->lineWatch = m_world.lineWatch;
    m_documents = std::make_unique<ScriptDocuments>(*m_services);
    if (m_world.tickClock) m_documents->Ticker().SetBudget(m_world.tickClock, kTickBudget);
    m_documents->Ticker().SetLineWatch(m_world.lineWatch);
    m_documents->SetListener(m_world.window);
    return true;
}

bool CKalvexApp::CreateMainFrame() {
    m_frame = std::make_unique<CMainFrame>(
        m_world.loop, m_world.translator, *m_documents, m_world.window,
        FrameWork{[this] { RunAutoStart(); }, [this] { DoPeriodicWork(); }}, m_consoleClient);
    m_log.SetOutlets(this);
    if (m_frame->Create()) return true;
    return Fail(m_world.translator.Translate("Nie można uruchomić zegara"));
}

bool CKalvexApp::CreateClientInterface() {
    sources::SourceServices services{m_log, m_world.translator, m_world.users,
                                     m_world.transports.Factory()};
    services.descriptions = m_configuration.sources;
    services.crypt = &m_world.crypt;
    services.clientName = m_consoleClient ? m_clientIdentity : m_configuration.moduleName;
    m_clientInterface = std::make_unique<sources::CClientInterface>(std::move(services));
    m_services->sources = m_clientInterface.get();
    LogAppStart();
    return true;
}

bool CKalvexApp::TellRole() {
    if (!m_consoleClient) return true;
    m_log.Log(m_world.translator.Translate("Moduł uruchomiony w trybie zdalnej konsoli"),
              platform::LogAlways);
    if (m_world.canMirror) return true;
    return Fail(m_world.translator.Translate(
        "Ten program nie może pracować jako zdalna konsola innego modułu"));
}

bool CKalvexApp::StartConsole() {
    if (m_consoleClient) {
        m_clientConsole = std::make_unique<AppClientConsole>(AppClientConsole::Parts{
            m_world, m_log, *m_documents, *m_clientInterface, Questions(),
            m_configuration.moduleName, m_clientIdentity, [this] { UpdateTitle(); }});
        m_services->console = &m_clientConsole->Console();
        m_clientConsole->Open();
        return true;
    }
    m_console = std::make_unique<AppConsole>(AppConsole::Parts{
        m_world, m_log, *m_documents, m_configuration, m_clientIdentity, m_profile,
        m_logBase + kTrailSuffix, [this](int level) { SetLogLevel(level); }});
    m_services->console = &m_console->Link();
    m_console->Open();
    return true;
}

// ---- the scripts to start

bool CKalvexApp::ScheduleAutoStart() {
    const int delay = m_cmdLine.GetIntOption("D").value_or(0);
    if (delay < 1 || !m_frame->SetAutoStartTimer(delay)) RunAutoStart();
    return true;
}

bool CKalvexApp::CompleteFrame() {
    const unsigned int period = m_configuration.refreshPeriod;
    if (period != kUsualRefreshPeriod) m_frame->SetRefreshPeriod(period);
    UpdateTitle();
    m_log.PublishLevel();
    return true;
}

void CKalvexApp::RunAutoStart() {
    if (!LogIn()) return;
    if (!m_consoleClient) OpenAutoStartScripts();
    UpdateCloseEntry();
    if (m_world.window != nullptr) m_world.window->Show();
}

bool CKalvexApp::LogIn() {
    if (const std::optional<std::string> option = m_cmdLine.GetStringOption("U")) {
        const std::string text = text::FromUtf8(*option);
        const std::size_t colon = text.find(':');
        const bool split = colon != std::string::npos;
        const std::string name = split ? text::ToUpper(text.substr(0, colon)) : std::string();
        std::string password = split ? text::ToUpper(text.substr(colon + 1)) : std::string();
        const bool registered = m_world.users.RegisterUser(name, password);
        platform::CCrypt::SecureEmptyString(password);
        if (!registered) {
            OnLoginFailed(text::FormatText(
                m_world.translator.Translate("Nie można zalogować użytkownika %s"), {name}));
        }
        return registered;
    }
    if (!IsInteractiveMode() || m_cmdLine.HasOption("NOLOGIN")) return true;
    if (m_world.users.CheckRight(kLoginLevel) || m_world.window->Login()) return true;
    OnLoginFailed({});
    return false;
}

// The loop need not have begun, so the frame is closed by it.
void CKalvexApp::OnLoginFailed(std::string text) {
    Fail(std::move(text));
    m_world.loop.Post([this] { CloseFrame(); });
}

// The frames of scripts that start by themselves are minimised, with a window and without one.
void CKalvexApp::OpenAutoStartScripts() {
    m_frame->SetOpeningScripts(true);
    if (!platform::HasEngineForm(m_world.workingDir)) {
        m_log.Log(text::FormatText(
                      m_world.translator.Translate("Nazwa folderu %s ma znaki spoza Windows-1250, "
                                                   "więc jego pliki nie otworzą się"),
                      {text::FromUtf8(m_world.workingDir)}),
                  platform::LogErrors);
    }
    for (const std::string& path : m_configuration.autostart) {
        std::string error;
        engine::CKalvexDoc* document = m_documents->Open(path, error);
        if (document == nullptr) {
            m_log.Log(path + " : " + text::FromUtf8(error), platform::LogErrors);
            continue;
        }
        m_console->OnOpened(*document, false);
        document->Start();
        document->SetMinimised(true);
        if (m_world.window != nullptr) m_world.window->MinimiseFrame(*document);
    }
    m_frame->SetOpeningScripts(false);
    if (m_world.service && m_documents->All().empty()) {
        m_log.Log(text::FormatText(m_world.translator.Translate(
                                       "Nie uruchomiono żadnego skryptu (plik %s, sekcja [%s])"),
                                   {text::FromUtf8(m_profile), Section::Autostart}),
                  platform::LogErrors);
    }
}

}  // namespace kalvex::app
