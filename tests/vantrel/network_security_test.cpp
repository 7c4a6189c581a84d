// Who is let in where: addresses, certificates, local sockets.
#include <gmock/gmock.h>
#include <grp.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "support/localhost.h"
#include "support/network_world.h"
#include "text/CodePage.h"
#include "vantrel/Codes.h"
#include "vantrel/certificates.h"

namespace kalvex::vantrel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

// ---- settings

TEST(NetworkSecuritySettingsTest, ServerListensAsItsConfigurationSays) {
    const NetworkServerSettings local = SettingsFor("srv", {.group = "a"});
    EXPECT_EQ(local.name, "srv");
    EXPECT_EQ(local.source, "srv");
    EXPECT_EQ(local.group, "a");
    EXPECT_EQ(local.address, "");
    EXPECT_FALSE(local.tls.has_value());
    EXPECT_FALSE(local.plainTextAllowed);
    const NetworkServerSettings tcp = SettingsFor("srv", {.localSocket = false,
                                                          .address = "a:1",
                                                          .certificate = "c",
                                                          .certificateKey = "k",
                                                          .authority = "u",
                                                          .plainTextAllowed = true});
    EXPECT_EQ(tcp.name, "srv");
    EXPECT_EQ(tcp.source, "");
    EXPECT_EQ(tcp.address, "a:1");
    ASSERT_TRUE(tcp.tls.has_value());
    EXPECT_EQ(tcp.tls->certificate, "c");
    EXPECT_EQ(tcp.tls->key, "k");
    EXPECT_EQ(tcp.tls->authority, "u");
    EXPECT_TRUE(tcp.plainTextAllowed);
}

// ---- addresses

TEST(NetworkSecurityAddressTest, RuntimeFolderIsTakenFromTheEnvironment) {
    ::unsetenv("SORVANE_RUNTIME_DIR");
    ::unsetenv("XDG_RUNTIME_DIR");
    EXPECT_EQ(RuntimeFolder(), "/run/sorvane");
    ::setenv("XDG_RUNTIME_DIR", "/run/user/7", 1);
    EXPECT_EQ(RuntimeFolder(), "/run/user/7/sorvane");
    ::setenv("SORVANE_RUNTIME_DIR", "/tmp/s", 1);
    EXPECT_EQ(RuntimeFolder(), "/tmp/s");
    ::setenv("SORVANE_RUNTIME_DIR", "", 1);
    EXPECT_EQ(RuntimeFolder(), "/run/user/7/sorvane");
}

TEST(NetworkSecurityAddressTest, LocalSocketBearsTheNameOfTheSource) {
    EXPECT_EQ(LocalSocketPath("/run/s", text::FromUtf8("Kotłownia 1")), "/run/s/Kotłownia 1");
    for (const char* name : {"", ".", "..", ".hidden", "a/b"}) {
        EXPECT_EQ(LocalSocketPath("/run/s", name), "") << name;
    }
    EXPECT_EQ(LocalSocketPath("/run/s", std::string_view("a\0b", 3)), "");
    EXPECT_EQ(LocalSocketPath("/run/s", std::string(100, 'x')).size(), 107u);
    EXPECT_EQ(LocalSocketPath("/run/s", std::string(101, 'x')), "");
    EXPECT_EQ(LocalSocketTarget("/run/a b%ł"), "unix:/run/a%20b%25%C5%82");
}

// ---- servers and clients on them

class NetworkSecurityTest : public testing::Test {
  protected:
    // What becomes of a client with these settings of the source "far".
    std::uint32_t ConnectReason(const ServerAddress& address) {
        NetworkClientSettings settings = world.ClientSettings();
        settings.addresses["far"] = address;
        NetworkClient client(settings, world.loop, world.log, world.translator);
        std::uint32_t reason = 0;
        const auto transport = client.Connect("far", events, reason);
        EXPECT_EQ(transport == nullptr, reason != 0);
        return reason;
    }

