// Login and subscriptions. Reads and writes: SessionRequests.cpp.
#include "server/Session.h"

#include <algorithm>
#include <limits>
#include <utility>
#include <variant>

#include "server/ClientText.h"
#include "server/Server.h"
#include "text/TextFormat.h"
#include "value/Status.h"

namespace kalvex::server {

namespace {

constexpr std::size_t kLongestClientName = 255;
constexpr std::size_t kDefinitionsTogether = 500;
constexpr std::size_t kValuesTogether = 1000;

// Of the names that stand for nothing: so many, and so many bytes of them.
constexpr std::size_t kMostAbsent = 20'000;
constexpr std::size_t kMostAbsentBytes = 2 << 20;

// Of one that the client may not see, too.
constexpr std::uint16_t kNoVariable = 0;

constexpr const char* kBroken = platform::Translatable("Połączenie z klientem %s zerwane (%s)");
constexpr const char* kClient = platform::Translatable("Klient %s: %s");
constexpr const char* kManySubscriptions =
    platform::Translatable("zbyt wiele subskrybowanych zmiennych");
constexpr const char* kManyAbsent =
    platform::Translatable("zbyt wiele subskrybowanych nazw, pod którymi nie ma zmiennych");

}  // namespace

Session::Session(Server& server, vantrel::ServerLink& link, std::uint64_t number)
    : m_server(server),
      m_link(link),
      m_number(number),
      m_accepted(server.Elapsed()),
      m_refusalsTold(m_accepted) {}

Session::~Session() {
    for (auto& [handle, subscription] : m_subscriptions) Release(handle, subscription);
    m_server.Forget(*this);
}

void Session::OnMessage(vantrel::ClientMessage message) {
    if (m_state != State::LoggedIn && !std::holds_alternative<vantrel::LoginRequest>(message))
        return;
    std::visit([this](auto& content) { Receive(content); }, message);
}

void Session::OnClosed(std::uint32_t reason) {
    TellRefusals(std::numeric_limits<std::int64_t>::max());
    if (reason == vantrel::ReasonClientEnded || reason == vantrel::ReasonServerEnded ||
        !IsLoggedIn())
        return;
    m_server.Log(kBroken, {Peer(), vantrel::ConnectionReasonText(reason, m_server.GetTranslator())},
                 platform::LogErrors);
}

void Session::OnDrained() {
    SendChanges();
    SendReportChanges();
    ReadNext();
}

std::string Session::Peer() const {
    return ClientText(m_client, m_link.PeerAddress());
}

void Session::TellOnce(const char* polish, std::string_view variable) {
    const std::string text =
        text::FormatText(m_server.GetTranslator().Translate(polish), {variable});
    if (!m_told.insert(text).second) return;
    m_server.Log(kClient, {Peer(), text}, platform::LogErrors);
}

Rights::Granted Session::RightsTo(std::size_t variable) const {
    return m_granted[m_server.GetPlant().At(variable).rule];
}

// ---- login

void Session::Receive(vantrel::LoginRequest& message) {
    if (m_state != State::New || m_closing) return;
    m_state = State::Checking;
    using Standing = vantrel::ConversationSlots::Standing;
    const bool isKnown = m_server.GetLogins().KnowsProgram(message, m_link.PeerAddress());
    m_server.GetSlots().SetStanding(m_number, isKnown ? Standing::Known : Standing::Checked);
    m_client = message.clientName.substr(0, kLongestClientName);
    m_userName = message.user.substr(0, kLongestClientName);
    m_token = message.token;
    m_changesSince = message.changesSince;
    m_server.GetLogins().Check(
        std::move(message), m_link.PeerAddress(), m_asker,
        [&server = m_server, number = m_number](const vantrel::LoginVerdict& verdict) {
            if (Session* session = server.FindSession(number)) session->OnLogin(verdict);
        });
}

void Session::OnLogin(const vantrel::LoginVerdict& verdict) {
    const bool accepted = verdict.code == vantrel::LoginOk;
    m_server.LogLogin(verdict, m_userName, Peer(), m_link.PeerAddress());
    m_state = accepted ? State::LoggedIn : State::New;
    m_server.GetSlots().SetStanding(m_number, vantrel::ConversationSlots::Standing::Silent);
    if (accepted) {
        m_server.GetSlots().OnLogin(m_number);
        m_user = verdict.user;
        m_granted = m_server.GetRights().GrantedTo(m_user, m_link.PeerAddress());
    }
    const std::uint64_t lastChange = m_server.GetReportChanges().Last();
    vantrel::LoginResult result{verdict.code, verdict.text};
    if (accepted) result.sequence = lastChange;
    m_link.Send(std::move(result));
    if (!accepted) return;
    const bool asks = m_changesSince.has_value();
    m_changesSince = std::min(m_changesSince.value_or(lastChange), lastChange);
    if (!asks) return;
    m_lastChangeTold = m_changesSince;
    SendReportChanges();
}

void Session::CloseUnlessLoggedIn(std::int64_t acceptedBefore) {
    if (!IsLoggedIn() && m_accepted < acceptedBefore) SendAway();
}

void Session::SendAway() {
    if (std::exchange(m_closing, true)) return;
    m_asker.reset();
    m_link.Close(vantrel::ReasonLoginRefused);
}

// ---- subscriptions

void Session::Receive(vantrel::SubscribeRequest& message) {
    m_flags |= message.flags;
    if ((m_flags & vantrel::SubscribeFlag::ReportChanges) != 0 && !m_lastChangeTold) {
        m_lastChangeTold = m_changesSince;
    }
    for (const vantrel::VariableHandle handle : message.removed) {
        const auto found = m_subscriptions.find(handle);
        if (found == m_subscriptions.end()) continue;
        Release(handle, found->second);
        DropAbsent(found->second.name, handle);
        m_subscriptions.erase(found);
    }
    const auto most = 2 * static_cast<std::size_t>(m_server.Settings().maxVariables);
    std::vector<vantrel::VariableHandle> added;
    vantrel::AccessErrors refused;
    for (vantrel::SubscribeRequest::Entry& entry : message.added) {
        if (entry.handle == 0 || m_subscriptions.count(entry.handle) != 0) continue;
        const bool sees = Sees(m_server.GetPlant().Find(entry.name));
        const char* fault = sees || HasRoomForAbsent(entry.name) ? nullptr : kManyAbsent;
        if (m_subscriptions.size() >= most) fault = kManySubscriptions;
        if (fault != nullptr) {
            TellOnce(fault);
            refused.entries.push_back({entry.handle, vantrel::ResultBadRequest});
            continue;
        }
        Subscription& subscription = m_subscriptions[entry.handle];
        subscription.name = std::move(entry.name);
        if (!sees) AddAbsent(subscription.name, entry.handle);
        added.push_back(entry.handle);
    }
    if (!refused.entries.empty()) m_link.Send(std::move(refused));
    if (!message.added.empty()) SendValues(Bind(added), message.last);
}

bool Session::Sees(std::size_t variable) const {
    return variable != Plant::kNone && RightsTo(variable).read;
}

bool Session::HasRoomForAbsent(std::string_view name) const {
    return m_absent.size() < kMostAbsent && m_absentBytes + name.size() <= kMostAbsentBytes;
}

void Session::AddAbsent(const std::string& name, vantrel::VariableHandle handle) {
    if (m_absent.emplace(name, handle).second) m_absentBytes += name.size();
}

void Session::DropAbsent(const std::string& name, vantrel::VariableHandle handle) {
    if (m_absent.erase({name, handle}) != 0) m_absentBytes -= name.size();
}

std::vector<vantrel::VariableHandle> Session::Bind(
    const std::vector<vantrel::VariableHandle>& handles) {
    Plant& plant = m_server.GetPlant();
    vantrel::AccessErrors errors;
    std::vector<vantrel::VariableDefinitions> definitions(1);
    std::vector<vantrel::VariableHandle> bound;
    for (const vantrel::VariableHandle handle : handles) {
        Subscription& subscription = m_subscriptions[handle];
        const std::size_t index = plant.Find(subscription.name);
        if (!Sees(index)) {
            errors.entries.push_back({handle, kNoVariable});
            AddAbsent(subscription.name, handle);
            continue;
        }
        PlantVariable& variable = plant.At(index);
        subscription.variable = variable.id;
        bound.push_back(handle);
        variable.subscribers.push_back({this, handle});
        if (definitions.back().definitions.size() == kDefinitionsTogether) {
            definitions.emplace_back();
        }
        definitions.back().definitions.push_back(DefinitionOf(variable.config));
    }
    if (!errors.entries.empty()) m_link.Send(std::move(errors));
    for (vantrel::VariableDefinitions& piece : definitions) {
        if (piece.definitions.empty()) continue;
        piece.last = &piece == &definitions.back();
        m_link.Send(std::move(piece));
    }
    return bound;
}

void Session::SendValues(const std::vector<vantrel::VariableHandle>& handles, bool last) {
    std::vector<vantrel::ValueUpdates> values(1);
    for (const vantrel::VariableHandle handle : handles) {
        if (values.back().entries.size() == kValuesTogether) values.emplace_back();
        values.back().entries.push_back(
            {handle, m_server.GetPlant().Lookup(m_subscriptions.at(handle).variable)->value});
    }
    // The last piece is sent even when it is empty: it tells that the answer is complete.
    for (vantrel::ValueUpdates& piece : values) {
        piece.last = last && &piece == &values.back();
        m_link.Send(std::move(piece));
    }
}

void Session::Release(vantrel::VariableHandle handle, Subscription& subscription) {
    PlantVariable* variable = m_server.GetPlant().Lookup(std::exchange(subscription.variable, 0));
    if (variable == nullptr) return;
    std::erase_if(variable->subscribers,
                  [this, handle](const PlantVariable::Subscriber& subscriber) {
                      return subscriber.session == this && subscriber.handle == handle;
                  });
}

void Session::OnDefine() {
    if (!IsLoggedIn()) return;
    m_granted = m_server.GetRights().GrantedTo(m_user, m_link.PeerAddress());
    std::vector<vantrel::VariableHandle> handles;
    for (auto& [handle, subscription] : m_subscriptions) {
        subscription.variable = 0;
        subscription.marked = false;
        handles.push_back(handle);
    }
    m_marked.clear();
    m_absent.clear();
    m_absentBytes = 0;
    std::sort(handles.begin(), handles.end());
    for (const vantrel::VariableHandle handle : Bind(handles)) MarkChanged(handle);
    SendChanges();
}

void Session::MarkChanged(vantrel::VariableHandle handle) {
    Subscription& subscription = m_subscriptions.at(handle);
    if (subscription.marked) return;
    subscription.marked = true;
    m_marked.push_back(handle);
}

void Session::SendChanges() {
    std::size_t sent = 0;
    while (sent < m_marked.size() && m_link.Backlog() < vantrel::kMostBacklog) {
        vantrel::ValueUpdates updates;
        for (; sent < m_marked.size() && updates.entries.size() < kValuesTogether; ++sent) {
            const auto found = m_subscriptions.find(m_marked[sent]);
            if (found == m_subscriptions.end()) continue;
            found->second.marked = false;
            const PlantVariable* variable = m_server.GetPlant().Lookup(found->second.variable);
            updates.entries.push_back(
                {found->first, variable == nullptr ? NoValue() : variable->value});
        }
        if (!updates.entries.empty()) m_link.Send(std::move(updates));
    }
    m_marked.erase(m_marked.begin(), m_marked.begin() + static_cast<std::ptrdiff_t>(sent));
}

// ---- what the server tells of itself

void Session::SendReportChanges() {
    if (!m_lastChangeTold) return;
    NumberedChange change;
    while (m_link.Backlog() < vantrel::kMostBacklog &&
           m_server.GetReportChanges().FindBehind(*m_lastChangeTold, change)) {
        m_lastChangeTold = change.sequence;
        m_link.Send(vantrel::ReportChange{change.kind, change.time, change.sequence});
    }
}

void Session::SendLog(const vantrel::LogMessage& message) {
    const bool wanted = IsLoggedIn() && (m_flags & vantrel::SubscribeFlag::LogMessages) != 0;
    if (!wanted || m_link.Backlog() >= vantrel::kMostBacklog) return;
    if (!platform::HasRight(m_user, m_server.Settings().logRight, m_link.PeerAddress())) return;
    m_link.Send(message);
}

void Session::Receive(vantrel::LastMessagesRequest& message) {
    if (!platform::HasRight(m_user, m_server.Settings().logRight, m_link.PeerAddress())) return;
    for (vantrel::LogMessage& line : m_server.LastMessages(message.count))
        m_link.Send(std::move(line));
}

// An embedded store knows no terms, so nothing stands against one.
void Session::Receive(vantrel::TakeTerm&) {
    m_link.Send(vantrel::TermResult{});
}

}  // namespace kalvex::server
