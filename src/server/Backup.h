// Saves what a data server consists of, which may be running: its store, its users, and each file
// of its configuration.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/Translator.h"
#include "server/Definitions.h"

namespace kalvex::server {

// Of a backup.
struct BackupFile {
    std::string name;    // in its folder
    std::string origin;  // a system path
    std::uint64_t bytes = 0;
};

// Makes the folder (a system path), whole or not at all, for its owner alone; docs/data-server.md
// tells what is in it; `files` get those that were saved, by name. False with what is wrong in
// `error`, such as that it is there already.
bool MakeBackup(const Definitions& definitions, const std::string& folder,
                std::vector<BackupFile>& files, platform::Notice& error);

}  // namespace kalvex::server
