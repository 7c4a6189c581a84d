#include "workbench/qt/PatternFindDialog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QLineEdit>
#include <QPointer>
#include <QtTest>
#include <optional>

#include "named_widget.h"

namespace kalvex::window {
namespace {

class PatternFindDialogTest : public testing::Test {
  protected:
    void Open(const workbench::FindRequest& search) {
        m_accepted.reset();
        m_dialog = new CFindDlg(
            m_translator, search,
            [this](const workbench::FindRequest& accepted) { m_accepted = accepted; }, &m_parent);
        m_dialog->open();
    }
    QLineEdit& Field() { return *NamedWidget<QLineEdit>(*m_dialog, "Szukany tekst"); }
    QCheckBox& Box(const char* name) {
        return *NamedWidget<QCheckBox>(*m_dialog, QString::fromUtf8(name));
    }

    platform::Translator m_translator;
    QWidget m_parent;
    QPointer<CFindDlg> m_dialog;
    std::optional<workbench::FindRequest> m_accepted;
};

TEST_F(PatternFindDialogTest, OpensWithTheSearchThatIsHandedIn) {
    Open({"Z\xb3y*", 5});
    EXPECT_EQ(m_dialog->windowTitle(), QString::fromUtf8("Znajdź"));
    EXPECT_EQ(Field().text(), QString::fromUtf8("Zły*"));
    EXPECT_EQ(Field().selectedText(), QString::fromUtf8("Zły*"));
    EXPECT_EQ(m_dialog->focusWidget(), &Field());
    EXPECT_TRUE(Box("Znaki wieloznaczne").isChecked());
    EXPECT_FALSE(Box("Cały tekst").isChecked());
    EXPECT_TRUE(Box("W dowolnym miejscu").isChecked());
    EXPECT_FALSE(Box("Bez względu na wielkość liter").isChecked());
}

struct OptionBit {
    const char* name;
    int bit;
};

TEST_F(PatternFindDialogTest, EachBoxIsItsBit) {
    constexpr OptionBit kBits[] = {{"Znaki wieloznaczne", 1},
                                   {"Cały tekst", 2},
                                   {"W dowolnym miejscu", 4},
                                   {"Bez względu na wielkość liter", 8}};
    for (const OptionBit& row : kBits) {
        Open({"", 0});
        QTest::keyClicks(&Field(), "abc");
        QTest::keyClick(&Box(row.name), Qt::Key_Space);
        QTest::keyClick(&Field(), Qt::Key_Return);
        ASSERT_TRUE(m_accepted.has_value()) << row.name;
        EXPECT_EQ(m_accepted->pattern, "abc");
        EXPECT_EQ(m_accepted->options, row.bit) << row.name;
    }
    Open({"x", 15});
    QTest::keyClick(&Field(), Qt::Key_Return);
    EXPECT_EQ(m_accepted->options, 15);
}

TEST_F(PatternFindDialogTest, MnemonicLeadsToABox) {
    Open({"", 0});
    ASSERT_TRUE(QTest::qWaitForWindowActive(m_dialog));
    QTest::keyClick(&Field(), Qt::Key_B, Qt::AltModifier);
    const QCheckBox& box = Box("Bez względu na wielkość liter");
    EXPECT_TRUE(QTest::qWaitFor([&box] { return box.isChecked(); }));
}

TEST_F(PatternFindDialogTest, EscapeAcceptsNothing) {
    Open({"abc", 5});
    QTest::keyClick(&Field(), Qt::Key_Escape);
    EXPECT_FALSE(m_accepted.has_value());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(m_dialog.isNull());
}

}  // namespace
}  // namespace kalvex::window
