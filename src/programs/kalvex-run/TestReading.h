// What the instructions of a test and the result of its run are taken apart by.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "programs/kalvex-run/ScriptTest.h"

namespace kalvex::run {

// As a shell parts a line: by blanks, with quotes and backslashes. Throws TestFault at an open
// quote.
std::vector<std::string> SplitShellWords(std::string_view text);

// The part of a JSON value that a path such as scripts.0.priority leads to. Throws TestFault where
// it leads nowhere.
TestJson ReadPath(const TestJson& value, std::string_view path);

// A field of the cell of a variable, of its cells, or of the variable itself. `name` may have the
// suffix of a report or of the archive. Throws TestFault where there is none.
TestJson ReadVariable(const TestJson& script, const std::string& name, const std::string& field);

}  // namespace kalvex::run