    // The first thing that a client hears that tries to reach the server by TCP.
    std::string FirstEvent(const std::string& host, std::optional<TlsFiles> tls) {
        NetworkClientSettings settings = world.ClientSettings();
        settings.addresses["far"] = {.address = host + ":" + std::to_string(server->TcpPort()),
                                     .tls = std::move(tls)};
        NetworkClient client(settings, world.loop, world.log, world.translator);
        support::HeardEvents heard;
        std::uint32_t reason = 0;
        const auto transport = client.Connect("far", heard, reason);
        transport->Open();
        world.RunUntil([&] { return !heard.heard.empty(); });
        if (heard.heard.front() == "opened") {
            world.RunUntil([&] { return acceptor.link != nullptr; });
            EXPECT_EQ(acceptor.link->PeerAddress(), "");
            acceptor.link->Close(ReasonServerEnded);
            world.RunUntil(heard, "closed 4107");
        }
        return heard.heard.front();
    }

    // Whether a client finds the server at its local socket.
    bool Reaches() {
        NetworkClient client(world.ClientSettings(), world.loop, world.log, world.translator);
        support::HeardEvents heard;
        std::uint32_t reason = 0;
        const auto transport = client.Connect("srv", heard, reason);
        transport->Open();
        world.RunUntil([&] { return !heard.heard.empty(); });
        return heard.heard.front() == "opened";
    }

    // What the last of them was to be reached by.
    std::string Place(const std::string& host = "127.0.0.1") const {
        return host + ":" + std::to_string(server->TcpPort());
    }

    mode_t Mode(const std::string& path) const {
        struct stat status {};
        EXPECT_EQ(::stat(path.c_str(), &status), 0);
        return status.st_mode;
    }

    support::NetworkWorld world;
    support::HandServer acceptor;
    support::HeardEvents events;
    NetworkServerSettings settings = world.ServerSettings();
    std::unique_ptr<NetworkServer> server;
};

TEST_F(NetworkSecurityTest, PlainTextBeyondThisMachineMustBeAllowedInSoManyWords) {
    EXPECT_EQ(ConnectReason({.address = "192.0.2.1:4300"}), ReasonPlainText);
    EXPECT_EQ(ConnectReason({.address = "plant.example:4300"}), ReasonPlainText);
    EXPECT_EQ(ConnectReason({.address = "192.0.2.1:4300", .plainTextAllowed = true}), 0u);
    EXPECT_EQ(ConnectReason({.address = "192.0.2.1:4300", .tls = TlsFiles{}}), 0u);
    EXPECT_EQ(ConnectReason({.address = "127.0.0.1:4300"}), 0u);
    EXPECT_EQ(ConnectReason({.address = "[::1]:4300"}), 0u);
    EXPECT_THAT(world.log.Take(),
                ElementsAre("1 Serwer far jest nieosiągalny: połączenie z 192.0.2.1:4300 bez "
                            "szyfrowania jest niedozwolone (sekcja Szyfrowanie w profilu "
                            "komputera)",
                            "1 Serwer far jest nieosiągalny: połączenie z plant.example:4300 bez "
                            "szyfrowania jest niedozwolone (sekcja Szyfrowanie w profilu "
                            "komputera)"));
}

TEST_F(NetworkSecurityTest, SourceWithoutAWayIsToldOnce) {
    NetworkClient client(world.ClientSettings(), world.loop, world.log, world.translator);
    std::uint32_t reason = 0;
    EXPECT_EQ(client.Connect("a/b", events, reason), nullptr);
    EXPECT_EQ(client.Connect("a/b", events, reason), nullptr);
    EXPECT_THAT(world.log.Take(),
                ElementsAre("1 Serwer a/b jest nieosiągalny: niepoprawna nazwa albo za długa "
                            "ścieżka gniazda " +
                            world.folder.Path("a/b")));
}

TEST_F(NetworkSecurityTest, SourceWithoutAWayToItIsRefusedAtOnce) {
    for (const char* address : {"nonsense", "localhost:0", "localhost:x"}) {
        EXPECT_EQ(ConnectReason({.address = address}), ReasonUnknownAddress);
    }
    NetworkClient client(world.ClientSettings(), world.loop, world.log, world.translator);
    std::uint32_t reason = 0;
    EXPECT_EQ(client.Connect("a/b", events, reason), nullptr);
    EXPECT_EQ(reason, ReasonUnknownAddress);
}

