#pragma once

#include <mutex>

#include "platform/NetworkProbes.h"

namespace kalvex::platform {

// An echo goes out through an ICMP datagram socket, or through a raw one where the system refuses
// that; FTP is spoken by libcurl.
class PosixNetworkProbes final : public NetworkProbes {
  public:
    PosixNetworkProbes() = default;
    ~PosixNetworkProbes() override;
    PosixNetworkProbes(const PosixNetworkProbes&) = delete;
    PosixNetworkProbes& operator=(const PosixNetworkProbes&) = delete;

    std::thread StartThread(const ThreadIdentity& identity, std::function<void()> work) override;
    int Ping(const std::string& address, std::uint32_t timeoutMilliseconds) override;
    std::unique_ptr<FtpSession> OpenFtpSession() override;
    TcpOutcome ConnectTcp(const std::string& address, std::uint16_t port) override;
    void Pause(std::uint32_t milliseconds) override;

  private:
    std::once_flag m_onceFtp;
    bool m_ftpReady = false;
};

}  // namespace kalvex::platform
