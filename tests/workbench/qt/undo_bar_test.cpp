// The lists that drop down from the undo and redo buttons.
#include "workbench/qt/UndoBar.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QLabel>
#include <QListWidget>
#include <QtTest/QTest>

namespace kalvex::window {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using workbench::UndoDirection;

class UndoBarTest : public testing::Test {
  protected:
    UndoBarTest() {
        m_window.resize(300, 200);
        m_window.show();
    }
    CUndoBar& Open(UndoDirection direction, int count) {
        m_bar = std::make_unique<CUndoBar>(direction, m_translator, &m_window);
        QStringList actions;
        for (int n = 0; n < count; ++n) actions << QString::number(n);
        m_bar->Open(QPoint(10, 10), actions, [this](int chosen) { m_chosen.push_back(chosen); });
        return *m_bar;
    }
    QListWidget& List() { return *m_bar->findChild<QListWidget*>(); }
    std::string Label() { return m_bar->findChild<QLabel*>()->text().toStdString(); }
    int SelectedCount() { return static_cast<int>(List().selectedItems().size()); }
    QPoint PlaceOf(int row) { return List().visualItemRect(List().item(row)).center(); }

    const platform::Translator m_translator;
    QWidget m_window;
    std::unique_ptr<CUndoBar> m_bar;
    std::vector<int> m_chosen;
};

TEST_F(UndoBarTest, IsAToolWindowOfItsName) {
    const CUndoBar& undo = Open(UndoDirection::Undo, 2);
    EXPECT_TRUE(undo.isVisible());
    EXPECT_EQ(undo.windowType(), Qt::Tool);
    EXPECT_EQ(undo.objectName(), "undoBar");
    EXPECT_EQ(undo.windowTitle().toStdString(), "Cofnij");
    EXPECT_EQ(undo.accessibleName().toStdString(), "Cofnij");
    EXPECT_EQ(Label(), "Cofnij 1 krok");
    EXPECT_EQ(SelectedCount(), 1);
    const CUndoBar& redo = Open(UndoDirection::Redo, 2);
    EXPECT_EQ(redo.objectName(), "redoBar");
    EXPECT_EQ(redo.windowTitle().toStdString(), "Ponów");
    EXPECT_EQ(Label(), "Ponów 1 krok");
}

TEST_F(UndoBarTest, EmptyListDoesNotOpen) {
    EXPECT_FALSE(Open(UndoDirection::Undo, 0).isVisible());
}

TEST_F(UndoBarTest, ArrowKeysSelectFromTheFirstOne) {
    Open(UndoDirection::Undo, 30);
    for (int n = 0; n < 3; ++n) QTest::keyClick(&List(), Qt::Key_Down);
    EXPECT_EQ(SelectedCount(), 4);
    EXPECT_EQ(Label(), "Cofnij 4 kroki");
    QTest::keyClick(&List(), Qt::Key_Down);
    EXPECT_EQ(Label(), "Cofnij 5 kroków");
    QTest::keyClick(&List(), Qt::Key_Up);
    EXPECT_EQ(SelectedCount(), 4);
    QTest::keyClick(&List(), Qt::Key_End);
    EXPECT_EQ(SelectedCount(), 30);
    QTest::keyClick(&List(), Qt::Key_Down);
    EXPECT_EQ(SelectedCount(), 30);
    QTest::keyClick(&List(), Qt::Key_Home);
    QTest::keyClick(&List(), Qt::Key_Up);
    EXPECT_EQ(SelectedCount(), 1);
    QTest::keyClick(&List(), Qt::Key_PageDown);
    EXPECT_EQ(SelectedCount(), 13);
    QTest::keyClick(&List(), Qt::Key_Return);
    EXPECT_THAT(m_chosen, ElementsAre(13));
    EXPECT_FALSE(m_bar->isVisible());
}

TEST_F(UndoBarTest, PointerSelectsAndAClickCarriesOut) {
    Open(UndoDirection::Redo, 6);
    QTest::mouseMove(List().viewport(), PlaceOf(4));
    QTest::mouseMove(List().viewport(), PlaceOf(4) + QPoint(1, 0));
    EXPECT_EQ(SelectedCount(), 5);
    EXPECT_EQ(Label(), "Ponów 5 kroków");
    QTest::mouseClick(List().viewport(), Qt::LeftButton, Qt::NoModifier, PlaceOf(1));
    EXPECT_THAT(m_chosen, ElementsAre(2));
    EXPECT_FALSE(m_bar->isVisible());
}

TEST_F(UndoBarTest, EscapeCarriesNothingOut) {
    Open(UndoDirection::Undo, 3);
    QTest::keyClick(&List(), Qt::Key_Escape);
    EXPECT_FALSE(m_bar->isVisible());
    EXPECT_THAT(m_chosen, IsEmpty());
}

TEST_F(UndoBarTest, ButtonOpensTheListAtItsRightEdgeAlone) {
    int clicks = 0;
    CUndoButton button(UndoDirection::Undo, m_translator,
                       {[] {
                            return QStringList{"a", "b"};
                        },
                        [this](int count) { m_chosen.push_back(count); }},
                       &m_window);
    QObject::connect(&button, &QToolButton::clicked, [&clicks] { ++clicks; });
    button.resize(60, 30);
    button.show();
    EXPECT_EQ(button.accessibleName().toStdString(), "Cofnij");
    QTest::mouseClick(&button, Qt::LeftButton, Qt::NoModifier, QPoint(10, 15));
    EXPECT_EQ(clicks, 1);
    EXPECT_FALSE(button.Bar().isVisible());
    QTest::mouseClick(&button, Qt::LeftButton, Qt::NoModifier, QPoint(57, 15));
    EXPECT_EQ(clicks, 1);
    EXPECT_TRUE(button.Bar().isVisible());
    auto* const list = button.Bar().findChild<QListWidget*>();
    EXPECT_EQ(list->count(), 2);
    QTest::keyClick(list, Qt::Key_Enter);
    EXPECT_THAT(m_chosen, ElementsAre(1));
    QTest::keyClick(&button, Qt::Key_Down);
    EXPECT_TRUE(button.Bar().isVisible());
}

}  // namespace
}  // namespace kalvex::window
