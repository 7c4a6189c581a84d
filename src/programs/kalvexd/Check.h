// What is wrong with the profile of a service and with its scripts, told without running them. Main
// thread.
#pragma once

#include <string>

#include "app/CmdLine.h"
#include "platform/Translator.h"
#include "programs/kalvexd/Options.h"

namespace kalvex::kalvexd {

// Reads `profile`, a path, with all that it names, and writes nothing. A line on standard error for
// each fault; the exit status: 0 when there is none, else 1.
int RunCheck(const KalvexdOptions& options, const app::CCmdLine& line, const std::string& profile,
             const platform::Translator& translator);

}  // namespace kalvex::kalvexd
