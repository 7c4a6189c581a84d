// The editor and its document: one text, and what is shown of a run.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/ScriptDocuments.h"
#include "workbench/qt/editor_world.h"

namespace kalvex::window {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ScriptEditorTest : public EditorWorld {};

TEST_F(ScriptEditorTest, ShowsTheTextAndIsNotModified) {
    Edit("LOCAL ŁÓDŹ\n\tSLEEP 1\n");
    EXPECT_EQ(Text(), "LOCAL ŁÓDŹ\n\tSLEEP 1\n");
    EXPECT_FALSE(m_document->IsModified());
    EXPECT_THAT(Undos(), IsEmpty());
    EXPECT_EQ(m_editor->objectName(), "scriptEditor");
    EXPECT_EQ(m_editor->accessibleName(), ToQt(m_document->GetPathName()));
}

TEST_F(ScriptEditorTest, WhatIsTypedGoesIntoTheDocument) {
    Edit("a\nb");
    SetCaret(1, 1);
    Type("ąę");
    EXPECT_EQ(Text(), "a\nbąę");
    EXPECT_TRUE(m_document->IsModified());
    Press(Qt::Key_Return);
    Type("c");
    EXPECT_EQ(Text(), "a\nbąę\nc");
    EXPECT_EQ(m_editor->CaretLine(), 2);
    EXPECT_EQ(m_editor->CaretColumn(), 1);
    m_editor->Undo(3);
    EXPECT_EQ(Text(), "a\nb");
    EXPECT_FALSE(m_document->IsModified());
    m_editor->Redo();
    EXPECT_TRUE(m_document->IsModified());
}

TEST_F(ScriptEditorTest, SavedTextIsNotModified) {
    Edit("a");
    Type("x");
    std::string error;
    ASSERT_TRUE(m_document->Save(error));
    m_editor->ApplyView();
    EXPECT_FALSE(m_document->IsModified());
    EXPECT_FALSE(m_editor->isModified());
    m_editor->Undo();
    EXPECT_TRUE(m_document->IsModified());
}

TEST_F(ScriptEditorTest, LoneCarriageReturnIsNoLineEnd) {
    Edit("a");
    m_document->Text().SetText("a\rb\nc");
    EXPECT_EQ(m_editor->Bytes().toStdString(), "a␍b\nc");
    SetCaret(0, 3);
    Type("!");
    EXPECT_EQ(m_document->Text().GetLine(0), "a\rb!");
    EXPECT_EQ(m_document->Text().GetLineCount(), 2);
}

TEST_F(ScriptEditorTest, CharacterThatCannotBeSavedStaysAndIsFound) {
    Edit("a\nźb");
    EXPECT_FALSE(m_editor->FirstOutsideWindows1250().has_value());
    SetCaret(1, 2);
    Type("λ");
    EXPECT_EQ(m_editor->Bytes().toStdString(), "a\nźbλ");
    EXPECT_EQ(text::ToUtf8(m_document->Text().GetLine(1)), "źb?");
    const auto found = m_editor->FirstOutsideWindows1250();
    ASSERT_TRUE(found.has_value());
    EXPECT_EQ(found->line, 1);
    EXPECT_EQ(found->column, 2);
    EXPECT_EQ(found->character.toStdString(), "λ");
}

TEST_F(ScriptEditorTest, RunningLineIsHighlightedAndHasTheCaret) {
    Edit("LOCAL A\nLOCAL B\nLOCAL C\n:X\nGOTO X");
    m_document->Start();
    m_editor->ApplyView();
    EXPECT_THAT(MarkedLines(MarkRunLine), IsEmpty());
    Tick(1);
    m_editor->ApplyView();
    EXPECT_THAT(MarkedLines(MarkRunLine), ElementsAre(1));
    EXPECT_EQ(m_editor->CaretLine(), 1);
    EXPECT_EQ(m_editor->CaretColumn(), 0);
    EXPECT_FALSE(m_editor->HasSelection());
    Tick(100);
    m_editor->ApplyView();
    EXPECT_THAT(MarkedLines(MarkRunLine), ElementsAre(3));
    SetCaret(0, 2);
    m_editor->ApplyView();
    EXPECT_EQ(m_editor->CaretLine(), 0);
    m_document->Stop();
    m_editor->ApplyView();
    EXPECT_THAT(MarkedLines(MarkCurrentLine), ElementsAre(3));
    EXPECT_EQ(m_editor->CaretLine(), 3);
    m_document->Reset();
    m_editor->ApplyView();
    EXPECT_THAT(MarkedLines(MarkRunLine), IsEmpty());
    EXPECT_THAT(MarkedLines(MarkCurrentLine), IsEmpty());
    EXPECT_EQ(m_editor->CaretLine(), 3);
}

TEST_F(ScriptEditorTest, FarLineComesIntoView) {
    std::string text;
    for (int line = 0; line < 500; ++line) text += "LOCAL A\n";
    Edit(text);
    m_model->SelectLine(400);
    m_editor->ApplyView();
    const long top = m_editor->SendScintilla(QsciScintillaBase::SCI_GETFIRSTVISIBLELINE);
    const long rows = m_editor->SendScintilla(QsciScintillaBase::SCI_LINESONSCREEN);
    EXPECT_LE(top, 400);
    EXPECT_GT(top + rows, 400);
    m_model->SelectLine(900);
    m_editor->ApplyView();
    EXPECT_THAT(MarkedLines(MarkRunLine), IsEmpty());
}

TEST_F(ScriptEditorTest, MarksAreShownAndMoveWithTheirLines) {
    Edit("a\nb\nc\nd");
    m_model->Markers().SetBreakpoint(1, true);
    m_model->Markers().Toggle(2, workbench::MarkerBookmark);
    m_editor->ApplyView();
    EXPECT_THAT(MarkedLines(MarkBreakpoint), ElementsAre(1));
    EXPECT_THAT(MarkedLines(MarkBreakpointLine), ElementsAre(1));
    EXPECT_THAT(MarkedLines(MarkBookmark), ElementsAre(2));
    SetCaret(1, 0);
    Press(Qt::Key_Return);
    m_editor->ApplyView();
    EXPECT_THAT(MarkedLines(MarkBreakpoint), ElementsAre(2));
    EXPECT_TRUE(m_model->HasBreakpoint(2));
    SelectLines(2, 3);
    m_editor->Delete();
    m_editor->ApplyView();
    EXPECT_EQ(Text(), "a\n\nc\nd");
    EXPECT_THAT(MarkedLines(MarkBreakpoint), IsEmpty());
    EXPECT_THAT(MarkedLines(MarkBookmark), ElementsAre(2));
}

TEST_F(ScriptEditorTest, IncludeMovesWhatBelongsToTheLinesAndResetMovesItBack) {
    WriteFile("inc.kx", "LOCAL I\nLOCAL J\n");
    Edit("LOCAL A\nINCLUDE inc.kx\nLOCAL B\nLOCAL C\n:X\nGOTO X");
    m_model->Markers().SetBreakpoint(3, true);
    m_model->Markers().Toggle(1, workbench::MarkerBookmark);
    SetCaret(2, 3);
    m_document->Start();
    m_editor->ApplyView();
    EXPECT_EQ(m_document->Text().GetLineCount(), 9);
    EXPECT_EQ(m_document->Text().GetLine(2), "LOCAL I");
    Text();
    EXPECT_THAT(MarkedLines(MarkBreakpoint), ElementsAre(6));
    EXPECT_THAT(MarkedLines(MarkBookmark), ElementsAre(1));
    EXPECT_EQ(m_editor->CaretLine(), 5);
    EXPECT_EQ(m_editor->CaretColumn(), 3);
    m_model->Markers().SetBreakpoint(2, true);
    SetCaret(6, 2);
    m_document->Reset();
    m_editor->ApplyView();
    EXPECT_EQ(Text(), "LOCAL A\nINCLUDE inc.kx\nLOCAL B\nLOCAL C\n:X\nGOTO X");
    EXPECT_THAT(MarkedLines(MarkBreakpoint), ElementsAre(3));
    EXPECT_THAT(MarkedLines(MarkBookmark), ElementsAre(1));
    EXPECT_EQ(m_editor->CaretLine(), 3);
    EXPECT_EQ(m_editor->CaretColumn(), 2);
}

TEST_F(ScriptEditorTest, CaretInTheLineOfAnIncludeStaysThere) {
    WriteFile("inc.kx", "LOCAL I\n");
    Edit("LOCAL A\nINCLUDE inc.kx\nLOCAL B");
    SetCaret(1, 5);
    m_document->Start();
    EXPECT_EQ(m_editor->CaretLine(), 1);
    EXPECT_EQ(m_editor->CaretColumn(), 5);
    m_document->Reset();
    EXPECT_EQ(m_editor->CaretLine(), 1);
    EXPECT_EQ(m_editor->CaretColumn(), 5);
}

TEST_F(ScriptEditorTest, BreakpointStopsAtItsLineBehindAnInclude) {
    WriteFile("inc.kx", "LOCAL I\nLOCAL J\n");
    Edit("INCLUDE inc.kx\nLOCAL B\nLOCAL C\n:X\nGOTO X");
    m_model->Markers().SetBreakpoint(2, true);
    m_document->Start();
    Tick(1000);
    EXPECT_TRUE(m_document->State().m_bPaused);
    EXPECT_EQ(m_document->GetLine(m_document->State().m_nCurrentLine), "LOCAL C");
}

TEST_F(ScriptEditorTest, DocumentsOfTheApplicationHaveATextToEdit) {
    WriteFile("inc.kx", "LOCAL I\n");
    WriteFile("a.kx", "INCLUDE inc.kx\nLOCAL A\n");
    app::ScriptDocuments opened(services);
    std::string error;
    engine::CKalvexDoc* const document = opened.Open("a.kx", error);
    ASSERT_NE(document, nullptr) << error;
    workbench::DocumentModel& model = opened.ModelOf(*document);
    ASSERT_EQ(model.Text(), &document->Text());
    model.Markers().SetBreakpoint(1, true);
    document->Start();
    EXPECT_THAT(model.Markers().LinesOf(workbench::MarkerBreakpoint), ElementsAre(3));
    document->Reset();
    EXPECT_THAT(model.Markers().LinesOf(workbench::MarkerBreakpoint), ElementsAre(1));
}

TEST_F(ScriptEditorTest, ReadOnlyFollowsTheRun) {
    Edit("LOCAL A\n:X\nGOTO X");
    const auto paper = [this] {
        return m_editor->SendScintilla(QsciScintillaBase::SCI_STYLEGETBACK, 0L);
    };
    EXPECT_EQ(paper(), 0xFFFFFF);
    m_document->Start();
    m_editor->ApplyView();
    EXPECT_TRUE(m_editor->isReadOnly());
    EXPECT_EQ(paper(), 0xDDDDDD);
    EXPECT_FALSE(m_editor->IsOutlined());
    EXPECT_EQ(m_editor->SendScintilla(QsciScintillaBase::SCI_GETMARGINWIDTHN, MarginOutline), 0);
    Type("xxx");
    Press(Qt::Key_Backspace);
    m_editor->Paste();
    m_editor->Undo();
    EXPECT_THAT(m_heard, IsEmpty());
    QCoreApplication::processEvents();
    EXPECT_THAT(m_heard, ElementsAre("message Edycja dokumentu nie jest możliwa!"));
    Type("x");
    QCoreApplication::processEvents();
    EXPECT_EQ(m_heard.size(), 2u);
    EXPECT_EQ(Text(), "LOCAL A\n:X\nGOTO X");
    m_document->Reset();
    m_editor->ApplyView();
    EXPECT_FALSE(m_editor->isReadOnly());
    EXPECT_EQ(paper(), 0xFFFFFF);
    EXPECT_TRUE(m_editor->IsOutlined());
    EXPECT_EQ(m_editor->SendScintilla(QsciScintillaBase::SCI_GETMARGINWIDTHN, MarginOutline), 20);
}

TEST_F(ScriptEditorTest, UndoSurvivesARunWithAnInclude) {
    WriteFile("inc.kx", "LOCAL I\n");
    Edit("INCLUDE inc.kx\n:X\nGOTO X");
    SetCaret(2, 6);
    Type("; a");
    m_editor->Undo();
    m_editor->Redo();
    m_document->Start();
    m_editor->ApplyView();
    EXPECT_FALSE(m_editor->CanDo(workbench::UndoDirection::Undo));
    QCoreApplication::processEvents();
    m_document->Reset();
    m_editor->ApplyView();
    EXPECT_EQ(Text(), "INCLUDE inc.kx\n:X\nGOTO X; a");
    EXPECT_THAT(Undos(), ElementsAre("Wprowadzenie tekstu"));
    m_editor->Undo();
    EXPECT_EQ(Text(), "INCLUDE inc.kx\n:X\nGOTO X");
    EXPECT_TRUE(m_document->IsModified());
}

TEST_F(ScriptEditorTest, UndoGoesWhenAnotherTextComesBack) {
    Edit("LOCAL A\n:X\nGOTO X");
    Type("; ");
    std::string error;
    ASSERT_TRUE(m_document->Save(error));
    m_document->Start();
    m_editor->ApplyView();
    WriteFile("main.kx", "LOCAL B\n:X\nGOTO X");
    m_document->Reset();
    m_editor->ApplyView();
    EXPECT_EQ(Text(), "LOCAL B\n:X\nGOTO X");
    EXPECT_THAT(Undos(), IsEmpty());
    EXPECT_FALSE(m_editor->CanDo(workbench::UndoDirection::Undo));
    m_editor->Undo();
    EXPECT_EQ(Text(), "LOCAL B\n:X\nGOTO X");
    EXPECT_FALSE(m_document->IsModified());
}

TEST_F(ScriptEditorTest, ReloadOfAnIdleScriptEmptiesUndoBeforeTheNextKey) {
    Edit("abc");
    Type("x");
    m_document->Text().SetText("other\ntext");
    Press(Qt::Key_Backspace);
    EXPECT_THAT(Undos().size(), testing::Le(1u));
    ExpectListsAgree();
}

TEST_F(ScriptEditorTest, StandingErrorIsMarked) {
    Edit("LOCAL A\nNIC\nLOCAL B");
    m_document->Start();
    Tick(200);
    m_editor->ApplyView();
    EXPECT_THAT(MarkedLines(MarkError), ElementsAre(1));
    const long y = m_editor->SendScintilla(QsciScintillaBase::SCI_POINTYFROMPOSITION, 0UL, 8L);
    const QString tip = m_editor->TipAt(QPoint(5, static_cast<int>(y) + 2));
    EXPECT_EQ(tip, ToQt(m_document->State().report->text));
    EXPECT_FALSE(tip.isEmpty());
    m_document->Reset();
    m_editor->ApplyView();
    EXPECT_THAT(MarkedLines(MarkError), IsEmpty());
}

TEST_F(ScriptEditorTest, ConsoleIsToldOfLinesBeforeMarksMove) {
    Edit("a\nb\nc", EditorRole::Console);
    SetCaret(1, 0);
    Press(Qt::Key_Return);
    SelectLines(0, 2);
    Press(Qt::Key_Delete);
    EXPECT_THAT(m_heard, ElementsAre("inserted 1 1", "deleted 0 2"));
    Edit("a\nb\nc");
    m_heard.clear();
    Press(Qt::Key_Return);
    EXPECT_THAT(m_heard, IsEmpty());
}

}  // namespace
}  // namespace kalvex::window
