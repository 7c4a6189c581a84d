#include "app/MainFrame.h"

#include <gmock/gmock.h>

#include "app_fakes.h"
#include "operands/Variable.h"
#include "support/hand_server.h"

namespace kalvex::app {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class MainFrameTest : public AppTest {
  protected:
    void StartScripts(const std::vector<std::string>& texts) {
        std::string profile = "[Autostart]\n";
        for (std::size_t i = 0; i < texts.size(); ++i) {
            const std::string name = std::to_string(i) + ".kx";
            PutScript(name, texts[i]);
            profile += "Procedura" + std::to_string(i) + "=" + name + "\n";
        }
        PutProfile(profile);
        ASSERT_TRUE(Start({"/NOLOGIN"}));
        ASSERT_EQ(App().Documents().All().size(), texts.size());
        m_record.clear();
    }
    engine::CKalvexDoc& Script(std::size_t index) { return *App().Documents().All().at(index); }
    void Tick(int count = 1) {
        for (int i = 0; i < count; ++i) m_loop.tickSource->RunTick();
    }
    void Refresh() { m_loop.Fire(CMainFrame::RefreshTimer); }
};

constexpr const char* kError =
    "icon error/Kalvex/Jeden ze skryptów wygenerował błąd.\nSzczegółowe informacje w oknie "
    "rejestracji";

TEST_F(MainFrameTest, TickStepsEveryDocument) {
    StartScripts({"LOCAL A = 1\n", "LOCAL B = 1\n"});
    Tick();
    EXPECT_EQ(Script(0).State().m_nCurrentLine, 1);
    EXPECT_EQ(Script(1).State().m_nCurrentLine, 1);
}

TEST_F(MainFrameTest, TopPriorityIsTenStepsATickAndTwentyWhileMinimised) {
    StartScripts({"PRIORITY 1" + std::string(60, '\n')});
    Script(0).SetMinimised(false);
    Tick();
    EXPECT_EQ(Script(0).State().m_nCurrentLine, 10);
    Tick();
    EXPECT_EQ(Script(0).State().m_nCurrentLine, 20);
    Script(0).SetMinimised(true);
    Tick();
    EXPECT_EQ(Script(0).State().m_nCurrentLine, 40);
}

TEST_F(MainFrameTest, MinimisedScriptAtPaceTwoRunsALineEverySecondTick) {
    StartScripts({"PRIORITY 2\n\n\n\n\n\n\n"});
    Tick();
    EXPECT_EQ(Script(0).State().m_nPriority, 2);
    const int first = Script(0).State().m_nPaceCounter;
    Tick(first + 1);
    EXPECT_EQ(Script(0).State().m_nCurrentLine, 2);
    Tick(4);
    EXPECT_EQ(Script(0).State().m_nCurrentLine, 4);
}

TEST_F(MainFrameTest, IconChangesWithTheFirstErrorAndWithTheLast) {
    m_hasWindow = true;
    StartScripts({"PRIORITY 1\nLOCAL A = 0\n:p\nSET A = NIEMA + 1\nGOTO p\n"});
    Tick(3);
    EXPECT_THAT(Those("icon"), ElementsAre(std::string(kError).substr(5)));
    EXPECT_TRUE(App().MainFrame().IsErrorShown());
    m_record.clear();
    Script(0).Reset();
    Tick(2);
    EXPECT_THAT(m_record, ElementsAre(testing::StartsWith("log "), testing::StartsWith("status "),
                                      "icon normal//"));
    EXPECT_FALSE(App().MainFrame().IsErrorShown());
}

TEST_F(MainFrameTest, ErrorIsKnownWithoutAWindow) {
    StartScripts({"BZDURA\n"});
    Tick();
    EXPECT_TRUE(App().MainFrame().IsErrorShown());
}

TEST_F(MainFrameTest, NothingTicksWhileScriptsAreOpened) {
    m_hasWindow = true;
    StartScripts({"LOCAL A = 1\n"});
    App().MainFrame().SetOpeningScripts(true);
    Tick();
    Refresh();
    EXPECT_EQ(Script(0).State().m_nCurrentLine, 0);
    EXPECT_THAT(m_record, ElementsAre("variables 0.kx"));
    App().MainFrame().SetOpeningScripts(false);
    Tick();
    EXPECT_EQ(Script(0).State().m_nCurrentLine, 1);
}

TEST_F(MainFrameTest, RefreshDoesThePeriodicWorkAndShowsRunningScripts) {
    m_hasWindow = true;
    StartScripts({"\n", "\n"});
    Script(0).Stop();
    m_record.clear();
    Refresh();
    EXPECT_THAT(m_record, ElementsAre("tool bar", "variables 1.kx"));
}

TEST_F(MainFrameTest, ErrorThatStandsIsToldAgainWithItsNumber) {
    StartScripts({"LOCAL A = 1\nBZDURA\n", "\n", "GOTO nigdzie\n"});
    Tick(250);
    Refresh();
    m_record.clear();
    m_clock.Advance(3'599'000);
    Refresh();
    EXPECT_THAT(Those("log"), IsEmpty());
    m_clock.Advance(1'000);
    Refresh();
    const std::uint64_t times = Script(0).State().standing.GetError().times;
    EXPECT_GT(times, 1u);
    EXPECT_THAT(Those("log"),
                ElementsAre(m_folder.Path("0.kx") +
                                " : Linia 2 - Nieznane słowo kluczowe : BZDURA (błąd trwa od "
                                "2024-03-10 07:00:00, razy: " +
                                std::to_string(times) + ")",
                            m_folder.Path("2.kx") +
                                " : Linia 1 - Nie znaleziono etykiety : :nigdzie (błąd trwa od "
                                "2024-03-10 07:00:00, razy: 1)"));
    m_record.clear();
    Refresh();
    EXPECT_THAT(Those("log"), IsEmpty());
    Script(0).Reset();
    m_record.clear();
    m_clock.Advance(std::int64_t{23} * 3'600'000);
    Refresh();
    EXPECT_THAT(Those("log"),
                ElementsAre(m_folder.Path("2.kx") +
                            " : Linia 1 - Nie znaleziono etykiety : :nigdzie (błąd trwa "
                            "od 2024-03-10 07:00:00, razy: 1)"));
}

TEST_F(MainFrameTest, RefreshOpensConnectionsAnew) {
    StartScripts({"\n"});
    support::HandServer server;
    server.answersLogin = false;
    App().ClientInterface()->RegisterPlain("srv", "A");
    m_vantrel.network.AddServer("srv", server);
    m_vantrel.network.Deliver();
    m_vantrel.network.Break("srv", 1);
    m_vantrel.network.Deliver();
    const int before = server.clients;
    Refresh();
    m_vantrel.network.Deliver();
    EXPECT_EQ(server.clients, before + 1);
}

TEST_F(MainFrameTest, StatusLineIsTheLastLineOfTheLog) {
    StartScripts({"\n"});
    App().Log().Log(text::FromUtf8("ż"), platform::LogErrors);
    App().Log().Log("zdarzenie", platform::LogEvents);
    EXPECT_EQ(text::ToUtf8(App().MainFrame().GetStatusLine()), "ż");
}

TEST_F(MainFrameTest, TimersOfAConsoleClientDoNothing) {
    StartScripts({"LOCAL A = 1\n"});
    bool worked = false;
    const FrameWork work{[&worked] { worked = true; }, [&worked] { worked = true; }};
    CMainFrame client(m_loop, m_translator, App().Documents(), &m_window, work, true);
    for (const int id : {1, 2, 4}) client.OnTimer(id);
    EXPECT_FALSE(client.NeedsTicks());
    EXPECT_TRUE(App().MainFrame().NeedsTicks());
    EXPECT_FALSE(worked);
    EXPECT_THAT(m_record, IsEmpty());
    EXPECT_EQ(Script(0).State().m_nCurrentLine, 0);
}

// ---- open documents

TEST_F(MainFrameTest, DocumentIsOpenedOnceAndFoundByEitherPath) {
    StartScripts({"\n"});
    std::string error;
    ScriptDocuments& documents = App().Documents();
    EXPECT_EQ(documents.Open("0.kx", error), &Script(0));
    EXPECT_EQ(documents.Find(m_folder.Path("0.kx")), &Script(0));
    EXPECT_EQ(documents.Find("1.kx"), nullptr);
    EXPECT_EQ(documents.Open("1.kx", error), nullptr);
    EXPECT_EQ(error, "No such file or directory");
}

TEST_F(MainFrameTest, ClosedDocumentTicksNoMore) {
    StartScripts({"\n", "LOCAL A = 1\n"});
    App().Documents().Close(Script(0));
    Tick();
    ASSERT_EQ(App().Documents().All().size(), 1u);
    EXPECT_EQ(Script(0).GetDocKey(), "1.kx");
    EXPECT_EQ(Script(0).State().m_nCurrentLine, 1);
}

}  // namespace
}  // namespace kalvex::app
