#include "workbench/qt/LogWindow.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QClipboard>
#include <QGuiApplication>
#include <QScrollBar>
#include <QTest>
#include <optional>

#include "engine/ErrorReport.h"
#include "shown_dialog.h"
#include "text/CodePage.h"
#include "workbench/model/LogReference.h"
#include "workbench/qt/Icons.h"
#include "workbench/qt/Texts.h"

namespace kalvex::window {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::int64_t kNow = 1710050400;

class LogWindowTest : public testing::Test {
  protected:
    void Open() {
        m_window.emplace(m_log, [this](const std::string& line, std::size_t selectedRows) {
            const workbench::LogReference reference =
                workbench::FindScript(line, selectedRows, engine::kLineMark);
            if (reference.path.empty()) return;
            m_opened.push_back(reference.path + "/" +
                               (reference.line ? std::to_string(*reference.line) : "-"));
        });
        m_window->resize(400, 200);
        m_window->show();
    }
    void Add(int count, const std::string& text = "wiersz ") {
        for (int i = 0; i < count; ++i) m_log.AddMessage(text + std::to_string(m_added++), 0);
    }
    QListView& List() { return Child<QListView>(*m_window, "logList"); }
    int Rows() { return List().model()->rowCount(); }
    // The log is shown as it is, as soon as the window has had the time.
    bool Follows() {
        return QTest::qWaitFor([this] {
            const auto count = static_cast<int>(m_log.GetCount());
            return Rows() == count && (count == 0 || TextOf(count - 1) == LogText(count - 1));
        });
    }
    QString TextOf(int row) { return List().model()->index(row, 0).data().toString(); }
    QString LogText(int row) { return ToQt(m_log.GetText(static_cast<std::size_t>(row))); }
    void Select(int row, QItemSelectionModel::SelectionFlag flag = QItemSelectionModel::Select) {
        List().selectionModel()->setCurrentIndex(List().model()->index(row, 0), flag);
    }
    void DoubleClick(int row) {
        List().scrollTo(List().model()->index(row, 0));
        const QPoint place = List().visualRect(List().model()->index(row, 0)).center();
        QTest::mouseClick(List().viewport(), Qt::LeftButton, {}, {20, place.y()});
        QTest::mouseDClick(List().viewport(), Qt::LeftButton, {}, {20, place.y()});
    }

    platform::VirtualClock m_clock{kNow};
    platform::Translator m_translator;
    app::CLog m_log{m_clock, m_translator};
    std::vector<std::string> m_opened;
    int m_added = 0;
    std::optional<CKalvexLogView> m_window;
};

TEST_F(LogWindowTest, HasItsNames) {
    Open();
    EXPECT_EQ(m_window->windowTitle(), "LOG");
    EXPECT_EQ(m_window->accessibleName(), "LOG");
    EXPECT_EQ(m_window->objectName(), "logWindow");
    EXPECT_EQ(List().accessibleName(), "LOG");
    EXPECT_EQ(List().objectName(), "logList");
}

TEST_F(LogWindowTest, ARowIsALineWithItsStamp) {
    m_log.AddMessage(text::FromUtf8("zażółć"), 1);
    Open();
    EXPECT_EQ(Rows(), 1);
    EXPECT_EQ(TextOf(0), LogText(0));
    EXPECT_EQ(TextOf(0).mid(21), QString::fromUtf8("zażółć"));
}

TEST_F(LogWindowTest, EachLevelHasItsPicture) {
    for (int level = 0; level < 6; ++level) m_log.AddMessage("a", level);
    Open();
    for (int level = 0; level < 6; ++level) {
        const QVariant shown = List().model()->index(level, 0).data(Qt::DecorationRole);
        EXPECT_EQ(shown.value<QIcon>().pixmap(16, 16).toImage(),
                  LogIcon(level).pixmap(16, 16).toImage())
            << level;
    }
}

TEST_F(LogWindowTest, ABurstOfLinesIsShownAtOnce) {
    Open();
    int changes = 0;
    QObject::connect(List().model(), &QAbstractItemModel::rowsInserted, [&changes] { ++changes; });
    Add(3000);
    EXPECT_EQ(Rows(), 0);
    EXPECT_TRUE(Follows());
    EXPECT_EQ(Rows(), 3000);
    EXPECT_EQ(changes, 1);
    Add(1);
    EXPECT_TRUE(Follows());
    EXPECT_EQ(changes, 2);
}

TEST_F(LogWindowTest, TheOldestRowsGoWithTheirLines) {
    Add(9990);
    Open();
    Select(9980);
    Add(20);
    EXPECT_TRUE(Follows());
    EXPECT_EQ(Rows(), 10000);
    EXPECT_EQ(TextOf(0), LogText(0));
    EXPECT_EQ(TextOf(0).mid(21), "wiersz 10");
    EXPECT_EQ(TextOf(9999).mid(21), "wiersz 10009");
    EXPECT_EQ(List().currentIndex().row(), 9970);
}

TEST_F(LogWindowTest, ABurstOfMoreThanTheLogKeepsLeavesItsEnd) {
    Add(5);
    Open();
    Add(10007);
    EXPECT_EQ(TextOf(0), "");
    EXPECT_TRUE(Follows());
    EXPECT_EQ(Rows(), 10000);
    EXPECT_EQ(TextOf(0).mid(21), "wiersz 12");
}

TEST_F(LogWindowTest, AfterALongBurstIntoAnEmptyLogTheRowsAreRight) {
    Open();
    Add(10003);
    EXPECT_TRUE(Follows());
    EXPECT_EQ(TextOf(0).mid(21), "wiersz 3");
    Add(1);
    EXPECT_TRUE(Follows());
    EXPECT_EQ(TextOf(0).mid(21), "wiersz 4");
}

TEST_F(LogWindowTest, ClearingEmptiesTheList) {
    Add(3);
    Open();
    Add(2);
    m_window->Clear();
    EXPECT_EQ(m_log.GetCount(), 0U);
    EXPECT_EQ(Rows(), 0);
    Add(1);
    EXPECT_TRUE(Follows());
    EXPECT_EQ(TextOf(0).mid(21), "wiersz 5");
    m_log.OnClear();
    EXPECT_EQ(Rows(), 0);
}

TEST_F(LogWindowTest, TheNewestLineStaysInSightWhileThatIsWanted) {
    Add(200);
    Open();
    QScrollBar& bar = *List().verticalScrollBar();
    EXPECT_TRUE(m_window->IsAutoScroll());
    Add(200);
    EXPECT_TRUE(Follows());
    EXPECT_TRUE(QTest::qWaitFor([&bar] { return bar.value() == bar.maximum(); }));

    m_window->SetAutoScroll(false);
    EXPECT_FALSE(m_window->IsAutoScroll());
    bar.setValue(5);
    Add(200);
    EXPECT_TRUE(Follows());
    EXPECT_EQ(bar.value(), 5);
    m_window->SetAutoScroll(true);
    EXPECT_TRUE(QTest::qWaitFor([&bar] { return bar.value() == bar.maximum(); }));
}

TEST_F(LogWindowTest, TheLongestRowCanBeScrolledToItsEnd) {
    Open();
    Add(1, std::string(500, 'M'));
    EXPECT_TRUE(Follows());
    const QFontMetrics metrics(List().font());
    EXPECT_GE(List().visualRect(List().model()->index(0, 0)).width(),
              metrics.horizontalAdvance(TextOf(0)) + 16);
    EXPECT_TRUE(QTest::qWaitFor([this] { return List().horizontalScrollBar()->maximum() > 0; }));
}

TEST_F(LogWindowTest, SelectedRowsAreCopiedInTheirOrder) {
    Add(4);
    Open();
    EXPECT_FALSE(m_window->HasSelection());
    Select(3);
    Select(1);
    EXPECT_TRUE(m_window->HasSelection());
    QTest::keyClick(&List(), Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), LogText(1) + "\n" + LogText(3));
    m_window->SelectAll();
    m_window->Copy();
    EXPECT_EQ(QGuiApplication::clipboard()->text().count('\n'), 3);
}

