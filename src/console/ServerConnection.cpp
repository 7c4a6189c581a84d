#include "console/ServerConnection.h"

#include <utility>

#include "console/ServerConnectionManager.h"
#include "text/TextFormat.h"
#include "vantrel/ClientName.h"
#include "vantrel/Codes.h"

namespace kalvex::console {

namespace {

constexpr std::uint16_t kModuleType = 23;  // of script modules
constexpr std::uint8_t kOtherKind = 21;    // of a login; from here on nothing is logged
constexpr std::uint16_t kNoVariable = 0;   // of an access error
constexpr std::size_t kMostSubscriptions = 30000;

constexpr const char* kConnected = platform::Translatable("Nawiązano połączenie z klientem");
constexpr const char* kBroken = platform::Translatable("Połączenie z klientem %s zerwane  (%s)");

}  // namespace

CKalvexServerConnection::CKalvexServerConnection(CKalvexServerConnectionManager& manager,
                                                 vantrel::ServerLink& link, std::uint64_t number)
    : m_manager(manager),
      m_link(link),
      m_number(number),
      m_accepted(manager.Services().clock.Elapsed()) {}

CKalvexServerConnection::~CKalvexServerConnection() {
    m_manager.Forget(m_number);
}

void CKalvexServerConnection::Log(std::string text, int level) const {
    m_manager.Services().log.Log(text, level);
}

std::string CKalvexServerConnection::WithAddress(std::string text) const {
    const std::string address = m_link.PeerAddress();
    return address.empty() ? text : text + " (" + address + ")";
}

void CKalvexServerConnection::OnConnect() {
    Log(WithAddress(m_manager.Services().translator.Translate(kConnected)), platform::LogEvents);
}

void CKalvexServerConnection::OnMessage(vantrel::ClientMessage message) {
    if (!m_loggedIn && !std::holds_alternative<vantrel::LoginRequest>(message)) return;
    std::visit([this](auto& content) { Receive(content); }, message);
}

void CKalvexServerConnection::OnClosed(std::uint32_t reason) {
    m_documentsSent = false;
    if (reason == vantrel::ReasonClientEnded) return;
    const platform::Translator& translator = m_manager.Services().translator;
    Log(text::FormatText(translator.Translate(kBroken),
                         {m_peerModule, vantrel::ConnectionReasonText(reason, translator)}),
        platform::LogErrors);
    m_manager.Services().console.TakeBackAllSessions(GetWriter());
}

void CKalvexServerConnection::Check(std::int64_t acceptedBefore) {
    m_hearsLog.reset();
    if (!m_loggedIn && m_accepted < acceptedBefore) SendAway();
}

void CKalvexServerConnection::SendAway() {
    if (std::exchange(m_closing, true)) return;
    m_asker.reset();
    m_link.Close(vantrel::ReasonLoginRefused);
}

// ---- login

void CKalvexServerConnection::Receive(vantrel::LoginRequest& message) {
    if (m_loggedIn || m_loginUnderWay || m_closing) return;
    m_peerModule = vantrel::Printable(message.clientName);
    m_user = vantrel::Printable(message.user);
    const bool fits =
        message.protocolVersion == vantrel::kProtocolVersion && message.moduleType == kModuleType;
    if (!fits) return OnLogin({kOtherKind, {}, {}});
    m_loginUnderWay = true;
    using Standing = vantrel::ConversationSlots::Standing;
    const bool isKnown = m_manager.Logins().KnowsProgram(message, m_link.PeerAddress());
    m_manager.Slots().SetStanding(m_number, isKnown ? Standing::Known : Standing::Checked);
    m_manager.Logins().Check(
        std::move(message), m_link.PeerAddress(), m_asker,
        [&manager = m_manager, number = m_number](const vantrel::LoginVerdict& verdict) {
            if (CKalvexServerConnection* connection = manager.Find(number)) {
                connection->OnLogin(verdict);
            }
        });
}

void CKalvexServerConnection::OnLogin(vantrel::LoginVerdict verdict) {
    m_loginUnderWay = false;
    m_manager.Slots().SetStanding(m_number, vantrel::ConversationSlots::Standing::Silent);
    ProcessLoginData(verdict);
    if (m_loggedIn) verdict.text = m_manager.Services().host.GetClientIdentity();
    m_link.Send(vantrel::LoginResult{verdict.code, verdict.text});
}

void CKalvexServerConnection::ProcessLoginData(const vantrel::LoginVerdict& verdict) {
    if (verdict.code >= kOtherKind) return;
    const bool accepted = verdict.code == vantrel::LoginOk;
    if (accepted) {
        m_user = verdict.user.name;
        m_manager.Slots().OnLogin(m_number);
    }
    m_loggedIn = m_mayWrite = accepted;
    m_manager.LogLogin(GetWriter(), verdict);
}

// ---- rights

// By the name alone: before the login nothing is served anyway.
bool CKalvexServerConnection::MayControl() const {
    return m_manager.MayControl(GetWriter());
}

ConsoleWriter CKalvexServerConnection::GetWriter() const {
    return {m_user, m_link.PeerAddress(), m_peerModule};
}

unsigned CKalvexServerConnection::GetVarRights(const CVarRCCtrl& variable) const {
    if (MayControl()) return RightsRead | RightsWrite;
    const bool isCommon = variable.GetKind() == ControlKind::LogLevel ||
                          variable.GetKind() == ControlKind::DocumentInfo;
    return isCommon && m_loggedIn ? RightsRead : RightsNone;
}

unsigned CKalvexServerConnection::GetVarRights() const {
    return (m_loggedIn ? RightsRead : RightsNone) | (m_mayWrite ? RightsWrite : RightsNone);
}

// ---- subscriptions

void CKalvexServerConnection::Show(vantrel::VariableHandle handle, Subscription& subscription,
                                   bool isNew, vantrel::ValueUpdates& values,
                                   vantrel::AccessErrors& errors) {
    const CVarRCCtrl* variable = m_manager.Variables().FindControlVariable(subscription.name);
    const bool isShown = variable != nullptr && (GetVarRights(*variable) & RightsRead) != 0;
    if (isShown && (isNew || !subscription.isShown)) {
        values.entries.push_back({handle, variable->Value()});
    } else if (!isShown && (isNew || subscription.isShown)) {
        errors.entries.push_back(
            {handle, variable == nullptr ? kNoVariable
                                         : static_cast<std::uint16_t>(vantrel::ResultNoAccess)});
    }
    subscription.isShown = isShown;
}

void CKalvexServerConnection::Receive(vantrel::SubscribeRequest& message) {
    m_flags |= message.flags;
    for (const vantrel::VariableHandle handle : message.removed) Unsubscribe(handle);
    vantrel::ValueUpdates values;
    vantrel::AccessErrors errors;
    for (vantrel::SubscribeRequest::Entry& entry : message.added) {
        if (entry.handle == 0 || m_subscriptions.count(entry.handle) != 0) continue;
        if (m_subscriptions.size() >= kMostSubscriptions) {
            errors.entries.push_back({entry.handle, vantrel::ResultBadRequest});
            continue;
        }
        Subscription& subscription = m_subscriptions[entry.handle];
        subscription.name = std::move(entry.name);
        m_byName[subscription.name].push_back(entry.handle);
        Show(entry.handle, subscription, true, values, errors);
    }
    values.last = message.last;
    if (!errors.entries.empty()) m_link.Send(std::move(errors));
    if (!message.added.empty()) m_link.Send(std::move(values));
    if (message.last) OnSubscribeFinish();
}

void CKalvexServerConnection::Unsubscribe(vantrel::VariableHandle handle) {
    const auto node = m_subscriptions.extract(handle);
    if (node.empty()) return;
    const auto named = m_byName.find(node.mapped().name);
    std::erase(named->second, handle);
    if (named->second.empty()) m_byName.erase(named);
}

// Each client is told once which scripts are open, and by itself.
void CKalvexServerConnection::OnSubscribeFinish() {
    if (std::exchange(m_documentsSent, true)) return;
    CVarRCCtrl& variable = m_manager.Variables().DocumentInfo();
    for (const engine::CKalvexDoc* document : m_manager.Services().host.Scripts()) {
        variable.SetControlValue(value::CVal(document->GetDocKey()));
        SendValue(variable);
    }
}

void CKalvexServerConnection::OnVariables(std::span<const std::string> names) {
    vantrel::ValueUpdates values;
    vantrel::AccessErrors errors;
    for (const std::string& name : names) {
        const auto named = m_byName.find(name);
        if (named == m_byName.end()) continue;
        for (const vantrel::VariableHandle handle : named->second) {
            Show(handle, m_subscriptions.at(handle), false, values, errors);
        }
    }
    if (!errors.entries.empty()) m_link.Send(std::move(errors));
    if (!values.entries.empty()) m_link.Send(std::move(values));
}

void CKalvexServerConnection::SendValue(const CVarRCCtrl& variable) {
    const auto named = m_byName.find(variable.GetName());
    if (named == m_byName.end()) return;
    vantrel::ValueUpdates values;
    for (const vantrel::VariableHandle handle : named->second) {
        if (m_subscriptions.at(handle).isShown)
            values.entries.push_back({handle, variable.Value()});
    }
    if (!values.entries.empty()) m_link.Send(std::move(values));
}

// ---- writes and what a module does not have

std::uint16_t CKalvexServerConnection::Write(vantrel::ModifyRequest& request) {
    CVarRCCtrl* variable = m_manager.Variables().FindControlVariable(request.variable);
    const unsigned rights = variable == nullptr ? unsigned{RightsNone} : GetVarRights(*variable);
    if (rights == RightsNone) return vantrel::ResultNothing;
    if ((rights & RightsWrite) == 0) return vantrel::ResultNoAccess;
    if (request.kind != value::KindCurrent) return vantrel::ResultBadRequest;
    m_manager.Services().console.Write(*variable, std::move(request.value), GetWriter());
    return vantrel::ResultOk;
}

void CKalvexServerConnection::Receive(vantrel::ModifyRequests& message) {
    vantrel::ModifyResults results;
    for (vantrel::ModifyRequest& request : message.requests) {
        results.entries.push_back({request.id, Write(request)});
    }
    m_link.Send(std::move(results));
}

void CKalvexServerConnection::Receive(vantrel::ArchiveModifyRequest& message) {
    m_link.Send(vantrel::ModifyResults{{{message.id, vantrel::ResultBadRequest}}});
}

void CKalvexServerConnection::Receive(vantrel::PeriodRequest& message) {
    if (message.id == 0) return;
    m_link.Send(vantrel::ModifyResults{{{message.id, vantrel::ResultBadRequest}}});
}

void CKalvexServerConnection::Receive(vantrel::ReadRequests& message) {
    for (const vantrel::ReadRequest& request : message.requests) {
        m_link.Send(vantrel::ReadAnswer{request.id, vantrel::ResultBadRequest, {}, true});
    }
}

void CKalvexServerConnection::Receive(vantrel::AcknowledgeRequests& message) {
    vantrel::ModifyResults results;
    for (const vantrel::AcknowledgeRequest& request : message.requests) {
        results.entries.push_back({request.id, vantrel::ResultBadRequest});
    }
    m_link.Send(std::move(results));
}

void CKalvexServerConnection::Receive(vantrel::TakeTerm&) {
    m_link.Send(vantrel::TermResult{});
}

// ---- the log, which tells of scripts

void CKalvexServerConnection::Receive(vantrel::LastMessagesRequest& message) {
    if (!MayControl()) return;
    for (vantrel::LogMessage& line : m_manager.Services().lastMessages(message.count)) {
        m_link.Send(std::move(line));
    }
}

void CKalvexServerConnection::SendLog(const vantrel::LogMessage& message) {
    if (!m_loggedIn || (m_flags & vantrel::SubscribeFlag::LogMessages) == 0) return;
    if (!m_hearsLog) m_hearsLog = MayControl();
    if (*m_hearsLog) m_link.Send(message);
}

}  // namespace kalvex::console
