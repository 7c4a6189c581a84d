#include "vantrel/network/Listener.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <netinet/in.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <condition_variable>
#include <filesystem>

#include "support/marking_translator.h"
#include "support/scratch_folder.h"

namespace kalvex::vantrel {
namespace {

using platform::Descriptor;
using testing::ElementsAre;
using testing::IsEmpty;

// Somebody who connects, and waits where the test says so.
class Caller {
  public:
    explicit Caller(const SocketAddress& address)
        : m_address(address),
          m_socket(::socket(address.storage.ss_family, SOCK_STREAM | SOCK_CLOEXEC, 0)) {}

    bool Connects() { return ::connect(m_socket.Get(), &m_address.Get(), m_address.length) == 0; }
    // Until the other side has closed the connection.
    void AwaitEnd() {
        char byte = 0;
        while (::recv(m_socket.Get(), &byte, 1, 0) > 0) {
        }
    }
    Peer OwnName() const {
        SocketAddress name;
        name.length = sizeof name.storage;
        ::getsockname(m_socket.Get(), &name.Get(), &name.length);
        return PeerOf(name.Get(), name.length);
    }

  private:
    SocketAddress m_address;
    Descriptor m_socket;
};

class ListenerTest : public testing::Test {
  protected:
    void Open(const std::string& address, std::size_t limit = 100) {
        settings.address = address;
        settings.connectionLimit = limit;
        listener.emplace(settings);
        platform::Notice error;
        ASSERT_TRUE(listener->Open(error)) << Words(error);
    }
    void Start() {
        listener->Start([this](int descriptor, bool local) {
            const std::lock_guard lock(mutex);
            taken.emplace_back(descriptor);
            isLocal.push_back(local);
            changed.notify_all();
        });
    }
    void AwaitTaken(std::size_t count) {
        std::unique_lock lock(mutex);
        changed.wait(lock, [&] { return taken.size() >= count; });
    }
    void Serve(const std::string& address, std::size_t limit = 100) {
        Open(address, limit);
        Start();
    }

    SocketAddress Tcp() const {
        std::string error;
        SocketAddress address = FindAddresses("127.0.0.1:1", error).at(0);
        SetPort(address, listener->TcpPort());
        return address;
    }
    SocketAddress Local() const { return AddressOfPath(settings.localSocket); }

    std::string Words(const platform::Notice& notice) const {
        return platform::InWords(notice, translator);
    }
    std::vector<std::string> Check() {
        std::vector<std::string> lines;
        for (const platform::Notice& notice : listener->Check(now, remade)) {
            lines.push_back(Words(notice));
        }
        return lines;
    }
    std::vector<std::string> CheckAfter(std::int64_t milliseconds) {
        now += milliseconds;
        return Check();
    }
    // The lines of the first check that has any, so many milliseconds from each to the next.
    std::vector<std::string> AwaitLines(std::int64_t step) {
        std::vector<std::string> lines;
        while (lines.empty()) {
            lines = CheckAfter(step);
            std::this_thread::yield();
        }
        return lines;
    }
    // The socket that listens at the port.
    int ListeningDescriptor() const {
        for (int descriptor = 3; descriptor < 1024; ++descriptor) {
            SocketAddress name;
            name.length = sizeof name.storage;
            int listens = 0;
            socklen_t length = sizeof listens;
            if (::getsockname(descriptor, &name.Get(), &name.length) == 0 &&
                ::getsockopt(descriptor, SOL_SOCKET, SO_ACCEPTCONN, &listens, &length) == 0 &&
                listens != 0 && PortOf(name) == listener->TcpPort()) {
                return descriptor;
            }
        }
        return -1;
    }

    const platform::Translator translator;
    support::ScratchFolder folder;
    ListenerSettings settings;
    std::int64_t now = 1'000'000;
    bool remade = false;
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<Descriptor> taken;
    std::vector<bool> isLocal;
    std::optional<Listener> listener;
};

TEST_F(ListenerTest, ConnectionsOfBothSocketsAreHandedOver) {
    settings.localSocket = folder.Path("srv");
    Serve("127.0.0.1:0");
    Caller local(Local());
    ASSERT_TRUE(local.Connects());
    AwaitTaken(1);
    Caller tcp(Tcp());
    ASSERT_TRUE(tcp.Connects());
    AwaitTaken(2);
    EXPECT_THAT(isLocal, ElementsAre(true, false));
    EXPECT_THAT(Check(), IsEmpty());
}

TEST_F(ListenerTest, WhoComesBeforeTheStartWaits) {
    Open("127.0.0.1:0");
    Caller caller(Tcp());
    ASSERT_TRUE(caller.Connects());
    Start();
    AwaitTaken(1);
}

TEST_F(ListenerTest, AddressThatIsTakenIsTold) {
    Open("127.0.0.1:0");
    Listener other({.address = "127.0.0.1:" + std::to_string(listener->TcpPort())});
    platform::Notice error;
    EXPECT_FALSE(other.Open(error));
    EXPECT_EQ(Words(error), "Nie można nasłuchiwać 127.0.0.1:" +
                                std::to_string(listener->TcpPort()) + " (Address already in use)");
}

TEST_F(ListenerTest, WithoutDescriptorsClientsAreRefusedAndTheNextAreTaken) {
    settings.localSocket = folder.Path("srv");
    Serve("127.0.0.1:0");
    Caller first(Tcp());
    Caller second(Local());
    Caller third(Tcp());
    rlimit limit{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &limit), 0);
    const int next = Descriptor(::open("/dev/null", O_RDONLY | O_CLOEXEC)).Get();
    const rlimit lower{static_cast<rlim_t>(next), limit.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &lower), 0);
    EXPECT_TRUE(first.Connects());
    first.AwaitEnd();
    EXPECT_TRUE(second.Connects());
    second.AwaitEnd();
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &limit), 0);
    EXPECT_THAT(Check(), ElementsAre("Odmowa połączenia (localhost): brak deskryptorów plików (1)",
                                     "Odmowa połączenia (uid " + std::to_string(::getuid()) +
                                         "): brak deskryptorów plików (1)"));
    ASSERT_TRUE(third.Connects());
    AwaitTaken(1);
    EXPECT_THAT(Check(), IsEmpty());
}

