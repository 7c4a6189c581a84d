#include "workbench/qt/VariablesWindow.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QHeaderView>
#include <QLineEdit>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QtTest>
#include <memory>

#include "named_widget.h"
#include "support/fake_script.h"
#include "support/zone_scope.h"
#include "text/CodePage.h"
#include "value/ValueText.h"
#include "workbench/qt/Texts.h"

namespace kalvex::window {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class VariablesWindowTest : public testing::Test {
  protected:
    VariablesWindowTest() {
        for (const char* name : {"TEMP1", "CISN", "TEMP2"}) m_script.Local(name, value::CVal(1.0));
    }

    VariablesSource Source() {
        return {
            .refresh =
                [this](workbench::VariablesTable& table) {
                    ++m_refreshed;
                    return table.Refresh(m_script.Variables());
                },
            .read =
                [this](const std::string& name) {
                    return workbench::ReadByHand(m_script.Variables(), name);
                },
            .write =
                [this](const std::string& name, const value::CVal& value) {
                    Hear("write " + name + " " + value::ValueToText(value));
                    return workbench::WriteByHand(m_script.Variables(), name, value);
                },
        };
    }
    VariablesSource ConsoleSource() {
        VariablesSource source = Source();
        source.ask = [this](const std::string& name) { Hear("ask " + name); };
        source.askAll = [this] { Hear("ask all"); };
        return source;
    }
    void Open(VariablesSource source, std::vector<unsigned int> widths = {}) {
        m_window = std::make_unique<CVariablesView>(
            CVariablesView::Parts{m_script.translator, std::move(source), std::move(widths),
                                  [this](const std::vector<unsigned int>& kept) { m_kept = kept; },
                                  [this] { Hear("beep"); }});
        m_window->resize(800, 300);
        m_window->show();
    }
    void Open() { Open(Source()); }

    QTableView& Table() { return *m_window->findChild<QTableView*>("variablesTable"); }
    QString Cell(int row, int column) {
        return Table().model()->index(row, column).data().toString();
    }
    int SelectedRow() {
        const QModelIndexList rows = Table().selectionModel()->selectedRows();
        return rows.isEmpty() ? -1 : rows.front().row();
    }
    QPoint PointOf(int row, int column = 0) {
        return Table().visualRect(Table().model()->index(row, column)).center();
    }
    void DoubleClick(const QPoint& point) {
        QWidget* const viewport = Table().viewport();
        QTest::mouseClick(viewport, Qt::LeftButton, {}, point);
        QTest::mouseDClick(viewport, Qt::LeftButton, {}, point);
    }
    QDialog* Dialog(const char* name) { return OpenDialog<QDialog>(*m_window, name); }
    QLineEdit* NewValue() {
        QDialog* const dialog = Dialog("valueDialog");
        return dialog == nullptr
                   ? nullptr
                   : NamedWidget<QLineEdit>(*dialog, QString::fromUtf8("Nowa wartość"));
    }
    void AcceptValue(const char* text) {
        NewValue()->setText(QString::fromUtf8(text));
        QTest::keyClick(NewValue(), Qt::Key_Return);
    }
    QLineEdit* SearchField() {
        QDialog* const dialog = Dialog("patternFindDialog");
        return dialog == nullptr ? nullptr : NamedWidget<QLineEdit>(*dialog, "Szukany tekst");
    }
    void Search(const char* text) {
        SearchField()->setText(QString::fromUtf8(text));
        QTest::keyClick(SearchField(), Qt::Key_Return);
    }
    void Hear(std::string event) { m_heard.push_back(std::move(event)); }
    std::vector<std::string> Heard() { return std::exchange(m_heard, {}); }

