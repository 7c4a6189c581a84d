#include "programs/ModuleLibraries.h"

#include "app/ProfileKeys.h"
#include "app/ServerAddresses.h"
#include "platform/Files.h"
#include "platform/Paths.h"
#include "text/CodePage.h"
#include "text/TextFormat.h"

namespace kalvex::programs {

namespace {

// Signs of life go out in time however rarely views are refreshed.
constexpr std::int64_t kNetworkPeriod = 1000;  // milliseconds

constexpr int kNetworkTimer = 100;  // beside those of the main frame

}  // namespace

std::string UserLibrary::GetFile() const {
    return m_profile.GetProfileStringEx(app::Section::General, text::FromUtf8(app::Key::Users), {},
                                        m_profile.GetCommonProfilePath());
}

bool UserLibrary::Start(std::string& error) {
    const std::string file = GetFile();
    if (file.empty()) return true;
    std::string content;
    std::string reason;
    // The store would make a file that is not there.
    if (!platform::ReadWholeFile(platform::NativePath(file), content, reason)) {
        reason = text::FromUtf8(reason);
    } else if (m_store.Open(platform::NativePath(file), reason)) {
        return true;
    }
    error =
        text::FormatText(m_translator.Translate("Nie można otworzyć pliku użytkowników %s (%s)"),
                         {file, m_translator.Translate(text::ToUtf8(reason).c_str())});
    return false;
}

bool NetworkLibrary::Start(std::string&) {
    vantrel::NetworkClientSettings settings;
    settings.addresses = app::ReadServerAddresses(m_profile);
    m_client =
        std::make_unique<vantrel::NetworkClient>(std::move(settings), m_loop, *m_log, m_translator);
    m_loop.SetTimer(kNetworkTimer, kNetworkPeriod, [this] { m_client->Check(); });
    return true;
}

void NetworkLibrary::Stop() {
    m_loop.KillTimer(kNetworkTimer);
    m_client.reset();
}

bool ConsoleDoor::Open(vantrel::SessionAcceptor& acceptor, app::Supervised& module,
                       const app::ConsoleConfiguration& configuration, const std::string& name,
                       std::string& error) {
    const vantrel::Listening& listening = configuration.listening;
    if (!listening.localSocket && listening.address.empty()) return true;
    vantrel::NetworkServerSettings settings = vantrel::SettingsFor(name, listening);
    // How many there may be is the console's to say; so one more, for whom another one goes.
    settings.conversationLimit = static_cast<std::size_t>(configuration.clients) + 1;
    m_supervision = std::make_unique<supervision::SupervisionServer>(module, m_loop);
    m_network = vantrel::ListenOnNetwork(settings, acceptor, m_loop, *m_log, m_translator, error,
                                         m_supervision.get());
    return m_network != nullptr;
}

}  // namespace kalvex::programs
