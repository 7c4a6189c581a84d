#include "programs/kalvexctl/Console.h"

#include <unistd.h>

#include <algorithm>
#include <utility>

#include "console/ConsoleMessages.h"
#include "platform/SteadyTime.h"
#include "platform/posix/AccountName.h"
#include "platform/posix/HostName.h"
#include "text/CodePage.h"
#include "vantrel/Codes.h"
#include "vantrel/network/Patience.h"

namespace kalvex::kalvexctl {

namespace {

constexpr std::uint16_t kModuleType = 23;  // of script modules
constexpr const char* kNobody = "NOBODY";
constexpr const char* kOtherKind = platform::Translatable("inny rodzaj modułu albo inna wersja");

vantrel::NetworkClientSettings SettingsOf(const Call& call) {
    vantrel::NetworkClientSettings settings;
    settings.addresses = call.addresses;
    settings.tellsFaults = false;  // the ending says it
    return settings;
}

}  // namespace

std::string ClientIdentity(const std::string& module) {
    return module + '_' + text::FromUtf8(platform::HostName()) + '.' + platform::AccountName() +
           '.' + std::to_string(::getpid()) + "_RC";
}

Console::Console(Call& call)
    : m_call(call),
      m_module(call.GetModule()),
      m_identity(ClientIdentity(m_module)),
      m_network(SettingsOf(call), call.loop, call.output, call.translator),
      m_conversation(call.loop) {
    m_conversation.SetListener(this);
    call.loop.SetPeriodic([this] { m_network.Check(); });
}

Console::~Console() {
    m_call.loop.SetPeriodic([] {});
}

const std::string& Console::GetModuleIdentity() const {
    return m_conversation.GetLoginResult()->text;
}

std::string Console::ReasonText(std::uint32_t reason) const {
    return vantrel::ConnectionReasonText(reason, m_call.translator);
}

std::int64_t Console::AnswerDue() const {
    return platform::SteadyMilliseconds() + std::int64_t{1000} * m_call.options.timeout;
}

// ---- waits

Ending Console::EndingOf(Waited waited) {
    if (waited == Waited::Signal) return {ExitSignal + m_call.loop.GetSignal()};
    const bool wasOpen = m_conversation.GetLoginResult() != nullptr;
    const Fault fault = wasOpen ? Fault::Broken : Fault::NoConnection;
    std::uint32_t reason = vantrel::ReasonSilent;
    if (waited == Waited::Lost) reason = m_conversation.GetReason();
    return Fail(fault, {m_module, ReasonText(reason)});
}

MaybeEnding Console::Await(const std::function<bool()>& done, Signals signals) {
    const Waited waited = m_conversation.Await(done, AnswerDue(), signals);
    if (waited == Waited::Done) return {};
    return EndingOf(waited);
}

MaybeEnding Console::AwaitResult(vantrel::RequestId id) {
    return Await([this, id] { return m_conversation.IsAnswered(id); });
}

// ---- the beginning

MaybeEnding Console::Connect() {
    if (!m_conversation.Connect(m_network, m_module)) return EndingOf(Waited::Lost);
    const std::int64_t until = AnswerDue();
    const Waited waited = m_conversation.Await([this] { return m_conversation.IsOpen(); }, until);
    if (waited == Waited::Done) return {};
    if (waited != Waited::TimeOut) return EndingOf(waited);
    m_conversation.End();
    return Fail(Fault::NoConnection, {m_module, ReasonText(vantrel::ReasonUnreachable)});
}

MaybeEnding Console::Enter() {
    if (MaybeEnding ending = Connect()) return ending;
    vantrel::LoginRequest login;
    login.moduleType = kModuleType;
    login.clientName = m_identity;
    login.user = m_call.login.GetUser();
    login.password = m_call.login.GetPassword();
    m_conversation.LogIn(std::move(login));
    const auto answered = [this] { return m_conversation.GetLoginResult() != nullptr; };
    if (MaybeEnding ending = Await(answered)) return ending;
    const vantrel::LoginResult& result = *m_conversation.GetLoginResult();
    if (result.code == 0) return {};
    const std::string user =
        m_call.login.GetUser().empty() ? std::string(kNobody) : m_call.login.GetUser();
    const std::string reason =
        result.text.empty() ? m_call.translator.Translate(kOtherKind) : result.text;
    return Fail(Fault::LoginRefused, {m_module, user, reason});
}

MaybeEnding Console::Open(std::vector<std::string> variables) {
    variables.emplace_back(console::kDocumentInfoVariable);
    m_conversation.Subscribe(variables);
    // The answer to a second subscription comes behind the announcement of the open scripts.
    m_conversation.Subscribe({std::string(console::kLogLevelVariable)});
    return Await([this] { return m_conversation.IsSubscribed(); });
}

bool Console::IsOpen(std::string_view script) const {
    return std::ranges::find(m_scripts, script) != m_scripts.end();
}

MaybeEnding Console::CheckScript(const std::string& script) {
    if (!IsOpen(script)) return Fail(Fault::ScriptNotOpen, {m_module, script});
    const int error = m_conversation.GetAccessError(script);
    if (error == vantrel::ResultNoAccess) return Fail(Fault::NoRight, {m_module});
    if (error >= 0) return Fail(Fault::ScriptNotOpen, {m_module, script});
    return {};
}

void Console::OnValue(const std::string& variable, const value::CVal& value) {
    if (variable != console::kDocumentInfoVariable) {
        if (m_listener != nullptr) m_listener->OnValue(variable, value);
        return;
    }
    std::string path;
    value.GetValData(value::ValueType::Text, path);
    const bool isClosed = path.starts_with(console::kClosedPrefix);
    if (isClosed) path.erase(0, 1);
    if (isClosed) std::erase(m_scripts, path);
    if (!isClosed && !IsOpen(path)) m_scripts.push_back(path);
    if (m_listener != nullptr) m_listener->OnValue(variable, value);
}

void Console::OnLog(vantrel::LogMessage message) {
    if (m_listener != nullptr) m_listener->OnLog(std::move(message));
}

}  // namespace kalvex::kalvexctl
