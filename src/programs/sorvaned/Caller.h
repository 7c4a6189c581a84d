// Asks a server that runs on this machine, for a command: by its local socket, as a client like any
// other, so that rights hold. Main thread; what goes wrong is told on standard error.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "platform/LogSink.h"
#include "platform/Secret.h"
#include "platform/Translator.h"
#include "platform/posix/PosixMainLoop.h"
#include "server/Definitions.h"
#include "vantrel/ClientConnection.h"
#include "vantrel/network/NetworkClient.h"

namespace kalvex::sorvaned {

class Caller;

// The conversation of a command, which adds what it wants to hear. A hook that is overridden calls
// the one of this class.
class CalledServer : public vantrel::CClientConnection {
  public:
    // The caller outlives it.
    explicit CalledServer(Caller& caller) : m_caller(caller) {}
    ~CalledServer() override;
    CalledServer(const CalledServer&) = delete;
    CalledServer& operator=(const CalledServer&) = delete;

  protected:
    void OnConnectionFault(vantrel::ConnectionFault fault, std::uint32_t code) override;
    void OnServerAccess(bool denied, std::string_view text) override;
    void OnConnect() override;
    void OnDisconnect(std::uint32_t reason) override;

  private:
    Caller& m_caller;
};

// What a break of the connection means to who waits.
enum class Breaks { End, WaitOut };

class Caller final : public platform::LogSink {
  public:
    // Both outlive it.
    Caller(const server::Definitions& definitions, const platform::Translator& translator);
    ~Caller() override;
    Caller(const Caller&) = delete;
    Caller& operator=(const Caller&) = delete;

    // As whom to log in (UTF-8; empty: NOBODY, who has no password): asks for the password. False
    // when none is given.
    bool TakeLogin(const std::string& user);

    // Dials, logs in under the client's name, and waits for it. Called once, and before there is
    // any other thread: from now on SIGINT and SIGTERM only end waits. False when it has come to
    // nothing.
    bool Enter(CalledServer& server, std::string_view client, Breaks breaks);

    // Until the condition holds. False when it cannot any more: a signal has come, the reader of
    // standard output has gone, the login is refused, or the connection broke.
    bool Await(const std::function<bool()>& done);

    bool IsSignalled() const { return m_signalled; }
    // There will be no answers any more.
    bool IsRefused() const { return m_over; }
    const platform::Translator& GetTranslator() const { return m_translator; }
    // A line on standard error.
    void Tell(const platform::Notice& notice) const;
    // What the connection has to say.
    void Log(std::string_view text, int level) override;

  private:
    friend class CalledServer;

    void OnBreak(const CalledServer& server, std::uint32_t reason);

    const server::Definitions& m_definitions;
    const platform::Translator& m_translator;
    std::string m_user;
    platform::Secret m_password;
    Breaks m_breaks = Breaks::End;
    bool m_connected = false;  // the login has been accepted once
    bool m_reached = false;    // there has been a conversation
    bool m_logged = false;     // the connection has told something since the last fault
    bool m_over = false;       // there will be no answers
    bool m_signalled = false;
    platform::PosixMainLoop m_loop;
    CalledServer* m_server = nullptr;                  // while there is one
    std::unique_ptr<vantrel::NetworkClient> m_client;  // from Enter on
};

}  // namespace kalvex::sorvaned
