#include "platform/Files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "platform/posix/Descriptor.h"

namespace kalvex::platform {

namespace {

bool Fail(std::string& error) {
    error = std::strerror(errno);
    return false;
}

}  // namespace

FileRead ReadFile(const std::string& path, std::string& content, std::string& error) {
    content.clear();
    Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    struct stat info {};
    const bool opened = file.Get() >= 0 && ::fstat(file.Get(), &info) == 0;
    if (opened && S_ISDIR(info.st_mode)) errno = EISDIR;
    if (!opened || S_ISDIR(info.st_mode)) {
        Fail(error);
        return FileRead::NotOpened;
    }
    if (info.st_size > 0) content.reserve(static_cast<std::size_t>(info.st_size));
    char buffer[65536];
    for (;;) {
        const ssize_t count = ::read(file.Get(), buffer, sizeof buffer);
        if (count == 0) return FileRead::Complete;
        if (count > 0) {
            content.append(buffer, static_cast<std::size_t>(count));
        } else if (errno != EINTR) {
            Fail(error);
            return FileRead::Broken;
        }
    }
}

bool ReadWholeFile(const std::string& path, std::string& content, std::string& error) {
    return ReadFile(path, content, error) == FileRead::Complete;
}

bool WriteWholeFile(const std::string& path, std::string_view content, std::string& error) {
    Descriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
    if (file.Get() < 0) return Fail(error);
    while (!content.empty()) {
        const ssize_t count = ::write(file.Get(), content.data(), content.size());
        if (count >= 0) {
            content.remove_prefix(static_cast<std::size_t>(count));
        } else if (errno != EINTR) {
            return Fail(error);
        }
    }
    return ::close(file.Release()) == 0 || Fail(error);
}

bool MakePrivateFile(const std::string& path, std::string& error) {
    const Descriptor file(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    return file.Get() >= 0 || Fail(error);
}

}  // namespace kalvex::platform
