// The users in an SQLite file. Several programs may have the file open; each operation sees what
// the last one left. Main thread, unless said otherwise. Reasons are engine texts,
// Polish ones still to be translated.
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/PasswordHash.h"
#include "platform/Sqlite.h"
#include "platform/UserDirectory.h"

namespace kalvex::platform {

// In characters; the first holds for groups as well.
inline constexpr std::size_t kLongestUserName = 64;
inline constexpr std::size_t kLongestPassword = 256;

struct UserFinding {
    std::optional<UserRecord> record;
    std::string hash;   // of the password
    std::string fault;  // which file could not be read, and why
};

class UserStore final : public UserDirectory {
  public:
    explicit UserStore(PasswordCost cost = PasswordCost::Interactive) : m_cost(cost) {}

    // Makes the file, for nobody but its owner to read, if it is not there.
    bool Open(const std::string& path, std::string& error);

    // False for a user whose name is taken, a name or a level that cannot be, a group without a
    // name or one that reads as a level, an address that is none. Names are one whatever the case
    // of their letters.
    bool Add(const UserRecord& user, std::string_view password, std::string& error);
    bool SetPassword(std::string_view name, std::string_view password, std::string& error);
    bool Remove(std::string_view name, std::string& error);
    bool List(std::vector<UserRecord>& users, std::string& error) const;  // by name

    // Waits for who has locked the file.
    std::optional<UserRecord> Find(std::string_view name) const;
    // On a connection of its own, a quarter of a second at most for who has locked the file. Any
    // thread, once the store is open.
    UserFinding FindAside(std::string_view name) const;

    // ---- without a wait: while the file is locked, users are as they were seen last

    bool CheckUserRight(std::string_view user, std::string_view right,
                        std::string_view address) const override;
    int GetUserRightLevel(std::string_view user, std::string_view address) const override;
    bool IsUserADAccount(std::string_view) const override { return false; }
    std::vector<std::string> GetGroups() const override;

  private:
    bool Fail(std::string& error) const;
    std::optional<UserRecord> FindNow(std::string_view name) const;

    std::string m_path;
    PasswordCost m_cost;
    mutable SqliteDatabase m_database;
    mutable std::map<std::string, UserRecord> m_lastSeen;
};

}  // namespace kalvex::platform
