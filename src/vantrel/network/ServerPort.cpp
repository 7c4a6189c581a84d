#include "vantrel/network/ServerPort.h"

#include <grpcpp/generic/async_generic_service.h>
#include <grpcpp/security/server_credentials.h>
#include <grpcpp/server.h>
#include <grpcpp/server_builder.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <iterator>
#include <utility>

#include "vantrel/network/GrpcStream.h"
#include "vantrel/network/Listener.h"
#include "vantrel/network/ServerCertificate.h"

namespace kalvex::vantrel {

namespace {

constexpr int kStreamsOfAConnection = 16;

struct MethodRow {
    const char* name;
    StreamMethod method;
};
constexpr MethodRow kMethods[] = {{kConverse, StreamMethod::Converse},
                                  {kListVariables, StreamMethod::ListVariables}};

// Counts those who have one.
class Presence {
  public:
    explicit Presence(std::shared_ptr<std::atomic<std::size_t>> count) : m_count(std::move(count)) {
        ++*m_count;
    }
    Presence(Presence&&) = default;
    Presence(const Presence&) = delete;
    Presence& operator=(const Presence&) = delete;
    ~Presence() {
        if (m_count) --*m_count;
    }

  private:
    std::shared_ptr<std::atomic<std::size_t>> m_count;
};

class ServerStream final : public GrpcStream<grpc::ServerGenericBidiReactor> {
  public:
    // A client that talks has ended when it says nothing more; one that has asked waits.
    enum class Manner { Talks, Asks };

    ServerStream(std::shared_ptr<StreamEvents> events, std::size_t outboxLimit, Manner manner,
                 grpc::GenericCallbackServerContext& context, Presence presence,
                 std::function<void()> onTakenBack)
        : GrpcStream(std::move(events), outboxLimit),
          m_manner(manner),
          m_context(context),
          m_presence(std::move(presence)),
          m_onTakenBack(std::move(onTakenBack)) {}

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

    void OnAllWrittenLocked() override {
        m_answered = true;
        FinishLocked(m_end);
    }
    void OnReadingEndedLocked() override {
        if (m_manner == Manner::Talks) EndLocked();
    }
    void OnWritingFailedLocked() override { FinishLocked(StreamEnd::Lost); }

    void OnCancel() override {
        const std::lock_guard lock(m_mutex);
        if (!m_answered) m_onTakenBack();
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
    bool m_answered = false;  // up to its end
    const Presence m_presence;
    const std::function<void()> m_onTakenBack;
};

// What is called while there are too many.
class Refusal final : public grpc::ServerGenericBidiReactor {
  public:
    Refusal() { Finish({grpc::StatusCode::RESOURCE_EXHAUSTED, ""}); }

  private:
    void OnDone() override { delete this; }
};

// The calls are taken as bytes, not as the generated classes: so a message that does not decode is
// one lost message and not the end of its stream.
class Service final : public grpc::CallbackGenericService {
  public:
    Service(PortEvents& events, FurtherPort* further, const PortSettings& settings,
            Listener& listener)
        : m_events(events),
          m_further(further),
          m_outboxLimit(settings.outboxLimit),
          m_streamLimit(settings.streamLimit),
          m_listener(listener) {}

    std::size_t StreamCount() const { return *m_count; }

  private:
    grpc::ServerGenericBidiReactor* CreateReactor(
        grpc::GenericCallbackServerContext* context) override {
        const Peer peer = PeerOf(context->peer());
        m_listener.OnCall(peer);
        if (StreamCount() >= m_streamLimit) return new Refusal;
        for (const MethodRow& row : kMethods) {
            if (context->method() != row.name) continue;
            const auto events = m_events.MakeEvents();
            // A list is made in one piece whatever its length.
            const bool talks = row.method == StreamMethod::Converse;
            const auto stream = MakeStream(
                events, talks ? m_outboxLimit : SIZE_MAX,
                talks ? ServerStream::Manner::Talks : ServerStream::Manner::Asks, *context, peer);
            m_events.OnCaller(stream, events, row.method, peer.host);
            return stream.get();
        }
        if (m_further == nullptr) return CallbackGenericService::CreateReactor(context);
        if (const auto method = m_further->Find(context->method())) {
            const auto events = m_further->MakeEvents();
            const auto stream =
                MakeStream(events, m_outboxLimit, ServerStream::Manner::Asks, *context, peer);
            m_further->OnCaller(stream, events, *method, peer.host);
            return stream.get();
        }
        return CallbackGenericService::CreateReactor(context);
    }

