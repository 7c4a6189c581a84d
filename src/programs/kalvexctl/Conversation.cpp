#include "programs/kalvexctl/Conversation.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <variant>

#include "console/ConsoleMessages.h"
#include "platform/SteadyTime.h"
#include "vantrel/Codes.h"
#include "vantrel/network/Patience.h"

namespace kalvex::kalvexctl {

Conversation::~Conversation() {
    End();
}

bool Conversation::Connect(vantrel::TransportFactory& factory, std::string_view module) {
    m_transport = factory.Connect(module, *this, m_reason);
    if (!m_transport) {
        m_lost = true;
        return false;
    }
    m_transport->Open();
    return true;
}

Waited Conversation::Await(const std::function<bool()>& done, std::int64_t until, Signals signals,
                           int descriptor) {
    for (;;) {
        if (done()) return Waited::Done;
        if (m_lost) return Waited::Lost;
        if (signals == Signals::End && m_loop.GetSignal() != 0) return Waited::Signal;
        if (platform::SteadyMilliseconds() >= until) return Waited::TimeOut;
        m_loop.Turn(until, descriptor);
    }
}

// ---- said to the module

void Conversation::LogIn(vantrel::LoginRequest login) {
    m_transport->Send(std::move(login));
}

void Conversation::Subscribe(const std::vector<std::string>& variables, std::uint32_t flags) {
    vantrel::SubscribeRequest request;
    request.flags = flags;
    for (const std::string& variable : variables) {
        const auto handle = static_cast<vantrel::VariableHandle>(m_subscriptions.size() + 1);
        m_subscriptions[handle].name = variable;
        request.added.push_back({handle, variable});
    }
    m_transport->Send(std::move(request));
}

bool Conversation::IsSubscribed() const {
    return std::ranges::all_of(m_subscriptions,
                               [](const auto& row) { return row.second.answered; });
}

const Conversation::Subscription* Conversation::Find(std::string_view variable) const {
    const auto found = std::ranges::find_if(
        m_subscriptions, [variable](const auto& row) { return row.second.name == variable; });
    return found == m_subscriptions.end() ? nullptr : &found->second;
}

int Conversation::GetAccessError(std::string_view variable) const {
    return Find(variable)->error;
}

const value::CVal& Conversation::GetValue(std::string_view variable) const {
    return Find(variable)->value;
}

vantrel::RequestId Conversation::Modify(vantrel::ModifyRequest request) {
    request.id = ++m_lastRequest;
    m_transport->Send(vantrel::ModifyRequests{{std::move(request)}});
    return m_lastRequest;
}

vantrel::RequestId Conversation::Write(std::string_view variable, value::CVal value) {
    return Modify(
        {.kind = value::KindCurrent, .variable = std::string(variable), .value = std::move(value)});
}

vantrel::RequestId Conversation::Probe() {
    return Modify({.kind = value::KindHour,
                   .variable = std::string(console::kLogLevelVariable),
                   .value = value::CVal(0)});
}

void Conversation::AskLastMessages(std::uint32_t count) {
    m_transport->Send(vantrel::LastMessagesRequest{count});
}

void Conversation::End() {
    if (m_transport && !m_lost) m_transport->Close(vantrel::ReasonClosed);
    m_lost = true;
}

void Conversation::Break() {
    if (m_transport && !m_lost) m_transport->Close(vantrel::ReasonSilent);
    m_lost = true;
}

// ---- heard of the module

void Conversation::OnMessage(vantrel::ServerMessage message) {
    if (m_lost) return;
    std::visit([this](auto& content) { Receive(content); }, message);
}

void Conversation::OnFault(vantrel::ConnectionFault fault, std::uint32_t reason) {
    if (fault != vantrel::ConnectionFault::Open || m_opened) return;
    m_reason = reason;
    m_lost = true;
}

void Conversation::OnClosed(std::uint32_t reason) {
    if (m_lost) return;
    m_reason = reason;
    m_lost = true;
}

void Conversation::Receive(vantrel::ValueUpdates& message) {
    for (vantrel::ValueUpdates::Entry& entry : message.entries) {
        const auto found = m_subscriptions.find(entry.handle);
        if (found == m_subscriptions.end()) continue;
        Subscription& subscription = found->second;
        const bool isPast = !subscription.answered || subscription.error >= 0;
        subscription.answered = true;
        subscription.error = -1;
        subscription.value = std::move(entry.value);
        if (!isPast && m_listener != nullptr) {
            m_listener->OnValue(subscription.name, subscription.value);
        }
    }
}

void Conversation::Receive(vantrel::AccessErrors& message) {
    for (const vantrel::AccessErrors::Entry& entry : message.entries) {
        const auto found = m_subscriptions.find(entry.handle);
        if (found == m_subscriptions.end()) continue;
        found->second.answered = true;
        found->second.error = entry.code;
    }
}

void Conversation::Receive(vantrel::ModifyResults& message) {
    for (const vantrel::ModifyResults::Entry& entry : message.entries) {
        m_results[entry.id] = entry.result;
    }
}

void Conversation::Receive(vantrel::LogMessage& message) {
    if (m_listener != nullptr) m_listener->OnLog(std::move(message));
}

}  // namespace kalvex::kalvexctl
