// The command line of kalvexd: options of its own, which begin with "--", and those of a module.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace kalvex {

struct KalvexdOptions {
    std::string workingDir;  // absolute
    std::string logDir;      // absolute
    bool logStdout = false;
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

}  // namespace kalvex
