// How the log tells of logins at a module. Engine texts.
#pragma once

#include <string>

#include "console/ModuleConsole.h"
#include "platform/Translator.h"
#include "platform/UserDirectory.h"

namespace kalvex::console {

std::string LoginText(const ConsoleWriter& client, bool accepted,
                      const platform::UserDirectory& users, const platform::Translator& translator);

}  // namespace kalvex::console
