#include "support/network_world.h"

#include <algorithm>

#include "text/CodePage.h"

namespace kalvex::support {

vantrel::NetworkServerSettings NetworkWorld::ServerSettings() const {
    vantrel::NetworkServerSettings settings;
    settings.source = "srv";
    settings.runtimeFolder = folder.Path();
    settings.clock = [this] { return now; };
    return settings;
}

vantrel::NetworkClientSettings NetworkWorld::ClientSettings() const {
    vantrel::NetworkClientSettings settings;
    settings.runtimeFolder = folder.Path();
    settings.clock = [this] { return now; };
    return settings;
}

std::unique_ptr<vantrel::NetworkServer> NetworkWorld::Listen(
    const vantrel::NetworkServerSettings& settings, vantrel::SessionAcceptor& acceptor) {
    std::string reason;
    auto server = vantrel::ListenOnNetwork(settings, acceptor, loop, log, translator, reason);
    error = text::ToUtf8(reason);
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

}  // namespace kalvex::support
