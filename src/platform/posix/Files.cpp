#include "platform/Files.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "platform/posix/Descriptor.h"
#include "platform/posix/FileReplacement.h"
#include "platform/posix/RegularFile.h"

namespace kalvex::platform {

namespace {

constexpr mode_t kOthers = S_IRWXG | S_IRWXO;
constexpr mode_t kOwnersFolder = S_IRWXU;

constexpr const char* kOpenSecret =
    Translatable("Do pliku %s, który ma być tajny, mają dostęp inni (prawa %s, a mają być 600)");

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

bool MakePrivateFolder(const std::string& path, std::string& error) {
    std::error_code failed;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path(), failed);
    return ::mkdir(path.c_str(), kOwnersFolder) == 0 || errno == EEXIST || Fail(error);
}

bool CloseToOthers(const std::string& path, bool& taken, std::string& error) {
    struct stat info {};
    taken = false;
    if (::stat(path.c_str(), &info) != 0) return errno == ENOENT || Fail(error);
    if ((info.st_mode & kOthers) == 0) return true;
    taken = ::chmod(path.c_str(), info.st_mode & 07777 & ~kOthers) == 0;
    return taken || Fail(error);
}

Notice DescribeOpenSecret(const std::string& path) {
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0 || !S_ISREG(info.st_mode)) return {};
    const mode_t closed = info.st_uid == 0 ? kOthers & ~S_IRGRP : kOthers;
    if ((info.st_mode & closed) == 0) return {};
    return {kOpenSecret, {path, fmt::format("{:03o}", info.st_mode & 0777)}};
}

bool MakePrivateFile(const std::string& path, std::string& error) {
    const Descriptor file(OpenRegularFile(path, O_RDWR | O_CREAT, 0600));
    return file.Get() >= 0 || Fail(error);
}

std::optional<std::uint64_t> FreeBytes(const std::string& folder) {
    struct statvfs disk = {};
    if (::statvfs(folder.c_str(), &disk) != 0) return std::nullopt;
    return std::uint64_t{disk.f_bavail} * disk.f_frsize;
}

}  // namespace kalvex::platform
