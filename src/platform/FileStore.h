// The files in which scripts keep values. Paths are the system's (UTF-8). Main thread; a call
// returns when the disk has answered.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace kalvex::platform {

enum class FileOutcome {
    Done,
    Missing,  // no such file
    Failed,   // it is there and the system refuses, or it is no regular file
};

class FileStore {
  public:
    virtual ~FileStore() = default;

    virtual FileOutcome Read(const std::string& path, std::string& content) = 0;

    // The new content, made of the old one, which is that of the backup where the file is missing.
    using Rewriting = std::function<std::string(std::string_view old)>;

    // Replaces the file as a whole, so that a reader, and whoever comes after a break, finds the
    // old content or the new one and never a part; the new one is on the disk when the call
    // returns. The former file becomes the backup, which is replaced as a whole too; none is kept
    // where `backup` is empty. Rights and owner stay as far as the system permits. A link stays,
    // and the file that it names is replaced. False leaves file and backup as they were; so it does
    // while another is replacing the file.
    //
    // In the file's folder, ".NAME.kalvex-new" and ".NAME.kalvex-old" come and go, and in the
    // backup's ".NAME.kalvex-bak" and ".NAME.kalvex-was", with the file's name. A break may leave
    // them, and the next call clears them; where the file system has no locks, the first of them
    // stops each further call until it is removed. No file of such a name is replaced.
    virtual bool Replace(const std::string& path, const std::string& backup,
                         const Rewriting& rewrite) = 0;
};

// Has no files and makes none.
FileStore& NoFiles();

}  // namespace kalvex::platform
