// With which user and password kalvexctl logs in. Main thread.
#pragma once

#include <string>

#include "platform/Translator.h"
#include "programs/kalvexctl/Endings.h"
#include "programs/kalvexctl/Loop.h"
#include "programs/kalvexctl/Options.h"

namespace kalvex::kalvexctl {

// Engine texts; without a user it is nobody's. The password is wiped at the end.
class Login {
  public:
    Login() = default;
    ~Login();
    Login(const Login&) = delete;
    Login& operator=(const Login&) = delete;

    // From the file that the options or $KALVEXCTL_LOGIN name, or from the terminal.
    MaybeEnding Read(const ControlOptions& options, Loop& loop,
                     const platform::Translator& translator);

    const std::string& GetUser() const { return m_user; }
    const std::string& GetPassword() const { return m_password; }

  private:
    MaybeEnding ReadFile(const std::string& path, const platform::Translator& translator);
    MaybeEnding AskAtTerminal(Loop& loop, const platform::Translator& translator);

    std::string m_user;
    std::string m_password;
};

}  // namespace kalvex::kalvexctl
