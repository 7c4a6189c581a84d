#include "platform/ServiceManager.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "text/WholeNumber.h"

namespace kalvex::platform {

namespace {

std::string TakeFromEnvironment(const char* name) {
    const char* value = std::getenv(name);
    const std::string text = value == nullptr ? "" : value;
    ::unsetenv(name);
    return text;
}

// A path, or the name of an abstract socket with "@" for its leading zero; other kinds of sockets
// are those of virtual machines.
std::string ReadAddress(std::string text) {
    constexpr std::size_t kLongest = sizeof(sockaddr_un::sun_path) - 1;
    if (text.size() < 2 || text.size() > kLongest) return {};
    if (text.front() != '/' && text.front() != '@') return {};
    if (text.front() == '@') text.front() = '\0';
    return text;
}

std::string StatusLine(std::string_view status) {
    std::string line = "STATUS=" + std::string(status);
    std::replace(line.begin(), line.end(), '\n', ' ');
    return line;
}

}  // namespace

ServiceManager::ServiceManager() : m_address(ReadAddress(TakeFromEnvironment("NOTIFY_SOCKET"))) {
    const std::optional<std::int64_t> process =
        text::ReadWholeNumber<std::int64_t>(TakeFromEnvironment("WATCHDOG_PID"));
    const std::optional<std::int64_t> patience =
        text::ReadWholeNumber<std::int64_t>(TakeFromEnvironment("WATCHDOG_USEC"));
    if (m_address.empty()) return;
    m_fd = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const timeval second{1, 0};
    ::setsockopt(m_fd, SOL_SOCKET, SO_SNDTIMEO, &second, sizeof second);
    const bool mine = !process || *process == ::getpid();
    constexpr std::int64_t kMicrosecondsOfTwo = 2000;
    if (mine && patience && *patience > 0) {
        m_watchdogPeriod = std::max<std::int64_t>(*patience / kMicrosecondsOfTwo, 1);
    }
}

ServiceManager::~ServiceManager() {
    if (m_fd >= 0) ::close(m_fd);
}

void ServiceManager::TellReady() {
    Send("READY=1", 0);
}

void ServiceManager::TellStopping() {
    Send("STOPPING=1", 0);
}

void ServiceManager::TellStatus(std::string_view status) {
    Send(StatusLine(status), MSG_DONTWAIT);
}

void ServiceManager::TellAlive() {
    Send("WATCHDOG=1", MSG_DONTWAIT);
}

void ServiceManager::TellStillBusy() {
    Send("WATCHDOG=1\nEXTEND_TIMEOUT_USEC=30000000", MSG_DONTWAIT);
}

void ServiceManager::Send(const std::string& text, int flags) {
    if (m_fd < 0) return;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, m_address.data(), m_address.size());
    const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + m_address.size());
    ::sendto(m_fd, text.data(), text.size(), flags | MSG_NOSIGNAL,
             reinterpret_cast<const sockaddr*>(&address), length);
}

}  // namespace kalvex::platform
