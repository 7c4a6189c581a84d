// A trend and how it is worked with.
#include "workbench/qt/TrendWindow.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QComboBox>
#include <QImage>
#include <QLabel>
#include <QPushButton>
#include <QTableView>
#include <QTest>
#include <QWheelEvent>

#include "support/scratch_folder.h"
#include "support/zone_scope.h"
#include "text/CodePage.h"
#include "workbench/qt/TrendPlot.h"

namespace kalvex::window {
namespace {

constexpr std::int64_t kNow = 1710050400;  // 2024-03-10 07:00:00 in Warsaw

// Answers when the test says so.
class HandSource final : public workbench::TrendSource {
  public:
    std::string GetName() override { return text::FromUtf8("ciśnienie"); }
    std::string GetUnit() override { return "bar"; }
    bool IsTime() const override { return isTime; }
    void Request(std::int64_t from, std::int64_t to, Answer newAnswer) override {
        requests.emplace_back(from, to);
        answer = std::move(newAnswer);
    }
    std::optional<workbench::TrendPoint> ReadLive(std::int64_t now) override {
        if (!live) return std::nullopt;
        return workbench::TrendPoint{.x = now, .value = *live};
    }
    std::uint64_t GetVersion() override { return version; }

    void AnswerWith(std::vector<workbench::TrendPoint> points) { answer({std::move(points)}); }

    bool isTime = true;
    std::optional<double> live;
    std::uint64_t version = 0;
    std::vector<std::pair<std::int64_t, std::int64_t>> requests;
    Answer answer;
};

class TrendWindowTest : public testing::Test {
  protected:
    explicit TrendWindowTest(bool isTime = true) {
        auto source = std::make_unique<HandSource>();
        m_source = source.get();
        m_source->isTime = isTime;
        m_window = std::make_unique<TrendWindow>(
            TrendWindow::World{m_translator, m_clock,
                               [this](const QString& proposed, const QString&) {
                                   m_proposed = proposed;
                                   return m_path;
                               },
                               [this](const std::string& text) { m_told.push_back(text); }},
            std::move(source));
        m_window->resize(800, 500);
    }

    template <class Widget>
    Widget& Child(const char* name) {
        return *m_window->findChild<Widget*>(name);
    }
    TrendPlot& Plot() {
        return *static_cast<TrendPlot*>(m_window->findChild<QWidget*>("trendPlot"));
    }
    void ThreePoints() {
        m_source->AnswerWith({{.x = kNow - 3000, .value = 1},
                              {.x = kNow - 2000, .value = 12.5},
                              {.x = kNow - 1000, .status = 1, .good = false}});
    }

