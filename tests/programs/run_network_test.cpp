#include <gmock/gmock.h>

#include <cstdlib>
#include <nlohmann/json.hpp>
#include <thread>

#include "programs/kalvex-run/RunSources.h"
#include "support/environment_scope.h"
#include "support/network_world.h"
#include "support/scratch_file.h"
#include "support/script_world.h"

namespace kalvex::programs {
namespace {

using testing::Contains;
using testing::ElementsAre;

// Leaves the network to the test when the sources go.
class LentNetwork final : public run::RunCarrier {
  public:
    explicit LentNetwork(run::RunNetwork& network) : m_network(network) {}
    vantrel::TransportFactory& Transports() override { return m_network.Transports(); }
    const std::vector<std::string>& SourceNames() const override { return m_network.SourceNames(); }
    void BeginTick(std::int64_t tick, vantrel::CSourceList& sources) override {
        m_network.BeginTick(tick, sources);
    }

  private:
    run::RunNetwork& m_network;
};

// A run whose sources are servers on real sockets. The time of the network is moved by hand.
class RunNetworkTest : public support::ScriptWorld {
  protected:
    ~RunNetworkTest() override { EndRun(); }

    void Listen() { transport = network.Listen(network.ServerSettings(), server); }

    void MakeRun() {
        carrier = std::make_unique<run::RunNetwork>(network.ClientSettings(), log, translator);
        run = std::make_unique<run::RunSources>(std::make_unique<LentNetwork>(*carrier), true,
                                                profile, log, translator, users);
        services.sources = &run->ForScripts();
    }

    // The server, which shares the thread with the run, has its turn before the run waits for it.
    void EndRun() {
        documents.clear();
        run.reset();
        if (transport) network.RunUntil([this] { return server.link == nullptr; });
        carrier.reset();
    }

    engine::CKalvexDoc& Start(std::string_view text) {
        engine::CKalvexDoc& document = Open(text);
        document.Start();
        document.SetPriority(1);
        return document;
    }

    void TickOnce() {
        run->BeginTick(++tick);
        Tick(1);
        network.loop.Run();
        std::this_thread::yield();
    }

    // A condition that does not come about ends by the time limit of the test runner.
    template <class Condition>
    void TickUntil(Condition done) {
        while (!done()) TickOnce();
    }

    void TickUntilHeard(const std::string& message) {
        TickUntil([&] { return std::ranges::count(server.heard, message) > 0; });
    }

    void TickUntilLogged(const std::string& line, int times = 1) {
        TickUntil([&] { return std::ranges::count(Log(platform::LogEvents), line) >= times; });
    }

    support::NetworkWorld network;
    support::HandServer server;
    std::unique_ptr<vantrel::NetworkServer> transport;
    run::RunProfile profile;
    std::unique_ptr<run::RunNetwork> carrier;
    std::unique_ptr<run::RunSources> run;
    std::int64_t tick = 0;
};

TEST_F(RunNetworkTest, ScriptReadsAndWritesAVariableOfAServer) {
    Listen();
    MakeRun();
    engine::CKalvexDoc& document =
        Start("REMOTE a srv@V\nLOCAL x = a + 1\nSET a = x\nLOCAL koniec = 1");
    TickUntilHeard("subscribe +1V");
    EXPECT_EQ(document.LastError().m_nErrorCode, 27);
    server.SendValue(1, value::CVal(41));
    TickUntilHeard("modify 1:1V[0]=42.00/32768");
    EXPECT_EQ(run->Result()["srv"]["connected"], true);
    EXPECT_EQ(run->Result()["srv"]["requests"].size(), 4u);
    EXPECT_EQ(Value(document, "a"), "171:42.00");
    EXPECT_THAT(server.heard,
                ElementsAre("login / Kalvex 23", "subscribe +1V", "modify 1:1V[0]=42.00/32768"));
}

TEST_F(RunNetworkTest, WriteOfTheLastLineReachesTheServer) {
    Listen();
    MakeRun();
    engine::CKalvexDoc& document = Start("REMOTE a srv@V\nLOCAL x = a\nSET a = 7");
    TickUntilHeard("subscribe +1V");
    server.SendValue(1, value::CVal(1));
    TickUntil([&] { return document.State().m_nCurrentLine == document.GetLineCount(); });
    EndRun();
    EXPECT_THAT(server.heard, ElementsAre("login / Kalvex 23", "subscribe +1V",
                                          "modify 1:1V[0]=7/32768", "subscribe -1", "closed 4106"));
}

TEST_F(RunNetworkTest, ServerThatComesBackIsFoundByThePeriodicWork) {
    Listen();
    MakeRun();
    engine::CKalvexDoc& document = Start("REMOTE a srv@V\n:w\nLOCAL x\nSET x = a\nGOTO w");
    TickUntilHeard("subscribe +1V");
    server.SendValue(1, value::CVal(1));
    TickUntil([&] { return Value(document, "x") == "150:1"; });
    transport.reset();
    TickUntilLogged("Połączenie z srv zerwane (zakończenie pracy serwera)");
    EXPECT_EQ(run->Result()["srv"]["connected"], false);
    server.heard.clear();
    Listen();
    network.now += 2'000;
    TickUntilHeard("subscribe +1V");
    EXPECT_EQ(document.LastError().m_nErrorCode, 27);
    server.SendValue(1, value::CVal(2));
    TickUntil([&] { return Value(document, "x") == "150:2"; });
    EXPECT_THAT(Log(platform::LogErrors),
                Contains("Połączenie z srv zerwane (zakończenie pracy serwera)"));
    EXPECT_THAT(Log(platform::LogEvents), Contains("Nawiązanie połączenia z srv").Times(2));
}

TEST_F(RunNetworkTest, PeriodicWorkComesOnceASecond) {
    MakeRun();
    Start("REMOTE a srv@V");
    const std::string unreachable = "Błąd nawiązania połączenia z srv (serwer nie odpowiada)";
    TickUntilLogged(unreachable);
    Listen();
    network.now += 999;
    for (int i = 0; i < 100; ++i) TickOnce();
    EXPECT_EQ(server.clients, 0);
    network.now += 1;
    TickUntilHeard("subscribe +1V");
    const std::string place = network.folder.Path("srv");
    EXPECT_THAT(Log(platform::LogErrors),
                ElementsAre("main.kx : Inicjowanie skryptu ", "main.kx : Start skryptu ",
                            "Serwer srv jest nieosiągalny: nie ma gniazda " + place +
                                " (czy serwer jest uruchomiony?)",
                            unreachable, "Serwer srv odpowiada (" + place + ")"));
}

TEST_F(RunNetworkTest, RefusedLoginIsTriedAgainAfterSixtyRoundsOfPeriodicWork) {
    server.loginResult = {1, text::FromUtf8("Błędne hasło")};
    Listen();
    MakeRun();
    Start("REMOTE a srv@V\nLOCAL x = a");
    TickUntilLogged("Brak dostępu do serwera srv Błędne hasło");
    server.loginResult = {};
    for (int second = 0; second < 59; ++second) {
        network.now += 1'000;
        TickOnce();
    }
    EXPECT_EQ(server.clients, 1);
    network.now += 1'000;
    TickUntilHeard("subscribe +1V");
    EXPECT_EQ(server.clients, 2);
}

TEST_F(RunNetworkTest, RunEndsWhileItDialsAServerThatIsNotThere) {
    MakeRun();
    Start("REMOTE a srv@V");
    TickOnce();
    EndRun();
    EXPECT_THAT(Log(platform::LogErrors),
                ElementsAre("main.kx : Inicjowanie skryptu ", "main.kx : Start skryptu "));
}

TEST_F(RunNetworkTest, RunEndsThoughTheServerHangs) {
    Listen();
    MakeRun();
    Start("REMOTE a srv@V");
    TickUntilHeard("subscribe +1V");
    documents.clear();
    run.reset();
    carrier.reset();
    EXPECT_THAT(server.heard, ElementsAre("login / Kalvex 23", "subscribe +1V"));
}

// ---- what the options ask for

class RunNetworkOptionsTest : public support::ScriptWorld {
  protected:
    ~RunNetworkOptionsTest() override { documents.clear(); }

