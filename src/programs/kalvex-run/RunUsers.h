// The users of a run: whoever the command line logs in, and the account of the process.
#pragma once

#include <string>

#include "platform/Users.h"
#include "platform/posix/AccountName.h"
#include "programs/kalvex-run/Options.h"

namespace kalvex::run {

class CRunUsers final : public platform::Users {
  public:
    explicit CRunUsers(const RunOptions& options)
        : m_strName(options.userName), m_strDescription(options.userDescription) {}

    std::string GetActiveUserName() const override { return m_strName; }
    std::string GetActiveUserDescription() const override { return m_strDescription; }
    std::string GetAccountName() const override { return platform::AccountName(); }

  private:
    std::string m_strName;
    std::string m_strDescription;
};

}  // namespace kalvex::run
