// Who has logged in with a password in the last hour. Main thread; times are seconds of elapsed
// time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace kalvex::vantrel {

class KnownLogins {
  public:
    // An empty token is none.
    void Note(std::string_view address, std::string_view user, std::string_view token,
              std::int64_t now);
    // A token from which a wrong password comes is known no longer.
    void Forget(std::string_view address, std::string_view user, std::string_view token);

    bool KnowsAddress(std::string_view address, std::int64_t now) const;
    bool KnowsUser(std::string_view address, std::string_view user, std::int64_t now) const;
    // The program that the user came with; nobody else can name its token.
    bool KnowsToken(std::string_view address, std::string_view user, std::string_view token,
                    std::int64_t now) const;

  private:
    bool Knows(const std::string& key, std::int64_t now) const;
    void Keep(std::string key, std::int64_t now);

    std::map<std::string, std::int64_t> m_seen;
};

}  // namespace kalvex::vantrel
