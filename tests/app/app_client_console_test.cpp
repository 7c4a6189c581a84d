// The application as a console of another module.
#include <gmock/gmock.h>

#include "app_fakes.h"
#include "support/hand_server.h"

namespace kalvex::app {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// The module is played by hand: variable 1 is the level of its log, 2 tells of scripts.
class AppClientConsoleTest : public AppTest {
  protected:
    AppClientConsoleTest() {
        m_canMirror = true;
        m_hasWindow = true;
    }

    void StartMirror(std::vector<std::string> arguments = {"/RC", "/NOLOGIN"}) {
        ASSERT_TRUE(Start(std::move(arguments)));
    }
    void RunModule() {
        m_vantrel.network.AddServer("Kalvex", m_module);
        Deliver();
    }
    void Deliver() {
        m_vantrel.network.Deliver();
        while (m_loop.posted.Run()) m_vantrel.network.Deliver();
    }
    void Send(vantrel::VariableHandle handle, const value::CVal& value) {
        m_module.SendValue(handle, value);
        Deliver();
    }
    // The module has told nothing before.
    void Mirror(const std::string& path) {
        Send(2, value::CVal());
        Send(2, value::CVal(path));
    }
    // What the module has heard since the last time.
    std::vector<std::string> Heard() { return std::exchange(m_module.heard, {}); }

