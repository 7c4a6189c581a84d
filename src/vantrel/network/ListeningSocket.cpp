#include "vantrel/network/ListeningSocket.h"

#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <memory>

#include "platform/NetworkAddress.h"
#include "vantrel/network/Peer.h"

namespace kalvex::vantrel {

namespace {

using platform::Descriptor;

Descriptor MakeSocket(const SocketAddress& address) {
    return Descriptor(
        ::socket(address.storage.ss_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
}

void SetOption(const Descriptor& socket, int level, int option, int value) {
    ::setsockopt(socket.Get(), level, option, &value, sizeof value);
}

void RemoveSocket(const SocketAddress& address) {
    const char* const path = reinterpret_cast<const sockaddr_un&>(address.storage).sun_path;
    struct stat status;
    if (::lstat(path, &status) == 0 && S_ISSOCK(status.st_mode)) ::unlink(path);
}

// Whoever listens everywhere is reached on this machine.
SocketAddress WithoutWildcard(SocketAddress address) {
    if (address.storage.ss_family == AF_INET) {
        auto& place = reinterpret_cast<sockaddr_in&>(address.storage);
        if (place.sin_addr.s_addr == htonl(INADDR_ANY))
            place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    } else if (address.storage.ss_family == AF_INET6) {
        auto& place = reinterpret_cast<sockaddr_in6&>(address.storage);
        if (IN6_IS_ADDR_UNSPECIFIED(&place.sin6_addr)) place.sin6_addr = in6addr_loopback;
    }
    return address;
}

}  // namespace

SocketAddress AddressOfPath(const std::string& path) {
    SocketAddress address;
    auto& place = reinterpret_cast<sockaddr_un&>(address.storage);
    place.sun_family = AF_UNIX;
    path.copy(place.sun_path, sizeof place.sun_path - 1);
    address.length = sizeof place;
    return address;
}

std::vector<SocketAddress> FindAddresses(const std::string& address, std::string& error) {
    std::string host;
    std::uint16_t port = 0;
    platform::ReadAddress(address, host, port);
    addrinfo hints{};
    hints.ai_flags = AI_PASSIVE;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    const int unknown = ::getaddrinfo(host.c_str(), std::to_string(port).c_str(), &hints, &found);
    if (unknown != 0) {
        error = unknown == EAI_SYSTEM ? std::strerror(errno) : ::gai_strerror(unknown);
        return {};
    }
    const std::unique_ptr<addrinfo, void (*)(addrinfo*)> places(found, ::freeaddrinfo);
    std::vector<SocketAddress> addresses;
    for (const addrinfo* place = found; place != nullptr; place = place->ai_next) {
        SocketAddress& one = addresses.emplace_back();
        std::memcpy(&one.storage, place->ai_addr, place->ai_addrlen);
        one.length = place->ai_addrlen;
    }
    return addresses;
}

int PortOf(const SocketAddress& address) {
    // Both families have the port at the same place.
    return ntohs(reinterpret_cast<const sockaddr_in&>(address.storage).sin_port);
}

void SetPort(SocketAddress& address, int port) {
    reinterpret_cast<sockaddr_in&>(address.storage).sin_port =
        htons(static_cast<std::uint16_t>(port));
}

Descriptor ListenAt(SocketAddress& address, std::string& error) {
    Descriptor socket = MakeSocket(address);
    const bool local = address.storage.ss_family == AF_UNIX;
    if (local) {
        RemoveSocket(address);
    } else {
        SetOption(socket, SOL_SOCKET, SO_REUSEADDR, 1);
    }
    if (address.storage.ss_family == AF_INET6) SetOption(socket, IPPROTO_IPV6, IPV6_V6ONLY, 0);
    if (::bind(socket.Get(), &address.Get(), address.length) == 0 &&
        ::listen(socket.Get(), SOMAXCONN) == 0) {
        if (!local) ::getsockname(socket.Get(), &address.Get(), &address.length);
        return socket;
    }
    error = std::strerror(errno);
    return Descriptor(-1);
}

Descriptor DialTo(const SocketAddress& address, std::string& own) {
    const SocketAddress place = WithoutWildcard(address);
    Descriptor socket = MakeSocket(place);
    // A local socket has no name of its own unless it is given one.
    const sockaddr_un unnamed{.sun_family = AF_UNIX, .sun_path = {}};
    if (place.storage.ss_family == AF_UNIX) {
        ::bind(socket.Get(), reinterpret_cast<const sockaddr*>(&unnamed),
               sizeof unnamed.sun_family);
    }
    const bool begun = ::connect(socket.Get(), &place.Get(), place.length) == 0 ||
                       errno == EINPROGRESS || errno == EAGAIN;
    if (!begun) return Descriptor(-1);
    SocketAddress name;
    name.length = sizeof name.storage;
    ::getsockname(socket.Get(), &name.Get(), &name.length);
    own = NameOf(name);
    return socket;
}

std::string NameOf(const SocketAddress& peer) {
    if (peer.storage.ss_family != AF_UNIX) return PeerOf(peer.Get(), peer.length).place;
    return {reinterpret_cast<const char*>(&peer.storage), peer.length};
}

}  // namespace kalvex::vantrel
