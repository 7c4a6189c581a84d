// A file that is changed as a whole, so that a reader, and whoever comes after a break, finds the
// old content or the new one and never a part.
#pragma once

#include <functional>
#include <string>

namespace kalvex::platform {

// The error where a lock cannot be had; to be translated.
extern const char* const kFolderLocked;

// Called while another process holds the lock: waits a little, and answers whether to try again.
using LockPause = std::function<bool()>;

// For five seconds in all.
LockPause UsualLockPause();

// `edit` receives the content, empty when there is no such file, and answers whether it has changed
// it. Only one process at a time edits files of a folder this way; others wait as `pause` says. The
// new content is on the disk when the call returns. False, with the system's words or a text to
// translate in `error`, leaves the file as it was. Beside the file, one of its name with ".tmp"
// behind comes and goes. Links are followed.
bool EditWholeFile(const std::string& path, const std::function<bool(std::string& content)>& edit,
                   std::string& error, const LockPause& pause = UsualLockPause());

}  // namespace kalvex::platform
