#include "app/AppClientConsole.h"

#include <utility>

namespace kalvex::app {

namespace {

constexpr int kConnectionTimer = 5;
constexpr std::int64_t kConnectionPeriod = 1000;  // milliseconds

}  // namespace

AppClientConsole::AppClientConsole(Parts parts)
    : HostedScripts(parts.documents),
      m_parts(std::move(parts)),
      m_console({m_parts.log, m_parts.world.translator, m_parts.questions, m_parts.world.loop,
                 m_parts.sources, *this, m_parts.module}) {}

AppClientConsole::~AppClientConsole() {
    m_parts.world.loop.KillTimer(kConnectionTimer);
}

void AppClientConsole::Open() {
    m_parts.world.loop.SetTimer(kConnectionTimer, kConnectionPeriod,
                                [this] { m_parts.sources.SourceList().CheckConnections(); });
    m_console.Open();
}

void AppClientConsole::MinimiseFrame(engine::CKalvexDoc& document) {
    if (m_parts.world.window != nullptr) m_parts.world.window->MinimiseFrame(document);
}

void AppClientConsole::ShowVariables(engine::CKalvexDoc& document, int) {
    if (m_parts.world.window != nullptr) m_parts.world.window->RefreshVariables(document);
}

void AppClientConsole::ShowMessage(std::string_view text) {
    if (m_parts.world.window != nullptr) m_parts.world.window->ShowMessage(text);
}

void AppClientConsole::LogFromModule(std::string_view text, std::int64_t time, int level) {
    m_parts.log.LogFromModule(text, time, level);
}

}  // namespace kalvex::app