TEST_F(NetworkSecurityTest, ServerListensBeyondThisMachineOnlyWhenToldInSoManyWords) {
    settings.address = "0.0.0.0:0";
    EXPECT_EQ(world.Listen(settings, acceptor), nullptr);
    EXPECT_EQ(world.error, "0.0.0.0:0: połączenie nieszyfrowane jest niedozwolone");
    settings.plainTextAllowed = true;
    server = world.Listen(settings, acceptor);
    ASSERT_NE(server, nullptr) << world.error;
    EXPECT_GT(server->TcpPort(), 0);
}

TEST_F(NetworkSecurityTest, ServerWithoutAnAddressHasNoPort) {
    server = world.Listen(settings, acceptor);
    EXPECT_EQ(server->TcpPort(), 0);
}

TEST_F(NetworkSecurityTest, LoopbackMayBePlainAndServesBesideTheSocket) {
    settings.address = "127.0.0.1:0";
    server = world.Listen(settings, acceptor);
    ASSERT_NE(server, nullptr) << world.error;
    EXPECT_EQ(FirstEvent("127.0.0.1", {}), "opened");
}

TEST_F(NetworkSecurityTest, LoopbackMayBePlainByItsName) {
    if (!support::KnowsLocalhost()) GTEST_SKIP() << support::kNoLocalhost;
    settings.address = "127.0.0.1:0";
    server = world.Listen(settings, acceptor);
    ASSERT_NE(server, nullptr) << world.error;
    EXPECT_EQ(FirstEvent("localhost", {}), "opened");
}

TEST_F(NetworkSecurityTest, ReasonsAreTranslated) {
    world.translator.marks = true;
    settings.address = "nonsense";
    EXPECT_EQ(world.Listen(settings, acceptor), nullptr);
    EXPECT_EQ(world.error, "<Niepoprawny adres nonsense>");
    settings.address = "0.0.0.0:0";
    EXPECT_EQ(world.Listen(settings, acceptor), nullptr);
    EXPECT_EQ(world.error, "<0.0.0.0:0: <połączenie nieszyfrowane jest niedozwolone>>");
}

TEST_F(NetworkSecurityTest, AddressThatIsNoneOrTakenIsAnError) {
    settings.address = "nonsense";
    EXPECT_EQ(world.Listen(settings, acceptor), nullptr);
    EXPECT_EQ(world.error, "Niepoprawny adres nonsense");
    settings.address = "127.0.0.1:0";
    server = world.Listen(settings, acceptor);
    settings.source.clear();
    settings.address = "127.0.0.1:" + std::to_string(server->TcpPort());
    EXPECT_EQ(world.Listen(settings, acceptor), nullptr);
    EXPECT_EQ(world.error,
              "Nie można nasłuchiwać " + settings.address + " (Address already in use)");
}

// ---- TLS

class NetworkSecurityTlsTest : public NetworkSecurityTest {
  protected:
    NetworkSecurityTlsTest() {
        certificates.MakeAuthority("good");
        certificates.MakeAuthority("other");
        certificates.Make("server", "good");
        settings.address = "127.0.0.1:0";
    }

    void Listen(const TlsFiles& files) {
        settings.tls = files;
        server = world.Listen(settings, acceptor);
        ASSERT_NE(server, nullptr) << world.error;
    }

    Certificates certificates;
};

TEST_F(NetworkSecurityTlsTest, ClientThatTrustsTheAuthorityComesIn) {
    Listen(certificates.Files("", "server"));
    EXPECT_EQ(FirstEvent("127.0.0.1", certificates.Files("good")), "opened");
    EXPECT_THAT(world.log.Take(), IsEmpty());
}

TEST_F(NetworkSecurityTlsTest, CertificateMayBearAName) {
    if (!support::KnowsLocalhost()) GTEST_SKIP() << support::kNoLocalhost;
    Listen(certificates.Files("", "server"));
    EXPECT_EQ(FirstEvent("localhost", certificates.Files("good")), "opened");
    EXPECT_THAT(world.log.Take(), IsEmpty());
}

