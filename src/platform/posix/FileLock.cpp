#include "platform/FileLock.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/posix/Flock.h"
#include "platform/posix/RegularFile.h"

namespace kalvex::platform {

namespace {

constexpr mode_t kOwnerOnly = 0600;

// The file of somebody else keeps its rights: they are theirs to give.
void CloseToOthers(int fd) {
    [[maybe_unused]] const int kept = ::fchmod(fd, kOwnerOnly);
}

}  // namespace

bool FileLock::Acquire(const std::string& path, bool& taken, std::string& error,
                       const LockPause& pause) {
    Release();
    taken = false;
    m_fd = OpenRegularFile(path, O_RDWR | O_CREAT | O_NOFOLLOW, kOwnerOnly);
    if (m_fd < 0) {
        error = FileFault(errno == ELOOP ? ENXIO : errno);
        return false;
    }
    CloseToOthers(m_fd);
    if (LockAlone(m_fd, pause)) return true;
    taken = errno == EWOULDBLOCK;
    error = taken ? LockHolder(m_fd) : FileFault(errno);
    Release();
    return false;
}

void FileLock::Release() {
    if (m_fd >= 0) ::close(m_fd);
    m_fd = -1;
}

}  // namespace kalvex::platform
