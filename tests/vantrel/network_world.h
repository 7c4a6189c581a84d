// Servers and clients on real sockets, their time moved by hand. What they hear is kept as text.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "marking_translator.h"
#include "platform/MainLoop.h"
#include "scratch_folder.h"
#include "vantrel/hand_server.h"
#include "vantrel/network/NetworkClient.h"
#include "vantrel/network/NetworkServer.h"

namespace kalvex {

// All there is to a value: type, status, time, content.
std::string DescribeWhole(const CVal& value);
std::string Describe(const ServerMessage& message);

// "level text", UTF-8.
class HeardLog final : public LogSink {
  public:
    void Log(std::string_view text, int level) override;

    std::vector<std::string> lines;
};

class HeardEvents final : public ClientTransportEvents {
  public:
    void OnOpened() override { heard.push_back("opened"); }
    void OnMessage(ServerMessage message) override { heard.push_back(Describe(message)); }
    void OnFault(ConnectionFault fault, std::uint32_t reason) override;
    void OnClosed(std::uint32_t reason) override;

    bool Has(const std::string& event) const;

    std::vector<std::string> heard;
};

// A main loop, a folder for sockets, a clock that stands still. What waits, waits for an event: a
// test whose event does not come ends by the time limit of the test runner.
class NetworkWorld {
  public:
    NetworkServerSettings ServerSettings() const;  // a local socket "srv"
    NetworkClientSettings ClientSettings() const;
    std::unique_ptr<NetworkServer> Listen(const NetworkServerSettings& settings,
                                          SessionAcceptor& acceptor);

    void RunUntil(const std::function<bool()>& done);
    void RunUntil(const HeardEvents& events, const std::string& event) {
        RunUntil([&] { return events.Has(event); });
    }
    void RunUntil(const HandServer& server, const std::string& event);

    ScratchFolder folder;
    std::int64_t now = 1'000'000;  // milliseconds
    PostedWork loop;
    HeardLog log;
    MarkingTranslator translator{false};
    std::string error;  // of the last Listen, UTF-8
};

}  // namespace kalvex
