// Scripts as files: what the person opens, saves and closes, with the questions that go with it.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <QDir>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMimeData>
#include <QUrl>

#include "workbench/model/SnapshotStore.h"
#include "workbench/qt/Texts.h"
#include "workbench/qt/window_world.h"

namespace kalvex::window {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using workbench::Command;

class WindowFilesTest : public WindowTest {
  protected:
    std::string Path(const std::string& name) const { return m_folder.Path(name); }
    // The end of the program, as the person gives it.
    void Quit() { Run(Command::Quit); }
    bool IsOver() { return App().ClientInterface() == nullptr; }
    // Another program writes the file, later than any time that the window can have seen.
    void WriteElsewhere(const std::string& name, const std::string& text) {
        PutScript(name, text);
        const timespec times[2] = {{kNow + ++m_writes, 0}, {kNow + m_writes, 0}};
        ASSERT_EQ(::utimensat(AT_FDCWD, Path(name).c_str(), times, 0), 0);
    }
    // The window gets the focus.
    void Activate() {
        Window().activateWindow();
        ASSERT_TRUE(Until([this] { return Window().isActiveWindow(); }));
        QEvent change(QEvent::ActivationChange);
        QApplication::sendEvent(&Window(), &change);
        Settle();
    }
    std::string TextOf(engine::CKalvexDoc& document) {
        return text::ToUtf8(document.Text().GetText());
    }

