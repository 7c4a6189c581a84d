#include "app/ServerAddresses.h"

#include <cstdint>

#include "platform/NetworkAddress.h"

namespace kalvex::app {

namespace {

bool IsPlainTextMeant(const ServerEntry& server) {
    std::string host;
    std::uint16_t port = 0;
    return server.plainTextAllowed ||
           (platform::ReadAddress(server.address, host, port) && platform::IsLoopback(host));
}

}  // namespace

vantrel::ServerAddress MakeServerAddress(const ServerEntry& server) {
    vantrel::ServerAddress address{.address = server.address,
                                   .certificateName = server.certificateName,
                                   .plainTextAllowed = server.plainTextAllowed};
    const bool namesFiles =
        !server.authority.empty() || !server.certificate.empty() || !server.key.empty();
    if (namesFiles || !IsPlainTextMeant(server)) {
        address.tls = vantrel::TlsFiles{server.authority, server.certificate, server.key};
    }
    return address;
}

vantrel::ServerAddresses ReadServerAddresses(const platform::Profile& profile) {
    vantrel::ServerAddresses addresses;
    for (const ServerEntry& server : ReadServers(profile)) {
        addresses.emplace(server.source, MakeServerAddress(server));
    }
    return addresses;
}

}  // namespace kalvex::app
