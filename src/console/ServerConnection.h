// One console at a module: its login, what it may see and do, what it has subscribed. Main thread;
// engine texts.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "console/ModuleConsole.h"
#include "platform/UserDirectory.h"
#include "vantrel/LoginDesk.h"
#include "vantrel/Transport.h"

namespace kalvex::console {

class CKalvexServerConnectionManager;

// What a client may do with a variable, or with the connection as a whole.
enum VarRights : unsigned {
    RightsNone = 0,
    RightsRead = 0x5,
    RightsWrite = 0xC00,
};

class CKalvexServerConnection final : public vantrel::ServerSession {
  public:
    // The manager outlives the connection. The number is given once.
    CKalvexServerConnection(CKalvexServerConnectionManager& manager, vantrel::ServerLink& link,
                            std::uint64_t number);
    ~CKalvexServerConnection() override;
    CKalvexServerConnection(const CKalvexServerConnection&) = delete;
    CKalvexServerConnection& operator=(const CKalvexServerConnection&) = delete;

    void OnMessage(vantrel::ClientMessage message) override;
    void OnClosed(std::uint32_t reason) override;

    // ---- from the manager

    void OnConnect();
    // A value that the module has set, to be sent if it is subscribed and may be seen.
    void SendValue(const CVarRCCtrl& variable);
    void SendLog(const vantrel::LogMessage& message);
    // These names may have a variable now, or none any more.
    void OnVariables(std::span<const std::string> names);
    // About once a second. Ends a conversation in which nobody has logged in since.
    void Check(std::int64_t acceptedBefore);
    // Ends a conversation in which nobody has logged in.
    void SendAway();

    unsigned GetVarRights(const CVarRCCtrl& variable) const;
    // Of the connection as a whole.
    unsigned GetVarRights() const;

  private:
    struct Subscription {
        std::string name;
        bool isShown = false;  // the client has been sent its value
    };

    void Receive(vantrel::LoginRequest& message);
    void Receive(vantrel::SubscribeRequest& message);
    void Receive(vantrel::ModifyRequests& message);
    void Receive(vantrel::ArchiveModifyRequest& message);
    void Receive(vantrel::PeriodRequest& message);
    void Receive(vantrel::ReadRequests& message);
    void Receive(vantrel::CancelRequests&) {}
    void Receive(vantrel::LastMessagesRequest& message);
    void Receive(vantrel::TakeTerm& message);
    void Receive(vantrel::AcknowledgeRequests& message);

    void OnLogin(vantrel::LoginVerdict verdict);
    // Logs the try, and lets the client in if it may come.
    void ProcessLoginData(const vantrel::LoginVerdict& verdict);
    void OnSubscribeFinish();
    void Unsubscribe(vantrel::VariableHandle handle);
    void Show(vantrel::VariableHandle handle, Subscription& subscription, bool isNew,
              vantrel::ValueUpdates& values, vantrel::AccessErrors& errors);
    std::uint16_t Write(vantrel::ModifyRequest& request);
    bool MayControl() const;
    ConsoleWriter GetWriter() const;
    void Log(std::string text, int level) const;
    std::string WithAddress(std::string text) const;

    CKalvexServerConnectionManager& m_manager;
    vantrel::ServerLink& m_link;
    const std::uint64_t m_number;
    const std::int64_t m_accepted;  // elapsed time
    std::string m_peerModule;
    std::string m_user;  // as it was given, or as it is known once it has logged in
    bool m_loginUnderWay = false;
    bool m_loggedIn = false;
    bool m_mayWrite = false;
    bool m_documentsSent = false;
    bool m_closing = false;
    std::shared_ptr<char> m_asker = std::make_shared<char>();  // while a login is wanted
    std::uint32_t m_flags = 0;
    std::optional<bool> m_hearsLog;  // until the next look
    std::unordered_map<vantrel::VariableHandle, Subscription> m_subscriptions;
    std::unordered_map<std::string, std::vector<vantrel::VariableHandle>> m_byName;
};

}  // namespace kalvex::console
