#include "workbench/qt/ValueDialog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QtTest>
#include <optional>

#include "named_widget.h"
#include "value/Status.h"
#include "value/ValueText.h"
#include "workbench/qt/Texts.h"

namespace kalvex::window {
namespace {

class ValueDialogTest : public testing::Test {
  protected:
    void Open(const value::CVal& value) {
        m_dialog = new CVariableDlg(
            m_translator, "Z1_CI\x8c", value,
            [this](const value::CVal& changed) { m_accepted = changed; }, &m_parent);
        m_dialog->open();
    }
    QLineEdit& Field(const char* name) {
        return *NamedWidget<QLineEdit>(*m_dialog, QString::fromUtf8(name));
    }
    QLineEdit& NewField() { return Field("Nowa wartość"); }
    // Whether it has destroyed itself.
    bool IsGone() {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return m_dialog.isNull();
    }
    static value::CVal Made(value::CVal value, std::uint16_t status) {
        value.SetStatus(status);
        value.SetTime(1710050400);
        return value;
    }

    platform::Translator m_translator;
    QWidget m_parent;
    QPointer<CVariableDlg> m_dialog;
    std::optional<value::CVal> m_accepted;
};

TEST_F(ValueDialogTest, ShowsNameAndValueWithTheNewOneSelected) {
    Open(Made(value::CVal(12.5), value::Status::Alarm));
    EXPECT_EQ(m_dialog->windowTitle(), QString::fromUtf8("Zmiana wartości zmiennej"));
    EXPECT_EQ(Field("Zmienna :").text(), QString::fromUtf8("Z1_CIŚ"));
    EXPECT_TRUE(Field("Zmienna :").isReadOnly());
    EXPECT_EQ(Field("Bieżąca wartość").text(), "12.50");
    EXPECT_TRUE(Field("Bieżąca wartość").isReadOnly());
    EXPECT_EQ(NewField().text(), "12.50");
    EXPECT_FALSE(NewField().isReadOnly());
    EXPECT_EQ(NewField().selectedText(), "12.50");
    EXPECT_EQ(m_dialog->focusWidget(), &NewField());
    EXPECT_TRUE(m_dialog->isModal());
}

TEST_F(ValueDialogTest, LabelsLeadToTheirFields) {
    Open(value::CVal(1));
    QStringList labels;
    for (const QLabel* label : m_dialog->findChildren<QLabel*>()) {
        labels << label->text();
        EXPECT_EQ(label->buddy()->accessibleName(), label->text().remove('&'));
    }
    EXPECT_EQ(labels.join("|"), QString::fromUtf8("&Zmienna :|&Bieżąca wartość|&Nowa wartość"));
}

TEST_F(ValueDialogTest, UnknownValueIsNotShown) {
    Open(Made(value::CVal(12.5), value::Status::Unknown | value::Status::Alarm));
    EXPECT_EQ(Field("Bieżąca wartość").text(), "");
    EXPECT_EQ(NewField().text(), "");
}

struct InputRow {
    const char* input;
    const char* text;
    int type;
    int status;
};

TEST_F(ValueDialogTest, OkMakesAValueOfTheText) {
    constexpr InputRow kRows[] = {
        {"*", "0.00", value::ValueType::Double, 1},
        {"$", "0.00", value::ValueType::Double, 545},
        {"#12", "12.00", value::ValueType::Double, 2080},
        {"#", "0.00", value::ValueType::Double, 2080},
        {"#\"a b\"", "a b", value::ValueType::Text, 2080},
        {"\"12\"", "12", value::ValueType::Text, 0},
        {"\"\"", "", value::ValueType::Text, 0},
        {"\"", "0.00", value::ValueType::Double, 0},
        {"-1.5e2 bar", "-150.00", value::ValueType::Double, 0},
        {"0x10", "16.00", value::ValueType::Double, 0},
        {"abc", "0.00", value::ValueType::Double, 0},
        {"\"zażółć\"", "zażółć", value::ValueType::Text, 0},
    };
    for (const InputRow& row : kRows) {
        Open(Made(value::CVal(7), value::Status::Alarm));
        NewField().setText(QString::fromUtf8(row.input));
        QTest::keyClick(&NewField(), Qt::Key_Return);
        ASSERT_TRUE(m_accepted.has_value()) << row.input;
        EXPECT_EQ(ToQt(value::ValueToText(*m_accepted)), QString::fromUtf8(row.text)) << row.input;
        EXPECT_EQ(m_accepted->GetType(), row.type) << row.input;
        EXPECT_EQ(m_accepted->GetStatus(), row.status) << row.input;
        EXPECT_EQ(m_accepted->GetTime(), 0) << row.input;
        EXPECT_TRUE(IsGone());
        m_accepted.reset();
    }
}

TEST_F(ValueDialogTest, EmptyTextLeavesTheValueAsItWas) {
    Open(Made(value::CVal("abc"), value::Status::Alarm));
    QTest::keyClick(&NewField(), Qt::Key_Delete);
    EXPECT_EQ(NewField().text(), "");
    QTest::keyClick(&NewField(), Qt::Key_Enter);
    ASSERT_TRUE(m_accepted.has_value());
    EXPECT_EQ(value::ValueToText(*m_accepted), "abc");
    EXPECT_EQ(m_accepted->GetStatus(), value::Status::Alarm);
    EXPECT_EQ(m_accepted->GetTime(), 1710050400);
}

TEST_F(ValueDialogTest, EscapeAcceptsNothing) {
    Open(value::CVal(1));
    QTest::keyClick(&NewField(), Qt::Key_5);
    QTest::keyClick(&NewField(), Qt::Key_Escape);
    EXPECT_EQ(m_accepted, std::nullopt);
    EXPECT_TRUE(IsGone());
}

}  // namespace
}  // namespace kalvex::window
