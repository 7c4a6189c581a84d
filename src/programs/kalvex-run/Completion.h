// Fills in what scripts for the completion of shells have to know of kalvex-run, out of the table
// of its options.
#pragma once

#include <string>

namespace kalvex::run {

// The script with its places, such as @OPTIONS@, filled in.
std::string BashCompletion(std::string script);
std::string FishCompletion(std::string script);
std::string ZshCompletion(std::string script);

}  // namespace kalvex::run
