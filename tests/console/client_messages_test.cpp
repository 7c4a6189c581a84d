// What a console does with each message of its module, and what it sends.
#include "console/VariableMessages.h"
#include "consoles_fixture.h"

namespace kalvex::console {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kScript = "LOCAL X = 5\nLOCAL Y = 6\nLOCAL Z = 7\n";

// Its console has a window that is not minimised, and no session unless told.
class ClientMessagesTest : public ConsolesTest {
  protected:
    ClientMessagesTest() {
        m_document = &Open(kScript);
        m_client = &AddConsole("A_RC");
        m_copy = m_client->Find("a.kx");
        m_copy->SetMinimised(false);
        Forget();
    }

    void Forget() {
        m_client->Sent();
        m_client->Shown();
        m_client->log.Take();
    }
    std::string State() { return m_client->State("a.kx"); }
    std::vector<int> Marked() { return m_client->MarkedLines("a.kx"); }
    std::vector<int> Breakpoints() { return m_client->Breakpoints("a.kx"); }
    workbench::DocumentModel& Model() { return m_client->Model("a.kx"); }
    void Tell(std::string_view text) { Publish("a.kx", text); }

    engine::CKalvexDoc* m_document = nullptr;
    TestConsole* m_client = nullptr;
    engine::CKalvexDoc* m_copy = nullptr;
};

// ---- runs, as somebody else controls them

TEST_F(ClientMessagesTest, StartedScriptIsPreparedAsForARun) {
    WriteFile("inc.kx", "LOCAL I\n");
    WriteFile("a.kx", "INCLUDE inc.kx\nLOCAL X\n");
    m_copy->SetReadOnly(false);
    Model().SetLineMarker(1, true);
    Model().SelectLine(1);
    Tell("3|1|2");
    EXPECT_EQ(State(), "1/2 R");
    EXPECT_EQ(m_copy->Text().GetLine(1), "LOCAL I");
    EXPECT_TRUE(m_copy->State().m_bIncludesExpanded);
    EXPECT_THAT(Marked(), IsEmpty());
    EXPECT_EQ(Model().GetSelectedLine(), -1);
    EXPECT_EQ(Model().Variables().GetCount(), 2u);
    EXPECT_THAT(m_client->Shown(), ElementsAre("variables a.kx"));
    Tell("3|1|-7");
    EXPECT_EQ(State(), "1/0 R");
}

TEST_F(ClientMessagesTest, StoppedScriptShowsItsLine) {
    Tell("3|1|0");
    Tell("5|2|1");
    EXPECT_EQ(State(), "2/1 R");
    EXPECT_THAT(Marked(), ElementsAre(1));
    EXPECT_EQ(Model().GetSelectedLine(), 1);
    Tell("5|2");
    EXPECT_EQ(Model().GetSelectedLine(), -1);
    EXPECT_EQ(State(), "2/1 R");
    Tell("5");
    EXPECT_EQ(State(), "0/1 R");
}

TEST_F(ClientMessagesTest, StepsLeaveTheirMarksUntilTheNextStart) {
    Tell("5|2|0");
    Tell("9|6|0");
    Tell("9|2|1");
    EXPECT_EQ(State(), "2/1 R");
    EXPECT_THAT(Marked(), ElementsAre(0, 1));
    EXPECT_EQ(Model().GetSelectedLine(), 1);
    Tell("3|1|1");
    EXPECT_THAT(Marked(), IsEmpty());
}

TEST_F(ClientMessagesTest, BreakpointThatIsReachedStops) {
    Tell("16|2|2");
    EXPECT_EQ(State(), "2/2 R");
    EXPECT_THAT(Marked(), ElementsAre(2));
    EXPECT_EQ(Model().GetSelectedLine(), 2);
}

TEST_F(ClientMessagesTest, MinimisedWindowShowsNoLine) {
    m_copy->SetMinimised(true);
    Tell("16|10|2");
    EXPECT_EQ(State(), "10/2 R");
    EXPECT_THAT(Marked(), IsEmpty());
    EXPECT_EQ(Model().GetSelectedLine(), -1);
}

TEST_F(ClientMessagesTest, WindowIsThisSidesOwn) {
    Tell("5|10|2");
    EXPECT_EQ(State(), "2/2 R");
    m_copy->SetMinimised(true);
    Tell("9|2|2");
    EXPECT_EQ(State(), "10/2 R");
}

TEST_F(ClientMessagesTest, ResetScriptIsIdleWithTheTextOfItsFile) {
    Tell("5|2|1");
    Tell("9|2|2");
    WriteFile("a.kx", "LOCAL NEU\n");
    m_client->Shown();
    Tell("7");
    EXPECT_EQ(State(), "0/0 R");
    EXPECT_THAT(Marked(), IsEmpty());
    EXPECT_EQ(Model().GetSelectedLine(), -1);
    EXPECT_EQ(m_copy->Text().GetLine(0), "LOCAL NEU");
    EXPECT_EQ(Model().Variables().GetCount(), 0u);
    EXPECT_THAT(m_client->Shown(), ElementsAre("variables a.kx"));
    EXPECT_THAT(m_client->log.Take(), IsEmpty());
    Tell("5|2|1");
    Tell("7|2|1");
    EXPECT_EQ(State(), "0/0 R");
}

// ---- breakpoints

TEST_F(ClientMessagesTest, BreakpointsOfTheCopyAreThoseThatAreTold) {
    for (const char* text : {"11|2", "11|2", "11|0", "11", "11|-3"}) Tell(text);
    EXPECT_THAT(Breakpoints(), ElementsAre(2, 0));
    Tell("13|2");
    EXPECT_THAT(Breakpoints(), ElementsAre(0));
    Tell("13");
    EXPECT_THAT(Breakpoints(), ElementsAre(0));
    Tell("11|1");
    Model().SetLineMarker(1, true);
    Tell("14");
    EXPECT_THAT(Breakpoints(), IsEmpty());
    EXPECT_FALSE(Model().Markers().Has(1, workbench::MarkerBreakpointColour));
    EXPECT_THAT(Marked(), ElementsAre(1));
    EXPECT_THAT(m_client->Sent(), IsEmpty());
}

// ---- variables

TEST_F(ClientMessagesTest, ValuesGoToTheRowOfTheirVariable) {
    m_document->Start();
    m_document->SetPriority(1);
    Tick(1);
    m_client->console->AskForVariables(*m_copy);
    Settle();
    EXPECT_THAT(m_client->Sent(), ElementsAre("VL:a.kx: 20"));
    EXPECT_THAT(m_client->Shown(),
                ElementsAre("variables a.kx|X|L|1970-01-01 01:00:00 ( 0 ) 5.00||||",
                            "variables a.kx|Y|L|1970-01-01 01:00:00 ( 0 ) 6.00||||",
                            "variables a.kx|Z|L|1970-01-01 01:00:00 ( 0 ) 7.00||||"));
    m_client->console->AskForVariable(*m_copy, "Y");
    m_client->console->AskForVariable(*m_copy, "");
    Settle();
    EXPECT_THAT(m_client->Sent(), ElementsAre("VL:a.kx: 18|Y"));
    EXPECT_THAT(m_client->Shown(),
                ElementsAre("variables a.kx|Y|L|1970-01-01 01:00:00 ( 0 ) 6.00||||"));
    Publish("VL:a.kx", "19|NIE|;1;");
    Publish("VL:a.kx", "18|X");
    Publish("a.kx", "19|X|;1;");
    EXPECT_THAT(m_client->Shown(), IsEmpty());
}

TEST_F(ClientMessagesTest, ValueIsWritten) {
    m_document->Start();
    m_document->SetPriority(1);
    Tick(1);
    value::CVal value(12.5);
    value.SetStatus(32);
    EXPECT_TRUE(m_client->console->SetVariable(*m_copy, "X", value));
    EXPECT_TRUE(m_client->console->SetVariable(*m_copy, "Y", value::CVal("tekst")));
    Settle();
    EXPECT_THAT(m_client->Sent(),
                ElementsAre("VL:a.kx: 17|X|12.50|171|32", "VL:a.kx: 17|Y|tekst|190|0"));
    EXPECT_EQ(Value(*m_document, "X"), "171:12.50");
    EXPECT_EQ(Value(*m_document, "Y"), "190:tekst");
    EXPECT_FALSE(m_client->console->SetVariable(*m_copy, "X", value::CVal()));
    EXPECT_FALSE(m_client->console->SetVariable(*m_copy, "X", value::CVal("a\tb")));
    EXPECT_THAT(m_client->Sent(), IsEmpty());
}

// ---- what is none of a console's messages

TEST_F(ClientMessagesTest, CodesOfOthersAreLeftAlone) {
    for (const char* text : {"", "2", "4", "6", "8", "10|1", "12|1", "15", "17|X|1|190|0", "18|X",
                             "20", "22", "99", "-1", "x"}) {
        Tell(text);
        EXPECT_EQ(State(), "0/0 R") << text;
    }
    EXPECT_THAT(Breakpoints(), IsEmpty());
    Publish("VL:a.kx", "3|1|0");
    EXPECT_EQ(State(), "0/0 R");
    EXPECT_THAT(m_client->Sent(), IsEmpty());
}

TEST_F(ClientMessagesTest, MessageOfBadStatusIsKeptAndNothingElse) {
    CVarRCCtrl& variable = *m_console->Variables().FindControlVariable("a.kx");
    for (const int status : {1, 2}) {
        value::CVal value("3\t1\t0");
        value.SetStatus(static_cast<std::uint16_t>(status));
        variable.SetControlValue(value);
        m_server->AddCurrentValueChange(variable);
    }
    variable.SetControlValue(value::CVal(3));
    m_server->AddCurrentValueChange(variable);
    Settle();
    EXPECT_EQ(State(), "0/0 R");
    EXPECT_EQ(m_client->client->FindConnection("Kalvex")->GetVarVal("a.kx")->Value().Integer(), 3);
}

// ---- commands

TEST_F(ClientMessagesTest, WithoutTheSessionNothingIsSent) {
    Tell("11|1");
    EXPECT_FALSE(m_copy->Start());
    m_copy->Stop();
    m_copy->Step();
    m_copy->Reset();
    ClientConsole& console = *m_client->console;
    console.ToggleBreakpoint(*m_copy, 1);
    console.RemoveBreakpoints(*m_copy);
    console.OnLinesInserted(*m_copy, 0, 1);
    console.OnLinesDeleted(*m_copy, 0, 3);
    EXPECT_THAT(m_client->Sent(), IsEmpty());
    EXPECT_THAT(Breakpoints(), ElementsAre(1));
}

TEST_F(ClientMessagesTest, HolderRunsTheScriptAtTheModule) {
    Take(*m_client);
    Forget();
    EXPECT_FALSE(m_copy->Start());
    EXPECT_EQ(State(), "0/0 C");
    Settle();
    EXPECT_EQ(State(), "1/0 RC");
    m_document->SetPriority(1);
    m_copy->Stop();
    Settle();
    EXPECT_EQ(State(), "2/0 RC");
    m_copy->Step();
    Settle();
    EXPECT_EQ(State(), "6/0 RC");
    Tick(1);
    Settle();
    EXPECT_EQ(State(), "6/1 RC");  // the module tells of the step before it is over
    m_copy->Reset();
    Settle();
    EXPECT_EQ(State(), "0/0 C");
    EXPECT_THAT(m_client->Sent(), ElementsAre("a.kx: 2", "a.kx: 4", "a.kx: 8", "a.kx: 6"));
}

TEST_F(ClientMessagesTest, HolderIsAskedToSaveBeforeAStart) {
    Take(*m_client);
    m_client->Edit("a.kx", "LOCAL INNE\r\n");
    Forget();
    m_client->questions.answer = false;
    m_copy->Start();
    EXPECT_THAT(m_client->Sent(), IsEmpty());
    m_client->questions.answer = true;
    m_copy->Start();
    EXPECT_THAT(m_client->questions.asked,
                ElementsAre("Czy zapisać zmiany?", "Czy zapisać zmiany?"));
    EXPECT_THAT(m_client->Sent(), ElementsAre("RC_KalvexDocInfo: a.kx", "a.kx: 2"));
    Settle();
    EXPECT_EQ(m_document->GetLine(0), "LOCAL INNE");
}

TEST_F(ClientMessagesTest, BreakpointsAreSetByTheReply) {
    Take(*m_client);
    Forget();
    ClientConsole& console = *m_client->console;
    console.ToggleBreakpoint(*m_copy, 2);
    EXPECT_THAT(Breakpoints(), IsEmpty());
    Settle();
    EXPECT_THAT(Breakpoints(), ElementsAre(2));
    console.ToggleBreakpoint(*m_copy, 2);
    EXPECT_THAT(Breakpoints(), ElementsAre(2));
    Settle();
    EXPECT_THAT(Breakpoints(), IsEmpty());
    console.ToggleBreakpoint(*m_copy, 1);
    Settle();
    console.RemoveBreakpoints(*m_copy);
    EXPECT_THAT(Breakpoints(), ElementsAre(1));
    Settle();
    EXPECT_THAT(Breakpoints(), IsEmpty());
    EXPECT_THAT(m_client->Sent(),
                ElementsAre("a.kx: 10|2", "a.kx: 12|2", "a.kx: 10|1", "a.kx: 15"));
}

// ---- lines that come and go while breakpoints stand

class ClientMessagesLinesTest : public ClientMessagesTest {
  protected:
    ClientMessagesLinesTest() {
        Take(*m_client);
        for (const int line : {3, 1, 2}) m_client->console->ToggleBreakpoint(*m_copy, line);
        Settle();
        Forget();
    }

