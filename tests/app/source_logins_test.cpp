#include <gtest/gtest.h>

#include <algorithm>

#include "app/Configuration.h"
#include "platform/IniProfile.h"
#include "support/fixed_user.h"
#include "support/hand_server.h"
#include "support/log_recorder.h"
#include "support/scratch_folder.h"

namespace kalvex::app {
namespace {

TEST(SourceLoginsTest, ServerHearsTheLoginOfTheProfile) {
    support::ScratchFolder folder;
    const platform::CCrypt crypt(folder.Path("Kalvex.key"), platform::KeyFile::MadeAtFirstUse);
    const auto password = crypt.EncryptTextWithLabel("Kalvex", "haslo, z przecinkiem");
    ASSERT_TRUE(password.has_value());
    folder.Put("Kalvex.ini", "[Zrodla]\nZrodlo0=inny,ewa,\nZrodlo1=srv,jan," + *password + "\n");
    platform::IniProfile profile(folder.Path("Kalvex.ini"));
    KalvexConfiguration configuration;
    ConfigurationStore(profile, crypt, platform::Paths(folder.Path()), false)
        .ReadSources(configuration);

    support::InProcessNetwork network;
    support::HandServer server;
    server.answersLogin = false;
    network.AddServer("srv", server);
    support::SilentLog log;
    const platform::Translator translator;
    const support::FixedUser users;
    sources::CClientInterface client(
        {log, translator, users, network, nullptr, configuration.sources, &crypt});
    ASSERT_NE(client.SourceList().AddSource("srv"), nullptr);
    network.Deliver();
    ASSERT_EQ(server.logins.size(), 1u);
    EXPECT_EQ(server.logins[0].user, "jan");
    EXPECT_EQ(server.logins[0].password, "haslo, z przecinkiem");
}

TEST(SourceLoginsTest, SourceWhosePasswordIsLostIsReachedAsOneWithoutALogin) {
    support::ScratchFolder folder;
    const platform::CCrypt crypt(folder.Path("Kalvex.key"), platform::KeyFile::MadeAtFirstUse);
    support::InProcessNetwork network;
    support::HandServer server;
    server.answersLogin = false;
    network.AddServer("srv", server);
    support::SilentLog log;
    const platform::Translator translator;
    support::FixedUser users;
    users.name = "ola";
    sources::CClientInterface client({log,
                                      translator,
                                      users,
                                      network,
                                      nullptr,
                                      {{"srv", "jan", "{kx1}zgubione", true}},
                                      &crypt});
    ASSERT_NE(client.SourceList().AddSource("srv"), nullptr);
    network.Deliver();
    ASSERT_EQ(server.logins.size(), 1u);
    EXPECT_EQ(server.logins[0].user, "ola");
    EXPECT_EQ(server.logins[0].password, "");
}

TEST(SourceLoginsTest, PasswordOfAnotherKeyIsLostAndThatIsKnown) {
    support::ScratchFolder folder;
    const platform::CCrypt crypt(folder.Path("Kalvex.key"), platform::KeyFile::MadeAtFirstUse);
    const platform::CCrypt other(folder.Path("Inny.key"), platform::KeyFile::MadeAtFirstUse);
    const platform::Paths paths(folder.Path());
    platform::IniProfile profile(folder.Path("Kalvex.ini"));
    const ConfigurationStore store(profile, crypt, paths, false);
    const auto lost = [&store] {
        KalvexConfiguration configuration;
        store.ReadSources(configuration);
        return std::ranges::count_if(configuration.sources, &sources::CSourceDesc::lost);
    };
    EXPECT_EQ(lost(), 0);
    // No password, no user, the old plain form, one of its own.
    folder.Put("Kalvex.ini",
               "[Zrodla]\nZrodlo0=srv,jan,\nZrodlo1=sam\nZrodlo2=srv2,ewa,1&2&\n"
               "Zrodlo3=srv3,jan," +
                   *crypt.EncryptTextWithLabel("Kalvex", "tajne") + "\n");
    EXPECT_EQ(lost(), 0);
    folder.Put("Kalvex.ini",
               "[Zrodla]\nZrodlo0=srv,jan," + *other.EncryptTextWithLabel("Kalvex", "x") + "\n");
    EXPECT_EQ(lost(), 1);
}

}  // namespace
}  // namespace kalvex::app