    support::ZoneScope m_zone{"Europe/Warsaw"};
    support::FakeScript m_script;
    std::vector<std::string> m_heard;
    std::vector<unsigned int> m_kept;
    int m_refreshed = 0;
    std::unique_ptr<CVariablesView> m_window;
};

// ---- the table

TEST_F(VariablesWindowTest, TableIsFilledAtOnce) {
    Open();
    EXPECT_EQ(m_window->objectName(), "variablesWindow");
    EXPECT_EQ(Table().accessibleName(), "Zmienne");
    EXPECT_EQ(Table().model()->rowCount(), 3);
    EXPECT_EQ(Table().model()->columnCount(), 7);
    EXPECT_EQ(Cell(2, 0), "TEMP2");
    EXPECT_EQ(Cell(2, 2), "1970-01-01 01:00:00 ( 0 ) 1.00");
    EXPECT_EQ(Table().selectionBehavior(), QAbstractItemView::SelectRows);
    EXPECT_EQ(Table().selectionMode(), QAbstractItemView::SingleSelection);
    EXPECT_TRUE(Table().showGrid());
    EXPECT_EQ(m_window->focusProxy(), &Table());
    EXPECT_EQ(SelectedRow(), -1);
}

TEST_F(VariablesWindowTest, RefreshShowsWhatIsThereNowAndKeepsTheSelection) {
    Open();
    Table().selectRow(1);
    m_script.Local("NOWA");
    workbench::WriteByHand(m_script.Variables(), "TEMP1", value::CVal(2.0));
    m_window->Refresh();
    EXPECT_EQ(Cell(0, 2), "1970-01-01 01:00:00 ( 0 ) 2.00");
    EXPECT_EQ(Cell(3, 0), "NOWA");
    EXPECT_EQ(SelectedRow(), 1);
    m_script.Variables().RemoveAll();
    m_window->Refresh();
    EXPECT_EQ(Table().model()->rowCount(), 0);
}

TEST_F(VariablesWindowTest, ManyWishesToRefreshAreOne) {
    Open();
    const int before = m_refreshed;
    for (int wish = 0; wish < 100; ++wish) m_window->RefreshSoon();
    EXPECT_EQ(m_refreshed, before);
    ASSERT_TRUE(QTest::qWaitFor([&] { return m_refreshed > before; }));
    QCoreApplication::processEvents();
    EXPECT_EQ(m_refreshed, before + 1);
    m_window->RefreshSoon();
    m_window->Refresh();
    QCoreApplication::processEvents();
    EXPECT_EQ(m_refreshed, before + 2);
}

TEST_F(VariablesWindowTest, WidthsComeAndGo) {
    Open(Source(), {60, 61, 62, 63, 64, 65, 66});
    EXPECT_THAT(m_window->GetWidths(), ElementsAre(60, 61, 62, 63, 64, 65, 66));
    Table().setColumnWidth(2, 210);
    EXPECT_THAT(m_kept, IsEmpty());
    m_window->close();
    EXPECT_THAT(m_kept, ElementsAre(60, 61, 210, 63, 64, 65, 66));
}

TEST_F(VariablesWindowTest, ThereMayBeMoreWidthsThanColumnsOrFewer) {
    Open(Source(), {70, 71, 72, 73, 74, 75, 76, 77, 78});
    EXPECT_THAT(m_window->GetWidths(), ElementsAre(70, 71, 72, 73, 74, 75, 76));
    Open();
    const std::vector<unsigned int> usual = m_window->GetWidths();
    Open(Source(), {70});
    EXPECT_THAT(m_window->GetWidths(),
                ElementsAre(70, usual[1], usual[2], usual[3], usual[4], usual[5], usual[6]));
}

TEST_F(VariablesWindowTest, CloseOfItsFrameKeepsTheWidths) {
    QMdiArea area;
    Open(Source(), {80, 81, 82, 83, 84, 85, 86});
    CVariablesView* const content = m_window.release();
    QMdiSubWindow* const frame = area.addSubWindow(content);
    frame->setAttribute(Qt::WA_DeleteOnClose);
    area.show();
    frame->close();
    EXPECT_THAT(m_kept, ElementsAre(80, 81, 82, 83, 84, 85, 86));
}

TEST_F(VariablesWindowTest, FontIsThatOfTheWholeTable) {
    Open();
    const int before = Table().rowHeight(0);
    QFont font = m_window->GetTableFont();
    font.setPixelSize(40);
    m_window->SetTableFont(font);
    EXPECT_EQ(m_window->GetTableFont().pixelSize(), 40);
    EXPECT_EQ(Table().horizontalHeader()->font().pixelSize(), 40);
    EXPECT_GE(Table().rowHeight(0), QFontMetrics(font).height());
    EXPECT_GT(Table().rowHeight(0), before);
}

// ---- the value

TEST_F(VariablesWindowTest, DoubleClickOpensTheValueAndOkShowsItAtOnce) {
    Open();
    DoubleClick(PointOf(1, 3));
    ASSERT_NE(NewValue(), nullptr);
    EXPECT_EQ(NewValue()->text(), "1.00");
    AcceptValue("#7");
    EXPECT_THAT(Heard(), ElementsAre("write CISN 7.00"));
    EXPECT_EQ(Cell(1, 2), "1970-01-01 01:00:00 ( 2080 ) 7.00");
    EXPECT_EQ(Dialog("valueDialog"), nullptr);
}

TEST_F(VariablesWindowTest, DoubleClickBesideTheRowsOpensNothing) {
    Open();
    DoubleClick(Table().viewport()->rect().bottomLeft() - QPoint(0, 2));
    EXPECT_EQ(Dialog("valueDialog"), nullptr);
    QTest::mouseDClick(Table().viewport(), Qt::RightButton, {}, PointOf(1));
    EXPECT_EQ(Dialog("valueDialog"), nullptr);
}

TEST_F(VariablesWindowTest, EnterOpensTheValueOfTheSelectedRow) {
    Open();
    QTest::keyClick(&Table(), Qt::Key_Return);
    EXPECT_EQ(Dialog("valueDialog"), nullptr);
    Table().selectRow(2);
    QTest::keyClick(&Table(), Qt::Key_Enter);
    ASSERT_NE(NewValue(), nullptr);
    AcceptValue("\"tekst\"");
    EXPECT_THAT(Heard(), ElementsAre("write TEMP2 tekst"));
}

TEST_F(VariablesWindowTest, EscapeWritesNothing) {
    Open();
    Table().selectRow(0);
    QTest::keyClick(&Table(), Qt::Key_Return);
    QTest::keyClick(NewValue(), Qt::Key_Escape);
    EXPECT_THAT(Heard(), IsEmpty());
}

TEST_F(VariablesWindowTest, VariableThatHasGoneIsNotChanged) {
    Open();
    m_script.Variables().RemoveAll();
    Table().selectRow(0);
    QTest::keyClick(&Table(), Qt::Key_Return);
    EXPECT_EQ(Dialog("valueDialog"), nullptr);
}

TEST_F(VariablesWindowTest, VariableMayGoWhileItsValueIsAskedFor) {
    Open();
    Table().selectRow(0);
    QTest::keyClick(&Table(), Qt::Key_Return);
    m_script.Variables().RemoveAll();
    AcceptValue("5");
    EXPECT_THAT(Heard(), ElementsAre("write TEMP1 5.00", "beep"));
    EXPECT_EQ(Table().model()->rowCount(), 0);
}

TEST_F(VariablesWindowTest, WindowMayGoWithItsDialog) {
    Open();
    Table().selectRow(0);
    QTest::keyClick(&Table(), Qt::Key_Return);
    ASSERT_NE(NewValue(), nullptr);
    m_window.reset();
    QCoreApplication::processEvents();
    EXPECT_THAT(Heard(), IsEmpty());
}

// ---- a console

TEST_F(VariablesWindowTest, ClickAsksAConsolesModuleForTheVariable) {
    m_script.Local("");
    Open(ConsoleSource());
    QTest::mouseClick(Table().viewport(), Qt::LeftButton, {}, PointOf(1));
    EXPECT_THAT(Heard(), ElementsAre("ask CISN"));
    QTest::mouseClick(Table().viewport(), Qt::RightButton, {}, PointOf(1));
    QTest::mouseClick(Table().viewport(), Qt::LeftButton, {}, PointOf(3));
    QTest::mouseClick(Table().viewport(), Qt::LeftButton, {},
                      Table().viewport()->rect().bottomLeft() - QPoint(0, 2));
    EXPECT_THAT(Heard(), IsEmpty());
    DoubleClick(PointOf(0));
    EXPECT_THAT(Heard(), ElementsAre("ask TEMP1"));
}

TEST_F(VariablesWindowTest, F5AsksForAllOnThePressAndOnTheRelease) {
    Open(ConsoleSource());
    QTest::keyPress(&Table(), Qt::Key_F5);
    EXPECT_THAT(Heard(), ElementsAre("ask all"));
    QTest::keyRelease(&Table(), Qt::Key_F5);
    EXPECT_THAT(Heard(), ElementsAre("ask all"));
    QKeyEvent held(QEvent::KeyPress, Qt::Key_F5, {}, {}, true);
    QKeyEvent heldRelease(QEvent::KeyRelease, Qt::Key_F5, {}, {}, true);
    QApplication::sendEvent(&Table(), &held);
    QApplication::sendEvent(&Table(), &heldRelease);
    QTest::keyClick(&Table(), Qt::Key_F5, Qt::ShiftModifier);
    EXPECT_THAT(Heard(), IsEmpty());
}

bool Overrides(QTableView& table, int key, Qt::KeyboardModifiers modifiers = {}) {
    QKeyEvent event(QEvent::ShortcutOverride, key, modifiers);
    event.ignore();
    QApplication::sendEvent(&table, &event);
    return event.isAccepted();
}

TEST_F(VariablesWindowTest, KeysOfItsOwnAreNotThoseOfCommands) {
    Open(ConsoleSource());
    EXPECT_TRUE(Overrides(Table(), Qt::Key_F5));
    EXPECT_TRUE(Overrides(Table(), Qt::Key_F3));
    EXPECT_TRUE(Overrides(Table(), Qt::Key_F, Qt::ControlModifier));
    EXPECT_FALSE(Overrides(Table(), Qt::Key_F5, Qt::ShiftModifier));
    EXPECT_FALSE(Overrides(Table(), Qt::Key_F11));
    Open();
    EXPECT_FALSE(Overrides(Table(), Qt::Key_F5));
    EXPECT_TRUE(Overrides(Table(), Qt::Key_F3));
}

TEST_F(VariablesWindowTest, ModuleHasNothingToAsk) {
    Open();
    QTest::mouseClick(Table().viewport(), Qt::LeftButton, {}, PointOf(1));
    QTest::keyClick(&Table(), Qt::Key_F5);
    EXPECT_THAT(Heard(), IsEmpty());
    EXPECT_EQ(SelectedRow(), 1);
}

// ---- finding

TEST_F(VariablesWindowTest, FindGoesFromRowToRowAndRoundAgain) {
    Open();
    QTest::keyClick(&Table(), Qt::Key_F, Qt::ControlModifier);
    ASSERT_NE(SearchField(), nullptr);
    EXPECT_TRUE(
        NamedWidget<QCheckBox>(*Dialog("patternFindDialog"), "Znaki wieloznaczne")->isChecked());
    Search("temp");
    EXPECT_EQ(SelectedRow(), 0);
    QTest::keyClick(&Table(), Qt::Key_F3);
    EXPECT_EQ(SelectedRow(), 2);
    EXPECT_THAT(Heard(), IsEmpty());
    QTest::keyClick(&Table(), Qt::Key_F3);
    EXPECT_EQ(SelectedRow(), 0);
    EXPECT_THAT(Heard(), ElementsAre("beep"));
    EXPECT_EQ(Table().currentIndex().row(), 0);
}

TEST_F(VariablesWindowTest, WhatIsNotThereLeavesNothingSelected) {
    Open();
    Table().selectRow(1);
    m_window->Find();
    Search("NIE*MA");
    EXPECT_EQ(SelectedRow(), -1);
    EXPECT_THAT(Heard(), ElementsAre("beep", "beep"));
    m_window->FindNext();
    EXPECT_THAT(Heard(), ElementsAre("beep"));
    m_window->Find();
    EXPECT_EQ(SearchField()->text(), "NIE*MA");
}

TEST_F(VariablesWindowTest, FindNextAsksWhenNothingWasLookedFor) {
    Open();
    m_window->FindNext();
    ASSERT_NE(SearchField(), nullptr);
    Search("");
    EXPECT_EQ(SelectedRow(), 0);
    EXPECT_EQ(Dialog("patternFindDialog"), nullptr);
}

TEST_F(VariablesWindowTest, FoundRowIsShown) {
    for (int number = 0; number < 500; ++number) m_script.Local("V" + std::to_string(number));
    m_script.Local("KONIEC");
    Open();
    m_window->Find();
    Search("koniec");
    EXPECT_EQ(SelectedRow(), 503);
    EXPECT_TRUE(Table().viewport()->rect().contains(PointOf(503)));
    Table().scrollToTop();
    ASSERT_FALSE(Table().viewport()->rect().contains(PointOf(503)));
    m_window->FindNext();  // the same one, which is the only one
    EXPECT_TRUE(Table().viewport()->rect().contains(PointOf(503)));
}

}  // namespace
}  // namespace kalvex::window