TEST_F(ListenerTest, LastDescriptorsAreNotForClients) {
    rlimit limit{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &limit), 0);
    const int next = Descriptor(::open("/dev/null", O_RDONLY | O_CLOEXEC)).Get();
    const rlimit lower{static_cast<rlim_t>(next) + 5, limit.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &lower), 0);
    Serve("127.0.0.1:0");
    Caller caller(Tcp());
    ASSERT_TRUE(caller.Connects());
    caller.AwaitEnd();
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &limit), 0);
    EXPECT_THAT(Check(),
                ElementsAre("Odmowa połączenia (localhost): brak deskryptorów plików (1)"));
}

TEST_F(ListenerTest, CrowdIsTurnedAwayAndCounted) {
    settings.localSocket = folder.Path("srv");
    Serve("127.0.0.1:0", 4);
    std::vector<Caller> callers;
    for (int i = 0; i < 2; ++i) {
        callers.emplace_back(Local());
        ASSERT_TRUE(callers.back().Connects());
    }
    AwaitTaken(2);
    for (int i = 0; i < 3; ++i) {
        Caller more(Local());
        ASSERT_TRUE(more.Connects());
        more.AwaitEnd();
    }
    const std::string account = "uid " + std::to_string(::getuid());
    EXPECT_THAT(Check(),
                ElementsAre("Odmowa połączenia (" + account + "): za dużo połączeń stamtąd (3)"));
    callers.emplace_back(Tcp());
    ASSERT_TRUE(callers.back().Connects());
    AwaitTaken(3);
    Caller last(Tcp());
    ASSERT_TRUE(last.Connects());
    last.AwaitEnd();
    EXPECT_THAT(Check(), ElementsAre("Odmowa połączenia (localhost): za dużo połączeń (1)"));
    listener->OnLogin("");
    Caller known(Tcp());
    ASSERT_TRUE(known.Connects());
    AwaitTaken(4);
}

TEST_F(ListenerTest, DescriptorThatIsUsedAnewIsAnotherConnection) {
    Serve("127.0.0.1:0", 4);
    for (std::size_t i = 1; i < 10; ++i) {
        Caller caller(Tcp());
        ASSERT_TRUE(caller.Connects());
        AwaitTaken(i);
        taken.back() = Descriptor(-1);
    }
    EXPECT_THAT(Check(), IsEmpty());
}

