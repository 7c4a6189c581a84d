// Where data servers are to be found, as the common profile of the machine tells. Main thread.
#pragma once

#include <string>
#include <vector>

#include "platform/Profile.h"

namespace kalvex::app {

// Paths and addresses are in the system's encoding (UTF-8).
struct ServerEntry {
    std::string source;       // engine text
    std::string address;      // "host:port"
    std::string authority;    // PEM file that the server's certificate is checked by
    std::string certificate;  // PEM files of one's own, for a server that asks
    std::string key;
    std::string certificateName;  // that the server's certificate bears; empty: the host
    bool plainTextAllowed = false;
};

// The section "Serwery" has a line "name=host:port" for each server. The settings of its encryption
// stand in the section "Serwer NAME", and for all servers in "Szyfrowanie".
std::vector<ServerEntry> ReadServers(const platform::Profile& profile);

}  // namespace kalvex::app
