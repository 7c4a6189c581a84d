// The logins of data servers in a profile and the key of its passwords, managed from the command
// line. Main thread.
#pragma once

#include <string>

#include "platform/Translator.h"

namespace kalvex::kalvexd {

enum class SourceTask { Add, List, Remove, Protect };

struct SourceOrder {
    SourceTask task = SourceTask::List;
    std::string name;  // engine texts
    std::string user;  // of Add
};

// Add gives the source this login, whether it is there or not, with a password that is asked for.
// List prints name and user of each, separated by a tab. Protect prints a password that is asked
// for in the form for a script, under the key of the profile. The exit status: 0 done, 1 a failure
// that the standard error output tells of.
int RunSourceTask(const SourceOrder& order, const std::string& profile,
                  const platform::Translator& translator);

}  // namespace kalvex::kalvexd
