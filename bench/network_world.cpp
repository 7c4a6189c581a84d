#include "network_world.h"

#include <benchmark/benchmark.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <thread>

#include "platform/Files.h"
#include "platform/SteadyTime.h"
#include "programs/sorvaned/Tasks.h"
#include "support/scratch_folder.h"
#include "support/zone_scope.h"
#include "value/ValueText.h"

namespace kalvex::bench {

namespace {

constexpr std::int64_t kMostMilliseconds = 60'000;
constexpr int kNoLog = -1;  // below every level

bool g_wrong = false;
std::optional<support::ScratchFolder> g_folder;
std::optional<support::ZoneScope> g_zone;

}  // namespace

void Expect(bool right, const std::string& what) {
    if (right) return;
    std::fprintf(stderr, "wrong: %s\n", what.c_str());
    g_wrong = true;
}

const std::string& Folder() {
    return g_folder->Path();
}

long Memory(pid_t process) {
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    for (std::string word; status >> word;) {
        long kilobytes = 0;
        if (word == "VmRSS:" && status >> kilobytes) return kilobytes;
    }
    return 0;
}

void BeginBench(int argc, char** argv) {
    g_folder.emplace();
    g_zone.emplace("Europe/Warsaw");
    ::setenv("SORVANE_RUNTIME_DIR", Folder().c_str(), 1);
    benchmark::Initialize(&argc, argv);
}

int EndBench() {
    g_folder.reset();
    return g_wrong ? EXIT_FAILURE : EXIT_SUCCESS;
}

Child::Child(const std::function<int()>& serve) : m_process(::fork()) {
    if (m_process != 0) return;
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    std::_Exit(serve());
}

Child::~Child() {
    ::kill(m_process, SIGTERM);
    ::waitpid(m_process, nullptr, 0);
}

int ServePlant(const std::string& configuration) {
    sorvaned::SorvanedOptions options;
    options.configuration = Folder() + "/plant.toml";
    options.logLevel = kNoLog;
    std::string error;
    const std::string name = "[server]\nname = \"stacja\"\n";
    if (!platform::WriteWholeFile(options.configuration, name + configuration, error))
        return EXIT_FAILURE;
    return sorvaned::RunSorvaned(options);
}

void Network::Deliver() {
    m_loop.Run();
    const std::int64_t now = platform::SteadyMilliseconds();
    if (now < m_nextCheck) return;
    m_nextCheck = now + 100;
    m_client.Check();
}

void Network::DeliverUntil(const std::function<bool()>& done) {
    const std::int64_t begin = platform::SteadyMilliseconds();
    while (!done()) {
        Deliver();
        std::this_thread::yield();
        if (platform::SteadyMilliseconds() - begin < kMostMilliseconds) continue;
        Expect(false, "what is waited for does not come");
        std::exit(EXIT_FAILURE);
    }
}

Module::Module(const std::string& text) {
    std::string error;
    Expect(platform::WriteWholeFile(Folder() + "/a.kx", text, error), error);
    Expect(m_document.Open("a.kx", error), error);
    Expect(m_document.Start(), "start");
    m_document.SetPriority(1);
    m_ticker.Add(m_document);
}

void Module::Tick() {
    m_network.Deliver();
    m_ticker.RunTick();
}

void Module::RunToEnd() {
    while (m_document.State().m_nCurrentLine < m_document.GetLineCount()) Tick();
}

void Module::WaitForData(std::string_view source) {
    m_network.DeliverUntil([&] {
        const sources::CInterfaceClientConnection* connection = m_client.FindConnection(source);
        return connection != nullptr && connection->IsDataReady();
    });
}

double Module::Value(const std::string& name) {
    value::CVal value;
    Variable(name).GetValue(value, value::KindCurrent, 1);
    return value::ValueToDouble(value);
}

}  // namespace kalvex::bench
