#include "console/ServerConnectionManager.h"

#include "console/LoginText.h"
#include "console/ServerConnection.h"

namespace kalvex::console {

namespace {

constexpr std::int64_t kLoginTime = 30;  // seconds until a client has to have logged in

constexpr const char* kManyClients =
    platform::Translatable("Zbyt wielu klientów, odrzucono połączenie");

}  // namespace

CKalvexServerConnectionManager::CKalvexServerConnectionManager(const ConsoleServices& services)
    : m_services(services),
      m_logins(services.users, services.clock, services.translator, services.loop,
               services.passwordCost) {
    m_logins.AllowNobody(vantrel::NobodyAccess::Local);
    m_services.console.SetDistribution(this);
}

CKalvexServerConnectionManager::~CKalvexServerConnectionManager() {
    m_services.console.SetDistribution(nullptr);
}

void CKalvexServerConnectionManager::Check() {
    const std::int64_t now = m_services.clock.Elapsed();
    m_logins.Step();
    for (const auto& leftOut : m_refusals.TakeLeftOut(now)) {
        m_services.log.Log(vantrel::LeftOutLine(leftOut, m_services.translator),
                           platform::LogErrors);
    }
    const std::int64_t acceptedBefore = now - kLoginTime;
    for (const auto& [number, connection] : m_connections) {
        connection->Check(acceptedBefore);
    }
}

void CKalvexServerConnectionManager::AddLogMessage(std::string_view text, std::int64_t time,
                                                   int level) {
    const vantrel::LogMessage message{level, time, std::string(text)};
    for (const auto& [number, connection] : m_connections) connection->SendLog(message);
}

void CKalvexServerConnectionManager::AddCurrentValueChange(const CVarRCCtrl& variable) {
    for (const auto& [number, connection] : m_connections) connection->SendValue(variable);
}

void CKalvexServerConnectionManager::OnVariables(std::string_view path) {
    const auto names = ControlNames(path);
    for (const auto& [number, connection] : m_connections) connection->OnVariables(names);
}

std::unique_ptr<vantrel::ServerSession> CKalvexServerConnectionManager::Accept(
    vantrel::ServerLink& link) {
    const std::string address = link.PeerAddress();
    const vantrel::ConversationSlots::Entry slot = m_slots.Enter(
        m_lastNumber + 1, address, m_logins.KnowsAddress(address), m_services.mostClients);
    if (!slot.isTaken) {
        if (m_refusals.MayLog(address, m_services.clock.Elapsed())) {
            m_services.log.Log(m_services.translator.Translate(kManyClients), platform::LogErrors);
        }
        return nullptr;
    }
    if (CKalvexServerConnection* leaving = Find(slot.leaves)) leaving->SendAway();
    auto connection = std::make_unique<CKalvexServerConnection>(*this, link, ++m_lastNumber);
    m_connections.emplace(m_lastNumber, connection.get());
    connection->OnConnect();
    return connection;
}

// What a module publishes has no definitions.
void CKalvexServerConnectionManager::ListVariables(vantrel::LoginRequest login, std::string address,
                                                   std::weak_ptr<const void> asker,
                                                   ListAnswer answer) {
    m_logins.Check(std::move(login), std::move(address), std::move(asker),
                   [answer = std::move(answer)](const vantrel::LoginVerdict& verdict) {
                       if (verdict.code != vantrel::LoginOk) return answer(std::nullopt);
                       answer(std::vector<vantrel::VariableDefinition>());
                   });
}

bool CKalvexServerConnectionManager::MayControl(const ConsoleWriter& client) const {
    return m_services.users.CheckUserRight(client.user, m_services.controlRight(), client.address);
}

void CKalvexServerConnectionManager::LogLogin(const ConsoleWriter& client,
                                              const vantrel::LoginVerdict& verdict) {
    const bool accepted = verdict.code == vantrel::LoginOk;
    if (!accepted && !m_refusals.MayLog(client.address, m_services.clock.Elapsed())) return;
    if (!verdict.fault.empty()) {
        m_services.log.Log(vantrel::LoginFaultLine(verdict, m_services.translator),
                           platform::LogErrors);
    }
    m_services.log.Log(LoginText(client, accepted, m_services.users, m_services.translator),
                       accepted ? platform::LogEvents : platform::LogErrors);
}

void CKalvexServerConnectionManager::Forget(std::uint64_t number) {
    m_connections.erase(number);
    m_slots.Leave(number);
}

CKalvexServerConnection* CKalvexServerConnectionManager::Find(std::uint64_t number) const {
    const auto found = m_connections.find(number);
    return found == m_connections.end() ? nullptr : found->second;
}

}  // namespace kalvex::console
