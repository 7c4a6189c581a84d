// What came of tests as JUnit XML, which build servers read.
#pragma once

#include <span>
#include <string>

#include "programs/kalvex-run/TestRun.h"

namespace kalvex::run {

// One suite; a case is a script, its class the folder.
std::string JUnitXml(std::span<const TestReport> reports);

}  // namespace kalvex::run
