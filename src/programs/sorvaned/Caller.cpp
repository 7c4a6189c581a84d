#include "programs/sorvaned/Caller.h"

#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <iostream>
#include <utility>

#include "platform/PasswordHash.h"
#include "programs/PasswordPrompt.h"
#include "text/CodePage.h"
#include "vantrel/Codes.h"

namespace kalvex::sorvaned {

namespace {

constexpr std::uint16_t kDataServer = 0;  // no script module
constexpr std::int64_t kCheck = 1000;     // ms
constexpr int kEndingSignals[] = {SIGINT, SIGTERM};
// A list of a million variables takes its time.
constexpr std::chrono::milliseconds kListPatience{60'000};

constexpr const char* kRefused = platform::Translatable("Serwer %s odmawia zalogowania (%s)");
constexpr const char* kBroken = platform::Translatable("Połączenie z serwerem %s przerwane (%s)");

vantrel::NetworkClientSettings LocalSettings() {
    vantrel::NetworkClientSettings settings;
    settings.listPatience = kListPatience;
    return settings;
}

// Only of a pipe does the system tell that nobody reads it any more.
bool IsPipe(int descriptor) {
    struct stat info {};
    return ::fstat(descriptor, &info) == 0 && S_ISFIFO(info.st_mode);
}

}  // namespace

CalledServer::~CalledServer() {
    if (m_caller.m_server == this) m_caller.m_server = nullptr;
}

// The transport tells why a server cannot be reached, and nothing of a conversation that ends
// before the login is answered: that is a break.
void CalledServer::OnConnectionFault(vantrel::ConnectionFault, std::uint32_t code) {
    const bool isTold = std::exchange(m_caller.m_logged, false);
    if (!isTold) m_caller.OnBreak(*this, code);
    if (!m_caller.m_reached) m_caller.m_over = true;
}

void CalledServer::OnServerAccess(bool denied, std::string_view text) {
    if (!denied) return;
    m_caller.m_over = true;
    m_caller.Tell({kRefused, {text::ToUtf8(GetServerName()), text::ToUtf8(text)}});
}

void CalledServer::OnConnect() {
    m_caller.m_connected = m_caller.m_reached = true;
}

void CalledServer::OnDisconnect(std::uint32_t reason) {
    CClientConnection::OnDisconnect(reason);
    m_caller.OnBreak(*this, reason);
}

Caller::Caller(const server::Definitions& definitions, const platform::Translator& translator)
    : m_definitions(definitions), m_translator(translator) {}

Caller::~Caller() = default;

void Caller::Tell(const platform::Notice& notice) const {
    std::cerr << platform::InWords(notice, m_translator) << '\n';
}

void Caller::Log(std::string_view text, int level) {
    if (level > platform::LogErrors) return;
    m_logged = true;
    std::cerr << text::ToUtf8(text) << '\n';
}

void Caller::OnBreak(const CalledServer& server, std::uint32_t reason) {
    m_reached = true;
    m_over = m_over || m_breaks == Breaks::End;
    const std::string words = vantrel::ConnectionReasonText(reason, m_translator);
    Tell({kBroken, {text::ToUtf8(server.GetServerName()), text::ToUtf8(words)}});
}

bool Caller::TakeLogin(const std::string& user) {
    m_user = text::FromUtf8(user);
    if (m_user.empty()) return true;
    std::string password;
    const bool given = programs::AskOwnPassword(password, m_translator);
    m_password = platform::Secret(text::FromUtf8(password));
    platform::WipePassword(password);
    return given;
}

bool Caller::Enter(CalledServer& server, std::string_view client, Breaks breaks) {
    for (const int signal : kEndingSignals) {
        // Where the signal is not blocked, it ends a wait of the system's; see Printer.
        std::signal(signal, [](int) {});
        m_loop.OnSignal(signal, [this] { m_signalled = true; });
    }
    m_client =
        std::make_unique<vantrel::NetworkClient>(LocalSettings(), m_loop, *this, m_translator);
    m_loop.Every(kCheck, [this] {
        if (m_server != nullptr) m_server->CheckConnection();
        m_client->Check();
    });
    m_loop.AroundWait([] { return std::nullopt; }, [this] { m_loop.Quit(); });
    if (IsPipe(STDOUT_FILENO)) m_loop.Watch(STDOUT_FILENO);
    m_breaks = breaks;
    m_server = &server;
    server.SetLoginData(m_user, m_password.View());
    return server.Create(kDataServer, m_definitions.name, client, *m_client, nullptr) &&
           Await([this] { return m_connected; });
}

bool Caller::Await(const std::function<bool()>& done) {
    while (!done()) {
        if (m_over || m_signalled || m_loop.IsReadable()) return false;
        m_loop.Run();
    }
    return true;
}

}  // namespace kalvex::sorvaned
