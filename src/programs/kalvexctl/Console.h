// A module that has let this process in: its scripts, and waiting for its answers. Main thread;
// engine texts.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "programs/kalvexctl/Call.h"
#include "programs/kalvexctl/Conversation.h"
#include "vantrel/network/NetworkClient.h"

namespace kalvex::kalvexctl {

class Console final : private ConversationListener {
  public:
    explicit Console(Call& call);
    ~Console() override;

    MaybeEnding Enter();

    Conversation& Talk() { return m_conversation; }
    const std::string& GetModule() const { return m_module; }
    // Of this process among the module's clients, and of the module.
    const std::string& GetIdentity() const { return m_identity; }
    const std::string& GetModuleIdentity() const;

    // Hears of the variables that are none of the module's own, and of the log.
    void SetListener(ConversationListener* listener) { m_listener = listener; }

    // Subscribes the variables, none or more, and learns which scripts are open.
    MaybeEnding Open(std::vector<std::string> variables);
    const std::vector<std::string>& Scripts() const { return m_scripts; }
    bool IsOpen(std::string_view script) const;
    // After Open with the script's variable.
    MaybeEnding CheckScript(const std::string& script);

    // Until the condition holds; an ending when it does not within the time-out of an answer.
    MaybeEnding Await(const std::function<bool()>& done, Signals signals = Signals::End);
    MaybeEnding AwaitResult(vantrel::RequestId id);
    // Of a wait that came to nothing.
    Ending EndingOf(Waited waited);
    std::int64_t AnswerDue() const;

    Ending Fail(Fault fault, std::initializer_list<std::string_view> values) const {
        return m_call.Fail(fault, values);
    }

  private:
    void OnValue(const std::string& variable, const value::CVal& value) override;
    void OnLog(vantrel::LogMessage message) override;
    std::string ReasonText(std::uint32_t reason) const;
    MaybeEnding Connect();

    Call& m_call;
    const std::string m_module;
    const std::string m_identity;
    vantrel::NetworkClient m_network;
    Conversation m_conversation;
    ConversationListener* m_listener = nullptr;
    std::vector<std::string> m_scripts;
};

// MODULE_HOST.ACCOUNT.PID_RC
std::string ClientIdentity(const std::string& module);

}  // namespace kalvex::kalvexctl
