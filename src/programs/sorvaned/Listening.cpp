#include "programs/sorvaned/Listening.h"

#include "platform/FigureText.h"
#include "text/CodePage.h"
#include "text/TextFormat.h"

namespace kalvex::sorvaned {

namespace {

constexpr const char* kNowhere =
    platform::Translatable("Serwer nie nasłuchuje: local-socket = false, brak address");
constexpr const char* kSocket = platform::Translatable("Nasłuchiwanie: gniazdo lokalne %s");
constexpr const char* kPlain = platform::Translatable("Nasłuchiwanie: %s (bez szyfrowania)");
constexpr const char* kTls = platform::Translatable("Nasłuchiwanie: %s (TLS)");
constexpr const char* kTlsForKnown =
    platform::Translatable("Nasłuchiwanie: %s (TLS, certyfikaty klientów)");

vantrel::NetworkServerSettings MakeSettings(const server::Definitions& definitions) {
    vantrel::NetworkServerSettings settings =
        vantrel::SettingsFor(definitions.name, definitions.listening);
    // How many there may be is the server's to say, and can change while it runs.
    settings.conversationLimit = server::kMostClients + 1;
    settings.variableLimit = 2 * vantrel::kMostVariables;
    return settings;
}

const char* TextFor(const vantrel::NetworkServerSettings& settings) {
    if (!settings.tls) return kPlain;
    return settings.tls->authority.empty() ? kTls : kTlsForKnown;
}

}  // namespace

bool OpenToClients(server::Server& server, platform::MainLoop& loop, platform::LogSink& log,
                   const platform::Translator& translator,
                   std::unique_ptr<vantrel::NetworkServer>& network, std::string& error) {
    const vantrel::NetworkServerSettings settings = MakeSettings(server.Settings());
    if (settings.source.empty() && settings.address.empty()) {
        server.Log(kNowhere, {}, platform::LogAlways);
        return true;
    }
    network = vantrel::ListenOnNetwork(settings, server, loop, log, translator, error);
    if (!network) return false;
    if (!settings.source.empty()) {
        const std::string path = vantrel::LocalSocketPath(settings.runtimeFolder, settings.source);
        server.Log(kSocket, {text::FromUtf8(path)}, platform::LogAlways);
    }
    if (!settings.address.empty()) {
        const std::string host = settings.address.substr(0, settings.address.rfind(':'));
        const std::string address = host + ':' + std::to_string(network->TcpPort());
        server.Log(TextFor(settings), {text::FromUtf8(address)}, platform::LogAlways);
    }
    return true;
}

std::unique_ptr<platform::HttpEndpoint> OfferFigures(
    server::Server& server, const std::string& address, platform::MainLoop& loop,
    platform::LogSink& log, const platform::Translator& translator, std::string& error) {
    std::string reason;
    auto endpoint = platform::LoadHttpEndpoint(
        loop,
        platform::HttpText{"/metrics", platform::kFigureContentType,
                           [&server] { return server::FormatHealthMetrics(server.Figures()); }},
        reason);
    if (endpoint && endpoint->Start(address, reason)) {
        log.Log(text::FormatText(translator.Translate("Udostępnianie stanu serwera: %s"),
                                 {text::FromUtf8(endpoint->GetAddress())}),
                platform::LogAlways);
        return endpoint;
    }
    error = text::FormatText(translator.Translate("Nie można udostępnić stanu serwera: %s (%s)"),
                             {text::FromUtf8(address), translator.Translate(reason.c_str())});
    return nullptr;
}

}  // namespace kalvex::sorvaned
