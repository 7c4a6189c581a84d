// Fills in what scripts for the completion of shells have to know of kalvexctl, out of the tables
// of its commands and options.
#pragma once

#include <string>

namespace kalvex::kalvexctl {

// The script with its places, such as @COMMANDS@, filled in.
std::string BashCompletion(std::string script);
std::string ZshCompletion(std::string script);
std::string FishCompletion(std::string script);

}  // namespace kalvex::kalvexctl