TEST_F(ListenerTest, LocalSocketThatWasRemovedIsMadeAnew) {
    settings.localSocket = folder.Path("srv");
    Serve("127.0.0.1:0");
    EXPECT_THAT(Check(), IsEmpty());
    std::filesystem::remove(settings.localSocket);
    EXPECT_THAT(CheckAfter(9'999), IsEmpty());
    Caller unheard(Local());
    EXPECT_FALSE(unheard.Connects());
    EXPECT_FALSE(remade);
    EXPECT_THAT(AwaitLines(10'000), ElementsAre("Gniazdo " + settings.localSocket +
                                                " nie odpowiadało, jest otwarte na nowo"));
    EXPECT_TRUE(remade);
    Caller caller(Local());
    ASSERT_TRUE(caller.Connects());
    AwaitTaken(1);
}

TEST_F(ListenerTest, AddressThatHasGoneDeafIsListenedAtAnew) {
    Serve("127.0.0.1:0");
    EXPECT_THAT(Check(), IsEmpty());
    const int port = listener->TcpPort();
    ASSERT_EQ(::shutdown(ListeningDescriptor(), SHUT_RDWR), 0);
    EXPECT_THAT(AwaitLines(10'000),
                ElementsAre("Gniazdo 127.0.0.1:0 nie odpowiadało, jest otwarte na nowo"));
    EXPECT_FALSE(remade);
    EXPECT_EQ(listener->TcpPort(), port);
    Caller caller(Tcp());
    ASSERT_TRUE(caller.Connects());
    AwaitTaken(1);
}

TEST_F(ListenerTest, DialThatNobodyAnswersIsADeafSocket) {
    settings.localSocket = folder.Path("srv");
    Open("");
    EXPECT_THAT(Check(), IsEmpty());
    EXPECT_THAT(CheckAfter(10'000), ElementsAre("Gniazdo " + settings.localSocket +
                                                " nie odpowiadało, jest otwarte na nowo"));
}

TEST_F(ListenerTest, OwnDialIsNoClient) {
    settings.localSocket = folder.Path("srv");
    Serve("0.0.0.0:0");
    EXPECT_THAT(Check(), IsEmpty());
    Caller local(Local());
    Caller tcp(Tcp());
    ASSERT_TRUE(local.Connects() && tcp.Connects());
    AwaitTaken(2);
    EXPECT_THAT(CheckAfter(10'000), IsEmpty());
    EXPECT_EQ(taken.size(), 2u);
}

TEST_F(ListenerTest, PlaceThatCannotBeMadeAnewIsToldOnceAndTriedAgain) {
    settings.localSocket = folder.Path("a/srv");
    std::filesystem::create_directory(folder.Path("a"));
    Serve("");
    std::filesystem::remove_all(folder.Path("a"));
    EXPECT_THAT(Check(), ElementsAre("Nie można nasłuchiwać " + settings.localSocket +
                                     " (No such file or directory)"));
    EXPECT_THAT(CheckAfter(10'000), IsEmpty());
    std::filesystem::create_directory(folder.Path("a"));
    EXPECT_THAT(CheckAfter(10'000), ElementsAre("Gniazdo " + settings.localSocket +
                                                " nie odpowiadało, jest otwarte na nowo"));
    Caller caller(Local());
    ASSERT_TRUE(caller.Connects());
    AwaitTaken(1);
}

TEST_F(ListenerTest, ConnectionWithAFloodOfCallsTakenBackIsCut) {
    Serve("127.0.0.1:0");
    Caller calm(Tcp());
    Caller wild(Tcp());
    ASSERT_TRUE(calm.Connects() && wild.Connects());
    AwaitTaken(2);
    for (int i = 0; i < 200; ++i) listener->OnTakenBack(calm.OwnName());
    for (int i = 0; i < 201; ++i) listener->OnTakenBack(wild.OwnName());
    EXPECT_THAT(Check(), ElementsAre("Połączenie (localhost) zerwane: za dużo odwołanych wywołań "
                                     "(1)"));
    wild.AwaitEnd();
    EXPECT_THAT(CheckAfter(1000), IsEmpty());
    listener->OnTakenBack(calm.OwnName());
    EXPECT_THAT(CheckAfter(999), IsEmpty());
    for (int i = 0; i < 200; ++i) listener->OnTakenBack(calm.OwnName());
    EXPECT_THAT(Check(), ElementsAre("Połączenie (localhost) zerwane: za dużo odwołanych wywołań "
                                     "(1)"));
    calm.AwaitEnd();
}

TEST_F(ListenerTest, EncryptedConnectionThatEndsWithoutACallIsTold) {
    settings.encrypted = true;
    settings.localSocket = folder.Path("srv");
    Serve("127.0.0.1:0");
    Caller silent(Tcp());
    ASSERT_TRUE(silent.Connects());
    Caller speaks(Tcp());
    ASSERT_TRUE(speaks.Connects());
    Caller local(Local());
    ASSERT_TRUE(local.Connects());
    AwaitTaken(3);
    listener->OnCall(speaks.OwnName());
    for (Descriptor& descriptor : taken) descriptor = Descriptor(-1);
    EXPECT_THAT(AwaitLines(0),
                ElementsAre("Połączenie szyfrowane (localhost) skończyło się przed rozmową (1)"));
}

TEST_F(ListenerTest, PeersHaveTheSameNamesByTheLibraryAndBySockets) {
    Open("[::]:0");
    Start();
    Caller caller(Tcp());
    ASSERT_TRUE(caller.Connects());
    const std::string place = caller.OwnName().place;
    const std::string port = place.substr(place.find(' ') + 1);
    EXPECT_EQ(PeerOf("ipv4:127.0.0.1:" + port).place, place);
    EXPECT_EQ(PeerOf("ipv6:%5B::ffff:127.0.0.1%5D:" + port).place, place);
    EXPECT_EQ(PeerOf("ipv4:127.0.0.1:" + port).host, "");
    EXPECT_EQ(PeerOf("ipv6:%5Bfe80::1%25eth0%5D:7").host, "fe80::1%eth0");
    EXPECT_EQ(PeerOf("ipv6:%5B::ffff:10.1.2.3%5D:7").host, "10.1.2.3");
    EXPECT_EQ(PeerOf("unix:").place, "");
}

}  // namespace
}  // namespace kalvex::vantrel
