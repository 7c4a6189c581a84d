// "Dlaczego czeka".
#include "workbench/qt/StandingPane.h"

#include <gtest/gtest.h>

#include <QPlainTextEdit>
#include <QTextBlock>

#include "support/script_world.h"
#include "value/LocalTimeText.h"

namespace kalvex::window {
namespace {

class StandingPaneTest : public testing::Test {
  protected:
    QPlainTextEdit& Text() { return *m_pane.findChild<QPlainTextEdit*>("standingText"); }

    platform::Translator m_translator;
    StandingPane m_pane{m_translator};
};

TEST_F(StandingPaneTest, TextIsReadSelectedAndNotChanged) {
    EXPECT_EQ(m_pane.objectName(), "standingPane");
    EXPECT_EQ(m_pane.accessibleName(), "Dlaczego czeka");
    EXPECT_EQ(Text().accessibleName(), "Dlaczego czeka");
    EXPECT_EQ(Text().toPlainText(), "Nie wybrano skryptu.");
    m_pane.Show({"Linia   5: SLEEP", "Stan    \x9cpi"});
    EXPECT_EQ(Text().toPlainText(), QString::fromUtf8("Linia   5: SLEEP\nStan    śpi"));
    EXPECT_TRUE(Text().isReadOnly());
    EXPECT_TRUE(Text().textInteractionFlags() & Qt::TextSelectableByKeyboard);
    EXPECT_TRUE(Text().tabChangesFocus());
}

TEST_F(StandingPaneTest, LinesThatStayAreLeftAlone) {
    m_pane.Show({"a", "b", "c"});
    QTextCursor cursor(Text().document()->findBlockByNumber(1));
    cursor.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
    Text().setTextCursor(cursor);
    int changes = 0;
    QObject::connect(Text().document(), &QTextDocument::contentsChanged, &Text(),
                     [&changes] { ++changes; });
    m_pane.Show({"a", "b", "c"});
    EXPECT_EQ(changes, 0);
    m_pane.Show({"A", "b", "c", "d", "e"});
    EXPECT_EQ(Text().toPlainText(), "A\nb\nc\nd\ne");
    EXPECT_EQ(Text().textCursor().selectedText(), "b");
    m_pane.Show({"A", "b"});
    EXPECT_EQ(Text().toPlainText(), "A\nb");
    EXPECT_EQ(Text().textCursor().selectedText(), "b");
    m_pane.Show({"A", "", "", ""});
    EXPECT_EQ(Text().toPlainText(), "A\n\n\n");
    m_pane.Show({});
    EXPECT_EQ(Text().toPlainText(), "Nie wybrano skryptu.");
}

class StandingPaneTipTest : public support::ScriptWorld {};

TEST_F(StandingPaneTipTest, TipIsOfTheLineThatHoldsTheScript) {
    engine::CKalvexDoc& document = Open("LOCAL A = 1\nSLEEP 60\n");
    EXPECT_EQ(StandingTip(document, 0, translator), "");
    document.Start();
    document.SetPriority(1);
    Tick(5);
    EXPECT_EQ(StandingTip(document, 0, translator), "");
    EXPECT_EQ(StandingTip(document, 1, translator),
              QString::fromUtf8("śpi, linia 2 do ") +
                  QString::fromStdString(value::FormatLocalTime(clock.Now() + 60)));
    document.Reset();
    EXPECT_EQ(StandingTip(document, 0, translator), "");
}

}  // namespace
}  // namespace kalvex::window
