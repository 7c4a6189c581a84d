// Clients that call and take their calls back, or call more than a server can bear.
#include <gmock/gmock.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <array>
#include <future>
#include <thread>

#include "support/network_world.h"
#include "vantrel/network/ListeningSocket.h"
#include "vantrel/raw_peer.h"

namespace kalvex::vantrel {
namespace {

using platform::Descriptor;
using testing::Each;
using testing::ElementsAre;

// The frames of HTTP/2 by hand.
class Frames {
  public:
    std::string bytes = "PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n" + Frame(kSettings, 0, 0, "");

    void Call(std::uint32_t stream) {
        std::string headers = "\x83\x86";  // POST, http
        headers += '\x04' + Text("/sorvane.v1.DataServer/Converse");
        headers += '\x01' + Text("localhost");
        headers += '\0' + Text("te") + Text("trailers");
        headers += '\0' + Text("content-type") + Text("application/grpc");
        bytes += Frame(kHeaders, kEndHeaders, stream, headers);
    }
    void TakeBack(std::uint32_t stream) {
        bytes += Frame(kReset, 0, stream, std::string("\0\0\0\x08", 4));
    }

  private:
    static constexpr char kHeaders = 1;
    static constexpr char kReset = 3;
    static constexpr char kSettings = 4;
    static constexpr char kEndHeaders = 4;

    static std::string Text(const std::string& text) {
        return static_cast<char>(text.size()) + text;
    }
    static std::string Frame(char type, char flags, std::uint32_t stream,
                             const std::string& content) {
        const auto byte = [](std::size_t value, int shift) {
            return static_cast<char>(value >> shift & 0xFF);
        };
        std::string frame{byte(content.size(), 16), byte(content.size(), 8),
                          byte(content.size(), 0)};
        frame +=
            {type, flags, byte(stream, 24), byte(stream, 16), byte(stream, 8), byte(stream, 0)};
        return frame + content;
    }
};

class FloodTest : public testing::Test {
  protected:
    Endpoint Local() const { return {.target = LocalSocketTarget(world.folder.Path("srv"))}; }

    Descriptor Connect() const {
        std::string error;
        SocketAddress address = FindAddresses("127.0.0.1:1", error).at(0);
        SetPort(address, server->TcpPort());
        Descriptor socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
        EXPECT_EQ(::connect(socket.Get(), &address.Get(), address.length), 0);
        return socket;
    }
    // Until the server has cut it.
    static void AwaitEnd(const Descriptor& socket) {
        std::array<char, 4096> bytes;
        while (::recv(socket.Get(), bytes.data(), bytes.size(), 0) > 0) {
        }
    }

    support::NetworkWorld world;
    support::HandServer acceptor;
    NetworkServerSettings settings = world.ServerSettings();
    std::unique_ptr<NetworkServer> server;
};

TEST_F(FloodTest, ConnectionOnWhichCallsAreTakenBackInMassesIsCut) {
    settings.address = "127.0.0.1:0";
    server = world.Listen(settings, acceptor);
    const Descriptor socket = Connect();
    Frames frames;
    for (std::uint32_t call = 0; call < 1000; ++call) {
        frames.Call(2 * call + 1);
        frames.TakeBack(2 * call + 1);
    }
    ASSERT_EQ(::send(socket.Get(), frames.bytes.data(), frames.bytes.size(), MSG_NOSIGNAL),
              static_cast<ssize_t>(frames.bytes.size()));
    while (world.log.lines.empty()) {
        if (!world.loop.Run()) std::this_thread::yield();
        server->Check();
    }
    AwaitEnd(socket);
    EXPECT_THAT(world.log.Take(),
                ElementsAre("1 Połączenie (localhost) zerwane: za dużo odwołanych wywołań (1)"));
    EXPECT_THAT(acceptor.heard, Each("closed 4104"));
}

TEST_F(FloodTest, ConnectionWithoutACallEnds) {
    settings.address = "127.0.0.1:0";
    settings.patience = 100;
    server = world.Listen(settings, acceptor);
    const Descriptor mute = Connect();
    const Descriptor idle = Connect();
    const std::string greeting = Frames().bytes;
    ASSERT_EQ(::send(idle.Get(), greeting.data(), greeting.size(), MSG_NOSIGNAL),
              static_cast<ssize_t>(greeting.size()));
    AwaitEnd(mute);
    AwaitEnd(idle);
}

TEST_F(FloodTest, CallsBeyondWhatIsBorneAreTurnedAwayWhateverTheMainThreadDoes) {
    settings.conversationLimit = 1;  // and as many that wait to be told so
    std::array<std::promise<void>, 2> arrived;
    std::size_t count = 0;
    platform::PostedWork idle([&] { arrived.at(count++).set_value(); });
    std::string error;
    server = ListenOnNetwork(settings, acceptor, idle, world.log, world.translator, error);
    RawClient first(Local(), StreamMethod::Converse);
    arrived[0].get_future().wait();
    idle.Run();
    RawClient second(Local(), StreamMethod::Converse);
    arrived[1].get_future().wait();
    RawClient third(Local(), StreamMethod::Converse);
    third.stream->Resume();
    EXPECT_EQ(third.events->AwaitEnd(), StreamEnd::TooLarge);
    EXPECT_EQ(acceptor.clients, 1);
    EXPECT_EQ(count, 2u);
}

}  // namespace
}  // namespace kalvex::vantrel
