// The user management of the family, as the application uses it. Main thread; engine texts.
#pragma once

#include <string_view>

#include "platform/Users.h"

namespace kalvex::platform {

class UserManager : public Users {
  public:
    // Logs the user in instead of whoever is; with a wrong password nothing changes. Takes as long
    // as the check of a password.
    virtual bool RegisterUser(std::string_view name, std::string_view password) = 0;

    // Whether the active user has at least this level; nobody has level 0.
    virtual bool CheckRight(int level) const = 0;
};

}  // namespace kalvex::platform
