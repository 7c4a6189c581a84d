// The command line of the data server.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/UserDirectory.h"
#include "programs/CommandForm.h"
#include "programs/ExitStatus.h"
#include "value/Status.h"

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
    Acknowledge,
    ShowValues,
    Export,
    Import,
    CheckStore,
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
    bool active = false;
    bool json = false;
    std::vector<std::string> names = {};    // of variables, or patterns (UTF-8)
    std::string pattern = "*";              // the same, one alone
    std::optional<std::int64_t> from = {};  // both are included
    std::optional<std::int64_t> to = {};
    value::ValueKind kind = value::KindArchive;
    bool csv = false;
    bool watch = false;
    std::string file = {};  // a system path
    bool write = false;
    std::string asUser = {};  // who asks the server (UTF-8); empty: NOBODY
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
