// A file that keeps room on a disk for what has to go on when nothing else is free. Any thread.
#pragma once

#include <cstddef>
#include <string>

namespace kalvex::platform {

// Makes the file with so many bytes of the disk unless it is there. A file that does not fit is not
// there afterwards.
void KeepRoom(const std::string& path, std::size_t bytes);

// Gives its room back; false when there is no such file.
bool ReleaseRoom(const std::string& path);

}  // namespace kalvex::platform
