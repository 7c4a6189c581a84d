#include "platform/FileEdit.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <ctime>
#include <optional>
#include <string_view>

#include "platform/Files.h"
#include "platform/Translator.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/RegularFile.h"

namespace kalvex::platform {

namespace {

constexpr int kLockTries = 500;
constexpr timespec kBetweenTries{0, 10'000'000};

bool Fail(std::string& error) {
    error = FileFault(errno);
    return false;
}

bool Lock(int folder, const LockPause& pause, std::string& error) {
    while (::flock(folder, LOCK_EX | LOCK_NB) != 0) {
        if (errno == EINTR) continue;
        if (errno != EWOULDBLOCK) return Fail(error);
        if (pause()) continue;
        error = kFolderLocked;
        return false;
    }
    return true;
}

bool WriteCopy(const std::string& path, const std::optional<struct stat>& replaced,
               std::string_view content) {
    const Descriptor file(OpenRegularFile(path, O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW, 0640));
    return file.Get() >= 0 && FillFile(file.Get(), replaced, content);
}

}  // namespace

const char* const kFolderLocked = Translatable("folder jest zablokowany przez inny proces");

LockPause UsualLockPause() {
    return [left = kLockTries]() mutable {
        ::nanosleep(&kBetweenTries, nullptr);
        return left-- > 0;
    };
}

bool EditWholeFile(const std::string& path, const std::function<bool(std::string& content)>& edit,
                   std::string& error, const LockPause& pause) {
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
    if (replaced && !ReadWholeFile(file, content, error)) return false;
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
