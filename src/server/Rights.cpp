#include "server/Rights.h"

#include <algorithm>
#include <utility>

#include "text/PatternMatch.h"

namespace kalvex::server {

Rights::Rights(std::vector<AccessRule> rules) : m_rules(std::move(rules)) {
    m_rules.emplace_back();
}

std::size_t Rights::RuleFor(std::string_view variable) const {
    const auto rule =
        std::find_if(m_rules.begin(), m_rules.end(), [variable](const AccessRule& candidate) {
            return text::CompareWithPattern(
                variable, candidate.variables,
                text::PatternOption::Wildcards | text::PatternOption::Whole);
        });
    return static_cast<std::size_t>(rule - m_rules.begin());
}

std::vector<Rights::Granted> Rights::GrantedTo(const platform::UserRecord& user,
                                               std::string_view address) const {
    std::vector<Granted> granted;
    for (const AccessRule& rule : m_rules) {
        granted.push_back({platform::HasRight(user, rule.read, address),
                           platform::HasRight(user, rule.write, address),
                           platform::HasRight(user, rule.acknowledge, address)});
    }
    return granted;
}

}  // namespace kalvex::server
