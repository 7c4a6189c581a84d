// Whose conversations a server has: those in which somebody has logged in, and those in which
// nobody has yet, which are bounded so that they keep nobody out. Main thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace kalvex::vantrel {

class ConversationSlots {
  public:
    // Who has not logged in: says nothing, waits for its password to be checked, or does so with a
    // token that is known. The former go before the latter; who is known does not go.
    enum class Standing : std::uint8_t { Silent, Checked, Known };

    struct Entry {
        bool isTaken = false;      // else there is no room for it
        std::uint64_t leaves = 0;  // the conversation that has to go for it; 0: none
    };

    // `isKnown`: somebody has logged in from there lately. Without a login a quarter of the `most`
    // conversations may be of one address, and three quarters of addresses that are not known; then
    // the oldest one of them goes.
    Entry Enter(std::uint64_t number, std::string address, bool isKnown, std::size_t most);
    void SetStanding(std::uint64_t number, Standing standing);
    void OnLogin(std::uint64_t number);
    void Leave(std::uint64_t number);

  private:
    struct Waiting {
        std::uint64_t number;
        std::string address;
        bool isKnown;
        Standing standing = Standing::Silent;
    };

    template <class Condition>
    std::uint64_t Oldest(Condition condition) const;
    std::uint64_t WhoLeaves(const std::string& address, bool isKnown, std::size_t most) const;

    std::vector<Waiting> m_waiting;  // by their coming
    std::set<std::uint64_t> m_loggedIn;
};

}  // namespace kalvex::vantrel
