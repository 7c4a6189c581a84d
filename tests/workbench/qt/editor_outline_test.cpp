// What folds, and what becomes of it in a run.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "workbench/qt/editor_world.h"

namespace kalvex::window {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class EditorOutlineTest : public EditorWorld {
  protected:
    static constexpr const char* kScript =
        "PROCEDURE P()\n"
        "BEGIN\n"
        "IF A THEN\n"
        "SLEEP 1\n"
        "ENDIF\n"
        "END\n"
        "X";
};

TEST_F(EditorOutlineTest, ElementOfTheCaretIsToggled) {
    Edit(kScript);
    SetCaret(3, 0);
    m_editor->Outline(OutlineCommand::Toggle);
    EXPECT_THAT(Folded(), ElementsAre(3, 4));
    SetCaret(2, 0);
    m_editor->Outline(OutlineCommand::Toggle);
    EXPECT_THAT(Folded(), IsEmpty());
    SetCaret(6, 0);
    m_editor->Outline(OutlineCommand::Toggle);
    EXPECT_THAT(Folded(), IsEmpty());
}

TEST_F(EditorOutlineTest, AllAreToggled) {
    Edit(kScript);
    m_editor->Outline(OutlineCommand::ToggleAll);
    EXPECT_THAT(Folded(), ElementsAre(1, 2, 3, 4, 5));
    m_editor->Outline(OutlineCommand::ToggleAll);
    EXPECT_THAT(Folded(), IsEmpty());
}

TEST_F(EditorOutlineTest, DefinitionsAreTheProcedures) {
    Edit("IF A THEN\nX\nENDIF\nPROCEDURE P()\nEND");
    m_editor->Outline(OutlineCommand::CollapseToDefinitions);
    EXPECT_THAT(Folded(), ElementsAre(4));
}

TEST_F(EditorOutlineTest, ClickIntoTheMarginFolds) {
    Edit(kScript);
    const int right = static_cast<int>(
        m_editor->SendScintilla(QsciScintillaBase::SCI_GETMARGINWIDTHN, MarginNumbers) +
        m_editor->SendScintilla(QsciScintillaBase::SCI_GETMARGINWIDTHN, MarginSymbols));
    QTest::mouseClick(m_editor->viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(right + 5, 3));
    EXPECT_THAT(Folded(), ElementsAre(1, 2, 3, 4, 5));
    EXPECT_THAT(m_heard, IsEmpty());
}

TEST_F(EditorOutlineTest, ElementsOfOnesOwnComeAndGoAndMove) {
    Edit("a\nb\nc\nd");
    SelectLines(1, 3);
    m_editor->Outline(OutlineCommand::Create);
    SetCaret(1, 0);
    m_editor->Outline(OutlineCommand::Toggle);
    EXPECT_THAT(Folded(), ElementsAre(2));
    SetCaret(0, 0);
    Press(Qt::Key_Return);
    EXPECT_THAT(Folded(), ElementsAre(3));
    SetCaret(2, 0);
    m_editor->Outline(OutlineCommand::Remove);
    EXPECT_THAT(Folded(), IsEmpty());
    m_editor->Outline(OutlineCommand::ToggleAll);
    EXPECT_THAT(Folded(), IsEmpty());
}

TEST_F(EditorOutlineTest, OutlineIsTurnedOffAndOn) {
    Edit(kScript);
    const auto margin = [this] {
        return m_editor->SendScintilla(QsciScintillaBase::SCI_GETMARGINWIDTHN, MarginOutline);
    };
    m_editor->Outline(OutlineCommand::ToggleAll);
    m_editor->Outline(OutlineCommand::Stop);
    EXPECT_FALSE(m_editor->IsOutlined());
    EXPECT_EQ(margin(), 0);
    EXPECT_THAT(Folded(), IsEmpty());
    m_editor->Outline(OutlineCommand::ToggleAll);
    EXPECT_THAT(Folded(), IsEmpty());
    m_editor->Outline(OutlineCommand::Show);
    EXPECT_EQ(margin(), 20);
    m_editor->Outline(OutlineCommand::Automatic);
    EXPECT_FALSE(m_editor->IsOutlinedByItself());
    m_editor->Outline(OutlineCommand::ToggleAll);
    EXPECT_THAT(Folded(), IsEmpty());
    m_editor->Outline(OutlineCommand::Automatic);
    m_editor->Outline(OutlineCommand::ToggleAll);
    EXPECT_THAT(Folded(), ElementsAre(1, 2, 3, 4, 5));
}

TEST_F(EditorOutlineTest, EditsChangeWhatFolds) {
    Edit("IF A THEN\nX");
    SetCaret(1, 1);
    Press(Qt::Key_Return);
    Type("ENDIF");
    m_editor->Outline(OutlineCommand::ToggleAll);
    EXPECT_THAT(Folded(), ElementsAre(1, 2));
    m_editor->Undo(2);
    EXPECT_THAT(Folded(), IsEmpty());
}

TEST_F(EditorOutlineTest, FoldsComeBackBehindARunThatMovesTheirLines) {
    WriteFile("inc.kx", "LOCAL I\nLOCAL J\n");
    Edit("INCLUDE inc.kx\nLOCAL A\nIF A > 1 THEN\nSLEEP 1\nENDIF\nIF A > 1 THEN\nENDIF");
    SetCaret(2, 0);
    m_editor->Outline(OutlineCommand::Toggle);
    SetCaret(1, 0);
    EXPECT_THAT(Folded(), ElementsAre(3, 4));
    m_document->Start();
    m_editor->ApplyView();
    EXPECT_THAT(Folded(), IsEmpty());
    m_document->Reset();
    m_editor->ApplyView();
    EXPECT_THAT(Folded(), ElementsAre(3, 4));
}

TEST_F(EditorOutlineTest, TipShowsWhatIsFoldedAway) {
    Edit("IF A THEN\n\tSLEEP 1\nENDIF\nX");
    m_editor->Outline(OutlineCommand::ToggleAll);
    const long x = m_editor->SendScintilla(QsciScintillaBase::SCI_POINTXFROMPOSITION, 0UL, 9L);
    EXPECT_EQ(m_editor->TipAt(QPoint(static_cast<int>(x) + 20, 5)), "\tSLEEP 1\nENDIF");
}

TEST_F(EditorOutlineTest, WordsThatBelongTogetherAreShownAtTheCaret) {
    Edit("X\n\tIF A THEN\nX\nENDIF ; IF");
    m_editor->show();
    const auto shown = [this] {
        QCoreApplication::processEvents();
        m_editor->repaint();
        QCoreApplication::processEvents();
        std::string marked;
        const std::string text = m_editor->Bytes().toStdString();
        for (std::size_t at = 0; at < text.size(); ++at) {
            const bool on = m_editor->SendScintilla(QsciScintillaBase::SCI_INDICATORVALUEAT,
                                                    static_cast<unsigned long>(kBlockIndicator),
                                                    static_cast<long>(at)) != 0;
            if (on) marked += text[at];
        }
        return marked;
    };
    EXPECT_EQ(shown(), "");
    SetCaret(3, 0);
    EXPECT_EQ(shown(), "IFENDIF");
    SetCaret(2, 0);
    EXPECT_EQ(shown(), "");
}

}  // namespace
}  // namespace kalvex::window
