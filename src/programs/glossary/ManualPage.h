// The manual page of the language, for man(1). Any thread.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "programs/glossary/Glossary.h"

namespace kalvex::glossary {

// The date is that of the version. ASCII, line ends LF.
std::string ManualPage(std::span<const Section> glossary, std::string_view version,
                       std::string_view date);

}  // namespace kalvex::glossary
