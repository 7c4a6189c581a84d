#include "platform/posix/NetworkProbes.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/resource.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <numeric>

#include "platform/posix/Ping.h"
#include "support/localhost.h"
#include "support/loopback.h"

namespace kalvex::platform {
namespace {

using testing::ElementsAre;

TEST(NetworkProbesThreadsTest, WorkIsDoneUnderItsIdentityAndWithoutSignals) {
    SetThreadIdentity({"MainThread", 101});
    std::string name;
    std::string shown(16, '\0');
    int ident = 0;
    bool takesTerm = true;
    std::thread thread = StartThread({"ExecuteFtpConnectionThread", 103}, [&] {
        name = GetThreadIdentity().name;
        ident = GetThreadIdentity().ident;
        pthread_getname_np(pthread_self(), shown.data(), shown.size());
        sigset_t blocked;
        pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
        takesTerm = sigismember(&blocked, SIGTERM) == 0;
    });
    thread.join();
    EXPECT_EQ(name, "ExecuteFtpConnectionThread");
    EXPECT_EQ(ident, 103);
    EXPECT_STREQ(shown.c_str(), "ExecuteFtpConne");
    EXPECT_FALSE(takesTerm);
    EXPECT_STREQ(GetThreadIdentity().name, "MainThread");
    sigset_t blocked;
    pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
    EXPECT_EQ(sigismember(&blocked, SIGTERM), 0);
}

class NetworkProbesTcpTest : public testing::Test {
  protected:
    PosixNetworkProbes probes;
};

TEST_F(NetworkProbesTcpTest, ListeningPortTakesTheConnection) {
    const support::LoopbackPort port(true);
    const TcpOutcome outcome = probes.ConnectTcp("127.0.0.1", port.Number());
    EXPECT_EQ(outcome.failed, TcpStep::None);
    EXPECT_EQ(outcome.error, "");
}

TEST_F(NetworkProbesTcpTest, NameIsLookedUp) {
    if (!support::KnowsLocalhost()) GTEST_SKIP() << support::kNoLocalhost;
    const support::LoopbackPort port(true);
    EXPECT_EQ(probes.ConnectTcp("localhost", port.Number()).failed, TcpStep::None);
}

TEST_F(NetworkProbesTcpTest, RefusedPortIsToldInTheSystemsWords) {
    const support::LoopbackPort port(false);
    const TcpOutcome outcome = probes.ConnectTcp("127.0.0.1", port.Number());
    EXPECT_EQ(outcome.failed, TcpStep::Connect);
    EXPECT_EQ(outcome.error, "Connection refused");
}

TEST_F(NetworkProbesTcpTest, AddressThatIsNoneIsToldInTheSystemsWords) {
    const std::string tooLong(64, 'x');  // for a part of a name
    for (const std::string& address : {std::string(), tooLong}) {
        const TcpOutcome outcome = probes.ConnectTcp(address, 80);
        EXPECT_EQ(outcome.failed, TcpStep::Resolve) << address;
        EXPECT_NE(outcome.error, "") << address;
    }
}

TEST_F(NetworkProbesTcpTest, NoDescriptorLeftIsAFailureOfTheSocket) {
    std::vector<int> taken;
    rlimit kept{};
    getrlimit(RLIMIT_NOFILE, &kept);
    const rlimit few{32, kept.rlim_max};
    setrlimit(RLIMIT_NOFILE, &few);
    for (int fd = open("/dev/null", O_RDONLY); fd >= 0; fd = open("/dev/null", O_RDONLY)) {
        taken.push_back(fd);
    }
    const TcpOutcome outcome = probes.ConnectTcp("127.0.0.1", 80);
    for (const int fd : taken) close(fd);
    setrlimit(RLIMIT_NOFILE, &kept);
    EXPECT_EQ(outcome.failed, TcpStep::Socket);
    EXPECT_EQ(outcome.error, "Too many open files");
}

class NetworkProbesFtpTest : public testing::Test {
  protected:
    FtpLogin Login(const support::FtpResponder& server) const {
        return {"127.0.0.1", server.Port(), "operator", "tajne"};
    }

