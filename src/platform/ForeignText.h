// Files in UTF-8 where the engine reads Windows-1250. Paths are the system's (UTF-8).
#pragma once

#include <string>
#include <string_view>

#include "platform/LogSink.h"
#include "platform/Translator.h"

namespace kalvex::platform {

// What is wrong with such a file, with the line that shows it and the command that mends it;
// nothing for a file as it should be.
Notice DescribeForeignText(const std::string& path, std::string_view content);

// The same as a line of the log, among the errors. A log is not told again of a file as long as the
// same line shows it. Main thread.
void TellForeignText(const std::string& path, std::string_view content, LogSink& log,
                     const Translator& translator);

}  // namespace kalvex::platform
