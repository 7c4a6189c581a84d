// A file that is changed as a whole, so that a reader, and whoever comes after a break, finds the
// old content or the new one and never a part.
#pragma once

#include <functional>
#include <string>

#include "platform/LockPause.h"
#include "platform/Translator.h"

namespace kalvex::platform {

// The error where a lock cannot be had; its value is who has it.
extern const char* const kFolderLocked;

inline constexpr int kEditPatience = 5;  // seconds

// `edit` receives the content, empty when there is no such file, and answers whether it has changed
// it. Only one process at a time edits files of a folder this way; others wait as `pause` says. The
// new content is on the disk when the call returns. False with the reason in `error` leaves the
// file as it was. Beside the file, one of its name with ".tmp" behind comes and goes. Links are
// followed.
bool EditWholeFile(const std::string& path, const std::function<bool(std::string& content)>& edit,
                   Notice& error, const LockPause& pause = PauseFor(kEditPatience));

}  // namespace kalvex::platform
