#include "app/Servers.h"

#include <gtest/gtest.h>

#include "platform/IniProfile.h"
#include "support/environment_scope.h"
#include "support/scratch_folder.h"
#include "text/CodePage.h"

namespace kalvex::app {
namespace {

class ServersTest : public testing::Test {
  protected:
    std::vector<ServerEntry> Read(const std::string& utf8) const {
        m_folder.Put("sorvane.ini", text::FromUtf8(utf8));
        return ReadServers(platform::IniProfile(m_folder.Path("Kalvex.ini")));
    }

    support::ScratchFolder m_folder;
    support::EnvironmentScope m_common{"SORVANE_COMMON_PROFILE", m_folder.Path("sorvane.ini")};
};

TEST_F(ServersTest, ServersAreThoseOfTheCommonProfileInItsOrder) {
    m_folder.Put("Kalvex.ini", "[Serwery]\nobcy=a:1\n");
    const auto servers = Read("[Serwery]\nstacja=10.0.0.5:4000\narchiwum=[::1]:4001\n");
    ASSERT_EQ(servers.size(), 2u);
    EXPECT_EQ(servers[0].source, "stacja");
    EXPECT_EQ(servers[0].address, "10.0.0.5:4000");
    EXPECT_EQ(servers[0].authority, "");
    EXPECT_FALSE(servers[0].plainTextAllowed);
    EXPECT_EQ(servers[1].source, "archiwum");
    EXPECT_EQ(servers[1].address, "[::1]:4001");
}

TEST_F(ServersTest, ServerWithoutSettingsOfItsOwnHasThoseOfAll) {
    const auto servers = Read(
        "[Serwery]\na=h:1\nb=h:2\n"
        "[Szyfrowanie]\nUrząd=/etc/ca.pem\nCertyfikat=/etc/c.pem\nKlucz=/etc/k.pem\n"
        "Otwarty tekst=1\n"
        "[Serwer b]\nUrząd=/etc/b.pem\nNazwa certyfikatu=stacja.b\nOtwarty tekst=0\n");
    ASSERT_EQ(servers.size(), 2u);
    EXPECT_EQ(servers[0].authority, "/etc/ca.pem");
    EXPECT_EQ(servers[0].certificate, "/etc/c.pem");
    EXPECT_EQ(servers[0].key, "/etc/k.pem");
    EXPECT_EQ(servers[0].certificateName, "");
    EXPECT_TRUE(servers[0].plainTextAllowed);
    EXPECT_EQ(servers[1].authority, "/etc/b.pem");
    EXPECT_EQ(servers[1].certificate, "/etc/c.pem");
    EXPECT_EQ(servers[1].certificateName, "stacja.b");
    EXPECT_FALSE(servers[1].plainTextAllowed);
}

TEST_F(ServersTest, MachineWithoutACommonProfileHasNoServers) {
    EXPECT_TRUE(ReadServers(platform::IniProfile(m_folder.Path("Kalvex.ini"))).empty());
}

}  // namespace
}  // namespace kalvex::app
