#include "programs/kalvex-run/Runner.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <thread>

#include "language/Functions.h"
#include "language/Statements.h"
#include "platform/posix/SystemClock.h"
#include "programs/kalvex-run/Interruption.h"
#include "text/CodePage.h"
#include "value/LocalTimeText.h"

namespace kalvex::run {

namespace {

std::string WorkingDirectory() {
    std::error_code fault;
    return std::filesystem::current_path(fault).string();
}

}  // namespace

Runner::Runner(const RunOptions& options)
    : m_options(options),
      m_workingDir(WorkingDirectory()),
      m_profile(ReadRunProfile(options, m_workingDir, m_translator)),
      m_clock(options.clock
                  ? std::unique_ptr<platform::Clock>(new platform::VirtualClock(*options.clock))
                  : std::make_unique<platform::SystemClock>()),
      m_virtualClock(options.clock ? static_cast<platform::VirtualClock*>(m_clock.get()) : nullptr),
      m_log(*m_clock, m_profile.logLevel, options.json ? nullptr : stdout),
      m_users(options),
      m_paths(m_workingDir, m_profile.rootFolder),
      m_services{{*m_clock, m_log, m_translator, m_users, m_paths, language::Functions()},
                 language::Statements(),
                 m_questions} {
    m_services.processes = &m_processes;
    m_services.files = &m_files;
    m_services.probes = &m_probes;
    m_services.loop = &m_inbox;
    m_services.toldFiles = &m_toldFiles;
    m_services.crypt = m_profile.crypt.get();
}

bool Runner::Open(std::string& fault) {
    fault = m_profile.fault.empty() ? UntilFault() : m_profile.fault;
    if (!fault.empty()) return false;
    for (const std::string& warning : m_profile.warnings) m_log.Log(warning, platform::LogErrors);
    m_sources = MakeRunSources(m_options, m_profile, *m_clock, m_log, m_translator, m_users, fault);
    if (!m_sources) return false;
    m_services.sources = &m_sources->ForScripts();
    for (const std::string& path : m_options.scripts) {
        const std::filesystem::path full = std::filesystem::path(m_workingDir) / path;
        if (!platform::HasEngineForm(full.lexically_normal().string())) {
            fault = path + ": its full path has characters outside Windows-1250";
            return false;
        }
        RunScript& script = *m_scripts.emplace_back(std::make_unique<RunScript>(m_services));
        if (!script.Document().Open(text::FromUtf8(path), fault)) {
            fault = path + ": " + fault;
            return false;
        }
        script.Document().SetMinimised(m_options.minimised);
        m_ticker.Add(script.Document());
    }
    return !m_options.actions ||
           ReadActions(*m_options.actions, m_scripts.size(), m_actions, fault);
}

void Runner::Run() {
    for (const std::unique_ptr<RunScript>& script : m_scripts) script->Start();
    m_begin = std::chrono::steady_clock::now();
    while (!IsDone() && !IsTimeUp()) {
        m_limitReached = IsInterrupted() || (m_options.ticks && m_ticks >= *m_options.ticks);
        if (m_limitReached) return;
        if (m_virtualClock != nullptr || WaitForTick()) RunTick();
    }
}

std::string Runner::UntilFault() const {
    if (!IsTimeUp()) return {};
    return fmt::format("--until: \"{}\" is past at the start, \"{}\"",
                       value::FormatLocalTime(*m_options.until),
                       value::FormatLocalTime(m_clock->Now()));
}

bool Runner::IsTimeUp() const {
    return m_options.until && m_clock->Now() >= *m_options.until;
}

bool Runner::IsDone() const {
    return m_nextAction == m_actions.size() &&
           std::ranges::all_of(m_scripts, [](const auto& script) { return script->IsAtRest(); });
}

// Comes back without a tick after each sleep, so that a signal is seen between two of them.
bool Runner::WaitForTick() {
    using std::chrono::milliseconds;
    const auto elapsed = std::chrono::steady_clock::now() - m_begin;
    if (m_pace.TakeTick(std::chrono::duration_cast<milliseconds>(elapsed).count())) return true;
    std::this_thread::sleep_until(m_begin + milliseconds(m_pace.NextDue()));
    return false;
}

void Runner::RunTick() {
    ++m_ticks;
    m_inbox.Run();
    m_sources->BeginTick(m_ticks);
    while (m_nextAction < m_actions.size() && m_actions[m_nextAction].atTick <= m_ticks) {
        Perform(m_actions[m_nextAction++]);
    }
    m_ticker.RunTick();
    if (m_virtualClock != nullptr) m_virtualClock->Advance(m_options.tickMs);
}

void Runner::Perform(const Action& action) {
    const std::string fault = action.row->perform(*m_scripts[action.script], action);
    if (fault.empty()) return;
    m_actionFailed = true;
    fmt::print(stderr, "kalvex-run: tick {}: {}\n", action.atTick, fault);
}

programs::ExitStatus Runner::GetExitStatus() const {
    const auto any = [this](bool (RunScript::*test)() const) {
        return std::ranges::any_of(m_scripts,
                                   [test](const auto& script) { return (*script.*test)(); });
    };
    if (m_actionFailed || any(&RunScript::IsRefused)) return programs::ExitRefused;
    if (any(&RunScript::IsFailed)) return programs::ExitFailed;
    return m_limitReached ? programs::ExitLimit : programs::ExitDone;
}

}  // namespace kalvex::run
