// Checks who logs in to a server. Passwords are checked on a thread of their own, one at a time.
// Main thread.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <thread>

#include "platform/Clock.h"
#include "platform/MainLoop.h"
#include "platform/Translator.h"
#include "platform/UserStore.h"
#include "vantrel/LoginGate.h"
#include "vantrel/Messages.h"

namespace kalvex::vantrel {

// From where nobody, a client without a user, is let in.
enum class NobodyAccess { Never, Local, Always };

enum LoginCode : std::uint8_t {
    LoginOk = 0,
    LoginWrong = 1,  // no such user, another password, not from there
    LoginTooOften = 2,
    LoginOtherVersion = 3,
};

struct LoginVerdict {
    std::uint8_t code = LoginWrong;
    std::string text;           // for the client, why not
    platform::UserRecord user;  // with code 0
};

class LoginDesk {
  public:
    using Done = std::function<void(const LoginVerdict&)>;

    // All outlive the desk. The cost is the one of the users' passwords: a user who is not there
    // takes as long as one who is.
    LoginDesk(const platform::UserStore& users, const platform::Clock& clock,
              const platform::Translator& translator, platform::MainLoop& loop,
              platform::PasswordCost cost);
    ~LoginDesk();
    LoginDesk(const LoginDesk&) = delete;
    LoginDesk& operator=(const LoginDesk&) = delete;

    void AllowNobody(NobodyAccess access) { m_nobody = access; }

    // `done` is called when it is decided, from within the call or later; not at all once the desk
    // is gone. The user who is "NOBODY", or nameless, and has no password is nobody.
    void Check(LoginRequest request, std::string address, Done done);

  private:
    struct Pending {
        LoginRequest request;
        std::string address;
        Done done;
    };

    // What can be said without the password. True when that decides it; else `hash` is the one to
    // be checked, empty for a user who is not there.
    bool Decide(const Pending& pending, LoginVerdict& verdict, std::string& hash);
    LoginVerdict Conclude(const Pending& pending, LoginVerdict verdict, bool right);
    void Next();

    const platform::UserStore& m_users;
    const platform::Clock& m_clock;
    const platform::Translator& m_translator;
    platform::MainLoop& m_loop;
    NobodyAccess m_nobody = NobodyAccess::Never;
    const platform::PasswordCost m_cost;
    LoginGate m_gate;
    std::deque<Pending> m_pending;
    bool m_checking = false;
    const std::shared_ptr<bool> m_open = std::make_shared<bool>(true);
    std::thread m_checker;
};

}  // namespace kalvex::vantrel
