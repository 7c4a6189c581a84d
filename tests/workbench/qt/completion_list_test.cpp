// The list that drops down at the caret: what it shows, its keys, what goes on into the editor, and
// when it goes.
#include "workbench/qt/CompletionList.h"

#include <gtest/gtest.h>

#include <Qsci/qsciscintilla.h>

#include <QAccessible>
#include <QApplication>
#include <QKeyEvent>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QTest>
#include <QWheelEvent>

#include "support/marking_translator.h"

namespace kalvex::window {
namespace {

class CompletionListTest : public testing::Test {
  protected:
    void SetUp() override {
        m_editor.setGeometry(50, 50, 300, 200);
        m_editor.show();
        m_editor.activateWindow();
        m_editor.setFocus();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&m_editor));
    }

    void Open(const QString& typed = {}) {
        m_list.Open(
            QPoint(80, 90), {"ADD", "ADD_STATUS", "SET", "SETPTR", "TIME"},
            [this](const QString& word) { m_chosen << word; }, typed);
        ASSERT_TRUE(QTest::qWaitFor([this] { return m_list.hasFocus(); }));
    }
    bool EditorGetsFocus() {
        return QTest::qWaitFor([this] { return m_editor.hasFocus(); });
    }
    QString Current() const { return m_list.currentItem()->text(); }
    void Press(int key, const QString& text = {}, Qt::KeyboardModifiers modifiers = {}) {
        QKeyEvent event(QEvent::KeyPress, key, modifiers, text);
        QCoreApplication::sendEvent(&m_list, &event);
    }
    void Type(const QString& text) {
        for (const QChar c : text) Press(c.toUpper().unicode(), c);
    }

    platform::Translator m_translator;
    QPlainTextEdit m_editor;
    CompletionList m_list{&m_editor, m_translator};
    QStringList m_chosen;
};

TEST_F(CompletionListTest, IsAWindowThatIsFoundByItsName) {
    const QString name = QString::fromUtf8("Lista słów kluczowych");
    EXPECT_EQ(m_list.objectName(), "completionList");
    EXPECT_EQ(m_list.windowTitle(), name);
    EXPECT_TRUE(m_list.isWindow());
    EXPECT_EQ(m_list.windowFlags() & Qt::WindowType_Mask, Qt::Tool);
    EXPECT_TRUE(m_list.windowFlags().testFlag(Qt::FramelessWindowHint));
    EXPECT_FALSE(m_list.isVisible());
    Open();
    QAccessibleInterface* const shown = QAccessible::queryAccessibleInterface(&m_list);
    ASSERT_NE(shown, nullptr);
    EXPECT_EQ(shown->role(), QAccessible::List);
    EXPECT_EQ(shown->text(QAccessible::Name), name);
    ASSERT_EQ(shown->childCount(), 5);
    EXPECT_EQ(shown->child(0)->text(QAccessible::Name), "ADD");
    EXPECT_EQ(shown->child(4)->text(QAccessible::Name), "TIME");
}

TEST_F(CompletionListTest, NameIsTranslated) {
    const support::MarkingTranslator translator;
    const CompletionList list(&m_editor, translator);
    EXPECT_EQ(list.windowTitle(), QString::fromUtf8("<Lista słów kluczowych>"));
    EXPECT_EQ(list.accessibleName(), QString::fromUtf8("<Lista słów kluczowych>"));
}

TEST_F(CompletionListTest, OpensAtItsPlaceWithTheFocusOnTheFirstWord) {
    Open();
    EXPECT_EQ(m_list.pos(), QPoint(80, 90));
    EXPECT_EQ(QApplication::focusWidget(), &m_list);
    EXPECT_EQ(Current(), "ADD");
}

TEST_F(CompletionListTest, NextOpeningShowsItsOwnWords) {
    Open();
    m_list.Open(QPoint(80, 90), {"SEC"}, [this](const QString& word) { m_chosen << "2" + word; });
    ASSERT_EQ(m_list.count(), 1);
    Press(Qt::Key_Return);
    EXPECT_EQ(m_chosen, QStringList("2SEC"));
}

TEST_F(CompletionListTest, StaysOnTheScreen) {
    const QRect room = m_editor.screen()->availableGeometry();
    m_list.Open(room.bottomRight(), {"ADD", "SET"}, {});
    EXPECT_TRUE(room.contains(m_list.geometry()));
    EXPECT_LT(m_list.geometry().bottom(), room.bottom());
    m_list.Open(room.topLeft() - QPoint(500, 500), {"ADD", "SET"}, {});
    EXPECT_EQ(m_list.pos(), room.topLeft());
}

