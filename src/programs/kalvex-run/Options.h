// The command line of the runner.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "programs/CommandForm.h"

namespace kalvex::run {

// File names are as given; the user's texts are Windows-1250.
struct RunOptions {
    std::vector<std::string> scripts;   // at least one
    std::optional<std::int64_t> clock;  // virtual time at the first tick, seconds since 1970 GMT
    std::int64_t tickMs = 1;
    std::optional<std::int64_t> ticks;  // the limit; none is set by an empty one
    std::optional<std::int64_t> until;  // the clock's time at which the run ends, as clock
    std::optional<std::string> plant;
    std::optional<std::string> actions;
    std::optional<std::string> profile;
    std::string userName;  // empty: nobody is logged in
    std::string userDescription;
    std::optional<int> logLevel;
    bool minimised = false;
    bool json = false;
    bool lines = false;
    bool test = false;                 // the scripts, and those of folders, carry expectations
    std::optional<std::string> junit;  // with test
    // A word of the language to be told, empty for all of them; then there may be no script.
    std::optional<std::string> language;
};

struct CommandLine {
    RunOptions options;
    std::optional<int> exitStatus;  // set when there is nothing to run: 0 help, 2 wrong usage
    std::string message;            // what to print then, line end included
};

// `arguments` without the name of the program.
CommandLine ParseCommandLine(std::vector<std::string> arguments);

// For completion.
programs::CommandForm DescribeCommandLine();

}  // namespace kalvex::run
