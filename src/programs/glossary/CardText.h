// The card of the language: every word of its tables with its forms, in Markdown. Any thread.
#pragma once

#include <span>
#include <string>

#include "programs/glossary/Glossary.h"

namespace kalvex::glossary {

// UTF-8, line ends LF.
std::string CardText(std::span<const Section> glossary);

}  // namespace kalvex::glossary
