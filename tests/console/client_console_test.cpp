// A console's connection, the scripts that it mirrors, and those that a person opens there.
#include "consoles_fixture.h"
#include "support/hand_server.h"

namespace kalvex::console {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kScript = "LOCAL X = 5\nLOCAL Y = 6\nLOCAL Z = 7\n";

using ClientConsoleTest = ConsolesTest;

// ---- notices

TEST_F(ClientConsoleTest, MirrorsWhatTheModuleHasOpen) {
    Open(kScript);
    Open(kScript, "b.kx");
    TestConsole& console = AddConsole("A_RC");
    EXPECT_THAT(console.Shown(),
                ElementsAre("connected", "clear", "minimise a.kx", "minimise b.kx"));
    EXPECT_EQ(console.State("a.kx"), "8/0 R");
    EXPECT_EQ(console.State("b.kx"), "8/0 R");
    for (const char* name : {"a.kx", "VL:a.kx", "VC:a.kx", "b.kx", "VL:b.kx", "VC:b.kx"}) {
        EXPECT_TRUE(console.client->FindConnection("Kalvex")->IsSubscribed(name)) << name;
    }
    EXPECT_EQ(console.Model("a.kx").Variables().GetCount(), 3u);
    EXPECT_THAT(console.Sent(), IsEmpty());
    EXPECT_THAT(console.log.Take(), ElementsAre("2 Nawiązanie połączenia z Kalvex"));
}

TEST_F(ClientConsoleTest, FollowsWhatTheModuleOpensAndCloses) {
    TestConsole& console = AddConsole("A_RC");
    TestClient& other = LogIn();
    WriteFile("b.kx", kScript);
    Say(other, "RC_KalvexDocInfo", "b.kx");
    Settle();
    EXPECT_EQ(console.State("b.kx"), "8/0 R");
    console.Edit("b.kx", "RESET");
    CloseAtModule(*FindScript("b.kx"));
    Settle();
    EXPECT_EQ(console.State("b.kx"), "-");
    EXPECT_EQ(console.client->FindConnection("Kalvex")->GetVarVal("b.kx"), nullptr);
    EXPECT_THAT(console.questions.asked, IsEmpty());
}

TEST_F(ClientConsoleTest, NoticeOfAScriptThatIsOpenChangesNothing) {
    Open(kScript);
    TestConsole& console = AddConsole("A_RC");
    console.Find("a.kx")->SetMinimised(false);
    console.Edit("a.kx", "moje");
    console.Shown();
    console.Sent();
    Publish("RC_KalvexDocInfo", "a.kx");
    EXPECT_EQ(console.State("a.kx"), "0/0 R");
    EXPECT_EQ(console.Find("a.kx")->Text().GetText(), "moje");
    EXPECT_THAT(console.Shown(), IsEmpty());
    EXPECT_THAT(console.Sent(), IsEmpty());
}

TEST_F(ClientConsoleTest, FileThatCannotBeReachedIsNoDocumentAndNoMessage) {
    const support::ScratchFolder elsewhere;
    Open(kScript);
    TestConsole& console = AddConsoleElsewhere("A_RC", elsewhere.Path());
    console.log.Take();
    EXPECT_EQ(console.State("a.kx"), "-");
    Publish("RC_KalvexDocInfo", "a.kx");
    EXPECT_EQ(console.State("a.kx"), "-");
    EXPECT_THAT(console.Shown(), ElementsAre("connected", "clear"));
    EXPECT_THAT(console.log.Take(), IsEmpty());
}

TEST_F(ClientConsoleTest, EmptyAndUnknownAndBadNoticesAreLeftAlone) {
    Open(kScript);
    TestConsole& console = AddConsole("A_RC");
    for (const char* notice : {"", "~", "~nie.kx"}) Publish("RC_KalvexDocInfo", notice);
    value::CVal bad("~a.kx");
    bad.SetStatus(value::Status::TransmissionError);
    m_console->Variables().DocumentInfo().SetControlValue(bad);
    m_server->AddCurrentValueChange(m_console->Variables().DocumentInfo());
    m_console->Variables().DocumentInfo().SetControlValue(value::CVal(5));
    m_server->AddCurrentValueChange(m_console->Variables().DocumentInfo());
    Settle();
    EXPECT_EQ(console.State("a.kx"), "8/0 R");
    EXPECT_EQ(console.documents.size(), 1u);
}

TEST_F(ClientConsoleTest, ScriptsAreListedToAUserWhoMayNotControlThemAndNothingElse) {
    engine::CKalvexDoc& document = Open(kScript);
    TestConsole& console = AddConsole("A_RC", "EWA");
    EXPECT_EQ(console.State("a.kx"), "8/0 R");
    console.log.Take();
    document.Start();
    Publish("a.kx", "3|1|0");
    EXPECT_EQ(console.State("a.kx"), "8/0 R");
    console.console->AskForSession(*console.Find("a.kx"));
    Settle();
    EXPECT_TRUE(document.State().m_bControlAllowed);
    EXPECT_THAT(console.log.Take(), IsEmpty());
}

// ---- the log and its level

TEST_F(ClientConsoleTest, LevelOfTheModuleIsTakenOver) {
    m_console->PublishLevel(2);
    TestConsole& console = AddConsole("A_RC");
    EXPECT_EQ(console.level, 2);
    m_console->PublishLevel(3);
    Settle();
    EXPECT_EQ(console.level, 3);
    console.Sent();
    console.console->SendLogLevel(1);
    Settle();
    EXPECT_EQ(m_level, 1);
    EXPECT_EQ(console.level, 1);
    EXPECT_THAT(console.Sent(), ElementsAre("SYS_LogLevel: 1"));
    StopForConsoles();
    console.Sent();
    console.console->SendLogLevel(2);
    EXPECT_THAT(console.Sent(), IsEmpty());
}

TEST_F(ClientConsoleTest, LevelThatTheModuleHasNotPublishedIsNone) {
    EXPECT_EQ(AddConsole("A_RC").level, 65535);
}

TEST_F(ClientConsoleTest, LinesOfTheModulesLogAreShown) {
    TestConsole& console = AddConsole("A_RC");
    console.Shown();
    m_server->AddLogMessage(text::FromUtf8("wiersz ż"), 77, 2);
    Settle();
    EXPECT_THAT(console.Shown(), ElementsAre("log 2 77 wiersz ż"));
}

// ---- the connection

TEST_F(ClientConsoleTest, ModuleThatDoesNotRunIsWaitedFor) {
    StopModule();
    TestConsole& console = AddConsole("A_RC");
    EXPECT_FALSE(console.console->IsConnected());
    EXPECT_THAT(console.Shown(), IsEmpty());
    EXPECT_THAT(console.log.Take(), IsEmpty());
    StartForConsoles();
    EXPECT_TRUE(console.console->IsConnected());
    EXPECT_THAT(console.Shown(), ElementsAre("connected", "clear"));
}

TEST_F(ClientConsoleTest, BreakLeavesTheDocumentsAndTheirVariablesGo) {
    Open(kScript);
    Open(kScript, "b.kx");
    TestConsole& console = AddConsole("A_RC");
    console.Shown();
    console.Subscribed();
    console.log.Take();
    Break(console);
    EXPECT_EQ(console.State("a.kx"), "8/0 R");
    EXPECT_THAT(console.Shown(), ElementsAre("not connected", "clear"));
    EXPECT_THAT(console.log.Take(), ElementsAre("1 Połączenie z Kalvex zerwane (utrata połączenia)",
                                                "0 Brak połączenia"));
    EXPECT_THAT(console.Sent(), IsEmpty());
    EXPECT_EQ(console.Subscribed(), 1);
    const sources::CInterfaceClientConnection& connection =
        *console.client->FindConnection("Kalvex");
    EXPECT_EQ(connection.GetVarVal("a.kx"), nullptr);
    EXPECT_EQ(connection.GetVarVal("VL:b.kx"), nullptr);
    EXPECT_NE(connection.GetVarVal("RC_KalvexDocInfo"), nullptr);
}

// It goes on showing what it has; whoever wants to see more asks for the session.
TEST_F(ClientConsoleTest, WhenItIsBackTheModuleIsAskedForTheScriptsAndOpenOnesStayAsTheyAre) {
    Open(kScript);
    WriteFile("b.kx", kScript);
    TestConsole& console = AddConsole("A_RC");
    Break(console);
    console.console->OpenByHand("b.kx");
    console.Sent();
    console.Shown();
    Reconnect(console);
    EXPECT_THAT(console.Sent(), ElementsAre("RC_KalvexDocInfo: a.kx", "RC_KalvexDocInfo: b.kx"));
    EXPECT_NE(FindScript("b.kx"), nullptr);
    EXPECT_THAT(console.Shown(), ElementsAre("connected", "clear"));
    EXPECT_EQ(console.client->FindConnection("Kalvex")->GetVarVal("a.kx"), nullptr);
    Take(console);
    EXPECT_NE(console.client->FindConnection("Kalvex")->GetVarVal("a.kx"), nullptr);
}

TEST_F(ClientConsoleTest, WhatTheModuleSaidBeforeIsThePast) {
    Open(kScript);
    TestClient& other = LogIn();
    Say(other, "a.kx", "2");
    Say(other, "RC_KalvexDocInfo", "~nie.kx");
    TestConsole& console = AddConsole("A_RC");
    EXPECT_EQ(console.State("a.kx"), "8/0 R");
    Say(other, "a.kx", "4");
    Settle();
    EXPECT_EQ(console.State("a.kx"), "10/0 R");
}

TEST_F(ClientConsoleTest, ModuleThatIsRestartedHasTheScriptsOfItsConsolesOpened) {
    Open(kScript);
    TestConsole& console = AddConsole("A_RC");
    Take(console);
    StopForConsoles();
    EXPECT_EQ(console.State("a.kx"), "8/0 R");
    EXPECT_THAT(documents, IsEmpty());
    StartForConsoles();
    EXPECT_EQ(ModuleState(), "0/0 C");
    Take(console);
    EXPECT_EQ(ModuleState(), "0/0 R");
}

TEST_F(ClientConsoleTest, CommandThatABreakOvertakesIsNeverSentAgain) {
    Open(kScript);
    TestConsole& console = AddConsole("A_RC");
    Take(console);
    console.Find("a.kx")->Start();
    console.network.Break("Kalvex", vantrel::ReasonLost);
    console.Find("a.kx")->Start();
    Settle();
    EXPECT_TRUE(FindScript("a.kx")->State().m_bRunning);
    FindScript("a.kx")->Reset();
    Reconnect(console);
    EXPECT_FALSE(FindScript("a.kx")->State().m_bRunning);
}

TEST_F(ClientConsoleTest, OtherSourcesAreNotItsModule) {
    Open(kScript);
    TestConsole& console = AddConsole("A_RC");
    support::HandServer server;
    console.network.AddServer("inny", server);
    console.Shown();
    console.client->RegisterPlain("inny", "V");
    Settle();
    console.network.Break("inny", vantrel::ReasonLost);
    Settle();
    EXPECT_THAT(console.Shown(), IsEmpty());
    EXPECT_NE(console.client->FindConnection("Kalvex")->GetVarVal("a.kx"), nullptr);
}

// ---- by hand

TEST_F(ClientConsoleTest, ScriptOpenedByHandIsOpenedAtTheModule) {
    TestConsole& console = AddConsole("A_RC");
    WriteFile("b.kx", kScript);
    console.Shown();
    console.Sent();
    ASSERT_NE(console.console->OpenByHand("b.kx"), nullptr);
    EXPECT_EQ(console.State("b.kx"), "0/0 R");
    EXPECT_EQ(console.Model("b.kx").Variables().GetCount(), 3u);
    Settle();
    EXPECT_EQ(ModuleState("b.kx"), "0/0 C");
    EXPECT_EQ(console.State("b.kx"), "0/0 R");
    EXPECT_THAT(console.Sent(), ElementsAre("RC_KalvexDocInfo: b.kx"));
    EXPECT_EQ(console.console->OpenByHand("b.kx"), nullptr);
    EXPECT_THAT(console.Shown(), ElementsAre("message Plik skryptu b.kx jest już otwarty"));
    EXPECT_EQ(console.console->OpenByHand("nie.kx"), nullptr);
    EXPECT_THAT(console.Sent(), IsEmpty());
    EXPECT_THAT(console.Shown(), IsEmpty());
}

TEST_F(ClientConsoleTest, ScriptClosedByHandIsClosedEverywhere) {
    Open(kScript);
    TestConsole& console = AddConsole("A_RC");
    TestConsole& other = AddConsole("B_RC");
    console.Sent();
    console.Close("a.kx");
    EXPECT_THAT(console.Sent(), ElementsAre("RC_KalvexDocInfo: ~a.kx"));
    Settle();
    EXPECT_EQ(FindScript("a.kx"), nullptr);
    EXPECT_EQ(other.State("a.kx"), "-");
    EXPECT_THAT(other.Sent(), IsEmpty());
}

TEST_F(ClientConsoleTest, SavingTellsTheModule) {
    Open(kScript);
    TestConsole& console = AddConsole("A_RC");
    console.Find("a.kx")->SetReadOnly(false);
    console.Edit("a.kx", "LOCAL A");
    console.Sent();
    std::string error;
    EXPECT_TRUE(console.Find("a.kx")->Save(error));
    EXPECT_EQ(console.State("a.kx"), "8/0 R");
    EXPECT_THAT(console.Sent(), ElementsAre("RC_KalvexDocInfo: a.kx"));
    EXPECT_EQ(folder.Get("a.kx"), "LOCAL A");
    Settle();
    Take(console);
    console.Sent();
    EXPECT_TRUE(console.Find("a.kx")->Save(error));
    EXPECT_EQ(console.State("a.kx"), "8/0 C");
    EXPECT_THAT(console.Sent(), ElementsAre("RC_KalvexDocInfo: a.kx"));
}

TEST_F(ClientConsoleTest, OrderlyEndClosesNoScriptOfTheModule) {
    Open(kScript);
    TestConsole& console = AddConsole("A_RC");
    TestConsole& other = AddConsole("B_RC");
    End(console);
    EXPECT_NE(FindScript("a.kx"), nullptr);
    EXPECT_EQ(other.State("a.kx"), "8/0 R");
}

// ---- the window of a script

TEST_F(ClientConsoleTest, LinesAreWantedWhileTheWindowIsNotMinimised) {
    engine::CKalvexDoc& document = Open(kScript);
    TestConsole& console = AddConsole("A_RC");
    console.Sent();
    console.console->OnMinimised(*console.Find("a.kx"), true);
    EXPECT_THAT(console.Sent(), IsEmpty());
    console.console->OnMinimised(*console.Find("a.kx"), false);
    Settle();
    EXPECT_THAT(console.Sent(), ElementsAre("VC:a.kx: -1"));
    EXPECT_TRUE(document.State().m_bLineReportSend);
    console.console->OnMinimised(*console.Find("a.kx"), true);
    Settle();
    EXPECT_THAT(console.Sent(), ElementsAre("VC:a.kx: -2"));
    EXPECT_FALSE(document.State().m_bLineReportSend);
    Break(console);
    console.Sent();
    console.console->OnMinimised(*console.Find("a.kx"), false);
    EXPECT_THAT(console.Sent(), IsEmpty());
    EXPECT_EQ(console.State("a.kx"), "0/0 R");
}

TEST_F(ClientConsoleTest, LineIsShownWhereTheWindowIsNotMinimised) {
    Open(kScript);
    TestConsole& console = AddConsole("A_RC");
    const auto line = [&](int number) {
        m_console->SendLine("a.kx", number);
        Settle();
        return console.Model("a.kx").GetSelectedLine();
    };
    EXPECT_EQ(line(2), -1);
    console.Find("a.kx")->SetMinimised(false);
    EXPECT_EQ(line(1), 1);
    EXPECT_EQ(line(-1), 1);
    EXPECT_EQ(line(0), 0);
    EXPECT_THAT(console.MarkedLines("a.kx"), IsEmpty());
    console.Find("a.kx")->MirrorState(engine::StatePaused);
    EXPECT_EQ(line(2), 2);
    EXPECT_EQ(line(1), 1);
    EXPECT_THAT(console.MarkedLines("a.kx"), ElementsAre(2, 1));
}

}  // namespace
}  // namespace kalvex::console
