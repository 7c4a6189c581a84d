// The console of another module in its application: what it needs of the documents, the log, the
// window and the loop. Main thread.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "app/AppWorld.h"
#include "app/HostedScripts.h"
#include "app/KalvexLog.h"
#include "app/ScriptDocuments.h"
#include "console/ClientConsole.h"

namespace kalvex::app {

class AppClientConsole final : private HostedScripts<console::ClientHost> {
  public:
    struct Parts {
        const AppWorld& world;
        CKalvexLog& log;
        ScriptDocuments& documents;
        sources::CClientInterface& sources;
        platform::Questions& questions;
        const std::string& module;    // the source that it mirrors
        const std::string& identity;  // by which the module and its consoles know this one
        std::function<void()> updateTitle;
    };

    // All that the parts refer to outlives the console, but for the sources, which go before it and
    // have no connection yet.
    explicit AppClientConsole(Parts parts);
    ~AppClientConsole() override;
    AppClientConsole(const AppClientConsole&) = delete;
    AppClientConsole& operator=(const AppClientConsole&) = delete;

    // Begins to mirror. The timers of the frame do nothing in a console, so the connection has one
    // of its own.
    void Open();
    console::ClientConsole& Console() { return m_console; }

  private:
    void MinimiseFrame(engine::CKalvexDoc& document) override;
    void ShowVariables(engine::CKalvexDoc& document, int row) override;
    void ShowMessage(std::string_view text) override;
    void UpdateTitle() override { m_parts.updateTitle(); }
    void ClearLog() override { m_parts.log.OnClear(); }
    void LogFromModule(std::string_view text, std::int64_t time, int level) override;
    void TakeLogLevel(int level) override { m_parts.log.SetLevel(level); }
    const std::string& GetClientIdentity() const override { return m_parts.identity; }

    const Parts m_parts;
    console::ClientConsole m_console;
};

}  // namespace kalvex::app
