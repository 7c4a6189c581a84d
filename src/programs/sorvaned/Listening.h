// Opens the data server to its clients. Main thread.
#pragma once

#include <memory>
#include <string>

#include "platform/HttpEndpoint.h"
#include "server/Server.h"
#include "vantrel/network/NetworkServer.h"

namespace kalvex::sorvaned {

// Listens as the server's configuration says, and tells the log where. `network` stays empty when
// it says nowhere; it goes before the server stops. False with an engine text in `error` when that
// cannot be.
bool OpenToClients(server::Server& server, platform::MainLoop& loop, platform::LogSink& log,
                   const platform::Translator& translator,
                   std::unique_ptr<vantrel::NetworkServer>& network, std::string& error);

// Offers the server's figures at the address, and tells the log where. Null with an engine text in
// `error` when that cannot be.
std::unique_ptr<platform::HttpEndpoint> OfferFigures(
    server::Server& server, const std::string& address, platform::MainLoop& loop,
    platform::LogSink& log, const platform::Translator& translator, std::string& error);

}  // namespace kalvex::sorvaned