    // The clients that a server named "srv" sees of a run that declares a variable of it.
    int ClientsOf(const run::RunOptions& options) {
        support::HandServer server;
        const auto transport = network.Listen(network.ServerSettings(), server);
        const run::RunProfile profile =
            run::ReadRunProfile(options, folder.Path(), platform::Translator());
        std::string fault;
        const auto run =
            run::MakeRunSources(options, profile, clock, log, translator, users, fault);
        services.sources = &run->ForScripts();
        Run("REMOTE a srv@V\nREMOTE b nie_ma@V", 1);
        std::int64_t tick = 0;
        // The other source is told to be out of reach once the network has been asked for it.
        const std::string told = "Błąd nawiązania połączenia z nie_ma (serwer nie odpowiada)";
        const bool reached = options.profile && !options.plant;
        while (reached &&
               (server.clients == 0 || std::ranges::count(Log(platform::LogErrors), told) == 0)) {
            run->BeginTick(++tick);
            network.loop.Run();
        }
        documents.clear();
        return server.clients;
    }

    support::NetworkWorld network;
    support::EnvironmentScope common{"SORVANE_COMMON_PROFILE", folder.Path("sorvane.ini")};
    support::EnvironmentScope sockets{"SORVANE_RUNTIME_DIR", network.folder.Path()};
};

TEST_F(RunNetworkOptionsTest, ProfileLeadsToTheServersOfTheMachine) {
    folder.Put("Kalvex.ini", "");
    run::RunOptions options;
    options.profile = folder.Path("Kalvex.ini");
    EXPECT_EQ(ClientsOf(options), 1);
}

TEST_F(RunNetworkOptionsTest, WithoutAProfileNoServerIsAsked) {
    EXPECT_EQ(ClientsOf({}), 0);
}

TEST_F(RunNetworkOptionsTest, PlantStandsInForTheServersOfTheMachine) {
    folder.Put("Kalvex.ini", "");
    folder.Put("plant.json", R"({"sources": {}})");
    run::RunOptions options;
    options.profile = folder.Path("Kalvex.ini");
    options.plant = folder.Path("plant.json");
    EXPECT_EQ(ClientsOf(options), 0);
}

TEST_F(RunNetworkOptionsTest, AddressesComeFromTheCommonProfile) {
    folder.Put("Kalvex.ini", "");
    folder.Put("sorvane.ini", "[Serwery]\nsrv=localhost:4000\n");
    run::RunOptions options;
    options.profile = folder.Path("Kalvex.ini");
    const run::RunProfile profile = run::ReadRunProfile(options, {}, platform::Translator());
    ASSERT_EQ(profile.servers.size(), 1u);
    EXPECT_EQ(profile.servers.at("srv").address, "localhost:4000");
    EXPECT_TRUE(run::ReadRunProfile({}, {}, platform::Translator()).servers.empty());
}

}  // namespace
}  // namespace kalvex::programs
