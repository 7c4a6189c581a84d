// Scripts at data servers over a local socket, each side a process of its own: values that flow
// into script variables, a large subscription, the way from a change to the line that sees it, many
// clients at one server. Each row checks what arrived; the program fails when something is wrong.
#include <benchmark/benchmark.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "engine/Tick.h"
#include "language/Functions.h"
#include "language/Statements.h"
#include "platform/Files.h"
#include "platform/posix/PosixMainLoop.h"
#include "programs/sorvaned/Tasks.h"
#include "sources/ClientInterface.h"
#include "values/ValueText.h"
#include "vantrel/network/NetworkClient.h"
#include "vantrel/network/NetworkServer.h"

namespace kalvex {
namespace {

constexpr int kBatch = 1000;             // values in a message
constexpr std::size_t kMostBacklog = 8;  // messages under way
constexpr int kFlowVariables = 1000;
constexpr int kManyVariables = 100'000;
constexpr int kManyClients = 1000;
constexpr std::int64_t kMostMilliseconds = 60'000;
constexpr int kVariablesOfClient = 10;
constexpr int kRounds = 100;
constexpr int kChanges = 1000;
constexpr std::int64_t kNoMoreChanges = -1;
constexpr int kNoLog = -1;  // below every level

bool g_bWrong = false;

void Expect(bool right, const std::string& what) {
    if (right) return;
    std::fprintf(stderr, "wrong: %s\n", what.c_str());
    g_bWrong = true;
}

std::string& Folder() {
    static std::string folder;
    return folder;
}

std::int64_t Nanoseconds() {
    return std::chrono::steady_clock::now().time_since_epoch() / std::chrono::nanoseconds(1);
}

// Of a process, in KB.
long Memory(pid_t process) {
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    for (std::string word; status >> word;) {
        long kilobytes = 0;
        if (word == "VmRSS:" && status >> kilobytes) return kilobytes;
    }
    return 0;
}

class NoLog final : public LogSink {
  public:
    void Log(std::string_view, int) override {}
};

class Nobody final : public Users {
  public:
    std::string GetActiveUserName() const override { return {}; }
    std::string GetActiveUserDescription() const override { return {}; }
    std::string GetAccountName() const override { return {}; }
};

class NoQuestions final : public Questions {
  public:
    bool AskYesNo(std::string_view) override { return false; }
};

// ---- the servers, each in a process of its own

// What is written to a variable is an order: to "FLOW", to send so many values in turn to all that
// is subscribed, each variable getting 1, 2, 3...; to "CLOCK", to change it so many times, each
// time to what the clock says.
class SourceSession final : public ServerSession {
  public:
    SourceSession(ServerLink& link, MainLoop& loop) : m_link(link), m_loop(loop) {}
    ~SourceSession() override {
        if (m_changes.joinable()) m_changes.join();
    }

    void OnMessage(ClientMessage message) override {
        if (std::holds_alternative<LoginRequest>(message)) m_link.Send(LoginResult{});
        if (const auto* wish = std::get_if<SubscribeRequest>(&message)) Subscribe(*wish);
        const auto* writes = std::get_if<ModifyRequests>(&message);
        if (writes == nullptr) return;
        const ModifyRequest& order = writes->requests.front();
        if (order.variable == "CLOCK") return StartChanges();
        m_nLeft = order.value.Integer();
        Flow();
    }
    void OnClosed(std::uint32_t) override { *m_pOpen = false; }
    void OnDrained() override { Flow(); }

  private:
    void Subscribe(const SubscribeRequest& wish) {
        ValueUpdates values;
        for (const SubscribeRequest::Entry& entry : wish.added) {
            if (entry.name == "CLOCK") m_nClock = entry.handle;
            if (entry.name.starts_with("V")) m_arrHandles.push_back(entry.handle);
            values.entries.push_back({entry.handle, CVal(0.0)});
        }
        m_link.Send(std::move(values));
    }

    void Flow() {
        while (m_nLeft > 0 && m_link.Backlog() < kMostBacklog) {
            ValueUpdates values;
            for (; values.entries.size() < kBatch && m_nLeft > 0; --m_nLeft) {
                if (m_nNext == 0) m_rRound += 1;
                values.entries.push_back({m_arrHandles[m_nNext], CVal(m_rRound)});
                m_nNext = (m_nNext + 1) % m_arrHandles.size();
            }
            m_link.Send(std::move(values));
        }
    }

