// Where servers are to be found: by an address that the configuration names, or else by a local
// socket. Texts are UTF-8 but for the names of sources.
#pragma once

#include <sys/un.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace kalvex::vantrel {

// Paths of PEM files.
struct TlsFiles {
    std::string authority = {};  // signs the other side's certificate; empty: client, the system's
    std::string certificate = {};  // one's own, with what stands between it and the authority
    std::string key = {};
};

// A server's address as a client has it in its configuration.
struct ServerAddress {
    std::string address;               // "host:port", "[::1]:port"
    std::optional<TlsFiles> tls = {};  // certificate and key only where the server asks for them
    std::string certificateName = {};  // that the server's certificate bears; empty: the host
    bool plainTextAllowed = false;     // beyond this machine without TLS
};

// By the name of the source.
using ServerAddresses = std::map<std::string, ServerAddress, std::less<>>;

// What a carrier dials.
struct Endpoint {
    std::string target = {};
    std::string place = {};  // the same for people: the path of the socket, or "host:port"
    std::optional<TlsFiles> tls = {};
    std::string certificateName = {};
};

// 0, or a reason of vantrel/Codes.h why there is no way to the source: ReasonUnknownAddress or
// ReasonPlainText; then `endpoint` only tells where the way would have gone.
std::uint32_t FindEndpoint(std::string_view source, const ServerAddresses& addresses,
                           const std::string& runtimeFolder, Endpoint& endpoint);

// The folder of local sockets: $SORVANE_RUNTIME_DIR, else $XDG_RUNTIME_DIR/sorvane, else
// /run/sorvane.
std::string RuntimeFolder();

inline constexpr std::size_t kLongestSocketPath = sizeof(sockaddr_un::sun_path) - 1;

// Empty when the name is no name of a file or the path is too long for a socket.
std::string LocalSocketPath(const std::string& runtimeFolder, std::string_view source);

// The target by which gRPC knows a local socket.
std::string LocalSocketTarget(std::string_view path);

}  // namespace kalvex::vantrel
