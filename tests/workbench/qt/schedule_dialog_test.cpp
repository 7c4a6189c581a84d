// "Terminy".
#include "workbench/qt/ScheduleDialog.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QPushButton>
#include <QTableWidget>
#include <QTest>

#include "text/CodePage.h"

namespace kalvex::window {
namespace {

class ScheduleDialogTest : public testing::Test {
  protected:
    static workbench::ScheduleProof TwoTimes() {
        workbench::ScheduleProof proof;
        proof.firings = {
            {.time = 1, .date = "2024-03-30 02:30:00", .zone = "CET", .day = "sobota", .note = ""},
            {.time = 2,
             .fires = false,
             .clocksChange = true,
             .date = "2024-03-31 03:00:00",
             .zone = "CEST",
             .day = "niedziela",
             .note = text::FromUtf8("zmiana czasu tej doby")},
            {.time = 3, .date = "2024-04-01 02:30:00", .zone = "CEST", .day = "pn", .note = ""}};
        proof.remarks = {"Pierwsza.", "Druga."};
        return proof;
    }

    platform::Translator m_translator;
};

TEST_F(ScheduleDialogTest, TimesAreNumberedAndNightsMarkedInWordsToo) {
    const ScheduleDialog dialog(TwoTimes(), "WAITFOR 2:30.00", m_translator);
    EXPECT_EQ(dialog.windowTitle(), "Terminy");
    const auto& table = *dialog.findChild<QTableWidget*>("scheduleTable");
    EXPECT_EQ(table.accessibleName(), "Terminy");
    ASSERT_EQ(table.rowCount(), 3);
    EXPECT_EQ(table.item(0, 0)->text(), "1");
    EXPECT_EQ(table.item(1, 0)->text(), "-");
    EXPECT_EQ(table.item(2, 0)->text(), "2");
    EXPECT_EQ(table.item(1, 4)->text(), "zmiana czasu tej doby");
    EXPECT_EQ(table.item(0, 0)->background().style(), Qt::NoBrush);
    EXPECT_EQ(table.item(1, 0)->background().style(), Qt::SolidPattern);
    EXPECT_EQ(dialog.findChild<QLabel*>("scheduleRemarks")->text(), "Pierwsza.\nDruga.");
    EXPECT_EQ(dialog.findChild<QLabel*>("scheduleLine")->accessibleName(),
              "Linia: WAITFOR 2:30.00");
    EXPECT_EQ(dialog.AsText(),
              "WAITFOR 2:30.00\nPierwsza.\nDruga.\n"
              "1\t2024-03-30 02:30:00\tCET\tsobota\t\n"
              "-\t2024-03-31 03:00:00\tCEST\tniedziela\tzmiana czasu tej doby\n"
              "2\t2024-04-01 02:30:00\tCEST\tpn\t\n");
}

TEST_F(ScheduleDialogTest, LineWithoutATimeSaysWhyInBold) {
    workbench::ScheduleProof proof;
    proof.remarks = {"Nigdy."};
    proof.never = true;
    const ScheduleDialog dialog(proof, "WAITFOR", m_translator);
    EXPECT_TRUE(dialog.findChild<QLabel*>("scheduleRemarks")->font().bold());
    EXPECT_EQ(dialog.findChild<QTableWidget*>("scheduleTable")->rowCount(), 0);
}

TEST_F(ScheduleDialogTest, TableHasTheFocusAndEscapeCloses) {
    ScheduleDialog dialog(TwoTimes(), "WAITFOR 2:30.00", m_translator);
    dialog.show();
    QApplication::setActiveWindow(&dialog);
    EXPECT_EQ(dialog.focusWidget(), dialog.findChild<QTableWidget*>("scheduleTable"));
    dialog.findChild<QPushButton*>("scheduleCopy")->click();
    EXPECT_EQ(QApplication::clipboard()->text(), dialog.AsText());
    QTest::keyClick(&dialog, Qt::Key_Escape);
    EXPECT_FALSE(dialog.isVisible());
}

}  // namespace
}  // namespace kalvex::window
