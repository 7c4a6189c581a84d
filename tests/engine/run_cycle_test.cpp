#include <gmock/gmock.h>

#include <filesystem>

#include "support/script_world.h"

namespace kalvex::engine {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class RunCycleTest : public support::ScriptWorld {};

// A view that keeps what it is told.
class ViewRecorder final : public ScriptView {
  public:
    void SelectLine(int line) override { calls.push_back("select " + std::to_string(line)); }
    void SetLineMarker(int line, bool set) override {
        calls.push_back((set ? "mark " : "unmark ") + std::to_string(line));
    }
    void SetReadOnly(bool readOnly) override {
        calls.push_back(readOnly ? "read-only" : "editable");
    }
    void RefreshTitle() override { calls.push_back("title"); }
    void ClearAllMarkers() override { calls.push_back("clear markers"); }
    void RefreshVariables() override { calls.push_back("variables"); }
    bool HasBreakpoint(int line) const override { return line == breakpoint; }

    std::vector<std::string> calls;
    int breakpoint = -1;
};

class ConsoleRecorder final : public ConsoleLink {
  public:
    void SendCommand(std::string_view key, ConsoleCommand command) override {
        calls.push_back(std::string(key) + " command " + std::to_string(static_cast<int>(command)));
    }
    void SendLine(std::string_view key, int line) override {
        calls.push_back(std::string(key) + " line " + std::to_string(line));
    }
    void SendState(std::string_view key, ConsoleStateMessage message, int stateWord,
                   int line) override {
        calls.push_back(std::string(key) + " state " + std::to_string(static_cast<int>(message)) +
                        " word " + std::to_string(stateWord) + " line " + std::to_string(line));
    }

