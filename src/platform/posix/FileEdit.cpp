#include "platform/FileEdit.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <optional>
#include <string_view>

#include "platform/Files.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/Flock.h"
#include "platform/posix/RegularFile.h"

namespace kalvex::platform {

namespace {

bool Fail(Notice& error) {
    error = {"%s", {FileFault(errno)}};
    return false;
}

bool Lock(int folder, const LockPause& pause, Notice& error) {
    if (LockAlone(folder, pause)) return true;
    if (errno != EWOULDBLOCK) return Fail(error);
    error = {kFolderLocked, {LockHolder(folder)}};
    return false;
}

bool WriteCopy(const std::string& path, const std::optional<struct stat>& replaced,
               std::string_view content) {
    const Descriptor file(OpenRegularFile(path, O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW, 0640));
    return file.Get() >= 0 && FillFile(file.Get(), replaced, content);
}

}  // namespace

const char* const kFolderLocked = Translatable("folder jest zablokowany przez inny proces: %s");

bool EditWholeFile(const std::string& path, const std::function<bool(std::string& content)>& edit,
                   Notice& error, const LockPause& pause) {
    std::string file = path;
    if (!FollowLinks(file)) return Fail(error);
    const std::string folderPath = FolderOf(file);
    const Descriptor folder(
        ::open(folderPath.empty() ? "." : folderPath.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folder.Get() < 0) return Fail(error);
    if (!Lock(folder.Get(), pause, error)) return false;
    struct stat info {};
    std::optional<struct stat> replaced;
    if (::stat(file.c_str(), &info) == 0) {
        replaced = info;
    } else if (errno != ENOENT) {
        return Fail(error);
    }
    std::string content;
    std::string words;
    if (replaced && !ReadWholeFile(file, content, words)) {
        error = {"%s", {words}};
        return false;
    }
    if (!edit(content)) return true;

    const std::string copy = file + ".tmp";
    if (!WriteCopy(copy, replaced, content) || ::rename(copy.c_str(), file.c_str()) != 0) {
        Fail(error);
        ::unlink(copy.c_str());
        return false;
    }
    return ::fsync(folder.Get()) == 0 || Fail(error);
}

}  // namespace kalvex::platform
