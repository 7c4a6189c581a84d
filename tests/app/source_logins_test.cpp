#include <gtest/gtest.h>

#include "app/Configuration.h"
#include "platform/IniProfile.h"
#include "scratch_folder.h"
#include "vantrel/InProcess.h"

namespace kalvex {
namespace {

class DoorKeeper final : public SessionAcceptor {
  public:
    std::unique_ptr<ServerSession> Accept(ServerLink&) override {
        return std::make_unique<Session>(login);
    }
    void ListVariables(LoginRequest, std::string, ListAnswer answer) override {
        answer(std::nullopt);
    }

    LoginRequest login;

  private:
    class Session final : public ServerSession {
      public:
        explicit Session(LoginRequest& login) : m_login(login) {}
        void OnMessage(ClientMessage message) override {
            if (const auto* login = std::get_if<LoginRequest>(&message)) m_login = *login;
        }
        void OnClosed(std::uint32_t) override {}

      private:
        LoginRequest& m_login;
    };
};

class NoLog final : public LogSink {
  public:
    void Log(std::string_view, int) override {}
};

class Nobody final : public Users {
  public:
    std::string GetActiveUserName() const override { return {}; }
    std::string GetActiveUserDescription() const override { return {}; }
    std::string GetAccountName() const override { return {}; }
};

TEST(SourceLogins, ServerHearsTheLoginOfTheProfile) {
    ScratchFolder folder;
    const CCrypt crypt(folder.Path("Kalvex.key"), KeyFile::MadeAtFirstUse);
    const auto password = crypt.EncryptTextWithLabel("Kalvex", "haslo, z przecinkiem");
    ASSERT_TRUE(password.has_value());
    folder.Put("Kalvex.ini", "[Zrodla]\nZrodlo0=inny,ewa,\nZrodlo1=srv,jan," + *password + "\n");
    IniProfile profile(folder.Path("Kalvex.ini"));
    CConfiguration configuration;
    CConfigurationStore(profile, crypt, Paths(folder.Path()), false).ReadSources(configuration);

    InProcessNetwork network;
    DoorKeeper server;
    network.AddServer("srv", server);
    NoLog log;
    const Translator translator;
    const Nobody users;
    CClientInterface client(
        {log, translator, users, network, nullptr, configuration.sources, &crypt});
    ASSERT_NE(client.SourceList().AddSource("srv"), nullptr);
    network.Deliver();
    EXPECT_EQ(server.login.user, "jan");
    EXPECT_EQ(server.login.password, "haslo, z przecinkiem");
}

TEST(SourceLogins, PasswordOfAnotherKeyIsLostAndThatIsKnown) {
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