TEST_F(NetworkSecurityTlsTest, ServerThatIsNotTrustedCannotBeReached) {
    Listen(certificates.Files("", "server"));
    EXPECT_EQ(FirstEvent("127.0.0.1", certificates.Files("other")), "fault 2 4110");
    EXPECT_THAT(world.log.Take(),
                ElementsAre("1 Serwer far jest nieosiągalny: certyfikat spod adresu " + Place() +
                                " nie jest zaufany (sprawdź klucz Urząd w profilu komputera)",
                            StartsWith("3 Brak połączenia z far (")));
}

TEST_F(NetworkSecurityTlsTest, ServerThatDoesNotEncryptCannotBeReachedEncrypted) {
    server = world.Listen(settings, acceptor);
    EXPECT_EQ(FirstEvent("127.0.0.1", certificates.Files("good")), "fault 2 4110");
    EXPECT_EQ(world.log.Take().front(),
              "1 Serwer far jest nieosiągalny: " + Place() +
                  " nie szyfruje połączeń tak jak ten komputer (sprawdź sekcję Szyfrowanie w "
                  "profilu komputera)");
}

TEST_F(NetworkSecurityTlsTest, CertificateMustBearTheNameOfTheHost) {
    settings.address = "127.0.0.2:0";
    Listen(certificates.Files("", "server"));
    EXPECT_EQ(FirstEvent("127.0.0.2", certificates.Files("good")), "fault 2 4110");
    EXPECT_EQ(world.log.Take().front(),
              "1 Serwer far jest nieosiągalny: certyfikat spod adresu " + Place("127.0.0.2") +
                  " jest dla innej nazwy (sprawdź klucz Nazwa certyfikatu w profilu komputera)");
}

TEST_F(NetworkSecurityTlsTest, NameOfTheCertificateCanBeGiven) {
    settings.address = "127.0.0.2:0";
    Listen(certificates.Files("", "server"));
    NetworkClientSettings clientSettings = world.ClientSettings();
    clientSettings.addresses["far"] = {.address = "127.0.0.2:" + std::to_string(server->TcpPort()),
                                       .tls = certificates.Files("good"),
                                       .certificateName = "localhost"};
    NetworkClient client(clientSettings, world.loop, world.log, world.translator);
    std::uint32_t reason = 0;
    const auto transport = client.Connect("far", events, reason);
    transport->Open();
    world.RunUntil(events, "opened");
    server.reset();
}

TEST_F(NetworkSecurityTlsTest, PlainClientDoesNotComeIn) {
    Listen(certificates.Files("", "server"));
    EXPECT_EQ(FirstEvent("127.0.0.1", {}), "fault 2 4110");
    EXPECT_EQ(acceptor.clients, 0);
    EXPECT_EQ(world.log.Take().front(),
              "1 Serwer far jest nieosiągalny: " + Place() +
                  " przerywa połączenie (czy serwer szyfruje połączenia i zna certyfikat tego "
                  "komputera?)");
}

TEST_F(NetworkSecurityTlsTest, MutualTlsRefusesAClientWithoutItsCertificate) {
    certificates.Make("client", "good");
    certificates.Make("stranger", "other");
    Listen(certificates.Files("good", "server"));
    EXPECT_EQ(FirstEvent("127.0.0.1", certificates.Files("good", "client")), "opened");
    EXPECT_EQ(FirstEvent("127.0.0.1", certificates.Files("good")), "fault 2 4110");
    EXPECT_EQ(FirstEvent("127.0.0.1", certificates.Files("good", "stranger")), "fault 2 4110");
    EXPECT_EQ(acceptor.clients, 1);
}

// A certificate that is renewed while the server runs.
TEST_F(NetworkSecurityTlsTest, RenewedCertificateIsShownToWhoComesNext) {
    Listen(certificates.Files("", "server"));
    EXPECT_EQ(FirstEvent("127.0.0.1", certificates.Files("good")), "opened");
    certificates.Make("server", "other");
    server->Check();
    EXPECT_THAT(world.log.Take(),
                ElementsAre("1 Certyfikat odczytany ponownie: " + certificates.File("server")));
    EXPECT_EQ(FirstEvent("127.0.0.1", certificates.Files("other")), "opened");
    EXPECT_EQ(FirstEvent("127.0.0.1", certificates.Files("good")), "fault 2 4110");
    world.log.Take();
    server->Check();
    EXPECT_THAT(world.log.Take(), IsEmpty());
}

