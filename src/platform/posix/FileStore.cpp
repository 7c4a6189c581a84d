#include "platform/posix/FileStore.h"

#include <sys/stat.h>

#include <cerrno>

#include "platform/Files.h"
#include "platform/posix/FileReplacement.h"

namespace kalvex::platform {

FileOutcome PosixFileStore::Read(const std::string& path, std::string& content) {
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0) {
        return errno == ENOENT ? FileOutcome::Missing : FileOutcome::Failed;
    }
    std::string error;
    return ReadWholeFile(path, content, error) ? FileOutcome::Done : FileOutcome::Failed;
}

bool PosixFileStore::Replace(const std::string& path, const std::string& backup,
                             const Rewriting& rewrite) {
    FileReplacement replacement(path, backup);
    return replacement.Begin() && replacement.ReadOld() &&
           replacement.Write(rewrite(replacement.Old())) && replacement.Commit();
}

}  // namespace kalvex::platform
