// Saves what a data server consists of, which may be running: its store, its users, and each file
// of its configuration.
#pragma once

#include <string>

#include "platform/Translator.h"
#include "server/Definitions.h"

namespace kalvex::server {

// Makes the folder (a system path), whole or not at all, for its owner alone; docs/data-server.md
// tells what is in it. False with what is wrong in `error`, such as that it is there already.
bool MakeBackup(const Definitions& definitions, const std::string& folder, platform::Notice& error);

}  // namespace kalvex::server