TEST_F(NetworkSecurityTlsTest, WhoIsConnectedStaysSoWhenTheCertificateIsRenewed) {
    Listen(certificates.Files("", "server"));
    NetworkClientSettings clientSettings = world.ClientSettings();
    clientSettings.addresses["far"] = {.address = "127.0.0.1:" + std::to_string(server->TcpPort()),
                                       .tls = certificates.Files("good")};
    NetworkClient client(clientSettings, world.loop, world.log, world.translator);
    std::uint32_t reason = 0;
    const auto transport = client.Connect("far", events, reason);
    transport->Open();
    world.RunUntil(events, "opened");
    certificates.Make("server", "other");
    server->Check();
    EXPECT_EQ(FirstEvent("127.0.0.1", certificates.Files("other")), "opened");
    EXPECT_FALSE(events.Has("closed 4107"));
}

TEST_F(NetworkSecurityTlsTest, RenewedAuthorityDecidesWhoComesNext) {
    certificates.Make("client", "good");
    certificates.Make("stranger", "other");
    Listen(certificates.Files("good", "server"));
    std::filesystem::copy_file(certificates.File("other"), certificates.File("good") + ".new");
    const TlsFiles good = certificates.Files("good", "client");
    std::filesystem::copy_file(certificates.File("good"), certificates.File("kept"));
    std::filesystem::rename(certificates.File("good") + ".new", certificates.File("good"));
    server->Check();
    TlsFiles client = certificates.Files("kept", "client");
    EXPECT_EQ(FirstEvent("127.0.0.1", client), "fault 2 4110");
    EXPECT_EQ(FirstEvent("127.0.0.1", certificates.Files("kept", "stranger")), "opened");
}

// Of two files one is always replaced first.
TEST_F(NetworkSecurityTlsTest, WhatCannotBeShownLeavesTheCertificateAsItWas) {
    certificates.Make("next", "other");
    Listen(certificates.Files("", "server"));
    const std::string unchanged = "1 Certyfikat bez zmian: " + certificates.File("server");
    const std::string reason =
        "1 Nie można nasłuchiwać 127.0.0.1:0 (niepoprawny certyfikat albo "
        "klucz)";
    std::filesystem::rename(certificates.File("next"), certificates.File("server"));
    server->Check();
    world.now += 9'999;
    server->Check();
    EXPECT_THAT(world.log.Take(), IsEmpty());
    EXPECT_EQ(FirstEvent("127.0.0.1", certificates.Files("good")), "opened");
    world.now += 1;
    server->Check();
    EXPECT_THAT(world.log.Take(), ElementsAre(unchanged, reason));
    server->Check();
    EXPECT_THAT(world.log.Take(), IsEmpty());
    std::filesystem::rename(certificates.Key("next"), certificates.Key("server"));
    server->Check();
    EXPECT_THAT(world.log.Take(),
                ElementsAre("1 Certyfikat odczytany ponownie: " + certificates.File("server")));
    EXPECT_EQ(FirstEvent("127.0.0.1", certificates.Files("other")), "opened");
}

TEST_F(NetworkSecurityTlsTest, KeyThatOthersCanReadIsNotTaken) {
    Listen(certificates.Files("", "server"));
    std::filesystem::permissions(certificates.Key("server"), std::filesystem::perms::others_read,
                                 std::filesystem::perm_options::add);
    server->Check();
    world.now += 10'000;
    server->Check();
    EXPECT_THAT(world.log.Take(),
                ElementsAre("1 Certyfikat bez zmian: " + certificates.File("server"),
                            "1 Do pliku " + certificates.Key("server") +
                                ", który ma być tajny, mają dostęp inni (prawa 604, a mają być "
                                "600)"));
    EXPECT_EQ(FirstEvent("127.0.0.1", certificates.Files("good")), "opened");
    std::filesystem::permissions(certificates.Key("server"), std::filesystem::perms::others_read,
                                 std::filesystem::perm_options::remove);
    world.log.Take();
    server->Check();
    EXPECT_THAT(world.log.Take(),
                ElementsAre("1 Certyfikat odczytany ponownie: " + certificates.File("server")));
}

