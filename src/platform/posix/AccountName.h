#pragma once

#include <string>

namespace kalvex {

// The account under which the process runs (Windows-1250); its number when the system has no name
// for it.
std::string AccountName();

}  // namespace kalvex
