#include "app/ConsoleConfiguration.h"

#include <gmock/gmock.h>
#include <grp.h>
#include <gtest/gtest.h>

#include "platform/IniProfile.h"
#include "support/marking_translator.h"
#include "support/scratch_folder.h"
#include "text/CodePage.h"

namespace kalvex::app {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ConsoleConfigurationTest : public testing::Test {
  protected:
    // The faults, the path of the profile as "FILE", with these lines below the heading of the
    // section.
    std::vector<std::string> Read(const std::string& utf8) {
        m_folder.Put("Kalvex.ini", text::FromUtf8("[Konsola]\r\n" + utf8));
        m_console = {};
        const platform::IniProfile profile(m_folder.Path("Kalvex.ini"));
        const std::string path = m_folder.Path("Kalvex.ini");
        std::vector<std::string> faults = ReadConsole(profile, path, m_translator, m_console);
        for (std::string& fault : faults) {
            fault = text::ToUtf8(fault);
            fault.replace(fault.find(path), path.size(), "FILE");
        }
        return faults;
    }

    support::ScratchFolder m_folder;
    support::MarkingTranslator m_translator{false};
    ConsoleConfiguration m_console;
};

TEST_F(ConsoleConfigurationTest, EmptyProfileGivesTheDefaults) {
    for (const char* lines : {"", "Gniazdo lokalne=\r\nAdres=\r\nKlienci=\r\n"}) {
        EXPECT_THAT(Read(lines), IsEmpty());
        EXPECT_TRUE(m_console.listening.localSocket);
        EXPECT_EQ(m_console.listening.group, "");
        EXPECT_EQ(m_console.listening.address, "");
        EXPECT_EQ(m_console.listening.certificate, "");
        EXPECT_EQ(m_console.listening.certificateKey, "");
        EXPECT_EQ(m_console.listening.authority, "");
        EXPECT_FALSE(m_console.listening.plainTextAllowed);
        EXPECT_EQ(m_console.clients, 100);
    }
}

TEST_F(ConsoleConfigurationTest, EveryKeyIsRead) {
    const std::string group = ::getgrgid(0)->gr_name;
    EXPECT_THAT(Read("Gniazdo lokalne=1\r\nGrupa=" + group +
                     "\r\nAdres=0.0.0.0:4310\r\nCertyfikat=/etc/główny.pem\r\n"
                     "Klucz=/etc/główny.key\r\nUrząd=/etc/urząd.pem\r\n"
                     "Otwarty tekst=1\r\nKlienci=10000\r\n"),
                IsEmpty());
    EXPECT_TRUE(m_console.listening.localSocket);
    EXPECT_EQ(m_console.listening.group, group);
    EXPECT_EQ(m_console.listening.address, "0.0.0.0:4310");
    EXPECT_EQ(m_console.listening.certificate, "/etc/główny.pem");
    EXPECT_EQ(m_console.listening.certificateKey, "/etc/główny.key");
    EXPECT_EQ(m_console.listening.authority, "/etc/urząd.pem");
    EXPECT_TRUE(m_console.listening.plainTextAllowed);
    EXPECT_EQ(m_console.clients, 10000);
    EXPECT_THAT(Read("gniazdo lokalne=0\r\nOTWARTY TEKST=0\r\nKlienci=1\r\n"), IsEmpty());
    EXPECT_FALSE(m_console.listening.localSocket);
    EXPECT_FALSE(m_console.listening.plainTextAllowed);
    EXPECT_EQ(m_console.clients, 1);
}

TEST_F(ConsoleConfigurationTest, EachFaultIsToldWithFileLineAndKey) {
    EXPECT_THAT(
        Read("Gniazdo lokalne=tak\r\nGrupa=no-such-group\r\nAdres=4310\r\nCertyfikat=a\tb\r\n"
             "Klucz=a\tb\r\nUrząd=a\tb\r\nOtwarty tekst=2\r\nKlienci=0\r\n"),
        ElementsAre(
            "Plik FILE, wiersz 2, [Konsola] Gniazdo lokalne: oczekiwano 0 albo 1",
            "Plik FILE, wiersz 3, [Konsola] Grupa: w systemie nie ma grupy o tej nazwie",
            "Plik FILE, wiersz 4, [Konsola] Adres: oczekiwano adresu w postaci komputer:port",
            "Plik FILE, wiersz 5, [Konsola] Certyfikat: oczekiwano ścieżki",
            "Plik FILE, wiersz 6, [Konsola] Klucz: oczekiwano ścieżki",
            "Plik FILE, wiersz 7, [Konsola] Urząd: oczekiwano ścieżki",
            "Plik FILE, wiersz 8, [Konsola] Otwarty tekst: oczekiwano 0 albo 1",
            "Plik FILE, wiersz 9, [Konsola] Klienci: oczekiwano liczby całkowitej od 1 do 10000"));
    for (const char* clients : {"10001", "-1", "5x", "99999999999"}) {
        EXPECT_THAT(Read(std::string("Klienci=") + clients + "\r\n"),
                    ElementsAre("Plik FILE, wiersz 2, [Konsola] Klienci: oczekiwano liczby "
                                "całkowitej od 1 do 10000"))
            << clients;
    }
}

TEST_F(ConsoleConfigurationTest, WhatDoesNotFitTogetherIsToldWithItsKey) {
    EXPECT_THAT(
        Read("Adres=0.0.0.0:4310\r\n"),
        ElementsAre(
            "Plik FILE, wiersz 2, [Konsola] Adres: poza tym komputerem połączenia muszą być "
            "szyfrowane (Certyfikat, Klucz), chyba że Otwarty tekst=1"));
    EXPECT_THAT(
        Read("Certyfikat=a.pem\r\n"),
        ElementsAre(
            "Plik FILE, wiersz 2, [Konsola] Certyfikat: certyfikat i klucz podaje się razem"));
    EXPECT_THAT(
        Read("Klucz=a.key\r\n"),
        ElementsAre("Plik FILE, wiersz 2, [Konsola] Klucz: certyfikat i klucz podaje się razem"));
    EXPECT_THAT(
        Read("Urząd=a.pem\r\n"),
        ElementsAre("Plik FILE, wiersz 2, [Konsola] Urząd: certyfikaty klientów sprawdza tylko "
                    "serwer, który ma własny certyfikat"));
    EXPECT_THAT(
        Read(std::string("Gniazdo lokalne=0\r\nGrupa=") + ::getgrgid(0)->gr_name + "\r\n"),
        ElementsAre(
            "Plik FILE, wiersz 3, [Konsola] Grupa: bez gniazda lokalnego grupa nie ma znaczenia"));
}

TEST_F(ConsoleConfigurationTest, ValueThatIsWrongIsNotToldAsMissing) {
    EXPECT_THAT(Read("Certyfikat=a\tb\r\nKlucz=a.key\r\n"),
                ElementsAre("Plik FILE, wiersz 2, [Konsola] Certyfikat: oczekiwano ścieżki"));
}

TEST_F(ConsoleConfigurationTest, FaultsAreToldInTheLanguageOfTheModule) {
    m_translator.marks = true;
    EXPECT_THAT(
        Read("Klienci=0\r\n"),
        ElementsAre(
            "<Plik FILE, wiersz 2, [Konsola] Klienci: <oczekiwano liczby całkowitej od 1 do "
            "10000>>"));
}

}  // namespace
}  // namespace kalvex::app
