#include "vantrel/network/ListeningFault.h"

#include <netdb.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <memory>

#include "platform/NetworkAddress.h"

namespace kalvex::vantrel {

namespace {

// 0 or the number of the system's error.
int TryToListen(const addrinfo& place) {
    const int descriptor = ::socket(place.ai_family, place.ai_socktype | SOCK_CLOEXEC, 0);
    if (descriptor < 0) return errno;
    const int on = 1;
    ::setsockopt(descriptor, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    const bool free =
        ::bind(descriptor, place.ai_addr, place.ai_addrlen) == 0 && ::listen(descriptor, 1) == 0;
    const int fault = free ? 0 : errno;
    ::close(descriptor);
    return fault;
}

}  // namespace

std::string ListeningFault(const std::string& address) {
    std::string host;
    std::uint16_t port = 0;
    platform::ReadAddress(address, host, port);
    addrinfo hints{};
    hints.ai_flags = AI_PASSIVE;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    const int unknown = ::getaddrinfo(host.c_str(), std::to_string(port).c_str(), &hints, &found);
    if (unknown != 0) return unknown == EAI_SYSTEM ? std::strerror(errno) : ::gai_strerror(unknown);
    const std::unique_ptr<addrinfo, void (*)(addrinfo*)> places(found, ::freeaddrinfo);
    for (const addrinfo* place = found; place != nullptr; place = place->ai_next) {
        const int fault = TryToListen(*place);
        if (fault != 0) return std::strerror(fault);
    }
    return {};
}

}  // namespace kalvex::vantrel
