// Checks who logs in to a server. Users are looked up and passwords checked on a thread of their
// own, one at a time. Main thread.
//
// Who belongs comes before strangers: a user who has logged in from there in the last hour, and one
// who brings the token of such a login even while a brake is on. Strangers take turns by address,
// and so do those who were drawn while a brake is on.
// What waits is bounded; one login too many is answered that it cannot be checked.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <thread>

#include "platform/Clock.h"
#include "platform/MainLoop.h"
#include "platform/Translator.h"
#include "platform/UserStore.h"
#include "vantrel/KnownLogins.h"
#include "vantrel/LoginGate.h"
#include "vantrel/LoginQueue.h"
#include "vantrel/Messages.h"

namespace kalvex::vantrel {

// From where nobody, a client without a user, is let in.
enum class NobodyAccess { Never, Local, Always };

// What the log is to say of a verdict that tells a fault, an engine text.
std::string LoginFaultLine(const LoginVerdict& verdict, const platform::Translator& translator);

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
    // or the asker is gone. The user who is "NOBODY", or nameless, and has no password is nobody.
    void Check(LoginRequest request, std::string address, std::weak_ptr<const void> asker,
               Done done);

    // About once a second: the turns of those who wait for a brake.
    void Step();

    // Whether a password is being checked.
    bool IsChecking() const { return m_checking; }
    // Whether the login bears the token of one with a password in the last hour.
    bool KnowsProgram(const LoginRequest& request, std::string_view address) const;
    // Whether somebody has logged in from there with a password in the last hour.
    bool KnowsAddress(std::string_view address) const;

  private:
    // What the thread has found out.
    struct Finding {
        platform::UserFinding user;
        bool isRight = false;
    };

    // What can be said without the password. True when that decides it.
    bool Decide(const PendingLogin& login, LoginVerdict& verdict) const;
    void Enqueue(PendingLoginPtr login);
    // True when a brake holds it up.
    bool Hold(PendingLoginPtr& login);
    std::string BrakeFor(const PendingLogin& login);
    PendingLoginPtr TakeNext();
    void Next();
    void Begin(std::shared_ptr<PendingLogin> login);
    Finding LookUp(const PendingLogin& login) const;  // on the thread
    LoginVerdict Conclude(const PendingLogin& login, Finding finding);
    static void Answer(const PendingLogin& login, const LoginVerdict& verdict);
    LoginVerdict NotNow(std::string fault = {}) const;
    LoginVerdict TooOften(const std::string& brake) const;

    const platform::UserStore& m_users;
    const platform::Clock& m_clock;
    const platform::Translator& m_translator;
    platform::MainLoop& m_loop;
    NobodyAccess m_nobody = NobodyAccess::Never;
    const platform::PasswordCost m_cost;
    LoginGate m_gate;
    KnownLogins m_known;
    LoginQueue m_familiar;   // by user and address, or by token
    LoginQueue m_strangers;  // by address
    LoginQueue m_held;       // by the brake that they wait for
    LoginQueue m_drawn;      // of those, by address
    int m_familiarInARow = 0;
    bool m_drawnNext = false;
    bool m_checking = false;
    const std::shared_ptr<bool> m_open = std::make_shared<bool>(true);
    std::thread m_checker;
};

}  // namespace kalvex::vantrel
