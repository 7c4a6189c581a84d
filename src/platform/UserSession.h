// The user who is logged in to a program, out of the users' file. Main thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/Secret.h"
#include "platform/Translator.h"
#include "platform/UserManager.h"
#include "platform/UserStore.h"

namespace kalvex::platform {

class UserSession final : public UserManager {
  public:
    // The store outlives the session. The account is the one that the process runs under.
    UserSession(const UserStore& store, std::string accountName)
        : m_store(store), m_account(std::move(accountName)) {}
    ~UserSession() override { Logout(); }
    UserSession(const UserSession&) = delete;
    UserSession& operator=(const UserSession&) = delete;

    // For a window on a machine without users: from now on, while nobody is logged in, the account
    // counts as a user of its own name with the highest level, in no group. No server is given a
    // login for it. What the log is to say of it, an engine text.
    std::string TrustAccount(const Translator& translator);

    bool RegisterUser(std::string_view name, std::string_view password) override;
    bool CheckRight(int level) const override;
    void Logout();

    // Whether somebody is logged in and has the right, coming from that address.
    bool CheckActiveUserRight(std::string_view right, std::string_view address) const;

    std::string GetActiveUserName() const override;
    std::string GetActiveUserDescription() const override;
    std::string GetAccountName() const override { return m_account; }
    bool ActiveUserInfo(std::string& name, std::string& password) const override;

  private:
    const UserRecord* ActiveUser() const;  // null for nobody

    const UserStore& m_store;
    std::string m_account;
    std::optional<UserRecord> m_trusted;
    std::optional<UserRecord> m_user;  // as it was at the login
    Secret m_password;
};

}  // namespace kalvex::platform
