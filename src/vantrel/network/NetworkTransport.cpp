#include "vantrel/network/NetworkTransport.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "text/CodePage.h"
#include "vantrel/Codes.h"
#include "vantrel/network/DialFault.h"

namespace kalvex::vantrel {

namespace {

// The source, the detail.
constexpr const char* kNoConnection = platform::Translatable("Brak połączenia z %s (%s)");
constexpr const char* kServerStuck =
    platform::Translatable("Serwer %s nie odbiera komunikatów (%s)");

std::string LineOf(const platform::Notice& notice, const platform::Translator& translator) {
    return text::FromUtf8(platform::InWords(notice, translator));
}

std::uint32_t ReasonOf(StreamEnd end, bool wasOpen) {
    if (end == StreamEnd::TooLarge) return ReasonBadMessage;
    return wasOpen ? ReasonLost : ReasonUnreachable;
}

}  // namespace

NetworkTransport::NetworkTransport(NetworkClient& client, std::string_view source,
                                   Endpoint endpoint, ClientTransportEvents& events)
    : m_client(client),
      m_source(text::ToUtf8(source)),
      m_endpoint(std::move(endpoint)),
      m_events(events),
      m_ownEvents(
          std::make_shared<HandOver>(client.m_loop, std::numeric_limits<std::size_t>::max())) {
    client.m_transports.push_back(this);
}

NetworkTransport::~NetworkTransport() {
    std::erase(m_client.m_transports, this);
    Close(ReasonClosed);
    m_ownEvents->Stop();
    for (const auto& asked : m_askedLists) asked.second.stream->Cancel();
}

bool NetworkTransport::Open() {
    if (m_state == State::Resting || m_state == State::Waiting) Attempt();
    return true;
}

void NetworkTransport::Attempt() {
    m_state = State::Opening;
    m_watch = PeerWatch(m_client.m_settings.clock());
    m_reception =
        std::make_shared<Reception<ServerParcel>>(m_client.m_loop, m_client.m_settings.inboxLimit);
    platform::Notice error;
    m_stream = m_client.m_carrier.Dial(m_endpoint, StreamMethod::Converse, m_reception,
                                       m_client.m_settings.outboxLimit, error);
    if (m_stream) return m_reception->Start(m_stream, *this);
    Log(kNoConnection, platform::InWords(error, m_client.m_translator), platform::LogErrors);
    Break(ReasonUnreachable);
}

void NetworkTransport::Send(ClientMessage message) {
    if (m_state != State::Open) return;
    const platform::Translator& translator = m_client.m_translator;
    PackedRequest packed = Pack(message);
    for (ServerMessage& refusal : packed.refusals) {
        if (auto* login = std::get_if<LoginResult>(&refusal)) {
            login->text = translator.Translate(text::ToUtf8(login->text).c_str());
        }
        Tell([refusal = std::move(refusal)](ClientTransportEvents& events) mutable {
            events.OnMessage(std::move(refusal));
        });
    }
    for (std::string& parcel : packed.parcels) {
        if (m_stream->Send(std::move(parcel))) continue;
        Log(kServerStuck, text::ToUtf8(ConnectionReasonText(ReasonSilent, translator)),
            platform::LogErrors);
        return Break(ReasonSilent);
    }
    m_spoke = true;
}

void NetworkTransport::Close(std::uint32_t reason) {
    const State state = std::exchange(m_state, State::Resting);
    const auto stream = TakeStream();
    if (state == State::Opening) stream->Cancel();
    if (state != State::Open) return;
    stream->Send(Pack(Farewell{reason == ReasonClosed ? ReasonClientEnded : reason}));
    stream->Finish(StreamEnd::Orderly);
    Tell([reason](ClientTransportEvents& events) { events.OnClosed(reason); });
}

void NetworkTransport::KeepUp() {
    const std::int64_t now = m_client.m_settings.clock();
    for (const auto& asked : m_askedLists) {
        if (now < asked.second.until) break;
        Tell([this, number = asked.first](ClientTransportEvents&) { FinishList(number); });
    }
    if (m_state == State::Waiting && now >= m_nextAttempt) return Attempt();
    if (!m_stream) return;
    const LifeSigns signs{.heard = m_reception->TakeHeard(),
                          .spoke = std::exchange(m_spoke, false),
                          .stuck = m_stream->IsStuck()};
    const PeerWatch::Due due = m_watch.Look(m_client.m_settings.clock(), signs);
    if (due == PeerWatch::Due::Beat) {
        if (m_state == State::Open) m_stream->Send(Pack(Heartbeat{}));
    } else if (due != PeerWatch::Due::Nothing) {
        if (m_state == State::Opening) TellFault(StreamEnd::Lost, {});
        Break(ReasonSilent);
    }
}

std::shared_ptr<Stream> NetworkTransport::TakeStream() {
    if (m_reception) m_reception->Stop();
    m_reception.reset();
    return std::exchange(m_stream, nullptr);
}

void NetworkTransport::Break(std::uint32_t reason) {
    if (const auto stream = TakeStream()) stream->Cancel();
    const State state = std::exchange(m_state, State::Waiting);
    m_away = true;
    m_nextAttempt = m_client.m_settings.clock() + m_pause.Next();
    if (state == State::Open) {
        Tell([reason](ClientTransportEvents& events) { events.OnClosed(reason); });
    } else {
        Tell([this, reason](ClientTransportEvents& events) {
            if (m_state == State::Resting) return;
            events.OnFault(ConnectionFault::Open, reason);
        });
    }
}

void NetworkTransport::Tell(std::function<void(ClientTransportEvents&)> event) {
    m_ownEvents->Push([event = std::move(event), &events = m_events] { event(events); }, 0);
}

void NetworkTransport::Log(const char* polish, const std::string& detail, int level) {
    Log({polish, {m_source, detail}}, level);
}

bool NetworkTransport::Log(const platform::Notice& notice, int level) {
    std::string line = LineOf(notice, m_client.m_translator);
    if (line == m_lastLine) return false;
    m_client.m_log.Log(line, level);
    m_lastLine = std::move(line);
    return true;
}

void NetworkTransport::TellFault(StreamEnd end, const std::string& detail) {
    if (!m_client.m_settings.tellsFaults) return;
    const platform::Notice fault = DialFault(m_source, m_endpoint, end, detail);
    if (!Log(fault, platform::LogErrors) || detail.empty()) return;
    m_client.m_log.Log(LineOf({kNoConnection, {m_source, detail}}, m_client.m_translator),
                       platform::LogTransmission);
}

// ---- what the stream brings

void NetworkTransport::OnParcel(ServerParcel parcel) {
    if (const auto* farewell = std::get_if<Farewell>(&parcel)) return Break(farewell->reason);
    if (std::holds_alternative<Greeting>(parcel) && m_state == State::Opening) {
        m_state = State::Open;
        if (std::exchange(m_away, false) && m_client.m_settings.tellsFaults) {
            Log(DialSuccess(m_source, m_endpoint), platform::LogErrors);
        }
        m_lastLine.clear();
        return m_events.OnOpened();
    }
    auto* message = std::get_if<ServerMessage>(&parcel);
    if (message == nullptr || m_state != State::Open) return;
    m_pause.Reset();
    m_events.OnMessage(std::move(*message));
}

void NetworkTransport::OnWireFault(WireFault) {
    if (m_state == State::Open) return m_events.OnFault(ConnectionFault::Receive, ReasonBadMessage);
    TellFault(StreamEnd::NotOffered, {});
    Break(ReasonBadMessage);
}

void NetworkTransport::OnEnded(StreamEnd end, const std::string& detail) {
    if (m_state == State::Opening) TellFault(end, detail);
    Break(ReasonOf(end, m_state == State::Open));
}

// ---- the list of variables

std::shared_ptr<Stream> NetworkTransport::DialForList(
    const LoginRequest& login, const std::shared_ptr<ListReception>& reception) {
    PackedRequest packed = Pack(ClientMessage(login));
    if (packed.parcels.empty()) return nullptr;
    platform::Notice error;
    auto stream = m_client.m_carrier.Dial(m_endpoint, StreamMethod::ListVariables, reception,
                                          m_client.m_settings.outboxLimit, error);
    if (!stream) {
        Log(kNoConnection, platform::InWords(error, m_client.m_translator), platform::LogErrors);
        return nullptr;
    }
    stream->Resume();
    stream->Send(std::move(packed.parcels.front()));
    return stream;
}

bool NetworkTransport::LoadVariableList(const LoginRequest& login,
                                        std::vector<VariableDefinition>& list) {
    const auto reception = std::make_shared<ListReception>();
    const auto stream = DialForList(login, reception);
    if (!stream) return false;
    const bool loaded = reception->Await(m_client.m_settings.listPatience, list);
    stream->Cancel();
    return loaded;
}

void NetworkTransport::AskVariableList(const LoginRequest& login, ListTaker done) {
    const std::uint64_t number = ++m_lastAskedList;
    const auto reception = std::make_shared<ListReception>([events = m_ownEvents, this, number] {
        events->Push([this, number] { FinishList(number); }, 0);
    });
    auto stream = DialForList(login, reception);
    if (!stream) return done(std::nullopt);
    const std::int64_t until =
        m_client.m_settings.clock() + m_client.m_settings.listPatience.count();
    m_askedLists.emplace(number, AskedList{std::move(stream), reception, std::move(done), until});
}

// One that has run out of time may end yet.
void NetworkTransport::FinishList(std::uint64_t number) {
    const auto asked = m_askedLists.extract(number);
    if (asked.empty()) return;
    asked.mapped().stream->Cancel();
    std::vector<VariableDefinition> list;
    const bool loaded = asked.mapped().reception->Await(std::chrono::milliseconds(0), list);
    asked.mapped().done(loaded ? std::optional(std::move(list)) : std::nullopt);
}

// ---- the factory

NetworkClient::NetworkClient(NetworkClientSettings settings, platform::MainLoop& loop,
                             platform::LogSink& log, const platform::Translator& translator)
    : m_settings(std::move(settings)), m_loop(loop), m_log(log), m_translator(translator) {}

NetworkClient::~NetworkClient() = default;

std::unique_ptr<ClientTransport> NetworkClient::Connect(std::string_view source,
                                                        ClientTransportEvents& events,
                                                        std::uint32_t& reason) {
    Endpoint endpoint;
    reason = FindEndpoint(source, m_settings.addresses, m_settings.runtimeFolder, endpoint);
    if (reason != 0) {
        if (m_settings.tellsFaults && m_noWayTold.emplace(source).second) {
            m_log.Log(LineOf(NoWayFault(text::ToUtf8(source), endpoint, reason), m_translator),
                      platform::LogErrors);
        }
        return nullptr;
    }
    return std::make_unique<NetworkTransport>(*this, source, std::move(endpoint), events);
}

void NetworkClient::Check() {
    for (NetworkTransport* transport : m_transports) transport->KeepUp();
}

}  // namespace kalvex::vantrel
