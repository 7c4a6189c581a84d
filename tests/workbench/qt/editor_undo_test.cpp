// Each edit is one action of its name, and the lists hold what the editor can do.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "workbench/qt/editor_world.h"

namespace kalvex::window {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class EditorUndoTest : public EditorWorld {
  protected:
    void Clip(const QString& text) { QApplication::clipboard()->setText(text); }
};

TEST_F(EditorUndoTest, RunOfTypedCharactersIsOne) {
    Edit("");
    Type("LOCAL ŻÓŁW");
    EXPECT_THAT(Undos(), ElementsAre("Wprowadzenie tekstu"));
    m_editor->Undo();
    EXPECT_EQ(Text(), "");
    EXPECT_THAT(Undos(), IsEmpty());
    EXPECT_THAT(Redos(), ElementsAre("Wprowadzenie tekstu"));
    m_editor->Redo();
    EXPECT_EQ(Text(), "LOCAL ŻÓŁW");
    ExpectListsAgree();
}

TEST_F(EditorUndoTest, PointerThatMovesDoesNotPartARun) {
    Edit("");
    Type("a");
    QTest::mouseMove(m_editor->viewport(), QPoint(100, 50));
    QTest::mouseClick(m_editor->viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(400, 5));
    Type("b");
    EXPECT_EQ(Text(), "ab");
    EXPECT_THAT(Undos(), ElementsAre("Wprowadzenie tekstu"));
    ExpectListsAgree();
}

TEST_F(EditorUndoTest, EnterAndTabAreOneEach) {
    Edit("");
    Type("a");
    Press(Qt::Key_Return);
    Press(Qt::Key_Return);
    Press(Qt::Key_Tab);
    Type("b");
    EXPECT_EQ(Text(), "a\n\n\tb");
    EXPECT_THAT(Undos(), ElementsAre("Wprowadzenie tekstu", "Tabulacja", "Przejście do nowej linii",
                                     "Przejście do nowej linii", "Wprowadzenie tekstu"));
    ExpectListsAgree();
}

TEST_F(EditorUndoTest, BackspaceAndDeleteHaveTheirNames) {
    Edit("abcdef");
    SetCaret(0, 3);
    Press(Qt::Key_Backspace);
    Press(Qt::Key_Delete);
    Press(Qt::Key_Backspace);
    EXPECT_EQ(Text(), "aef");
    EXPECT_THAT(Undos(), ElementsAre("Skasowanie znaku", "Usunięcie tekstu", "Skasowanie znaku"));
    m_editor->SelectAll();
    Press(Qt::Key_Backspace);
    EXPECT_EQ(Undos().front(), "Usunięcie tekstu");
    m_editor->Undo();
    m_editor->SelectAll();
    m_editor->Delete();
    EXPECT_EQ(Undos().front(), "Usunięcie tekstu");
    EXPECT_EQ(Text(), "");
    ExpectListsAgree();
}

TEST_F(EditorUndoTest, CutAndEachPasteAreOneEach) {
    Edit("abc");
    m_editor->SelectAll();
    m_editor->Cut();
    EXPECT_EQ(Text(), "");
    m_editor->Paste();
    m_editor->Paste();
    EXPECT_EQ(Text(), "abcabc");
    EXPECT_THAT(Undos(), ElementsAre("Wklejenie tekstu", "Wklejenie tekstu", "Wycięcie tekstu"));
    Press(Qt::Key_Insert, Qt::ShiftModifier);
    m_editor->SelectAll();
    Press(Qt::Key_Delete, Qt::ShiftModifier);
    EXPECT_THAT(Undos(), ElementsAre("Wycięcie tekstu", "Wklejenie tekstu", "Wklejenie tekstu",
                                     "Wklejenie tekstu", "Wycięcie tekstu"));
    ExpectListsAgree();
}

TEST_F(EditorUndoTest, PasteOfWindowsLinesIsOneAndHasLines) {
    Edit("");
    Clip("a\r\nb\r\n");
    m_editor->Paste();
    EXPECT_EQ(Text(), "a\nb\n");
    EXPECT_EQ(m_document->Text().GetText(), "a\r\nb\r\n");
    EXPECT_THAT(Undos(), ElementsAre("Wklejenie tekstu"));
    ExpectListsAgree();
}

TEST_F(EditorUndoTest, TypingOverASelectionReplacesIt) {
    Edit("abc");
    m_editor->SelectAll();
    Type("xy");
    EXPECT_EQ(Text(), "xy");
    EXPECT_THAT(Undos(), ElementsAre("Wprowadzenie tekstu", "Zamiana tekstu"));
    ExpectListsAgree();
}

TEST_F(EditorUndoTest, CommandsOnLinesAreOneEach) {
    Edit("a\nb\nc");
    SelectLines(0, 2);
    m_editor->Indent();
    EXPECT_EQ(Text(), "\ta\n\tb\nc");
    m_editor->Unindent();
    EXPECT_EQ(Text(), "a\nb\nc");
    m_editor->ToggleComment();
    m_editor->MoveLines(true);
    EXPECT_EQ(Text(), "c\n;a\n;b");
    m_editor->InsertAtTop("REMOTE X S@X\r\nREMOTE Y S@Y\r\n");
    EXPECT_EQ(Text(), "REMOTE X S@X\nREMOTE Y S@Y\nc\n;a\n;b");
    EXPECT_THAT(Undos(), ElementsAre("Wprowadzenie tekstu", "Zamiana tekstu", "Zamiana tekstu",
                                     "Zmniejszenie wcięcia", "Zwiększenie wcięcia"));
    ExpectListsAgree();
}

TEST_F(EditorUndoTest, ReplacementOfManyIsOne) {
    Edit("a a a");
    EXPECT_TRUE(m_editor->ReplaceAll({{0, 1, "xx"}, {2, 3, ""}, {4, 5, "y\n"}}));
    EXPECT_EQ(Text(), "xx  y\n");
    EXPECT_THAT(Undos(), ElementsAre("Zamiana tekstu"));
    ExpectListsAgree();
}

TEST_F(EditorUndoTest, ReplacementOfVeryManyKeepsMarksBothWays) {
    std::string text;
    std::string replaced;
    std::vector<CKalvexEditCtrl::Replacement> replacements;
    for (int line = 0; line < 300; ++line) {
        replacements.push_back({line * 4 + 1, line * 4 + 2, "zz"});
        text += "aba\n";
        replaced += "azza\n";
    }
    Edit(text);
    m_model->Markers().SetBreakpoint(150, true);
    m_model->Markers().Toggle(7, workbench::MarkerBookmark);
    const auto expectMarks = [this] {
        m_editor->ApplyView();
        EXPECT_THAT(MarkedLines(MarkBreakpoint), ElementsAre(150));
        EXPECT_THAT(MarkedLines(MarkBookmark), ElementsAre(7));
    };
    EXPECT_TRUE(m_editor->ReplaceAll(replacements));
    EXPECT_EQ(Text(), replaced);
    EXPECT_THAT(Undos(), ElementsAre("Zamiana tekstu"));
    expectMarks();
    m_editor->Undo();
    EXPECT_EQ(Text(), text);
    expectMarks();
    m_editor->Redo();
    EXPECT_EQ(Text(), replaced);
    expectMarks();
    ExpectListsAgree();
}

TEST_F(EditorUndoTest, VeryManyLinesAreIndentedAsOneAction) {
    std::string text;
    std::string indented;
    for (int line = 0; line < 300; ++line) {
        text += "ź\n";
        indented += "\tź\n";
    }
    Edit(text);
    m_model->Markers().SetBreakpoint(150, true);
    m_editor->SelectAll();
    m_editor->Indent();
    EXPECT_EQ(Text(), indented);
    EXPECT_EQ(m_editor->selectedText().toStdString(), indented);
    m_editor->Unindent();
    EXPECT_EQ(Text(), text);
    m_editor->Undo();
    EXPECT_EQ(Text(), indented);
    EXPECT_TRUE(m_model->HasBreakpoint(150));
    EXPECT_THAT(Undos(), ElementsAre("Zwiększenie wcięcia"));
    ExpectListsAgree();
}

TEST_F(EditorUndoTest, DropIsOne) {
    Edit("abc");
    QMimeData text;
    text.setText("xyz");
    Drop(text);
    EXPECT_EQ(Text(), "abcxyz");
    EXPECT_THAT(Undos(), ElementsAre("Operacja przeciągnij i upuść"));
    ExpectListsAgree();
}

TEST_F(EditorUndoTest, DroppedFilesAreTheWindows) {
    Edit("abc");
    QMimeData files;
    files.setUrls({QUrl("file:///a.kx"), QUrl("file:///b.kx")});
    Drop(files);
    EXPECT_EQ(Text(), "abc");
    EXPECT_THAT(m_heard, ElementsAre("dropped file:///a.kx", "dropped file:///b.kx"));
}

TEST_F(EditorUndoTest, SeveralStepsAtOnce) {
    Edit("");
    for (int i = 0; i < 5; ++i) {
        Type("a");
        Press(Qt::Key_Return);
    }
    EXPECT_EQ(Undos().size(), 10u);
    m_editor->Undo(4);
    EXPECT_EQ(Text(), "a\na\na\n");
    EXPECT_EQ(Redos().size(), 4u);
    m_editor->Redo(2);
    EXPECT_EQ(Text(), "a\na\na\na\n");
    m_editor->Undo(99);
    EXPECT_EQ(Text(), "");
    Type("z");
    EXPECT_THAT(Redos(), IsEmpty());
}

TEST_F(EditorUndoTest, ListsAgreeWhateverIsDone) {
    Edit("IF A THEN\n\tSLEEP 1\nENDIF\n");
    Clip("x\ny");
    std::mt19937 random(7);
    const std::vector<std::function<void()>> edits = {
        [this] { Type("q"); },
        [this] { Type("ż€"); },
        [this] { Press(Qt::Key_Backspace); },
        [this] { Press(Qt::Key_Delete); },
        [this] { Press(Qt::Key_Backspace, Qt::ControlModifier); },
        [this] { Press(Qt::Key_Return); },
        [this] { Press(Qt::Key_Tab); },
        [this] { m_editor->Paste(); },
        [this] { m_editor->Cut(); },
        [this] { m_editor->Indent(); },
        [this] { m_editor->Unindent(); },
        [this] { m_editor->ToggleComment(); },
        [this] { m_editor->MoveLines(true); },
        [this] { m_editor->MoveLines(false); },
        [this] { m_editor->Undo(2); },
        [this] { m_editor->Redo(); },
        [this] { Press(Qt::Key_Down, Qt::ShiftModifier); },
        [this] { Press(Qt::Key_Right, Qt::ShiftModifier); },
        [this] { Press(Qt::Key_Up); },
        [this] { Press(Qt::Key_Left); },
        [this] { Press(Qt::Key_Home); },
        [this] { Press(Qt::Key_Insert); },
    };
    for (int round = 0; round < 40; ++round) {
        for (int i = 0; i < 15; ++i) edits[random() % edits.size()]();
        ExpectListsAgree();
    }
}

}  // namespace
}  // namespace kalvex::window
