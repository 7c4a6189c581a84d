// Who has the session of a script, as consoles see it.
#include <filesystem>

#include "consoles_fixture.h"

namespace kalvex::console {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kScript = "LOCAL X = 5\nLOCAL Y = 6\nLOCAL Z = 7\n";

// Two consoles whose windows are not minimised.
class ClientSessionsTest : public ConsolesTest {
  protected:
    ClientSessionsTest() {
        m_document = &Open(kScript);
        m_first = &AddConsole("A_RC");
        m_second = &AddConsole("B_RC");
        for (TestConsole* console : {m_first, m_second}) {
            console->Find("a.kx")->SetMinimised(false);
        }
        m_second->questions.answer = false;
        Forget();
    }

    void Forget() {
        for (TestConsole* console : {m_first, m_second}) {
            console->Sent();
            console->Shown();
            console->log.Take();
            console->questions.asked.clear();
        }
    }
    // Asks, and lets all that follows happen.
    void Ask(TestConsole& console) {
        console.console->AskForSession(*console.Find("a.kx"));
        Settle();
    }
    // The states of both consoles and of the module.
    std::string States() {
        return m_first->State("a.kx") + ", " + m_second->State("a.kx") + ", " + ModuleState();
    }

    engine::CKalvexDoc* m_document = nullptr;
    TestConsole* m_first = nullptr;
    TestConsole* m_second = nullptr;
};

constexpr const char* kForce =
    "Sesja dla skryptu a.kx jest przejęta przez klienta A_RC, czy wymusić przejęcie sesji?";

// ---- from the module

TEST_F(ClientSessionsTest, ModuleGivesStateLineAndBreakpoints) {
    m_document->SetPriority(1);
    m_document->Start();
    Tick(1);
    m_document->Stop();
    for (const int line : {2, 0}) MarkersOf(*m_document).SetBreakpoint(line, true);
    Publish("a.kx", "11|1");
    m_document->SendLineReports(true);
    Ask(*m_first);
    EXPECT_EQ(States(), "2/4 RC, 0/0 R, 2/4 R");
    EXPECT_THAT(m_first->Breakpoints("a.kx"), ElementsAre(2, 0));
    EXPECT_THAT(m_second->Breakpoints("a.kx"), ElementsAre(1));
    EXPECT_THAT(m_first->MarkedLines("a.kx"), ElementsAre(4));
    EXPECT_THAT(m_first->Sent(), ElementsAre("a.kx: 0|A_RC|0", "VC:a.kx: -1"));
    EXPECT_THAT(m_second->Sent(), IsEmpty());
    EXPECT_TRUE(m_document->State().m_bLineReportSend);
}

TEST_F(ClientSessionsTest, IdleScriptMayBeEditedByItsHolder) {
    m_first->Find("a.kx")->SetMinimised(true);
    Ask(*m_first);
    EXPECT_EQ(States(), "8/0 C, 0/0 R, 0/0 R");
    EXPECT_THAT(m_first->Sent(), ElementsAre("a.kx: 0|A_RC|0", "VC:a.kx: -2"));
    EXPECT_FALSE(m_document->State().m_bLineReportSend);
}

TEST_F(ClientSessionsTest, TextOfARunningScriptIsPrepared) {
    WriteFile("inc.kx", "LOCAL I\n");
    Open("INCLUDE inc.kx\n", "b.kx").Start();
    TestConsole& third = AddConsole("C_RC");
    Take(third, "b.kx");
    EXPECT_EQ(third.State("b.kx"), "9/0 RC");
    EXPECT_TRUE(third.Find("b.kx")->State().m_bIncludesExpanded);
}

TEST_F(ClientSessionsTest, WhoHoldsAsksForNothing) {
    Ask(*m_first);
    Forget();
    Ask(*m_first);
    EXPECT_THAT(m_first->Sent(), IsEmpty());
}

TEST_F(ClientSessionsTest, SessionThatWasNotAskedForIsNotTaken) {
    for (const char* text : {"1|Kalvex_stacja|A_RC|1|0|", "1|B_RC|A_RC", "1||A_RC"}) {
        Publish("a.kx", text);
        EXPECT_EQ(States(), "0/0 R, 0/0 R, 0/0 C") << text;
    }
}

TEST_F(ClientSessionsTest, SessionIsTakenByWhoeverAskedOnly) {
    m_document->AllowControl(false);  // so that nobody answers
    Ask(*m_first);
    EXPECT_EQ(m_first->State("a.kx"), "0/0 R");
    for (const char* text : {"1|Kalvex_stacja|B_RC|1|0|", "1|A_RC|A_RC|1|0|", "1", "1|X"}) {
        Publish("a.kx", text);
        EXPECT_EQ(m_first->State("a.kx"), "0/0 R") << text;
    }
    Publish("a.kx", "1|Kalvex_stacja|A_RC|2|1|7;;-3;9;");
    EXPECT_EQ(m_first->State("a.kx"), "2/1 RC");
    EXPECT_THAT(m_first->Breakpoints("a.kx"), ElementsAre(7, 9));
    m_first->Find("a.kx")->AllowControl(false);
    Publish("a.kx", "1|Kalvex_stacja|A_RC|2|1|");
    EXPECT_EQ(m_first->State("a.kx"), "2/1 R");
}

// ---- text that has been changed is saved first

TEST_F(ClientSessionsTest, ChangedTextIsSavedBeforeTheAsking) {
    m_first->Find("a.kx")->SetReadOnly(false);
    m_first->Edit("a.kx", "LOCAL MOJE");
    m_first->questions.answer = false;
    Ask(*m_first);
    EXPECT_THAT(m_first->questions.asked,
                ElementsAre("Aby przejąć aktywną sesję dokumentu, musi on zostać zapisany. Czy "
                            "zapisać zmiany i wykonać polecenie?"));
    EXPECT_THAT(m_first->Sent(), IsEmpty());
    EXPECT_EQ(m_first->State("a.kx"), "0/0 ");
    m_first->questions.answer = true;
    m_first->console->AskForSession(*m_first->Find("a.kx"));
    EXPECT_THAT(m_first->Sent(), ElementsAre("RC_KalvexDocInfo: a.kx", "a.kx: 0|A_RC|0"));
    EXPECT_EQ(folder.Get("a.kx"), "LOCAL MOJE");
    EXPECT_EQ(m_first->State("a.kx"), "0/0 R");
}

TEST_F(ClientSessionsTest, TextThatCannotBeSavedIsNotAskedFor) {
    m_first->Edit("a.kx", "LOCAL MOJE");
    std::filesystem::remove(folder.Path("a.kx"));
    std::filesystem::create_directory(folder.Path("a.kx"));
    Ask(*m_first);
    EXPECT_THAT(m_first->Sent(), IsEmpty());
    EXPECT_EQ(m_first->log.Take().size(), 1u);
    std::filesystem::remove(folder.Path("a.kx"));
}

// ---- from a console that holds

TEST_F(ClientSessionsTest, HolderSaysThatItHoldsAndIsNotForcedUnlessThePersonWantsIt) {
    Ask(*m_first);
    Forget();
    Ask(*m_second);
    EXPECT_THAT(m_second->questions.asked, ElementsAre(kForce));
    EXPECT_THAT(m_first->Sent(), ElementsAre("a.kx: 21|A_RC|B_RC"));
    EXPECT_THAT(m_second->Sent(), ElementsAre("a.kx: 0|B_RC|0"));
    EXPECT_EQ(States(), "0/0 C, 0/0 R, 0/0 R");
    EXPECT_THAT(m_first->questions.asked, IsEmpty());
}

TEST_F(ClientSessionsTest, ForcedSessionComesWithoutStateAndBreakpointsAndWithoutAWord) {
    Ask(*m_first);
    m_first->Find("a.kx")->Start();
    m_first->console->ToggleBreakpoint(*m_first->Find("a.kx"), 2);
    Settle();
    EXPECT_EQ(States(), "1/0 RC, 1/0 R, 1/0 R");
    EXPECT_THAT(m_second->Breakpoints("a.kx"), ElementsAre(2));
    m_first->Find("a.kx")->Stop();
    Settle();
    m_first->Find("a.kx")->SetReadOnly(false);
    m_first->Edit("a.kx", "LOCAL MOJE");
    Forget();
    m_second->questions.answer = true;
    Ask(*m_second);
    EXPECT_THAT(m_second->questions.asked, ElementsAre(kForce));
    EXPECT_THAT(m_second->Sent(), ElementsAre("a.kx: 0|B_RC|0", "a.kx: 0|B_RC|1", "VC:a.kx: -1"));
    EXPECT_THAT(m_first->Sent(), ElementsAre("a.kx: 21|A_RC|B_RC", "a.kx: 1|A_RC|B_RC"));
    EXPECT_THAT(m_first->questions.asked, IsEmpty());
    EXPECT_EQ(folder.Get("a.kx"), "LOCAL X = 5\r\nLOCAL Y = 6\r\nLOCAL Z = 7\r\n");
    EXPECT_EQ(States(), "2/0 R, 0/0 C, 2/0 R");
    EXPECT_THAT(m_second->Breakpoints("a.kx"), IsEmpty());
    EXPECT_THAT(m_first->Breakpoints("a.kx"), IsEmpty());
    EXPECT_THAT(m_first->MarkedLines("a.kx"), IsEmpty());
    EXPECT_EQ(m_first->Model("a.kx").GetSelectedLine(), -1);
    EXPECT_THAT(MarkersOf(*m_document).LinesOf(workbench::MarkerBreakpoint), ElementsAre(2));
}

TEST_F(ClientSessionsTest, WhoIsNoConsoleGetsTheSessionAtOnce) {
    Ask(*m_first);
    Forget();
    Publish("a.kx", "0|Kalvex_inna|0");
    EXPECT_THAT(m_first->Sent(), ElementsAre("a.kx: 1|A_RC|Kalvex_inna"));
    EXPECT_EQ(m_first->State("a.kx"), "0/0 R");
}

TEST_F(ClientSessionsTest, AskingOfNobodyAndOfItselfIsLeftAlone) {
    Ask(*m_first);
    Forget();
    for (const char* text : {"0", "0|A_RC|1"}) {
        Publish("a.kx", text);
        EXPECT_EQ(m_first->State("a.kx"), "0/0 C") << text;
    }
    EXPECT_THAT(m_first->Sent(), IsEmpty());
}

TEST_F(ClientSessionsTest, WhoDoesNotHoldDoesNotAnswer) {
    Publish("a.kx", "0|C_RC|1");
    Publish("a.kx", "0|1|0");
    EXPECT_THAT(m_first->Sent(), IsEmpty());
    EXPECT_THAT(m_first->questions.asked, IsEmpty());
}

// The flag is not what decides whether the person is asked, but an identity that reads as 1 is.
TEST_F(ClientSessionsTest, HolderIsAskedByAnIdentityThatReadsAsOne) {
    Ask(*m_first);
    m_first->Edit("a.kx", "LOCAL MOJE");
    Forget();
    Publish("a.kx", "0|1_RC|0");
    EXPECT_THAT(m_first->questions.asked,
                ElementsAre("Klient 1_RC wydał polecenie odebrania aktywnej sesji dla skryptu "
                            "a.kx. Czy zapisać zmiany?"));
    EXPECT_EQ(folder.Get("a.kx"), "LOCAL MOJE");
    EXPECT_THAT(m_first->Sent(), ElementsAre("RC_KalvexDocInfo: a.kx", "a.kx: 1|A_RC|1_RC"));
    EXPECT_EQ(m_first->State("a.kx"), "0/0 R");
}

TEST_F(ClientSessionsTest, TextThatIsNotSavedThenIsReadAgain) {
    Ask(*m_first);
    m_first->Edit("a.kx", "LOCAL MOJE");
    m_first->questions.answer = false;
    Forget();
    Publish("a.kx", "0|1|1");
    EXPECT_EQ(m_first->questions.asked.size(), 1u);
    EXPECT_EQ(m_first->Find("a.kx")->Text().GetLine(0), "LOCAL X = 5");
    EXPECT_THAT(m_first->Sent(), ElementsAre("a.kx: 1|A_RC|1"));
}

TEST_F(ClientSessionsTest, UnchangedTextIsNotAskedAbout) {
    Ask(*m_first);
    Forget();
    Publish("a.kx", "0|1|1");
    EXPECT_THAT(m_first->questions.asked, IsEmpty());
    EXPECT_THAT(m_first->Sent(), ElementsAre("a.kx: 1|A_RC|1"));
}

TEST_F(ClientSessionsTest, TextOfARunningScriptIsNotAskedAbout) {
    Ask(*m_first);
    m_first->Find("a.kx")->SetModified(true);
    m_first->Find("a.kx")->SetReadOnly(true);
    Forget();
    Publish("a.kx", "0|1|1");
    EXPECT_THAT(m_first->questions.asked, IsEmpty());
    EXPECT_THAT(m_first->Sent(), ElementsAre("a.kx: 1|A_RC|1"));
}

TEST_F(ClientSessionsTest, QuestionOfAConsoleThatIsGoneIsNotAsked) {
    Ask(*m_first);
    m_second->console->AskForSession(*m_second->Find("a.kx"));
    for (int round = 0; round < 3; ++round) {
        m_second->network.Deliver();
        m_first->network.Deliver();
    }
    m_second->console.reset();
    m_second->loop.Run();
    EXPECT_THAT(m_second->questions.asked, IsEmpty());
}

TEST_F(ClientSessionsTest, QuestionOfAScriptThatHasBeenClosedMeanwhileIsNotAsked) {
    Ask(*m_first);
    Forget();
    m_second->console->AskForSession(*m_second->Find("a.kx"));
    for (const char* text : {"0\t1\t0", "21\tC_RC\tB_RC"}) {
        CVarRCCtrl& variable = *m_console->Variables().FindControlVariable("a.kx");
        variable.SetControlValue(value::CVal(text));
        m_server->AddCurrentValueChange(variable);
    }
    CloseAtModule(*m_document);
    Settle();
    for (TestConsole* console : {m_first, m_second}) {
        EXPECT_THAT(console->questions.asked, IsEmpty());
    }
    EXPECT_THAT(m_first->Sent(), IsEmpty());
}

// ---- 21

TEST_F(ClientSessionsTest, HolderThatIsNamedToSomebodyElseOrWithoutAskingMeansNothing) {
    Publish("a.kx", "21|C_RC|A_RC");
    EXPECT_THAT(m_first->questions.asked, IsEmpty());
    m_document->AllowControl(false);
    Ask(*m_first);
    Publish("a.kx", "21|C_RC|B_RC");
    EXPECT_THAT(m_first->questions.asked, IsEmpty());
    m_first->questions.answer = false;
    Publish("a.kx", "21|C_RC|A_RC");
    EXPECT_THAT(m_first->questions.asked,
                ElementsAre("Sesja dla skryptu a.kx jest przejęta przez klienta C_RC, czy wymusić "
                            "przejęcie sesji?"));
    // It goes on waiting.
    Publish("a.kx", "1|C_RC|A_RC");
    EXPECT_EQ(m_first->State("a.kx"), "0/0 C");
}

TEST_F(ClientSessionsTest, SessionThatComesBeforeTheQuestionIsNotAskedAbout) {
    m_document->AllowControl(false);
    m_first->console->AskForSession(*m_first->Find("a.kx"));
    m_first->network.Deliver();
    CVarRCCtrl& variable = *m_console->Variables().FindControlVariable("a.kx");
    for (const char* text : {"21\tC_RC\tA_RC", "1\tC_RC\tA_RC"}) {
        variable.SetControlValue(value::CVal(text));
        m_server->AddCurrentValueChange(variable);
    }
    Settle();
    EXPECT_EQ(m_first->State("a.kx"), "0/0 C");
    EXPECT_THAT(m_first->questions.asked, IsEmpty());
}

// ---- breaks

TEST_F(ClientSessionsTest, HolderWhoseLineBreaksHasNothingLeft) {
    Ask(*m_first);
    m_first->Find("a.kx")->Start();
    m_first->Find("a.kx")->Stop();
    m_first->console->ToggleBreakpoint(*m_first->Find("a.kx"), 1);
    Settle();
    EXPECT_EQ(m_first->State("a.kx"), "2/0 RC");
    Break(*m_first);
    EXPECT_EQ(States(), "0/0 R, 2/0 R, 2/0 RC");
    EXPECT_THAT(m_first->Breakpoints("a.kx"), IsEmpty());
    EXPECT_FALSE(m_first->Model("a.kx").Markers().Has(1, workbench::MarkerBreakpointColour));
    EXPECT_THAT(m_first->MarkedLines("a.kx"), IsEmpty());
    EXPECT_EQ(m_first->Model("a.kx").GetSelectedLine(), -1);
    m_first->Find("a.kx")->Start();
    EXPECT_EQ(m_first->Sent().back(), "a.kx: 10|1");
}

// The module takes back all sessions and tells nobody.
TEST_F(ClientSessionsTest, BreakOfAnotherConsoleTakesTheSessionOfOneThatLives) {
    Ask(*m_first);
    Break(*m_second);
    EXPECT_EQ(States(), "0/0 C, 0/0 R, 0/0 C");
    Reconnect(*m_second);
    m_second->questions.answer = true;
    Ask(*m_second);
    // Both have it: the module gave what the first one still believes to hold.
    EXPECT_EQ(States(), "0/0 C, 0/0 C, 0/0 R");
    EXPECT_THAT(m_second->questions.asked, IsEmpty());
}

TEST_F(ClientSessionsTest, BreakWhileAskingLeavesTheAskingAndTakesNothing) {
    Ask(*m_first);
    Forget();
    m_second->console->AskForSession(*m_second->Find("a.kx"));
    m_second->network.Break("Kalvex", vantrel::ReasonLost);
    Settle();
    EXPECT_EQ(States(), "0/0 C, 0/0 R, 0/0 C");
    Reconnect(*m_second);
    Settle();
    EXPECT_EQ(States(), "0/0 C, 0/0 R, 0/0 C");
    EXPECT_THAT(m_second->questions.asked, IsEmpty());
}

TEST_F(ClientSessionsTest, WhatWasGivenBeforeABreakIsNotTakenBehindIt) {
    m_first->console->AskForSession(*m_first->Find("a.kx"));
    m_first->network.Break("Kalvex", vantrel::ReasonLost);
    Settle();
    EXPECT_EQ(States(), "0/0 R, 0/0 R, 0/0 C");
    Reconnect(*m_first);
    EXPECT_EQ(States(), "0/0 R, 0/0 R, 0/0 C");
    Ask(*m_first);
    EXPECT_EQ(States(), "0/0 C, 0/0 R, 0/0 R");
}

TEST_F(ClientSessionsTest, RequestToAHolderThatHasGoneGetsNoAnswer) {
    Ask(*m_first);
    End(*m_first);
    m_second->Sent();
    for (int times = 0; times < 2; ++times) {
        m_second->console->AskForSession(*m_second->Find("a.kx"));
        Settle();
    }
    EXPECT_THAT(m_second->Sent(), ElementsAre("a.kx: 0|B_RC|0", "a.kx: 0|B_RC|0"));
    EXPECT_EQ(m_second->State("a.kx"), "0/0 R");
    EXPECT_THAT(m_second->questions.asked, IsEmpty());
    EXPECT_EQ(ModuleState(), "0/0 R");
}

TEST_F(ClientSessionsTest, SessionOfAScriptThatIsOpenedAgainIsNotThatOfTheOldOne) {
    m_document->AllowControl(false);
    Ask(*m_first);
    CloseAtModule(*m_document);
    Settle();
    Open(kScript).AllowControl(false);
    Publish("RC_KalvexDocInfo", "a.kx");
    EXPECT_EQ(m_first->State("a.kx"), "8/0 R");
    Publish("a.kx", "1|Kalvex_stacja|A_RC|0|0|");
    EXPECT_EQ(m_first->State("a.kx"), "8/0 R");
}

TEST_F(ClientSessionsTest, SessionOfAScriptThatWasClosedByHandIsNotAskedForAnyMore) {
    m_document->AllowControl(false);
    Ask(*m_first);
    m_first->Close("a.kx");
    Settle();
    Open(kScript, "a.kx").AllowControl(false);
    Publish("RC_KalvexDocInfo", "a.kx");
    Publish("a.kx", "1|Kalvex_stacja|A_RC|0|0|");
    EXPECT_EQ(m_first->State("a.kx"), "8/0 R");
}

}  // namespace
}  // namespace kalvex::console
