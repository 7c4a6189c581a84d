// For the tests whose very point is the name of this machine's loopback interface.
#pragma once

#include <netdb.h>

namespace kalvex::support {

// Why such a test is skipped.
constexpr const char* kNoLocalhost = "no localhost in /etc/hosts";

inline bool KnowsLocalhost() {
    addrinfo* found = nullptr;
    if (getaddrinfo("localhost", nullptr, nullptr, &found) != 0) return false;
    freeaddrinfo(found);
    return true;
}

}  // namespace kalvex::support
