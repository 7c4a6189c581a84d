// A run as the window shows it: titles, lines, states of the commands, the status bar, the log.
#include <gmock/gmock.h>

#include <QListView>
#include <QTableView>
#include <QToolBar>

#include "workbench/qt/Texts.h"
#include "workbench/qt/window_world.h"

namespace kalvex::window {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using workbench::Command;

class WindowRunTest : public WindowTest {
  protected:
    engine::CKalvexDoc& OpenLines(const std::string& text) {
        PutScript("a.kx", text);
        EXPECT_TRUE(Start());
        return Open("a.kx");
    }
    // Which of the commands that a run is led by can be given.
    std::string Offered() {
        std::string offered;
        for (const auto& [command, word] : {std::pair{Command::Start, "start "},
                                            {Command::Stop, "stop "},
                                            {Command::Step, "step "},
                                            {Command::Reset, "reset "},
                                            {Command::ToggleBreakpoint, "breakpoint "},
                                            {Command::DeleteBreakpoints, "none "},
                                            {Command::Variables, "variables "}}) {
            if (CanRun(command)) offered += word;
        }
        return offered;
    }
    std::vector<int> Breakpoints(const engine::CKalvexDoc& script) {
        return App().Documents().ModelOf(script).Markers().LinesOf(workbench::MarkerBreakpoint);
    }
};

TEST_F(WindowRunTest, CommandsAndTitlesFollowTheRun) {
    engine::CKalvexDoc& script = OpenLines("LOCAL A\n:X\nSLEEP 1\nGOTO X");
    EXPECT_EQ(TitleOf(script), "a.kx");
    EXPECT_EQ(Offered(), "start breakpoint ");
    Run(Command::Start);
    EXPECT_TRUE(script.IsReadOnly());
    EXPECT_TRUE(Until([&] { return EditorOf(script).isReadOnly(); }));
    EXPECT_EQ(TitleOf(script), "a.kx [tryb uruchomieniowy]");
    EXPECT_EQ(Offered(), "stop reset variables ");
    Run(Command::Stop);
    EXPECT_EQ(TitleOf(script), "a.kx [tryb krokowy]");
    EXPECT_EQ(Offered(), "start step reset breakpoint variables ");
    Run(Command::Start);
    EXPECT_EQ(TitleOf(script), "a.kx [tryb uruchomieniowy]");
    Run(Command::Reset);
    EXPECT_EQ(TitleOf(script), "a.kx");
    EXPECT_TRUE(Until([&] { return !EditorOf(script).isReadOnly(); }));
    EXPECT_EQ(Offered(), "start breakpoint ");
}

TEST_F(WindowRunTest, CommandThatCannotBeGivenDoesNothing) {
    engine::CKalvexDoc& script = OpenLines(":X\nGOTO X");
    Run(Command::Stop);
    Run(Command::Step);
    EXPECT_EQ(script.GetStateWord(), 0);
    m_isTrusted = false;
}

TEST_F(WindowRunTest, RunShowsItsLineByTheCaret) {
    engine::CKalvexDoc& script = OpenLines("LOCAL A\nLOCAL B\nLOCAL C\n:X\nGOTO X");
    Run(Command::Start);
    EXPECT_TRUE(Until([&] {
        Tick(20);
        return EditorOf(script).CaretLine() >= 3;
    }));
    EXPECT_EQ(EditorOf(script).CaretColumn(), 0);
    EXPECT_TRUE(Until([&] { return StatusOf("statusCaret") != "Linia    1, Wiersz    1"; }));
}

TEST_F(WindowRunTest, StepShowsTheLineAtOnce) {
    engine::CKalvexDoc& script = OpenLines("LOCAL A\nLOCAL B\nLOCAL C\n:X\nGOTO X");
    Run(Command::Start);
    Run(Command::Stop);
    Settle();
    const int before = script.State().m_nCurrentLine;
    EXPECT_EQ(EditorOf(script).CaretLine(), before);
    Run(Command::Step);
    Tick(100);
    EXPECT_EQ(script.State().m_nCurrentLine, before + 1);
    EXPECT_TRUE(Until([&] { return EditorOf(script).CaretLine() == before + 1; }));
    EXPECT_TRUE(script.State().m_bPaused);
}

// The period refreshes scripts that run, and no others.
TEST_F(WindowRunTest, StopShowsTheVariablesAsTheyAre) {
    engine::CKalvexDoc& script = OpenLines("LOCAL N = 0\n:a\nSET N = N + 1\nGOTO a");
    Run(Command::Start);
    Tick(300);
    Run(Command::Variables);
    const auto* const table = Window().findChild<QTableView*>("variablesTable");
    ASSERT_NE(table, nullptr);
    const auto shown = [table] { return table->model()->index(0, 2).data().toString(); };
    const QString before = shown();
    Tick(600);
    Run(Command::Stop);
    value::CVal value;
    ASSERT_NE(
        script.Variables().Find("N")->GetValue(value, value::KindCurrent, operands::kAsStored), 0);
    double number = 0;
    ASSERT_TRUE(value.GetValData(value::ValueType::Double, &number));
    EXPECT_TRUE(Until([&] { return shown() != before; }));
    EXPECT_EQ(shown(), "1970-01-01 01:00:00 ( 0 ) " + QString::number(number, 'f', 2));
}

TEST_F(WindowRunTest, BreakpointStopsTheRunAndIsTakenAway) {
    engine::CKalvexDoc& script = OpenLines("LOCAL A\nLOCAL B\nLOCAL C\n:X\nGOTO X");
    EditorOf(script).GoToLine(2, 3);
    Run(Command::ToggleBreakpoint);
    EXPECT_THAT(Breakpoints(script), ElementsAre(2));
    EXPECT_EQ(Offered(), "start breakpoint none ");
    EditorOf(script).GoToLine(0);
    Run(Command::Start);
    EXPECT_TRUE(Until([&] {
        Tick(20);
        return script.State().m_bPaused;
    }));
    EXPECT_EQ(script.State().m_nCurrentLine, 2);
    EXPECT_TRUE(Until([&] { return EditorOf(script).CaretLine() == 2; }));
    EXPECT_EQ(TitleOf(script), "a.kx [tryb krokowy]");
    Run(Command::ToggleBreakpoint);
    EXPECT_THAT(Breakpoints(script), IsEmpty());
    EditorOf(script).GoToLine(3);
    Run(Command::ToggleBreakpoint);
    EditorOf(script).GoToLine(4);
    Run(Command::ToggleBreakpoint);
    EXPECT_THAT(Breakpoints(script), ElementsAre(3, 4));
    Run(Command::DeleteBreakpoints);
    EXPECT_THAT(Breakpoints(script), IsEmpty());
}

TEST_F(WindowRunTest, BreakpointsAndBookmarksOutliveAReset) {
    engine::CKalvexDoc& script = OpenLines("LOCAL A\nLOCAL B\n:X\nGOTO X");
    EditorOf(script).GoToLine(1);
    Run(Command::ToggleBreakpoint);
    Run(Command::ToggleBookmark);
    Run(Command::Start);
    Run(Command::Reset);
    EXPECT_THAT(Breakpoints(script), ElementsAre(1));
    EXPECT_THAT(App().Documents().ModelOf(script).Markers().LinesOf(workbench::MarkerBookmark),
                ElementsAre(1));
}

TEST_F(WindowRunTest, MinimisedScriptOfTheAutoStartHasNoEditorUntilItIsSeen) {
    PutScript("a.kx", ":X\nGOTO X");
    m_folder.Put("Kalvex.ini", "[Autostart]\nProcedura0=a.kx\n");
    ASSERT_TRUE(Start());
    engine::CKalvexDoc& script = *Find("a.kx");
    EXPECT_TRUE(script.State().m_bRunning);
    EXPECT_TRUE(script.State().m_bMinimised);
    EXPECT_TRUE(FrameOf(script).isMinimized());
    EXPECT_EQ(ShownEditorOf(script), nullptr);
    FrameOf(script).showNormal();
    Settle();
    EXPECT_NE(ShownEditorOf(script), nullptr);
    EXPECT_FALSE(script.State().m_bMinimised);
    FrameOf(script).showMinimized();
    EXPECT_TRUE(script.State().m_bMinimised);
}

// ---- the status bar, the log

TEST_F(WindowRunTest, StatusBarTellsTheCaretTheUserAndTheLevel) {
    PutScript("a.kx", "LOCAL A\n\tLOCAL B");
    ASSERT_TRUE(Start());
    Window().UpdateToolBar();
    EXPECT_TRUE(Until([this] { return StatusOf("statusUser") == "jan"; }));
    EXPECT_EQ(StatusOf("statusCaret"), "");
    EXPECT_EQ(StatusOf("statusMode"), "WST");
    EXPECT_EQ(StatusOf("statusLevel"), "błędy ");
    EXPECT_EQ(StatusOf("statusMessage"), "2024-03-10 07:00:00  Poziom rejestracji: błędy ");
    engine::CKalvexDoc& script = Open("a.kx");
    EXPECT_TRUE(Until([this] { return StatusOf("statusCaret") == "Linia    1, Wiersz    1"; }));
    EditorOf(script).GoToLine(1, 3);
    EXPECT_TRUE(Until([this] { return StatusOf("statusCaret") == "Linia    2, Wiersz    4"; }));
    QTest::keyClick(&EditorOf(script), Qt::Key_Insert);
    EXPECT_TRUE(Until([this] { return StatusOf("statusMode") == "NAD"; }));
}

TEST_F(WindowRunTest, TipOfAnEntryStandsInThePlaceOfTheLine) {
    ASSERT_TRUE(Start());
    const std::string line = StatusOf("statusMessage");
    QStatusTipEvent tip("Uruchamia skrypt");
    QApplication::sendEvent(&Window(), &tip);
    EXPECT_EQ(StatusOf("statusMessage"), "Uruchamia skrypt");
    App().Log().Log("dalej", platform::LogErrors);
    EXPECT_EQ(StatusOf("statusMessage"), "Uruchamia skrypt");
    QStatusTipEvent none("");
    QApplication::sendEvent(&Window(), &none);
    EXPECT_EQ(StatusOf("statusMessage"), "2024-03-10 07:00:00  dalej");
}

TEST_F(WindowRunTest, LevelIsSetToldAndChecked) {
    ASSERT_TRUE(Start());
    for (const auto& [command, level, word] :
         {std::tuple{Command::LevelEvents, platform::LogEvents, "zdarzenia"},
          {Command::LevelTransmission, platform::LogTransmission, "transmisja"},
          {Command::LevelErrors, platform::LogErrors, "błędy "}}) {
        Run(command);
        EXPECT_EQ(App().Log().GetLevel(), level);
        EXPECT_TRUE(Until([&, w = std::string(word)] { return StatusOf("statusLevel") == w; }));
        for (const Command other :
             {Command::LevelErrors, Command::LevelEvents, Command::LevelTransmission}) {
            EXPECT_EQ(ActionOf(other).isChecked(), other == command);
        }
    }
}

TEST_F(WindowRunTest, DoubleClickInTheLogLeadsToTheLine) {
    engine::CKalvexDoc& script = OpenLines("LOCAL A\nLOCAL B\nLOCAL C");
    Run(Command::LogWindow);
    auto& list = Child<QListView>(Window(), "logList");
    App().Log().OnClear();
    App().Log().Log(script.GetPathName() + " : Linia 3 : x", platform::LogErrors);
    ASSERT_TRUE(Until([&] { return list.model()->rowCount() == 1; }));
    EXPECT_EQ(Window().findChild<QMdiSubWindow*>("logWindow")->windowTitle(), "LOG");
    EXPECT_TRUE(Window().GetCommandState().logActive);
    const QPoint place(20, list.visualRect(list.model()->index(0, 0)).center().y());
    QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, place);
    QTest::mouseDClick(list.viewport(), Qt::LeftButton, {}, place);
    EXPECT_EQ(EditorOf(script).CaretLine(), 2);
    EXPECT_TRUE(Window().GetCommandState().editor);
}

TEST_F(WindowRunTest, BoxStopsNoTicks) {
    PutScript("b.kx", "");
    engine::CKalvexDoc& script = OpenLines("LOCAL A\nLOCAL B\nLOCAL C\n:X\nGOTO X");
    Run(Command::Start);
    const int before = script.State().m_nCurrentLine;
    WhileAsked([&] { Tick(200); });
    Window().ShowMessage("x");
    EXPECT_THAT(Boxes(), ElementsAre("x | OK"));
    EXPECT_GT(script.State().m_nCurrentLine, before);
}

TEST_F(WindowRunTest, MessageThatStandsIsNotShownTwice) {
    ASSERT_TRUE(Start());
    WhileAsked([this] { Window().ShowMessage("x"); });
    Window().ShowMessage("x");
    EXPECT_THAT(Boxes(), ElementsAre("x | OK"));
    Window().ShowMessage("x");
    EXPECT_THAT(Boxes(), ElementsAre("x | OK"));
}

}  // namespace
}  // namespace kalvex::window