    PosixNetworkProbes probes;
    std::unique_ptr<FtpSession> session = probes.OpenFtpSession();
    std::string error;
};

TEST_F(NetworkProbesFtpTest, LogsInAndSaysGoodbye) {
    support::FtpResponder server;
    EXPECT_TRUE(session->Connect(Login(server), error)) << error;
    EXPECT_EQ(session->GetGreeting(), "220 Serwer\r\n");
    EXPECT_TRUE(session->Close());
    EXPECT_THAT(server.Commands(),
                ElementsAre("connect", "USER operator", "PASS tajne", "PWD", "QUIT"));
}

TEST_F(NetworkProbesFtpTest, GreetingHasAllItsLinesAndNoMore) {
    support::FtpResponder server(
        {{"greeting", "220-FileZilla Server 1.7\r\n220-220 nie koniec\r\n220 Witamy"},
         {"PASS", "230-Dużo\r\n230 słów"}});
    EXPECT_TRUE(session->Connect(Login(server), error)) << error;
    EXPECT_EQ(session->GetGreeting(),
              "220-FileZilla Server 1.7\r\n220-220 nie koniec\r\n220 Witamy\r\n");
}

TEST_F(NetworkProbesFtpTest, CommandGoesOverTheSameConnectionAndMayBeRefused) {
    support::FtpResponder server(support::FtpResponder::Answers{{"OPTS", "501 Nie rozumiem"}});
    EXPECT_TRUE(session->Connect(Login(server), error)) << error;
    session->Command("OPTS UTF8 OFF");
    EXPECT_TRUE(session->Close());
    EXPECT_THAT(server.Commands(), ElementsAre("connect", "USER operator", "PASS tajne", "PWD",
                                               "OPTS UTF8 OFF", "QUIT"));
}

TEST_F(NetworkProbesFtpTest, BytesOfUserAndPasswordArriveAsTheyAre) {
    support::FtpResponder server;
    EXPECT_TRUE(session->Connect({"127.0.0.1", server.Port(), "u@\xB9:x", "a b/%41"}, error))
        << error;
    EXPECT_EQ(server.Commands()[1], "USER u@\xB9:x");
    EXPECT_EQ(server.Commands()[2], "PASS a b/%41");
}

TEST_F(NetworkProbesFtpTest, RefusedLoginFailsAndTheNextTryBeginsAnew) {
    support::FtpResponder server(support::FtpResponder::Answers{{"PASS", "530 Nie"}});
    EXPECT_FALSE(session->Connect(Login(server), error));
    EXPECT_EQ(error, "Access denied: 530");
    EXPECT_FALSE(session->Connect(Login(server), error));
    session.reset();
    const std::vector<std::string> commands = server.Commands();
    EXPECT_EQ(std::count(commands.begin(), commands.end(), "connect"), 2);
}

TEST_F(NetworkProbesFtpTest, ServerThatHangsUpFails) {
    support::FtpResponder server(support::FtpResponder::Answers{{"greeting", "hangup"}});
    EXPECT_FALSE(session->Connect(Login(server), error));
    EXPECT_NE(error, "");
}

TEST_F(NetworkProbesFtpTest, RefusedPortFails) {
    const support::LoopbackPort port(false);
    EXPECT_FALSE(session->Connect({"127.0.0.1", port.Number(), "u", "p"}, error));
    EXPECT_NE(error, "");
    EXPECT_FALSE(session->Close());
}

TEST_F(NetworkProbesFtpTest, AddressWithAPortIsNoAddress) {
    support::FtpResponder server;
    const std::string address = "127.0.0.1:" + std::to_string(server.Port());
    EXPECT_FALSE(session->Connect({address, server.Port(), "u", "p"}, error));
    EXPECT_THAT(server.Commands(), ElementsAre());
}

TEST_F(NetworkProbesFtpTest, ConnectionThatTheServerEndedIsNotThereToClose) {
    support::FtpResponder server(support::FtpResponder::Answers{{"NOOP", "hangup"}});
    EXPECT_TRUE(session->Connect(Login(server), error)) << error;
    session->Command("NOOP");
    EXPECT_FALSE(session->Close());
}

TEST(NetworkProbesEchoTest, RequestHasThirtyTwoCountingBytesAndARightChecksum) {
    const std::vector<std::uint8_t> packet = MakeEchoRequest(0x1234, 0x0102);
    ASSERT_EQ(packet.size(), 40U);
    EXPECT_THAT(std::vector(packet.begin(), packet.begin() + 2), ElementsAre(8, 0));
    EXPECT_THAT(std::vector(packet.begin() + 4, packet.begin() + 8),
                ElementsAre(0x12, 0x34, 0x01, 0x02));
    std::vector<std::uint8_t> data(32);
    std::iota(data.begin(), data.end(), ' ');
    EXPECT_EQ(std::vector(packet.begin() + 8, packet.end()), data);
    EXPECT_EQ(InternetChecksum(packet), 0);
}

TEST(NetworkProbesEchoTest, ChecksumIsThatOfTheInternet) {
    // The words 0001 f203 f4f5 f6f7 add up to 2 ddf0, with the carry ddf2.
    const std::uint8_t bytes[] = {0x00, 0x01, 0xF2, 0x03, 0xF4, 0xF5, 0xF6, 0xF7};
    EXPECT_EQ(InternetChecksum(bytes), 0x220D);
    const std::uint8_t odd[] = {0x00, 0x01, 0xF2};
    EXPECT_EQ(InternetChecksum(odd), 0x0DFE);
}

TEST(NetworkProbesEchoTest, WordOfARouterBecomesItsNumber) {
    EXPECT_EQ(ResultOfIcmp(3, 0), -11002);
    EXPECT_EQ(ResultOfIcmp(3, 1), -11003);
    EXPECT_EQ(ResultOfIcmp(3, 2), -11004);
    EXPECT_EQ(ResultOfIcmp(3, 3), -11005);
    EXPECT_EQ(ResultOfIcmp(3, 4), -11009);
    EXPECT_EQ(ResultOfIcmp(3, 13), -11003);
    EXPECT_EQ(ResultOfIcmp(4, 0), -11016);
    EXPECT_EQ(ResultOfIcmp(11, 0), -11013);
    EXPECT_EQ(ResultOfIcmp(11, 1), -11014);
    EXPECT_EQ(ResultOfIcmp(12, 0), -11015);
    EXPECT_EQ(ResultOfIcmp(99, 0), -11050);
}

using Bytes = std::vector<std::uint8_t>;

Bytes Joined(const Bytes& first, const Bytes& second) {
    Bytes joined(first.size() + second.size());
    std::ranges::copy(second, std::ranges::copy(first, joined.begin()).out);
    return joined;
}

Bytes Cut(const Bytes& bytes, std::size_t length) {
    return {bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(length)};
}

Bytes InPacket(const Bytes& message, std::uint8_t protocol = 1) {
    Bytes header(24);  // with one word of options
    header[0] = 0x46;
    header[9] = protocol;
    return Joined(header, message);
}

TEST(NetworkProbesEchoTest, RawSocketPicksItsOwnReply) {
    Bytes reply = MakeEchoRequest(7, 1);
    EXPECT_EQ(ReadRawPacket(InPacket(reply), 7, 1).answer, EchoAnswer::Foreign);
    reply[0] = 0;
    EXPECT_EQ(ReadRawPacket(InPacket(reply), 7, 1).answer, EchoAnswer::Reply);
    EXPECT_EQ(ReadRawPacket(InPacket(reply), 8, 1).answer, EchoAnswer::Foreign);
    EXPECT_EQ(ReadRawPacket(InPacket(reply), 7, 2).answer, EchoAnswer::Foreign);
    EXPECT_EQ(ReadRawPacket(InPacket(reply, 17), 7, 1).answer, EchoAnswer::Foreign);
}

TEST(NetworkProbesEchoTest, RawSocketPicksTheRefusalOfItsOwnRequest) {
    const Bytes refusal = Joined({11, 0, 0, 0, 0, 0, 0, 0}, InPacket(MakeEchoRequest(7, 1)));
    const EchoReading reading = ReadRawPacket(InPacket(refusal), 7, 1);
    EXPECT_EQ(reading.answer, EchoAnswer::Refusal);
    EXPECT_EQ(reading.result, -11013);
    EXPECT_EQ(ReadRawPacket(InPacket(refusal), 8, 1).answer, EchoAnswer::Foreign);
}

TEST(NetworkProbesEchoTest, RawSocketPassesOverPacketsThatAreCutShort) {
    const Bytes quoted = Cut(InPacket(MakeEchoRequest(7, 1)), 32);
    const Bytes whole = InPacket(Joined({3, 1, 0, 0, 0, 0, 0, 0}, quoted));
    ASSERT_EQ(ReadRawPacket(whole, 7, 1).answer, EchoAnswer::Refusal);
    for (std::size_t length = 0; length < whole.size(); ++length) {
        EXPECT_EQ(ReadRawPacket(Cut(whole, length), 7, 1).answer, EchoAnswer::Foreign) << length;
    }
}

// A network of its own, in which the test makes the rules; for root only.
class NetworkProbesOwnNetworkTest : public testing::Test {
  protected:
    void SetUp() override {
        m_kept = open("/proc/self/ns/net", O_RDONLY | O_CLOEXEC);
        if (unshare(CLONE_NEWNET) != 0) GTEST_SKIP() << "no network of its own for this user";
        m_unshared = true;
    }
    void TearDown() override {
        if (m_unshared && setns(m_kept, CLONE_NEWNET) != 0) std::abort();
        close(m_kept);
    }

