#include "vantrel/network/DialFault.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/Translator.h"
#include "text/CodePage.h"
#include "vantrel/Codes.h"

namespace kalvex::vantrel {
namespace {

const std::string kFailed = "failed to connect to all addresses; last error: UNKNOWN: ";

Endpoint EndpointOf(const ServerAddresses& addresses) {
    Endpoint endpoint;
    FindEndpoint("Gaz", addresses, "/run/sorvane", endpoint);
    return endpoint;
}

std::string Words(const platform::Notice& notice) {
    return platform::InWords(notice, platform::Translator());
}

std::string Local(const std::string& detail, StreamEnd end = StreamEnd::Unreachable) {
    return Words(DialFault("Gaz", EndpointOf({}), end, detail));
}

std::string Tcp(const std::string& detail, StreamEnd end = StreamEnd::Unreachable) {
    return Words(
        DialFault("Gaz", EndpointOf({{"Gaz", {.address = "127.0.0.1:4300"}}}), end, detail));
}

std::string NoAnswer(const std::string& place) {
    return "Serwer Gaz jest nieosiągalny: brak odpowiedzi z " + place +
           " (czy serwer nie jest zawieszony, a komputer i sieć działają?)";
}

TEST(DialFaultTest, LocalSocketThatIsNotThereIsNamed) {
    EXPECT_EQ(Local(kFailed + "unix:/run/sorvane/Gaz: No such file or directory"),
              "Serwer Gaz jest nieosiągalny: nie ma gniazda /run/sorvane/Gaz (czy serwer jest "
              "uruchomiony?)");
    EXPECT_EQ(Local(kFailed + "unix:/run/sorvane/Gaz: Connection refused"),
              "Serwer Gaz jest nieosiągalny: nikt nie obsługuje gniazda /run/sorvane/Gaz (czy "
              "serwer jest uruchomiony?)");
    EXPECT_EQ(Local(kFailed + "unix:/run/sorvane/Gaz: Permission denied"),
              "Serwer Gaz jest nieosiągalny: brak uprawnień do gniazda /run/sorvane/Gaz (czy to "
              "konto należy do jego grupy?)");
}

TEST(DialFaultTest, AddressIsNamedAsItWasConfigured) {
    EXPECT_EQ(
        Tcp(kFailed + "ipv4:127.0.0.1:4300: Failed to connect to remote host: Connection refused"),
        "Serwer Gaz jest nieosiągalny: nikt nie słucha pod adresem 127.0.0.1:4300 (czy "
        "serwer jest uruchomiony?)");
    for (const char* system : {"No route to host", "Network is unreachable"}) {
        EXPECT_EQ(Tcp(kFailed + "Failed to connect to remote host: " + system),
                  "Serwer Gaz jest nieosiągalny: nie ma drogi do adresu 127.0.0.1:4300 (czy sieć "
                  "działa?)");
    }
}

TEST(DialFaultTest, NameOfTheHostThatIsUnknownIsNotTheServersFault) {
    for (const char* resolver : {"Name or service not known", "No address associated"}) {
        EXPECT_EQ(Tcp(std::string("DNS resolution failed for x:1: UNKNOWN: ") + resolver),
                  "Serwer Gaz jest nieosiągalny: nieznana nazwa komputera w adresie "
                  "127.0.0.1:4300");
    }
    EXPECT_EQ(Tcp("resolver: Name or service not known"),
              "Serwer Gaz jest nieosiągalny: nieznana nazwa komputera w adresie 127.0.0.1:4300");
    EXPECT_EQ(Tcp("DNS resolution failed for x:1: UNKNOWN: Temporary failure in name resolution"),
              "Serwer Gaz jest nieosiągalny: nie udało się ustalić adresu komputera z "
              "127.0.0.1:4300 (czy DNS działa?)");
}

TEST(DialFaultTest, EncryptionThatFailsTellsWhereToLook) {
    EXPECT_EQ(Tcp(kFailed + "ipv4:127.0.0.1:4300: Ssl handshake failed: SSL_ERROR_SSL: "
                            "error:0A000086:SSL routines::certificate verify failed"),
              "Serwer Gaz jest nieosiągalny: certyfikat spod adresu 127.0.0.1:4300 nie jest "
              "zaufany (sprawdź klucz Urząd w profilu komputera)");
    EXPECT_EQ(Tcp(kFailed + "Peer name 127.0.0.1 is not in peer certificate"),
              "Serwer Gaz jest nieosiągalny: certyfikat spod adresu 127.0.0.1:4300 jest dla innej "
              "nazwy (sprawdź klucz Nazwa certyfikatu w profilu komputera)");
    EXPECT_EQ(Tcp(kFailed + "Ssl handshake failed: SSL_ERROR_SSL: wrong version number"),
              "Serwer Gaz jest nieosiągalny: 127.0.0.1:4300 nie szyfruje połączeń tak jak ten "
              "komputer (sprawdź sekcję Szyfrowanie w profilu komputera)");
    for (const char* detail : {"Socket closed", "recvmsg:Connection reset by peer"}) {
        EXPECT_EQ(Tcp(kFailed + detail),
                  "Serwer Gaz jest nieosiągalny: 127.0.0.1:4300 przerywa połączenie (czy serwer "
                  "szyfruje połączenia i zna certyfikat tego komputera?)");
    }
}

TEST(DialFaultTest, NoWordOfTheLibraryIsPassedOn) {
    for (const char* detail : {"", "connection attempt timed out", "what nobody has foreseen"}) {
        EXPECT_EQ(Local(detail), NoAnswer("/run/sorvane/Gaz"));
        EXPECT_EQ(Tcp(detail), NoAnswer("127.0.0.1:4300"));
    }
}

TEST(DialFaultTest, ServerThatTurnsAwayIsNamedWithItsWay) {
    EXPECT_EQ(Local("", StreamEnd::Refused),
              "Serwer Gaz nie przyjmuje połączenia przez /run/sorvane/Gaz (powód podaje jego log)");
    EXPECT_EQ(Tcp("", StreamEnd::Refused),
              "Serwer Gaz nie przyjmuje połączenia przez 127.0.0.1:4300 (powód podaje jego log)");
    EXPECT_EQ(Local("", StreamEnd::NotOffered),
              "Serwer Gaz jest nieosiągalny: pod /run/sorvane/Gaz działa inny program");
    EXPECT_EQ(Tcp("", StreamEnd::NotOffered),
              "Serwer Gaz jest nieosiągalny: pod 127.0.0.1:4300 działa inny program");
}

TEST(DialFaultTest, LocalConnectionThatIsCutOffIsNoSilence) {
    for (const char* detail : {"Socket closed", "recvmsg:Connection reset by peer"}) {
        EXPECT_EQ(Local(kFailed + detail),
                  "Serwer Gaz jest nieosiągalny: /run/sorvane/Gaz przerywa połączenie (czy serwer "
                  "szyfruje połączenia i zna certyfikat tego komputera?)");
    }
}

TEST(DialFaultTest, EndOfAnotherKindIsNotReadAsAFailedAttempt) {
    EXPECT_EQ(Local("Permission denied", StreamEnd::Lost), NoAnswer("/run/sorvane/Gaz"));
    EXPECT_EQ(Tcp("Socket closed", StreamEnd::Lost), NoAnswer("127.0.0.1:4300"));
}

// A socket has no address, an address has no socket.
TEST(DialFaultTest, WordsOfOneWayMeanNothingOnTheOther) {
    for (const char* detail : {"No such file or directory", "Permission denied"}) {
        EXPECT_EQ(Tcp(detail), NoAnswer("127.0.0.1:4300"));
    }
    for (const char* detail :
         {"Name or service not known", "Temporary failure in name resolution", "No route to host",
          "Network is unreachable", "DNS resolution failed", "certificate verify failed",
          "is not in peer certificate", "Ssl handshake failed"}) {
        EXPECT_EQ(Local(detail), NoAnswer("/run/sorvane/Gaz"));
    }
}

// A path or a host may look like the words that are looked for.
TEST(DialFaultTest, WordsOfTheSystemStandAtTheEnd) {
    EXPECT_EQ(Local("unix:/run/Permission denied: No such file or directory"),
              "Serwer Gaz jest nieosiągalny: nie ma gniazda /run/sorvane/Gaz (czy serwer jest "
              "uruchomiony?)");
    EXPECT_EQ(Local("unix:/run/No such file or directory: Permission denied"),
              "Serwer Gaz jest nieosiągalny: brak uprawnień do gniazda /run/sorvane/Gaz (czy to "
              "konto należy do jego grupy?)");
    EXPECT_EQ(Tcp("Name or service not known: Temporary failure in name resolution"),
              "Serwer Gaz jest nieosiągalny: nie udało się ustalić adresu komputera z "
              "127.0.0.1:4300 (czy DNS działa?)");
}

TEST(DialFaultTest, HostThatIsCalledAsASocketIsAnAddress) {
    const Endpoint endpoint = EndpointOf({{"Gaz", {"unix:4300", std::nullopt, "", true}}});
    EXPECT_EQ(Words(DialFault("Gaz", endpoint, StreamEnd::Unreachable, "Connection refused")),
              "Serwer Gaz jest nieosiągalny: nikt nie słucha pod adresem unix:4300 (czy serwer "
              "jest uruchomiony?)");
}

TEST(DialFaultTest, SourceWithoutAWayTellsWhatStandsInTheProfile) {
    const auto noWay = [](const std::string& source, const ServerAddresses& addresses) {
        Endpoint endpoint;
        const std::uint32_t reason = FindEndpoint(source, addresses, "/run/sorvane", endpoint);
        return Words(NoWayFault(source, endpoint, reason));
    };
    EXPECT_EQ(noWay("a/b", {}),
              "Serwer a/b jest nieosiągalny: niepoprawna nazwa albo za długa ścieżka gniazda "
              "/run/sorvane/a/b");
    EXPECT_EQ(noWay("Gaz", {{"Gaz", {.address = "10.0.0.7"}}}),
              "Serwer Gaz jest nieosiągalny: 10.0.0.7 nie jest adresem host:port (sekcja Serwery w "
              "profilu komputera)");
    EXPECT_EQ(noWay("Gaz", {{"Gaz", {.address = "10.0.0.7:4300"}}}),
              "Serwer Gaz jest nieosiągalny: połączenie z 10.0.0.7:4300 bez szyfrowania jest "
              "niedozwolone (sekcja Szyfrowanie w profilu komputera)");
}

TEST(DialFaultTest, AnswerAfterAFaultNamesTheWay) {
    EXPECT_EQ(Words(DialSuccess("Gaz", EndpointOf({}))), "Serwer Gaz odpowiada (/run/sorvane/Gaz)");
}

}  // namespace
}  // namespace kalvex::vantrel
