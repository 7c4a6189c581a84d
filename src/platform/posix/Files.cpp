#include "platform/Files.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "platform/posix/Descriptor.h"
#include "platform/posix/FileReplacement.h"
#include "platform/posix/RegularFile.h"

namespace kalvex::platform {

namespace {

bool Fail(std::string& error) {
    error = FileFault(errno);
    return false;
}

bool Replace(const std::string& path, std::string_view content, mode_t mode, std::string& error) {
    // A file that may not be written is not replaced either.
    const Descriptor file(OpenRegularFile(path, O_WRONLY));
    if (file.Get() < 0 && errno != ENOENT) return Fail(error);
    FileReplacement replacement(path, {}, mode);
    errno = 0;
    if (replacement.Begin() && replacement.ReadOld() && replacement.Write(content) &&
        replacement.Commit()) {
        return true;
    }
    if (errno == 0) errno = EBUSY;
    return Fail(error);
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
    return Replace(path, content, 0666, error);
}

bool WritePrivateFile(const std::string& path, std::string_view content, std::string& error) {
    return Replace(path, content, 0600, error);
}

bool MoveIntoPlace(const std::string& made, const std::string& path, std::string& error) {
    return (::rename(made.c_str(), path.c_str()) == 0 && SyncFolder(FolderOf(path))) || Fail(error);
}

bool MakePrivateFile(const std::string& path, std::string& error) {
    const Descriptor file(OpenRegularFile(path, O_RDWR | O_CREAT, 0600));
    return file.Get() >= 0 || Fail(error);
}

}  // namespace kalvex::platform
