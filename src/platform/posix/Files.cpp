#include "platform/Files.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "platform/posix/Descriptor.h"
#include "platform/posix/RegularFile.h"

namespace kalvex::platform {

namespace {

bool Fail(std::string& error) {
    error = FileFault(errno);
    return false;
}

}  // namespace

FileRead ReadFile(const std::string& path, std::string& content, std::string& error) {
    content.clear();
    const Descriptor file(OpenRegularFile(path, O_RDONLY));
    if (file.Get() < 0) {
        Fail(error);
        return FileRead::NotOpened;
    }
    if (ReadToEnd(file.Get(), content)) return FileRead::Complete;
    Fail(error);
    return FileRead::Broken;
}

bool ReadWholeFile(const std::string& path, std::string& content, std::string& error) {
    return ReadFile(path, content, error) == FileRead::Complete;
}

bool WriteWholeFile(const std::string& path, std::string_view content, std::string& error) {
    Descriptor file(OpenRegularFile(path, O_WRONLY | O_CREAT | O_TRUNC, 0666));
    if (file.Get() < 0 || !WriteAll(file.Get(), content)) return Fail(error);
    return ::close(file.Release()) == 0 || Fail(error);
}

bool MakePrivateFile(const std::string& path, std::string& error) {
    const Descriptor file(OpenRegularFile(path, O_RDWR | O_CREAT, 0600));
    return file.Get() >= 0 || Fail(error);
}

}  // namespace kalvex::platform
