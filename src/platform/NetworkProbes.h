// What tests of other machines are made of. The operations block; each test runs on a thread of its
// own, and any number of them at once. Addresses are names or numbers of hosts (UTF-8), looked up
// as IPv4. Failures are told in the system's words.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <thread>

#include "platform/Threads.h"

namespace kalvex::platform {

// Answers of Ping beside the round-trip time.
enum PingResult : int {
    PingNoReply = -1,
    PingNoAddress = -3,
    PingNoPermission = -6,
    // Others: minus the number by which the family knows what a router answered.
    PingNetUnreachable = -11002,
    PingHostUnreachable = -11003,
    PingProtocolUnreachable = -11004,
    PingPortUnreachable = -11005,
    PingTooBig = -11009,
    PingExpired = -11013,
    PingExpiredInPieces = -11014,
    PingBadParameter = -11015,
    PingSourceQuench = -11016,
    PingGeneralFailure = -11050,
};

// The step at which a TCP connection failed.
enum class TcpStep { None, Resolve, Socket, Connect, Close };

struct TcpOutcome {
    TcpStep failed = TcpStep::None;
    std::string error;
};

struct FtpLogin {
    std::string address;
    std::uint16_t port = 0;
    std::string user;  // the bytes that the server gets, as is the password
    std::string password;
};

// One conversation with an FTP server, in passive mode. Used by one thread.
class FtpSession {
  public:
    virtual ~FtpSession() = default;
    virtual bool Connect(const FtpLogin& login, std::string& error) = 0;
    virtual std::string GetGreeting() const = 0;           // what the server said first
    virtual void Command(const std::string& command) = 0;  // no data is expected, nor success
    virtual bool Close() = 0;  // false when the connection was there no more
};

class NetworkProbes {
  public:
    virtual ~NetworkProbes() = default;

    // As the function of that name.
    virtual std::thread StartThread(const ThreadIdentity& identity, std::function<void()> work) = 0;

    // The round-trip time of an echo in milliseconds, or a PingResult.
    virtual int Ping(const std::string& address, std::uint32_t timeoutMilliseconds) = 0;

    // Null when there is nothing to hold a session with. No network traffic yet.
    virtual std::unique_ptr<FtpSession> OpenFtpSession() = 0;

    // Connects and closes again; the time limit is the system's.
    virtual TcpOutcome ConnectTcp(const std::string& address, std::uint16_t port) = 0;

    virtual void Pause(std::uint32_t milliseconds) = 0;
};

// For a process that tests no hosts: no thread can be started.
NetworkProbes& NoProbes();

}  // namespace kalvex::platform