    // Some milliseconds apart and at no time that a tick would know of.
    void StartChanges() {
        if (m_changes.joinable()) m_changes.join();
        m_changes = std::thread([this, open = m_pOpen] {
            std::minstd_rand random(1);
            for (int count = 0; count < kChanges; ++count) {
                std::this_thread::sleep_for(std::chrono::microseconds(2000 + random() % 3000));
                m_loop.Post([this, open] {
                    if (*open) SendClock(Nanoseconds());
                });
            }
            m_loop.Post([this, open] {
                if (*open) SendClock(kNoMoreChanges);
            });
        });
    }

    void SendClock(std::int64_t time) {
        m_link.Send(ValueUpdates{{{m_nClock, CVal(static_cast<long long>(time))}}, true});
    }

    ServerLink& m_link;
    MainLoop& m_loop;
    std::shared_ptr<bool> m_pOpen = std::make_shared<bool>(true);
    std::vector<VariableHandle> m_arrHandles;
    VariableHandle m_nClock = 0;
    std::int64_t m_nLeft = 0;
    std::size_t m_nNext = 0;
    double m_rRound = 0;
    std::thread m_changes;
};

class Source final : public SessionAcceptor {
  public:
    explicit Source(MainLoop& loop) : m_loop(loop) {}
    std::unique_ptr<ServerSession> Accept(ServerLink& link) override {
        return std::make_unique<SourceSession>(link, m_loop);
    }
    void ListVariables(LoginRequest, std::string, ListAnswer answer) override { answer({}); }

  private:
    MainLoop& m_loop;
};

int ServeSource() {
    PosixMainLoop loop;
    loop.OnSignal(SIGTERM, [&loop] { loop.Quit(); });
    NoLog log;
    Source source(loop);
    std::string error;
    NetworkServerSettings settings;
    settings.source = "zrodlo";
    const auto server = ListenOnNetwork(settings, source, loop, log, error);
    if (!server) return EXIT_FAILURE;
    loop.Every(1000, [&server] { server->Check(); });
    loop.Run();
    return EXIT_SUCCESS;
}

// The data server itself.
int ServePlant() {
    std::string text = "name\tun\tvalue\n";
    for (int i = 0; i < kManyVariables; ++i) {
        const std::string number = std::to_string(i);
        text += "V" + number + "\tm3/h\t" + number + "\n";
    }
    std::string error;
    WriteWholeFile(Folder() + "/variables.csv", text, error);
    WriteWholeFile(Folder() + "/plant.toml",
                   "[server]\nname = \"stacja\"\nclients = 2000\n[[access]]\nwrite = \"0\"\n"
                   "[[variables]]\nfile = \"variables.csv\"\n",
                   error);
    SorvanedOptions options;
    options.configuration = Folder() + "/plant.toml";
    options.logLevel = kNoLog;
    return RunSorvaned(options);
}

class Child {
  public:
    explicit Child(int (*serve)()) : m_nProcess(::fork()) {
        if (m_nProcess != 0) return;
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        std::_Exit(serve());
    }
    ~Child() {
        ::kill(m_nProcess, SIGTERM);
        ::waitpid(m_nProcess, nullptr, 0);
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    pid_t Process() const { return m_nProcess; }

  private:
    pid_t m_nProcess;
};

pid_t g_nPlant = 0;

// ---- the clients

// The network of a process, which gives it time for its periodic work while it waits.
class Network {
  public:
    TransportFactory& Transports() { return m_client; }
    void Deliver() {
        m_loop.Run();
        const std::int64_t now = SteadyMilliseconds();
        if (now < m_tNextCheck) return;
        m_tNextCheck = now + 100;
        m_client.Check();
    }
    void DeliverUntil(const std::function<bool()>& done) {
        const std::int64_t begin = SteadyMilliseconds();
        while (!done()) {
            Deliver();
            std::this_thread::yield();
            if (SteadyMilliseconds() - begin < kMostMilliseconds) continue;
            Expect(false, "what is waited for does not come");
            std::exit(EXIT_FAILURE);
        }
    }