TEST_F(NetworkSecurityTlsTest, FileThatCannotBeReadIsNamed) {
    settings.tls = certificates.Files("", "nobody");
    EXPECT_EQ(world.Listen(settings, acceptor), nullptr);
    EXPECT_EQ(world.error, "Brak dostępu do pliku " + certificates.File("nobody") +
                               " (No such file or directory)");
    const std::string both = certificates.File("server");
    settings.tls = TlsFiles{.certificate = both, .key = both};
    ASSERT_EQ(::chmod(both.c_str(), 0600), 0);
    EXPECT_EQ(world.Listen(settings, acceptor), nullptr);
    EXPECT_EQ(world.error, "Nie można nasłuchiwać 127.0.0.1:0 (niepoprawny certyfikat albo klucz)");
}

TEST_F(NetworkSecurityTlsTest, KeyThatOthersCanReadIsRefusedOnBothSides) {
    certificates.Make("client", "good");
    for (const std::string name : {"server", "client"})
        ASSERT_EQ(::chmod(certificates.Key(name).c_str(), 0604), 0);
    const auto told = [this](const std::string& name) {
        return "Do pliku " + certificates.Key(name) +
               ", który ma być tajny, mają dostęp inni (prawa 604, a mają być 600)";
    };
    settings.tls = certificates.Files("good", "server");
    EXPECT_EQ(world.Listen(settings, acceptor), nullptr);
    EXPECT_EQ(world.error, told("server"));
    ASSERT_EQ(::chmod(certificates.Key("server").c_str(), 0600), 0);
    Listen(certificates.Files("good", "server"));
    EXPECT_EQ(FirstEvent("127.0.0.1", certificates.Files("good", "client")), "fault 2 4110");
    EXPECT_EQ(acceptor.clients, 0);
    EXPECT_EQ(world.log.Take().front(), "1 Brak połączenia z far (" + told("client") + ")");
}

// ---- local sockets

TEST_F(NetworkSecurityTest, LocalSocketIsForItsOwnerAlone) {
    const mode_t mask = ::umask(0);
    server = world.Listen(settings, acceptor);
    EXPECT_EQ(::umask(mask), 0u);  // as it was
    EXPECT_EQ(Mode(world.folder.Path("srv")), S_IFSOCK | 0600u);
    server.reset();
    EXPECT_FALSE(world.folder.Has("srv"));
}

TEST_F(NetworkSecurityTest, LocalSocketIsOpenToTheGroupThatIsNamed) {
    settings.group = ::getgrgid(::getegid())->gr_name;
    server = world.Listen(settings, acceptor);
    ASSERT_NE(server, nullptr) << world.error;
    EXPECT_EQ(Mode(world.folder.Path("srv")), S_IFSOCK | 0660u);
    EXPECT_EQ(Mode(world.folder.Path(".srv")), S_IFDIR | 0710u);
    EXPECT_EQ(Mode(world.folder.Path(".srv/s")), S_IFSOCK | 0660u);
    EXPECT_TRUE(Reaches());
    server.reset();
    EXPECT_FALSE(world.folder.Has("srv"));
    EXPECT_FALSE(world.folder.Has(".srv"));
    settings.group = "no-such-group";
    EXPECT_EQ(world.Listen(settings, acceptor), nullptr);
    EXPECT_EQ(world.error, "Gniazdo " + world.folder.Path("srv") + " (brak grupy no-such-group)");
    EXPECT_FALSE(world.folder.Has("srv"));
}

// One of a server that died, and had another group than the next.
TEST_F(NetworkSecurityTest, LeftoverOfAGroupGives) {
    const std::string group = ::getgrgid(::getegid())->gr_name;
    for (const std::string& next : {group, std::string()}) {
        world.folder.MakeFolder(".srv");
        world.folder.Put(".srv/s", "");
        ASSERT_EQ(::symlink(".srv/s", world.folder.Path("srv").c_str()), 0);
        settings.group = next;
        server = world.Listen(settings, acceptor);
        ASSERT_NE(server, nullptr) << world.error;
        EXPECT_TRUE(Reaches()) << next;
        EXPECT_EQ(world.folder.Has(".srv"), !next.empty());
        server.reset();
    }
    ASSERT_EQ(::symlink("elsewhere", world.folder.Path("srv").c_str()), 0);
    EXPECT_EQ(world.Listen(settings, acceptor), nullptr);
    EXPECT_EQ(world.error, "Gniazdo " + world.folder.Path("srv") + " (to nie jest gniazdo)");
}

