// Runs scripts that carry their expectations and tells which of them hold.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "programs/ExitStatus.h"

namespace kalvex::run {

// `paths` are scripts, and folders of which all scripts are meant but those below a folder whose
// name ends with ".d". Prints a line for each and what was not as expected; with `junit` the same
// goes to that file as JUnit XML. Refused, with the reason in `fault`, when a path is not there,
// nothing has expectations, or the file cannot be written.
programs::ExitStatus RunScriptTests(const std::vector<std::string>& paths,
                                    const std::optional<std::string>& junit, std::string& fault);

}  // namespace kalvex::run
