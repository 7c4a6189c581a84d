#include "vantrel/network/LocalSocket.h"

#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "vantrel/network/Endpoint.h"

namespace kalvex::vantrel {

namespace {

constexpr int kPatience = 2;  // seconds

constexpr const char* kNoFolder = platform::Translatable("Nie można utworzyć folderu %s (%s)");
constexpr const char* kNoLock = platform::Translatable("Brak dostępu do pliku %s (%s)");
constexpr const char* kTaken = platform::Translatable("Gniazdo %s (obsługuje je inny serwer: %s)");
constexpr const char* kNoSocket = platform::Translatable("Gniazdo %s (to nie jest gniazdo)");
constexpr const char* kNoGroup = platform::Translatable("Gniazdo %s (brak grupy %s)");
constexpr const char* kRefused = platform::Translatable("Gniazdo %s (%s)");

constexpr mode_t kOwnersFolder = 0700;
constexpr mode_t kGroupsFolder = 0710;  // to pass through, not to open
constexpr mode_t kGroupsSocket = 0660;
constexpr const char* kSocketName = "s";

bool Refuse(platform::Notice& error, const char* polish, const std::string& path,
            const std::string& why = {}) {
    error = {polish, {path, why}};
    return false;
}

std::string LinkedFrom(const std::string& path) {
    std::error_code none;
    return std::filesystem::read_symlink(path, none).string();
}

}  // namespace

LocalSocket::~LocalSocket() {
    if (m_path.empty()) return;
    ::unlink(m_path.c_str());
    if (!HasOwnFolder()) return;
    ::unlink(m_place.c_str());
    ::rmdir(m_folder.c_str());
}

bool LocalSocket::Fail(platform::Notice& error) const {
    return Refuse(error, kRefused, m_place, std::strerror(errno));
}

bool LocalSocket::Claim(const std::string& path, const std::string& group,
                        platform::Notice& error) {
    const std::filesystem::path file(path);
    std::error_code code;
    std::filesystem::create_directories(file.parent_path(), code);
    if (code) return Refuse(error, kNoFolder, file.parent_path(), code.message());
    m_folder = file.parent_path() / ("." + file.filename().string());
    const std::string lock = m_folder + ".lock";
    bool taken = false;
    std::string why;
    if (!m_lock.Acquire(lock, taken, why, platform::PauseFor(kPatience))) {
        if (taken) return Refuse(error, kTaken, path, why);
        return Refuse(error, kNoLock, lock, why);
    }
    m_place = path;
    if (!RemoveLeftover(error)) return false;
    m_path = path;
    return group.empty() || MakeFolder(group, error);
}

// Of a server that died, with or without a group.
bool LocalSocket::RemoveLeftover(platform::Notice& error) const {
    const std::string inside = std::filesystem::path(m_folder).filename() / kSocketName;
    struct stat status;
    if (::lstat(m_place.c_str(), &status) == 0) {
        if (!S_ISSOCK(status.st_mode) && LinkedFrom(m_place) != inside)
            return Refuse(error, kNoSocket, m_place);
        if (::unlink(m_place.c_str()) != 0) return Fail(error);
    }
    ::unlink((m_folder + '/' + kSocketName).c_str());
    ::rmdir(m_folder.c_str());
    return true;
}

bool LocalSocket::MakeFolder(const std::string& group, platform::Notice& error) {
    const struct group* entry = ::getgrnam(group.c_str());
    if (entry == nullptr) return Refuse(error, kNoGroup, m_path, group);
    m_group = entry->gr_gid;
    const std::string place = m_folder + '/' + kSocketName;
    if (place.size() > kLongestSocketPath) return true;
    const std::string name = std::filesystem::path(m_folder).filename();
    if (::mkdir(m_folder.c_str(), kOwnersFolder) != 0) return Fail(error);
    m_place = place;
    if (::chown(m_folder.c_str(), static_cast<uid_t>(-1), *m_group) == 0 &&
        ::chmod(m_folder.c_str(), kGroupsFolder) == 0 &&
        ::symlink((name + '/' + kSocketName).c_str(), m_path.c_str()) == 0) {
        return true;
    }
    return Fail(error);
}

bool LocalSocket::Admit(platform::Notice& error) {
    if (!m_group) return true;
    return (::chown(m_place.c_str(), static_cast<uid_t>(-1), *m_group) == 0 &&
            ::chmod(m_place.c_str(), kGroupsSocket) == 0) ||
           Fail(error);
}

LocalSocket::OwnerOnly::OwnerOnly() : m_mask(::umask(0177)) {}

LocalSocket::OwnerOnly::~OwnerOnly() {
    ::umask(m_mask);
}

}  // namespace kalvex::vantrel
