// The command line of kalvex: options of its own, which begin with "--", and those of a module.
#pragma once

#include <string>
#include <vector>

#include "programs/OptionTable.h"

namespace kalvex::desk {

using DeskLine = programs::OptionLine<programs::ModuleOptions>;

// `currentDir` is what relative folders are relative to; absolute.
// Its working folder is empty when nobody has said which, and so is that of the log then. Scripts
// are given by absolute paths afterwards.
DeskLine ParseDeskLine(std::vector<std::string> arguments, const std::string& currentDir);

// For completion.
programs::CommandForm DescribeCommandLine();

// Where the program works when nobody has said where: in the current folder or, begun there by a
// desktop, in that of the user's data, which need not be there. `home` and `dataHome` are the
// variables HOME and XDG_DATA_HOME, empty when they are not set.
std::string UsualFolder(const std::string& currentDir, const std::string& home,
                        const std::string& dataHome);

}  // namespace kalvex::desk
