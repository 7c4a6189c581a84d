// How a line of the log names the line of a script: behind this, which is translated, stands its
// number from 1.
#pragma once

#include "platform/Translator.h"

namespace kalvex::engine {

inline constexpr const char* kLineMark = platform::Translatable(" : Linia ");

}  // namespace kalvex::engine
