// What kalvexctl says to a module and hears of it: one conversation, which is waited for step by
// step and never opened anew. Main thread; engine texts.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "programs/kalvexctl/Loop.h"
#include "vantrel/Transport.h"

namespace kalvex::kalvexctl {

// How a wait ended.
enum class Waited { Done, TimeOut, Signal, Lost };

// Whether a signal ends a wait.
enum class Signals { End, Wait };

class ConversationListener {
  public:
    virtual ~ConversationListener() = default;
    // A change of a subscribed variable; what it held when it was subscribed is none.
    virtual void OnValue(const std::string& variable, const value::CVal& value) = 0;
    virtual void OnLog(vantrel::LogMessage) {}
};

class Conversation final : private vantrel::ClientTransportEvents {
  public:
    explicit Conversation(Loop& loop) : m_loop(loop) {}
    ~Conversation() override;
    Conversation(const Conversation&) = delete;
    Conversation& operator=(const Conversation&) = delete;

    // Null when there is no way to the module; see GetReason. The factory outlives it.
    bool Connect(vantrel::TransportFactory& factory, std::string_view module);
    // Null: nobody listens. Outlives the conversation, or is taken off before.
    void SetListener(ConversationListener* listener) { m_listener = listener; }

    // Until the condition holds; milliseconds of Loop::Now.
    Waited Await(const std::function<bool()>& done, std::int64_t until,
                 Signals signals = Signals::End, int descriptor = -1);

    // ---- states

    bool IsOpen() const { return m_opened && !m_lost; }
    bool IsLost() const { return m_lost; }
    // Why it could not be opened, or is lost.
    std::uint32_t GetReason() const { return m_reason; }

    // ---- said to the module

    void LogIn(vantrel::LoginRequest login);
    const vantrel::LoginResult* GetLoginResult() const { return m_login ? &*m_login : nullptr; }

    void Subscribe(const std::vector<std::string>& variables, std::uint32_t flags = 0);
    // Whether everything that has been subscribed so far has been answered.
    bool IsSubscribed() const;
    // Of an access error that stands; -1 when there is none.
    int GetAccessError(std::string_view variable) const;
    // What the variable held when it was subscribed, or holds since.
    const value::CVal& GetValue(std::string_view variable) const;

    vantrel::RequestId Write(std::string_view variable, value::CVal value);
    // A write that changes nothing and is always refused, by what rights the user has. Its answer
    // comes when all that was sent before has been handled.
    vantrel::RequestId Probe();
    bool IsAnswered(vantrel::RequestId id) const { return m_results.count(id) != 0; }
    // Of one that has been answered.
    std::uint16_t GetResult(vantrel::RequestId id) const { return m_results.at(id); }

    void AskLastMessages(std::uint32_t count);

    // Orderly, or as a connection that breaks.
    void End();
    void Break();

  private:
    struct Subscription {
        std::string name;
        bool answered = false;
        int error = -1;
        value::CVal value = {};
    };

    void OnOpened() override { m_opened = true; }
    void OnMessage(vantrel::ServerMessage message) override;
    void OnFault(vantrel::ConnectionFault fault, std::uint32_t reason) override;
    void OnClosed(std::uint32_t reason) override;

    void Receive(vantrel::LoginResult& message) { m_login = std::move(message); }
    void Receive(vantrel::ValueUpdates& message);
    void Receive(vantrel::AccessErrors& message);
    void Receive(vantrel::ModifyResults& message);
    void Receive(vantrel::LogMessage& message);
    template <class Message>
    void Receive(Message&) {}

    const Subscription* Find(std::string_view variable) const;
    vantrel::RequestId Modify(vantrel::ModifyRequest request);

    Loop& m_loop;
    ConversationListener* m_listener = nullptr;
    std::unique_ptr<vantrel::ClientTransport> m_transport;
    bool m_opened = false;
    bool m_lost = false;
    std::uint32_t m_reason = 0;
    std::optional<vantrel::LoginResult> m_login;
    std::map<vantrel::VariableHandle, Subscription> m_subscriptions;
    std::map<vantrel::RequestId, std::uint16_t> m_results;
    vantrel::RequestId m_lastRequest = 0;
};

}  // namespace kalvex::kalvexctl
