#include "programs/sorvaned/Listening.h"

#include "text/CodePage.h"

namespace kalvex {

namespace {

// Polish, UTF-8.
constexpr char kListening[] = "Nasłuchiwanie: ";
constexpr char kNowhere[] = "Serwer nie nasłuchuje: local-socket = false, brak address";

NetworkServerSettings MakeSettings(const Definitions& definitions) {
    NetworkServerSettings settings;
    if (definitions.localSocket) settings.source = definitions.name;
    settings.group = definitions.socketGroup;
    settings.address = definitions.address;
    if (!definitions.certificate.empty()) {
        settings.tls = TlsFiles{.authority = definitions.authority,
                                .certificate = definitions.certificate,
                                .key = definitions.certificateKey};
    }
    settings.plainTextAllowed = definitions.plainTextAllowed;
    // How many there may be is the server's to say, and can change while it runs.
    settings.conversationLimit = kMostClients;
    settings.variableLimit = 2 * kMostVariables;
    return settings;
}

std::string Encryption(const NetworkServerSettings& settings) {
    if (!settings.tls) return " (bez szyfrowania)";
    return settings.tls->authority.empty() ? " (TLS)" : " (TLS, certyfikaty klientów)";
}

}  // namespace

bool OpenToClients(Server& server, MainLoop& loop, LogSink& log,
                   std::unique_ptr<NetworkServer>& network, std::string& error) {
    const NetworkServerSettings settings = MakeSettings(server.Settings());
    if (settings.source.empty() && settings.address.empty()) {
        server.Log(FromUtf8(kNowhere), LogAlways);
        return true;
    }
    network = ListenOnNetwork(settings, server, loop, log, error);
    if (!network) return false;
    if (!settings.source.empty()) {
        const std::string path = LocalSocketPath(settings.runtimeFolder, settings.source);
        server.Log(FromUtf8(kListening + ("gniazdo lokalne " + path)), LogAlways);
    }
    if (!settings.address.empty()) {
        const std::string host = settings.address.substr(0, settings.address.rfind(':'));
        const std::string address = host + ':' + std::to_string(network->TcpPort());
        server.Log(FromUtf8(kListening + address + Encryption(settings)), LogAlways);
    }
    return true;
}

}  // namespace kalvex