TEST_F(LogWindowTest, WithoutASelectionTheClipboardStays) {
    Add(1);
    Open();
    QGuiApplication::clipboard()->setText("dawne");
    m_window->Copy();
    EXPECT_EQ(QGuiApplication::clipboard()->text(), "dawne");
}

TEST_F(LogWindowTest, ADoubleClickOpensTheScript) {
    m_log.AddMessage("/a.kx : Linia 12 - X", 1);
    m_log.AddMessage("Uruchomienie", 0);
    m_log.AddMessage("/b.kx : Start", 0);
    Open();
    DoubleClick(0);
    DoubleClick(1);
    DoubleClick(2);
    EXPECT_THAT(m_opened, ElementsAre("/a.kx/11", "/b.kx/-"));
}

TEST_F(LogWindowTest, EnterOpensTheScriptOfTheOneRowThatIsSelected) {
    m_log.AddMessage("/a.kx : Linia 12 - X", 1);
    m_log.AddMessage("/b.kx : Linia 1 - X", 1);
    Open();
    QTest::keyClick(&List(), Qt::Key_Return);
    EXPECT_THAT(m_opened, IsEmpty());
    Select(1);
    QTest::keyClick(&List(), Qt::Key_Return);
    QTest::keyClick(&List(), Qt::Key_Enter);
    EXPECT_THAT(m_opened, ElementsAre("/b.kx/0", "/b.kx/0"));
    Select(0);
    QTest::keyClick(&List(), Qt::Key_Return);
    EXPECT_EQ(m_opened.size(), 2U);
}

TEST_F(LogWindowTest, TheFontIsKeptAsAText) {
    Open();
    const std::string usual = m_window->GetFontText();
    QFont font("Monospace", 17);
    font.setBold(true);
    m_window->SetLogFont(font);
    EXPECT_EQ(m_window->GetLogFont(), font);
    const std::string text = m_window->GetFontText();
    m_window->SetFontText("");
    EXPECT_EQ(m_window->GetFontText(), usual);
    m_window->SetFontText(text);
    EXPECT_EQ(m_window->GetLogFont(), font);
    m_window->SetFontText("to,nie,jest");
    EXPECT_EQ(m_window->GetFontText(), usual);
}

TEST_F(LogWindowTest, TheRowsGrowWithTheFont) {
    Add(2);
    Open();
    const int height = List().visualRect(List().model()->index(0, 0)).height();
    QFont font = m_window->GetLogFont();
    font.setPointSize(40);
    m_window->SetLogFont(font);
    EXPECT_TRUE(QTest::qWaitFor(
        [&] { return List().visualRect(List().model()->index(0, 0)).height() > height; }));
}

TEST_F(LogWindowTest, WithoutTheWindowTheLogGoesOn) {
    Open();
    Add(3);
    m_window.reset();
    Add(3);
    EXPECT_EQ(m_log.GetCount(), 6U);
    Open();
    EXPECT_EQ(Rows(), 6);
}

}  // namespace
}  // namespace kalvex::window
