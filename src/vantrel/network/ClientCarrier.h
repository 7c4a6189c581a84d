// The client's end of streams to servers.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "platform/Translator.h"
#include "vantrel/network/Endpoint.h"
#include "vantrel/network/Stream.h"

namespace kalvex::vantrel {

class StreamYard;

// Outlives the streams' users, but not the streams: it goes when all streams have come to their
// end, which Finish and Cancel see to within a few seconds. Main thread.
class ClientCarrier {
  public:
    ClientCarrier();
    ~ClientCarrier();
    ClientCarrier(const ClientCarrier&) = delete;
    ClientCarrier& operator=(const ClientCarrier&) = delete;

    // Sets out to reach the server; the stream can be used at once, and reads from Resume on. Null
    // with the reason for the log when a file of `endpoint.tls` cannot be read.
    std::shared_ptr<Stream> Dial(const Endpoint& endpoint, StreamMethod method,
                                 std::shared_ptr<StreamEvents> events, std::size_t outboxLimit,
                                 platform::Notice& error);
    // The same for a method that is none of sorvane.proto, "/package.Service/Method".
    std::shared_ptr<Stream> Dial(const Endpoint& endpoint, const char* method,
                                 std::shared_ptr<StreamEvents> events, std::size_t outboxLimit,
                                 platform::Notice& error);

  private:
    std::shared_ptr<StreamYard> m_yard;
};

}  // namespace kalvex::vantrel
