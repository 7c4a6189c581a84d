// A module whose consoles watch one script over a local socket, with a line report a second each:
// what they cost its ticks. Each row checks that every console has heard every report.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <iostream>
#include <memory>
#include <set>
#include <vector>

#include "console/ServerConnectionManager.h"
#include "engine/Tick.h"
#include "script_services.h"
#include "support/waiting_loop.h"
#include "vantrel/network/NetworkClient.h"
#include "vantrel/network/NetworkServer.h"
#include "workbench/model/DocumentModel.h"

namespace kalvex::bench {
namespace {

constexpr int kTicksOfASecond = 1000;
constexpr const char* kScript = "PRIORITY 1\nLOCAL X = 0\n:a\nSET X = X + 1\nGOTO a\n";

[[noreturn]] void Fail(const std::string& what) {
    std::cerr << "console_bench: " << what << '\n';
    std::exit(EXIT_FAILURE);
}

// A console that counts the line reports that it hears.
class Watcher final : private vantrel::ClientTransportEvents {
  public:
    Watcher(vantrel::NetworkClient& client, int number) : m_number(number) {
        std::uint32_t reason = 0;
        m_transport = client.Connect("Kalvex", *this, reason);
        m_transport->Open();
    }

    bool IsWatching() const { return m_watching; }
    std::int64_t Reports() const { return m_reports; }

  private:
    void OnOpened() override {
        vantrel::LoginRequest login;
        login.moduleType = 23;
        login.clientName = "Konsola" + std::to_string(m_number) + "_RC";
        login.user = "JAN";
        login.password = "haslo";
        m_transport->Send(std::move(login));
    }
    void OnMessage(vantrel::ServerMessage message) override {
        if (const auto* login = std::get_if<vantrel::LoginResult>(&message)) {
            if (login->code != 0) Fail("a login was refused");
            m_transport->Send(vantrel::SubscribeRequest{
                {{1, "a.kx"}, {2, "VL:a.kx"}, {3, "VC:a.kx"}}, {}, 0, true});
        }
        const auto* values = std::get_if<vantrel::ValueUpdates>(&message);
        if (values == nullptr) return;
        for (const auto& [handle, value] : values->entries) {
            if (handle != 3) continue;
            if (m_watching) ++m_reports;
            m_watching = true;
        }
    }
    void OnFault(vantrel::ConnectionFault, std::uint32_t) override { Fail("no connection"); }
    void OnClosed(std::uint32_t) override {}

    const int m_number;
    bool m_watching = false;
    std::int64_t m_reports = 0;
    std::unique_ptr<vantrel::ClientTransport> m_transport;
};

class Module final : private console::ConsoleHost {
  public:
    Module() {
        std::string error;
        platform::UserRecord user;
        user.name = "JAN";
        user.level = 100;
        if (!m_users.Open(m_world.folder.Path("users.sqlite"), error) ||
            !m_users.Add(user, "haslo", error)) {
            Fail(error);
        }
        m_world.folder.Put("a.kx", kScript);
        m_world.services.console = &m_console;
        m_document = std::make_unique<engine::CKalvexDoc>(m_world.services);
        if (!m_document->Open("a.kx", error)) Fail(error);
        m_document->SetView(&m_model);
        m_console.OnOpened(*m_document, false);
        m_ticks.Add(*m_document);
        m_document->Start();
        m_document->SendLineReports(true);
        vantrel::NetworkServerSettings settings;
        settings.source = settings.name = "Kalvex";
        settings.runtimeFolder = m_world.folder.Path();
        m_server = vantrel::ListenOnNetwork(settings, m_consoles, m_loop, m_world.log,
                                            m_world.translator, error);
        if (!m_server) Fail(error);
    }
    ~Module() override { m_ticks.Remove(*m_document); }
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;

    void Tick() {
        m_world.clock.Advance(1);
        m_ticks.RunTick();
        m_loop.Run();
    }
    platform::MainLoop& Loop() { return m_loop; }
    support::WaitingLoop& Waiting() { return m_loop; }
    const std::string& Folder() const { return m_world.folder.Path(); }
    platform::LogSink& Log() { return m_world.log; }
    const platform::Translator& Translator() const { return m_world.translator; }

  private:
    engine::CKalvexDoc* FindScript(std::string_view) override { return m_document.get(); }
    engine::CKalvexDoc* OpenScript(std::string_view) override { return nullptr; }
    void CloseScript(engine::CKalvexDoc&) override {}
    std::vector<engine::CKalvexDoc*> Scripts() override { return {m_document.get()}; }
    workbench::DocumentModel& ModelOf(const engine::CKalvexDoc&) override { return m_model; }
    void SetLogLevel(int) override {}
    const std::string& GetClientIdentity() const override { return m_identity; }

    const std::string m_identity = "Kalvex_bench";
    ScriptServices m_world;
    engine::TickRunner m_ticks;
    support::WaitingLoop m_loop;
    platform::UserStore m_users{platform::PasswordCost::Least};
    workbench::DocumentModel m_model;
    console::ModuleConsole m_console{*this};
    std::unique_ptr<engine::CKalvexDoc> m_document;
    console::CKalvexServerConnectionManager m_consoles{
        {.clock = m_world.clock,
         .log = m_world.log,
         .translator = m_world.translator,
         .loop = m_loop,
         .users = m_users,
         .console = m_console,
         .host = *this,
         .lastMessages = [](std::size_t) { return std::vector<vantrel::LogMessage>(); },
         .controlRight = [] { return "100"; },
         .passwordCost = platform::PasswordCost::Least,
         .mostClients = 1000}};
    std::unique_ptr<vantrel::NetworkServer> m_server;
};

// A second of plant time an iteration.
void ConsolesAtAScript(benchmark::State& state) {
    Module module;
    vantrel::NetworkClientSettings settings;
    settings.runtimeFolder = module.Folder();
    support::WaitingLoop loop;
    vantrel::NetworkClient client(settings, loop, module.Log(), module.Translator());
    std::vector<std::unique_ptr<Watcher>> watchers;
    for (int number = 0; number < state.range(0); ++number) {
        watchers.push_back(std::make_unique<Watcher>(client, number));
        while (!watchers.back()->IsWatching()) {
            module.Waiting().Run();
            loop.Run();
        }
    }
    std::int64_t seconds = 0;
    for (auto _ : state) {
        for (int tick = 0; tick < kTicksOfASecond; ++tick) module.Tick();
        ++seconds;
        state.PauseTiming();
        loop.Run();
        state.ResumeTiming();
    }
    // A report comes when more than a second has passed since the last one.
    const std::int64_t least = seconds / 2 - 1;
    for (const auto& watcher : watchers) {
        while (watcher->Reports() < least) {
            module.Waiting().Run();
            loop.Run();
        }
    }
    state.counters["tick"] =
        benchmark::Counter(static_cast<double>(seconds) * kTicksOfASecond,
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(ConsolesAtAScript)->Arg(0)->Arg(1)->Arg(10)->Arg(100)->UseRealTime();

}  // namespace
}  // namespace kalvex::bench

BENCHMARK_MAIN();
