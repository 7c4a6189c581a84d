// Who may read and write which variables, and acknowledge their alarms: the access rules of the
// configuration. Main thread.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "platform/UserDirectory.h"
#include "server/Definitions.h"

namespace kalvex::server {

class Rights {
  public:
    explicit Rights(std::vector<AccessRule> rules = {});

    // The number of the rule that counts for the variable: the first that fits its name, or the
    // last one, which fits all.
    std::size_t RuleFor(std::string_view variable) const;

    struct Granted {
        bool read = false;
        bool write = false;
        bool acknowledge = false;
    };

    // What the user, coming from that address, may do under each rule.
    std::vector<Granted> GrantedTo(const platform::UserRecord& user,
                                   std::string_view address) const;

  private:
    std::vector<AccessRule> m_rules;
};

}  // namespace kalvex::server
