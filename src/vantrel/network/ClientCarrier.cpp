#include "vantrel/network/ClientCarrier.h"

#include <grpcpp/channel.h>
#include <grpcpp/client_context.h>
#include <grpcpp/create_channel.h>
#include <grpcpp/generic/generic_stub.h>

#include <condition_variable>
#include <vector>

#include "vantrel/network/GrpcStream.h"
#include "vantrel/network/TlsContent.h"

namespace kalvex::vantrel {

// Streams end on a thread of the library, which must not be the one to destroy the last channel:
// that would wait for this very thread. So the main thread does it.
class StreamYard {
  public:
    void Enter() {
        const std::lock_guard lock(m_mutex);
        ++m_living;
    }
    void Leave(std::shared_ptr<Stream> stream) {
        const std::lock_guard lock(m_mutex);
        --m_living;
        m_ended.push_back(std::move(stream));
        m_changed.notify_all();
    }
    void Sweep() {
        std::vector<std::shared_ptr<Stream>> ended;
        const std::lock_guard lock(m_mutex);
        ended.swap(m_ended);
    }
    void AwaitAll() {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_living == 0; });
    }

  private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::size_t m_living = 0;
    std::vector<std::shared_ptr<Stream>> m_ended;
};

namespace {

// The time that reaching a server may take, by the library's clock.
constexpr int kConnectMilliseconds = 5'000;

using Reactor = grpc::ClientBidiReactor<grpc::ByteBuffer, grpc::ByteBuffer>;

class ClientStream final : public GrpcStream<Reactor> {
  public:
    ClientStream(std::shared_ptr<StreamEvents> events, std::size_t outboxLimit,
                 std::shared_ptr<grpc::Channel> channel, std::shared_ptr<StreamYard> yard)
        : GrpcStream(std::move(events), outboxLimit),
          m_yard(std::move(yard)),
          m_stub(std::move(channel)) {}

    void Begin(const char* method) {
        KeepAlive();
        m_yard->Enter();
        m_stub.PrepareBidiStreamingCall(&m_context, method, {}, this);
        AddHold();
        StartCall();
    }

    void Finish(StreamEnd, std::string) override { CloseOutbox(); }

    void Cancel() override {
        m_context.TryCancel();
        const std::lock_guard lock(m_mutex);
        ReadOnLocked();
    }

  private:
    void OnAllWrittenLocked() override { StartWritesDone(); }

    void OnReadingEndedLocked() override {
        m_over = true;
        RemoveHold();
    }

    void OnDone(const grpc::Status& status) override {
        StreamEnd end = StreamEnd::Lost;
        for (const StreamEndRow& row : kStreamEnds) {
            if (row.code == status.error_code()) end = row.end;
        }
        Events().OnEnded(end, status.error_message());
        m_yard->Leave(TakeSelf());
    }

    const std::shared_ptr<StreamYard> m_yard;
    grpc::GenericStub m_stub;
    grpc::ClientContext m_context;
};

grpc::ChannelArguments MakeArguments(const Endpoint& endpoint) {
    grpc::ChannelArguments arguments;
    arguments.SetInt(GRPC_ARG_USE_LOCAL_SUBCHANNEL_POOL, 1);
    arguments.SetInt(GRPC_ARG_ENABLE_HTTP_PROXY, 0);
    arguments.SetInt(GRPC_ARG_ENABLE_RETRIES, 0);
    arguments.SetInt(GRPC_ARG_SERVICE_CONFIG_DISABLE_RESOLUTION, 1);
    arguments.SetInt(GRPC_ARG_MIN_RECONNECT_BACKOFF_MS, kConnectMilliseconds);
    arguments.SetInt(GRPC_COMPRESSION_CHANNEL_ENABLED_ALGORITHMS_BITSET, 1);
    arguments.SetMaxReceiveMessageSize(kLibraryMaxBytes);
    if (!endpoint.certificateName.empty()) {
        arguments.SetSslTargetNameOverride(endpoint.certificateName);
    }
    return arguments;
}

}  // namespace

ClientCarrier::ClientCarrier() : m_yard(std::make_shared<StreamYard>()) {
    PrepareLibrary();
}

ClientCarrier::~ClientCarrier() {
    m_yard->AwaitAll();
    m_yard->Sweep();
}

std::shared_ptr<Stream> ClientCarrier::Dial(const Endpoint& endpoint, StreamMethod method,
                                            std::shared_ptr<StreamEvents> events,
                                            std::size_t outboxLimit, platform::Notice& error) {
    return Dial(endpoint, method == StreamMethod::Converse ? kConverse : kListVariables,
                std::move(events), outboxLimit, error);
}

std::shared_ptr<Stream> ClientCarrier::Dial(const Endpoint& endpoint, const char* method,
                                            std::shared_ptr<StreamEvents> events,
                                            std::size_t outboxLimit, platform::Notice& error) {
    m_yard->Sweep();
    std::shared_ptr<grpc::ChannelCredentials> credentials = grpc::InsecureChannelCredentials();
    if (endpoint.tls) {
        TlsContent content;
        if (!ReadTlsFiles(*endpoint.tls, content, error)) return nullptr;
        credentials = grpc::SslCredentials({content.authority, content.key, content.certificate});
    }
    auto channel = grpc::CreateCustomChannel(endpoint.target, credentials, MakeArguments(endpoint));
    const auto stream =
        std::make_shared<ClientStream>(std::move(events), outboxLimit, std::move(channel), m_yard);
    stream->Begin(method);
    return stream;
}

}  // namespace kalvex::vantrel
