#include "vantrel/network/LocalSocket.h"

#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

namespace kalvex::vantrel {

namespace {

constexpr int kPatience = 2;  // seconds

constexpr const char* kNoFolder = platform::Translatable("Nie można utworzyć folderu %s (%s)");
constexpr const char* kNoLock = platform::Translatable("Brak dostępu do pliku %s (%s)");
constexpr const char* kTaken = platform::Translatable("Gniazdo %s (obsługuje je inny serwer: %s)");
constexpr const char* kNoSocket = platform::Translatable("Gniazdo %s (to nie jest gniazdo)");
constexpr const char* kNoGroup = platform::Translatable("Gniazdo %s (brak grupy %s)");
constexpr const char* kRefused = platform::Translatable("Gniazdo %s (%s)");

bool Fail(platform::Notice& error, const char* polish, const std::string& path,
          const std::string& why = {}) {
    error = {polish, {path, why}};
    return false;
}

}  // namespace

LocalSocket::~LocalSocket() {
    if (!m_path.empty()) ::unlink(m_path.c_str());
}

bool LocalSocket::Claim(const std::string& path, platform::Notice& error) {
    const std::filesystem::path file(path);
    std::error_code code;
    std::filesystem::create_directories(file.parent_path(), code);
    if (code) return Fail(error, kNoFolder, file.parent_path(), code.message());
    const std::string lock = file.parent_path() / ("." + file.filename().string() + ".lock");
    bool taken = false;
    std::string why;
    if (!m_lock.Acquire(lock, taken, why, platform::PauseFor(kPatience))) {
        if (taken) return Fail(error, kTaken, path, why);
        return Fail(error, kNoLock, lock, why);
    }
    struct stat status;
    if (::lstat(path.c_str(), &status) == 0) {
        if (!S_ISSOCK(status.st_mode)) return Fail(error, kNoSocket, path);
        if (::unlink(path.c_str()) != 0) {
            return Fail(error, kRefused, path, std::strerror(errno));
        }
    }
    m_path = path;
    return true;
}

bool LocalSocket::Admit(const std::string& group, platform::Notice& error) {
    const struct group* entry = ::getgrnam(group.c_str());
    if (entry == nullptr) return Fail(error, kNoGroup, m_path, group);
    if (::chown(m_path.c_str(), static_cast<uid_t>(-1), entry->gr_gid) == 0 &&
        ::chmod(m_path.c_str(), 0660) == 0) {
        return true;
    }
    return Fail(error, kRefused, m_path, std::strerror(errno));
}

LocalSocket::OwnerOnly::OwnerOnly() : m_mask(::umask(0177)) {}

LocalSocket::OwnerOnly::~OwnerOnly() {
    ::umask(m_mask);
}

}  // namespace kalvex::vantrel
