// The users of a run: whoever the command line logs in, and the account of the process.
#pragma once

#include <string>

#include "platform/Users.h"
#include "platform/posix/AccountName.h"
#include "programs/kalvex-run/Options.h"

namespace kalvex::run {

class RunUsers final : public platform::Users {
  public:
    explicit RunUsers(const RunOptions& options)
        : m_name(options.userName), m_description(options.userDescription) {}

    std::string GetActiveUserName() const override { return m_name; }
    std::string GetActiveUserDescription() const override { return m_description; }
    std::string GetAccountName() const override { return platform::AccountName(); }

  private:
    std::string m_name;
    std::string m_description;
};

}  // namespace kalvex::run
