#include "programs/kalvex-run/Runner.h"

#include <algorithm>
#include <filesystem>
#include <thread>

#include "language/Functions.h"
#include "language/Statements.h"
#include "platform/posix/SystemClock.h"
#include "programs/kalvex-run/Interruption.h"
#include "text/CodePage.h"

namespace kalvex::run {

namespace {

std::string WorkingDirectory() {
    std::error_code fault;
    return std::filesystem::current_path(fault).string();
}

}  // namespace

CRunner::CRunner(const RunOptions& options)
    : m_options(options),
      m_strWorkingDir(WorkingDirectory()),
      m_profile(ReadRunProfile(options, m_strWorkingDir)),
      m_pClock(options.clock
                   ? std::unique_ptr<platform::Clock>(new platform::VirtualClock(*options.clock))
                   : std::make_unique<platform::SystemClock>()),
      m_pVirtualClock(options.clock ? static_cast<platform::VirtualClock*>(m_pClock.get())
                                    : nullptr),
      m_log(*m_pClock, m_profile.logLevel, options.json ? nullptr : stdout),
      m_users(options),
      m_paths(m_strWorkingDir, m_profile.rootFolder),
      m_services{{*m_pClock, m_log, m_translator, m_users, m_paths, language::Functions()},
                 language::Statements(),
                 m_questions} {
    m_services.processes = &m_processes;
    m_services.files = &m_files;
    m_services.probes = &m_probes;
    m_services.crypt = m_profile.crypt.get();
}

bool CRunner::Open(std::string& fault) {
    fault = m_profile.fault;
    if (!fault.empty()) return false;
    m_pSources =
        MakeRunSources(m_options, m_profile, *m_pClock, m_log, m_translator, m_users, fault);
    if (!m_pSources) return false;
    m_services.sources = &m_pSources->ForScripts();
    for (const std::string& path : m_options.scripts) {
        CRunScript& script = *m_arrScripts.emplace_back(std::make_unique<CRunScript>(m_services));
        if (!script.Document().Open(text::FromUtf8(path), fault)) {
            fault = path + ": " + fault;
            return false;
        }
        script.Document().SetMinimised(m_options.minimised);
        m_ticker.Add(script.Document());
    }
    return !m_options.actions ||
           ReadActions(*m_options.actions, m_arrScripts.size(), m_arrActions, fault);
}

void CRunner::Run() {
    for (const std::unique_ptr<CRunScript>& script : m_arrScripts) script->Start();
    m_tBegin = std::chrono::steady_clock::now();
    while (!IsDone()) {
        m_bLimitReached = IsInterrupted() || (m_options.ticks && m_nTicks >= *m_options.ticks);
        if (m_bLimitReached) return;
        if (m_pVirtualClock != nullptr || WaitForTick()) RunTick();
    }
}

bool CRunner::IsDone() const {
    return m_nNextAction == m_arrActions.size() &&
           std::ranges::all_of(m_arrScripts, [](const auto& script) { return script->IsAtRest(); });
}

// Comes back without a tick after each sleep, so that a signal is seen between two of them.
bool CRunner::WaitForTick() {
    using std::chrono::milliseconds;
    const auto elapsed = std::chrono::steady_clock::now() - m_tBegin;
    if (m_pace.TakeTick(std::chrono::duration_cast<milliseconds>(elapsed).count())) return true;
    std::this_thread::sleep_until(m_tBegin + milliseconds(m_pace.NextDue()));
    return false;
}

void CRunner::RunTick() {
    ++m_nTicks;
    m_pSources->BeginTick(m_nTicks);
    while (m_nNextAction < m_arrActions.size() && m_arrActions[m_nNextAction].atTick <= m_nTicks) {
        const Action& action = m_arrActions[m_nNextAction++];
        action.row->perform(*m_arrScripts[action.script], action);
    }
    for (const std::unique_ptr<CRunScript>& script : m_arrScripts) script->BeforeTick();
    m_ticker.RunTick();
    for (const std::unique_ptr<CRunScript>& script : m_arrScripts) script->AfterTick();
    if (m_pVirtualClock != nullptr) m_pVirtualClock->Advance(m_options.tickMs);
}

programs::ExitStatus CRunner::GetExitStatus() const {
    const auto any = [this](bool (CRunScript::*test)() const) {
        return std::ranges::any_of(m_arrScripts,
                                   [test](const auto& script) { return (*script.*test)(); });
    };
    if (any(&CRunScript::IsRefused)) return programs::ExitRefused;
    if (any(&CRunScript::IsFailed)) return programs::ExitFailed;
    return m_bLimitReached ? programs::ExitLimit : programs::ExitDone;
}

}  // namespace kalvex::run
