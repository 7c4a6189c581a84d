#include "platform/posix/LocalListener.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <cerrno>
#include <cstring>
#include <string_view>

#include "platform/Translator.h"
#include "text/WholeNumber.h"

namespace kalvex::platform {

namespace {

constexpr int kSocketFlags = SOCK_CLOEXEC | SOCK_NONBLOCK;

// Of a form that sockets take: its host is a literal, so nothing has to be looked up.
struct PortAddress {
    sockaddr_storage bytes{};
    socklen_t length = 0;
};

bool ReadPort(std::string_view text, in_port_t& port) {
    const auto number = text::ReadWholeNumber<std::uint16_t>(text);
    port = htons(number.value_or(0));
    return number.has_value();
}

bool ReadAddress4(const std::string& host, std::string_view port, PortAddress& address) {
    auto& plain = reinterpret_cast<sockaddr_in&>(address.bytes);
    plain.sin_family = AF_INET;
    address.length = sizeof plain;
    constexpr std::uint32_t kLoopbackNet = 127;
    return ::inet_pton(AF_INET, host.c_str(), &plain.sin_addr) == 1 &&
           ntohl(plain.sin_addr.s_addr) >> 24 == kLoopbackNet && ReadPort(port, plain.sin_port);
}

bool ReadAddress6(const std::string& host, std::string_view port, PortAddress& address) {
    auto& plain = reinterpret_cast<sockaddr_in6&>(address.bytes);
    plain.sin6_family = AF_INET6;
    address.length = sizeof plain;
    return ::inet_pton(AF_INET6, host.c_str(), &plain.sin6_addr) == 1 &&
           IN6_IS_ADDR_LOOPBACK(&plain.sin6_addr) && ReadPort(port, plain.sin6_port);
}

bool ReadLoopback(std::string_view text, PortAddress& address) {
    const std::size_t colon = text.rfind(':');
    if (colon == std::string_view::npos) return false;
    const std::string host(text.substr(0, colon));
    const std::string_view port = text.substr(colon + 1);
    const bool bracketed = host.size() > 2 && host.front() == '[' && host.back() == ']';
    return bracketed ? ReadAddress6(host.substr(1, host.size() - 2), port, address)
                     : ReadAddress4(host, port, address);
}

bool BindAndListen(int fd, const void* address, socklen_t length, std::string& error) {
    if (::bind(fd, static_cast<const sockaddr*>(address), length) == 0 &&
        ::listen(fd, SOMAXCONN) == 0) {
        return true;
    }
    error = std::strerror(errno);
    return false;
}

bool IsSocket(const std::string& path) {
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0 && S_ISSOCK(status.st_mode);
}

}  // namespace

LocalListener::~LocalListener() {
    if (!m_file.empty()) ::unlink(m_file.c_str());
}

bool LocalListener::Listen(const std::string& address, std::string& error) {
    const bool isPath = !address.empty() && address.front() == '/';
    return isPath ? ListenOnPath(address, error) : ListenOnPort(address, error);
}

bool LocalListener::ListenOnPath(const std::string& path, std::string& error) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) {
        error = std::strerror(ENAMETOOLONG);
        return false;
    }
    std::memcpy(address.sun_path, path.data(), path.size());
    if (IsSocket(path)) {
        const Descriptor probe(::socket(AF_UNIX, SOCK_STREAM | kSocketFlags, 0));
        const auto* plain = reinterpret_cast<const sockaddr*>(&address);
        const bool dead = ::connect(probe.Get(), plain, sizeof address) != 0;
        if (dead && errno == ECONNREFUSED) ::unlink(path.c_str());
    }
    m_socket = Descriptor(::socket(AF_UNIX, SOCK_STREAM | kSocketFlags, 0));
    if (!BindAndListen(m_socket.Get(), &address, sizeof address, error)) return false;
    m_file = path;
    m_address = path;
    return true;
}

bool LocalListener::ListenOnPort(const std::string& address, std::string& error) {
    PortAddress bound;
    if (!ReadLoopback(address, bound)) {
        error = Translatable("to nie jest adres tego komputera");
        return false;
    }
    m_socket = Descriptor(::socket(bound.bytes.ss_family, SOCK_STREAM | kSocketFlags, 0));
    // A port that a process has just left is free at once.
    const int on = 1;
    ::setsockopt(m_socket.Get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    if (!BindAndListen(m_socket.Get(), &bound.bytes, bound.length, error)) return false;
    ::getsockname(m_socket.Get(), reinterpret_cast<sockaddr*>(&bound.bytes), &bound.length);
    // The port stands at the same place in both kinds of addresses.
    const in_port_t port = reinterpret_cast<const sockaddr_in&>(bound.bytes).sin_port;
    m_address = address.substr(0, address.rfind(':') + 1) + std::to_string(ntohs(port));
    return true;
}

}  // namespace kalvex::platform
