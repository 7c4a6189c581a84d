#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDialogButtonBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QTest>

#include "heard_window.h"
#include "shown_dialog.h"
#include "workbench/qt/FileFilters.h"
#include "workbench/qt/LineDialog.h"
#include "workbench/qt/LoginDialog.h"
#include "workbench/qt/TextDialog.h"
#include "workbench/qt/Texts.h"
#include "workbench/qt/UserGroupDialog.h"

namespace kalvex::window {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

QPushButton& Button(const QDialog& dialog, QDialogButtonBox::StandardButton which) {
    return *dialog.findChild<QDialogButtonBox*>()->button(which);
}

QString LabelOf(const QWidget& field) {
    for (const QLabel* label : field.window()->findChildren<QLabel*>()) {
        if (label->buddy() == &field) return label->text();
    }
    return {};
}

TEST(SmallDialogsFilterTest, NamesKeepTheirPatterns) {
    EXPECT_EQ(ToFileFilter("Zmienne (*.txt)|*.txt|Wszystkie pliki (*.*)|*.*||"),
              "Zmienne (*.txt) (*.txt);;Wszystkie pliki (*.*) (*)");
    EXPECT_EQ(ToFileFilter("Skrypty (*.kx)|*.kx"), "Skrypty (*.kx) (*.kx)");
    EXPECT_EQ(ToFileFilter(""), "");
}

TEST(SmallDialogsNameTest, ALabelGivesItsFieldTheNameWithoutTheMark) {
    EXPECT_EQ(WithoutMnemonic("&Hasło"), "Hasło");
    EXPECT_EQ(WithoutMnemonic("Znajdź &następną"), "Znajdź następną");
}

class SmallDialogsLineTest : public testing::Test {
  protected:
    QLineEdit& Field(const QDialog& dialog) { return Child<QLineEdit>(dialog, "lineNumber"); }

    platform::Translator m_translator;
};

TEST_F(SmallDialogsLineTest, TheNumberIsSelectedAndHasTheFocus) {
    CLineDlg dialog("Przejdź do linii", m_translator, 17);
    dialog.show();
    EXPECT_EQ(dialog.windowTitle(), "Przejdź do linii");
    EXPECT_EQ(dialog.focusWidget(), &Field(dialog));
    EXPECT_EQ(Field(dialog).selectedText(), "17");
    EXPECT_EQ(Field(dialog).accessibleName(), "Numer");
    EXPECT_EQ(LabelOf(Field(dialog)), "&Numer");
}

TEST_F(SmallDialogsLineTest, WhatIsTypedIsTheNumber) {
    CLineDlg dialog("a", m_translator, 17);
    dialog.show();
    QTest::keyClicks(&Field(dialog), "4x-2.0");
    EXPECT_EQ(dialog.GetNumber(), 420);
    QTest::keyClick(&dialog, Qt::Key_Return);
    EXPECT_EQ(dialog.result(), QDialog::Accepted);
}

TEST_F(SmallDialogsLineTest, WithoutANumberThereIsNoOk) {
    CLineDlg dialog("a", m_translator, 17);
    dialog.show();
    QTest::keyClick(&Field(dialog), Qt::Key_Delete);
    EXPECT_EQ(dialog.GetNumber(), std::nullopt);
    EXPECT_FALSE(Button(dialog, QDialogButtonBox::Ok).isEnabled());
    QTest::keyClick(&dialog, Qt::Key_Return);
    EXPECT_TRUE(dialog.isVisible());
    QTest::keyClicks(&Field(dialog), "1234567890");
    EXPECT_EQ(dialog.GetNumber(), 123456789);
    EXPECT_TRUE(Button(dialog, QDialogButtonBox::Ok).isEnabled());
}

TEST_F(SmallDialogsLineTest, ItIsAskedForOrCancelled) {
    WithNextDialog([this](QDialog& dialog) {
        QTest::keyClicks(&Field(dialog), "5");
        QTest::keyClick(&dialog, Qt::Key_Enter);
    });
    EXPECT_EQ(CLineDlg::Ask("a", m_translator, 1, nullptr), 5);
    WithNextDialog([](QDialog& dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); });
    EXPECT_EQ(CLineDlg::Ask("a", m_translator, 1, nullptr), std::nullopt);
}

class SmallDialogsLoginTest : public testing::Test {
  protected:
    SmallDialogsLoginTest() { m_dialog.show(); }

    QLineEdit& User() { return Child<QLineEdit>(m_dialog, "loginUser"); }
    QLineEdit& Password() { return Child<QLineEdit>(m_dialog, "loginPassword"); }

    platform::Translator m_translator;
    HeardWindow m_window;
    std::vector<std::string> m_tried;
    bool m_accepted = true;
    LoginDialog m_dialog{[this](const std::string& name, const std::string& password) {
                             m_tried.push_back(name + "/" + password);
                             return m_accepted;
                         },
                         m_window, m_translator};
};