    int m_writes = 0;
};

// ---- new, open

TEST_F(WindowFilesTest, NewScriptsAreCountedAndActive) {
    ASSERT_TRUE(Start());
    const engine::CKalvexDoc& first = New();
    const engine::CKalvexDoc& second = New();
    EXPECT_EQ(TitleOf(first), "Skrypt1");
    EXPECT_EQ(TitleOf(second), "Skrypt2");
    EXPECT_EQ(EditorOf(second).accessibleName(), "Skrypt2");
    EXPECT_TRUE(Window().GetCommandState().editor);
    EXPECT_FALSE(Window().GetCommandState().path);
}

TEST_F(WindowFilesTest, OpenedScriptShowsItsFile) {
    PutScript("ala.kx", "SET A = 1\r\nŻółw");
    ASSERT_TRUE(Start());
    const engine::CKalvexDoc& script = Open("ala.kx");
    EXPECT_EQ(TitleOf(script), "ala.kx");
    EXPECT_EQ(EditorOf(script).accessibleName().toStdString(), Path("ala.kx"));
    EXPECT_EQ(EditorOf(script).Bytes().toStdString(), "SET A = 1\nŻółw");
}

TEST_F(WindowFilesTest, ScriptThatIsOpenIsActivated) {
    PutScript("a.kx", "");
    PutScript("b.kx", "");
    ASSERT_TRUE(Start());
    engine::CKalvexDoc& first = Open("a.kx");
    Open("b.kx");
    FrameOf(first).showMinimized();
    EXPECT_EQ(&Open("a.kx"), &first);
    EXPECT_EQ(Count(), 2u);
    EXPECT_TRUE(EditorOf(first).isVisible());
    EXPECT_FALSE(FrameOf(first).isMinimized());
}

TEST_F(WindowFilesTest, ScriptsOfTheCommandLineOpenAndMissingOnesAreTold) {
    PutScript("a.kx", "");
    PutScript("c.KX", "");
    ASSERT_TRUE(Start({Path("a.kx"), Path("brak.kx"), Path("c.KX")}));
    ASSERT_TRUE(Until([this] { return Count() == 2; }));
    EXPECT_THAT(Boxes(), ElementsAre("Nie można otworzyć pliku " + Path("brak.kx") +
                                     " (No such file or directory) | OK"));
    EXPECT_EQ(TitleOf(*App().Documents().All()[1]), "c.KX");
    EXPECT_FALSE(App().Documents().All()[0]->State().m_bRunning);
}

TEST_F(WindowFilesTest, MissingScriptOfTheAutoStartIsOneLineOfTheLog) {
    m_folder.Put("Kalvex.ini", "[Autostart]\nProcedura0=brak.kx\n");
    ASSERT_TRUE(Start());
    EXPECT_THAT(LogLines(), testing::Contains(Path("brak.kx") + " : No such file or directory"));
}

// ---- save

TEST_F(WindowFilesTest, SavedFileHasTheCodePageAndTheLineEnds) {
    PutScript("a.kx", "x\n");
    ASSERT_TRUE(Start());
    engine::CKalvexDoc& script = Open("a.kx");
    Type(script, "Zażółć");
    EXPECT_TRUE(Until([&] { return FrameOf(script).isWindowModified(); }));
    Run(Command::Save);
    EXPECT_EQ(m_folder.Get("a.kx"), "Za\xBF\xF3\xB3\xE6x\r\n");
    EXPECT_FALSE(script.IsModified());
    EXPECT_TRUE(Until([&] { return !FrameOf(script).isWindowModified(); }));
}

TEST_F(WindowFilesTest, NewScriptIsSavedWhereThePersonSays) {
    ASSERT_TRUE(Start());
    engine::CKalvexDoc& script = New();
    Type(script, "a");
    Choose({"nowy"});
    Run(Command::Save);
    EXPECT_EQ(script.GetPathName(), Path("nowy.kx"));
    EXPECT_EQ(m_folder.Get("nowy.kx"), "a");
    EXPECT_EQ(TitleOf(script), "nowy.kx");
    EXPECT_EQ(EditorOf(script).accessibleName().toStdString(), Path("nowy.kx"));
    Type(script, "b");
    Run(Command::Save);
    EXPECT_EQ(m_folder.Get("nowy.kx"), "ab");
}

TEST_F(WindowFilesTest, SavingElsewhereIsAnotherFile) {
    PutScript("a.kx", "a");
    ASSERT_TRUE(Start());
    engine::CKalvexDoc& script = Open("a.kx");
    Type(script, "b");
    Choose({"inny.kx"});
    Run(Command::SaveAs);
    EXPECT_EQ(m_folder.Get("a.kx"), "a");
    EXPECT_EQ(m_folder.Get("inny.kx"), "ba");
    EXPECT_EQ(TitleOf(script), "inny.kx");
    EXPECT_EQ(Find("inny.kx"), &script);
    EXPECT_EQ(Find("a.kx"), nullptr);
}

TEST_F(WindowFilesTest, AnotherOpenScriptIsNotWrittenOver) {
    PutScript("a.kx", "a");
    PutScript("b.kx", "b");
    ASSERT_TRUE(Start());
    Open("a.kx");
    engine::CKalvexDoc& script = Open("b.kx");
    Choose({"a.kx"});
    Answer({QMessageBox::Yes});
    Run(Command::SaveAs);
    EXPECT_THAT(Boxes(),
                ElementsAre(testing::_, "Plik skryptu " + Path("a.kx") + " jest już otwarty | OK"));
    EXPECT_EQ(m_folder.Get("a.kx"), "a");
    EXPECT_EQ(script.GetPathName(), Path("b.kx"));
}

TEST_F(WindowFilesTest, ScriptThatCannotBeSavedKeepsTheFileThatItHad) {
    PutScript("a.kx", "a");
    m_folder.MakeFolder("pod");
    ASSERT_TRUE(Start());
    engine::CKalvexDoc& script = Open("a.kx");
    Type(script, "b");
    QDir(QString::fromStdString(Path("pod"))).removeRecursively();
    m_folder.MakeFolder("a.kx.d");
    engine::CKalvexDoc& fresh = New();
    std::string error;
    EXPECT_FALSE(App().SaveScriptAs(script, text::FromUtf8(Path("pod/x.kx")), error));
    EXPECT_EQ(error, "No such file or directory");
    EXPECT_EQ(script.GetPathName(), Path("a.kx"));
    EXPECT_TRUE(script.IsModified());
    EXPECT_FALSE(App().SaveScriptAs(fresh, text::FromUtf8(Path("pod/x.kx")), error));
    EXPECT_EQ(fresh.GetPathName(), "");
    EXPECT_EQ(fresh.GetDocKey(), "");
}

TEST_F(WindowFilesTest, FileThatCannotBeWrittenIsTold) {
    PutScript("a.kx", "a");
    ASSERT_TRUE(Start());
    engine::CKalvexDoc& script = Open("a.kx");
    Type(script, "b");
    ASSERT_EQ(::unlink(Path("a.kx").c_str()), 0);
    m_folder.MakeFolder("a.kx");
    Run(Command::Save);
    EXPECT_THAT(Boxes(),
                ElementsAre("Nie można zapisać pliku " + Path("a.kx") + " (Is a directory) | OK"));
    EXPECT_TRUE(script.IsModified());
}

TEST_F(WindowFilesTest, CharacterOutsideTheCodePageIsToldAndNothingWritten) {
    PutScript("a.kx", "jeden\ndwa");
    ASSERT_TRUE(Start());
    engine::CKalvexDoc& script = Open("a.kx");
    EditorOf(script).GoToLine(1, 2);
    Type(script, "λ");
    EditorOf(script).GoToLine(0);
    Run(Command::Save);
    EXPECT_THAT(Boxes(), ElementsAre("Linia 2 zawiera znak spoza strony kodowej Windows-1250: λ"
                                     " | OK"));
    EXPECT_EQ(m_folder.Get("a.kx"), "jeden\ndwa");
    EXPECT_EQ(EditorOf(script).CaretLine(), 1);
    EXPECT_EQ(EditorOf(script).CaretColumn(), 2);
    Run(Command::Start);
    EXPECT_EQ(Boxes().size(), 1u);
    EXPECT_FALSE(script.State().m_bRunning);
    EXPECT_EQ(m_folder.Get("a.kx"), "jeden\ndwa");
}

// ---- versions

TEST_F(WindowFilesTest, EachSavedTextIsAVersion) {
    PutScript("a.kx", "a");
    ASSERT_TRUE(Start());
    engine::CKalvexDoc& script = Open("a.kx");
    Type(script, "1");
    Run(Command::Save);
    Type(script, "2");
    Run(Command::Save);
    const std::vector<workbench::Snapshot> versions = workbench::SnapshotStore::List(Path("a.kx"));
    std::vector<std::string> texts;
    for (const workbench::Snapshot& version : versions) {
        std::string error;
        ASSERT_TRUE(workbench::SnapshotStore::Read(version, texts.emplace_back(), error)) << error;
    }
    EXPECT_THAT(texts, ElementsAre("12a", "1a"));
}

TEST_F(WindowFilesTest, TextThatAStartSavesIsAVersionToo) {
    PutScript("a.kx", ":A\nGOTO A");
    ASSERT_TRUE(Start());
    engine::CKalvexDoc& script = Open("a.kx");
    Type(script, " ");
    Answer({QMessageBox::Yes});
    Run(Command::Start);
    EXPECT_THAT(Boxes(), ElementsAre("Czy zapisać zmiany? | Tak Nie"));
    EXPECT_TRUE(script.State().m_bRunning);
    EXPECT_EQ(m_folder.Get("a.kx"), " :A\r\nGOTO A");
    EXPECT_EQ(workbench::SnapshotStore::List(Path("a.kx")).size(), 1u);
}

// ---- close

TEST_F(WindowFilesTest, UnchangedScriptClosesWithoutAQuestion) {
    PutScript("a.kx", "a");
    ASSERT_TRUE(Start());
    Open("a.kx");
    Run(Command::Close);
    EXPECT_EQ(Count(), 0u);
}

TEST_F(WindowFilesTest, RunningScriptClosesWithoutAQuestion) {
    PutScript("a.kx", ":A\nGOTO A");
    ASSERT_TRUE(Start());
    Open("a.kx");
    Run(Command::Start);
    Tick(3);
    Run(Command::Close);
    EXPECT_EQ(Count(), 0u);
}

TEST_F(WindowFilesTest, CloseOfAModifiedScriptAsks) {
    PutScript("a.kx", "a");
    ASSERT_TRUE(Start());
    engine::CKalvexDoc& script = Open("a.kx");
    Type(script, "b");
    const std::string question =
        "Czy zapisać zmiany w pliku " + Path("a.kx") + "? | Tak Nie Anuluj";
    Answer({QMessageBox::Cancel});
    Run(Command::Close);
    EXPECT_THAT(Boxes(), ElementsAre(question));
    EXPECT_EQ(Count(), 1u);
    EXPECT_TRUE(script.IsModified());
    Answer({QMessageBox::Yes});
    Run(Command::Close);
    EXPECT_THAT(Boxes(), ElementsAre(question));
    EXPECT_EQ(Count(), 0u);
    EXPECT_EQ(m_folder.Get("a.kx"), "ba");
    Type(Open("a.kx"), "c");
    Answer({QMessageBox::No});
    Run(Command::Close);
    EXPECT_THAT(Boxes(), ElementsAre(question));
    EXPECT_EQ(Count(), 0u);
    EXPECT_EQ(m_folder.Get("a.kx"), "ba");
}

TEST_F(WindowFilesTest, NewScriptThatIsNotGivenAFileStaysOpen) {
    ASSERT_TRUE(Start());
    Type(New(), "a");
    Answer({QMessageBox::Yes});
    Choose({""});
    Run(Command::Close);
    EXPECT_THAT(Boxes(), ElementsAre("Czy zapisać zmiany w pliku Skrypt1? | Tak Nie Anuluj"));
    EXPECT_EQ(Count(), 1u);
    Answer({QMessageBox::No});
    Run(Command::Close);
    EXPECT_EQ(Boxes().size(), 1u);
    EXPECT_EQ(Count(), 0u);
}

TEST_F(WindowFilesTest, ScriptThatIsClosedWhileItsQuestionStandsIsGone) {
    PutScript("a.kx", "a");
    ASSERT_TRUE(Start());
    engine::CKalvexDoc& script = Open("a.kx");
    Type(script, "b");
    WhileAsked([&] { App().CloseScript(script); });
    Answer({QMessageBox::Yes});
    Run(Command::Close);
    EXPECT_EQ(Boxes().size(), 1u);
    EXPECT_EQ(Count(), 0u);
    EXPECT_EQ(m_folder.Get("a.kx"), "a");
}

// ---- the end of the program

TEST_F(WindowFilesTest, EndAsksForEachModifiedScript) {
    PutScript("a.kx", "a");
    PutScript("b.kx", "b");
    PutScript("c.kx", "c");
    ASSERT_TRUE(Start());
    Type(Open("a.kx"), "1");
    Open("b.kx");
    Type(Open("c.kx"), "1");
    const std::string first = "Czy zapisać zmiany w pliku " + Path("a.kx") + "? | Tak Nie Anuluj";
    const std::string second = "Czy zapisać zmiany w pliku " + Path("c.kx") + "? | Tak Nie Anuluj";
    Answer({QMessageBox::Cancel});
    Quit();
    EXPECT_THAT(Boxes(), ElementsAre(first));
    EXPECT_FALSE(IsOver());
    Answer({QMessageBox::No, QMessageBox::Cancel});
    Quit();
    EXPECT_THAT(Boxes(), ElementsAre(first, second));
    EXPECT_FALSE(IsOver());
    EXPECT_EQ(Count(), 3u);
    Answer({QMessageBox::Yes, QMessageBox::No});
    Quit();
    EXPECT_THAT(Boxes(), ElementsAre(first, second));
    EXPECT_TRUE(IsOver());
    EXPECT_FALSE(Window().isVisible());
    EXPECT_EQ(m_folder.Get("a.kx"), "1a");
    EXPECT_EQ(m_folder.Get("c.kx"), "c");
}

TEST_F(WindowFilesTest, ScriptThatIsClosedWhileAnotherIsAskedAboutIsNotAskedAbout) {
    PutScript("a.kx", "a");
    PutScript("b.kx", "b");
    ASSERT_TRUE(Start());
    Type(Open("a.kx"), "1");
    engine::CKalvexDoc& second = Open("b.kx");
    Type(second, "1");
    WhileAsked([&] { App().CloseScript(second); });
    Answer({QMessageBox::No});
    Quit();
    EXPECT_EQ(Boxes().size(), 1u);
    EXPECT_TRUE(IsOver());
}

TEST_F(WindowFilesTest, EndOfTheSessionAsksNothing) {
    PutScript("a.kx", "a");
    ASSERT_TRUE(Start());
    Type(Open("a.kx"), "1");
    App().OnEndSession(true);
    EXPECT_TRUE(IsOver());
    EXPECT_EQ(m_folder.Get("a.kx"), "a");
}

TEST_F(WindowFilesTest, LogWindowGoesWithTheWindow) {
    ASSERT_TRUE(Start());
    Run(Command::LogWindow);
    ASSERT_NE(Window().findChild<QWidget*>("logWindow"), nullptr);
    Quit();
    EXPECT_EQ(Window().findChild<QWidget*>("logWindow"), nullptr);
}

// ---- files that others change

TEST_F(WindowFilesTest, ChangedFileIsAskedAboutOnceWhenTheWindowGetsTheFocus) {
    PutScript("a.kx", "a\nb\nc");
    ASSERT_TRUE(Start());
    engine::CKalvexDoc& script = Open("a.kx");
    Activate();
    EXPECT_THAT(Boxes(), IsEmpty());
    WriteElsewhere("a.kx", "x\nb\nc");
    Answer({QMessageBox::No});
    Activate();
    EXPECT_THAT(Boxes(), ElementsAre("Plik " + Path("a.kx") +
                                     " został zmieniony na dysku. Czy wczytać go ponownie?"
                                     " | Tak Nie"));
    Activate();
    EXPECT_THAT(Boxes(), IsEmpty());
    EXPECT_EQ(TextOf(script), "a\r\nb\r\nc");
    WriteElsewhere("a.kx", "y\nb\nc");
    Answer({QMessageBox::Yes});
    Activate();
    EXPECT_EQ(Boxes().size(), 1u);
    EXPECT_EQ(TextOf(script), "y\r\nb\r\nc");
    EXPECT_EQ(EditorOf(script).Bytes().toStdString(), "y\nb\nc");
    EXPECT_FALSE(script.IsModified());
}

TEST_F(WindowFilesTest, FileThatOnlyHasAnotherTimeIsNotAskedAbout) {
    PutScript("a.kx", "a\nb");
    ASSERT_TRUE(Start());
    Open("a.kx");
    WriteElsewhere("a.kx", "a\nb");
    Activate();
    EXPECT_THAT(Boxes(), IsEmpty());
}

TEST_F(WindowFilesTest, FileThatHasGoneIsNotAskedAbout) {
    PutScript("a.kx", "a");
    ASSERT_TRUE(Start());
    Open("a.kx");
    ASSERT_EQ(::unlink(Path("a.kx").c_str()), 0);
    Activate();
    EXPECT_THAT(Boxes(), IsEmpty());
}

TEST_F(WindowFilesTest, RunningScriptIsNotAskedAboutAndItsNextStartTakesTheFile) {
    PutScript("a.kx", ":A\nGOTO A");
    ASSERT_TRUE(Start());
    engine::CKalvexDoc& script = Open("a.kx");
    Run(Command::Start);
    Tick(2);
    WriteElsewhere("a.kx", ":B\nGOTO B");
    Activate();
    EXPECT_THAT(Boxes(), IsEmpty());
    Run(Command::Reset);
    EXPECT_EQ(TextOf(script), ":B\r\nGOTO B");
    Activate();
    EXPECT_THAT(Boxes(), IsEmpty());
}

TEST_F(WindowFilesTest, ScriptThatAConsoleHasResetIsNotAskedAbout) {
    PutScript("a.kx", ":A\nGOTO A");
    ASSERT_TRUE(Start());
    engine::CKalvexDoc& script = Open("a.kx");
    Run(Command::Start);
    WriteElsewhere("a.kx", ":B\nGOTO B");
    script.Reset();
    Activate();
    EXPECT_THAT(Boxes(), IsEmpty());
    EXPECT_EQ(TextOf(script), ":B\r\nGOTO B");
}

// ---- start

TEST_F(WindowFilesTest, StartOfANewScriptAsksAndARefusalRefuses) {
    ASSERT_TRUE(Start());
    engine::CKalvexDoc& script = New();
    Type(script, ":A");
    Answer({QMessageBox::No});
    Run(Command::Start);
    EXPECT_THAT(Boxes(), ElementsAre("Czy zapisać zmiany? | Tak Nie"));
    EXPECT_FALSE(script.State().m_bRunning);
    Answer({QMessageBox::Yes});
    Choose({""});
    Run(Command::Start);
    EXPECT_EQ(Boxes().size(), 1u);
    EXPECT_FALSE(script.State().m_bRunning);
    Answer({QMessageBox::Yes});
    Choose({"start.kx"});
    Run(Command::Start);
    EXPECT_THAT(Boxes(), ElementsAre("Czy zapisać zmiany? | Tak Nie"));
    EXPECT_TRUE(script.State().m_bRunning);
    EXPECT_EQ(m_folder.Get("start.kx"), ":A");
}

TEST_F(WindowFilesTest, RefusedSavingRefusesTheStartOfAModifiedScript) {
    PutScript("a.kx", ":A\nGOTO A");
    ASSERT_TRUE(Start());
    engine::CKalvexDoc& script = Open("a.kx");
    Type(script, " ");
    Answer({QMessageBox::No});
    Run(Command::Start);
    EXPECT_THAT(Boxes(), ElementsAre("Czy zapisać zmiany? | Tak Nie"));
    EXPECT_FALSE(script.State().m_bRunning);
    EXPECT_TRUE(script.IsModified());
}

// ---- dropped

TEST_F(WindowFilesTest, FilesAndTheScriptsOfFoldersThatAreDroppedOpen) {
    PutScript("a.kx", "SET A = 1");
    ASSERT_TRUE(QDir(QString::fromStdString(m_folder.Path())).mkdir("f"));
    PutScript("f/C.KX", "");
    PutScript("f/b.kx", "");
    PutScript("f/b.txt", "");
    ASSERT_TRUE(Start());
    QMimeData files;
    files.setUrls({QUrl::fromLocalFile(QString::fromStdString(Path("a.kx"))),
                   QUrl::fromLocalFile(QString::fromStdString(Path("f"))),
                   QUrl::fromLocalFile(QString::fromStdString(Path("nie.kx")))});
    Answer({QMessageBox::Ok});
    QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &files, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&Window(), &enter);
    EXPECT_TRUE(enter.isAccepted());
    QDropEvent drop(QPointF(5, 5), Qt::CopyAction, &files, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&Window(), &drop);
    EXPECT_TRUE(drop.isAccepted());
    Settle();
    std::vector<std::string> opened;
    for (const auto& script : App().Documents().All()) opened.push_back(script->GetDocKey());
    EXPECT_THAT(opened, ElementsAre("a.kx", "f/b.kx", "f/C.KX"));
    EXPECT_THAT(Boxes(), ElementsAre("Nie można otworzyć pliku " + Path("nie.kx") +
                                     " (No such file or directory) | OK"));
}

}  // namespace
}  // namespace kalvex::window
