// Who is logged in, as a test sets it. Nobody is, unless told.
#pragma once

#include <string>

#include "platform/Users.h"
#include "text/CodePage.h"

namespace kalvex::support {

class FixedUser final : public platform::Users {
  public:
    std::string GetActiveUserName() const override { return text::FromUtf8(name); }
    std::string GetActiveUserDescription() const override { return text::FromUtf8(description); }
    std::string GetAccountName() const override { return text::FromUtf8(account); }

    std::string name;  // these are UTF-8
    std::string description;
    std::string account;
};

}  // namespace kalvex::support
