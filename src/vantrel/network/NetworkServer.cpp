#include "vantrel/network/NetworkServer.h"

#include <malloc.h>

#include <algorithm>
#include <limits>
#include <map>
#include <optional>
#include <set>
#include <utility>
#include <vector>

#include "platform/NetworkAddress.h"
#include "text/CodePage.h"
#include "vantrel/Codes.h"
#include "vantrel/network/FurtherCalls.h"
#include "vantrel/network/LocalSocket.h"
#include "vantrel/network/ServerCall.h"
#include "vantrel/network/ServerPort.h"

namespace kalvex::vantrel {

namespace {

// Streams at a time that leave enough behind to be given back.
constexpr std::size_t kCrowd = 256;
// Of the calls for lists, one in so many may be of one address, and so many in any case.
constexpr std::size_t kShareOfAddress = 4;
constexpr std::size_t kLeastOfAddress = 2;

// Turns the client away unless somebody takes it.
class WaitingCaller {
  public:
    explicit WaitingCaller(Caller caller) : m_caller(std::move(caller)) {}
    ~WaitingCaller() {
        if (!m_caller.stream) return;
        m_caller.reception->Stop();
        m_caller.stream->Cancel();
    }
    WaitingCaller(const WaitingCaller&) = delete;
    WaitingCaller& operator=(const WaitingCaller&) = delete;

    Caller Take() { return std::exchange(m_caller, {}); }

  private:
    Caller m_caller;
};

class Server final : public NetworkServer, private PortEvents {
  public:
    Server(const NetworkServerSettings& settings, SessionAcceptor& acceptor,
           platform::MainLoop& loop, platform::LogSink& log, const platform::Translator& translator,
           FurtherMethods* further)
        : m_settings(settings),
          m_loop(loop),
          m_services{m_settings,
                     acceptor,
                     log,
                     translator,
                     m_refusals,
                     [this](ServerCall& call) { Retire(call); },
                     [this](const std::string& host) { m_port->OnLogin(host); }},
          m_work(std::make_shared<HandOver>(loop, std::numeric_limits<std::size_t>::max())) {
        if (further != nullptr) m_further.emplace(*further, loop, m_settings.clock);
    }

    ~Server() override {
        m_work->Stop();
        for (const auto& [call, owned] : m_calls) call->Bury(ReasonServerEnded);
        m_calls.clear();
        if (m_further) m_further->Close();
        m_port.reset();
    }

    bool Listen(platform::Notice& error) {
        PortSettings port{.localSocket = {},
                          .address = m_settings.address,
                          .tls = m_settings.tls,
                          .outboxLimit = m_settings.outboxLimit,
                          .patience = m_settings.patience,
                          .streamLimit = 2 * m_settings.conversationLimit};
        if (!AllowsAddress(error)) return false;
        if (!m_settings.source.empty()) {
            port.localSocket = LocalSocketPath(m_settings.runtimeFolder, m_settings.source);
            if (port.localSocket.empty()) {
                error = {
                    platform::Translatable("Niepoprawna nazwa albo za długa ścieżka gniazda %s"),
                    {m_settings.runtimeFolder + '/' + text::ToUtf8(m_settings.source)}};
                return false;
            }
            if (!m_socket.Claim(port.localSocket, m_settings.group, error)) return false;
            port.localSocket = m_socket.Place();
        }
        {
            const LocalSocket::OwnerOnly mode;
            m_port = OpenPort(port, *this, m_further ? &*m_further : nullptr, error);
        }
        if (!m_port) return false;
        return m_socket.Admit(error);
    }

    int TcpPort() const override { return m_port->TcpPort(); }

    void Check() override {
        const std::int64_t now = m_settings.clock();
        for (const auto& [call, owned] : m_calls) call->Check(now);
        if (m_further) m_further->Check();
        CheckPort(now);
        for (const Refusals::LeftOut& leftOut : m_refusals.TakeLeftOut(now / 1000)) {
            m_services.log.Log(LeftOutLine(leftOut, m_services.translator), platform::LogErrors);
        }
        GiveBackMemory();
    }

  private:
    void Log(const platform::Notice& notice) {
        m_services.log.Log(text::FromUtf8(platform::InWords(notice, m_services.translator)),
                           platform::LogErrors);
    }

    void CheckPort(std::int64_t now) {
        const LocalSocket::OwnerOnly mode;
        bool remade = false;
        for (const platform::Notice& notice : m_port->Check(now, remade)) Log(notice);
        platform::Notice error;
        if (remade && !m_socket.Admit(error)) Log(error);
    }

    // The allocator keeps what a crowd has taken until it is told.
    void GiveBackMemory() {
        const std::size_t count = m_port->StreamCount();
        m_crowd = std::max(m_crowd, count);
        if (m_crowd < kCrowd || count > m_crowd / 4) return;
        m_crowd = count;
        ::malloc_trim(0);
    }