TEST_F(SmallDialogsLoginTest, HasItsNames) {
    EXPECT_EQ(m_dialog.windowTitle(), "Logowanie");
    EXPECT_EQ(User().accessibleName(), QString::fromUtf8("Użytkownik"));
    EXPECT_EQ(Password().accessibleName(), QString::fromUtf8("Hasło"));
    EXPECT_EQ(Password().echoMode(), QLineEdit::Password);
    EXPECT_EQ(m_dialog.focusWidget(), &User());
    EXPECT_EQ(LabelOf(User()), QString::fromUtf8("&Użytkownik"));
    EXPECT_EQ(LabelOf(Password()), QString::fromUtf8("&Hasło"));
}

TEST_F(SmallDialogsLoginTest, TheUserIsLoggedIn) {
    User().setText(QString::fromUtf8("Łucja"));
    Password().setText("Tajne 1");
    QTest::keyClick(&m_dialog, Qt::Key_Return);
    EXPECT_THAT(m_tried, ElementsAre("\xa3ucja/Tajne 1"));
    EXPECT_EQ(m_dialog.result(), QDialog::Accepted);
    EXPECT_THAT(m_window.messages, IsEmpty());
}

TEST_F(SmallDialogsLoginTest, ARefusedLoginIsToldAndTheDialogStays) {
    m_accepted = false;
    User().setText(QString::fromUtf8("Łucja"));
    Password().setText("x");
    QTest::keyClick(&m_dialog, Qt::Key_Return);
    EXPECT_THAT(m_window.messages, ElementsAre("Nie można zalogować użytkownika Łucja"));
    EXPECT_TRUE(m_dialog.isVisible());
    EXPECT_EQ(Password().text(), "");
    EXPECT_EQ(User().text(), QString::fromUtf8("Łucja"));
    EXPECT_EQ(m_dialog.focusWidget(), &Password());
}

TEST_F(SmallDialogsLoginTest, EscapeLogsNobodyIn) {
    QTest::keyClick(&m_dialog, Qt::Key_Escape);
    EXPECT_THAT(m_tried, IsEmpty());
    EXPECT_EQ(m_dialog.result(), QDialog::Rejected);
    EXPECT_FALSE(m_dialog.isVisible());
}

TEST(SmallDialogsTextTest, TheProgramTellsWhatItIs) {
    const platform::Translator translator;
    AboutBox box("1.2.3", translator);
    box.show();
    EXPECT_EQ(box.windowTitle(), "O programie");
    EXPECT_EQ(Child<QPlainTextEdit>(box, "text").toPlainText(),
              QString::fromUtf8("Kalvex 1.2.3\n\nModuł skryptów systemu Sorvane SCADA: wykonuje "
                                "skrypty, które odczytują i zmieniają zmienne serwerów danych."));
    QTest::keyClick(&box, Qt::Key_Escape);
    EXPECT_FALSE(box.isVisible());
}

class SmallDialogsUserGroupTest : public testing::Test {
  protected:
    UserGroupDialog& Open(const std::string& right) {
        m_dialog = std::make_unique<UserGroupDialog>(
            std::vector<workbench::RightChoice>{
                {"100", {"Ewa"}}, {"50", {"Adam", "Ewa"}}, {"za\xb3oga", {"Adam"}}},
            right, m_translator);
        m_dialog->show();
        return *m_dialog;
    }
    RowTable& Table() {
        return static_cast<RowTable&>(Child<QTableWidget>(*m_dialog, "rightChoices"));
    }

    platform::Translator m_translator;
    std::unique_ptr<UserGroupDialog> m_dialog;
};

TEST_F(SmallDialogsUserGroupTest, ShowsEachChoiceWithItsUsers) {
    EXPECT_EQ(Open("50").windowTitle(), "Poziom lub grupa");
    EXPECT_EQ(Table().accessibleName(), "Poziom lub grupa");
    EXPECT_EQ(Table().rowCount(), 3);
    EXPECT_EQ(Table().item(1, 1)->text(), "Adam, Ewa");
    EXPECT_EQ(Table().item(2, 0)->text(), QString::fromUtf8("załoga"));
    EXPECT_EQ(m_dialog->focusWidget(), &Table());
}

TEST_F(SmallDialogsUserGroupTest, TheRightThatIsSetIsSelected) {
    EXPECT_EQ(Open("50").GetRight(), "50");
    QTest::keyClick(&Table(), Qt::Key_Down);
    EXPECT_EQ(m_dialog->GetRight(), "za\xb3oga");
    QTest::keyClick(&Table(), Qt::Key_Return);
    EXPECT_EQ(m_dialog->result(), QDialog::Accepted);
}

TEST_F(SmallDialogsUserGroupTest, WithoutASelectionThereIsNoOk) {
    EXPECT_EQ(Open("woda").GetRight(), "");
    EXPECT_FALSE(Button(*m_dialog, QDialogButtonBox::Ok).isEnabled());
    Table().SelectRows({0});
    EXPECT_TRUE(Button(*m_dialog, QDialogButtonBox::Ok).isEnabled());
    EXPECT_EQ(m_dialog->GetRight(), "100");
}

}  // namespace
}  // namespace kalvex::window
