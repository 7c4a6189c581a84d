// The command line of the data server.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/UserDirectory.h"
#include "programs/CommandForm.h"
#include "programs/ExitStatus.h"

namespace kalvex::sorvaned {

enum class SorvanedTask {
    Serve,
    Check,
    AddUser,
    ListUsers,
    ChangePassword,
    RemoveUser,
    BackUp,
    ShowHistory,
    ShowAlarms,
};

struct SorvanedOptions {
    SorvanedTask task = SorvanedTask::Serve;
    std::string configuration = "/etc/sorvane/sorvaned.toml";
    int logLevel = 2;
    std::string metrics = {};   // where figures are offered; empty: nowhere
    platform::UserRecord user;  // of a task with users; engine texts
    std::string backup;         // the folder to be made, a system path
    std::string variable = {};  // its name (UTF-8)
    std::optional<std::int64_t> at = {};
    bool versions = false;
    std::string pattern = "*";  // of names (UTF-8)
    bool active = false;
    std::optional<std::int64_t> from = {};
    std::optional<std::int64_t> to = {};
    bool json = false;
};

struct SorvanedLine {
    SorvanedOptions options;
    std::optional<int>
        exitStatus;       // set when there is nothing to do but to print: 0 help, 2 wrong usage
    std::string message;  // what to print then, line end included
};

// `arguments` without the name of the program.
SorvanedLine ParseSorvanedLine(std::vector<std::string> arguments);

// For completion.
programs::CommandForm DescribeCommandLine();

}  // namespace kalvex::sorvaned
