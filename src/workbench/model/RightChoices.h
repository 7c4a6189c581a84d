// What a right may be set to: the levels and groups of the people in the users' file. Engine texts.
#pragma once

#include <string>
#include <vector>

#include "platform/UserDirectory.h"

namespace kalvex::workbench {

struct RightChoice {
    std::string right;               // a level or the name of a group
    std::vector<std::string> users;  // who has it then, by name
};

// The levels of the users, highest first, that of an administrator always among them; then their
// groups by name.
std::vector<RightChoice> ListRightChoices(const std::vector<platform::UserRecord>& users);

}  // namespace kalvex::workbench
