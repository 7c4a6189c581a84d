// What is said of files, whoever says it.
#pragma once

#include "platform/Translator.h"

namespace kalvex::platform {

inline constexpr const char* kUnreadableFile = Translatable("Nie można odczytać pliku %s (%s)");

}  // namespace kalvex::platform
