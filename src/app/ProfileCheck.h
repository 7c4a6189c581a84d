// What is wrong with the text of a profile: entries that nobody reads, and values that cannot be
// read. Any thread.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "app/ProfileKeys.h"
#include "platform/Translator.h"

namespace kalvex::app {

// A line of the log, UTF-8, for each fault, in order of the lines of the file: its path, the line
// from 1, section and key. None where the file is not there, cannot be read or is no text. Whether
// a value of the section of consoles can be used is not said here.
std::vector<std::string> FindProfileFaults(const std::string& path,
                                           std::span<const ProfileKey> keys,
                                           const platform::Translator& translator);

}  // namespace kalvex::app
