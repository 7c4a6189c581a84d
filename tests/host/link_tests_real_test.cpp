// The checks against servers on this machine.
#include <gmock/gmock.h>

#include <algorithm>

#include "host/LinkTests.h"
#include "platform/posix/NetworkProbes.h"
#include "support/host_world.h"
#include "support/loopback.h"

namespace kalvex::host {
namespace {

using testing::ElementsAre;

// Only the pauses between two tries are left out.
class LinkTestsRealTest : public support::HostWorld {
  protected:
    class Probes final : public platform::NetworkProbes {
      public:
        std::thread StartThread(const platform::ThreadIdentity& identity,
                                std::function<void()> work) override {
            return m_probes.StartThread(identity, std::move(work));
        }
        int Ping(const std::string& address, std::uint32_t timeout) override {
            return m_probes.Ping(address, timeout);
        }
        std::unique_ptr<platform::FtpSession> OpenFtpSession() override {
            return m_probes.OpenFtpSession();
        }
        platform::TcpOutcome ConnectTcp(const std::string& address, std::uint16_t port) override {
            return m_probes.ConnectTcp(address, port);
        }
        void Pause(std::uint32_t) override {}

      private:
        platform::PosixNetworkProbes m_probes;
    };

    LinkTestsRealTest() { services.probes = &probes; }
    ~LinkTestsRealTest() override { documents.clear(); }

    // Starts a test and asks for its result until it is there.
    int ResultOf(const std::string& init, const std::string& result) {
        engine::CKalvexDoc& script = support::ScriptWorld::Run(
            init + "\n:czekaj\nLOCAL r\nSET r = " + result + "\nIF r == -100 GOTO czekaj");
        while (script.State().m_nCurrentLine < script.GetLineCount()) {
            ticks.RunTick();
            std::this_thread::yield();
        }
        return std::stoi(Text("r"));
    }

    Probes probes;
};

TEST_F(LinkTestsRealTest, HttpConnectsToAListeningPort) {
    const support::LoopbackPort port(true);
    const std::string number = std::to_string(port.Number());
    EXPECT_EQ(
        ResultOf("HTTP_INIT \"127.0.0.1\" " + number, "HTTP_RESULT \"127.0.0.1:" + number + '"'),
        1);
}

TEST_F(LinkTestsRealTest, HttpRefusedIsLogged) {
    const support::LoopbackPort port(false);
    EXPECT_EQ(ResultOf("HTTP_INIT \"127.0.0.1\" " + std::to_string(port.Number()),
                       "HTTP_RESULT \"127.0.0.1\""),
              -1);
    EXPECT_EQ(Log().back(),
              "Wystąpił błąd podczas próby zestawienia połączenia z serwerem http 127.0.0.1. "
              "Connection refused");
}

TEST_F(LinkTestsRealTest, FtpLogsIn) {
    support::FtpResponder server(
        support::FtpResponder::Answers{{"greeting", "220 FileZilla Server"}});
    EXPECT_EQ(ResultOf("FTP_INIT \"127.0.0.1\" " + std::to_string(server.Port()) + " \"u\" \"p\"",
                       "FTP_RESULT \"127.0.0.1\""),
              1);
    EXPECT_THAT(server.Commands(),
                ElementsAre("connect", "USER u", "PASS p", "PWD", "OPTS UTF8 OFF", "QUIT"));
}

TEST_F(LinkTestsRealTest, FtpRefusedLoginIsTriedThreeTimes) {
    support::FtpResponder server(support::FtpResponder::Answers{{"PASS", "530 Nie"}});
    EXPECT_EQ(ResultOf("FTP_INIT \"127.0.0.1\" " + std::to_string(server.Port()) + " \"u\" \"p\"",
                       "FTP_RESULT \"127.0.0.1\""),
              -2);
    const std::vector<std::string> commands = server.Commands();
    EXPECT_EQ(std::ranges::count(commands, "connect"), 3);
    const std::string retry = "Błąd FTP (Ponowienie próby nawiązania połączenia)";
    EXPECT_EQ(std::ranges::count(Log(platform::LogAlways), retry), 2);
}

TEST_F(LinkTestsRealTest, ManyTestsAtOnce) {
    const support::LoopbackPort open(true);
    const support::LoopbackPort shut(false);
    support::FtpResponder server;
    LinkTests tests(services);
    for (int i = 0; i < 8; ++i) {
        LinkTarget target;
        target.address = "127.0.0.1";
        target.user = "u";
        target.timeout = 60000;
        target.port = i % 2 == 0 ? open.Number() : shut.Number();
        tests.Start(LinkKind::Ping, target);
        tests.Start(LinkKind::Http, target);
        target.port = server.Port();
        tests.Start(LinkKind::Ftp, target);
    }
    const auto wait = [&tests](LinkKind kind) {
        int result = LinkRunning;
        while (result == LinkRunning) {
            result = tests.TakeResult(kind, "127.0.0.1");
            std::this_thread::yield();
        }
        return result;
    };
    EXPECT_NE(wait(LinkKind::Ping), LinkUnknown);
    EXPECT_NE(wait(LinkKind::Http), LinkUnknown);
    EXPECT_EQ(wait(LinkKind::Ftp), 1);
}

}  // namespace
}  // namespace kalvex::host
