// Servers and clients on real sockets, their time moved by hand. What they hear is kept as text.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/MainLoop.h"
#include "support/hand_server.h"
#include "support/heard_events.h"
#include "support/log_recorder.h"
#include "support/marking_translator.h"
#include "support/scratch_folder.h"
#include "support/waiting_loop.h"
#include "vantrel/network/NetworkClient.h"
#include "vantrel/network/NetworkServer.h"

namespace kalvex::support {

// A main loop, a folder for sockets, a clock that stands still. What waits, waits for an event: a
// test whose event does not come ends by the time limit of the test runner.
class NetworkWorld {
  public:
    vantrel::NetworkServerSettings ServerSettings() const;  // a local socket "srv"
    vantrel::NetworkClientSettings ClientSettings() const;
    std::unique_ptr<vantrel::NetworkServer> Listen(const vantrel::NetworkServerSettings& settings,
                                                   vantrel::SessionAcceptor& acceptor);

    void RunUntil(const std::function<bool()>& done);
    void RunUntil(const HeardEvents& events, const std::string& event) {
        RunUntil([&] { return events.Has(event); });
    }
    void RunUntil(const HandServer& server, const std::string& event);

    ScratchFolder folder;
    std::int64_t now = 1'000'000;  // milliseconds
    WaitingLoop loop;
    LogRecorder log;
    MarkingTranslator translator{false};
    std::string error;  // of the last Listen, UTF-8
};

}  // namespace kalvex::support
