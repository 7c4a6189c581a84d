// A whole run: the world of the scripts, their ticks, and how it ended. Main thread.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "app/Pace.h"
#include "engine/DocumentServices.h"
#include "engine/Tick.h"
#include "platform/Clock.h"
#include "platform/GettextTranslator.h"
#include "platform/MainLoop.h"
#include "platform/Paths.h"
#include "platform/Questions.h"
#include "platform/posix/FileStore.h"
#include "platform/posix/NetworkProbes.h"
#include "platform/posix/Processes.h"
#include "programs/ExitStatus.h"
#include "programs/kalvex-run/Actions.h"
#include "programs/kalvex-run/Options.h"
#include "programs/kalvex-run/RunLog.h"
#include "programs/kalvex-run/RunProfile.h"
#include "programs/kalvex-run/RunScript.h"
#include "programs/kalvex-run/RunSources.h"
#include "programs/kalvex-run/RunUsers.h"

namespace kalvex::run {

class Runner {
  public:
    explicit Runner(const RunOptions& options);

    // Opens everything that the options name; false with the reason in `fault`.
    bool Open(std::string& fault);

    // Starts the scripts and ticks until they are at rest, or the time to end or the limit comes.
    void Run();

    programs::ExitStatus GetExitStatus() const;
    std::int64_t GetTicks() const { return m_ticks; }
    const platform::Clock& GetClock() const { return *m_clock; }
    const RunLog& Log() const { return m_log; }
    const RunSources& Sources() const { return *m_sources; }
    const std::vector<std::unique_ptr<RunScript>>& Scripts() const { return m_scripts; }

  private:
    std::string UntilFault() const;
    bool IsTimeUp() const;
    bool IsDone() const;
    bool WaitForTick();
    void RunTick();
    // What cannot be carried out is told on standard error.
    void Perform(const Action& action);

    RunOptions m_options;
    std::string m_workingDir;
    platform::GettextTranslator m_translator;
    RunProfile m_profile;
    std::unique_ptr<platform::Clock> m_clock;
    platform::VirtualClock* m_virtualClock = nullptr;  // the same clock, when it is a virtual one
    RunLog m_log;
    RunUsers m_users;
    platform::Paths m_paths;
    platform::NoAnswers m_questions;
    platform::PosixProcesses m_processes;
    platform::PosixFileStore m_files;
    platform::PosixNetworkProbes m_probes;
    platform::PostedWork m_inbox;
    std::unique_ptr<RunSources> m_sources;
    platform::ToldFiles m_toldFiles;
    engine::DocumentServices m_services;
    std::vector<std::unique_ptr<RunScript>> m_scripts;
    engine::TickRunner m_ticker;
    std::vector<Action> m_actions;
    std::size_t m_nextAction = 0;
    std::int64_t m_ticks = 0;
    bool m_limitReached = false;
    bool m_actionFailed = false;
    app::Pace m_pace;
    std::chrono::steady_clock::time_point m_begin;
};

}  // namespace kalvex::run
