// "Historia".
#include "workbench/qt/HistoryDialog.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QTableView>
#include <QTest>

#include <filesystem>

#include "support/scratch_folder.h"
#include "support/zone_scope.h"
#include "text/CodePage.h"
#include "workbench/qt/DifferenceRows.h"

namespace kalvex::window {
namespace {

class HistoryDialogTest : public testing::Test {
  protected:
    static constexpr const char* kPresent = "a\r\nb\r\nc\r\nd\r\ne";

    HistoryDialogTest() {
        workbench::SnapshotStore store;
        store.Keep(m_script, "stara\r\nb", support::Gmt(2024, 3, 10, 6));
        store.Keep(m_script, "a\r\nB\r\nc\r\nx\r\nd\r\ne\r\nf", support::Gmt(2024, 3, 10, 7));
        store.Keep(m_script, kPresent, support::Gmt(2024, 3, 10, 8));
    }

    std::unique_ptr<HistoryDialog> Open() {
        return std::make_unique<HistoryDialog>(
            HistoryDialog::World{m_translator,
                                 [this](const std::string& text) { m_restored.push_back(text); },
                                 [this](const std::string& text) { m_told.push_back(text); }},
            workbench::SnapshotStore::List(m_script), kPresent);
    }
    template <class Widget>
    static Widget& Child(const HistoryDialog& dialog, const char* name) {
        return *dialog.findChild<Widget*>(name);
    }
    static std::vector<std::string> Rows(const HistoryDialog& dialog) {
        const QAbstractItemModel& model = *Child<QTableView>(dialog, "historyTable").model();
        std::vector<std::string> rows;
        for (int row = 0; row < model.rowCount(); ++row) {
            QStringList cells;
            for (int column = 0; column < model.columnCount(); ++column)
                cells.append(model.index(row, column).data().toString());
            rows.push_back(cells.join('|').toStdString());
        }
        return rows;
    }

    support::ZoneScope m_zone{"Europe/Warsaw"};
    support::ScratchFolder m_folder;
    std::string m_script = m_folder.Put("main.kx", kPresent);
    platform::Translator m_translator;
    std::vector<std::string> m_restored;
    std::vector<std::string> m_told;
};

TEST_F(HistoryDialogTest, NewestVersionIsShownFirst) {
    const auto dialog = Open();
    EXPECT_EQ(dialog->windowTitle(), "Historia");
    auto& list = Child<QListWidget>(*dialog, "historyList");
    ASSERT_EQ(list.count(), 3);
    EXPECT_EQ(list.item(0)->text(), QString::fromUtf8("2024-03-10 09:00:00, bajtów: 13"));
    EXPECT_EQ(list.currentRow(), 0);
    EXPECT_EQ(Child<QLabel>(*dialog, "historyCount").text(), QString::fromUtf8("Różnic: 0"));
    EXPECT_FALSE(Child<QPushButton>(*dialog, "historyNext").isEnabled());
    EXPECT_FALSE(Child<QPushButton>(*dialog, "historyRestore").isEnabled());
    EXPECT_EQ(dialog->focusWidget(), &list);
}

TEST_F(HistoryDialogTest, DifferencesStandSideBySideWithSigns) {
    const auto dialog = Open();
    Child<QListWidget>(*dialog, "historyList").setCurrentRow(1);
    const std::vector<std::string> expected = {"|1|a|1|a", "~|2|B|2|b", "|3|c|3|c", "-|4|x||",
                                               "|5|d|4|d", "|6|e|5|e",  "-|7|f||"};
    EXPECT_EQ(Rows(*dialog), expected);
    const QAbstractItemModel& model = *Child<QTableView>(*dialog, "historyTable").model();
    EXPECT_EQ(model.index(1, 0).data(Qt::AccessibleTextRole), "zmieniona");
    EXPECT_EQ(model.index(0, 0).data(Qt::AccessibleTextRole), QString::fromUtf8("bez różnicy"));
    EXPECT_FALSE(model.index(0, 0).data(Qt::BackgroundRole).isValid());
    EXPECT_TRUE(model.index(1, 0).data(Qt::BackgroundRole).isValid());
    EXPECT_NE(model.index(1, 0).data(Qt::BackgroundRole),
              model.index(3, 0).data(Qt::BackgroundRole));
    EXPECT_EQ(model.headerData(DifferenceRows::RightText, Qt::Horizontal, Qt::DisplayRole),
              "Obecny tekst");
}

TEST_F(HistoryDialogTest, KeysGoFromDifferenceToDifference) {
    const auto dialog = Open();
    Child<QListWidget>(*dialog, "historyList").setCurrentRow(1);
    dialog->show();
    QApplication::setActiveWindow(dialog.get());
    const auto& table = Child<QTableView>(*dialog, "historyTable");
    const auto& count = Child<QLabel>(*dialog, "historyCount");
    std::vector<int> rows;
    for (int i = 0; i < 4; ++i) {
        QTest::keyClick(dialog.get(), Qt::Key_F7);
        rows.push_back(table.currentIndex().row());
    }
    EXPECT_EQ(rows, (std::vector<int>{1, 3, 6, 6}));
    EXPECT_EQ(count.text(), QString::fromUtf8("Różnica 3 z 3"));
    QTest::keyClick(dialog.get(), Qt::Key_F7, Qt::ShiftModifier);
    EXPECT_EQ(table.currentIndex().row(), 3);
    Child<QPushButton>(*dialog, "historyPrevious").click();
    Child<QPushButton>(*dialog, "historyPrevious").click();
    EXPECT_EQ(table.currentIndex().row(), 1);
}

TEST_F(HistoryDialogTest, RestoringGivesTheTextOfTheVersion) {
    const auto dialog = Open();
    Child<QListWidget>(*dialog, "historyList").setCurrentRow(2);
    Child<QPushButton>(*dialog, "historyRestore").click();
    EXPECT_EQ(m_restored, (std::vector<std::string>{"stara\r\nb"}));
    EXPECT_EQ(dialog->result(), QDialog::Accepted);
}

TEST_F(HistoryDialogTest, VersionThatIsGoneIsTold) {
    const auto dialog = Open();
    std::filesystem::remove(workbench::SnapshotStore::List(m_script)[1].file);
    Child<QListWidget>(*dialog, "historyList").setCurrentRow(1);
    EXPECT_EQ(m_told, (std::vector<std::string>{text::FromUtf8(
                          "Nie można odczytać wersji 2024-03-10 08:00:00 (No such file or "
                          "directory)")}));
    EXPECT_TRUE(Rows(*dialog).empty());
    EXPECT_FALSE(Child<QPushButton>(*dialog, "historyRestore").isEnabled());
    Child<QListWidget>(*dialog, "historyList").setCurrentRow(2);
    EXPECT_TRUE(Child<QPushButton>(*dialog, "historyRestore").isEnabled());
}

TEST_F(HistoryDialogTest, ScriptWithoutVersions) {
    std::filesystem::remove_all(m_folder.Path(".kalvex-history"));
    const auto dialog = Open();
    EXPECT_EQ(Child<QLabel>(*dialog, "historyCount").text(),
              QString::fromUtf8("Skrypt nie ma jeszcze żadnej zachowanej wersji."));
    EXPECT_FALSE(Child<QPushButton>(*dialog, "historyRestore").isEnabled());
    dialog->GoToDifference(1);
}

}  // namespace
}  // namespace kalvex::window
