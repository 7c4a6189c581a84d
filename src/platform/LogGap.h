// What a log says in the place of lines that are lost. Any thread that may ask the translator.
#pragma once

#include <cstdint>
#include <string>

#include "platform/Translator.h"

namespace kalvex::platform {

// An engine text.
std::string GapText(std::uint64_t lost, const Translator& translator);

}  // namespace kalvex::platform
