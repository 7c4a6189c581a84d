// What a module does when a console writes to its variables, message by message.
#include "console_fixture.h"

namespace kalvex::console {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kScript = "LOCAL X = 5\nLOCAL Y = 6\nLOCAL Z = 7\n";

class ModuleConsoleTest : public ConsoleTest {
  protected:
    ModuleConsoleTest() {
        m_document = &Open(kScript);
        m_client = &LogIn();
        Subscribe(*m_client, {"a.kx", "VL:a.kx", "VC:a.kx"});
    }

    std::vector<std::string> Command(std::string_view text) { return Say(*m_client, "a.kx", text); }
    std::vector<std::string> List(std::string_view text) { return Say(*m_client, "VL:a.kx", text); }

    engine::CKalvexDoc* m_document = nullptr;
    TestClient* m_client = nullptr;
};

TEST_F(ModuleConsoleTest, StartIsAnsweredWhenItSucceeds) {
    EXPECT_THAT(Command("2"), ElementsAre("a.kx: 3|1|0"));
    EXPECT_TRUE(m_document->State().m_bRunning);
    m_document->SetMinimised(true);
    EXPECT_THAT(Command("2"), ElementsAre("a.kx: 3|9|0"));
    WriteFile("b.kx", "IF 1 == 1 THEN\n");
    Say(*m_client, "RC_KalvexDocInfo", "b.kx");
    Subscribe(*m_client, {"b.kx"});
    EXPECT_THAT(Say(*m_client, "b.kx", "2"), IsEmpty());
}

TEST_F(ModuleConsoleTest, StopAndResetAreAnswered) {
    Command("2");
    m_document->SetPriority(1);
    Tick(1);
    EXPECT_THAT(Command("4"), ElementsAre("a.kx: 5|2|4"));
    EXPECT_TRUE(m_document->State().m_bPaused);
    EXPECT_THAT(Command("6"), ElementsAre("a.kx: 7"));
    EXPECT_FALSE(m_document->State().m_bPaused);
}

TEST_F(ModuleConsoleTest, StepIsAnsweredAtOnceAndBehindTheLineWhileAConsoleHolds) {
    Command("2");
    Command("4");
    EXPECT_THAT(Command("8"), ElementsAre("a.kx: 9|6|0"));
    Tick(100);
    EXPECT_THAT(Heard(*m_client), IsEmpty());
    Command("0|Konsola_RC|0");
    EXPECT_THAT(Command("8"), ElementsAre("a.kx: 9|6|1"));
    Tick(100);
    EXPECT_THAT(Heard(*m_client), ElementsAre("a.kx: 9|6|2"));
}

TEST_F(ModuleConsoleTest, BreakpointsAreSetAndRemoved) {
    EXPECT_THAT(Command("10|2"), ElementsAre("a.kx: 11|2"));
    EXPECT_THAT(Command("10|2"), ElementsAre("a.kx: 11|2"));
    EXPECT_THAT(Command("10"), ElementsAre("a.kx: 11|0"));
    EXPECT_THAT(Command("10|-1"), IsEmpty());
    EXPECT_THAT(MarkersOf(*m_document).LinesOf(workbench::MarkerBreakpoint), ElementsAre(2, 0));
    EXPECT_THAT(Command("12|2"), ElementsAre("a.kx: 13|2"));
    EXPECT_THAT(Command("12|-4"), ElementsAre("a.kx: 13|-4"));
    EXPECT_THAT(MarkersOf(*m_document).LinesOf(workbench::MarkerBreakpoint), ElementsAre(0));
    EXPECT_THAT(Command("15"), ElementsAre("a.kx: 14"));
    EXPECT_THAT(MarkersOf(*m_document).LinesOf(workbench::MarkerBreakpoint), IsEmpty());
}

TEST_F(ModuleConsoleTest, ScriptThatReachesABreakpointStopsAndTells) {
    Command("10|1");
    Command("2");
    Heard(*m_client);
    Tick(200);
    EXPECT_THAT(Heard(*m_client), ElementsAre("a.kx: 16|2|1"));
    Command("8");
    Tick(100);
    EXPECT_EQ(m_document->State().m_nCurrentLine, 2);
}

TEST_F(ModuleConsoleTest, CodesOfOthersAreLeftAlone) {
    for (const char* text : {"", "3|9|0", "5", "7", "9", "11|1", "13|1", "14", "16|2|1",
                             "17|X|1|190|0", "18|X", "19|X|;", "20", "22", "-1"}) {
        EXPECT_THAT(Command(text), IsEmpty()) << text;
    }
    EXPECT_THAT(List("2"), IsEmpty());
    EXPECT_FALSE(m_document->State().m_bRunning);
}

TEST_F(ModuleConsoleTest, MessageOfBadStatusIsKeptAndNothingElse) {
    for (const int status : {1, 2}) {
        value::CVal value("2");
        value.SetStatus(static_cast<std::uint16_t>(status));
        EXPECT_EQ(Write(*m_client, "a.kx", value), vantrel::ResultOk);
        EXPECT_FALSE(m_document->State().m_bRunning);
    }
    EXPECT_THAT(Heard(*m_client), IsEmpty());
    TestClient& other = LogIn();
    EXPECT_THAT(Subscribe(other, {"a.kx"}), ElementsAre("a.kx: 2"));
}

TEST_F(ModuleConsoleTest, NumberIsNoMessage) {
    for (const char* variable : {"a.kx", "VL:a.kx", "RC_KalvexDocInfo"}) {
        for (const value::CVal& number : {value::CVal(2), value::CVal(2.5), value::CVal()}) {
            Write(*m_client, variable, value::CVal("a text before it that is rather long"));
            Heard(*m_client);
            EXPECT_EQ(Write(*m_client, variable, number), vantrel::ResultOk);
            EXPECT_THAT(Heard(*m_client), IsEmpty());
        }
    }
    EXPECT_THAT(Heard(*m_client), IsEmpty());
    EXPECT_FALSE(m_document->State().m_bRunning);
}

TEST_F(ModuleConsoleTest, VariablesAreTold) {
    WriteFile("v.kx", "LOCAL X = 5\nLIST L\nREMOTE R srv@V\nPOINTER P\nSETPTR P = \"X\"\n");
    Say(*m_client, "RC_KalvexDocInfo", "v.kx");
    Subscribe(*m_client, {"v.kx", "VL:v.kx"});
    Say(*m_client, "v.kx", "2");
    FindScript("v.kx")->SetPriority(1);
    Tick(10);
    EXPECT_THAT(Say(*m_client, "VL:v.kx", "18|X"),
                ElementsAre("VL:v.kx: 19|X|;1970-01-01 01:00:00 ( 0 ) 5.00;"));
    EXPECT_THAT(
        Say(*m_client, "VL:v.kx", "20"),
        ElementsAre("VL:v.kx: 19|X|;1970-01-01 01:00:00 ( 0 ) 5.00;", "VL:v.kx: 19|L|;;",
                    "VL:v.kx: 19|R|;;;;;;", "VL:v.kx: 19|P|;1970-01-01 01:00:00 ( 0 ) 5.00;"));
    EXPECT_THAT(Say(*m_client, "VL:v.kx", "18|NIE"), IsEmpty());
    EXPECT_THAT(Say(*m_client, "VL:v.kx", "17|X|7|171|32"), IsEmpty());
    EXPECT_THAT(Say(*m_client, "VL:v.kx", "18|X"),
                ElementsAre("VL:v.kx: 19|X|;1970-01-01 01:00:00 ( 32 ) 7.00;"));
    EXPECT_THAT(Say(*m_client, "VL:v.kx", "17|NIE|7|171|32"), IsEmpty());
}

TEST_F(ModuleConsoleTest, PointerTellsTheSlotsOfWhatItLeadsTo) {
    WriteFile("v.kx", "REMOTE R srv@V\nPOINTER P\nSETPTR P = \"R\"\nPOINTER Q\n");
    Say(*m_client, "RC_KalvexDocInfo", "v.kx");
    Subscribe(*m_client, {"v.kx", "VL:v.kx"});
    Say(*m_client, "v.kx", "2");
    FindScript("v.kx")->SetPriority(1);
    Tick(10);
    EXPECT_THAT(Say(*m_client, "VL:v.kx", "18|P"), ElementsAre("VL:v.kx: 19|P|;;;;;;"));
    EXPECT_THAT(Say(*m_client, "VL:v.kx", "18|Q"), ElementsAre("VL:v.kx: 19|Q|;;"));
    EXPECT_EQ(FindScript("v.kx")->LastError().m_nErrorCode, 0);
}

TEST_F(ModuleConsoleTest, LineIsReportedOnceASecondWhileItIsWanted) {
    Command("2");
    m_document->SetPriority(1);
    EXPECT_THAT(SayLine(*m_client, "VC:a.kx", -2), IsEmpty());
    EXPECT_FALSE(m_document->State().m_bLineReportSend);
    EXPECT_THAT(SayLine(*m_client, "VC:a.kx", -1), IsEmpty());
    EXPECT_THAT(SayLine(*m_client, "VC:a.kx", 7), IsEmpty());
    EXPECT_TRUE(m_document->State().m_bLineReportSend);
    Tick(1);
    EXPECT_THAT(Heard(*m_client), ElementsAre("VC:a.kx: 1"));
    Tick(1);
    clock.Advance(1000);
    Tick(1);
    EXPECT_THAT(Heard(*m_client), IsEmpty());
    clock.Advance(1000);
    Tick(1);
    EXPECT_THAT(Heard(*m_client), ElementsAre("VC:a.kx: 4"));
    SayLine(*m_client, "VC:a.kx", -2);
    clock.Advance(2000);
    Tick(1);
    EXPECT_THAT(Heard(*m_client), IsEmpty());
}

TEST_F(ModuleConsoleTest, LevelIsSetAndPublished) {
    EXPECT_THAT(Subscribe(*m_client, {"SYS_LogLevel"}), ElementsAre("SYS_LogLevel: "));
    EXPECT_THAT(SayLine(*m_client, "SYS_LogLevel", 2), ElementsAre("SYS_LogLevel: 2"));
    EXPECT_EQ(m_level, 2);
    EXPECT_THAT(SayLine(*m_client, "SYS_LogLevel", 7), ElementsAre("SYS_LogLevel: 7"));
}

TEST_F(ModuleConsoleTest, ScriptIsOpenedAndClosedForAConsole) {
    Subscribe(*m_client, {"RC_KalvexDocInfo", "b.kx"});
    WriteFile("b.kx", kScript);
    EXPECT_THAT(Say(*m_client, "RC_KalvexDocInfo", "b.kx"),
                ElementsAre("b.kx: ", "RC_KalvexDocInfo: b.kx"));
    ASSERT_NE(FindScript("b.kx"), nullptr);
    EXPECT_THAT(Say(*m_client, "RC_KalvexDocInfo", "b.kx"), ElementsAre("RC_KalvexDocInfo: b.kx"));
    EXPECT_EQ(documents.size(), 2u);
    EXPECT_THAT(Say(*m_client, "RC_KalvexDocInfo", "nie.kx"),
                ElementsAre("RC_KalvexDocInfo: nie.kx"));
    EXPECT_THAT(Say(*m_client, "RC_KalvexDocInfo", ""), IsEmpty());
    EXPECT_THAT(Say(*m_client, "RC_KalvexDocInfo", "~b.kx"),
                ElementsAre("RC_KalvexDocInfo: ~b.kx"));
    EXPECT_EQ(FindScript("b.kx"), nullptr);
    EXPECT_THAT(Say(*m_client, "RC_KalvexDocInfo", "~b.kx"),
                ElementsAre("RC_KalvexDocInfo: ~b.kx"));
    // The variables of a script that a console has closed stay.
    EXPECT_THAT(Say(*m_client, "b.kx", "2"), IsEmpty());
}

TEST_F(ModuleConsoleTest, ScriptClosedAtTheModuleTakesItsVariablesAlong) {
    Subscribe(*m_client, {"RC_KalvexDocInfo"});
    CloseAtModule(*m_document);
    EXPECT_THAT(Heard(*m_client),
                testing::UnorderedElementsAre("RC_KalvexDocInfo: ~a.kx", "a.kx: ! 0",
                                              "VL:a.kx: ! 0", "VC:a.kx: ! 0"));
    EXPECT_EQ(Write(*m_client, "a.kx", value::CVal("2")), vantrel::ResultNothing);
}

}  // namespace
}  // namespace kalvex::console
