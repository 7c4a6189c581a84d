// Whether a run was what its test expects.
#pragma once

#include <string>
#include <vector>

#include "programs/kalvex-run/ScriptTest.h"

namespace kalvex::run {

// Everything that is not as expected, a line for each, and of a log that differs every line with
// its mark; none if the test passes. Local times are those of the zone of the process.
std::vector<std::string> Differences(const ScriptTest& test, const TestOutcome& run);

}  // namespace kalvex::run
