// Copies of what is not saved, and their offer when the script is opened again.
#include <gmock/gmock.h>

#include <QFileInfo>

#include "workbench/qt/window_world.h"

namespace kalvex::window {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using workbench::Command;

class WindowCopiesTest : public WindowTest {
  protected:
    std::string Path(const std::string& name) const { return m_folder.Path(name); }
    std::string Question(const std::string& name, const char* more = "") {
        return "Skrypt " + name + " ma niezapisany tekst z 2024-03-10 07:00:00" + more +
               ". Czy przywrócić ten tekst? | Tak Nie";
    }
    std::string BytesOf(engine::CKalvexDoc& document) {
        return EditorOf(document).Bytes().toStdString();
    }
};

TEST_F(WindowCopiesTest, TextThatWasNotSavedIsOfferedAndTaken) {
    PutScript("a.kx", "a");
    ASSERT_TRUE(Start());
    Type(Open("a.kx"), "Ż");
    End();
    EXPECT_EQ(m_folder.Get("a.kx"), "a");
    ASSERT_TRUE(Start());
    Answer({QMessageBox::Yes});
    engine::CKalvexDoc& script = Open("a.kx");
    EXPECT_THAT(Boxes(), ElementsAre(Question(Path("a.kx"))));
    EXPECT_EQ(BytesOf(script), "Ża");
    EXPECT_TRUE(script.IsModified());
    Run(Command::Save);
    End();
    ASSERT_TRUE(Start());
    Open("a.kx");
    EXPECT_THAT(Boxes(), IsEmpty());
}

TEST_F(WindowCopiesTest, RefusedCopyIsDropped) {
    PutScript("a.kx", "a");
    ASSERT_TRUE(Start());
    Type(Open("a.kx"), "b");
    End();
    ASSERT_TRUE(Start());
    Answer({QMessageBox::No});
    EXPECT_EQ(BytesOf(Open("a.kx")), "a");
    EXPECT_EQ(Boxes().size(), 1u);
    Run(Command::Close);
    Open("a.kx");
    EXPECT_THAT(Boxes(), IsEmpty());
}

TEST_F(WindowCopiesTest, FileThatChangedMeanwhileIsTold) {
    PutScript("a.kx", "a");
    ASSERT_TRUE(Start());
    Type(Open("a.kx"), "b");
    End();
    PutScript("a.kx", "c");
    ASSERT_TRUE(Start());
    Answer({QMessageBox::No});
    Open("a.kx");
    EXPECT_THAT(Boxes(),
                ElementsAre(Question(Path("a.kx"), ", a jego plik zmienił się od tego czasu")));
}

TEST_F(WindowCopiesTest, ScriptWithPlainLineEndsIsNotTakenForAChangedOne) {
    PutScript("a.kx", "a\nb\n");
    ASSERT_TRUE(Start());
    Type(Open("a.kx"), "c");
    End();
    ASSERT_TRUE(Start());
    Answer({QMessageBox::Yes});
    EXPECT_EQ(BytesOf(Open("a.kx")), "ca\nb\n");
    EXPECT_THAT(Boxes(), ElementsAre(Question(Path("a.kx"))));
}

TEST_F(WindowCopiesTest, NewScriptComesBackAsANewOne) {
    ASSERT_TRUE(Start());
    Type(New(), "tekst");
    End();
    Answer({QMessageBox::Yes});
    ASSERT_TRUE(Start());
    ASSERT_TRUE(Until([this] { return Count() == 1; }));
    Settle();
    EXPECT_THAT(Boxes(), ElementsAre(Question("Skrypt1")));
    engine::CKalvexDoc& script = *App().Documents().All().front();
    EXPECT_EQ(BytesOf(script), "tekst");
    EXPECT_EQ(TitleOf(script), "Skrypt1");
    EXPECT_TRUE(script.IsModified());
}

TEST_F(WindowCopiesTest, RefusedNewScriptIsNotOfferedAgain) {
    ASSERT_TRUE(Start());
    Type(New(), "tekst");
    End();
    Answer({QMessageBox::No});
    ASSERT_TRUE(Start());
    Settle();
    EXPECT_THAT(Boxes(), ElementsAre(Question("Skrypt1")));
    EXPECT_EQ(Count(), 0u);
    End();
    ASSERT_TRUE(Start());
    EXPECT_EQ(Count(), 0u);
}

TEST_F(WindowCopiesTest, TextThatThePersonGivesUpIsNotOffered) {
    PutScript("a.kx", "a");
    PutScript("b.kx", "b");
    ASSERT_TRUE(Start());
    Type(Open("a.kx"), "x");
    Answer({QMessageBox::No});
    Run(Command::Close);
    Type(Open("b.kx"), "x");
    Answer({QMessageBox::No});
    Run(Command::Quit);
    EXPECT_EQ(Boxes().size(), 2u);
    End();
    ASSERT_TRUE(Start());
    Open("a.kx");
    Open("b.kx");
    EXPECT_THAT(Boxes(), IsEmpty());
}

TEST_F(WindowCopiesTest, TextThatIsKeptAfterAllIsCopiedAgain) {
    PutScript("a.kx", "a");
    PutScript("b.kx", "b");
    ASSERT_TRUE(Start());
    Type(Open("a.kx"), "x");
    Type(Open("b.kx"), "x");
    Answer({QMessageBox::No, QMessageBox::Cancel});
    Run(Command::Quit);
    EXPECT_EQ(Boxes().size(), 2u);
    End();
    ASSERT_TRUE(Start());
    Answer({QMessageBox::No, QMessageBox::No});
    Open("a.kx");
    Open("b.kx");
    EXPECT_THAT(Boxes(), ElementsAre(Question(Path("a.kx")), Question(Path("b.kx"))));
}

TEST_F(WindowCopiesTest, StartThatSavesDropsTheCopy) {
    PutScript("a.kx", ":A\nGOTO A");
    ASSERT_TRUE(Start());
    Type(Open("a.kx"), " ");
    Window().Hide();
    ASSERT_TRUE(QFileInfo::exists(QString::fromStdString(Path("Kalvex.recovery"))));
    Window().show();
    Open("a.kx");
    EXPECT_THAT(Boxes(), IsEmpty());  // what it has is no news to it
    Answer({QMessageBox::Yes});
    Run(Command::Start);
    EXPECT_EQ(Boxes().size(), 1u);
    End();
    PutScript("a.kx", "inny");
    ASSERT_TRUE(Start());
    Open("a.kx");
    EXPECT_THAT(Boxes(), IsEmpty());
}

TEST_F(WindowCopiesTest, ReadFileDropsTheCopy) {
    PutScript("a.kx", "a");
    ASSERT_TRUE(Start());
    Type(Open("a.kx"), "b");
    Window().Hide();
    PutScript("a.kx", "cd");
    Answer({QMessageBox::Yes});
    Window().show();
    Window().activateWindow();
    ASSERT_TRUE(Until([this] { return Window().isActiveWindow(); }));
    QEvent change(QEvent::ActivationChange);
    QApplication::sendEvent(&Window(), &change);
    Settle();
    EXPECT_EQ(Boxes().size(), 1u);
    End();
    ASSERT_TRUE(Start());
    Open("a.kx");
    EXPECT_THAT(Boxes(), IsEmpty());
}

TEST_F(WindowCopiesTest, RunningScriptIsAskedAboutWhenItStandsStill) {
    PutScript("a.kx", ":A\nGOTO A");
    ASSERT_TRUE(Start());
    Type(Open("a.kx"), " ");
    End();
    m_folder.Put("Kalvex.ini", "[Autostart]\nProcedura0=a.kx\n");
    ASSERT_TRUE(Start());
    Settle();
    engine::CKalvexDoc& script = *Find("a.kx");
    EXPECT_TRUE(script.State().m_bRunning);
    EXPECT_THAT(Boxes(), IsEmpty());
    Answer({QMessageBox::Yes});
    script.Reset();
    ASSERT_TRUE(Until([&] { return script.IsModified(); }));
    EXPECT_THAT(Boxes(), ElementsAre(Question(Path("a.kx"))));
    EXPECT_EQ(BytesOf(script), " :A\nGOTO A");
}

}  // namespace
}  // namespace kalvex::window