TEST_F(NetworkSecurityTest, PathThatHasNoRoomForAFolderHasItsSocketItself) {
    settings.group = ::getgrgid(::getegid())->gr_name;
    const std::size_t room = kLongestSocketPath - world.folder.Path("").size();
    settings.source = std::string(room, 'n');
    server = world.Listen(settings, acceptor);
    ASSERT_NE(server, nullptr) << world.error;
    struct stat info {};
    ASSERT_EQ(::lstat(world.folder.Path(settings.source).c_str(), &info), 0);
    EXPECT_EQ(info.st_mode, S_IFSOCK | 0660u);
}

TEST_F(NetworkSecurityTest, SecondServerDoesNotStealTheSocket) {
    server = world.Listen(settings, acceptor);
    EXPECT_EQ(world.Listen(settings, acceptor), nullptr);
    EXPECT_EQ(world.error, "Gniazdo " + world.folder.Path("srv") +
                               " (obsługuje je inny serwer: vantrel_network_test[" +
                               std::to_string(::getpid()) + "])");
    NetworkClient client(world.ClientSettings(), world.loop, world.log, world.translator);
    std::uint32_t reason = 0;
    const auto transport = client.Connect("srv", events, reason);
    transport->Open();
    world.RunUntil(events, "opened");
    server.reset();
    server = world.Listen(settings, acceptor);
    EXPECT_NE(server, nullptr) << world.error;
    server.reset();
}

TEST_F(NetworkSecurityTest, SocketOfADeadServerIsReplaced) {
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    world.folder.Path("srv").copy(address.sun_path, sizeof address.sun_path - 1);
    const int dead = ::socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_EQ(::bind(dead, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ::close(dead);
    ASSERT_TRUE(world.folder.Has("srv"));
    server = world.Listen(settings, acceptor);
    ASSERT_NE(server, nullptr) << world.error;
    NetworkClient client(world.ClientSettings(), world.loop, world.log, world.translator);
    std::uint32_t reason = 0;
    const auto transport = client.Connect("srv", events, reason);
    transport->Open();
    world.RunUntil(events, "opened");
    server.reset();
}

TEST_F(NetworkSecurityTest, FileThatIsNoSocketIsLeftAlone) {
    world.folder.Put("srv", "dane");
    EXPECT_EQ(world.Listen(settings, acceptor), nullptr);
    EXPECT_EQ(world.error, "Gniazdo " + world.folder.Path("srv") + " (to nie jest gniazdo)");
    EXPECT_EQ(world.folder.Get("srv"), "dane");
}

TEST_F(NetworkSecurityTest, NameThatIsNoFileIsAnError) {
    settings.source = "a/b";
    EXPECT_EQ(world.Listen(settings, acceptor), nullptr);
    EXPECT_EQ(world.error,
              "Niepoprawna nazwa albo za długa ścieżka gniazda " + world.folder.Path() + "/a/b");
}

TEST_F(NetworkSecurityTest, FolderOfSocketsIsMadeAndPolishNamesWork) {
    settings.source = text::FromUtf8("Kotłownia 1 %");
    settings.runtimeFolder = world.folder.Path("new/run");
    server = world.Listen(settings, acceptor);
    ASSERT_NE(server, nullptr) << world.error;
    EXPECT_TRUE(world.folder.Has("new/run/Kotłownia 1 %"));
    NetworkClientSettings clientSettings = world.ClientSettings();
    clientSettings.runtimeFolder = settings.runtimeFolder;
    NetworkClient client(clientSettings, world.loop, world.log, world.translator);
    std::uint32_t reason = 0;
    const auto transport = client.Connect(settings.source, events, reason);
    transport->Open();
    world.RunUntil(events, "opened");
    server.reset();
}

}  // namespace
}  // namespace kalvex::vantrel