    std::shared_ptr<ServerStream> MakeStream(std::shared_ptr<StreamEvents> events,
                                             std::size_t outboxLimit, ServerStream::Manner manner,
                                             grpc::GenericCallbackServerContext& context,
                                             const Peer& peer) {
        auto stream = std::make_shared<ServerStream>(
            std::move(events), outboxLimit, manner, context, Presence(m_count),
            [this, peer] { m_listener.OnTakenBack(peer); });
        stream->Begin();
        return stream;
    }

    PortEvents& m_events;
    FurtherPort* const m_further;  // may be null
    const std::size_t m_outboxLimit;
    const std::size_t m_streamLimit;
    Listener& m_listener;
    // A stream may outlive the service in the hands of who has it.
    const std::shared_ptr<std::atomic<std::size_t>> m_count =
        std::make_shared<std::atomic<std::size_t>>(0);
};

class GrpcPort final : public ServerPort {
  public:
    GrpcPort(const PortSettings& settings, PortEvents& events, FurtherPort* further)
        : m_settings(settings),
          m_listener({.localSocket = settings.localSocket,
                      .address = settings.address,
                      .encrypted = settings.tls.has_value()}),
          m_service(events, further, settings, m_listener) {
        PrepareLibrary();
    }

    ~GrpcPort() override {
        m_listener.Stop();
        if (m_server) m_server->Shutdown(std::chrono::system_clock::now() + kGrace);
    }

    bool Open(platform::Notice& error) {
        auto credentials = grpc::InsecureServerCredentials();
        if (m_settings.tls) {
            m_certificate.emplace(*m_settings.tls, m_settings.address);
            if (!m_certificate->Open(error)) return false;
            credentials = m_certificate->Credentials();
        }
        if (!m_listener.Open(error)) return false;
        grpc::ServerBuilder builder;
        builder.RegisterCallbackGenericService(&m_service);
        builder.SetMaxReceiveMessageSize(kLibraryMaxBytes);
        builder.AddChannelArgument(GRPC_ARG_MAX_CONCURRENT_STREAMS, kStreamsOfAConnection);
        builder.AddChannelArgument(GRPC_ARG_SERVER_HANDSHAKE_TIMEOUT_MS, m_settings.patience);
        builder.AddChannelArgument(GRPC_ARG_MAX_CONNECTION_IDLE_MS, m_settings.patience);
        builder.AddChannelArgument(GRPC_COMPRESSION_CHANNEL_ENABLED_ALGORITHMS_BITSET, 1);
        m_local = AddDoor(builder, grpc::InsecureServerCredentials());
        m_remote = AddDoor(builder, credentials);
        m_server = builder.BuildAndStart();
        m_listener.Start([this](int descriptor, bool local) {
            Door::NewConnectionParameters connection;
            connection.fd = descriptor;
            (local ? m_local : m_remote)->HandleNewConnection(&connection);
        });
        return true;
    }

    int TcpPort() const override { return m_listener.TcpPort(); }

    std::vector<platform::Notice> Check(std::int64_t now, bool& remade) override {
        std::vector<platform::Notice> notices = m_listener.Check(now, remade);
        if (m_certificate)
            std::ranges::move(m_certificate->Check(now), std::back_inserter(notices));
        return notices;
    }
    void OnLogin(const std::string& host) override { m_listener.OnLogin(host); }
    std::size_t StreamCount() const override { return m_service.StreamCount(); }

  private:
    using Door = grpc::experimental::ExternalConnectionAcceptor;

    static std::unique_ptr<Door> AddDoor(grpc::ServerBuilder& builder,
                                         std::shared_ptr<grpc::ServerCredentials> credentials) {
        using Builder = grpc::ServerBuilder::experimental_type;
        return builder.experimental().AddExternalConnectionAcceptor(
            Builder::ExternalConnectionType::FROM_FD, std::move(credentials));
    }

    const PortSettings m_settings;
    Listener m_listener;
    Service m_service;
    std::optional<ServerCertificate> m_certificate;
    std::unique_ptr<Door> m_local;
    std::unique_ptr<Door> m_remote;
    std::unique_ptr<grpc::Server> m_server;
};

}  // namespace

std::unique_ptr<ServerPort> OpenPort(const PortSettings& settings, PortEvents& events,
                                     FurtherPort* further, platform::Notice& error) {
    auto port = std::make_unique<GrpcPort>(settings, events, further);
    if (!port->Open(error)) return nullptr;
    return port;
}

}  // namespace kalvex::vantrel
