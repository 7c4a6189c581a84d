#include <gtest/gtest.h>

#include "app/Configuration.h"
#include "platform/IniProfile.h"
#include "support/fixed_user.h"
#include "support/hand_server.h"
#include "support/log_recorder.h"
#include "support/scratch_folder.h"

namespace kalvex {
namespace {

TEST(SourceLoginsTest, ServerHearsTheLoginOfTheProfile) {
    ScratchFolder folder;
    const CCrypt crypt(folder.Path("Kalvex.key"), KeyFile::MadeAtFirstUse);
    const auto password = crypt.EncryptTextWithLabel("Kalvex", "haslo, z przecinkiem");
    ASSERT_TRUE(password.has_value());
    folder.Put("Kalvex.ini", "[Zrodla]\nZrodlo0=inny,ewa,\nZrodlo1=srv,jan," + *password + "\n");
    IniProfile profile(folder.Path("Kalvex.ini"));
    CConfiguration configuration;
    CConfigurationStore(profile, crypt, Paths(folder.Path()), false).ReadSources(configuration);

    InProcessNetwork network;
    HandServer server;
    server.answersLogin = false;
    network.AddServer("srv", server);
    SilentLog log;
    const Translator translator;
    const FixedUser users;
    CClientInterface client(
        {log, translator, users, network, nullptr, configuration.sources, &crypt});
    ASSERT_NE(client.SourceList().AddSource("srv"), nullptr);
    network.Deliver();
    ASSERT_EQ(server.logins.size(), 1u);
    EXPECT_EQ(server.logins[0].user, "jan");
    EXPECT_EQ(server.logins[0].password, "haslo, z przecinkiem");
}

TEST(SourceLoginsTest, PasswordOfAnotherKeyIsLostAndThatIsKnown) {
    ScratchFolder folder;
    const CCrypt crypt(folder.Path("Kalvex.key"), KeyFile::MadeAtFirstUse);
    const CCrypt other(folder.Path("Inny.key"), KeyFile::MadeAtFirstUse);
    const Paths paths(folder.Path());
    IniProfile profile(folder.Path("Kalvex.ini"));
    const CConfigurationStore store(profile, crypt, paths, false);
    EXPECT_FALSE(store.HasLostPasswords());
    // No password, no user, the old plain form, one of its own.
    folder.Put("Kalvex.ini",
               "[Zrodla]\nZrodlo0=srv,jan,\nZrodlo1=sam\nZrodlo2=srv2,ewa,1&2&\n"
               "Zrodlo3=srv3,jan," +
                   *crypt.EncryptTextWithLabel("Kalvex", "tajne") + "\n");
    EXPECT_FALSE(store.HasLostPasswords());
    folder.Put("Kalvex.ini",
               "[Zrodla]\nZrodlo0=srv,jan," + *other.EncryptTextWithLabel("Kalvex", "x") + "\n");
    EXPECT_TRUE(store.HasLostPasswords());
}

}  // namespace
}  // namespace kalvex
