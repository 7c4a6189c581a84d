#include "vantrel/network/Endpoint.h"

#include <cstdlib>

#include "platform/NetworkAddress.h"
#include "text/CodePage.h"
#include "vantrel/Codes.h"

namespace kalvex::vantrel {

namespace {

bool IsPlain(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           std::string_view("/-._~").find(c) != std::string_view::npos;
}

// As a URI wants it.
std::string Escape(std::string_view path) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string escaped;
    for (const char c : path) {
        const auto byte = static_cast<unsigned char>(c);
        if (IsPlain(c)) {
            escaped += c;
        } else {
            escaped += {'%', kDigits[byte >> 4], kDigits[byte & 15]};
        }
    }
    return escaped;
}

std::string Environment(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? "" : value;
}

std::string JoinAddress(const std::string& host, std::uint16_t port) {
    const bool bracketed = host.find(':') != std::string::npos;
    return (bracketed ? '[' + host + ']' : host) + ':' + std::to_string(port);
}

}  // namespace

std::string RuntimeFolder() {
    if (std::string folder = Environment("SORVANE_RUNTIME_DIR"); !folder.empty()) return folder;
    if (std::string folder = Environment("XDG_RUNTIME_DIR"); !folder.empty()) {
        return folder + "/sorvane";
    }
    return "/run/sorvane";
}

std::string LocalSocketPath(const std::string& runtimeFolder, std::string_view source) {
    const std::string name = text::ToUtf8(source);
    if (name.empty() || name.front() == '.' || name.find('/') != std::string::npos ||
        name.find('\0') != std::string::npos) {
        return {};
    }
    std::string path = runtimeFolder + '/' + name;
    return path.size() > kLongestSocketPath ? std::string() : path;
}

std::string LocalSocketTarget(std::string_view path) {
    return "unix:" + Escape(path);
}

std::uint32_t FindEndpoint(std::string_view source, const ServerAddresses& addresses,
                           const std::string& runtimeFolder, Endpoint& endpoint) {
    const auto found = addresses.find(source);
    if (found == addresses.end()) {
        const std::string path = LocalSocketPath(runtimeFolder, source);
        endpoint.target = LocalSocketTarget(path);
        endpoint.place = runtimeFolder + '/' + text::ToUtf8(source);
        return path.empty() ? std::uint32_t{ReasonUnknownAddress} : 0;
    }
    const ServerAddress& address = found->second;
    endpoint.place = address.address;
    std::string host;
    std::uint16_t port = 0;
    if (!platform::ReadAddress(address.address, host, port) || port == 0)
        return ReasonUnknownAddress;
    if (!address.tls && !address.plainTextAllowed && !platform::IsLoopback(host))
        return ReasonPlainText;
    endpoint.target = "dns:///" + JoinAddress(host, port);
    endpoint.tls = address.tls;
    endpoint.certificateName = address.certificateName;
    return 0;
}

}  // namespace kalvex::vantrel
