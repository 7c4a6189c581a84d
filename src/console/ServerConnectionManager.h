// The console server of a module: an ordinary server of the family, with a handful of variables as
// its whole contents. Main thread; engine texts.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "console/ModuleConsole.h"
#include "platform/Clock.h"
#include "platform/LogSink.h"
#include "platform/MainLoop.h"
#include "platform/Translator.h"
#include "platform/UserStore.h"
#include "vantrel/ConversationSlots.h"
#include "vantrel/LoginDesk.h"
#include "vantrel/Refusals.h"
#include "vantrel/Transport.h"

namespace kalvex::console {

class CKalvexServerConnection;

// All of it outlives the server.
struct ConsoleServices {
    const platform::Clock& clock;
    platform::LogSink& log;
    const platform::Translator& translator;
    platform::MainLoop& loop;
    const platform::UserStore& users;
    ModuleConsole& console;
    ConsoleHost& host;
    // Of the module's log, the oldest first.
    std::function<std::vector<vantrel::LogMessage>(std::size_t count)> lastMessages;
    // Who may control scripts: a level or a group.
    std::function<std::string()> controlRight;
    platform::PasswordCost passwordCost = platform::PasswordCost::Interactive;
    std::size_t mostClients = 100;
};

class CKalvexServerConnectionManager final : public vantrel::SessionAcceptor,
                                             public ValueDistribution {
  public:
    explicit CKalvexServerConnectionManager(const ConsoleServices& services);
    ~CKalvexServerConnectionManager() override;
    CKalvexServerConnectionManager(const CKalvexServerConnectionManager&) = delete;
    CKalvexServerConnectionManager& operator=(const CKalvexServerConnectionManager&) = delete;

    // About once a second: what logins wait for, and the end of conversations in which nobody logs
    // in. A change of who may hear the log counts from then on.
    void Check();

    // To all clients whose user may see it.
    void AddLogMessage(std::string_view text, std::int64_t time, int level);
    void AddCurrentValueChange(const CVarRCCtrl& variable) override;
    void OnVariables(std::string_view path) override;

    // Whether its user may control scripts from there.
    bool MayControl(const ConsoleWriter& client) const;
    // Of refused ones, what the log takes of them.
    void LogLogin(const ConsoleWriter& client, const vantrel::LoginVerdict& verdict);

    // ---- for the transport

    // The session is counted until it is destroyed. For one too many, one without a login is sent
    // away; without such a one it is refused.
    std::unique_ptr<vantrel::ServerSession> Accept(vantrel::ServerLink& link) override;
    void ListVariables(vantrel::LoginRequest login, std::string address,
                       std::weak_ptr<const void> asker, ListAnswer answer) override;

    // ---- for the sessions

    const ConsoleServices& Services() const { return m_services; }
    ControlVariables& Variables() { return m_services.console.Variables(); }
    vantrel::LoginDesk& Logins() { return m_logins; }
    vantrel::ConversationSlots& Slots() { return m_slots; }
    // The session of that number, or null when it is gone.
    CKalvexServerConnection* Find(std::uint64_t number) const;
    void Forget(std::uint64_t number);

  private:
    const ConsoleServices m_services;
    vantrel::LoginDesk m_logins;
    std::map<std::uint64_t, CKalvexServerConnection*> m_connections;
    std::uint64_t m_lastNumber = 0;
    vantrel::ConversationSlots m_slots;
    vantrel::Refusals m_refusals;
};

}  // namespace kalvex::console
