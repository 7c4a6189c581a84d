// What a module tells about its scripts to whoever supervises it without being a console: it
// changes nothing. Texts are engine texts, lines count from 0, times are seconds since 1970 GMT.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/ScriptDocument.h"
#include "engine/ScriptStanding.h"
#include "vantrel/Messages.h"

namespace kalvex::app {

struct ScriptStatus {
    std::string path;         // as the module lists it
    int stateWord = 0;        // of engine::ScriptStateBit
    std::optional<int> line;  // of a script that runs or is stopped
    std::optional<engine::ScriptReport> report;
    engine::ScriptStanding standing;
    bool sessionGiven = false;  // a client has the session, and not the module
};

struct ModuleStatus {
    std::string module;
    std::string identity;  // of the module among its clients
    int logLevel = 0;
    std::vector<ScriptStatus> scripts;  // in the order of their opening
};

// Whether somebody may ask.
struct Admission {
    enum Outcome { Admitted, LoginRefused, NoRight };
    Outcome outcome = LoginRefused;
    std::string reason = {};  // why not, for who asks
};

// Main thread.
class Supervised {
  public:
    virtual ~Supervised() = default;

    // Checks the login and the right to control scripts, and logs the try. `done` is called from
    // within the call or later; not at all once the module's console or the asker is gone.
    virtual void Admit(vantrel::LoginRequest login, const std::string& address,
                       std::weak_ptr<const void> asker,
                       std::function<void(const Admission&)> done) = 0;

    virtual ModuleStatus GetStatus() = 0;
    // Ascending; nothing when the script is not open.
    virtual std::optional<std::vector<int>> GetBreakpoints(std::string_view script) = 0;
    virtual std::optional<engine::ScriptStanding> GetStanding(std::string_view script) = 0;
    // The files of the audit trail, oldest first; paths of the system.
    virtual std::vector<std::string> GetAuditFiles() = 0;
};

}  // namespace kalvex::app
