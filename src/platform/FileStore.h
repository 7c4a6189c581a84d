// Files that are replaced while a copy of the old one is kept. Paths are the system's (UTF-8). Main
// thread; a call returns when the disk has answered.
#pragma once

#include <string>
#include <string_view>

namespace kalvex::platform {

enum class FileOutcome {
    Done,
    Missing,  // no such file
    Failed,   // it is there and the system refuses
};

class FileStore {
  public:
    virtual ~FileStore() = default;

    virtual FileOutcome Read(const std::string& path, std::string& content) = 0;

    // Renames a plain file; a file of the name `backup` is replaced in the same instant.
    virtual FileOutcome MoveAside(const std::string& path, const std::string& backup) = 0;

    // Writes a file that must not be there yet; false leaves none behind.
    virtual bool Create(const std::string& path, std::string_view content) = 0;
};

// Has no files and makes none.
FileStore& NoFiles();

}  // namespace kalvex::platform
