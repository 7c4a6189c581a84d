// What is asked of a TOML text before the library reads it.
#pragma once

#include <optional>
#include <string_view>

#include "server/TomlText.h"

namespace kalvex::server {

// The first place that is deeper than kDeepestToml or has a character beyond ASCII outside texts
// and comments. Of a text that is no TOML it is good up to the first fault, which the library
// finds.
std::optional<TomlFault> CheckToml(std::string_view text);

}  // namespace kalvex::server
