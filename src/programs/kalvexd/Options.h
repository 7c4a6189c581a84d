// The command line of kalvexd: options of its own, which begin with "--", and those of a module.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "programs/OptionTable.h"
#include "programs/kalvexd/SourceTasks.h"

namespace kalvex::kalvexd {

struct KalvexdOptions : programs::ModuleOptions {
    bool logStdout = false;
    bool check = false;                 // to be done instead of the service
    std::string metrics;                // where figures are read; empty: nowhere
    std::optional<SourceOrder> source;  // to be done instead of the service
};

using KalvexdLine = programs::OptionLine<KalvexdOptions>;

// `currentDir` is what relative folders are relative to; absolute.
KalvexdLine ParseKalvexdLine(const std::vector<std::string>& arguments,
                             const std::string& currentDir);

// For completion.
programs::CommandForm DescribeCommandLine();

}  // namespace kalvex::kalvexd
