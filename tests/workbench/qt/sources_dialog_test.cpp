#include "workbench/qt/SourcesDialog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QTest>

#include "heard_window.h"
#include "shown_dialog.h"
#include "workbench/qt/Texts.h"

namespace kalvex::window {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class SourcesDialogTest : public testing::Test {
  protected:
    SourcesDialogTest() { m_dialog.show(); }

    std::vector<sources::CSourceDesc> Sources() const {
        return {{"gaz", "skrypty", m_crypt.EncryptText("tajne")},
                {"woda", "Adam", "{kx1}abc", true},
                {"bez", "", ""}};
    }
    QTableWidget& Table() { return Child<QTableWidget>(m_dialog, "sourcesTable"); }
    QPushButton& Button(const char* name) { return Child<QPushButton>(m_dialog, name); }

    // The sources as "name/user/password".
    std::vector<std::string> Shown() const {
        std::vector<std::string> shown;
        for (const sources::CSourceDesc& source : m_dialog.GetSources()) {
            shown.push_back(
                source.name + "/" + source.user + "/" +
                (source.lost ? "lost " + source.password : m_crypt.DecryptText(source.password)));
        }
        return shown;
    }

    // Fills the fields and presses Enter; the dialog is closed if it stays.
    static void Fill(const QString& name, const QString& user, const QString& password) {
        WithNextDialog([=](QDialog& dialog) {
            Child<QLineEdit>(dialog, "sourceName").setText(name);
            Child<QLineEdit>(dialog, "sourceUser").setText(user);
            Child<QLineEdit>(dialog, "sourcePassword").setText(password);
            QTest::keyClick(&dialog, Qt::Key_Return);
            if (dialog.isVisible()) QTest::keyClick(&dialog, Qt::Key_Escape);
        });
    }
    void Select(int row) { Table().selectRow(row); }

