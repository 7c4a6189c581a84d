// The command line of kalvexd: options of its own, which begin with "--", and those of a module.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "programs/kalvexd/SourceTasks.h"

namespace kalvex::kalvexd {

struct KalvexdOptions {
    std::string workingDir;  // absolute
    std::string logDir;      // absolute
    bool logStdout = false;
    std::string metrics;                 // where figures are read; empty: nowhere
    std::optional<SourceOrder> source;   // to be done instead of the service
    std::vector<std::string> arguments;  // of the module
};

struct KalvexdLine {
    KalvexdOptions options;
    std::optional<int> exitStatus = {};  // the process ends at once, with this
    std::string message = {};
};

// `currentDir` is what relative folders are relative to; absolute.
KalvexdLine ParseKalvexdLine(const std::vector<std::string>& arguments,
                             const std::string& currentDir);

}  // namespace kalvex::kalvexd
