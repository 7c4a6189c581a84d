#include "vantrel/network/ServerPort.h"

#include <grpcpp/generic/async_generic_service.h>
#include <grpcpp/security/server_credentials.h>
#include <grpcpp/server.h>
#include <grpcpp/server_builder.h>

#include "platform/NetworkAddress.h"
#include "vantrel/network/GrpcStream.h"
#include "vantrel/network/ListeningFault.h"
#include "vantrel/network/TlsContent.h"

namespace kalvex::vantrel {

namespace {

constexpr int kStreamsOfAConnection = 16;
constexpr int kHandshakeMilliseconds = 10'000;

struct MethodRow {
    const char* name;
    StreamMethod method;
};
constexpr MethodRow kMethods[] = {{kConverse, StreamMethod::Converse},
                                  {kListVariables, StreamMethod::ListVariables}};

class ServerStream final : public GrpcStream<grpc::ServerGenericBidiReactor> {
  public:
    // A client that talks has ended when it says nothing more; one that has asked waits.
    enum class Manner { Talks, Asks };

    ServerStream(std::shared_ptr<StreamEvents> events, std::size_t outboxLimit, Manner manner,
                 grpc::GenericCallbackServerContext& context)
        : GrpcStream(std::move(events), outboxLimit), m_manner(manner), m_context(context) {}

    void Begin() { KeepAlive(); }

    void Finish(StreamEnd end, std::string detail) override {
        {
            const std::lock_guard lock(m_mutex);
            m_end = end;
            m_detail = std::move(detail);
        }
        CloseOutbox();
    }

    void Cancel() override {
        const std::lock_guard lock(m_mutex);
        if (m_done) return;
        m_context.TryCancel();
        FinishLocked(StreamEnd::Lost);
    }

  private:
    void FinishLocked(StreamEnd end) {
        if (std::exchange(m_over, true)) return;
        for (const StreamEndRow& row : kStreamEnds) {
            if (row.end == end) grpc::ServerGenericBidiReactor::Finish({row.code, m_detail});
        }
    }

    void EndLocked() {
        if (!std::exchange(m_ended, true)) Events().OnEnded(StreamEnd::Lost, "");
    }

    void OnAllWrittenLocked() override { FinishLocked(m_end); }
    void OnReadingEndedLocked() override {
        if (m_manner == Manner::Talks) EndLocked();
    }
    void OnWritingFailedLocked() override { FinishLocked(StreamEnd::Lost); }

    void OnCancel() override {
        const std::lock_guard lock(m_mutex);
        EndLocked();
        FinishLocked(StreamEnd::Lost);
    }

    void OnDone() override {
        const auto self = TakeSelf();
        const std::lock_guard lock(m_mutex);
        m_done = true;
    }

    const Manner m_manner;
    grpc::GenericCallbackServerContext& m_context;  // until the stream is done
    StreamEnd m_end = StreamEnd::Orderly;
    std::string m_detail;
    bool m_ended = false;  // the events have been told
    bool m_done = false;
};

// The calls are taken as bytes, not as the generated classes: so a message that does not decode is
// one lost message and not the end of its stream.
class Service final : public grpc::CallbackGenericService {
  public:
    Service(PortEvents& events, FurtherPort* further, std::size_t outboxLimit)
        : m_events(events), m_further(further), m_outboxLimit(outboxLimit) {}

  private:
    grpc::ServerGenericBidiReactor* CreateReactor(
        grpc::GenericCallbackServerContext* context) override {
        for (const MethodRow& row : kMethods) {
            if (context->method() != row.name) continue;
            const auto events = m_events.MakeEvents();
            // A list is made in one piece whatever its length.
            const bool talks = row.method == StreamMethod::Converse;
            const auto stream = std::make_shared<ServerStream>(
                events, talks ? m_outboxLimit : SIZE_MAX,
                talks ? ServerStream::Manner::Talks : ServerStream::Manner::Asks, *context);
            stream->Begin();
            m_events.OnCaller(stream, events, row.method, RemoteHost(context->peer()));
            return stream.get();
        }
        if (m_further == nullptr) return CallbackGenericService::CreateReactor(context);
        if (const auto method = m_further->Find(context->method())) {
            const auto events = m_further->MakeEvents();
            const auto stream = std::make_shared<ServerStream>(
                events, m_outboxLimit, ServerStream::Manner::Asks, *context);
            stream->Begin();
            m_further->OnCaller(stream, events, *method, RemoteHost(context->peer()));
            return stream.get();
        }
        return CallbackGenericService::CreateReactor(context);
    }

