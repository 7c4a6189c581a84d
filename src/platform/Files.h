// Whole files in and out, byte for byte. Paths are the system's (UTF-8). What is no regular file (a
// folder, a pipe, a device) does not open, and nothing waits for it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/Translator.h"

namespace kalvex::platform {

enum class FileRead { Complete, NotOpened, Broken };

// `content` is what was read, also up to a break; `error` holds the system's words for a failure.
FileRead ReadFile(const std::string& path, std::string& content, std::string& error);

// False with the system's words in `error` when the file cannot be read to its end.
bool ReadWholeFile(const std::string& path, std::string& content, std::string& error);

// Replaces the file as a whole, so that what comes after a break is the old content or the new one
// and never a part; false with the system's words in `error`.
bool WriteWholeFile(const std::string& path, std::string_view content, std::string& error);

// The same; a file that was not there is for its owner alone to read and write.
bool WritePrivateFile(const std::string& path, std::string_view content, std::string& error);

// Puts a file in the place of another, whose folder is on the disk then; false with the system's
// words in `error`.
bool MoveIntoPlace(const std::string& made, const std::string& path, std::string& error);

// Makes the file, for its owner alone to read and write, unless it is there; false with the
// system's words in `error`.
bool MakePrivateFile(const std::string& path, std::string& error);

// Makes the folder, for its owner alone, and those above it, unless it is there; false with the
// system's words in `error`.
bool MakePrivateFolder(const std::string& path, std::string& error);

// Takes from everybody but the owner what they may do with a file or a folder; `taken` tells that
// there was something. One that is not there is none's. False with the system's words in `error`.
bool CloseToOthers(const std::string& path, bool& taken, std::string& error);

// What is wrong with a file whose content is to be secret: others may read or write it. A group may
// read one that the administrator of the system owns. Nothing for what is no file or
// not there.
Notice DescribeOpenSecret(const std::string& path);

// That this account can still write on the disk of the folder; nothing when the system does not
// tell.
std::optional<std::uint64_t> FreeBytes(const std::string& folder);

}  // namespace kalvex::platform
