#include "app/AppConsole.h"

#include <algorithm>
#include <utility>

#include "audit/AuditFiles.h"
#include "text/CodePage.h"
#include "text/TextFormat.h"
#include "vantrel/ClientName.h"

namespace kalvex::app {

namespace {

constexpr std::size_t kTrailBytes = 10'000'000;

constexpr const char* kNoTrail = platform::Translatable("Nie można zapisać pliku zmian %s (%s)");
constexpr const char* kNoControl = platform::Translatable("brak uprawnień do sterowania skryptami");
constexpr const char* kNotCreated =
    platform::Translatable("RCSrv: Błąd utworzenia połączeń dla klientów (%s)");

}  // namespace

AppConsole::AppConsole(Parts parts)
    : HostedScripts(parts.documents),
      m_parts(std::move(parts)),
      m_trail(m_parts.world.clock, m_parts.world.translator, m_parts.log),
      m_console(*this) {
    const AppWorld& world = m_parts.world;
    m_trail.SetFile(m_parts.trail, kTrailBytes);
    m_console.SetTrail(&m_trail);
    if (world.userStore == nullptr) return;
    m_faults = ReadConsole(world.profile, m_parts.profile, world.translator, m_configuration);
    m_server = std::make_unique<console::CKalvexServerConnectionManager>(console::ConsoleServices{
        .clock = world.clock,
        .log = m_parts.log,
        .translator = world.translator,
        .loop = world.loop,
        .users = *world.userStore,
        .console = m_console,
        .host = *this,
        .lastMessages =
            [this](std::size_t count) {
                std::vector<vantrel::LogMessage> lines;
                for (LogMessage& line : m_parts.log.GetLastMessages(count)) {
                    lines.push_back({line.level, line.time, std::move(line.text)});
                }
                return lines;
            },
        .controlRight = [this] { return m_parts.configuration.controlRight; },
        .mostClients = static_cast<std::size_t>(m_configuration.clients)});
    m_parts.log.SetClients(this);
}

AppConsole::~AppConsole() {
    if (m_listens) m_parts.world.consoleDoor->Close();
    m_parts.log.SetClients(nullptr);
}

void AppConsole::Open() {
    AppConsoleDoor* door = m_parts.world.consoleDoor;
    if (door == nullptr || !m_server) return;
    std::string fault;
    if (!m_trail.CanOpen(fault)) {
        m_parts.log.Log(text::FormatText(m_parts.world.translator.Translate(kNoTrail),
                                         {text::FromUtf8(audit::AuditFile(m_trail.GetName(), 0)),
                                          text::FromUtf8(fault)}),
                        platform::LogErrors);
    }
    std::vector<std::string> faults = m_faults;
    if (faults.empty()) {
        m_listens = door->Open(*m_server, *this, m_configuration, m_parts.configuration.moduleName,
                               faults.emplace_back());
        if (m_listens) return;
    }
    for (const std::string& fault : faults) {
        m_parts.log.Log(text::FormatText(m_parts.world.translator.Translate(kNotCreated), {fault}),
                        platform::LogErrors);
    }
}

void AppConsole::Check() {
    if (!m_listens) return;
    m_server->Check();
    m_parts.world.consoleDoor->Check();
}

// ---- supervision

void AppConsole::Admit(vantrel::LoginRequest login, const std::string& address,
                       std::weak_ptr<const void> asker,
                       std::function<void(const Admission&)> done) {
    console::ConsoleWriter client{vantrel::Printable(login.user), address,
                                  vantrel::Printable(login.clientName)};
    m_server->Logins().Check(
        std::move(login), address, std::move(asker),
        [this, client, done = std::move(done)](const vantrel::LoginVerdict& verdict) mutable {
            const bool accepted = verdict.code == vantrel::LoginOk;
            if (accepted) client.user = verdict.user.name;
            m_server->LogLogin(client, verdict);
            if (!accepted) return done({Admission::LoginRefused, verdict.text});
            if (m_server->MayControl(client)) return done({Admission::Admitted});
            done({Admission::NoRight, m_parts.world.translator.Translate(kNoControl)});
        });
}

ModuleStatus AppConsole::GetStatus() {
    ModuleStatus status{
        m_parts.configuration.moduleName, m_parts.identity, m_parts.configuration.logLevel, {}};
    for (engine::CKalvexDoc* document : Scripts()) {
        ScriptStatus script{.path = document->GetDocKey(),
                            .stateWord = document->GetStateWord(),
                            .line = {},
                            .report = document->State().report,
                            .standing = engine::GetStanding(*document),
                            .sessionGiven = !document->State().m_bControlAllowed};
        if ((script.stateWord & ~engine::StateMinimised) != 0) {
            script.line = document->State().m_nCurrentLine;
        }
        status.scripts.push_back(std::move(script));
    }
    return status;
}

std::optional<std::vector<int>> AppConsole::GetBreakpoints(std::string_view script) {
    const engine::CKalvexDoc* document = FindScript(script);
    if (document == nullptr) return {};
    std::vector<int> lines = ModelOf(*document).Markers().LinesOf(workbench::MarkerBreakpoint);
    std::ranges::sort(lines);
    return lines;
}

std::optional<engine::ScriptStanding> AppConsole::GetStanding(std::string_view script) {
    engine::CKalvexDoc* document = FindScript(script);
    if (document == nullptr) return {};
    return engine::GetStanding(*document);
}

std::vector<std::string> AppConsole::GetAuditFiles() {
    return audit::AuditFiles(m_trail.GetName());
}

void AppConsole::AddLogMessage(std::string_view text, std::int64_t time, int level) {
    m_server->AddLogMessage(text, time, level);
}

}  // namespace kalvex::app
