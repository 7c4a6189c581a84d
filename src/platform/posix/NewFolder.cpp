#include "platform/NewFolder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <utility>

#include "platform/posix/RegularFile.h"

namespace kalvex::platform {

namespace {

namespace fs = std::filesystem;

bool Fail(std::string& error) {
    error = FileFault(errno);
    return false;
}

std::string WithoutSlash(std::string path) {
    while (path.size() > 1 && path.ends_with('/')) path.pop_back();
    return path;
}

bool SyncAll(const std::string& folder) {
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
        if (entry.is_directory() && !SyncFolder(entry.path().string())) return false;
    }
    return SyncFolder(folder);
}

// Some file systems have no such rename; there the name is looked for before.
bool RenameToNothing(const char* made, const char* path) {
    if (::renameat2(AT_FDCWD, made, AT_FDCWD, path, RENAME_NOREPLACE) == 0) return true;
    if (!IsUnsupported(errno)) return false;
    struct stat there {};
    if (::lstat(path, &there) == 0) {
        errno = EEXIST;
        return false;
    }
    return ::rename(made, path) == 0;
}

}  // namespace

NewFolder::NewFolder(std::string path) : m_path(WithoutSlash(std::move(path))) {}

NewFolder::~NewFolder() {
    std::error_code ignored;
    if (!m_making.empty()) fs::remove_all(m_making, ignored);
}

bool NewFolder::Begin(std::string& error) {
    struct stat there {};
    if (::lstat(m_path.c_str(), &there) == 0) {
        errno = EEXIST;
        return Fail(error);
    }
    const std::string parent = FolderOf(m_path);
    std::string making = parent + "." + m_path.substr(parent.size()) + ".XXXXXX";
    if (::mkdtemp(making.data()) == nullptr) return Fail(error);
    m_making = std::move(making);
    return true;
}

bool NewFolder::MakeFolderOf(const std::string& file, std::string& error) const {
    for (std::size_t slash = file.find('/'); slash != std::string::npos;
         slash = file.find('/', slash + 1)) {
        const std::string folder = m_making + "/" + file.substr(0, slash);
        if (::mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) return Fail(error);
    }
    return true;
}

bool NewFolder::Commit(std::string& error) {
    if (!SyncAll(m_making) || !RenameToNothing(m_making.c_str(), m_path.c_str())) {
        return Fail(error);
    }
    m_making = m_path;
    if (!SyncFolder(FolderOf(m_path))) return Fail(error);
    m_making.clear();
    return true;
}

}  // namespace kalvex::platform