  private:
    PostedWork m_loop;
    NoLog m_log;
    std::int64_t m_tNextCheck = 0;
    NetworkClient m_client{{}, m_loop, m_log};
};

// A module with one script.
class Module {
  public:
    explicit Module(const std::string& text) {
        std::string error;
        Expect(WriteWholeFile(Folder() + "/a.kx", text, error), error);
        Expect(m_document.Open("a.kx", error), error);
        Expect(m_document.Start(), "start");
        m_document.m_nPriority = 1;
        m_ticker.Add(m_document);
    }

    void Tick() {
        m_network.Deliver();
        m_ticker.RunTick();
    }
    void RunToEnd() {
        while (m_document.m_nCurrentLine < m_document.GetLineCount()) Tick();
    }
    void WaitForData(std::string_view source) {
        m_network.DeliverUntil([&] {
            const CInterfaceClientConnection* connection = m_client.FindConnection(source);
            return connection != nullptr && connection->IsDataReady();
        });
    }

    void Subscribe() { m_client.UnblockSubscribe(true); }

    Network& GetNetwork() { return m_network; }
    CVariable& Variable(const std::string& name) { return *m_document.Variables().Find(name); }
    double Value(const std::string& name) {
        CVal value;
        Variable(name).GetValue(value, KindCurrent, 1);
        return ValueToDouble(value);
    }

