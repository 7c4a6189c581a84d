// The card of the language: every word of its tables with its forms, in Markdown. Any thread.
#pragma once

#include <string>

#include "platform/Translator.h"

namespace kalvex::card {

// UTF-8, line ends LF.
std::string CardText(const platform::Translator& translator);

}  // namespace kalvex::card
