#include "workbench/qt/ConfigurationDialog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QLabel>
#include <QTest>

#include "heard_window.h"
#include "shown_dialog.h"
#include "text/PatternMatch.h"
#include "workbench/qt/Texts.h"

namespace kalvex::window {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

app::KalvexConfiguration Configuration() {
    app::KalvexConfiguration configuration;
    configuration.moduleName = "Gaz";
    configuration.refreshPeriod = 500;
    configuration.configurationRight = "90";
    configuration.controlRight = "za\xb3oga";
    configuration.autostart = {"/s/a.kx", "/s/b.kx", "/s/c.kx"};
    return configuration;
}

class ConfigurationDialogTest : public testing::Test {
  protected:
    ConfigurationDialogTest() { m_dialog.show(); }

    CCfgDlg::Parts Parts() {
        return {m_window,
                m_translator,
                "/s",
                [] {
                    return std::vector<platform::UserRecord>{{"Adam", "", 50, {"gaz"}, {}}};
                },
                [this](QWidget* parent) {
                    m_parent = parent;
                    ++m_asked;
                    return m_request;
                },
                [this](QWidget*, const QString& folder, const platform::Translator&) {
                    m_folder = folder;
                    return m_files;
                }};
    }

    QTableWidget& Table() { return Child<QTableWidget>(m_dialog, "autostartTable"); }
    QPushButton& Button(const char* name) { return Child<QPushButton>(m_dialog, name); }
    QLineEdit& Field(const char* name) { return Child<QLineEdit>(m_dialog, name); }

    // The rows as "id path", those that are selected behind a star.
    std::vector<std::string> Rows() {
        std::vector<std::string> rows;
        for (int row = 0; row < Table().rowCount(); ++row) {
            rows.push_back((Table().item(row, 0)->isSelected() ? "*" : "") +
                           Table().item(row, 0)->text().toStdString() + " " +
                           Table().item(row, 1)->text().toStdString());
        }
        return rows;
    }
    void Select(const std::vector<int>& rows) {
        Table().clearSelection();
        for (const int row : rows) {
            Table().item(row, 0)->setSelected(true);
            Table().item(row, 1)->setSelected(true);
        }
    }

