#include "platform/FileEdit.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <ctime>
#include <filesystem>
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

// Where the file itself lies when the path is a link.
std::string FollowLinks(const std::string& path) {
    std::error_code fault;
    const std::filesystem::path target = std::filesystem::weakly_canonical(path, fault);
    return fault ? path : target.string();
}

// With the rights and the owner of the file that is replaced.
bool WriteCopy(const std::string& path, const struct stat* replaced, std::string_view content) {
    const Descriptor file(OpenRegularFile(path, O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW, 0640));
    if (file.Get() < 0) return false;
    if (replaced != nullptr) {
        // Only a process with the system's rights may give a file away.
        [[maybe_unused]] const int given = ::fchown(file.Get(), replaced->st_uid, replaced->st_gid);
        if (::fchmod(file.Get(), replaced->st_mode & 07777) != 0) return false;
    }
    return WriteAll(file.Get(), content) && ::fsync(file.Get()) == 0;
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
    const std::filesystem::path file = FollowLinks(path);
    const std::string folderPath = file.has_parent_path() ? file.parent_path().string() : ".";
    const Descriptor folder(::open(folderPath.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folder.Get() < 0) return Fail(error);
    if (!Lock(folder.Get(), pause, error)) return false;
    struct stat info {};
    const bool there = ::stat(file.c_str(), &info) == 0;
    if (!there && errno != ENOENT) return Fail(error);
    std::string content;
    if (there && !ReadWholeFile(file.string(), content, error)) return false;
    if (!edit(content)) return true;

    const std::string copy = file.string() + ".tmp";
    if (!WriteCopy(copy, there ? &info : nullptr, content) ||
        ::rename(copy.c_str(), file.c_str()) != 0) {
        Fail(error);
        ::unlink(copy.c_str());
        return false;
    }
    return ::fsync(folder.Get()) == 0 || Fail(error);
}

}  // namespace kalvex::platform
