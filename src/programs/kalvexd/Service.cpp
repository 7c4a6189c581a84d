#include "programs/kalvexd/Service.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>

#include "app/Configuration.h"
#include "app/HealthText.h"
#include "platform/FigureText.h"
#include "platform/LogGap.h"
#include "platform/posix/AccountName.h"
#include "platform/posix/HostName.h"
#include "text/CodePage.h"
#include "text/TextFormat.h"
#include "vantrel/network/Endpoint.h"

namespace kalvex::kalvexd {

namespace {

const std::string kName = "kalvexd: ";
constexpr std::int64_t kStatusPeriod = 5000;  // milliseconds
// Three signs in the time that each of them gains.
constexpr std::int64_t kSignPeriod = 10000;  // milliseconds
// A start or an end that takes longer hangs.
constexpr std::int64_t kLongestBusy = 15 * 60 * 1000;  // milliseconds
constexpr int kEndingSignals[] = {SIGTERM, SIGINT};

bool IsAskedToEnd() {
    return std::ranges::any_of(kEndingSignals, platform::SignalQueue::IsPending);
}

}  // namespace

KalvexService::KalvexService(const KalvexdOptions& options)
    : m_metrics(options.metrics),
      m_crypt(options.workingDir + '/' + app::kKeyFileName, platform::KeyFile::MadeAtFirstUse),
      m_instances(vantrel::RuntimeFolder()),
      m_userLibrary(m_profile, m_translator),
      m_network(m_profile, m_loop, m_translator),
      m_consoleDoor(m_loop, m_translator),
      m_users(m_userLibrary.Store(), platform::AccountName()),
      m_app(MakeWorld(options)) {
    m_network.SetLog(m_app.Log());
    m_consoleDoor.SetLog(m_app.Log());
    if (options.logStdout) {
        m_stream.emplace(STDOUT_FILENO, app::FormOf(STDOUT_FILENO), m_clock, m_translator);
        m_app.Log().SetListener(&*m_stream);
    }
    m_processes.OnWait([this] { m_manager.TellAlive(); }, [] { return IsAskedToEnd(); });
    m_loop.Ticks().SetListener(
        [this](std::int64_t now, std::int64_t lateness) { m_health.OnTick(now, lateness); });
}

app::AppWorld KalvexService::MakeWorld(const KalvexdOptions& options) {
    app::AppWorld world{m_clock, m_translator, m_loop,      m_profile,
                        m_crypt, m_users,      m_instances, m_processes,
                        m_files, m_probes,     m_network,   {&m_userLibrary, &m_network}};
    world.service = true;
    world.userStore = &m_userLibrary.Store();
    world.consoleDoor = &m_consoleDoor;
    world.counts = &m_health.Counts();
    world.lineWatch = &m_lineWatch;
    world.tickClock = platform::SteadyMicroseconds;
    world.arguments = options.arguments;
    world.workingDir = options.workingDir;
    world.logFolder = options.logDir;
    world.hostName = platform::HostName();
    return world;
}

void KalvexService::WatchSignals() {
    for (const int ending : kEndingSignals) {
        m_loop.OnSignal(ending, [this] {
            m_manager.TellStopping();
            KeepAlive(std::min(m_manager.GetWatchdogPeriod().value_or(kSignPeriod), kSignPeriod));
            m_app.OnCloseMainWindow();
        });
    }
    m_loop.OnSignal(SIGHUP, [this] {
        m_app.ReopenLogFiles();
        TellLogFault();
    });
    m_loop.OnSignal(SIGUSR1, [this] { LogHealth(); });
}

app::HealthFigures KalvexService::GetFigures() {
    const sources::CClientInterface* sources = m_app.ClientInterface();
    return m_health.GetFigures(platform::SteadyMicroseconds(), m_app.Documents().Ticker(),
                               sources == nullptr ? nullptr : &sources->SourceList(), m_app.Log());
}

void KalvexService::LogHealth() {
    app::LogHealth(m_app.Log(), GetFigures(), m_app.Documents().Ticker(), m_translator);
}

void KalvexService::TellLogFault() {
    const std::string& fault = m_app.GetLogFault();
    if (fault == m_logFault) return;
    m_logFault = fault;
    if (!fault.empty()) Tell(fault);
}

// The module goes on, whether anybody reads this or not.
void KalvexService::Tell(const std::string& text) {
    if (!m_errors) {
        m_errors.emplace(STDERR_FILENO, [this](std::uint64_t lost) {
            return kName + text::ToUtf8(platform::GapText(lost, m_translator));
        });
    }
    m_errors->Write(kName + text::ToUtf8(text));
}

bool KalvexService::OfferFigures(std::string& fault) {
    if (m_metrics.empty()) return true;
    std::string reason;
    m_endpoint = platform::LoadHttpEndpoint(
        m_loop,
        platform::HttpText{"/metrics", platform::kFigureContentType,
                           [this] { return app::FormatHealthMetrics(GetFigures()); }},
        reason);
    if (m_endpoint && m_endpoint->Start(m_metrics, reason)) {
        m_app.Log().Log(text::FormatText(m_translator.Translate("Udostępnianie stanu modułu: %s"),
                                         {text::FromUtf8(m_endpoint->GetAddress())}),
                        platform::LogAlways);
        return true;
    }
    fault = text::FormatText(m_translator.Translate("Nie można udostępnić stanu modułu: %s (%s)"),
                             {text::FromUtf8(m_metrics), m_translator.Translate(reason.c_str())});
    return false;
}

void KalvexService::KeepAlive(std::int64_t period) {
    m_signs.emplace(std::chrono::milliseconds(period), static_cast<int>(kLongestBusy / period),
                    [this] { m_manager.TellStillBusy(); });
}

// The timers go by the main loop: when it hangs the manager does not hear that it is alive.
void KalvexService::ReportToManager() {
    const auto tellStatus = [this] {
        TellLogFault();
        const std::string status =
            text::ToUtf8(app::FormatHealthStatus(GetFigures(), m_translator));
        if (status == m_status) return;
        m_status = status;
        m_manager.TellStatus(status);
    };
    m_manager.TellReady();
    tellStatus();
    m_loop.SetTimer(StatusTimer, kStatusPeriod, tellStatus);
    m_loop.SetTimer(MemoryTimer, platform::kMemoryReturnPeriod, [this] { m_memory.Step(); });
    if (const std::optional<std::int64_t> period = m_manager.GetWatchdogPeriod()) {
        m_loop.SetTimer(WatchdogTimer, *period, [this] { m_manager.TellAlive(); });
    }
}

int KalvexService::End(int status, const std::string& text) {
    if (text.empty()) return status;
    if (status == EXIT_SUCCESS) {
        std::fputs(text::ToUtf8(text).c_str(), stdout);
    } else {
        Tell(text);
    }
    return status;
}

int KalvexService::Run() {
    WatchSignals();
    KeepAlive(kSignPeriod);
    std::string fault;
    const bool started = m_app.InitInstance();
    TellLogFault();
    if (started) {
        if (OfferFigures(fault)) {
            m_signs.reset();
            ReportToManager();
            m_loop.Run();
        } else {
            m_app.Log().Log(fault, platform::LogErrors);
            m_app.CloseInstance(1);
        }
    }
    m_endpoint.reset();
    const int status = m_app.ExitInstance();
    return fault.empty() ? End(status, m_app.GetEnd().text) : End(EXIT_FAILURE, fault);
}

}  // namespace kalvex::kalvexd
