#include <gmock/gmock.h>

#include "app_fakes.h"
#include "support/hand_server.h"

namespace kalvex::app {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class AppStopTest : public AppTest {
  protected:
    void StartWithScript(std::vector<std::string> arguments = {}) {
        PutProfile("[Autostart]\nProcedura0=a.kx\n");
        PutScript("a.kx", "LOCAL A = 1\n");
        arguments.emplace_back("/NOLOGIN");
        ASSERT_TRUE(Start(arguments));
        ASSERT_EQ(App().Documents().All().size(), 1u);
        m_record.clear();
    }
    bool IsClosed() { return App().Documents().All().empty() && !App().ClientInterface(); }
};

TEST_F(AppStopTest, ProcessWithoutAWindowClosesAtOnce) {
    StartWithScript({"/Q"});
    App().OnCloseMainWindow();
    EXPECT_THAT(m_record, ElementsAre("quit"));
    EXPECT_TRUE(IsClosed());
    EXPECT_TRUE(App().Configuration().autostart.empty());
}

TEST_F(AppStopTest, WindowClosesForWhoeverHasTheRight) {
    m_hasWindow = true;
    StartWithScript();
    App().OnCloseMainWindow();
    EXPECT_THAT(m_record, IsEmpty());
    EXPECT_FALSE(IsClosed());
    m_users.level = 1;
    App().OnCloseMainWindow();
    EXPECT_THAT(m_record, ElementsAre("save", "hide", "quit"));
    EXPECT_TRUE(IsClosed());
}

TEST_F(AppStopTest, QuestionComesFirstWithItsOption) {
    m_hasWindow = true;
    m_users.level = 1;
    StartWithScript({"/Q"});
    m_window.answer = false;
    App().OnCloseMainWindow();
    EXPECT_THAT(m_record, ElementsAre("ask Czy zakończyć działanie programu Kalvex?"));
    EXPECT_FALSE(IsClosed());
    m_window.answer = true;
    App().OnCloseMainWindow();
    EXPECT_EQ(m_record.back(), "quit");
}

TEST_F(AppStopTest, WindowThatIsBeingClosedAsksOnce) {
    m_hasWindow = true;
    m_users.level = 1;
    StartWithScript({"/Q"});
    m_window.whileAsked = [this] { App().OnCloseMainWindow(); };
    App().OnCloseMainWindow();
    EXPECT_THAT(m_record, ElementsAre("ask Czy zakończyć działanie programu Kalvex?", "save",
                                      "hide", "quit"));
}

TEST_F(AppStopTest, ChangedScriptsMayKeepTheProcessOpen) {
    m_hasWindow = true;
    m_users.level = 1;
    StartWithScript();
    m_window.saved = false;
    App().OnCloseMainWindow();
    EXPECT_THAT(m_record, ElementsAre("save"));
    EXPECT_FALSE(IsClosed());
    EXPECT_EQ(App().CloseInstance(0), -1);
    EXPECT_EQ(App().CloseInstance(1), 0);
    EXPECT_TRUE(IsClosed());
}

TEST_F(AppStopTest, EndOfTheSessionClosesEverything) {
    StartWithScript();
    App().OnEndSession(false);
    EXPECT_THAT(m_record, IsEmpty());
    App().OnEndSession(true);
    EXPECT_THAT(m_record, ElementsAre("log Sesja Windows została zakończona"));
    EXPECT_TRUE(IsClosed());
}

TEST_F(AppStopTest, EndOfTheSessionIsNothingToAService) {
    m_service = true;
    StartWithScript();
    App().OnEndSession(true);
    EXPECT_THAT(m_record, IsEmpty());
    EXPECT_FALSE(IsClosed());
}

TEST_F(AppStopTest, StopIsToldInTheFileBeforeItCloses) {
    StartWithScript();
    App().ExitInstance();
    App().Log().Log("po", platform::LogErrors);
    const std::string log = FileText("Kalvex.log");
    const std::string last = "2024-03-10 07:00:00  Zatrzymanie modułu Kalvex\n";
    EXPECT_EQ(log.substr(log.size() - last.size()), last);
}

// ---- what the user management tells

class AppStopBroadcastTest : public AppStopTest {
  protected:
    void StartWithServer() {
        m_server.answersLogin = false;
        m_vantrel.network.AddServer("srv", m_server);
        m_hasWindow = true;
        ASSERT_TRUE(Start({"/NOLOGIN"}));
        App().ClientInterface()->RegisterPlain("srv", "A");
        m_vantrel.network.Deliver();
        ASSERT_EQ(m_server.logins.size(), 1u);
        m_record.clear();
    }
    std::size_t LoginsAfter(unsigned int parameter) {
        App().OnUserBroadcast(parameter, text::FromUtf8("Zalogował się ADAM"));
        m_vantrel.network.Deliver();
        return m_server.logins.size();
    }

    support::HandServer m_server;
};

TEST_F(AppStopBroadcastTest, NewUserIsToldAndLogsInAnew) {
    StartWithServer();
    m_users.level = 1;
    EXPECT_EQ(LoginsAfter(0), 2u);
    EXPECT_THAT(m_record,
                ElementsAre("log Zalogował się ADAM", "status Zalogował się ADAM", "may close"));
}

TEST_F(AppStopBroadcastTest, OtherNewsAreTold) {
    StartWithServer();
    EXPECT_EQ(LoginsAfter(1), 1u);
    EXPECT_THAT(m_record, ElementsAre("log Zalogował się ADAM", "status Zalogował się ADAM",
                                      "may not close"));
}

TEST_F(AppStopBroadcastTest, AnyOtherChangeIsOneOfRights) {
    StartWithServer();
    EXPECT_EQ(LoginsAfter(2), 1u);
    EXPECT_THAT(m_record, ElementsAre("may not close"));
}

}  // namespace
}  // namespace kalvex::app
