// Files in UTF-8 where the engine reads Windows-1250. Paths are the system's (UTF-8).
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>

#include "platform/LogSink.h"
#include "platform/Translator.h"

namespace kalvex::platform {

// What is wrong with such a file, with the line that shows it and the command that mends it;
// nothing for a file as it should be.
Notice DescribeForeignText(const std::string& path, std::string_view content);

// What was told of such files, by their paths.
inline constexpr std::size_t kMostToldFiles = 1000;
using ToldFiles = std::map<std::string, std::string>;

// The same as a line of the log, among the errors, but not again as long as the same line of the
// file shows it. After kMostToldFiles of them what was told is forgotten. Main thread.
void TellForeignText(const std::string& path, std::string_view content, LogSink& log,
                     const Translator& translator, ToldFiles& told);

}  // namespace kalvex::platform
