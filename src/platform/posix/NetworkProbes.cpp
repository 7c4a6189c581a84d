#include "platform/posix/NetworkProbes.h"

#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <optional>

#include "platform/CurlFtpSession.h"
#include "platform/posix/Ping.h"
#include "platform/posix/Resolve.h"

namespace kalvex::platform {

namespace {

TcpOutcome Failed(TcpStep step) {
    return {step, std::strerror(errno)};
}

}  // namespace

PosixNetworkProbes::~PosixNetworkProbes() {
    if (m_ftpReady) StopFtp();
}

std::thread PosixNetworkProbes::StartThread(const ThreadIdentity& identity,
                                            std::function<void()> work) {
    return platform::StartThread(identity, std::move(work));
}

int PosixNetworkProbes::Ping(const std::string& address, std::uint32_t timeoutMilliseconds) {
    std::string error;
    const std::optional<sockaddr_in> host = ResolveHost(address, error);
    return host ? PingHost(*host, timeoutMilliseconds) : PingNoAddress;
}

std::unique_ptr<FtpSession> PosixNetworkProbes::OpenFtpSession() {
    std::call_once(m_onceFtp, [this] { m_ftpReady = StartFtp(); });
    return m_ftpReady ? MakeFtpSession() : nullptr;
}

TcpOutcome PosixNetworkProbes::ConnectTcp(const std::string& address, std::uint16_t port) {
    TcpOutcome outcome{TcpStep::Resolve, std::string()};
    std::optional<sockaddr_in> host = ResolveHost(address, outcome.error);
    if (!host) return outcome;
    host->sin_port = htons(port);
    const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, IPPROTO_TCP);
    if (fd < 0) return Failed(TcpStep::Socket);
    if (connect(fd, reinterpret_cast<const sockaddr*>(&*host), sizeof *host) != 0) {
        outcome = Failed(TcpStep::Connect);
        close(fd);
        return outcome;
    }
    return close(fd) == 0 ? TcpOutcome() : Failed(TcpStep::Close);
}

void PosixNetworkProbes::Pause(std::uint32_t milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

}  // namespace kalvex::platform
