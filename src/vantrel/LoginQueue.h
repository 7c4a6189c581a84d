// Logins whose passwords wait to be checked, in groups that take turns. Main thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/UserDirectory.h"
#include "vantrel/Messages.h"

namespace kalvex::vantrel {

enum LoginCode : std::uint8_t {
    LoginOk = 0,
    LoginWrong = 1,   // no such user, another password, not from there
    LoginNotNow = 2,  // too many failures, or the password cannot be checked
    LoginOtherVersion = 3,
};

struct LoginVerdict {
    std::uint8_t code = LoginWrong;
    std::string text;           // for the client, why not
    platform::UserRecord user;  // with code 0
    std::string fault = {};     // for the log: why the password cannot be checked
};

struct PendingLogin {
    LoginRequest request;
    std::string address;
    std::weak_ptr<const void> asker;  // the login is not wanted any more when it is gone
    std::function<void(const LoginVerdict&)> done;
    std::int64_t since = 0;
    bool hasTurn = false;  // no brake holds it up
};

using PendingLoginPtr = std::unique_ptr<PendingLogin>;

class LoginQueue {
  public:
    LoginQueue(std::size_t mostOfGroup, std::size_t most)
        : m_mostOfGroup(mostOfGroup), m_most(most) {}

    // Those that are not wanted any more leave. If there are too many then, the answer is one that
    // has no place: one of this group, in which all that have come since one was taken have the
    // same chance to stay, or, when all groups together are too many, one of the largest.
    PendingLoginPtr Put(std::string_view group, PendingLoginPtr login);

    // Whether one more of this group has a place without another one losing its own.
    bool HasRoom(std::string_view group);

    // The first one of the group that has waited longest for its turn; null when there is none.
    PendingLoginPtr Take();
    // One of the group by chance; the other groups come before it then.
    PendingLoginPtr Draw(std::string_view group);

    // That which has waited longest comes first.
    std::vector<std::string> Groups() const;
    bool HasGroup(std::string_view group);
    std::size_t Size() const;
    std::vector<PendingLoginPtr> TakeGroup(std::string_view group);
    // Those that came before.
    std::vector<PendingLoginPtr> TakeOlder(std::int64_t since);

  private:
    struct Group {
        std::string name;
        std::deque<PendingLoginPtr> logins;
        std::size_t candidates = 0;  // since one was taken, with those that were there then
    };
    using GroupList = std::list<Group>;

    GroupList::iterator Find(std::string_view name);
    PendingLoginPtr DrawFrom(GroupList::iterator group);
    void DropUnwanted();
    static void DropUnwanted(Group& group);

    const std::size_t m_mostOfGroup;
    const std::size_t m_most;
    GroupList m_groups;  // none is empty; the first one is next
};

}  // namespace kalvex::vantrel
