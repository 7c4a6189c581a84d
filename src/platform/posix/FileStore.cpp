#include "platform/posix/FileStore.h"

#include <sys/stat.h>

#include <cerrno>

#include "platform/Files.h"
#include "platform/posix/FileReplacement.h"

namespace kalvex::platform {

namespace {

bool IsTooLong(const struct stat& info) {
    return info.st_size > PosixFileStore::kMostBytes;
}

// What a replacement reads: the file, or its backup where there is none.
bool IsOldTooLong(const std::string& path, const std::string& backup) {
    struct stat info {};
    if (::stat(path.c_str(), &info) == 0) return IsTooLong(info);
    return ::stat(backup.c_str(), &info) == 0 && IsTooLong(info);
}

}  // namespace

FileOutcome PosixFileStore::Read(const std::string& path, std::string& content) {
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0) {
        return errno == ENOENT ? FileOutcome::Missing : FileOutcome::Failed;
    }
    if (IsTooLong(info)) return FileOutcome::Failed;
    std::string error;
    return ReadWholeFile(path, content, error) ? FileOutcome::Done : FileOutcome::Failed;
}

bool PosixFileStore::Replace(const std::string& path, const std::string& backup,
                             const Rewriting& rewrite) {
    if (IsOldTooLong(path, backup)) return false;
    FileReplacement replacement(path, backup);
    if (!replacement.Begin() || !replacement.ReadOld()) return false;
    const std::string made = rewrite(replacement.Old());
    return made.size() <= static_cast<std::size_t>(kMostBytes) && replacement.Write(made) &&
           replacement.Commit();
}

}  // namespace kalvex::platform
