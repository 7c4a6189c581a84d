#include "platform/posix/FileReplacement.h"

#include <fcntl.h>
#include <limits.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>

#include "platform/posix/RegularFile.h"

namespace kalvex::platform {

namespace {

constexpr std::string_view kNewSuffix = ".kalvex-new";
constexpr std::string_view kOldSuffix = ".kalvex-old";
constexpr std::string_view kBackupSuffix = ".kalvex-bak";
constexpr std::string_view kFormerBackupSuffix = ".kalvex-was";
constexpr std::string_view kSuffixes[] = {kNewSuffix, kOldSuffix, kBackupSuffix,
                                          kFormerBackupSuffix};
constexpr int kAttempts = 4;

// In the folder of `beside`, for the replacement of the file.
std::string TemporaryName(const std::string& beside, const std::string& path,
                          std::string_view suffix) {
    const std::size_t room = NAME_MAX - 1 - suffix.size();
    const std::string name = path.substr(FolderOf(path).size(), room);
    return FolderOf(beside) + '.' + name + std::string(suffix);
}

bool IsTemporaryName(const std::string& path) {
    const bool hidden = path.compare(FolderOf(path).size(), 1, ".") == 0;
    return hidden && std::ranges::any_of(kSuffixes, [&](std::string_view suffix) {
               return path.ends_with(suffix);
           });
}

bool IsNamed(int fd, const std::string& path) {
    struct stat own {};
    struct stat named {};
    return ::fstat(fd, &own) == 0 && ::lstat(path.c_str(), &named) == 0 &&
           own.st_dev == named.st_dev && own.st_ino == named.st_ino;
}

// Over a network, what is not open for writing is not locked alone either.
Descriptor OpenLeftover(const std::string& path) {
    const int file = OpenRegularFile(path, O_WRONLY | O_NOFOLLOW);
    if (file >= 0 || errno != EACCES) return Descriptor(file);
    return Descriptor(OpenRegularFile(path, O_RDONLY | O_NOFOLLOW));
}

// A folder that may be changed and not read cannot be brought to the disk by itself.
bool OpenFolder(const std::string& path, Descriptor& folder) {
    folder =
        Descriptor(::open(path.empty() ? "." : path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return folder.Get() >= 0 || errno == EACCES;
}

// Another name of the file. One of somebody else's file is not always to be had, nor to be got rid
// of again; a copy does as well.
bool Keep(const std::string& path, const std::string& kept) {
    struct stat info {};
    if (::lstat(path.c_str(), &info) != 0) return false;
    const uid_t user = ::geteuid();
    const bool isOwn = user == 0 || user == info.st_uid;
    if (isOwn && ::link(path.c_str(), kept.c_str()) == 0) return true;
    const Descriptor file(OpenRegularFile(path, O_RDONLY | O_NOFOLLOW));
    std::string content;
    if (file.Get() < 0 || !ReadToEnd(file.Get(), content)) return false;
    const Descriptor copy(OpenRegularFile(kept, O_WRONLY | O_CREAT | O_EXCL, 0600));
    return copy.Get() >= 0 && FillFile(copy.Get(), info, content);
}

}  // namespace

FileReplacement::FileReplacement(const std::string& path, const std::string& backup, mode_t mode)
    : m_target(path),
      m_mode(mode),
      m_backup(backup),
      m_backupAside(TemporaryName(backup, path, kBackupSuffix)),
      m_backupFormer(TemporaryName(backup, path, kFormerBackupSuffix)) {}

// The lock goes with the descriptor, so it goes last.
FileReplacement::~FileReplacement() {
    if (m_new.Get() >= 0 && !m_placed && IsNamed(m_new.Get(), m_newPath)) {
        ::unlink(m_newPath.c_str());
    }
    if (m_ownsAside) ClearAside();
}

bool FileReplacement::Begin() {
    if (!FollowLinks(m_target) || IsTemporaryName(m_target)) return false;
    m_newPath = TemporaryName(m_target, m_target, kNewSuffix);
    m_oldPath = TemporaryName(m_target, m_target, kOldSuffix);
    return OpenFolders() && OpenNew();
}

bool FileReplacement::OpenFolders() {
    const std::string folder = FolderOf(m_target);
    const std::string other = m_backup.empty() ? folder : FolderOf(m_backup);
    return OpenFolder(folder, m_folder) && (folder == other || OpenFolder(other, m_backupFolder));
}

// A file that is there belongs to another replacement, which has a lock on it, or was left by one
// that broke off. Between opening and locking it may have changed its name or lost it.
bool FileReplacement::OpenNew() {
    struct stat info {};
    const bool there = ::stat(m_target.c_str(), &info) == 0;
    if (there && !S_ISREG(info.st_mode)) return false;
    const mode_t mode = there ? info.st_mode & 0777 : m_mode;
    for (int i = 0; i < kAttempts; ++i) {
        Descriptor file(OpenRegularFile(m_newPath, O_WRONLY | O_CREAT | O_EXCL, mode));
        const bool made = file.Get() >= 0;
        if (!made && errno != EEXIST) return false;
        if (!made) file = OpenLeftover(m_newPath);
        if (file.Get() < 0) {
            if (errno == ENOENT) continue;
            return false;
        }
        const bool locked = ::flock(file.Get(), LOCK_EX | LOCK_NB) == 0;
        if (!locked && (!made || errno == EWOULDBLOCK)) return false;
        if (!IsNamed(file.Get(), m_newPath)) continue;
        if (made) {
            m_new = Descriptor(file.Release());
            return true;
        }
        ::unlink(m_newPath.c_str());
    }
    return false;
}

// Whoever has put a new file in place keeps the lock on it until nothing else of the replacement is
// left.
bool FileReplacement::ReadOld() {
    const Descriptor file(OpenRegularFile(m_target, O_RDONLY));
    if (file.Get() < 0 && errno != ENOENT) return false;
    if (file.Get() >= 0) {
        if (::flock(file.Get(), LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK) return false;
        struct stat info {};
        if (::fstat(file.Get(), &info) != 0 || !ReadToEnd(file.Get(), m_old)) return false;
        m_replaced = info;
    }
    m_ownsAside = true;
    ClearAside();
    if (m_replaced || m_backup.empty()) return true;
    const Descriptor backup(OpenRegularFile(m_backup, O_RDONLY));
    return backup.Get() >= 0 ? ReadToEnd(backup.Get(), m_old) : errno == ENOENT;
}

bool FileReplacement::Write(std::string_view content) {
    return FillFile(m_new.Get(), m_replaced, content);
}

bool FileReplacement::Commit() {
    const bool kept = !m_replaced || (IsUnchanged() && Keep(m_target, m_oldPath) && MakeBackup());
    if (kept && PutInPlace() && SyncFolders()) return true;
    TakeBack();
    return false;
}

bool FileReplacement::IsUnchanged() const {
    struct stat now {};
    return ::stat(m_target.c_str(), &now) == 0 && now.st_dev == m_replaced->st_dev &&
           now.st_ino == m_replaced->st_ino && now.st_size == m_replaced->st_size &&
           now.st_mtim.tv_sec == m_replaced->st_mtim.tv_sec &&
           now.st_mtim.tv_nsec == m_replaced->st_mtim.tv_nsec;
}

bool FileReplacement::MakeBackup() {
    if (m_backup.empty()) return true;
    struct stat info {};
    const bool there = ::lstat(m_backup.c_str(), &info) == 0;
    if (!there && errno != ENOENT) return false;
    if (there && !S_ISREG(info.st_mode) && !S_ISLNK(info.st_mode)) return false;
    if (!Keep(m_oldPath, m_backupAside)) return false;
    if (there) return ReplaceBackup();
    if (::rename(m_backupAside.c_str(), m_backup.c_str()) != 0) return false;
    m_backupStep = BackupStep::Added;
    return true;
}

bool FileReplacement::ReplaceBackup() {
    const char* aside = m_backupAside.c_str();
    const char* backup = m_backup.c_str();
    if (::renameat2(AT_FDCWD, aside, AT_FDCWD, backup, RENAME_EXCHANGE) == 0) {
        m_backupStep = BackupStep::Exchanged;
        return true;
    }
    if (!IsUnsupported(errno) || !Keep(m_backup, m_backupFormer)) return false;
    if (::rename(aside, backup) != 0) return false;
    m_backupStep = BackupStep::Overwritten;
    return true;
}

// Where there was no file, one that has appeared meanwhile stays.
bool FileReplacement::PutInPlace() {
    if (!IsNamed(m_new.Get(), m_newPath)) return false;
    const char* made = m_newPath.c_str();
    const char* target = m_target.c_str();
    if (m_replaced) {
        m_placed = ::rename(made, target) == 0;
    } else {
        m_placed = ::renameat2(AT_FDCWD, made, AT_FDCWD, target, RENAME_NOREPLACE) == 0 ||
                   (IsUnsupported(errno) && ::rename(made, target) == 0);
    }
    return m_placed;
}

bool FileReplacement::SyncFolders() const {
    return SyncFolder(m_folder.Get()) &&
           (m_backupFolder.Get() < 0 || SyncFolder(m_backupFolder.Get()));
}

void FileReplacement::TakeBack() {
    if (m_placed && m_replaced) ::rename(m_oldPath.c_str(), m_target.c_str());
    if (m_placed && !m_replaced) ::unlink(m_target.c_str());
    const char* backup = m_backup.c_str();
    if (m_backupStep == BackupStep::Exchanged) ::rename(m_backupAside.c_str(), backup);
    if (m_backupStep == BackupStep::Overwritten) ::rename(m_backupFormer.c_str(), backup);
    if (m_backupStep == BackupStep::Added) ::unlink(backup);
}

void FileReplacement::ClearAside() const {
    ::unlink(m_oldPath.c_str());
    if (m_backup.empty()) return;
    ::unlink(m_backupAside.c_str());
    ::unlink(m_backupFormer.c_str());
}

}  // namespace kalvex::platform