TEST_F(CompletionListTest, ManyWordsScroll) {
    QStringList words;
    for (int i = 0; i < 140; ++i) words << QStringLiteral("WORD%1").arg(i);
    m_list.Open(QPoint(0, 0), words, {}, "WORD139");
    EXPECT_EQ(Current(), "WORD139");
    EXPECT_TRUE(m_list.viewport()->rect().contains(m_list.visualItemRect(m_list.currentItem())));
    EXPECT_LT(m_list.height(), m_editor.screen()->availableGeometry().height());
}

TEST_F(CompletionListTest, ArrowsAndPagesMove) {
    Open();
    Press(Qt::Key_Down);
    EXPECT_EQ(Current(), "ADD_STATUS");
    Press(Qt::Key_Up);
    EXPECT_EQ(Current(), "ADD");
    Press(Qt::Key_Up);
    EXPECT_EQ(Current(), "ADD");
    Press(Qt::Key_PageDown);
    EXPECT_EQ(Current(), "TIME");
    Press(Qt::Key_PageUp);
    EXPECT_EQ(Current(), "ADD");
    EXPECT_EQ(m_editor.toPlainText(), "");
}

TEST_F(CompletionListTest, EnterAndTabChoose) {
    for (const int key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Tab}) {
        m_chosen.clear();
        Open();
        Press(Qt::Key_Down);
        Press(key, "\r", key == Qt::Key_Enter ? Qt::KeypadModifier : Qt::NoModifier);
        EXPECT_EQ(m_chosen, QStringList("ADD_STATUS")) << key;
        EXPECT_FALSE(m_list.isVisible());
        EXPECT_TRUE(EditorGetsFocus());
        EXPECT_EQ(m_editor.toPlainText(), "");
    }
}

TEST_F(CompletionListTest, DoubleClickChooses) {
    Open();
    const QRect row = m_list.visualItemRect(m_list.item(2));
    QTest::mouseClick(m_list.viewport(), Qt::LeftButton, {}, row.center());
    EXPECT_EQ(Current(), "SET");
    EXPECT_TRUE(m_chosen.isEmpty());
    QTest::mouseDClick(m_list.viewport(), Qt::LeftButton, {}, row.center());
    EXPECT_EQ(m_chosen, QStringList("SET"));
}

TEST_F(CompletionListTest, OpensAgainBeforeTheEditorHasTheFocusBack) {
    Open();
    Press(Qt::Key_Escape);
    Open();
    Press(Qt::Key_Return);
    EXPECT_EQ(m_chosen, QStringList("ADD"));
}

TEST_F(CompletionListTest, ListIsGoneWhenTheChoiceIsTold) {
    bool visible = true;
    m_list.Open(QPoint(80, 90), {"ADD"}, [&](const QString&) { visible = m_list.isVisible(); });
    Press(Qt::Key_Return);
    EXPECT_FALSE(visible);
}

TEST_F(CompletionListTest, EscapeGivesTheFocusBack) {
    Open();
    Press(Qt::Key_Escape);
    EXPECT_FALSE(m_list.isVisible());
    EXPECT_TRUE(EditorGetsFocus());
    EXPECT_TRUE(m_chosen.isEmpty());
}

TEST_F(CompletionListTest, TypingGoesOnInTheEditorAndFindsTheFirstMatch) {
    Open();
    Type("set");
    EXPECT_EQ(m_editor.toPlainText(), "set");
    EXPECT_EQ(Current(), "SET");
    Type("p");
    EXPECT_EQ(Current(), "SETPTR");
    Press(Qt::Key_Backspace);
    EXPECT_EQ(Current(), "SET");
    EXPECT_EQ(m_editor.toPlainText(), "set");
    EXPECT_TRUE(m_list.isVisible());
}

TEST_F(CompletionListTest, WhatStandsBeforeTheCaretCountsAsTyped) {
    Open("ADD_");
    EXPECT_EQ(Current(), "ADD_STATUS");
    Press(Qt::Key_Backspace);
    EXPECT_EQ(Current(), "ADD");
}

TEST_F(CompletionListTest, UnderscoreIsALetter) {
    Open();
    Type("ADD_");
    EXPECT_EQ(Current(), "ADD_STATUS");
}

TEST_F(CompletionListTest, ShiftAloneChangesNothing) {
    Open();
    Press(Qt::Key_Shift, {}, Qt::ShiftModifier);
    EXPECT_TRUE(m_list.isVisible());
    Press(Qt::Key_S, "S", Qt::ShiftModifier);
    EXPECT_EQ(Current(), "SET");
}

TEST_F(CompletionListTest, WhatMatchesNothingClosesIt) {
    Open();
    Type("sx");
    EXPECT_FALSE(m_list.isVisible());
    EXPECT_EQ(m_editor.toPlainText(), "sx");
}

TEST_F(CompletionListTest, PolishLetterReachesTheEditor) {
    Open();
    Type(QString::fromUtf8("ł"));
    EXPECT_FALSE(m_list.isVisible());
    EXPECT_EQ(m_editor.toPlainText(), QString::fromUtf8("ł"));
}

