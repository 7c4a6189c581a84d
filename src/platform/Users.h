// Who is at work: the user logged in to the family's user management, and the account of the
// process. Main thread; engine texts (Windows-1250), empty when nobody is logged in.
#pragma once

#include <string>

namespace kalvex::platform {

class Users {
  public:
    virtual ~Users() = default;
    virtual std::string GetActiveUserName() const = 0;
    virtual std::string GetActiveUserDescription() const = 0;
    virtual std::string GetAccountName() const = 0;

    // What to log in to a server with; false, with both empty, when nobody is logged in.
    virtual bool ActiveUserInfo(std::string& name, std::string& password) const {
        name = GetActiveUserName();
        password.clear();
        return !name.empty();
    }
};

}  // namespace kalvex::platform
