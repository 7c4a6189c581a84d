// Scripts at data servers over a local socket, each side a process of its own: values that flow
// into script variables, a large subscription, the way from a change to the line that sees it, many
// clients at one server. Each row checks what arrived; the program fails when something is wrong.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "network_world.h"
#include "platform/Files.h"
#include "platform/posix/PosixMainLoop.h"
#include "value/ValueText.h"
#include "vantrel/network/NetworkServer.h"

namespace kalvex::bench {
namespace {

constexpr int kBatch = 1000;  // values in a message
constexpr int kFlowVariables = 1000;
constexpr int kManyVariables = 100'000;
constexpr int kManyClients = 1000;
constexpr int kVariablesOfClient = 10;
constexpr int kRounds = 100;
constexpr int kChanges = 1000;
constexpr std::int64_t kNoMoreChanges = -1;
constexpr double kMostBytesOfVariable = 1700;

std::int64_t Nanoseconds() {
    return std::chrono::steady_clock::now().time_since_epoch() / std::chrono::nanoseconds(1);
}

// ---- the servers, each in a process of its own

// What is written to a variable is an order: to "FLOW", to send so many values in turn to all that
// is subscribed, each variable getting 1, 2, 3...; to "CLOCK", to change it so many times, each
// time to what the clock says.
class SourceSession final : public vantrel::ServerSession {
  public:
    SourceSession(vantrel::ServerLink& link, platform::MainLoop& loop)
        : m_link(link), m_loop(loop) {}
    ~SourceSession() override {
        if (m_changes.joinable()) m_changes.join();
    }

    void OnMessage(vantrel::ClientMessage message) override {
        if (std::holds_alternative<vantrel::LoginRequest>(message))
            m_link.Send(vantrel::LoginResult{});
        if (const auto* wish = std::get_if<vantrel::SubscribeRequest>(&message)) Subscribe(*wish);
        const auto* writes = std::get_if<vantrel::ModifyRequests>(&message);
        if (writes == nullptr) return;
        const vantrel::ModifyRequest& order = writes->requests.front();
        if (order.variable == "CLOCK") return StartChanges();
        m_left = order.value.Integer();
        Flow();
    }
    void OnClosed(std::uint32_t) override { *m_open = false; }
    void OnDrained() override { Flow(); }

  private:
    void Subscribe(const vantrel::SubscribeRequest& wish) {
        vantrel::ValueUpdates values;
        for (const vantrel::SubscribeRequest::Entry& entry : wish.added) {
            if (entry.name == "CLOCK") m_clock = entry.handle;
            if (entry.name.starts_with("V")) m_handles.push_back(entry.handle);
            values.entries.push_back({entry.handle, value::CVal(0.0)});
        }
        m_link.Send(std::move(values));
    }

    void Flow() {
        while (m_left > 0 && m_link.Backlog() < vantrel::kMostBacklog) {
            vantrel::ValueUpdates values;
            for (; values.entries.size() < kBatch && m_left > 0; --m_left) {
                if (m_next == 0) m_round += 1;
                values.entries.push_back({m_handles[m_next], value::CVal(m_round)});
                m_next = (m_next + 1) % m_handles.size();
            }
            m_link.Send(std::move(values));
        }
    }