    // From "ipv4:10.1.2.3:50412", "ipv6:%5Bfe80::1%5D:50412" or "unix:".
    static std::string RemoteHost(std::string peer) {
        const std::size_t family = peer.find(':');
        if (peer.compare(0, 2, "ip") != 0) return {};
        peer.erase(0, family + 1);
        for (const auto& [escaped, plain] :
             {std::pair("%5B", "["), std::pair("%5D", "]"), std::pair("%25", "%")}) {
            const std::size_t found = peer.find(escaped);
            if (found != std::string::npos) peer.replace(found, 3, plain);
        }
        std::string host;
        std::uint16_t port = 0;
        if (!platform::ReadAddress(peer, host, port) || platform::IsLoopback(host)) return {};
        constexpr std::string_view kMapped = "::ffff:";
        if (host.starts_with(kMapped) && host.find('.') != std::string::npos) {
            host.erase(0, kMapped.size());
        }
        return host;
    }

    PortEvents& m_events;
    FurtherPort* const m_further;  // may be null
    const std::size_t m_outboxLimit;
};

class GrpcPort final : public ServerPort {
  public:
    GrpcPort(PortEvents& events, FurtherPort* further, std::size_t outboxLimit)
        : m_service(events, further, outboxLimit) {
        PrepareLibrary();
    }

    ~GrpcPort() override {
        if (m_server) m_server->Shutdown(std::chrono::system_clock::now() + kGrace);
    }

    bool Open(const PortSettings& settings, platform::Notice& error) {
        auto credentials = grpc::InsecureServerCredentials();
        if (settings.tls) {
            credentials = MakeCredentials(*settings.tls, error);
            if (!credentials) return false;
        }
        grpc::ServerBuilder builder;
        builder.RegisterCallbackGenericService(&m_service);
        builder.SetMaxReceiveMessageSize(kLibraryMaxBytes);
        builder.AddChannelArgument(GRPC_ARG_ALLOW_REUSEPORT, 0);
        builder.AddChannelArgument(GRPC_ARG_MAX_CONCURRENT_STREAMS, kStreamsOfAConnection);
        builder.AddChannelArgument(GRPC_ARG_SERVER_HANDSHAKE_TIMEOUT_MS, kHandshakeMilliseconds);
        builder.AddChannelArgument(GRPC_COMPRESSION_CHANNEL_ENABLED_ALGORITHMS_BITSET, 1);
        if (!settings.localSocket.empty()) {
            builder.AddListeningPort(LocalSocketTarget(settings.localSocket),
                                     grpc::InsecureServerCredentials());
        }
        if (!settings.address.empty()) {
            builder.AddListeningPort("dns:///" + settings.address, credentials, &m_tcpPort);
        }
        m_server = builder.BuildAndStart();
        if (m_server) return true;
        error = Fault(settings);
        return false;
    }

    int TcpPort() const override { return m_tcpPort; }

  private:
    // The library does not tell why; so the system is asked, and what it has nothing against is the
    // fault of the certificate.
    static platform::Notice Fault(const PortSettings& settings) {
        const bool local = settings.address.empty();
        const std::string& place = local ? settings.localSocket : settings.address;
        const std::string why = local ? "" : ListeningFault(place);
        if (!why.empty())
            return {platform::Translatable("Nie można nasłuchiwać %s (%s)"), {place, why}};
        if (local || !settings.tls)
            return {platform::Translatable("Nie można nasłuchiwać %s"), {place}};
        return {
            platform::Translatable("Nie można nasłuchiwać %s (niepoprawny certyfikat albo klucz)"),
            {place}};
    }

    static std::shared_ptr<grpc::ServerCredentials> MakeCredentials(const TlsFiles& files,
                                                                    platform::Notice& error) {
        TlsContent content;
        if (!ReadTlsFiles(files, content, error)) return nullptr;
        grpc::SslServerCredentialsOptions options(
            content.authority.empty() ? GRPC_SSL_DONT_REQUEST_CLIENT_CERTIFICATE
                                      : GRPC_SSL_REQUEST_AND_REQUIRE_CLIENT_CERTIFICATE_AND_VERIFY);
        options.pem_root_certs = content.authority;
        options.pem_key_cert_pairs.push_back({content.key, content.certificate});
        return grpc::SslServerCredentials(options);
    }

    Service m_service;
    std::unique_ptr<grpc::Server> m_server;
    int m_tcpPort = 0;
};

}  // namespace

std::unique_ptr<ServerPort> OpenPort(const PortSettings& settings, PortEvents& events,
                                     FurtherPort* further, platform::Notice& error) {
    auto port = std::make_unique<GrpcPort>(events, further, settings.outboxLimit);
    if (!port->Open(settings, error)) return nullptr;
    return port;
}

}  // namespace kalvex::vantrel