    std::vector<int> OfModule() {
        return MarkersOf(*m_document).LinesOf(workbench::MarkerBreakpoint);
    }
};

TEST_F(ClientMessagesLinesTest, BreakpointsBehindInsertedLinesMove) {
    m_client->console->OnLinesInserted(*m_copy, 2, 1);
    EXPECT_THAT(m_client->Sent(),
                ElementsAre("a.kx: 12|3", "a.kx: 10|4", "a.kx: 12|2", "a.kx: 10|3"));
    EXPECT_THAT(Breakpoints(), ElementsAre(3, 1, 2));
    Settle();
    EXPECT_THAT(Breakpoints(), ElementsAre(1, 4, 3));
    EXPECT_THAT(OfModule(), ElementsAre(1, 4, 3));
}

TEST_F(ClientMessagesLinesTest, BreakpointsInDeletedLinesGoAndThoseBehindMove) {
    m_client->console->OnLinesDeleted(*m_copy, 1, 1);
    EXPECT_THAT(m_client->Sent(),
                ElementsAre("a.kx: 12|1", "a.kx: 12|2", "a.kx: 10|1", "a.kx: 12|3", "a.kx: 10|2"));
    EXPECT_THAT(Breakpoints(), ElementsAre(3, 2));
    Settle();
    EXPECT_THAT(Breakpoints(), ElementsAre(1, 2));
    EXPECT_THAT(OfModule(), ElementsAre(1, 2));
}

}  // namespace
}  // namespace kalvex::console
