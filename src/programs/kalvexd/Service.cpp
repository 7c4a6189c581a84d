#include "programs/kalvexd/Service.h"

#include <unistd.h>

#include <climits>
#include <csignal>
#include <filesystem>

#include "platform/CodePage.h"
#include "platform/posix/AccountName.h"
#include "vantrel/network/Endpoint.h"

namespace kalvex {

namespace {

constexpr const char* kKeyFile = "Kalvex.key";

// The catalogues lie beside the programs' folder, in the place where they are built and in the one
// where they are installed.
std::string CatalogueFolder() {
    std::error_code fault;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", fault);
    return (program.parent_path().parent_path() / "share" / "locale").string();
}

std::string HostName() {
    char name[HOST_NAME_MAX + 1] = {};
    return ::gethostname(name, sizeof name - 1) == 0 ? name : "localhost";
}

}  // namespace

CKalvexService::CKalvexService(const KalvexdOptions& options)
    : m_translator(CatalogueFolder()),
      m_loop(
          [this] { return !m_app.Documents().All().empty() || m_app.MainFrame().IsErrorShown(); }),
      m_crypt(options.workingDir + '/' + kKeyFile, KeyFile::MadeAtFirstUse),
      m_instances(RuntimeFolder()),
      m_userLibrary(m_profile, m_translator),
      m_network(m_profile, m_loop),
      m_users(m_userLibrary.Store(), AccountName()),
      m_stream(stdout, FormOfStandardOutput()),
      m_app(MakeWorld(options)) {
    m_network.SetLog(m_app.Log());
    if (options.logStdout) m_app.Log().SetListener(&m_stream);
}

AppWorld CKalvexService::MakeWorld(const KalvexdOptions& options) {
    AppWorld world{m_clock,
                   m_translator,
                   m_loop,
                   m_profile,
                   m_crypt,
                   m_users,
                   m_instances,
                   m_processes,
                   m_probes,
                   m_network,
                   {&m_userLibrary, &m_network}};
    world.service = true;
    world.arguments = options.arguments;
    world.workingDir = options.workingDir;
    world.logFolder = options.logDir;
    world.hostName = HostName();
    return world;
}

void CKalvexService::WatchSignals() {
    for (const int ending : {SIGTERM, SIGINT}) {
        m_loop.OnSignal(ending, [this] { m_app.OnCloseMainWindow(); });
    }
    m_loop.OnSignal(SIGHUP, [this] { m_app.ReopenLogFiles(); });
}

int CKalvexService::Run() {
    WatchSignals();
    if (m_app.InitInstance()) m_loop.Run();
    const int status = m_app.ExitInstance();
    const std::string text = ToUtf8(m_app.GetEnd().text);
    if (text.empty()) return status;
    if (status == EXIT_SUCCESS) {
        std::fputs(text.c_str(), stdout);
    } else {
        std::fprintf(stderr, "kalvexd: %s\n", text.c_str());
    }
    return status;
}

}  // namespace kalvex
