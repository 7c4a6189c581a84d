#include "platform/FileLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace kalvex::platform {

bool FileLock::Acquire(const std::string& path, bool& taken, std::string& error) {
    Release();
    taken = false;
    m_fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    if (m_fd >= 0 && ::flock(m_fd, LOCK_EX | LOCK_NB) == 0) return true;
    taken = m_fd >= 0 && errno == EWOULDBLOCK;
    error = std::strerror(errno);
    Release();
    return false;
}

void FileLock::Release() {
    if (m_fd >= 0) ::close(m_fd);
    m_fd = -1;
}

}  // namespace kalvex::platform