  private:
    VirtualClock m_clock{1710050400};
    NoLog m_log;
    Translator m_translator;
    Nobody m_users;
    Paths m_paths{Folder()};
    NoQuestions m_questions;
    Network m_network;
    CClientInterface m_client{{m_log, m_translator, m_users, m_network.Transports()}};
    DocumentServices m_services{{m_clock, m_log, m_translator, m_users, m_paths, Functions()},
                                Statements(),
                                m_questions,
                                &m_client};
    CKalvexDoc m_document{m_services};
    CTickRunner m_ticker;
};

std::string RemoteLines(std::string_view source, int count) {
    std::string text = "SUBSCRIBE STOP\n";
    for (int i = 0; i < count; ++i) {
        const std::string name = "V" + std::to_string(i);
        text.append("REMOTE ").append(name).append(" ").append(source).append("@").append(name);
        text += '\n';
    }
    return text;
}

// ---- the rows

double Since(std::chrono::steady_clock::time_point begin) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

void Flow(benchmark::State& state) {
    Module module(RemoteLines("zrodlo", kFlowVariables) +
                  "REMOTE FLOW zrodlo@FLOW\nSUBSCRIBE START\n");
    module.RunToEnd();
    module.WaitForData("zrodlo");
    const std::string last = "V" + std::to_string(kFlowVariables - 1);
    double rounds = 0;
    for (auto _ : state) {
        module.Variable("FLOW").SetValue(CVal(static_cast<long long>(state.range(0))), KindCurrent);
        rounds += static_cast<double>(state.range(0)) / kFlowVariables;
        module.GetNetwork().DeliverUntil([&] { return module.Value(last) == rounds; });
    }
    for (int i = 0; i < kFlowVariables; ++i) {
        Expect(module.Value("V" + std::to_string(i)) == rounds, "value of the flow");
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(Flow)->Arg(1'000'000)->Unit(benchmark::kMillisecond)->UseRealTime();

// The end of the block of declarations to the data of all. Memory is that of the first time: what a
// process gives back it keeps for the next.
void Subscription(benchmark::State& state) {
    for (auto _ : state) {
        const long before = Memory(::getpid());
        const long serverBefore = Memory(g_nPlant);
        Module module(RemoteLines("stacja", kManyVariables));
        module.RunToEnd();
        const auto begin = std::chrono::steady_clock::now();
        module.Subscribe();
        module.WaitForData("stacja");
        state.SetIterationTime(Since(begin));
        for (int i = 0; i < kManyVariables; ++i) {
            Expect(module.Value("V" + std::to_string(i)) == i, "value of the plant");
        }
        const auto perVariable = [](long from, long to) {
            return static_cast<double>(to - from) * 1024 / kManyVariables;
        };
        if (state.counters.empty()) {
            state.counters["client_bytes"] = perVariable(before, Memory(::getpid()));
            state.counters["server_bytes"] = perVariable(serverBefore, Memory(g_nPlant));
        }
    }
    state.SetItemsProcessed(state.iterations() * kManyVariables);
}
BENCHMARK(Subscription)->Unit(benchmark::kMillisecond)->Iterations(3)->UseManualTime();

// From the moment at which the server has a new value to the end of the tick whose line has seen
// it.
void Latency(benchmark::State& state) {
    Module module("REMOTE CLOCK zrodlo@CLOCK\nLOCAL SEEN = 0\n:w\nSET SEEN = CLOCK\nGOTO w\n");
    std::vector<double> waits;
    for (auto _ : state) {
        module.Tick();
        module.WaitForData("zrodlo");
        module.Variable("CLOCK").SetValue(CVal(1), KindCurrent);
        auto next = std::chrono::steady_clock::now();
        for (std::int64_t seen = 0; seen != kNoMoreChanges;) {
            next += std::chrono::milliseconds(1);
            std::this_thread::sleep_until(next);
            module.Tick();
            CVal value;
            module.Variable("SEEN").GetValue(value, KindCurrent, 1);
            const std::int64_t then = value.Integer();
            if (then == seen) continue;
            seen = then;
            if (then > 1) waits.push_back(static_cast<double>(Nanoseconds() - then) / 1000);
        }
    }
    Expect(waits.size() > kChanges / 2, "changes that were seen");
    std::sort(waits.begin(), waits.end());
    if (waits.empty()) return;
    Expect(waits.front() > 0, "time that passes");
    state.counters["p50_us"] = waits[waits.size() / 2];
    state.counters["p99_us"] = waits[waits.size() * 99 / 100];
}
BENCHMARK(Latency)->Unit(benchmark::kMillisecond)->Iterations(1)->UseRealTime();

class Client final : public CClientConnection {
  public:
    explicit Client(TransportFactory& transports) {
        Create(23, "stacja", "bench", transports, nullptr);
        for (int i = 0; i < kVariablesOfClient; ++i) {
            RegisterVariable("V" + std::to_string(i), nullptr);
        }
        Subscribe();
    }

    double Value() const { return ValueToDouble(GetVarVal("V0")->Value()); }
    void Write(double value) {
        AddCurrentDataModifyRequest("V0", CVal(value));
        MakeCurrentDataModifyRequest();
    }
    bool HasData() const { return m_bData; }

  protected:
    void OnDataArrived() override { m_bData = true; }

  private:
    bool m_bData = false;
};

// The time is that in which all have logged in and have their data.
void Crowd(benchmark::State& state) {
    Network network;
    std::vector<std::unique_ptr<Client>> clients;
    const long before = Memory(g_nPlant);
    for (auto _ : state) {
        for (int i = 0; i < kManyClients; ++i) {
            clients.push_back(std::make_unique<Client>(network.Transports()));
        }
        network.DeliverUntil([&] {
            return std::all_of(clients.begin(), clients.end(),
                               [](const auto& client) { return client->HasData(); });
        });
    }
    state.counters["server_KB_a_client"] =
        static_cast<double>(Memory(g_nPlant) - before) / kManyClients;
    const auto begin = std::chrono::steady_clock::now();
    for (int round = 1; round <= kRounds; ++round) {
        clients.front()->Write(round);
        network.DeliverUntil([&] {
            return std::all_of(clients.begin(), clients.end(),
                               [&](const auto& client) { return client->Value() == round; });
        });
    }
    state.counters["update_to_all_ms"] = Since(begin) * 1000 / kRounds;
    clients.front()->Write(0);
    network.DeliverUntil([&] { return clients.back()->Value() == 0; });
    state.SetItemsProcessed(kManyClients);
}
BENCHMARK(Crowd)->Unit(benchmark::kMillisecond)->Iterations(1)->UseRealTime();

}  // namespace
}  // namespace kalvex

int main(int argc, char** argv) {
    std::string folder = (std::filesystem::temp_directory_path() / "kalvex_XXXXXX").string();
    if (::mkdtemp(folder.data()) == nullptr) return EXIT_FAILURE;
    kalvex::Folder() = folder;
    ::setenv("SORVANE_RUNTIME_DIR", folder.c_str(), 1);
    ::setenv("TZ", "Europe/Warsaw", 1);
    ::tzset();
    benchmark::Initialize(&argc, argv);
    {
        // Before this process has any thread.
        const kalvex::Child source(kalvex::ServeSource);
        const kalvex::Child plant(kalvex::ServePlant);
        kalvex::g_nPlant = plant.Process();
        benchmark::RunSpecifiedBenchmarks();
    }
    std::filesystem::remove_all(folder);
    return kalvex::g_bWrong ? EXIT_FAILURE : EXIT_SUCCESS;
}