    std::vector<std::string> calls;
};

TEST_F(RunCycleTest, NewDocumentIsIdle) {
    CKalvexDoc document(services);
    EXPECT_EQ(document.GetStateWord(), 0);
    EXPECT_EQ(Error(document), "0");
    EXPECT_EQ(document.State().m_nPriority, 50);
    EXPECT_EQ(document.State().m_nMarkedLine, -1);
    EXPECT_TRUE(document.State().m_bControlAllowed);
    EXPECT_EQ(document.GetLineCount(), 1);
}

TEST_F(RunCycleTest, EmptyTextStartsAndIsFinishedAfterItsOnlyLine) {
    CKalvexDoc& document = Open("");
    EXPECT_TRUE(document.Start());
    EXPECT_TRUE(document.ExecuteLine());
    EXPECT_EQ(document.State().m_nCurrentLine, 1);
    EXPECT_TRUE(document.ExecuteLine());
    EXPECT_EQ(document.State().m_nCurrentLine, 1);
    EXPECT_TRUE(document.State().m_bRunning);
}

TEST_F(RunCycleTest, OneLineIsExecutedAndThePointerIsPastTheEnd) {
    CKalvexDoc& document = Open("LOCAL A = 3");
    document.Start();
    Tick(1);
    EXPECT_EQ(Value(document, "A"), "171:3.00");
    EXPECT_EQ(document.State().m_nCurrentLine, 1);
}

TEST_F(RunCycleTest, LineIsDueEveryFiftiethTick) {
    CKalvexDoc& document = Open("LOCAL A\nLOCAL B\nLOCAL C");
    document.Start();
    Tick(1);
    EXPECT_EQ(document.State().m_nCurrentLine, 1);
    Tick(49);
    EXPECT_EQ(document.State().m_nCurrentLine, 1);
    Tick(1);
    EXPECT_EQ(document.State().m_nCurrentLine, 2);
}

TEST_F(RunCycleTest, TopPriorityRunsTenLinesATickAndTwentyWhenMinimised) {
    std::string text;
    for (int i = 0; i < 100; ++i) text += "LOCAL A" + std::to_string(i) + "\n";
    CKalvexDoc& document = Open(text);
    document.Start();
    document.SetPriority(1);
    Tick(1);
    EXPECT_EQ(document.State().m_nCurrentLine, 10);
    document.SetMinimised(true);
    Tick(1);
    EXPECT_EQ(document.State().m_nCurrentLine, 30);
}

TEST_F(RunCycleTest, BlockedTicksRunNothing) {
    CKalvexDoc& document = Open("LOCAL A\n");
    document.Start();
    ticks.Block(true);
    Tick(10);
    EXPECT_EQ(document.State().m_nCurrentLine, 0);
    ticks.Block(false);
    Tick(1);
    EXPECT_EQ(document.State().m_nCurrentLine, 1);
}

TEST_F(RunCycleTest, RemovedDocumentIsNotTicked) {
    CKalvexDoc& document = Open("LOCAL A\n");
    document.Start();
    ticks.Remove(document);
    Tick(10);
    EXPECT_EQ(document.State().m_nCurrentLine, 0);
}

TEST_F(RunCycleTest, StartLogsItsTwoLinesAndMakesTheDocumentReadOnly) {
    CKalvexDoc& document = Open("LOCAL A");
    EXPECT_FALSE(document.IsReadOnly());
    EXPECT_TRUE(document.Start());
    EXPECT_TRUE(document.IsReadOnly());
    EXPECT_THAT(Log(platform::LogAlways),
                ElementsAre("main.kx : Inicjowanie skryptu ", "main.kx : Start skryptu "));
    EXPECT_EQ(document.State().m_nReportedLine, 65535);
    EXPECT_EQ(document.State().m_nReportedError, -1);
    EXPECT_EQ(document.GetStateWord(), StateRunning);
}

TEST_F(RunCycleTest, StartRunsTheTextOnDisk) {
    CKalvexDoc& document = Open("LOCAL OLD");
    WriteFile("main.kx", "LOCAL NEW");
    document.Start();
    Tick(1);
    EXPECT_EQ(Value(document, "NEW"), "255:");
    EXPECT_EQ(Value(document, "OLD"), "missing");
}

TEST_F(RunCycleTest, StartWhileRunningKeepsThePointer) {
    CKalvexDoc& document = Open("LOCAL A = 1\nLOCAL B = 2\nLOCAL C = 3");
    document.Start();
    Tick(1);
    EXPECT_TRUE(document.Start());
    EXPECT_EQ(document.State().m_nCurrentLine, 1);
    Tick(100);
    EXPECT_EQ(document.State().m_nCurrentLine, 3);
}

TEST_F(RunCycleTest, FinishedScriptStartedAgainStaysAtItsEnd) {
    CKalvexDoc& document = Run("LOCAL A = 1\nSET A = A + 1");
    EXPECT_EQ(Value(document, "A"), "171:2.00");
    document.Stop();
    document.Start();
    Tick(200);
    EXPECT_EQ(Value(document, "A"), "171:2.00");
}

TEST_F(RunCycleTest, ModifiedDocumentIsSavedAfterTheQuestion) {
    CKalvexDoc& document = Open("LOCAL A");
    document.Text().SetText("LOCAL ZMIENIONA");
    document.SetModified(true);
    EXPECT_TRUE(document.Start());
    EXPECT_THAT(questions.asked, ElementsAre("Czy zapisać zmiany?"));
    EXPECT_FALSE(document.IsModified());
    Tick(1);
    EXPECT_EQ(Value(document, "ZMIENIONA"), "255:");
}

TEST_F(RunCycleTest, ModifiedDocumentThatIsNotSavedDoesNotStart) {
    CKalvexDoc& document = Open("LOCAL A");
    document.SetModified(true);
    questions.answer = false;
    EXPECT_FALSE(document.Start());
    EXPECT_EQ(document.GetStateWord(), 0);
    EXPECT_THAT(Log(), IsEmpty());
}

TEST_F(RunCycleTest, ChangesThatCannotBeSavedAreNotLost) {
    CKalvexDoc& document = Open("LOCAL A");
    document.Text().SetText("LOCAL B");
    document.SetModified(true);
    std::filesystem::remove(folder.Path("main.kx"));
    folder.MakeFolder("main.kx");
    EXPECT_FALSE(document.Start());
    EXPECT_TRUE(document.IsModified());
    EXPECT_EQ(document.Text().GetLine(0), "LOCAL B");
    EXPECT_THAT(Log(), ElementsAre("main.kx : Is a directory"));
}

TEST_F(RunCycleTest, StopAndResumeKeepTheState) {
    CKalvexDoc& document = Open("LOCAL A = 1\nSET A = A + 1\nSET A = A + 1");
    document.Start();
    Tick(1);
    document.Stop();
    EXPECT_EQ(document.GetStateWord(), StatePaused);
    EXPECT_TRUE(document.IsReadOnly());
    Tick(200);
    EXPECT_EQ(document.State().m_nCurrentLine, 1);
    document.Start();
    EXPECT_EQ(document.GetStateWord(), StateRunning);
    Tick(200);
    EXPECT_EQ(Value(document, "A"), "171:3.00");
    EXPECT_THAT(Log(), ElementsAre("main.kx : Inicjowanie skryptu ", "main.kx : Start skryptu ",
                                   "main.kx : Stop skryptu ", "main.kx : Inicjowanie skryptu ",
                                   "main.kx : Start skryptu "));
}

TEST_F(RunCycleTest, StepRunsOneLine) {
    CKalvexDoc& document = Open("LOCAL A = 1\nLOCAL B = 2");
    document.Start();
    document.Stop();
    document.Step();
    EXPECT_EQ(document.GetStateWord(), StatePaused | StateStep);
    EXPECT_EQ(document.State().m_nReportedLine, 65535);
    Tick(200);
    EXPECT_EQ(document.State().m_nCurrentLine, 1);
    EXPECT_EQ(document.GetStateWord(), StatePaused);
}

TEST_F(RunCycleTest, StepOnAFinishedScriptOnlyShowsTheLine) {
    CKalvexDoc& document = Run("LOCAL A = 1");
    document.Stop();
    ViewRecorder view;
    document.SetView(&view);
    document.Step();
    Tick(100);
    EXPECT_EQ(document.State().m_nCurrentLine, 1);
    EXPECT_THAT(view.calls, ElementsAre("unmark 1", "mark 1", "select 1", "variables"));
    document.SetView(nullptr);
}

TEST_F(RunCycleTest, StepReportsOnlyWhenLineAndCodeBothDiffer) {
    CKalvexDoc& document = Open("SET A = 1\n");
    document.Start();
    Tick(1);
    document.Stop();
    document.Step();
    Tick(50);
    EXPECT_EQ(Error(document), "3 A");
    document.ClearRunState();  // forgets the code that was reported
    document.Step();
    Tick(50);
    EXPECT_THAT(Log(platform::LogErrors),
                ElementsAre("main.kx : Inicjowanie skryptu ", "main.kx : Start skryptu ",
                            "main.kx : Linia 1 - Zmienna nie została poprawnie zdefiniowana : A",
                            "main.kx : Stop skryptu ",
                            "main.kx : Linia 1 - Zmienna nie została poprawnie zdefiniowana : A"));
    EXPECT_FALSE(document.State().m_bErrorStanding);
}

TEST_F(RunCycleTest, StepInTheRunningStateLiesIdle) {
    CKalvexDoc& document = Open("LOCAL A\nLOCAL B\n");
    document.Start();
    document.Step();
    Tick(1);
    EXPECT_EQ(document.State().m_nCurrentLine, 1);
    EXPECT_TRUE(document.State().m_bStepRequested);
    EXPECT_TRUE(document.State().m_bRunning);
}

TEST_F(RunCycleTest, ResetDiscardsTheRunAndRestoresTheText) {
    CKalvexDoc& document = Run("LOCAL A = 1\nPRIORITY 3\nSET B = 1");
    WriteFile("main.kx", "; nowy");
    document.Reset();
    EXPECT_EQ(document.GetStateWord(), 0);
    EXPECT_EQ(document.State().m_nCurrentLine, 0);
    EXPECT_EQ(document.State().m_nPriority, 50);
    EXPECT_EQ(document.State().m_nPaceCounter, 0);
    EXPECT_FALSE(document.IsReadOnly());
    EXPECT_EQ(document.Variables().GetSize(), 0u);
    EXPECT_EQ(document.Text().GetLine(0), "; nowy");
    EXPECT_EQ(Log(platform::LogAlways).back(), "main.kx : Reset skryptu ");
}

TEST_F(RunCycleTest, ResetForgetsTheCallsUnderWay) {
    CKalvexDoc& document = Run("LOCAL A\nCALL f(B)\nPROCEDURE f(A)\nBEGIN\nSET A = 1");
    EXPECT_EQ(Error(document), "3 B");
    document.Reset();
    document.Start();
    Tick(1);
    EXPECT_EQ(Value(document, "A"), "255:");
    EXPECT_EQ(Value(document, "B"), "missing");
}

TEST_F(RunCycleTest, ResetLeavesADocumentThatAConsoleControlsReadOnly) {
    CKalvexDoc& document = Open("LOCAL A");
    document.AllowControl(false);
    document.Start();
    document.Reset();
    EXPECT_TRUE(document.IsReadOnly());
    document.AllowControl(true);
    document.Reset();
    EXPECT_FALSE(document.IsReadOnly());
}

TEST_F(RunCycleTest, ResetKeepsAStandingErrorUntilTheNextLine) {
    CKalvexDoc& document = Run("LOCAL A 5");
    EXPECT_EQ(Error(document), "5");
    document.Reset();
    EXPECT_EQ(Error(document), "5");
    EXPECT_FALSE(document.State().m_bErrorStanding);
    EXPECT_EQ(document.State().m_nReportedError, 0);
    WriteFile("main.kx", "LOCAL A");
    document.Start();
    Tick(1);
    EXPECT_EQ(Error(document), "0");
}

TEST_F(RunCycleTest, ResetClearsTheGeneralError) {
    CKalvexDoc& document = Open("");
    document.SetError(operands::ErrorOther, "x", true);
    document.Reset();
    EXPECT_EQ(Error(document), "0");
}

TEST_F(RunCycleTest, ResetReleasesRemoteVariablesWithinOneSubscriptionBlock) {
    CKalvexDoc& document = Run("REMOTE A srv@X\nLOCAL B\nREMOTE C srv@Y");
    sources.calls.clear();
    document.Reset();
    EXPECT_THAT(sources.calls, ElementsAre("block", "release A", "release C", "unblock all"));
}

TEST_F(RunCycleTest, ResetKeepsIgnoreUnknown) {
    CKalvexDoc& document = Open("");
    document.IgnoreUnknown(true);
    document.Sleep(5);
    document.Reset();
    EXPECT_TRUE(document.State().m_bIgnoreUnknown);
    EXPECT_EQ(document.State().m_tSleepUntil, 0);
}

TEST_F(RunCycleTest, FailingLineIsRetriedAndLoggedOnce) {
    CKalvexDoc& document = Run("LOCAL A = 1\nSET A = Q", 100);
    EXPECT_EQ(document.State().m_nCurrentLine, 1);
    EXPECT_TRUE(document.State().m_bErrorStanding);
    EXPECT_TRUE(ticks.IsErrorStanding());
    EXPECT_TRUE(document.State().m_bRunning);
    EXPECT_EQ(Log().back(), "main.kx : Linia 2 - Zmienna nie została poprawnie zdefiniowana : Q");
    EXPECT_EQ(Log().size(), 3u);
    document.Variables().Append(std::make_unique<operands::CVariableLocal>("Q"));
    Tick(1);
    EXPECT_FALSE(document.State().m_bErrorStanding);
    EXPECT_FALSE(ticks.IsErrorStanding());
}

TEST_F(RunCycleTest, SameErrorAfterAGoodRunOfTheLineStaysSilent) {
    CKalvexDoc& document = Run("LOCAL A\nPOINTER W\n:w\nSET A = W\nGOTO w", 5);
    ASSERT_EQ(Log(platform::LogErrors).size(), 3u);
    auto& pointer = static_cast<operands::CVariablePointer&>(*document.Variables().Find("W"));
    pointer.SetTargetName("A");
    Tick(1);
    EXPECT_FALSE(document.State().m_bErrorStanding);
    pointer.SetTargetName("");
    Tick(1);
    EXPECT_TRUE(document.State().m_bErrorStanding);
    EXPECT_EQ(Log(platform::LogErrors).size(), 3u);
}

TEST_F(RunCycleTest, TwoFailingLinesThatAlternateLogOnEveryChange) {
    CKalvexDoc& document = Open("SET A = 1\nSET B = 1");
    document.Start();
    document.SetPriority(1);
    for (int i = 0; i < 4; ++i) {
        document.JumpTo(i % 2);
        document.ExecuteStep();
        document.ExecuteStep();
    }
    EXPECT_EQ(Log().size(), 2u + 4u);
}

TEST_F(RunCycleTest, WaitIsNoErrorAndIsLoggedOnceAtItsLevel) {
    CKalvexDoc& document = Run("REMOTE A srv@X\nLOCAL B\nSET B = A", 100);
    EXPECT_EQ(Error(document), "27 A");
    EXPECT_FALSE(document.State().m_bErrorStanding);
    EXPECT_EQ(Log(platform::LogErrors).size(), 2u);
    EXPECT_THAT(Log(platform::LogEvents),
                ElementsAre("main.kx : Inicjowanie skryptu ", "main.kx : Start skryptu ",
                            "main.kx : Linia 3 - Oczekiwanie na pobranie danych bieżących : A"));
}

TEST_F(RunCycleTest, BreakpointStopsBeforeItsLine) {
    CKalvexDoc& document = Open("LOCAL A\nLOCAL B\nLOCAL C");
    ViewRecorder view;
    ConsoleRecorder console;
    services.console = &console;
    view.breakpoint = 2;
    document.SetView(&view);
    document.Start();
    document.SetPriority(1);
    Tick(20);
    EXPECT_EQ(document.State().m_nCurrentLine, 2);
    EXPECT_EQ(document.GetStateWord(), StatePaused);
    EXPECT_THAT(console.calls, ElementsAre("main.kx state 16 word 2 line 2"));
    EXPECT_THAT(view.calls, ElementsAre("select -1", "read-only", "title", "select 1", "select 2",
                                        "mark 2", "select 2", "title"));
    document.Step();
    Tick(1);
    EXPECT_EQ(document.State().m_nCurrentLine, 3);
    document.SetView(nullptr);
}

TEST_F(RunCycleTest, StepNeverStopsOnABreakpointAndMovesTheMarker) {
    CKalvexDoc& document = Open("LOCAL A\nLOCAL B\nLOCAL C");
    document.Start();
    document.Stop();
    ViewRecorder view;
    view.breakpoint = 1;
    document.SetView(&view);
    document.Step();
    Tick(1);
    EXPECT_THAT(view.calls, ElementsAre("unmark 0", "mark 1", "select 1", "variables"));
    EXPECT_EQ(document.State().m_nMarkedLine, 1);
    document.SetView(nullptr);
}

TEST_F(RunCycleTest, MinimisedStepLeavesTheMarker) {
    CKalvexDoc& document = Open("LOCAL A\nLOCAL B");
    document.Start();
    document.Stop();
    document.SetMinimised(true);
    document.Step();
    Tick(1);
    EXPECT_EQ(document.State().m_nMarkedLine, 0);
    EXPECT_EQ(document.State().m_nCurrentLine, 1);
}

TEST_F(RunCycleTest, RunningLineIsReportedToTheConsoleAboutOnceASecond) {
    ConsoleRecorder console;
    services.console = &console;
    CKalvexDoc& document = Open("LOCAL A\nLOCAL B\nLOCAL C\nLOCAL D\nLOCAL E");
    document.SendLineReports(true);
    document.Start();
    document.SetPriority(1);
    for (int i = 0; i < 4; ++i) {
        document.ExecuteStep();
        clock.Advance(1000);
    }
    EXPECT_THAT(console.calls, ElementsAre("main.kx line 1", "main.kx line 3"));
}

TEST_F(RunCycleTest, StepWithoutControlReportsTheState) {
    ConsoleRecorder console;
    services.console = &console;
    CKalvexDoc& document = Open("LOCAL A\nLOCAL B");
    document.Start();
    document.Stop();
    document.AllowControl(false);
    document.Step();
    Tick(1);
    EXPECT_THAT(console.calls, ElementsAre("main.kx state 9 word 6 line 1"));
}

TEST_F(RunCycleTest, ConsoleClientSendsCommandsAndInterpretsNothing) {
    ConsoleRecorder console;
    services.console = &console;
    services.consoleClient = true;
    CKalvexDoc& document = Open("LOCAL A");
    EXPECT_FALSE(document.Start());
    document.Stop();
    document.Step();
    document.Reset();
    EXPECT_THAT(console.calls, ElementsAre("main.kx command 2", "main.kx command 4",
                                           "main.kx command 8", "main.kx command 6"));
    document.Resume();
    EXPECT_FALSE(document.ExecuteStep());
    EXPECT_EQ(document.State().m_nCurrentLine, 0);
    EXPECT_THAT(Log(), IsEmpty());
}

TEST_F(RunCycleTest, ConsoleClientWithoutControlSendsNothing) {
    ConsoleRecorder console;
    services.console = &console;
    services.consoleClient = true;
    CKalvexDoc& document = Open("LOCAL A");
    document.AllowControl(false);
    EXPECT_FALSE(document.Start());
    document.Stop();
    document.Step();
    document.Reset();
    EXPECT_THAT(console.calls, IsEmpty());
}

TEST_F(RunCycleTest, PartsOfADocumentAreToldAndDestroyedInTheirOrder) {
    struct Part final : operands::DocumentPart {
        Part(std::vector<std::string>& record, std::string label)
            : calls(record), name(std::move(label)) {}
        ~Part() override { calls.push_back("destroy " + name); }
        void ClearRunState() override { calls.push_back("clear " + name); }
        std::vector<std::string>& calls;
        std::string name;
    };
    std::vector<std::string> calls;
    auto document = std::make_unique<CKalvexDoc>(services);
    document->GetPart<Part>(operands::PartId::LinkTests, calls, "links");
    document->GetPart<Part>(operands::PartId::ReportNotifications, calls, "notify");
    document->GetPart<Part>(operands::PartId::Processes, calls, "processes");
    EXPECT_EQ(&document->GetPart<Part>(operands::PartId::LinkTests, calls, "second"),
              &document->GetPart<Part>(operands::PartId::LinkTests, calls, "third"));
    document.reset();
    EXPECT_THAT(calls, ElementsAre("clear notify", "clear processes", "clear links",
                                   "destroy notify", "destroy processes", "destroy links"));
}

// The line is tried at each step, and what that would cost is spared until the clock has moved on.
TEST_F(RunCycleTest, LineBeyondABoundFailsOverAndOverAndHoldsNobodyUp) {
    RunCounts counts;
    services.counts = &counts;
    CKalvexDoc& grows = Run("LOCAL S = \"x\"\n:w\nSET S = S + S\nGOTO w");
    CKalvexDoc& goesOn = Open("LOCAL N = 0\n:w\nSET N = N + 1\nGOTO w", "drugi.kx");
    goesOn.Start();
    Tick(20);
    EXPECT_EQ(Error(grows), "16 tekst dłuższy niż 64 MiB");
    EXPECT_EQ(grows.State().m_nCurrentLine, 2);
    EXPECT_THAT(Log(), ElementsAre("main.kx : Inicjowanie skryptu ", "main.kx : Start skryptu ",
                                   "main.kx : Linia 3 - Błąd obliczenia wyrażenia : tekst dłuższy "
                                   "niż 64 MiB",
                                   "drugi.kx : Inicjowanie skryptu ", "drugi.kx : Start skryptu "));
    EXPECT_TRUE(grows.State().promise.standing);
    const RunCounts before = counts;
    const std::uint64_t times = grows.State().standing.GetError().times;
    Tick(100);
    EXPECT_EQ(counts.errors - before.errors, 1000U);
    EXPECT_EQ(grows.State().standing.GetError().times - times, 1000U);
    EXPECT_EQ(counts.lines - before.lines, 1002U);
    clock.Advance(59'000);
    Tick(1);
    EXPECT_EQ(Error(grows), "16 tekst dłuższy niż 64 MiB");
    clock.Advance(1000);
    grows.Variables().Find("S")->SetValue(value::CVal("y"), value::KindCurrent);
    Tick(1);
    EXPECT_EQ(Error(grows), "0");
}

// Whoever looks on is shown each tick, and hears of no other try.
TEST_F(RunCycleTest, LineBeyondABoundIsTriedAnewWhenTheClockHasMovedOnAndNoSooner) {
    ViewRecorder view;
    CKalvexDoc& grows = Open("LOCAL S = \"x\"\n:w\nSET S = S + S\nGOTO w");
    grows.SetView(&view);
    grows.Start();
    grows.SetPriority(1);
    Tick(20);
    EXPECT_EQ(Error(grows), "16 tekst dłuższy niż 64 MiB");
    operands::CVariable& text = *grows.Variables().Find("S");
    text.SetValue(value::CVal("y"), value::KindCurrent);
    Tick(20);
    EXPECT_EQ(Error(grows), "16 tekst dłuższy niż 64 MiB");
    EXPECT_EQ(Value(grows, "S"), "190:y");
    clock.Advance(59'000);
    Tick(1);
    EXPECT_EQ(Error(grows), "16 tekst dłuższy niż 64 MiB");
    clock.Advance(1000);
    Tick(1);
    EXPECT_EQ(Error(grows), "0");
    grows.SetView(nullptr);
}

}  // namespace
}  // namespace kalvex::engine