    bool AllowsAddress(platform::Notice& error) const {
        std::string host;
        std::uint16_t port = 0;
        if (m_settings.address.empty()) return true;
        if (!platform::ReadAddress(m_settings.address, host, port)) {
            error = {platform::Translatable("Niepoprawny adres %s"), {m_settings.address}};
            return false;
        }
        if (m_settings.tls || m_settings.plainTextAllowed || platform::IsLoopback(host))
            return true;
        error = {"%s: %s",
                 {m_settings.address,
                  text::ToUtf8(ConnectionReasonText(ReasonPlainText, m_services.translator))}};
        return false;
    }

    std::shared_ptr<StreamEvents> MakeEvents() override {
        return std::make_shared<Reception<ClientParcel>>(m_loop, m_settings.inboxLimit);
    }

    void OnCaller(std::shared_ptr<Stream> stream, std::shared_ptr<StreamEvents> events,
                  StreamMethod method, std::string address) override {
        auto reception = std::static_pointer_cast<Reception<ClientParcel>>(std::move(events));
        const auto waiting = std::make_shared<WaitingCaller>(
            Caller{std::move(stream), std::move(reception), method, std::move(address)});
        m_work->Push([this, waiting] { Admit(waiting->Take()); }, 0);
    }

    void Admit(Caller caller) {
        if (caller.method == StreamMethod::ListVariables) return AdmitList(std::move(caller));
        const bool tooMany = m_conversations.size() >= m_settings.conversationLimit;
        auto call = std::make_unique<Conversation>(m_services, std::move(caller), tooMany);
        if (!call->HasEnded()) m_conversations.insert(call.get());
        m_calls.emplace(call.get(), std::move(call));
    }

    // One too many from an address, or in all, takes the place of one that has asked nothing yet.
    void AdmitList(Caller caller) {
        const auto isOfAddress = [&](const ListCall* call) {
            return call->Address() == caller.address;
        };
        const auto ofAddress =
            static_cast<std::size_t>(std::ranges::count_if(m_lists, isOfAddress));
        const bool addressIsFull =
            ofAddress >= std::max(m_settings.conversationLimit / kShareOfAddress, kLeastOfAddress);
        bool tooMany = addressIsFull || m_lists.size() >= m_settings.conversationLimit;
        if (tooMany) {
            const auto silent = std::ranges::find_if(m_lists, [&](const ListCall* call) {
                return !call->HasAsked() && (!addressIsFull || isOfAddress(call));
            });
            if (silent != m_lists.end()) {
                (*silent)->TurnAway();
                tooMany = false;
            }
        }
        auto call = std::make_unique<ListCall>(m_services, std::move(caller), tooMany);
        if (!call->HasEnded()) m_lists.push_back(call.get());
        m_calls.emplace(call.get(), std::move(call));
    }

    void Retire(ServerCall& call) {
        m_conversations.erase(&call);
        std::erase(m_lists, &call);
        m_work->Push(
            [this, &call] {
                const auto node = m_calls.extract(&call);
                call.Bury(ReasonClosed);
            },
            0);
    }

    const NetworkServerSettings m_settings;
    platform::MainLoop& m_loop;
    Refusals m_refusals;
    const CallServices m_services;
    std::shared_ptr<HandOver> m_work;
    std::map<ServerCall*, std::unique_ptr<ServerCall>> m_calls;
    std::set<ServerCall*> m_conversations;  // of these calls, that have not ended
    std::vector<ListCall*> m_lists;         // the same, by their coming
    LocalSocket m_socket;
    std::optional<FurtherCalls> m_further;
    std::unique_ptr<ServerPort> m_port;
    std::size_t m_crowd = 0;  // of streams, the most since memory was given back
};

}  // namespace

NetworkServerSettings SettingsFor(const std::string& name, const Listening& listening) {
    NetworkServerSettings settings;
    settings.name = name;
    if (listening.localSocket) settings.source = name;
    settings.group = listening.group;
    settings.address = listening.address;
    if (!listening.certificate.empty()) {
        settings.tls = TlsFiles{.authority = listening.authority,
                                .certificate = listening.certificate,
                                .key = listening.certificateKey};
    }
    settings.plainTextAllowed = listening.plainTextAllowed;
    return settings;
}

std::unique_ptr<NetworkServer> ListenOnNetwork(const NetworkServerSettings& settings,
                                               SessionAcceptor& acceptor, platform::MainLoop& loop,
                                               platform::LogSink& log,
                                               const platform::Translator& translator,
                                               std::string& error, FurtherMethods* further) {
    auto server = std::make_unique<Server>(settings, acceptor, loop, log, translator, further);
    platform::Notice reason;
    if (server->Listen(reason)) return server;
    error = text::FromUtf8(platform::InWords(reason, translator));
    return nullptr;
}

}  // namespace kalvex::vantrel
