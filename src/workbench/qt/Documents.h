// Where the manual of the language lies. Any thread.
#pragma once

#include <string>

namespace kalvex::window {

// Installed beside the program, or in the folder that it was built from; a path of the system.
std::string LanguageManual();

}  // namespace kalvex::window
