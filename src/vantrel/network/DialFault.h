// Why there is no way to a server, in words that a person can act on. Main thread; nothing is asked
// of the system.
#pragma once

#include <cstdint>
#include <string>

#include "platform/Translator.h"
#include "vantrel/network/Endpoint.h"
#include "vantrel/network/Stream.h"

namespace kalvex::vantrel {

// Of an attempt whose stream ended with `end` and `detail`. The source is UTF-8, as the detail is.
platform::Notice DialFault(const std::string& source, const Endpoint& endpoint, StreamEnd end,
                           const std::string& detail);

// Of a source for which FindEndpoint has given a reason.
platform::Notice NoWayFault(const std::string& source, const Endpoint& endpoint,
                            std::uint32_t reason);

// The server answers after a fault.
platform::Notice DialSuccess(const std::string& source, const Endpoint& endpoint);

}  // namespace kalvex::vantrel
