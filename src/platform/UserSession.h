// The user who is logged in to a program, out of the users' file. Main thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/UserStore.h"
#include "platform/Users.h"

namespace kalvex {

class UserSession final : public Users {
  public:
    // The store outlives the session. The account is the one that the process runs under.
    UserSession(const UserStore& store, std::string accountName)
        : m_store(store), m_strAccount(std::move(accountName)) {}
    ~UserSession() override { Logout(); }
    UserSession(const UserSession&) = delete;
    UserSession& operator=(const UserSession&) = delete;

    // Logs the user in instead of whoever is; with a wrong password nothing changes. Takes as long
    // as the check of a password.
    bool RegisterUser(std::string_view name, std::string_view password);
    void Logout();

    // Whether the active user has at least this level; nobody has level 0.
    bool CheckRight(int level) const;
    // Whether somebody is logged in and has the right, coming from that address.
    bool CheckActiveUserRight(std::string_view right, std::string_view address) const;

    std::string GetActiveUserName() const override;
    std::string GetActiveUserDescription() const override;
    std::string GetAccountName() const override { return m_strAccount; }
    bool ActiveUserInfo(std::string& name, std::string& password) const override;

  private:
    const UserStore& m_store;
    std::string m_strAccount;
    std::optional<UserRecord> m_user;  // as it was at the login
    std::string m_strPassword;
};

}  // namespace kalvex