    support::ZoneScope m_zone{"Europe/Warsaw"};
    support::ScratchFolder m_folder;
    platform::Translator m_translator;
    platform::VirtualClock m_clock{kNow};
    HandSource* m_source;
    std::unique_ptr<TrendWindow> m_window;
    QString m_path;
    QString m_proposed;
    std::vector<std::string> m_told;
};

TEST_F(TrendWindowTest, LastHourIsAskedForFirst) {
    ASSERT_EQ(m_source->requests.size(), 1u);
    EXPECT_EQ(m_source->requests[0], std::pair(kNow - 3600, kNow));
    EXPECT_EQ(m_window->windowTitle(), QString::fromUtf8("Trend ciśnienie"));
    EXPECT_EQ(Child<QLabel>("trendCursor").text(), QString::fromUtf8("Brak punktów"));
    EXPECT_EQ(Plot().View().From(), kNow - 3600);
    EXPECT_EQ(Plot().View().To(), kNow);
    ThreePoints();
    EXPECT_EQ(Child<QLabel>("trendCursor").text(),
              QString::fromUtf8("Kursor: strzałki w lewo i w prawo"));
    Child<QComboBox>("trendRange").setCurrentIndex(2);
    emit Child<QComboBox>("trendRange").activated(2);
    EXPECT_EQ(m_source->requests.back(), std::pair(kNow - 86400, kNow));
}

TEST_F(TrendWindowTest, ArrowsTellPointAfterPoint) {
    ThreePoints();
    const auto text = [this] { return Plot().accessibleDescription().toStdString(); };
    QTest::keyClick(&Plot(), Qt::Key_Right);
    EXPECT_EQ(text(), "2024-03-10 06:26:40 CET: 12.50 bar, punkt 2 z 3");
    QTest::keyClick(&Plot(), Qt::Key_Right);
    EXPECT_EQ(text(), "2024-03-10 06:43:20 CET: bez wartości (UNKNOWN), punkt 3 z 3");
    QTest::keyClick(&Plot(), Qt::Key_Right);
    QTest::keyClick(&Plot(), Qt::Key_Left);
    QTest::keyClick(&Plot(), Qt::Key_Left);
    EXPECT_EQ(text(), "2024-03-10 06:10:00 CET: 1.00 bar, punkt 1 z 3");
    EXPECT_EQ(Child<QLabel>("trendCursor").text().toStdString(), text());
    EXPECT_EQ(Child<QTableView>("trendTable").currentIndex().row(), 0);
    Child<QTableView>("trendTable").selectRow(2);
    EXPECT_EQ(Plot().GetCursor(), 2u);
    EXPECT_EQ(Plot().accessibleName(), "Wykres");
}

TEST_F(TrendWindowTest, KeysAndWheelZoomAndMove) {
    ThreePoints();
    QTest::keyClick(&Plot(), Qt::Key_Plus);
    EXPECT_EQ(Plot().View().Width(), 1800);
    EXPECT_EQ(Plot().View().From(), kNow - 2700);
    QTest::keyClick(&Plot(), Qt::Key_Left, Qt::ControlModifier);
    EXPECT_EQ(Plot().View().From(), kNow - 2880);
    QTest::keyClick(&Plot(), Qt::Key_PageDown);
    EXPECT_EQ(Plot().View().From(), kNow - 1980);
    QTest::keyClick(&Plot(), Qt::Key_Minus);
    EXPECT_EQ(Plot().View().Width(), 3600);
    QTest::keyClick(&Plot(), Qt::Key_Home);
    EXPECT_EQ(Plot().View().From(), kNow - 3000);
    EXPECT_EQ(Plot().View().To(), kNow - 1000);
    QTest::keyClick(&Plot(), Qt::Key_PageUp);
    QTest::keyClick(&Plot(), Qt::Key_End);
    EXPECT_EQ(Plot().View().To(), kNow - 1000);
    const QPointF middle(Plot().width() / 2.0, Plot().height() / 2.0);
    QWheelEvent wheel(middle, Plot().mapToGlobal(middle), {}, {0, 120}, Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(&Plot(), &wheel);
    EXPECT_DOUBLE_EQ(Plot().View().Width(), 1600);
}

TEST_F(TrendWindowTest, CursorOutOfSightIsBroughtBack) {
    ThreePoints();
    QTest::keyClick(&Plot(), Qt::Key_End, Qt::ControlModifier);
    EXPECT_EQ(Plot().GetCursor(), 2u);
    Plot().SetView({kNow - 1500.0, kNow - 900.0});
    QTest::keyClick(&Plot(), Qt::Key_Left);
    EXPECT_EQ(Plot().View().From(), kNow - 2000);
}

TEST_F(TrendWindowTest, WhatIsNotThereYetIsAskedForWhenTheViewHasSettled) {
    ThreePoints();
    m_window->show();
    QTest::keyClick(&Plot(), Qt::Key_Plus);
    QTest::keyClick(&Plot(), Qt::Key_Minus);
    QTest::keyClick(&Plot(), Qt::Key_Minus);
    EXPECT_TRUE(QTest::qWaitFor([this] { return m_source->requests.size() > 1; }));
    ASSERT_EQ(m_source->requests.size(), 2u);
    EXPECT_EQ(m_source->requests[1], std::pair(kNow - 5400 - 3600, kNow));
    QTest::keyClick(&Plot(), Qt::Key_Right);
    m_source->AnswerWith({{.x = kNow - 5000, .value = 3}, {.x = kNow - 2000, .value = 12.5}});
    EXPECT_EQ(Plot().GetCursor(), 1u);
}

TEST_F(TrendWindowTest, NarrowViewOfALongRangeIsAskedForAnew) {
    emit Child<QComboBox>("trendRange").activated(5);
    EXPECT_EQ(m_source->requests.back(), std::pair(kNow - 366 * 86400, kNow));
    ThreePoints();
    m_window->show();
    // An eighth is seen in what has come; then it is asked for, and more.
    for (int i = 0; i < 3; ++i) QTest::keyClick(&Plot(), Qt::Key_Plus);
    EXPECT_FALSE(m_window->IsCoarse());
    QTest::keyClick(&Plot(), Qt::Key_Plus);
    EXPECT_TRUE(m_window->IsCoarse());
    EXPECT_TRUE(QTest::qWaitFor([this] { return m_source->requests.size() > 2; }));
    ASSERT_EQ(m_source->requests.size(), 3u);
    EXPECT_EQ(m_source->requests[2].second - m_source->requests[2].first, 366 * 86400 / 8);
    EXPECT_FALSE(m_window->IsCoarse());
}

TEST_F(TrendWindowTest, ShortRangeIsNeverThinned) {
    emit Child<QComboBox>("trendRange").activated(0);
    for (int i = 0; i < 9; ++i) QTest::keyClick(&Plot(), Qt::Key_Plus);
    EXPECT_FALSE(m_window->IsCoarse());
}

TEST_F(TrendWindowTest, LiveValuesGoOnAndTheViewWithThem) {
    ThreePoints();
    m_source->live = 7;
    for (int i = 0; i < 3; ++i) {
        m_clock.Advance(1000);
        m_source->live = *m_source->live + 1;
        m_window->ReadLive();
    }
    EXPECT_EQ(Child<QTableView>("trendTable").model()->rowCount(), 6);
    EXPECT_EQ(Plot().View().To(), kNow + 3);
    Plot().SetView({kNow - 3000.0, kNow - 2000.0});
    m_clock.Advance(1000);
    m_window->ReadLive();
    EXPECT_EQ(Plot().View().To(), kNow - 2000);
}

TEST_F(TrendWindowTest, FaultIsShownAndWhatThereWasStays) {
    ThreePoints();
    emit Child<QComboBox>("trendRange").activated(1);
    m_source->answer({{}, {"Brak dostępu do archiwum zmiennej %s", {"a"}}});
    EXPECT_EQ(Child<QLabel>("trendFault").text(),
              QString::fromUtf8("Brak dostępu do archiwum zmiennej a"));
    EXPECT_FALSE(Child<QLabel>("trendFault").isHidden());
    EXPECT_EQ(Child<QTableView>("trendTable").model()->rowCount(), 3);
    emit Child<QComboBox>("trendRange").activated(0);
    ThreePoints();
    EXPECT_TRUE(Child<QLabel>("trendFault").isHidden());
}

TEST_F(TrendWindowTest, FilesOfEachKind) {
    ThreePoints();
    m_path = QString::fromStdString(m_folder.Path("a.csv"));
    Child<QPushButton>("trendSave").click();
    EXPECT_EQ(m_proposed, QString::fromUtf8("ciśnienie.png"));
    EXPECT_EQ(m_folder.Get("a.csv"),
              "\xef\xbb\xbf"
              "Czas;ciśnienie [bar];Status\r\n2024-03-10T06:10:00+01:00;1.00;\r\n"
              "2024-03-10T06:26:40+01:00;12.50;\r\n2024-03-10T06:43:20+01:00;;UNKNOWN\r\n");
    EXPECT_TRUE(m_window->SaveAs(QString::fromStdString(m_folder.Path("a.PNG"))));
    const QImage image = QImage::fromData(QByteArray::fromStdString(m_folder.Get("a.PNG")));
    EXPECT_EQ(image.size(), QSize(1600, 900));
    EXPECT_TRUE(m_window->SaveAs(QString::fromStdString(m_folder.Path("a.svg"))));
    EXPECT_NE(m_folder.Get("a.svg").find("<svg"), std::string::npos);
    EXPECT_TRUE(m_told.empty());
    m_path.clear();
    Child<QPushButton>("trendSave").click();
    EXPECT_FALSE(m_window->SaveAs(QString::fromStdString(m_folder.Path("a.txt"))));
    EXPECT_FALSE(m_window->SaveAs(QString::fromStdString(m_folder.Path("nie/ma.csv"))));
    EXPECT_EQ(m_told,
              (std::vector<std::string>{
                  text::FromUtf8("Nazwa pliku musi kończyć się na .png, .svg albo .csv: " +
                                 m_folder.Path("a.txt")),
                  text::FromUtf8("Nie można zapisać trendu w pliku " + m_folder.Path("nie/ma.csv") +
                                 " (No such file or directory)")}));
}

TEST_F(TrendWindowTest, LineAndCursorAreDrawn) {
    ThreePoints();
    QTest::keyClick(&Plot(), Qt::Key_Right);
    const QImage with = Plot().grab().toImage();
    Plot().SetCursor(std::nullopt);
    const QImage without = Plot().grab().toImage();
    EXPECT_NE(with, without);
    m_source->AnswerWith({});
    EXPECT_NE(Plot().grab().toImage(), without);
}

class TrendWindowListTest : public TrendWindowTest {
  protected:
    TrendWindowListTest() : TrendWindowTest(false) {}
};

TEST_F(TrendWindowListTest, AllElementsAreShownAndAgainWhenTheyChange) {
    EXPECT_EQ(m_source->requests.size(), 1u);
    m_source->AnswerWith({{.x = 0, .value = 1}, {.x = 1, .value = 2}, {.x = 5, .value = 3}});
    EXPECT_EQ(Plot().View().From(), 0);
    EXPECT_EQ(Plot().View().To(), 5);
    QTest::keyClick(&Plot(), Qt::Key_Right);
    EXPECT_EQ(m_window->CursorText(), "element 2: 2.00 bar, punkt 2 z 3");
    m_window->ReadLive();
    EXPECT_EQ(m_source->requests.size(), 1u);
    m_source->version = 5;
    m_window->ReadLive();
    EXPECT_EQ(m_source->requests.size(), 2u);
    EXPECT_TRUE(Child<QComboBox>("trendRange").isHidden());
}

}  // namespace
}  // namespace kalvex::window
