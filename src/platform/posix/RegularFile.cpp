#include "platform/posix/RegularFile.h"

#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "platform/posix/Descriptor.h"

namespace kalvex::platform {

namespace {

constexpr int kLinkLimit = 40;
constexpr const char* kNoRegularFile = "Not a regular file";

// Rights and owner of another file, the owner where the system permits it.
bool TakeOver(int fd, const struct stat& other) {
    struct stat own {};
    if (::fstat(fd, &own) != 0) return false;
    const bool sameOwner = own.st_uid == other.st_uid && own.st_gid == other.st_gid;
    if (!sameOwner && ::fchown(fd, other.st_uid, other.st_gid) != 0) {
        [[maybe_unused]] const int group = ::fchown(fd, static_cast<uid_t>(-1), other.st_gid);
    }
    return ::fchmod(fd, other.st_mode & 07777) == 0;
}

}  // namespace

int OpenRegularFile(const std::string& path, int flags, mode_t mode) {
    Descriptor file(::open(path.c_str(), flags | O_NONBLOCK | O_CLOEXEC, mode));
    struct stat info {};
    if (file.Get() < 0 || ::fstat(file.Get(), &info) != 0) return -1;
    if (S_ISREG(info.st_mode)) return file.Release();
    errno = S_ISDIR(info.st_mode) ? EISDIR : ENXIO;
    return -1;
}

bool ReadToEnd(int fd, std::string& content) {
    struct stat info {};
    if (::fstat(fd, &info) != 0) return false;
    if (info.st_size > 0) content.reserve(content.size() + static_cast<std::size_t>(info.st_size));
    char buffer[65536];
    for (;;) {
        const ssize_t count = ::read(fd, buffer, sizeof buffer);
        if (count == 0) return true;
        if (count > 0) {
            content.append(buffer, static_cast<std::size_t>(count));
        } else if (errno != EINTR) {
            return false;
        }
    }
}

bool WriteAll(int fd, std::string_view content) {
    while (!content.empty()) {
        const ssize_t count = ::write(fd, content.data(), content.size());
        if (count >= 0) {
            content.remove_prefix(static_cast<std::size_t>(count));
        } else if (errno != EINTR) {
            return false;
        }
    }
    return true;
}

bool EndLastLine(int fd) {
    struct stat info {};
    if (::fstat(fd, &info) != 0) return false;
    char last = '\n';
    const bool ends =
        info.st_size == 0 || ::pread(fd, &last, 1, info.st_size - 1) != 1 || last == '\n';
    return ends || WriteAll(fd, "\n");
}

bool FillFile(int fd, const std::optional<struct stat>& like, std::string_view content) {
    return (!like || TakeOver(fd, *like)) && WriteAll(fd, content) && ::fsync(fd) == 0;
}

std::string FolderOf(const std::string& path) {
    return path.substr(0, path.rfind('/') + 1);
}

bool FollowLinks(std::string& path) {
    for (int i = 0; i < kLinkLimit; ++i) {
        char target[PATH_MAX];
        const ssize_t length = ::readlink(path.c_str(), target, sizeof target);
        if (length < 0) return errno == EINVAL || errno == ENOENT;
        const std::string_view named(target, static_cast<std::size_t>(length));
        path = named.starts_with('/') ? named : FolderOf(path).append(named);
    }
    errno = ELOOP;
    return false;
}

bool SyncFolder(int fd) {
    return ::fsync(fd) == 0 || IsUnsupported(errno);
}

bool SyncFolder(const std::string& path) {
    const char* name = path.empty() ? "." : path.c_str();
    const Descriptor folder(::open(name, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return folder.Get() >= 0 && SyncFolder(folder.Get());
}

bool IsUnsupported(int error) {
    return error == EINVAL || error == ENOSYS || error == EOPNOTSUPP;
}

std::string FileFault(int error) {
    return error == ENXIO ? kNoRegularFile : std::strerror(error);
}

}  // namespace kalvex::platform
