#include "programs/sorvaned/Listening.h"

#include "text/CodePage.h"

namespace kalvex {

namespace {

constexpr const char* kNowhere =
    Translatable("Serwer nie nasłuchuje: local-socket = false, brak address");
constexpr const char* kSocket = Translatable("Nasłuchiwanie: gniazdo lokalne %s");
constexpr const char* kPlain = Translatable("Nasłuchiwanie: %s (bez szyfrowania)");
constexpr const char* kTls = Translatable("Nasłuchiwanie: %s (TLS)");
constexpr const char* kTlsForKnown = Translatable("Nasłuchiwanie: %s (TLS, certyfikaty klientów)");

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

const char* TextFor(const NetworkServerSettings& settings) {
    if (!settings.tls) return kPlain;
    return settings.tls->authority.empty() ? kTls : kTlsForKnown;
}

}  // namespace

bool OpenToClients(Server& server, MainLoop& loop, LogSink& log, const Translator& translator,
                   std::unique_ptr<NetworkServer>& network, std::string& error) {
    const NetworkServerSettings settings = MakeSettings(server.Settings());
    if (settings.source.empty() && settings.address.empty()) {
        server.Log(kNowhere, {}, LogAlways);
        return true;
    }
    network = ListenOnNetwork(settings, server, loop, log, translator, error);
    if (!network) return false;
    if (!settings.source.empty()) {
        const std::string path = LocalSocketPath(settings.runtimeFolder, settings.source);
        server.Log(kSocket, {FromUtf8(path)}, LogAlways);
    }
    if (!settings.address.empty()) {
        const std::string host = settings.address.substr(0, settings.address.rfind(':'));
        const std::string address = host + ':' + std::to_string(network->TcpPort());
        server.Log(TextFor(settings), {FromUtf8(address)}, LogAlways);
    }
    return true;
}

}  // namespace kalvex
