// A module as a service: the real world, and the application in it. Main thread.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "app/Health.h"
#include "app/KalvexApp.h"
#include "app/LogStream.h"
#include "platform/GettextTranslator.h"
#include "platform/HttpEndpoint.h"
#include "platform/IniProfile.h"
#include "platform/LifeSigns.h"
#include "platform/LineWriter.h"
#include "platform/ProcessMemory.h"
#include "platform/ServiceManager.h"
#include "platform/SteadyTime.h"
#include "platform/UserSession.h"
#include "platform/posix/FileStore.h"
#include "platform/posix/NetworkProbes.h"
#include "platform/posix/Processes.h"
#include "platform/posix/SystemClock.h"
#include "programs/ModuleLibraries.h"
#include "programs/kalvexd/Options.h"
#include "programs/kalvexd/ServiceLoop.h"

namespace kalvex::kalvexd {

class KalvexService {
  public:
    // Made before any other thread; the working directory of the process is that of the options.
    explicit KalvexService(const KalvexdOptions& options);

    // From the start to the end of the module; the exit status. What there is to say about the end
    // has been said then.
    int Run();

  private:
    app::AppWorld MakeWorld(const KalvexdOptions& options);
    void WatchSignals();
    // False, with the reason in `fault`, when the figures cannot be offered where they should.
    bool OfferFigures(std::string& fault);
    void ReportToManager();
    // Signs of life beside the main thread, one in so many milliseconds, until `m_signs` is reset.
    void KeepAlive(std::int64_t period);
    app::HealthFigures GetFigures();
    void LogHealth();
    // On standard error, each once, when the file of the log cannot be written.
    void TellLogFault();
    void Tell(const std::string& text);  // an engine text, on standard error
    int End(int status, const std::string& text);

    const std::string m_metrics;  // the address of the endpoint; empty: none
    platform::ServiceManager m_manager;
    platform::MemoryReturn m_memory;

    platform::SystemClock m_clock;
    platform::GettextTranslator m_translator;
    ServiceLoop m_loop;
    platform::IniProfile m_profile;
    platform::CCrypt m_crypt;
    platform::FileInstances m_instances;
    platform::PosixProcesses m_processes;
    platform::PosixFileStore m_files;
    platform::PosixNetworkProbes m_probes;
    programs::UserLibrary m_userLibrary;
    programs::NetworkLibrary m_network;
    programs::ConsoleDoor m_consoleDoor;
    platform::UserSession m_users;
    std::optional<app::LogStream> m_stream;
    std::optional<platform::LineWriter> m_errors;
    app::Health m_health{platform::SteadyMicroseconds()};
    engine::LineWatch m_lineWatch;
    app::CKalvexApp m_app;
    std::unique_ptr<platform::HttpEndpoint> m_endpoint;
    std::string m_status;    // that the manager has heard last
    std::string m_logFault;  // that has been told last
    std::optional<platform::LifeSigns> m_signs;
};

}  // namespace kalvex::kalvexd
