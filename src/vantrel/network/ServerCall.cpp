#include "vantrel/network/ServerCall.h"

#include <algorithm>
#include <utility>

#include "text/CodePage.h"
#include "vantrel/Codes.h"

namespace kalvex::vantrel {

namespace {

// Polish, UTF-8: the client, the detail.
constexpr const char* kClientStuck =
    platform::Translatable("Klient %s nie odbiera komunikatów - połączenie zerwane");
constexpr const char* kClientSilent =
    platform::Translatable("Klient %s nie odpowiada - połączenie zerwane");
constexpr const char* kBadMessage =
    platform::Translatable("Błąd odbioru pakietu od klienta %s (%s)");
constexpr const char* kTooManyClients =
    platform::Translatable("Odmowa połączenia z klientem %s: za dużo klientów");
constexpr const char* kTooManyVariables =
    platform::Translatable("Klient %s subskrybuje za dużo zmiennych");
constexpr const char* kLeftOut =
    platform::Translatable("Klient %s nie otrzyma za długich danych (pozycje: %s)");
constexpr const char* kNoMemory =
    platform::Translatable("Brak pamięci dla klienta %s - połączenie zerwane");
constexpr const char* kThisMachine = platform::Translatable("na tym komputerze");

}  // namespace

ServerCall::ServerCall(const CallServices& services, Caller caller)
    : m_services(services), m_caller(std::move(caller)), m_watch(services.settings.clock()) {}

void ServerCall::End(std::uint32_t reason, Ending ending) {
    if (std::exchange(m_ended, true)) return;
    m_reason = reason;
    m_caller.reception->Stop();
    if (ending == Ending::Cut) {
        m_caller.stream->Cancel();
    } else {
        if (ending == Ending::Farewell) m_caller.stream->Send(Pack(Farewell{reason}));
        m_caller.stream->Finish(ending == Ending::Refusal ? StreamEnd::Refused
                                                          : StreamEnd::Orderly);
    }
    m_services.retire(*this);
}

void ServerCall::Bury(std::uint32_t reason) {
    End(reason, Ending::Farewell);
    OnBuried(m_reason);
}

void ServerCall::Put(std::string parcel) {
    m_spoke = true;
    if (m_ended || m_caller.stream->Send(std::move(parcel))) return;
    Log(kClientStuck);
    End(ReasonSilent, Ending::Cut);
}

void ServerCall::Check(std::int64_t now) {
    if (m_ended) return;
    const LifeSigns signs{.heard = m_caller.reception->TakeHeard() || MayBeSilent(),
                          .spoke = std::exchange(m_spoke, false),
                          .stuck = m_caller.stream->IsStuck()};
    const PeerWatch::Due due = m_watch.Look(now, signs);
    if (due == PeerWatch::Due::Nothing) return;
    if (due == PeerWatch::Due::Beat) {
        if (Beats()) m_caller.stream->Send(Pack(Heartbeat{}));
        return;
    }
    Log(due == PeerWatch::Due::Stuck ? kClientStuck : kClientSilent);
    End(ReasonSilent, Ending::Cut);
}

void ServerCall::Log(const char* polish, const std::string& detail) {
    const std::int64_t second = m_services.settings.clock() / 1000;
    if (!m_loggedIn && !m_services.refusals.MayLog(m_caller.address, second)) return;
    std::string client = text::ToUtf8(m_client);
    if (!m_caller.address.empty()) {
        client += client.empty() ? m_caller.address : " (" + m_caller.address + ")";
    }
    const platform::Translator& translator = m_services.translator;
    if (client.empty()) client = text::ToUtf8(translator.Translate(kThisMachine));
    m_services.log.Log(text::FromUtf8(platform::InWords({polish, {client, detail}}, translator)),
                       platform::LogErrors);
}

void ServerCall::LogFault(WireFault fault) {
    Log(kBadMessage, text::ToUtf8(m_services.translator.Translate(WireFaultText(fault))));
}

void ServerCall::EndWithoutMemory() {
    Log(kNoMemory);
    End(ReasonLost, Ending::Cut);
}

void ServerCall::OnEnded(StreamEnd, const std::string&) {
    End(ReasonLost, Ending::Cut);
}

// ---- conversations

Conversation::Conversation(const CallServices& services, Caller caller, bool tooMany)
    : ServerCall(services, std::move(caller)) {
    if (tooMany) {
        Log(kTooManyClients);
    } else {
        m_session = services.acceptor.Accept(*this);
    }
    if (m_session) {
        Put(Pack(Greeting{.source = services.settings.name}));
        Start();
    } else {
        End(ReasonServerEnded, Ending::Refusal);
    }
}

// What the server does not take is no subscription.
void Conversation::Send(ServerMessage message) {
    if (const auto* errors = std::get_if<AccessErrors>(&message)) {
        for (const AccessErrors::Entry& entry : errors->entries) {
            if (entry.code == ResultBadRequest) m_handles.erase(entry.handle);
        }
    }
    Deliver(message);
}

void Conversation::Deliver(const ServerMessage& message) {
    if (HasEnded()) return;
    const auto* login = std::get_if<LoginResult>(&message);
    if (login != nullptr && login->code == 0) {
        m_loggedIn = true;
        m_services.onLogin(m_caller.address);
    }
    Serve([&] {
        PackedAnswer packed = Pack(message);
        if (packed.leftOut > 0) Log(kLeftOut, std::to_string(packed.leftOut));
        for (std::string& parcel : packed.parcels) Put(std::move(parcel));
    });
}

void Conversation::Close(std::uint32_t reason) {
    End(reason, Ending::Farewell);
}

std::size_t Conversation::Backlog() const {
    return m_caller.stream->Backlog();
}

void Conversation::OnDrained() {
    Serve([&] { m_session->OnDrained(); });
}

void Conversation::OnBuried(std::uint32_t reason) {
    if (m_session) m_session->OnClosed(reason);
}

void Conversation::OnWireFault(WireFault fault) {
    LogFault(fault);
    End(ReasonBadMessage, Ending::Farewell);
}

void Conversation::OnParcel(ClientParcel parcel) {
    Serve([&] { Take(std::move(parcel)); });
}

void Conversation::Take(ClientParcel parcel) {
    if (const auto* farewell = std::get_if<Farewell>(&parcel)) {
        return End(farewell->reason, Ending::Quiet);
    }
    auto* message = std::get_if<ClientMessage>(&parcel);
    if (message == nullptr) return;
    const auto* login = std::get_if<LoginRequest>(message);
    if (login == nullptr && !m_loggedIn) return;
    if (login != nullptr) m_client = login->clientName;
    if (auto* request = std::get_if<SubscribeRequest>(message)) BoundSubscription(*request);
    m_session->OnMessage(std::move(*message));
}

void Conversation::BoundSubscription(SubscribeRequest& request) {
    for (const VariableHandle handle : request.removed) m_handles.erase(handle);
    AccessErrors refused;
    std::erase_if(request.added, [&](const SubscribeRequest::Entry& entry) {
        if (m_handles.size() < m_services.settings.variableLimit) {
            m_handles.insert(entry.handle);
            return false;
        }
        refused.entries.push_back({entry.handle, ResultBadRequest});
        return true;
    });
    if (refused.entries.empty()) return;
    Log(kTooManyVariables);
    Deliver(std::move(refused));
}

// ---- lists of variables

ListCall::ListCall(const CallServices& services, Caller caller, bool tooMany)
    : ServerCall(services, std::move(caller)), m_self(std::make_shared<ListCall*>(this)) {
    if (tooMany) {
        Log(kTooManyClients);
        End(ReasonServerEnded, Ending::Refusal);
    } else {
        Start();
    }
}

void ListCall::TurnAway() {
    End(ReasonServerEnded, Ending::Refusal);
}

void ListCall::OnParcel(ClientParcel parcel) {
    if (std::exchange(m_asked, true)) return;
    auto* message = std::get_if<ClientMessage>(&parcel);
    auto* login = message == nullptr ? nullptr : std::get_if<LoginRequest>(message);
    if (login == nullptr) return End(ReasonBadMessage, Ending::Refusal);
    m_client = login->clientName;
    Serve([&] {
        m_services.acceptor.ListVariables(std::move(*login), m_caller.address, m_self,
                                          [weak = std::weak_ptr(m_self)](auto definitions) {
                                              if (const auto self = weak.lock())
                                                  (*self)->Answer(std::move(definitions));
                                          });
    });
}

void ListCall::Answer(std::optional<std::vector<VariableDefinition>> definitions) {
    if (!definitions) return End(ReasonLoginRefused, Ending::Refusal);
    m_loggedIn = true;
    Serve([&] {
        PackedAnswer packed =
            Pack(ServerMessage(VariableDefinitions{std::move(*definitions), true}));
        if (packed.leftOut > 0) Log(kLeftOut, std::to_string(packed.leftOut));
        for (std::string& piece : packed.parcels) Put(std::move(piece));
        End(ReasonClosed, Ending::Quiet);
    });
}

void ListCall::OnWireFault(WireFault fault) {
    LogFault(fault);
    End(ReasonBadMessage, Ending::Refusal);
}

}  // namespace kalvex::vantrel
