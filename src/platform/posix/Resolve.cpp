#include "platform/posix/Resolve.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>

namespace kalvex::platform {

std::optional<sockaddr_in> ResolveHost(const std::string& address, std::string& error) {
    sockaddr_in host{};
    host.sin_family = AF_INET;
    if (inet_pton(AF_INET, address.c_str(), &host.sin_addr) == 1) return host;
    addrinfo hints{};
    hints.ai_family = AF_INET;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    const int failure = getaddrinfo(address.c_str(), nullptr, &hints, &found);
    if (failure != 0) {
        error = failure == EAI_SYSTEM ? std::strerror(errno) : gai_strerror(failure);
        return std::nullopt;
    }
    std::memcpy(&host, found->ai_addr, sizeof host);
    freeaddrinfo(found);
    return host;
}

}  // namespace kalvex::platform