    // Some milliseconds apart and at no time that a tick would know of.
    void StartChanges() {
        if (m_changes.joinable()) m_changes.join();
        m_changes = std::thread([this, open = m_open] {
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
        m_link.Send(
            vantrel::ValueUpdates{{{m_clock, value::CVal(static_cast<long long>(time))}}, true});
    }

    vantrel::ServerLink& m_link;
    platform::MainLoop& m_loop;
    std::shared_ptr<bool> m_open = std::make_shared<bool>(true);
    std::vector<vantrel::VariableHandle> m_handles;
    vantrel::VariableHandle m_clock = 0;
    std::int64_t m_left = 0;
    std::size_t m_next = 0;
    double m_round = 0;
    std::thread m_changes;
};

class Source final : public vantrel::SessionAcceptor {
  public:
    explicit Source(platform::MainLoop& loop) : m_loop(loop) {}
    std::unique_ptr<vantrel::ServerSession> Accept(vantrel::ServerLink& link) override {
        return std::make_unique<SourceSession>(link, m_loop);
    }
    void ListVariables(vantrel::LoginRequest, std::string, std::weak_ptr<const void>,
                       ListAnswer answer) override {
        answer({});
    }

  private:
    platform::MainLoop& m_loop;
};

int ServeSource() {
    platform::PosixMainLoop loop;
    loop.OnSignal(SIGTERM, [&loop] { loop.Quit(); });
    support::SilentLog log;
    const platform::Translator translator;
    Source source(loop);
    std::string error;
    vantrel::NetworkServerSettings settings;
    settings.source = "zrodlo";
    const auto server = vantrel::ListenOnNetwork(settings, source, loop, log, translator, error);
    if (!server) return EXIT_FAILURE;
    loop.Every(1000, [&server] { server->Check(); });
    loop.Run();
    return EXIT_SUCCESS;
}

// The data server itself, with many variables.
int ServeVariables() {
    std::string text = "name\tun\tvalue\n";
    for (int i = 0; i < kManyVariables; ++i) {
        const std::string number = std::to_string(i);
        text += "V" + number + "\tm3/h\t" + number + "\n";
    }
    std::string error;
    platform::WriteWholeFile(Folder() + "/variables.csv", text, error);
    return ServePlant(
        "clients = 2000\n[[access]]\nwrite = \"0\"\n[[variables]]\nfile = \"variables.csv\"\n");
}

pid_t g_plant = 0;

// ---- the clients

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
        module.Variable("FLOW").SetValue(value::CVal(static_cast<long long>(state.range(0))),
                                         value::KindCurrent);
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
        const long serverBefore = Memory(g_plant);
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
            const double bytes = perVariable(before, Memory(::getpid()));
            Expect(bytes < kMostBytesOfVariable, "memory of a variable");
            state.counters["client_bytes"] = bytes;
            state.counters["server_bytes"] = perVariable(serverBefore, Memory(g_plant));
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
        module.Variable("CLOCK").SetValue(value::CVal(1), value::KindCurrent);
        auto next = std::chrono::steady_clock::now();
        for (std::int64_t seen = 0; seen != kNoMoreChanges;) {
            next += std::chrono::milliseconds(1);
            std::this_thread::sleep_until(next);
            module.Tick();
            value::CVal value;
            module.Variable("SEEN").GetValue(value, value::KindCurrent, 1);
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

class Client final : public vantrel::CClientConnection {
  public:
    explicit Client(vantrel::TransportFactory& transports) {
        Create(23, "stacja", "bench", transports, nullptr);
        for (int i = 0; i < kVariablesOfClient; ++i) {
            RegisterVariable("V" + std::to_string(i));
        }
        Subscribe();
    }

    double Value() const { return value::ValueToDouble(GetVarVal("V0")->Value()); }
    void Write(double value) {
        AddCurrentDataModifyRequest("V0", value::CVal(value));
        MakeCurrentDataModifyRequest();
    }
    bool HasData() const { return m_data; }

  protected:
    void OnDataArrived() override { m_data = true; }

  private:
    bool m_data = false;
};

// The time is that in which all have logged in and have their data.
void Crowd(benchmark::State& state) {
    Network network;
    std::vector<std::unique_ptr<Client>> clients;
    const long before = Memory(g_plant);
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
        static_cast<double>(Memory(g_plant) - before) / kManyClients;
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
}  // namespace kalvex::bench

int main(int argc, char** argv) {
    kalvex::bench::BeginBench(argc, argv);
    {
        const kalvex::bench::Child source(kalvex::bench::ServeSource);
        const kalvex::bench::Child plant(kalvex::bench::ServeVariables);
        kalvex::bench::g_plant = plant.Process();
        benchmark::RunSpecifiedBenchmarks();
    }
    return kalvex::bench::EndBench();
}
