// The remote console of a module in its application: its server, and what the server needs of the
// scripts, the log and the settings. Main thread.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "app/AppWorld.h"
#include "app/Configuration.h"
#include "app/HostedScripts.h"
#include "app/KalvexLog.h"
#include "app/ScriptDocuments.h"
#include "app/Supervision.h"
#include "audit/AuditTrail.h"
#include "console/ModuleConsole.h"
#include "console/ServerConnectionManager.h"

namespace kalvex::app {

class AppConsole final : public Supervised,
                         private HostedScripts<console::ConsoleHost>,
                         private LogClients {
  public:
    struct Parts {
        const AppWorld& world;
        CKalvexLog& log;
        ScriptDocuments& documents;
        const KalvexConfiguration& configuration;
        const std::string& identity;              // of the module among clients
        const std::string& profile;               // path
        std::string trail;                        // path of the audit trail, without its ending
        std::function<void(int level)> setLevel;  // takes effect at once, is told and kept
    };

    // All that the parts refer to outlives the console.
    explicit AppConsole(Parts parts);
    ~AppConsole() override;
    AppConsole(const AppConsole&) = delete;
    AppConsole& operator=(const AppConsole&) = delete;

    engine::ConsoleLink& Link() { return m_console; }

    // Lets clients come. Where they cannot the log is told, and the module works without them.
    void Open();
    // About once a second.
    void Check();

    // A script has been opened at the module, which its consoles are to mirror or not, and one is
    // about to be closed there.
    void OnOpened(const engine::CKalvexDoc& document, bool isTold) {
        m_console.OnOpened(document, isTold);
    }
    void OnClosing(const engine::CKalvexDoc& document) { m_console.OnClosing(document); }
    void AskForSession(const engine::CKalvexDoc& document) { m_console.AskForSession(document); }
    void PublishLevel(int level) { m_console.PublishLevel(level); }
    // The file of the audit trail may have been moved.
    void ReopenTrail() { m_trail.Reopen(); }

    void Admit(vantrel::LoginRequest login, const std::string& address,
               std::weak_ptr<const void> asker,
               std::function<void(const Admission&)> done) override;
    ModuleStatus GetStatus() override;
    std::optional<std::vector<int>> GetBreakpoints(std::string_view script) override;
    std::optional<engine::ScriptStanding> GetStanding(std::string_view script) override;
    std::vector<std::string> GetAuditFiles() override;

  private:
    void SetLogLevel(int level) override { m_parts.setLevel(level); }
    const std::string& GetClientIdentity() const override { return m_parts.identity; }

    void AddLogMessage(std::string_view text, std::int64_t time, int level) override;

    const Parts m_parts;
    ConsoleConfiguration m_configuration;
    std::vector<std::string> m_faults;  // of the configuration
    audit::AuditTrail m_trail;
    console::ModuleConsole m_console;
    std::unique_ptr<console::CKalvexServerConnectionManager> m_server;
    bool m_listens = false;
};

}  // namespace kalvex::app
