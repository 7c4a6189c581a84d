// Slows down who tries passwords. Main thread; times are seconds of elapsed time.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace kalvex::vantrel {

class LoginGate {
  public:
    // How long the next login has to wait, 0 when it may be tried now. Clients of this machine, who
    // have no address, are told apart by the user's name.
    std::int64_t Wait(std::string_view address, std::string_view user, std::int64_t now) const;

    // From the third failure in a row on the address has to wait: 2 s, then twice as long each time
    // up to 64 s. Ten minutes after that the failures are forgotten.
    void OnFailure(std::string_view address, std::string_view user, std::int64_t now);
    void OnSuccess(std::string_view address, std::string_view user);

  private:
    struct Record {
        int failures = 0;
        std::int64_t until = 0;  // when the next login may be tried
    };

    void MakeRoom(std::int64_t now);

    std::map<std::string, Record, std::less<>> m_records;
};

}  // namespace kalvex::vantrel