    platform::Translator m_translator;
    HeardWindow m_window;
    std::optional<workbench::FindRequest> m_request;
    QWidget* m_parent = nullptr;
    int m_asked = 0;
    QStringList m_files;
    QString m_folder;
    CCfgDlg m_dialog{Configuration(), Parts()};
};

TEST_F(ConfigurationDialogTest, HasItsNames) {
    EXPECT_EQ(m_dialog.windowTitle(), "Konfiguracja");
    EXPECT_EQ(Child<QCheckBox>(m_dialog, "trayIcon").accessibleName(),
              QString::fromUtf8("Ikona w pasku zadań"));
    EXPECT_EQ(Child<QSpinBox>(m_dialog, "refreshPeriod").accessibleName(),
              QString::fromUtf8("Częstotliwość odświeżania okna zmiennych  [ms]"));
    EXPECT_EQ(Field("configurationRight").accessibleName(), "Modyfikacja konfiguracji");
    EXPECT_EQ(Field("controlRight").accessibleName(), "Sterowanie skryptem");
    EXPECT_EQ(Button("configurationRightChoice").text(), ">>");
    EXPECT_EQ(Button("configurationRightChoice").accessibleDescription(),
              "Modyfikacja konfiguracji");
    EXPECT_EQ(Button("controlRightChoice").text(), ">>");
    EXPECT_EQ(Table().accessibleName(), "Autostart");
    EXPECT_EQ(Table().horizontalHeaderItem(0)->text(), "Id");
    EXPECT_EQ(Table().horizontalHeaderItem(1)->text(), "Nazwa pliku");
    const std::pair<const char*, const char*> buttons[] = {
        {"addScript", "&Dodaj"},    {"removeScript", "&Usuń"}, {"moveUp", "<"},
        {"moveDown", ">"},          {"find", "&Znajdź"},       {"findNext", "Znajdź &następną"},
        {"moveTo", "&Przenieś do…"}};
    for (const auto& [name, text] : buttons) {
        EXPECT_EQ(Button(name).text(), QString::fromUtf8(text));
    }
    EXPECT_EQ(m_dialog.focusWidget(), &Child<QCheckBox>(m_dialog, "trayIcon"));
}

TEST_F(ConfigurationDialogTest, NoTwoEntriesHaveOneLetter) {
    QStringList texts;
    for (const auto* label : m_dialog.findChildren<QLabel*>()) texts += label->text();
    for (const auto* button : m_dialog.findChildren<QAbstractButton*>()) texts += button->text();
    texts += QString::fromUtf8("&Wstaw");
    QString letters;
    for (const QString& text : texts) {
        const qsizetype mark = text.indexOf('&');
        if (mark < 0) continue;
        const QChar letter = text[mark + 1].toUpper();
        EXPECT_FALSE(letters.contains(letter)) << text.toStdString();
        letters += letter;
    }
    EXPECT_GE(letters.size(), 9);
}

TEST_F(ConfigurationDialogTest, ShowsWhatIsSetAndGivesItBack) {
    EXPECT_TRUE(Child<QCheckBox>(m_dialog, "trayIcon").isChecked());
    EXPECT_EQ(Child<QSpinBox>(m_dialog, "refreshPeriod").value(), 500);
    EXPECT_EQ(Field("configurationRight").text(), "90");
    EXPECT_EQ(Field("controlRight").text(), QString::fromUtf8("załoga"));
    EXPECT_THAT(Rows(), ElementsAre("1 /s/a.kx", "2 /s/b.kx", "3 /s/c.kx"));
    const app::KalvexConfiguration given = m_dialog.GetConfiguration();
    EXPECT_EQ(given.moduleName, "Gaz");
    EXPECT_TRUE(given.trayIcon);
    EXPECT_EQ(given.refreshPeriod, 500U);
    EXPECT_EQ(given.configurationRight, "90");
    EXPECT_EQ(given.controlRight, "za\xb3oga");
    EXPECT_EQ(given.autostart, Configuration().autostart);
}

TEST_F(ConfigurationDialogTest, ChangesAreGivenBack) {
    Child<QCheckBox>(m_dialog, "trayIcon").setChecked(false);
    Child<QSpinBox>(m_dialog, "refreshPeriod").setValue(2000);
    Field("configurationRight").setText("50");
    Field("controlRight").setText(QString::fromUtf8("żwir"));
    const app::KalvexConfiguration given = m_dialog.GetConfiguration();
    EXPECT_FALSE(given.trayIcon);
    EXPECT_EQ(given.refreshPeriod, 2000U);
    EXPECT_EQ(given.configurationRight, "50");
    EXPECT_EQ(given.controlRight, "\xbfwir");
}

TEST_F(ConfigurationDialogTest, ThePeriodHasItsBounds) {
    auto& period = Child<QSpinBox>(m_dialog, "refreshPeriod");
    period.setValue(9);
    EXPECT_EQ(period.value(), 10);
    period.setValue(3600001);
    EXPECT_EQ(period.value(), 3600000);
    app::KalvexConfiguration configuration;
    configuration.refreshPeriod = 4000000000;
    EXPECT_EQ(CCfgDlg(configuration, Parts()).GetConfiguration().refreshPeriod, 3600000U);
}

TEST_F(ConfigurationDialogTest, ARightIsChosenAmongLevelsAndGroups) {
    WithNextDialog([](QDialog& dialog) {
        auto& table = Child<QTableWidget>(dialog, "rightChoices");
        EXPECT_EQ(table.rowCount(), 3);
        table.selectRow(2);
        QTest::keyClick(&dialog, Qt::Key_Return);
    });
    Button("configurationRightChoice").click();
    EXPECT_EQ(Field("configurationRight").text(), "gaz");
    EXPECT_EQ(Field("controlRight").text(), QString::fromUtf8("załoga"));
    WithNextDialog([](QDialog& dialog) {
        Child<QTableWidget>(dialog, "rightChoices").selectRow(1);
        dialog.reject();
    });
    Button("controlRightChoice").click();
    EXPECT_EQ(Field("controlRight").text(), QString::fromUtf8("załoga"));
}

TEST_F(ConfigurationDialogTest, ATextThatIsNoRightIsRefused) {
    for (const char* right : {"", "101"}) {
        m_window.messages.clear();
        Field("controlRight").setText(right);
        QTest::keyClick(&m_dialog, Qt::Key_Return);
        EXPECT_TRUE(m_dialog.isVisible());
        EXPECT_THAT(m_window.messages,
                    ElementsAre("Sterowanie skryptem: należy podać poziom od 0 do 100 albo nazwę "
                                "grupy"));
        EXPECT_EQ(m_dialog.focusWidget(), &Field("controlRight"));
    }
    Field("controlRight").setText("100");
    QTest::keyClick(&m_dialog, Qt::Key_Return);
    EXPECT_EQ(m_dialog.result(), QDialog::Accepted);
}

TEST_F(ConfigurationDialogTest, ScriptsAreAdded) {
    m_files = QStringList{"/s/x.kx", QString::fromUtf8("/s/ż.kx")};
    Button("addScript").click();
    EXPECT_EQ(m_folder, "/s");
    EXPECT_THAT(Rows(),
                ElementsAre("1 /s/a.kx", "2 /s/b.kx", "3 /s/c.kx", "4 /s/x.kx", "5 /s/ż.kx"));
    EXPECT_EQ(m_dialog.GetConfiguration().autostart[4], "/s/\xbf.kx");
}

TEST_F(ConfigurationDialogTest, ScriptsAreInsertedWhereARowIsSelected) {
    Select({1});
    EXPECT_EQ(Button("addScript").text(), "&Wstaw");
    m_files = QStringList{"/s/x.kx", "/s/y.kx"};
    Button("addScript").click();
    EXPECT_THAT(Rows(),
                ElementsAre("1 /s/a.kx", "2 /s/x.kx", "3 /s/y.kx", "*4 /s/b.kx", "5 /s/c.kx"));
    Select({});
    EXPECT_EQ(Button("addScript").text(), "&Dodaj");
}

TEST_F(ConfigurationDialogTest, AFileThatNoScriptCanBeIsRefused) {
    m_files = QStringList{QString::fromUtf8("/s/λ.kx"), "/s/x.kx"};
    Button("addScript").click();
    EXPECT_THAT(m_window.messages,
                ElementsAre("Nazwa pliku /s/?.kx ma znaki spoza Windows-1250, więc skrypt nie "
                            "otworzy się"));
    EXPECT_THAT(Rows(), ElementsAre("1 /s/a.kx", "2 /s/b.kx", "3 /s/c.kx", "4 /s/x.kx"));
}

TEST_F(ConfigurationDialogTest, SelectedRowsAreRemoved) {
    EXPECT_FALSE(Button("removeScript").isEnabled());
    Select({0, 2});
    Button("removeScript").click();
    EXPECT_THAT(Rows(), ElementsAre("1 /s/b.kx"));
    EXPECT_FALSE(Button("removeScript").isEnabled());
}

TEST_F(ConfigurationDialogTest, SelectedRowsMove) {
    Select({1, 2});
    Button("moveUp").click();
    EXPECT_THAT(Rows(), ElementsAre("*1 /s/b.kx", "*2 /s/c.kx", "3 /s/a.kx"));
    Button("moveDown").click();
    EXPECT_THAT(Rows(), ElementsAre("1 /s/a.kx", "*2 /s/b.kx", "*3 /s/c.kx"));
    EXPECT_EQ(m_dialog.GetConfiguration().autostart, Configuration().autostart);
}

TEST_F(ConfigurationDialogTest, SelectedRowsMoveToANumber) {
    Select({2});
    WithNextDialog([](QDialog& dialog) {
        EXPECT_EQ(dialog.windowTitle(), QString::fromUtf8("Przenieś do"));
        auto& number = Child<QLineEdit>(dialog, "lineNumber");
        EXPECT_EQ(number.selectedText(), "3");
        QTest::keyClicks(&number, "1");
        QTest::keyClick(&dialog, Qt::Key_Return);
    });
    Button("moveTo").click();
    EXPECT_THAT(Rows(), ElementsAre("*1 /s/c.kx", "2 /s/a.kx", "3 /s/b.kx"));
    WithNextDialog([](QDialog& dialog) { dialog.reject(); });
    Button("moveTo").click();
    EXPECT_THAT(Rows(), ElementsAre("*1 /s/c.kx", "2 /s/a.kx", "3 /s/b.kx"));
}

TEST_F(ConfigurationDialogTest, WhatIsFoundIsSelected) {
    m_request =
        workbench::FindRequest{"B.KX", text::PatternOption::Anywhere | text::PatternOption::NoCase};
    Button("find").click();
    EXPECT_EQ(m_parent, &m_dialog);
    EXPECT_THAT(Rows(), ElementsAre("1 /s/a.kx", "*2 /s/b.kx", "3 /s/c.kx"));
    m_request = workbench::FindRequest{"/s/", 0};
    Button("find").click();
    EXPECT_THAT(Rows(), ElementsAre("1 /s/a.kx", "2 /s/b.kx", "*3 /s/c.kx"));
    Button("findNext").click();
    EXPECT_THAT(Rows(), ElementsAre("*1 /s/a.kx", "2 /s/b.kx", "3 /s/c.kx"));
    EXPECT_EQ(m_asked, 2);
}

TEST_F(ConfigurationDialogTest, WhatIsNotFoundLeavesTheSelection) {
    Select({0, 1});
    m_request = workbench::FindRequest{"x", 0};
    Button("find").click();
    EXPECT_THAT(Rows(), ElementsAre("*1 /s/a.kx", "*2 /s/b.kx", "3 /s/c.kx"));
}

TEST_F(ConfigurationDialogTest, WithoutAPatternTheNextOneIsAskedFor) {
    Button("findNext").click();
    EXPECT_EQ(m_asked, 1);
    EXPECT_THAT(Rows(), ElementsAre("1 /s/a.kx", "2 /s/b.kx", "3 /s/c.kx"));
    m_request = workbench::FindRequest{"/s/c", 0};
    Button("findNext").click();
    EXPECT_THAT(Rows(), ElementsAre("1 /s/a.kx", "2 /s/b.kx", "*3 /s/c.kx"));
}

TEST_F(ConfigurationDialogTest, TheKeysOfTheListWork) {
    m_dialog.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&m_dialog));
    Select({2});
    const auto press = [this](Qt::Key key, const std::vector<std::string>& rows) {
        QTest::keyClick(&m_dialog, key, Qt::AltModifier);
        return QTest::qWaitFor([&] { return Rows() == rows; });
    };
    EXPECT_TRUE(press(Qt::Key_Up, {"1 /s/a.kx", "*2 /s/c.kx", "3 /s/b.kx"}));
    EXPECT_TRUE(press(Qt::Key_Down, {"1 /s/a.kx", "2 /s/b.kx", "*3 /s/c.kx"}));
    EXPECT_TRUE(press(Qt::Key_U, {"1 /s/a.kx", "2 /s/b.kx"}));
}

TEST_F(ConfigurationDialogTest, TheNumbersNeedLittleOfTheWidth) {
    m_dialog.resize(1000, 600);
    const int width = Table().viewport()->width();
    EXPECT_EQ(Table().columnWidth(0),
              std::max((width - width / 20) / 20, Table().fontMetrics().horizontalAdvance("3")));
    EXPECT_EQ(Table().columnWidth(0) + Table().columnWidth(1), width);
}

TEST_F(ConfigurationDialogTest, FitsIntoASmallScreen) {
    EXPECT_LE(m_dialog.minimumSizeHint().width(), 1024);
    EXPECT_LE(m_dialog.minimumSizeHint().height(), 700);
}

TEST_F(ConfigurationDialogTest, EscapeChangesNothing) {
    QTest::keyClick(&m_dialog, Qt::Key_Escape);
    EXPECT_EQ(m_dialog.result(), QDialog::Rejected);
    EXPECT_FALSE(m_dialog.isVisible());
    EXPECT_THAT(m_window.messages, IsEmpty());
}

}  // namespace
}  // namespace kalvex::window
