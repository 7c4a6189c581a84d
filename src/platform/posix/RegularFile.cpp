#include "platform/posix/RegularFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "platform/posix/Descriptor.h"

namespace kalvex::platform {

namespace {

constexpr const char* kNoRegularFile = "Not a regular file";

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

std::string FileFault(int error) {
    return error == ENXIO ? kNoRegularFile : std::strerror(error);
}

}  // namespace kalvex::platform
