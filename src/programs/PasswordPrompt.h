// Asks for passwords.
#pragma once

#include <string>

#include "platform/Translator.h"

namespace kalvex::programs {

// A new one. On a terminal: twice, without showing it, until both are the same. Otherwise: the
// first line of the standard input. UTF-8; false when the input ends before.
bool AskPassword(std::string& password, const platform::Translator& translator);

// The password of who logs in, which is there already: on a terminal once. UTF-8; false as above.
bool AskOwnPassword(std::string& password, const platform::Translator& translator);

}  // namespace kalvex::programs
