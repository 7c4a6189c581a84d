// Slows down who tries passwords. Main thread; times are seconds of elapsed time.
//
// A brake is on a user at one address, and another one on the address itself. While it is on, tries
// are drawn: one of those that wait is checked at each turn of the brake, so that a right password
// comes through whoever else guesses, and guessing is no faster for many tries at once.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace kalvex::vantrel {

class LoginGate {
  public:
    // One user at one address, whatever the case of the name.
    static std::string KeyOf(std::string_view address, std::string_view user);
    // Of a brake.
    static std::string AddressOf(const std::string& brake);

    // The brake that a try has to wait for, empty when there is none. Who is known there is not
    // held up by the brake of the address.
    std::string BrakeOn(std::string_view address, std::string_view user, bool isKnown,
                        std::int64_t now) const;
    // How long that brake is on; 0 for one that is not.
    std::int64_t Wait(const std::string& brake, std::int64_t now) const;

    // Whether one of those who wait for the brake may be checked now; that was its turn then.
    bool TakeTurn(const std::string& brake, std::int64_t now);

    // From the third failure in a row on the user has to wait at that address: 2 s, then 4 s each
    // time. Ten minutes after that the failures are forgotten. The first three of each user count
    // for the address as well, which has to wait from the twentieth on; this machine, the empty
    // address, does not.
    void OnFailure(std::string_view address, std::string_view user, std::int64_t now);
    // For the user alone.
    void OnSuccess(std::string_view address, std::string_view user);

  private:
    struct Record {
        int failures = 0;
        std::int64_t until = 0;  // when the next login may be tried
    };

    using Records = std::map<std::string, Record>;

    static int Count(Records& records, std::string key, int freeFailures, std::int64_t now);
    static void MakeRoom(Records& records, std::int64_t now);

    Records m_users;  // at their addresses
    Records m_addresses;
};

}  // namespace kalvex::vantrel