    static void BringLoopbackUp() {
        const int fd = socket(AF_INET, SOCK_DGRAM, 0);
        ifreq request{};
        std::strcpy(request.ifr_name, "lo");
        request.ifr_flags = IFF_UP | IFF_LOOPBACK | IFF_RUNNING;
        EXPECT_EQ(ioctl(fd, SIOCSIFFLAGS, &request), 0);
        close(fd);
    }

    static void Set(const std::string& rule, const std::string& value) {
        std::ofstream("/proc/sys/net/ipv4/" + rule) << value;
    }

    PosixNetworkProbes probes;

  private:
    int m_kept = -1;
    bool m_unshared = false;
};

TEST_F(NetworkProbesOwnNetworkTest, EchoComesBackThroughADatagramSocket) {
    BringLoopbackUp();
    Set("ping_group_range", "0 0");
    EXPECT_GE(probes.Ping("127.0.0.1", 60000), 0);
}

TEST_F(NetworkProbesOwnNetworkTest, EchoComesBackThroughARawSocketWhereTheOtherIsRefused) {
    BringLoopbackUp();
    Set("ping_group_range", "1 0");
    EXPECT_GE(probes.Ping("127.0.0.1", 60000), 0);
}

TEST_F(NetworkProbesOwnNetworkTest, HostThatKeepsSilentGivesNoReply) {
    BringLoopbackUp();
    Set("icmp_echo_ignore_all", "1");
    Set("ping_group_range", "0 0");
    EXPECT_EQ(probes.Ping("127.0.0.1", 1), -1);
    EXPECT_EQ(probes.Ping("127.0.0.1", 0), -1);
    Set("ping_group_range", "1 0");
    EXPECT_EQ(probes.Ping("127.0.0.1", 1), -1);
}

TEST_F(NetworkProbesOwnNetworkTest, NetworkThatIsNotThereIsUnreachable) {
    EXPECT_EQ(probes.Ping("127.0.0.1", 60000), -11002);
}

TEST_F(NetworkProbesOwnNetworkTest, SocketsThatAreRefusedAreAMatterOfPermission) {
    BringLoopbackUp();
    Set("ping_group_range", "1 0");
    ASSERT_EQ(seteuid(65534), 0);
    EXPECT_EQ(probes.Ping("127.0.0.1", 60000), -6);
    ASSERT_EQ(seteuid(0), 0);
}

TEST(NetworkProbesPingTest, AddressThatIsNoneIsNotLookedFor) {
    PosixNetworkProbes probes;
    EXPECT_EQ(probes.Ping("", 60000), -3);
    EXPECT_EQ(probes.Ping(std::string(64, 'x'), 60000), -3);
}

TEST(NetworkProbesNoneTest, NoThreadIsStarted) {
    EXPECT_FALSE(NoProbes().StartThread({"ExecutePingThread", 102}, [] {}).joinable());
}

}  // namespace
}  // namespace kalvex::platform