    platform::Translator m_translator;
    platform::CCrypt m_crypt{"", platform::KeyFile::ReadOnly};
    HeardWindow m_window;
    SourcesDialog m_dialog{Sources(), m_crypt, m_window, m_translator};
    const std::vector<std::string> m_unchanged = Shown();
};

TEST_F(SourcesDialogTest, ShowsNamesAndUsers) {
    EXPECT_EQ(m_dialog.windowTitle(), QString::fromUtf8("Źródła"));
    EXPECT_EQ(Table().accessibleName(), QString::fromUtf8("Źródła"));
    EXPECT_EQ(Table().columnCount(), 2);
    EXPECT_EQ(Table().horizontalHeaderItem(0)->text(), "Nazwa");
    EXPECT_EQ(Table().horizontalHeaderItem(1)->text(), QString::fromUtf8("Użytkownik"));
    EXPECT_EQ(Table().item(0, 0)->text(), "gaz");
    EXPECT_EQ(Table().item(1, 1)->text(), "Adam");
    EXPECT_EQ(Button("addSource").text(), "&Dodaj");
    EXPECT_EQ(Button("changeSource").text(), QString::fromUtf8("&Zmień"));
    EXPECT_EQ(Button("removeSource").text(), QString::fromUtf8("&Usuń"));
    EXPECT_EQ(m_dialog.focusWidget(), &Table());
    EXPECT_THAT(m_unchanged, ElementsAre("gaz/skrypty/tajne", "woda/Adam/lost {kx1}abc", "bez//"));
}

TEST_F(SourcesDialogTest, ButtonsGoByTheSelection) {
    EXPECT_FALSE(Button("changeSource").isEnabled());
    EXPECT_FALSE(Button("removeSource").isEnabled());
    Select(0);
    EXPECT_TRUE(Button("changeSource").isEnabled());
    EXPECT_TRUE(Button("removeSource").isEnabled());
    Table().selectAll();
    EXPECT_FALSE(Button("changeSource").isEnabled());
    EXPECT_TRUE(Button("removeSource").isEnabled());
}

TEST_F(SourcesDialogTest, ASourceIsAdded) {
    Fill(QString::fromUtf8("żwir"), "Ewa", QString::fromUtf8("a,b ś"));
    Button("addSource").click();
    EXPECT_EQ(Shown().size(), 4U);
    EXPECT_EQ(Shown()[3], "\xbfwir/Ewa/a,b \x9c");
    EXPECT_TRUE(m_crypt.CanDecryptText(m_dialog.GetSources()[3].password));
    EXPECT_EQ(Table().item(3, 0)->text(), QString::fromUtf8("żwir"));
    EXPECT_TRUE(Table().item(3, 0)->isSelected());
    EXPECT_THAT(m_window.messages, IsEmpty());
}

TEST_F(SourcesDialogTest, WhatIsCancelledIsNotAdded) {
    WithNextDialog([](QDialog& dialog) {
        Child<QLineEdit>(dialog, "sourceName").setText("x");
        QTest::keyClick(&dialog, Qt::Key_Escape);
    });
    Button("addSource").click();
    EXPECT_EQ(Shown(), m_unchanged);
}

TEST_F(SourcesDialogTest, AnEmptyPasswordLeavesThatOfTheSource) {
    Select(0);
    Fill("para", "Jan", "");
    Button("changeSource").click();
    EXPECT_EQ(Shown()[0], "para/Jan/tajne");
    EXPECT_EQ(Table().item(0, 0)->text(), "para");
    Select(1);
    Fill("woda", "Jan", "");
    Button("changeSource").click();
    EXPECT_EQ(Shown()[1], "woda/Jan/lost {kx1}abc");
}

TEST_F(SourcesDialogTest, ANewPasswordTakesThePlaceOfOneThatIsLost) {
    Select(1);
    Fill("woda", "Adam", "nowe");
    Button("changeSource").click();
    EXPECT_EQ(Shown()[1], "woda/Adam/nowe");
}

TEST_F(SourcesDialogTest, NoPasswordIsShown) {
    Select(0);
    WithNextDialog([](QDialog& dialog) {
        EXPECT_EQ(dialog.windowTitle(), QString::fromUtf8("Źródło"));
        const auto& password = Child<QLineEdit>(dialog, "sourcePassword");
        EXPECT_EQ(password.text(), "");
        EXPECT_EQ(password.placeholderText(), "bez zmian");
        EXPECT_EQ(password.echoMode(), QLineEdit::Password);
        EXPECT_EQ(password.accessibleName(), QString::fromUtf8("Hasło"));
        EXPECT_EQ(Child<QLineEdit>(dialog, "sourceName").text(), "gaz");
        EXPECT_EQ(Child<QLineEdit>(dialog, "sourceName").accessibleName(), "Nazwa");
        EXPECT_EQ(Child<QLineEdit>(dialog, "sourceUser").text(), "skrypty");
        EXPECT_EQ(dialog.focusWidget(), &Child<QLineEdit>(dialog, "sourceName"));
        dialog.reject();
    });
    Button("changeSource").click();
    EXPECT_EQ(Shown(), m_unchanged);
}

TEST_F(SourcesDialogTest, FieldsThatTheProfileCannotHoldAreRefused) {
    const char* fault = "Nazwa źródła i użytkownik nie mogą być puste ani zawierać przecinka";
    const std::pair<const char*, const char*> fields[] = {
        {"", "a"}, {"a,b", "a"}, {"a", ""}, {"a", "b,"}};
    for (const auto& [name, user] : fields) {
        m_window.messages.clear();
        Fill(name, user, "x");
        Button("addSource").click();
        EXPECT_THAT(m_window.messages, ElementsAre(fault));
    }
    EXPECT_EQ(Shown(), m_unchanged);
}

TEST_F(SourcesDialogTest, ANameThatIsTakenIsRefused) {
    Fill("gaz", "a", "");
    Button("addSource").click();
    Select(1);
    Fill("gaz", "a", "");
    Button("changeSource").click();
    EXPECT_THAT(m_window.messages, ElementsAre("Źródło o tej nazwie już istnieje",
                                               "Źródło o tej nazwie już istnieje"));
    EXPECT_EQ(Shown(), m_unchanged);
}

TEST_F(SourcesDialogTest, CharactersOutsideTheCodePageAreRefused) {
    Fill(QString::fromUtf8("λ"), "a", "");
    Button("addSource").click();
    Fill("a", QString::fromUtf8("λ"), "");
    Button("addSource").click();
    Fill("a", "a", QString::fromUtf8("λ"));
    Button("addSource").click();
    EXPECT_THAT(m_window.messages, ElementsAre("Tekst ma znaki spoza Windows-1250",
                                               "Tekst ma znaki spoza Windows-1250",
                                               "Hasło ma znaki spoza Windows-1250"));
    EXPECT_EQ(Shown(), m_unchanged);
}

TEST_F(SourcesDialogTest, SelectedSourcesAreRemoved) {
    Select(2);
    Table().item(0, 0)->setSelected(true);
    Table().item(0, 1)->setSelected(true);
    Button("removeSource").click();
    EXPECT_THAT(Shown(), ElementsAre("woda/Adam/lost {kx1}abc"));
    EXPECT_EQ(Table().rowCount(), 1);
    EXPECT_FALSE(Button("removeSource").isEnabled());
}

TEST_F(SourcesDialogTest, EnterIsOkAndEscapeIsNot) {
    QTest::keyClick(&Table(), Qt::Key_Return);
    EXPECT_EQ(m_dialog.result(), QDialog::Accepted);
    m_dialog.show();
    QTest::keyClick(&Table(), Qt::Key_Escape);
    EXPECT_EQ(m_dialog.result(), QDialog::Rejected);
}

TEST_F(SourcesDialogTest, ADoubleClickChangesTheSource) {
    const QPoint place = Table().visualItemRect(Table().item(0, 0)).center();
    Fill("para", "Jan", "");
    QTest::mouseClick(Table().viewport(), Qt::LeftButton, {}, place);
    QTest::mouseDClick(Table().viewport(), Qt::LeftButton, {}, place);
    EXPECT_EQ(Shown()[0], "para/Jan/tajne");
}

}  // namespace
}  // namespace kalvex::window
