// What is wrong with the text of a profile: entries that nobody reads, and values that cannot be
// read. Any thread.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "app/ProfileKeys.h"
#include "platform/Translator.h"

namespace kalvex::app {

// An entry in a file; no line where it does not stand there.
struct ProfileEntry {
    std::string path;
    int line;  // from 1; 0 for none
    std::string section;
    std::string key;
};

// The number behind the name of a list in a key of it, as the list is read: without a sign or a
// leading zero. None for another key. Engine texts.
std::optional<int> NumberIn(std::string_view key, std::string_view name);

// A line of the log that tells what is wrong with an entry. All texts are UTF-8.
std::string TellEntryFault(const ProfileEntry& entry, const platform::Notice& fault,
                           const platform::Translator& translator);

// A line of the log, UTF-8, for each fault, in order of the lines of the file: its path, the line
// from 1, section and key. None where the file is not there, cannot be read or is no text. Whether
// a value of the section of consoles can be used is not said here.
std::vector<std::string> FindProfileFaults(const std::string& path,
                                           std::span<const ProfileKey> keys,
                                           const platform::Translator& translator);

}  // namespace kalvex::app
