#include "platform/HttpEndpoint.h"

#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <atomic>
#include <csignal>
#include <filesystem>
#include <new>
#include <thread>

#include "support/allocation_count.h"
#include "support/loopback.h"
#include "support/scratch_folder.h"
#include "support/waiting_loop.h"

namespace kalvex::platform {
namespace {

using std::chrono::milliseconds;
using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

constexpr const char* kGet = "GET /metrics HTTP/1.1\r\nHost: x\r\n\r\n";

// A client that speaks in plain bytes, and waits for what it reads at most a minute.
class Client {
  public:
    explicit Client(const std::string& address) {
        sockaddr_un local{};
        sockaddr_in port{};
        const sockaddr* plain = reinterpret_cast<const sockaddr*>(&port);
        socklen_t length = sizeof port;
        if (address.front() == '/') {
            local.sun_family = AF_UNIX;
            address.copy(local.sun_path, sizeof local.sun_path - 1);
            plain = reinterpret_cast<const sockaddr*>(&local);
            length = sizeof local;
        } else {
            port.sin_family = AF_INET;
            port.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
            port.sin_port = htons(std::stoi(address.substr(address.rfind(':') + 1)));
        }
        m_fd = socket(plain->sa_family, SOCK_STREAM | SOCK_CLOEXEC, 0);
        const timeval minute{60, 0};
        setsockopt(m_fd, SOL_SOCKET, SO_RCVTIMEO, &minute, sizeof minute);
        m_connected = connect(m_fd, plain, length) == 0;
    }
    ~Client() { close(m_fd); }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    bool IsConnected() const { return m_connected; }
    void Send(const std::string& text) const { send(m_fd, text.data(), text.size(), MSG_NOSIGNAL); }
    // To the end of what the server sends.
    std::string Receive() const {
        std::string text;
        char buffer[4096];
        for (ssize_t count; (count = recv(m_fd, buffer, sizeof buffer, 0)) > 0;) {
            text.append(buffer, static_cast<std::size_t>(count));
        }
        return text;
    }

  private:
    int m_fd;
    bool m_connected;
};

std::string Body(const std::string& answer) {
    const std::size_t end = answer.find("\r\n\r\n");
    return end == std::string::npos ? answer : answer.substr(end + 4);
}

class HttpEndpointTest : public testing::Test {
  protected:
    std::unique_ptr<HttpEndpoint> Make(milliseconds patience = std::chrono::seconds(60)) {
        return MakeHttpEndpoint(
            loop,
            HttpText{"/metrics", "text/plain; version=0.0.4; charset=utf-8",
                     [this] { return "zapytanie " + std::to_string(++rendered) + "\n"; }},
            patience);
    }

    // Starts on any port of the loopback interface.
    std::unique_ptr<HttpEndpoint> Start(milliseconds patience = std::chrono::seconds(60)) {
        std::unique_ptr<HttpEndpoint> endpoint = Make(patience);
        std::string error;
        EXPECT_TRUE(endpoint->Start("127.0.0.1:0", error)) << error;
        return endpoint;
    }

    // Asks from another thread, while this one is the main loop.
    std::string Ask(const HttpEndpoint& endpoint, const std::string& request = kGet) {
        std::string answer;
        bool answered = false;
        std::thread client([&] {
            const Client connection(endpoint.GetAddress());
            connection.Send(request);
            answer = connection.Receive();
            loop.Post([&] { answered = true; });
        });
        while (!answered) loop.WaitAndRun();
        client.join();
        return answer;
    }

