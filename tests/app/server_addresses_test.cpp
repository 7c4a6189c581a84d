#include "app/ServerAddresses.h"

#include <gtest/gtest.h>

#include "platform/IniProfile.h"
#include "support/environment_scope.h"
#include "support/scratch_folder.h"
#include "text/CodePage.h"

namespace kalvex::app {
namespace {

class ServerAddressesTest : public testing::Test {
  protected:
    vantrel::ServerAddresses Read(const std::string& utf8) const {
        m_folder.Put("sorvane.ini", text::FromUtf8(utf8));
        return ReadServerAddresses(platform::IniProfile(m_folder.Path("Kalvex.ini")));
    }

    // Whether a server with this address and these settings is reached with TLS.
    bool IsEncrypted(const std::string& address, const std::string& settings) const {
        const auto addresses = Read("[Serwery]\nsrv=" + address + "\n[Serwer srv]\n" + settings);
        return addresses.at("srv").tls.has_value();
    }

    support::ScratchFolder m_folder;
    support::EnvironmentScope m_common{"SORVANE_COMMON_PROFILE", m_folder.Path("sorvane.ini")};
};

TEST_F(ServerAddressesTest, EntryBecomesAnAddress) {
    const auto addresses = Read(
        "[Serwery]\nprzepompownia=10.0.0.5:4000\n"
        "[Szyfrowanie]\nUrząd=/etc/ca.pem\nCertyfikat=/etc/c.pem\nKlucz=/etc/k.pem\n"
        "Nazwa certyfikatu=stacja\n");
    ASSERT_EQ(addresses.size(), 1u);
    const vantrel::ServerAddress& address = addresses.at("przepompownia");
    EXPECT_EQ(address.address, "10.0.0.5:4000");
    ASSERT_TRUE(address.tls.has_value());
    EXPECT_EQ(address.tls->authority, "/etc/ca.pem");
    EXPECT_EQ(address.tls->certificate, "/etc/c.pem");
    EXPECT_EQ(address.tls->key, "/etc/k.pem");
    EXPECT_EQ(address.certificateName, "stacja");
    EXPECT_FALSE(address.plainTextAllowed);
}

TEST_F(ServerAddressesTest, ServerElsewhereIsEncryptedUnlessPlainTextIsAllowed) {
    EXPECT_TRUE(IsEncrypted("10.0.0.5:4000", ""));
    EXPECT_TRUE(IsEncrypted("stacja:4000", "Otwarty tekst=0\n"));
    EXPECT_FALSE(IsEncrypted("10.0.0.5:4000", "Otwarty tekst=1\n"));
}

TEST_F(ServerAddressesTest, ServerOnThisMachineIsPlain) {
    EXPECT_FALSE(IsEncrypted("127.0.0.1:4000", ""));
    EXPECT_FALSE(IsEncrypted("[::1]:4000", ""));
    EXPECT_FALSE(IsEncrypted("localhost:4000", "Otwarty tekst=0\n"));
}

TEST_F(ServerAddressesTest, NamedFileAsksForEncryptionAnywhere) {
    EXPECT_TRUE(IsEncrypted("localhost:4000", "Urząd=/etc/ca.pem\n"));
    EXPECT_TRUE(IsEncrypted("localhost:4000", "Certyfikat=/etc/c.pem\n"));
    EXPECT_TRUE(IsEncrypted("localhost:4000", "Klucz=/etc/k.pem\n"));
    EXPECT_TRUE(IsEncrypted("10.0.0.5:4000", "Urząd=/etc/ca.pem\nOtwarty tekst=1\n"));
}

TEST_F(ServerAddressesTest, ServerTakesBackAFileOfAll) {
    EXPECT_FALSE(IsEncrypted("10.0.0.5:4000",
                             "Urząd=\nOtwarty tekst=1\n[Szyfrowanie]\nUrząd=/etc/ca.pem\n"));
}

TEST_F(ServerAddressesTest, FirstOfTwoLinesWithOneNameCounts) {
    EXPECT_EQ(Read("[Serwery]\nsrv=a:1\nsrv=b:2\n").at("srv").address, "a:1");
}

TEST_F(ServerAddressesTest, WhatIsNoAddressIsKeptAsItStands) {
    EXPECT_EQ(Read("[Serwery]\nsrv=bez portu\n").at("srv").address, "bez portu");
}

}  // namespace
}  // namespace kalvex::app
