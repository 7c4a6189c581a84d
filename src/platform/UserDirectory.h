// The people who may log in and what each of them may do. Main thread; engine texts (Windows-1250).
//
// A user has a level from 0 to 100, where 100 is an administrator's, and belongs to groups. A right
// is a text: a number is the least level that has it, anything else is a group whose members have
// it. A user may be bound to addresses: from elsewhere he has no rights at all.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kalvex::platform {

inline constexpr int kHighestLevel = 100;

// Who comes without a login; no user can have the name.
inline constexpr std::string_view kNobody = "NOBODY";

struct UserRecord {
    std::string name;
    std::string description;
    int level = 0;
    std::vector<std::string> groups;
    // From where the user may come: "10.1.2.3", "10.1.0.0/16", "fd00::/8". Empty: from anywhere.
    // A program on the same machine has the empty address and is always let in.
    std::vector<std::string> addresses;
};

// A level or the name of a group, which is not empty and not all digits.
bool IsRightText(std::string_view right);

bool MayComeFrom(const UserRecord& user, std::string_view address);

// Whether the user, coming from that address, has the right.
bool HasRight(const UserRecord& user, std::string_view right, std::string_view address);

class UserDirectory {
  public:
    virtual ~UserDirectory() = default;

    // All three are false and 0 for a user who is not there.
    virtual bool CheckUserRight(std::string_view user, std::string_view right,
                                std::string_view address) const = 0;
    virtual int GetUserRightLevel(std::string_view user, std::string_view address) const = 0;
    virtual bool IsUserADAccount(std::string_view user) const = 0;

    // All groups that a user belongs to, in the order of their names.
    virtual std::vector<std::string> GetGroups() const = 0;
};

}  // namespace kalvex::platform
