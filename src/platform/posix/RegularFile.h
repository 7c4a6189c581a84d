// Files by names that people give: what lies there may be anything.
#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>
#include <string_view>

namespace kalvex::platform {

// Opens what lies there if it is a regular file, and never waits for it; the flags are those of the
// system. A descriptor, or -1 with errno set: EISDIR for a folder, ENXIO for a pipe, a device or
// the like.
int OpenRegularFile(const std::string& path, int flags, mode_t mode = 0);

// To the end of the file, or of the content; false with errno set, what came before being done.
// ReadToEnd adds to the content.
bool ReadToEnd(int fd, std::string& content);
bool WriteAll(int fd, std::string_view content);

// Ends a part of a line at the end of a file of lines, which is open for both reading and adding.
// False with errno set.
bool EndLastLine(int fd);

// Writes a file and brings it to the disk, with the rights of another, where there is one, and its
// owner as far as the system permits. False with errno set.
bool FillFile(int fd, const std::optional<struct stat>& like, std::string_view content);

// With the slash at its end; empty for a name alone.
std::string FolderOf(const std::string& path);

// Brings to the disk what a folder names. False with errno set.
bool SyncFolder(int fd);
bool SyncFolder(const std::string& path);  // empty: the current one

// Of an errno: what some file systems cannot do at all.
bool IsUnsupported(int error);

// Puts the file itself in the place of a link to it, which may be one that is not there yet. False
// with errno set.
bool FollowLinks(std::string& path);

// The words for an errno of these.
std::string FileFault(int error);

}  // namespace kalvex::platform
