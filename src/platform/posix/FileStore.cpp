#include "platform/posix/FileStore.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "platform/Files.h"

namespace kalvex::platform {

namespace {

FileOutcome Refusal() {
    return errno == ENOENT ? FileOutcome::Missing : FileOutcome::Failed;
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

}  // namespace

FileOutcome PosixFileStore::Read(const std::string& path, std::string& content) {
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0) return Refusal();
    std::string error;
    return ReadWholeFile(path, content, error) ? FileOutcome::Done : FileOutcome::Failed;
}

FileOutcome PosixFileStore::MoveAside(const std::string& path, const std::string& backup) {
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0) return Refusal();
    if (!S_ISREG(info.st_mode)) return FileOutcome::Missing;
    return std::rename(path.c_str(), backup.c_str()) == 0 ? FileOutcome::Done : Refusal();
}

bool PosixFileStore::Create(const std::string& path, std::string_view content) {
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd < 0) return false;
    const bool written = WriteAll(fd, content);
    const bool closed = ::close(fd) == 0;
    if (!written || !closed) ::unlink(path.c_str());
    return written && closed;
}

}  // namespace kalvex::platform
