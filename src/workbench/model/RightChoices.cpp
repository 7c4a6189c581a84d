#include "workbench/model/RightChoices.h"

#include <functional>
#include <set>

namespace kalvex::workbench {

std::vector<RightChoice> ListRightChoices(const std::vector<platform::UserRecord>& users) {
    std::set<int, std::greater<>> levels{platform::kHighestLevel};
    std::set<std::string> groups;
    for (const platform::UserRecord& user : users) {
        levels.insert(user.level);
        groups.insert(user.groups.begin(), user.groups.end());
    }
    std::vector<RightChoice> choices;
    for (const int level : levels) choices.push_back({std::to_string(level), {}});
    for (const std::string& group : groups) choices.push_back({group, {}});
    for (RightChoice& choice : choices) {
        for (const platform::UserRecord& user : users) {
            if (platform::HasRight(user, choice.right, {})) choice.users.push_back(user.name);
        }
    }
    return choices;
}

}  // namespace kalvex::workbench
