// Files read, converted and written.
#pragma once

#include "platform/Translator.h"
#include "programs/kalvex-convert/Options.h"

namespace kalvex::convert {

// The exit status. What is wrong is told on the standard error, and then with the next file.
int ConvertFiles(const ConvertOptions& options, const platform::Translator& translator);

}  // namespace kalvex::convert
