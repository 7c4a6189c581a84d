// The sockets of a listener.
#pragma once

#include <sys/socket.h>

#include <string>
#include <vector>

#include "platform/posix/Descriptor.h"

namespace kalvex::vantrel {

struct SocketAddress {
    sockaddr_storage storage = {};
    socklen_t length = 0;

    const sockaddr& Get() const { return reinterpret_cast<const sockaddr&>(storage); }
    sockaddr& Get() { return reinterpret_cast<sockaddr&>(storage); }
};

SocketAddress AddressOfPath(const std::string& path);
// Where "host:port" is; none with the system's words in `error`.
std::vector<SocketAddress> FindAddresses(const std::string& address, std::string& error);

int PortOf(const SocketAddress& address);
void SetPort(SocketAddress& address, int port);

// Listens there; a port 0 becomes the one that was free. A socket that lies at a path goes. Not
// valid with the system's words in `error`.
platform::Descriptor ListenAt(SocketAddress& address, std::string& error);

// Begins to connect from an address that no other client has, by which the other end sees it:
// `own`. Not valid when nobody listens there.
platform::Descriptor DialTo(const SocketAddress& address, std::string& own);
// The same name of whoever has connected.
std::string NameOf(const SocketAddress& peer);

}  // namespace kalvex::vantrel
