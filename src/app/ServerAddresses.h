// How the data servers that the common profile of the machine names are reached. Main thread.
#pragma once

#include "app/Servers.h"
#include "platform/Profile.h"
#include "vantrel/network/Endpoint.h"

namespace kalvex::app {

// For a network client. A server whose entry names a file of encryption is reached with TLS; of the
// others one on this machine, or one that plain text is allowed to, is not, and all the rest are,
// trusted by the authorities of the system.
vantrel::ServerAddress MakeServerAddress(const ServerEntry& server);

// All of them, by their names.
vantrel::ServerAddresses ReadServerAddresses(const platform::Profile& profile);

}  // namespace kalvex::app
