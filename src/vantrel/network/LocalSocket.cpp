#include "vantrel/network/LocalSocket.h"

#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

namespace kalvex {

namespace {

bool Fail(std::string& error, const std::string& what, const std::string& path,
          const std::string& why) {
    error = what + " " + path + " (" + why + ")";
    return false;
}

}  // namespace

LocalSocket::~LocalSocket() {
    if (!m_strPath.empty()) ::unlink(m_strPath.c_str());
}

bool LocalSocket::Claim(const std::string& path, std::string& error) {
    const std::filesystem::path file(path);
    std::error_code code;
    std::filesystem::create_directories(file.parent_path(), code);
    if (code) return Fail(error, "Nie można utworzyć folderu", file.parent_path(), code.message());
    const std::string lock = file.parent_path() / ("." + file.filename().string() + ".lock");
    bool taken = false;
    std::string why;
    if (!m_lock.Acquire(lock, taken, why)) {
        if (taken) return Fail(error, "Gniazdo", path, "obsługuje je inny serwer");
        return Fail(error, "Brak dostępu do pliku", lock, why);
    }
    struct stat status;
    if (::lstat(path.c_str(), &status) == 0) {
        if (!S_ISSOCK(status.st_mode)) return Fail(error, "Gniazdo", path, "to nie jest gniazdo");
        if (::unlink(path.c_str()) != 0) {
            return Fail(error, "Gniazdo", path, std::strerror(errno));
        }
    }
    m_strPath = path;
    return true;
}

bool LocalSocket::Admit(const std::string& group, std::string& error) {
    const struct group* entry = ::getgrnam(group.c_str());
    if (entry == nullptr) return Fail(error, "Gniazdo", m_strPath, "brak grupy " + group);
    if (::chown(m_strPath.c_str(), static_cast<uid_t>(-1), entry->gr_gid) == 0 &&
        ::chmod(m_strPath.c_str(), 0660) == 0) {
        return true;
    }
    return Fail(error, "Gniazdo", m_strPath, std::strerror(errno));
}

LocalSocket::OwnerOnly::OwnerOnly() : m_nMask(::umask(0177)) {}

LocalSocket::OwnerOnly::~OwnerOnly() {
    ::umask(m_nMask);
}

}  // namespace kalvex
