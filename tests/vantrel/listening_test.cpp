#include "vantrel/Listening.h"

#include <grp.h>
#include <gtest/gtest.h>

#include "text/CodePage.h"

namespace kalvex::vantrel {
namespace {

constexpr ListeningKeys kKeys = {"Grupa", "Adres", "Certyfikat", "Klucz", "Urząd", "Otwarty=1"};

// "key: reason", or nothing.
std::string Fault(const Listening& listening) {
    std::string key;
    const platform::Notice reason = CheckListening(listening, kKeys, key);
    return reason ? key + ": " + platform::InWords(reason, platform::Translator()) : key;
}

std::string Words(const platform::Notice& notice) {
    return notice ? platform::InWords(notice, platform::Translator()) : "";
}

TEST(ListeningTest, DefaultsAndAllAtOnceFitTogether) {
    EXPECT_EQ(Fault({}), "");
    EXPECT_EQ(Fault({.localSocket = false}), "");
    EXPECT_EQ(Fault({.group = "a", .certificate = "b", .certificateKey = "c", .authority = "d"}),
              "");
}

TEST(ListeningTest, CertificateAndKeyGoTogether) {
    EXPECT_EQ(Fault({.certificate = "a.pem"}), "Certyfikat: certyfikat i klucz podaje się razem");
    EXPECT_EQ(Fault({.certificateKey = "a.key"}), "Klucz: certyfikat i klucz podaje się razem");
}

TEST(ListeningTest, AuthorityNeedsACertificate) {
    EXPECT_EQ(Fault({.authority = "a.pem"}),
              "Urząd: certyfikaty klientów sprawdza tylko serwer, który ma własny certyfikat");
}

TEST(ListeningTest, GroupNeedsTheLocalSocket) {
    EXPECT_EQ(Fault({.localSocket = false, .group = "a"}),
              "Grupa: bez gniazda lokalnego grupa nie ma znaczenia");
}

TEST(ListeningTest, PlainTextBeyondThisMachineMustBeAllowed) {
    Listening listening{.address = "0.0.0.0:4300"};
    EXPECT_EQ(Fault(listening),
              "Adres: poza tym komputerem połączenia muszą być szyfrowane (Certyfikat, Klucz), "
              "chyba że Otwarty=1");
    listening.plainTextAllowed = true;
    EXPECT_EQ(Fault(listening), "");
    EXPECT_EQ(Fault({.address = "127.0.0.1:4300"}), "");
    EXPECT_EQ(Fault({.address = "0.0.0.0:4300", .certificate = "a.pem", .certificateKey = "a.key"}),
              "");
}

TEST(ListeningTest, AddressHasAHostAndAPort) {
    Listening listening;
    EXPECT_EQ(Words(SetListeningAddress(listening, text::FromUtf8("kotłownia:4300"))), "");
    EXPECT_EQ(listening.address, "kotłownia:4300");
    for (const char* text : {"", "4300", "a:", "a\n:1"}) {
        EXPECT_EQ(Words(SetListeningAddress(listening, text)),
                  "oczekiwano adresu w postaci komputer:port")
            << text;
    }
    EXPECT_EQ(listening.address, "kotłownia:4300");
}

TEST(ListeningTest, GroupIsOneOfTheSystem) {
    Listening listening;
    EXPECT_EQ(Words(SetListeningGroup(listening, ::getgrgid(0)->gr_name)), "");
    EXPECT_EQ(listening.group, ::getgrgid(0)->gr_name);
    EXPECT_EQ(Words(SetListeningGroup(listening, "no-such-group")),
              "w systemie nie ma grupy o tej nazwie");
}

TEST(ListeningTest, PathIsNotEmptyAndInOneLine) {
    std::string file;
    EXPECT_EQ(Words(SetConfiguredPath(file, text::FromUtf8("/etc/klucz główny.pem"))), "");
    EXPECT_EQ(file, "/etc/klucz główny.pem");
    EXPECT_EQ(Words(SetConfiguredPath(file, "")), "oczekiwano ścieżki");
    EXPECT_EQ(Words(SetConfiguredPath(file, "a\tb")), "oczekiwano ścieżki");
}

}  // namespace
}  // namespace kalvex::vantrel