    support::WaitingLoop loop;
    int rendered = 0;
};

TEST_F(HttpEndpointTest, EachRequestGetsTheTextOfTheMoment) {
    const auto endpoint = Start();
    const std::string answer = Ask(*endpoint);
    EXPECT_THAT(answer,
                AllOf(StartsWith("HTTP/1.1 200 OK\r\n"),
                      HasSubstr("\r\nContent-Type: text/plain; version=0.0.4; charset=utf-8\r\n"),
                      EndsWith("\r\n\r\nzapytanie 1\n")));
    EXPECT_EQ(Body(Ask(*endpoint)), "zapytanie 2\n");
}

TEST_F(HttpEndpointTest, WhatElseIsAskedForIsNotThere) {
    const auto endpoint = Start();
    for (const char* request : {"GET / HTTP/1.1\r\n\r\n", "GET /metrics/ HTTP/1.1\r\n\r\n",
                                "POST /metrics HTTP/1.1\r\nContent-Length: 2\r\n\r\nab",
                                "GET /../etc HTTP/1.1\r\n\r\n"}) {
        EXPECT_THAT(Ask(*endpoint, request), StartsWith("HTTP/1.1 404 ")) << request;
    }
    EXPECT_THAT(Ask(*endpoint, "bzdura\r\n\r\n"), StartsWith("HTTP/1.1 400 "));
    EXPECT_EQ(rendered, 0);
}

TEST_F(HttpEndpointTest, AddressOfAnotherMachineOrOfAllIsRefused) {
    for (const char* address :
         {"0.0.0.0:9464", "10.1.2.3:9464", "[::]:9464", "[2001:db8::1]:9464", "localhost:9464",
          "example.org:9464", ":9464", "127.0.0.1", "127.0.0.1:", "127.0.0.1:65536", "127.0.0.1:-1",
          "127.0.0.1:12x", "::1:9464", "", "metrics.sock"}) {
        std::string error;
        EXPECT_FALSE(Make()->Start(address, error)) << address;
        EXPECT_EQ(error, "to nie jest adres tego komputera") << address;
    }
}

TEST_F(HttpEndpointTest, LoopbackOfTheNewerProtocolIsThisMachine) {
    const auto endpoint = Make();
    std::string error;
    if (!endpoint->Start("[::1]:0", error)) {
        ASSERT_THAT(error, testing::AnyOf("Cannot assign requested address",
                                          "Address family not supported by protocol"));
        GTEST_SKIP() << "this machine has no IPv6: " << error;
    }
    EXPECT_THAT(endpoint->GetAddress(), StartsWith("[::1]:"));
}

TEST_F(HttpEndpointTest, PortThatIsTakenIsRefused) {
    const support::LoopbackPort taken(true);
    std::string error;
    EXPECT_FALSE(Make()->Start("127.0.0.1:" + std::to_string(taken.Number()), error));
    EXPECT_EQ(error, "Address already in use");
    const auto endpoint = Start();
    EXPECT_FALSE(Make()->Start(endpoint->GetAddress(), error));
    EXPECT_EQ(error, "Address already in use");
}

TEST_F(HttpEndpointTest, LocalSocketComesAndGoes) {
    const support::ScratchFolder folder;
    const std::string path = folder.Path("stan.sock");
    auto endpoint = Make();
    std::string error;
    ASSERT_TRUE(endpoint->Start(path, error)) << error;
    EXPECT_EQ(Body(Ask(*endpoint)), "zapytanie 1\n");
    EXPECT_FALSE(Make()->Start(path, error));
    EXPECT_EQ(error, "Address already in use");
    EXPECT_EQ(Body(Ask(*endpoint)), "zapytanie 2\n");
    endpoint.reset();
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(HttpEndpointTest, SocketThatADeadProcessLeftIsReplacedAndAFileIsNot) {
    const support::ScratchFolder folder;
    const std::string path = folder.Path("stan.sock");
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    const int dead = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    ASSERT_EQ(bind(dead, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    close(dead);
    auto endpoint = Make();
    std::string error;
    ASSERT_TRUE(endpoint->Start(path, error)) << error;
    endpoint.reset();

    folder.Put("plik", "ważne");
    EXPECT_FALSE(Make()->Start(folder.Path("plik"), error));
    EXPECT_EQ(error, "Address already in use");
    EXPECT_EQ(folder.Get("plik"), "ważne");
    EXPECT_FALSE(Make()->Start(folder.Path(std::string(200, 'x')), error));
    EXPECT_EQ(error, "File name too long");
    EXPECT_FALSE(Make()->Start(folder.Path("brak/stan.sock"), error));
    EXPECT_EQ(error, "No such file or directory");
}

TEST_F(HttpEndpointTest, MainLoopThatHangsIsTold) {
    const auto endpoint = Start(milliseconds(50));
    const Client client(endpoint->GetAddress());
    client.Send(kGet);
    EXPECT_THAT(client.Receive(), AllOf(StartsWith("HTTP/1.1 503 "),
                                        EndsWith("\r\n\r\nThe main loop does not answer.\n")));
    EXPECT_EQ(rendered, 0);
}

TEST_F(HttpEndpointTest, LoopThatHangsHasOneTextToMakeAfterwards) {
    const auto endpoint = Start(milliseconds(20));
    for (int i = 0; i < 10; ++i) {
        const Client client(endpoint->GetAddress());
        client.Send(kGet);
        EXPECT_THAT(client.Receive(), StartsWith("HTTP/1.1 503 "));
    }
    while (loop.Run()) {
    }
    EXPECT_EQ(rendered, 1);
}

TEST_F(HttpEndpointTest, ClientsThatHangAreLeftInTime) {
    const auto endpoint = Start(milliseconds(20));
    std::vector<std::unique_ptr<Client>> hanging;
    for (int i = 0; i < 12; ++i) {
        hanging.push_back(std::make_unique<Client>(endpoint->GetAddress()));
        hanging.back()->Send("GET /metr");
    }
    for (const auto& client : hanging) client->Receive();
    std::string answer;
    while ((answer = Ask(*endpoint)).find(" 200 ") == std::string::npos) {
        ASSERT_THAT(answer, testing::AnyOf("", StartsWith("HTTP/1.1 503 ")));
    }
    EXPECT_THAT(Body(answer), StartsWith("zapytanie "));
}

TEST_F(HttpEndpointTest, RequestWithoutEndIsCutOff) {
    const auto endpoint = Start();
    const Client client(endpoint->GetAddress());
    client.Send("GET /metrics HTTP/1.1\r\n");
    for (int i = 0; i < 2000; ++i) client.Send("Naglowek: tresc\r\n");
    EXPECT_THAT(client.Receive(), testing::Not(HasSubstr(" 200 ")));
    EXPECT_EQ(rendered, 0);
    EXPECT_EQ(Body(Ask(*endpoint)), "zapytanie 1\n");
}

// What threads get that begin while it lives.
class SmallStacks {
  public:
    SmallStacks() {
        pthread_attr_init(&m_attributes);
        pthread_getattr_default_np(&m_attributes);
        pthread_attr_getstacksize(&m_attributes, &m_before);
        Set(kSmall);
    }
    ~SmallStacks() {
        Set(m_before);
        pthread_attr_destroy(&m_attributes);
    }
    SmallStacks(const SmallStacks&) = delete;
    SmallStacks& operator=(const SmallStacks&) = delete;

  private:
#if defined(__SANITIZE_THREAD__)
    // What the sanitizer has of each thread lies there, too.
    static constexpr std::size_t kSmall = 4 << 20;
#else
    static constexpr std::size_t kSmall = 256 << 10;
#endif

    void Set(std::size_t size) {
        pthread_attr_setstacksize(&m_attributes, size);
        pthread_setattr_default_np(&m_attributes);
    }

    pthread_attr_t m_attributes{};
    std::size_t m_before = 0;
};

TEST_F(HttpEndpointTest, LongRangeIsPassedOver) {
    const SmallStacks stacks;
    const auto endpoint = Start();
    std::string range = "Range: bytes=0-1";
    while (range.size() < 8000) range += ",0-1";
    const std::string answer = Ask(*endpoint, "GET /metrics HTTP/1.1\r\n" + range + "\r\n\r\n");
    EXPECT_THAT(answer,
                AllOf(StartsWith("HTTP/1.1 200 OK\r\n"), EndsWith("\r\n\r\nzapytanie 1\n")));
}

TEST_F(HttpEndpointTest, HeadBeyondTheBoundsIsRefused) {
    const auto endpoint = Start();
    std::string headers;
    for (int i = 0; i < 65; ++i) headers += "A: b\r\n";
    const auto refusal = [](const std::string& status) {
        return "HTTP/1.1 " + status + "\r\nConnection: close\r\nContent-Length: 0\r\n\r\n";
    };
    EXPECT_EQ(Ask(*endpoint, "GET /" + std::string(1024, 'a') + " HTTP/1.1\r\n\r\n"),
              refusal("414 URI Too Long"));
    EXPECT_EQ(Ask(*endpoint, "GET /metrics HTTP/1.1\r\n" + headers + "\r\n"),
              refusal("431 Request Header Fields Too Large"));
    EXPECT_EQ(Ask(*endpoint, "GET /metrics HTTP/1.1\r\nA: " + std::string(8192, 'b') + "\r\n\r\n"),
              refusal("431 Request Header Fields Too Large"));
    EXPECT_EQ(Ask(*endpoint, "GET /metrics HTTP/1.1\nRange: bytes=0-1\r\n\r\n"),
              refusal("400 Bad Request"));
    EXPECT_EQ(rendered, 0);
}

TEST_F(HttpEndpointTest, HeadMayComeInPieces) {
    const auto endpoint = Start();
    const Client client(endpoint->GetAddress());
    for (const char c : std::string(kGet)) client.Send(std::string(1, c));
    loop.WaitAndRun();
    EXPECT_EQ(Body(client.Receive()), "zapytanie 1\n");
}

TEST_F(HttpEndpointTest, TextForWhichThereIsNoMemoryIsNotThereAndTheNextOneIs) {
    bool lacksMemory = true;
    const auto endpoint = MakeHttpEndpoint(loop,
                                           HttpText{"/metrics", "text/plain",
                                                    [&lacksMemory] {
                                                        if (std::exchange(lacksMemory, false))
                                                            throw std::bad_alloc();
                                                        return std::string("tekst\n");
                                                    }},
                                           milliseconds(50));
    std::string error;
    ASSERT_TRUE(endpoint->Start("127.0.0.1:0", error)) << error;
    std::string answer = Ask(*endpoint);
    EXPECT_THAT(answer, StartsWith("HTTP/1.1 503 "));
    while (!(answer = Ask(*endpoint)).ends_with("tekst\n")) {
        ASSERT_THAT(answer, StartsWith("HTTP/1.1 503 "));
    }
}

TEST_F(HttpEndpointTest, ClientForWhomThereIsNoMemoryIsLeftAlone) {
    const auto endpoint = Start();
    const std::string request =
        "GET /metrics HTTP/1.1\r\nA: " + std::string(7000, 'b') + "\r\n\r\n";
    {
        const Client client(endpoint->GetAddress());
        const support::AllocationBound bound(4096);
        client.Send(request);
        EXPECT_EQ(client.Receive(), "");
    }
    EXPECT_EQ(Body(Ask(*endpoint)), "zapytanie 1\n");
}

TEST_F(HttpEndpointTest, EndLeavesClientsThatHang) {
    auto endpoint = Start();
    const Client silent(endpoint->GetAddress());
    const Client slow(endpoint->GetAddress());
    slow.Send("GET /metrics HTTP/1.1\r\n");
    const Client waiting(endpoint->GetAddress());
    waiting.Send(kGet);
    loop.WaitAndRun();  // the request has come as far as the main thread
    const Client second(endpoint->GetAddress());
    second.Send(kGet);
    endpoint.reset();
    silent.Receive();
    slow.Receive();
    second.Receive();
    while (loop.Run()) {
    }
    EXPECT_EQ(rendered, 1);
}

TEST_F(HttpEndpointTest, ClientThatIsGoneHarmsNobodyAndSignalsStayTheProcesssOwn) {
    struct sigaction before {};
    sigaction(SIGPIPE, nullptr, &before);
    const auto endpoint = Start();
    struct sigaction after {};
    sigaction(SIGPIPE, nullptr, &after);
    EXPECT_EQ(before.sa_handler, after.sa_handler);
    {
        const Client gone(endpoint->GetAddress());
        gone.Send(kGet);
    }
    loop.WaitAndRun();
    EXPECT_EQ(Body(Ask(*endpoint)), "zapytanie 2\n");
}

TEST_F(HttpEndpointTest, ManyClientsAreServedOneAfterTheOther) {
    const auto endpoint = Start();
    constexpr int kClients = 40;
    std::atomic<int> served = 0;
    int done = 0;
    std::vector<std::thread> clients;
    for (int i = 0; i < kClients; ++i) {
        clients.emplace_back([&] {
            const Client client(endpoint->GetAddress());
            client.Send(kGet);
            if (Body(client.Receive()).starts_with("zapytanie ")) ++served;
            loop.Post([&] { ++done; });
        });
    }
    while (done < kClients) loop.WaitAndRun();
    for (std::thread& client : clients) client.join();
    EXPECT_EQ(served, kClients);
}

}  // namespace
}  // namespace kalvex::platform