TEST_F(CompletionListTest, OtherKeysCloseItAndAreTheEditors) {
    m_editor.setPlainText("ab");
    struct KeyRow {
        int key;
        const char* text;
        Qt::KeyboardModifiers modifiers;
        const char* left;
    };
    const KeyRow rows[] = {
        {Qt::Key_Space, " ", {}, " ab"},
        {Qt::Key_Period, ".", {}, " .ab"},
        {Qt::Key_End, "", {}, " .ab"},
        {Qt::Key_Backspace, "\b", {}, " .a"},
        {Qt::Key_Return, "\r", Qt::ShiftModifier, " .a\n"},
    };
    for (const KeyRow& row : rows) {
        Open();
        Press(row.key, row.text, row.modifiers);
        EXPECT_FALSE(m_list.isVisible()) << row.key;
        EXPECT_TRUE(EditorGetsFocus()) << row.key;
        EXPECT_EQ(m_editor.toPlainText(), row.left) << row.key;
    }
    EXPECT_TRUE(m_chosen.isEmpty());
}

TEST_F(CompletionListTest, KeysOfTheEditorWorkToo) {
    Open();
    QTest::keyClick(&m_editor, Qt::Key_S);
    EXPECT_EQ(Current(), "SET");
    EXPECT_EQ(m_editor.toPlainText(), "s");
    QTest::keyClick(&m_editor, Qt::Key_Down);
    EXPECT_EQ(Current(), "SETPTR");
    QTest::keyClick(&m_editor, Qt::Key_Tab);
    EXPECT_EQ(m_chosen, QStringList("SETPTR"));
    EXPECT_EQ(m_editor.toPlainText(), "s");
    QTest::keyClick(&m_editor, Qt::Key_Down);
    QTest::keyClick(&m_editor, Qt::Key_A);
    EXPECT_EQ(m_editor.toPlainText(), "sa");
}

TEST(CompletionListScintillaTest, KeysGoOnIntoTheEditorOfScripts) {
    QsciScintilla editor;
    editor.show();
    editor.setFocus();
    ASSERT_TRUE(QTest::qWaitFor([&editor] { return editor.hasFocus(); }));
    const platform::Translator translator;
    CompletionList list(&editor, translator);
    QString chosen;
    list.Open(editor.mapToGlobal(QPoint(20, 20)), {"ADD", "SET"},
              [&chosen](const QString& word) { chosen = word; });
    ASSERT_TRUE(QTest::qWaitFor([&list] { return list.hasFocus(); }));
    QTest::keyClick(&list, Qt::Key_S);
    EXPECT_EQ(editor.text(), "s");
    EXPECT_EQ(list.currentItem()->text(), "SET");
    QTest::keyClick(&list, Qt::Key_Return);
    EXPECT_EQ(chosen, "SET");
    EXPECT_EQ(editor.text(), "s");
    EXPECT_TRUE(QTest::qWaitFor([&editor] { return editor.hasFocus(); }));
}

TEST_F(CompletionListTest, ClosesWhenTheFocusLeaves) {
    QPushButton other;
    other.show();
    Open();
    other.activateWindow();
    other.setFocus();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
    EXPECT_FALSE(m_list.isVisible());
    EXPECT_EQ(QApplication::focusWidget(), &other);
}

TEST_F(CompletionListTest, ClosesWhenAnotherProgramIsInFront) {
    Open();
    emit qApp->applicationStateChanged(Qt::ApplicationActive);
    EXPECT_TRUE(m_list.isVisible());
    emit qApp->applicationStateChanged(Qt::ApplicationInactive);
    EXPECT_FALSE(m_list.isVisible());
}

TEST_F(CompletionListTest, ClosesWhenTheEditorIsClickedScrolledOrHidden) {
    Open();
    QTest::mousePress(m_editor.viewport(), Qt::LeftButton);
    EXPECT_FALSE(m_list.isVisible());
    Open();
    QWheelEvent wheel(QPointF(5, 5), QPointF(5, 5), {}, QPoint(0, -120), Qt::NoButton, {},
                      Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(m_editor.viewport(), &wheel);
    EXPECT_FALSE(m_list.isVisible());
    Open();
    m_editor.hide();
    EXPECT_FALSE(m_list.isVisible());
    EXPECT_TRUE(m_chosen.isEmpty());
}

TEST_F(CompletionListTest, DismissWithoutAListIsNothing) {
    m_list.Dismiss();
    EXPECT_TRUE(EditorGetsFocus());
    Open();
    m_list.Dismiss();
    EXPECT_FALSE(m_list.isVisible());
    EXPECT_TRUE(EditorGetsFocus());
}

}  // namespace
}  // namespace kalvex::window
