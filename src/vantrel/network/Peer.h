// Who is at the other end of a connection.
#pragma once

#include <sys/socket.h>

#include <string>

namespace kalvex::vantrel {

struct Peer {
    std::string host = {};   // empty: this machine
    std::string place = {};  // host and port, which no other connection has; empty: a local socket
};

Peer PeerOf(const sockaddr& address, socklen_t length);
// By the library's name: "ipv4:10.1.2.3:50412", "ipv6:%5Bfe80::1%25eth0%5D:50412" or "unix:".
Peer PeerOf(std::string name);

}  // namespace kalvex::vantrel
