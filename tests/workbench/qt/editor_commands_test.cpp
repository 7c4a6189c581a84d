// What a person does with lines, places and bookmarks.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "workbench/qt/editor_world.h"

namespace kalvex::window {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class EditorCommandsTest : public EditorWorld {
  protected:
    std::pair<int, int> Caret() const { return {m_editor->CaretLine(), m_editor->CaretColumn()}; }
};

TEST_F(EditorCommandsTest, RowIsIndentedAndTheCaretKeepsItsDistanceFromTheEnd) {
    Edit("abc\nź");
    SetCaret(0, 2);
    m_editor->Indent();
    EXPECT_EQ(Text(), "\tabc\nź");
    EXPECT_EQ(Caret(), std::pair(0, 3));
    m_editor->Unindent();
    EXPECT_EQ(Text(), "abc\nź");
    EXPECT_EQ(Caret(), std::pair(0, 2));
    SetCaret(0, 0);
    m_editor->Indent();
    EXPECT_EQ(Caret(), std::pair(0, 1));
    m_editor->Unindent();
    m_editor->Unindent();
    EXPECT_EQ(Text(), "abc\nź");
    EXPECT_FALSE(m_editor->HasSelection());
    EXPECT_THAT(Undos(), ElementsAre("Zmniejszenie wcięcia", "Zwiększenie wcięcia",
                                     "Zmniejszenie wcięcia", "Zwiększenie wcięcia"));
}

TEST_F(EditorCommandsTest, UnindentTakesATabOrItsWidthInBlanks) {
    Edit("\t\ta\n      b\n  \tc\n d\ne");
    m_editor->SelectAll();
    m_editor->Unindent();
    EXPECT_EQ(Text(), "\ta\n  b\nc\nd\ne");
}

TEST_F(EditorCommandsTest, SelectedRowsAreIndentedAndStaySelected) {
    Edit("a\nb\nc");
    SelectLines(0, 2);
    m_editor->Indent();
    EXPECT_EQ(Text(), "\ta\n\tb\nc");
    EXPECT_EQ(m_editor->selectedText(), "\ta\n\tb\n");
    Press(Qt::Key_Tab);
    EXPECT_EQ(Text(), "\t\ta\n\t\tb\nc");
    Press(Qt::Key_Backtab, Qt::ShiftModifier);
    m_editor->Unindent();
    EXPECT_EQ(Text(), "a\nb\nc");
}

TEST_F(EditorCommandsTest, CommentsComeAndGo) {
    Edit("\tIF A THEN\n\nENDIF\nX");
    SelectLines(0, 3);
    Press(Qt::Key_Slash, Qt::ControlModifier);
    EXPECT_EQ(Text(), ";\tIF A THEN\n\n;ENDIF\nX");
    m_editor->ToggleComment();
    EXPECT_EQ(Text(), "\tIF A THEN\n\nENDIF\nX");
    EXPECT_EQ(m_editor->selectedText(), "\tIF A THEN\n\nENDIF\n");
    EXPECT_THAT(Undos(), ElementsAre("Zamiana tekstu", "Zamiana tekstu"));
    Edit("\t; a\nb");
    m_editor->ToggleComment();
    EXPECT_EQ(Text(), "\t a\nb");
    Edit("; a\nb");
    m_editor->SelectAll();
    m_editor->ToggleComment();
    EXPECT_EQ(Text(), ";; a\n;b");
}

TEST_F(EditorCommandsTest, LinesMoveWithTheirMarks) {
    Edit("a\nb\nc\nd");
    m_model->Markers().SetBreakpoint(1, true);
    m_model->Markers().Toggle(2, workbench::MarkerBookmark);
    SetCaret(1, 1);
    Press(Qt::Key_Down, Qt::AltModifier);
    EXPECT_EQ(Text(), "a\nc\nb\nd");
    EXPECT_EQ(Caret(), std::pair(2, 1));
    EXPECT_TRUE(m_model->HasBreakpoint(2));
    EXPECT_THAT(m_model->Markers().LinesOf(workbench::MarkerBookmark), ElementsAre(1));
    Press(Qt::Key_Down, Qt::AltModifier);
    EXPECT_EQ(Text(), "a\nc\nd\nb");
    Press(Qt::Key_Down, Qt::AltModifier);
    EXPECT_EQ(Text(), "a\nc\nd\nb");
    for (int i = 0; i < 4; ++i) Press(Qt::Key_Up, Qt::AltModifier);
    EXPECT_EQ(Text(), "b\na\nc\nd");
    EXPECT_EQ(Caret(), std::pair(0, 1));
    EXPECT_THAT(m_model->Markers().LinesOf(workbench::MarkerBreakpoint), ElementsAre(0));
    EXPECT_EQ(Undos().size(), 5u);
    ExpectListsAgree();
}

TEST_F(EditorCommandsTest, SelectedLinesMoveTogether) {
    Edit("a\nb\nc\nd");
    SelectLines(0, 2);
    m_editor->MoveLines(true);
    EXPECT_EQ(Text(), "c\na\nb\nd");
    EXPECT_EQ(m_editor->selectedText(), "a\nb\n");
    m_editor->MoveLines(true);
    EXPECT_EQ(Text(), "c\nd\na\nb");
    m_editor->MoveLines(false);
    EXPECT_EQ(Text(), "c\na\nb\nd");
}

TEST_F(EditorCommandsTest, SeveralCaretsTypeAtOnce) {
    Edit("a\nb");
    m_editor->SendScintilla(QsciScintillaBase::SCI_SETSELECTION, 1UL, 1L);
    m_editor->SendScintilla(QsciScintillaBase::SCI_ADDSELECTION, 3UL, 3L);
    Type("x");
    EXPECT_EQ(Text(), "ax\nbx");
    EXPECT_THAT(Undos(), ElementsAre("Wprowadzenie tekstu"));
    ExpectListsAgree();
}

TEST_F(EditorCommandsTest, ColumnIsSelectedAndReplaced) {
    Edit("abc\nabc");
    SetCaret(0, 1);
    Press(Qt::Key_Right, Qt::AltModifier | Qt::ShiftModifier);
    Press(Qt::Key_Down, Qt::AltModifier | Qt::ShiftModifier);
    Type("X");
    EXPECT_EQ(Text(), "aXc\naXc");
    EXPECT_EQ(Undos().size(), 1u);
    ExpectListsAgree();
}

TEST_F(EditorCommandsTest, BookmarksGoRoundAbout) {
    Edit("a\nb\nc\nd");
    EXPECT_FALSE(m_editor->GoToBookmark(true));
    for (const int line : {2, 0}) {
        SetCaret(line, 0);
        m_editor->ToggleBookmark();
    }
    EXPECT_THAT(MarkedLines(MarkBookmark), ElementsAre(0, 2));
    EXPECT_TRUE(m_editor->GoToBookmark(true));
    EXPECT_EQ(m_editor->CaretLine(), 2);
    EXPECT_TRUE(m_editor->GoToBookmark(true));
    EXPECT_EQ(m_editor->CaretLine(), 0);
    EXPECT_TRUE(m_editor->GoToBookmark(false));
    EXPECT_EQ(m_editor->CaretLine(), 2);
    m_editor->ToggleBookmark();
    EXPECT_THAT(MarkedLines(MarkBookmark), ElementsAre(0));
    m_editor->DeleteBookmarks();
    EXPECT_THAT(MarkedLines(MarkBookmark), IsEmpty());
}

TEST_F(EditorCommandsTest, GoToLineUnfoldsItAndStaysInTheText) {
    Edit("IF A THEN\n\tSLEEP 1\nENDIF\nX");
    m_editor->Outline(OutlineCommand::ToggleAll);
    EXPECT_THAT(Folded(), ElementsAre(1, 2));
    m_editor->GoToLine(1, 2);
    EXPECT_EQ(Caret(), std::pair(1, 2));
    EXPECT_THAT(Folded(), IsEmpty());
    m_editor->GoToLine(99);
    EXPECT_EQ(m_editor->CaretLine(), 3);
    m_editor->GoToLine(-1);
    EXPECT_EQ(m_editor->CaretLine(), 0);
}

TEST_F(EditorCommandsTest, InsertSwitchesToOverwriting) {
    Edit("abc");
    EXPECT_FALSE(m_editor->IsOverwriting());
    Press(Qt::Key_Insert);
    EXPECT_TRUE(m_editor->IsOverwriting());
    SetCaret(0, 0);
    Type("x");
    EXPECT_EQ(Text(), "xbc");
}

TEST_F(EditorCommandsTest, KeysOfTheMenusAreNotTheEditors) {
    Edit("abc\ndef");
    SetCaret(0, 1);
    for (const Qt::Key key : {Qt::Key_X, Qt::Key_V, Qt::Key_D, Qt::Key_L, Qt::Key_T, Qt::Key_U,
                              Qt::Key_Y, Qt::Key_Z, Qt::Key_A, Qt::Key_J}) {
        Press(key, Qt::ControlModifier);
        Press(key, Qt::ControlModifier | Qt::ShiftModifier);
    }
    EXPECT_EQ(Text(), "abc\ndef");
    EXPECT_FALSE(m_editor->HasSelection());
}

TEST_F(EditorCommandsTest, MarginMenuActsOnItsLine) {
    Edit("a\nb\nc");
    const long y = m_editor->SendScintilla(QsciScintillaBase::SCI_POINTYFROMPOSITION, 0UL, 2L);
    const std::unique_ptr<QMenu> menu = m_editor->MenuAt(QPoint(5, static_cast<int>(y) + 2));
    ASSERT_NE(menu, nullptr);
    ASSERT_EQ(menu->actions().size(), 2);
    EXPECT_EQ(menu->actions()[0]->text().toStdString(), "Wstaw/Usuń punkt przerwania");
    EXPECT_EQ(menu->actions()[1]->text().toStdString(), "Usuń wszystkie punkty przerwania");
    menu->actions()[0]->trigger();
    menu->actions()[1]->trigger();
    EXPECT_THAT(m_heard, ElementsAre("breakpoint 1", "no breakpoints"));
}

TEST_F(EditorCommandsTest, TextHasItsMenuOnlyWhereItMayBeEdited) {
    Edit("a\nb");
    const QPoint place(300, 5);
    ASSERT_NE(m_editor->MenuAt(place), nullptr);
    EXPECT_EQ(m_editor->MenuAt(place)->actions().front()->text(), "text");
    m_document->SetReadOnly(true);
    m_editor->ApplyView();
    EXPECT_EQ(m_editor->MenuAt(place), nullptr);
    EXPECT_NE(m_editor->MenuAt(QPoint(5, 5)), nullptr);
}

TEST_F(EditorCommandsTest, ClickIntoTheMarginTogglesABreakpoint) {
    Edit("a\nb\nc");
    const long y = m_editor->SendScintilla(QsciScintillaBase::SCI_POINTYFROMPOSITION, 0UL, 4L);
    const int numbers = static_cast<int>(
        m_editor->SendScintilla(QsciScintillaBase::SCI_GETMARGINWIDTHN, MarginNumbers));
    QTest::mouseClick(m_editor->viewport(), Qt::LeftButton, Qt::NoModifier,
                      QPoint(numbers + 5, static_cast<int>(y) + 3));
    EXPECT_THAT(m_heard, ElementsAre("breakpoint 2"));
}

TEST_F(EditorCommandsTest, CompletionPutsInTheWordAsOneAction) {
    Edit("REMOTE X S@X\n");
    SetCaret(1, 0);
    EXPECT_TRUE(m_editor->CanComplete());
    Activate();
    auto* const list = m_editor->findChild<CompletionList*>();
    ASSERT_NE(list, nullptr);
    Type("TIME.");
    EXPECT_TRUE(QTest::qWaitFor([list] { return list->isVisible(); }));
    EXPECT_EQ(list->count(), 49);
    Type("HOUR.");
    EXPECT_TRUE(QTest::qWaitFor([list] { return list->isVisible() && list->count() == 1; }));
    EXPECT_EQ(list->item(0)->text(), "MIN");
    QTest::keyClick(list, Qt::Key_Return);
    EXPECT_EQ(Text(), "REMOTE X S@X\nTIME.HOUR.MIN");
    EXPECT_EQ(Caret(), std::pair(1, 13));
    EXPECT_THAT(Undos(), ElementsAre("Wprowadzenie tekstu", "Wprowadzenie tekstu"));
    ExpectListsAgree();
}

TEST_F(EditorCommandsTest, CommandOpensTheKeywords) {
    Edit("");
    Activate();
    m_editor->ShowCompletion();
    auto* const list = m_editor->findChild<CompletionList*>();
    ASSERT_TRUE(list->isVisible());
    EXPECT_EQ(list->count(), 140);
    QTest::keyClick(list, Qt::Key_Return);
    EXPECT_EQ(Text(), "ADD");
    EXPECT_FALSE(m_editor->CanComplete());
    m_document->SetReadOnly(true);
    m_editor->ApplyView();
    m_editor->ShowCompletion();
    EXPECT_FALSE(list->isVisible());
}

}  // namespace
}  // namespace kalvex::window
