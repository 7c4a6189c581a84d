#include "programs/kalvex/Desk.h"

#include <pthread.h>

#include <csignal>
#include <cstdio>

#include "app/HealthText.h"
#include "platform/SteadyTime.h"
#include "platform/posix/AccountName.h"
#include "platform/posix/HostName.h"
#include "text/CodePage.h"
#include "vantrel/network/Endpoint.h"
#include "workbench/qt/Toolkit.h"

namespace kalvex::desk {

namespace {

constexpr int kEndingSignals[] = {SIGTERM, SIGINT};
constexpr int kOtherSignals[] = {SIGHUP, SIGUSR1};

}  // namespace

void HoldSignals() {
    sigset_t held;
    sigemptyset(&held);
    for (const int signal : kEndingSignals) sigaddset(&held, signal);
    for (const int signal : kOtherSignals) sigaddset(&held, signal);
    pthread_sigmask(SIG_BLOCK, &held, nullptr);
}

KalvexDesk::KalvexDesk(const programs::ModuleOptions& options)
    : m_loop(platform::SteadyMicroseconds),
      m_crypt(options.workingDir + '/' + app::kKeyFileName, platform::KeyFile::MadeAtFirstUse),
      m_instances(vantrel::RuntimeFolder()),
      m_userLibrary(m_profile, m_translator),
      m_network(m_profile, m_loop, m_translator),
      m_consoleDoor(m_loop, m_translator),
      m_users(m_userLibrary.Store(), platform::AccountName()),
      m_health(platform::SteadyMicroseconds()),
      m_window({m_loop, m_clock, m_translator, m_users, m_userLibrary.Store(), m_crypt}),
      m_app(MakeWorld(options)) {
    window::PrepareToolkit(m_translator);
    m_window.SetApp(m_app);
    m_network.SetLog(m_app.Log());
    m_consoleDoor.SetLog(m_app.Log());
    m_loop.Ticks().SetListener(
        [this](std::int64_t now, std::int64_t lateness) { m_health.OnTick(now, lateness); });
}

app::AppWorld KalvexDesk::MakeWorld(const programs::ModuleOptions& options) {
    app::AppWorld world{m_clock, m_translator, m_loop,      m_profile,
                        m_crypt, m_users,      m_instances, m_processes,
                        m_files, m_probes,     m_network,   {&m_userLibrary, &m_network}};
    world.userStore = &m_userLibrary.Store();
    world.consoleDoor = &m_consoleDoor;
    world.window = &m_window;
    world.canMirror = true;
    world.counts = &m_health.Counts();
    world.tickClock = platform::SteadyMicroseconds;
    world.arguments = options.arguments;
    world.workingDir = options.workingDir;
    world.logFolder = options.logDir;
    world.hostName = platform::HostName();
    return world;
}

void KalvexDesk::WatchSignals() {
    for (const int ending : kEndingSignals) {
        m_loop.OnSignal(ending, [this] {
            m_app.OnEndSession(true);
            m_loop.Quit();
        });
    }
    m_loop.OnSignal(SIGHUP, [this] { m_app.ReopenLogFiles(); });
    m_loop.OnSignal(SIGUSR1, [this] { LogHealth(); });
}

void KalvexDesk::LogHealth() {
    const sources::CClientInterface* sources = m_app.ClientInterface();
    const app::HealthFigures figures =
        m_health.GetFigures(platform::SteadyMicroseconds(), m_app.Documents().Ticker(),
                            sources == nullptr ? nullptr : &sources->SourceList(), m_app.Log());
    app::LogHealth(m_app.Log(), figures, m_app.Documents().Ticker(), m_translator);
}

int KalvexDesk::Run() {
    WatchSignals();
    const std::string trust =
        m_userLibrary.GetFile().empty() ? m_users.TrustAccount(m_translator) : std::string();
    if (m_app.InitInstance()) {
        if (!trust.empty()) m_app.Log().Log(trust, platform::LogAlways);
        m_loop.Run();
    }
    const int status = m_app.ExitInstance();
    if (status != 0 && !m_app.GetEnd().text.empty()) {
        std::fprintf(stderr, "kalvex: %s\n", text::ToUtf8(m_app.GetEnd().text).c_str());
    }
    return status;
}

}  // namespace kalvex::desk