    support::HandServer m_module;
};

TEST_F(AppClientConsoleTest, WithoutAModuleTheTitleSaysSoAndNothingElseHappens) {
    PutProfile("[Autostart]\nProcedura0=a.kx\n[Log]\nRodzaj=2\n");
    PutScript("a.kx", "LOCAL A\n");
    StartMirror();
    EXPECT_THAT(Those("title"), ElementsAre("Kalvex (zdalna konsola - brak połączenia)"));
    EXPECT_THAT(Those("log"), ElementsAre("RC: Uruchomienie modułu Kalvex",
                                          "RC: Moduł uruchomiony w trybie zdalnej konsoli"));
    EXPECT_THAT(Those("lock"), ElementsAre("Kalvex_RC 1"));
    EXPECT_THAT(Those("show"), IsEmpty());
    EXPECT_THAT(App().Documents().All(), IsEmpty());
    EXPECT_EQ(App().Log().GetLevel(), 65535);
    EXPECT_FALSE(App().RemoteModule().IsConnected());
}

TEST_F(AppClientConsoleTest, ConnectsAsTheConsoleOfTheModuleOfItsProfile) {
    PutProfile("[Konfiguracja]\nNazwa=Kocioł\n", "Kalvex2.ini");
    StartMirror({"/RC", "/NOLOGIN", "/INST:2"});
    m_vantrel.network.AddServer(text::FromUtf8("Kocioł"), m_module);
    Deliver();
    EXPECT_THAT(Heard(), ElementsAre(text::FromUtf8("login / Kocioł_stacja_RC 23"),
                                     "subscribe +1SYS_LogLevel +2RC_KalvexDocInfo"));
    EXPECT_EQ(m_module.wishes, 833u);
    EXPECT_THAT(Those("title"), ElementsAre("Kalvex [2] (zdalna konsola - brak połączenia)",
                                            "Kalvex [2] (zdalna konsola - połączona)"));
    EXPECT_EQ(App().Log().GetCount(), 0u);
}

TEST_F(AppClientConsoleTest, MirrorsAndInterpretsNothing) {
    PutScript("a.kx", "LOCAL A = 1\nSET A = 2\n");
    StartMirror();
    RunModule();
    m_record.clear();
    Heard();
    Mirror("a.kx");
    ASSERT_EQ(App().Documents().All().size(), 1u);
    engine::CKalvexDoc& document = *App().Documents().All().front();
    EXPECT_THAT(Those("minimise"), ElementsAre("a.kx"));
    EXPECT_TRUE(document.IsReadOnly());
    EXPECT_THAT(Heard(), ElementsAre("subscribe +3a.kx +4VL:a.kx +5VC:a.kx"));
    Send(3, value::CVal());
    Send(3, value::CVal("3\t1\t0"));
    EXPECT_TRUE(document.State().m_bRunning);
    EXPECT_THAT(Those("variables"), ElementsAre("a.kx"));
    EXPECT_FALSE(App().MainFrame().NeedsTicks());
    App().MainFrame().RunTick();
    EXPECT_EQ(document.State().m_nCurrentLine, 0);
    Send(2, value::CVal("~a.kx"));
    EXPECT_THAT(App().Documents().All(), IsEmpty());
}

TEST_F(AppClientConsoleTest, LevelAndLogAreThoseOfTheModule) {
    StartMirror();
    RunModule();
    Send(1, value::CVal(2));
    EXPECT_EQ(App().Log().GetLevel(), 2);
    m_record.clear();
    m_module.Send(vantrel::LogMessage{3, kNow - 60, text::FromUtf8("wiersz ż")});
    Deliver();
    EXPECT_THAT(m_record, ElementsAre("log wiersz ż", "status wiersz ż"));
    Heard();
    App().SetLogLevel(3);
    Deliver();
    EXPECT_THAT(Heard(), ElementsAre("modify 1:1SYS_LogLevel[0]=3/0"));
    EXPECT_FALSE(m_folder.Has("Kalvex.ini"));
    EXPECT_FALSE(m_folder.Has("Kalvex_rc.log"));
}

TEST_F(AppClientConsoleTest, LevelIsNotSentWithoutAConnection) {
    StartMirror();
    App().SetLogLevel(3);
    RunModule();
    EXPECT_THAT(Heard(), ElementsAre("login / Kalvex_stacja_RC 23",
                                     "subscribe +1SYS_LogLevel +2RC_KalvexDocInfo"));
}

TEST_F(AppClientConsoleTest, LostConnectionIsToldAndComesBackByItself) {
    PutScript("a.kx", "LOCAL A\n");
    StartMirror();
    RunModule();
    Mirror("a.kx");
    App().Documents().All().front()->AllowControl(true);
    m_record.clear();
    m_vantrel.network.Break("Kalvex", vantrel::ReasonLost);
    Deliver();
    EXPECT_EQ(m_record, (Record{"log RC: Połączenie z Kalvex zerwane (utrata połączenia)",
                                "status RC: Połączenie z Kalvex zerwane (utrata połączenia)",
                                "title Kalvex (zdalna konsola - brak połączenia)",
                                "log RC: Brak połączenia", "status RC: Brak połączenia"}));
    EXPECT_EQ(App().Log().GetCount(), 1u);
    EXPECT_FALSE(App().Documents().All().front()->State().m_bControlAllowed);
    Heard();
    m_loop.Fire(5);
    Deliver();
    EXPECT_THAT(Heard(),
                ElementsAre("login / Kalvex_stacja_RC 23", "modify 1:1RC_KalvexDocInfo[0]=a.kx/0",
                            "subscribe +1SYS_LogLevel +2RC_KalvexDocInfo"));
    EXPECT_TRUE(App().RemoteModule().IsConnected());
}

TEST_F(AppClientConsoleTest, FrameAnswersItsQuestionsAndShowsItsMessages) {
    PutScript("a.kx", "LOCAL A\n");
    StartMirror();
    RunModule();
    Mirror("a.kx");
    engine::CKalvexDoc& document = *App().Documents().All().front();
    document.SetModified(true);
    m_window.answer = false;
    m_record.clear();
    App().RemoteModule().AskForSession(document);
    EXPECT_EQ(App().RemoteModule().OpenByHand("a.kx"), nullptr);
    EXPECT_EQ(m_record,
              (Record{"ask Aby przejąć aktywną sesję dokumentu, musi on zostać zapisany. Czy "
                      "zapisać zmiany i wykonać polecenie?",
                      "message Plik skryptu a.kx jest już otwarty"}));
}

TEST_F(AppClientConsoleTest, WithoutAWindowItMirrorsAsWell) {
    PutScript("a.kx", "LOCAL A\n");
    m_hasWindow = false;
    StartMirror();
    RunModule();
    Mirror("a.kx");
    Send(3, value::CVal());
    Send(3, value::CVal("3\t1\t0"));
    EXPECT_EQ(App().RemoteModule().OpenByHand("a.kx"), nullptr);
    EXPECT_TRUE(App().Documents().All().front()->State().m_bRunning);
}

TEST_F(AppClientConsoleTest, LateStartOfScriptsNeverComes) {
    StartMirror({"/RC", "/D:5"});
    EXPECT_THAT(Those("login"), IsEmpty());
    m_loop.Fire(2);
    EXPECT_THAT(Those("login"), IsEmpty());
    EXPECT_EQ(std::ranges::count(m_record, "show"), 0);
}

TEST_F(AppClientConsoleTest, EndLeavesTheScriptsOfTheModuleOpen) {
    PutScript("a.kx", "LOCAL A\n");
    StartMirror();
    RunModule();
    Mirror("a.kx");
    Heard();
    m_record.clear();
    EXPECT_EQ(App().CloseInstance(0), 0);
    Deliver();
    EXPECT_THAT(App().Documents().All(), IsEmpty());
    EXPECT_THAT(Heard(), ElementsAre("closed 4106"));
    EXPECT_THAT(Those("no"), ElementsAre("timer 5"));
}

}  // namespace
}  // namespace kalvex::app
