// Asks for a password.
#pragma once

#include <string>

#include "platform/Translator.h"

namespace kalvex::programs {

// On a terminal: twice, without showing it, until both are the same. Otherwise: the first line of
// the standard input. UTF-8; false when the input ends before.
bool AskPassword(std::string& password, const platform::Translator& translator);

}  // namespace kalvex::programs
