#include "app/AppConsole.h"

#include <utility>

#include "text/TextFormat.h"

namespace kalvex::app {

namespace {

constexpr const char* kNotCreated =
    platform::Translatable("RCSrv: Błąd utworzenia połączeń dla klientów (%s)");

}  // namespace

AppConsole::AppConsole(Parts parts) : m_parts(std::move(parts)), m_console(*this) {
    const AppWorld& world = m_parts.world;
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
    std::vector<std::string> faults = m_faults;
    if (faults.empty()) {
        m_listens = door->Open(*m_server, m_configuration, m_parts.configuration.moduleName,
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

engine::CKalvexDoc* AppConsole::FindScript(std::string_view path) {
    return m_parts.documents.Find(path);
}

engine::CKalvexDoc* AppConsole::OpenScript(std::string_view path) {
    std::string error;
    return m_parts.documents.Open(path, error);
}

void AppConsole::CloseScript(engine::CKalvexDoc& document) {
    m_parts.documents.Close(document);
}

std::vector<engine::CKalvexDoc*> AppConsole::Scripts() {
    std::vector<engine::CKalvexDoc*> scripts;
    for (const auto& document : m_parts.documents.All()) scripts.push_back(document.get());
    return scripts;
}

workbench::ScriptMarkers& AppConsole::MarkersOf(const engine::CKalvexDoc& document) {
    return m_parts.documents.ModelOf(document).Markers();
}

void AppConsole::AddLogMessage(std::string_view text, std::int64_t time, int level) {
    m_server->AddLogMessage(text, time, level);
}

}  // namespace kalvex::app
