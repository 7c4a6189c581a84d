#include "support/network_world.h"

#include <algorithm>

#include "text/CodePage.h"

namespace kalvex {

NetworkServerSettings NetworkWorld::ServerSettings() const {
    NetworkServerSettings settings;
    settings.source = "srv";
    settings.runtimeFolder = folder.Path();
    settings.clock = [this] { return now; };
    return settings;
}

NetworkClientSettings NetworkWorld::ClientSettings() const {
    NetworkClientSettings settings;
    settings.runtimeFolder = folder.Path();
    settings.clock = [this] { return now; };
    return settings;
}

std::unique_ptr<NetworkServer> NetworkWorld::Listen(const NetworkServerSettings& settings,
                                                    SessionAcceptor& acceptor) {
    std::string reason;
    auto server = ListenOnNetwork(settings, acceptor, loop, log, translator, reason);
    error = ToUtf8(reason);
    return server;
}

void NetworkWorld::RunUntil(const std::function<bool()>& done) {
    while (!done()) loop.WaitAndRun();
}

void NetworkWorld::RunUntil(const HandServer& server, const std::string& event) {
    RunUntil([&] {
        return std::find(server.heard.begin(), server.heard.end(), event) != server.heard.end();
    });
}

}  // namespace kalvex
