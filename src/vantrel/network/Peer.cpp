#include "vantrel/network/Peer.h"

#include <netdb.h>

#include <cstdint>
#include <string_view>
#include <utility>

#include "platform/NetworkAddress.h"

namespace kalvex::vantrel {

namespace {

// An address of the fourth version stands within one of the sixth where a socket takes both.
std::string WithoutMapping(const std::string& host) {
    constexpr std::string_view kMapped = "::ffff:";
    const bool isMapped = host.rfind(kMapped, 0) == 0 && host.find('.') != std::string::npos;
    return isMapped ? host.substr(kMapped.size()) : host;
}

Peer PeerAt(const std::string& written, const std::string& port) {
    const std::string host = WithoutMapping(written);
    return {.host = platform::IsLoopback(host) ? "" : host, .place = host + ' ' + port};
}

}  // namespace

Peer PeerOf(const sockaddr& address, socklen_t length) {
    if (address.sa_family == AF_UNIX) return {};
    char host[NI_MAXHOST];
    char port[NI_MAXSERV];
    if (::getnameinfo(&address, length, host, sizeof host, port, sizeof port,
                      NI_NUMERICHOST | NI_NUMERICSERV) != 0) {
        return {};
    }
    return PeerAt(host, port);
}

Peer PeerOf(std::string name) {
    if (!name.starts_with("ip")) return {};
    name.erase(0, name.find(':') + 1);
    for (const auto& [escaped, plain] :
         {std::pair("%5B", "["), std::pair("%5D", "]"), std::pair("%25", "%")}) {
        const std::size_t found = name.find(escaped);
        if (found != std::string::npos) name.replace(found, 3, plain);
    }
    std::string host;
    std::uint16_t port = 0;
    if (!platform::ReadAddress(name, host, port)) return {};
    return PeerAt(host, std::to_string(port));
}

}  // namespace kalvex::vantrel
