// The bar that finds and replaces.
#include "workbench/qt/FindBar.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "workbench/qt/editor_world.h"

namespace kalvex::window {
namespace {

using testing::ElementsAre;

class FindBarTest : public EditorWorld {
  protected:
    ~FindBarTest() override { m_bar.reset(); }
    void Find(std::string_view text) {
        m_bar.reset();
        Edit(text);
        m_editor->show();
        m_bar = std::make_unique<FindBar>(*m_editor, m_memory, translator,
                                          [this](const QString& said) { Hear("box " + said); });
    }
    template <class Widget>
    Widget& Named(const char* name) {
        for (Widget* widget : m_bar->findChildren<Widget*>()) {
            if (widget->accessibleName() == QString::fromUtf8(name)) return *widget;
        }
        ADD_FAILURE() << name;
        return *m_bar->findChild<Widget*>();
    }
    void Enter(const QString& text) { Named<QComboBox>("Szukany tekst").setCurrentText(text); }
    void PressIn(const char* field, Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(&Named<QComboBox>(field), key, modifiers);
    }
    void Click(const char* name) { QTest::mouseClick(&Named<QPushButton>(name), Qt::LeftButton); }
    std::string Failure() { return m_bar->findChild<QLabel*>("findFailure")->text().toStdString(); }
    std::pair<int, int> Selected() const {
        const CKalvexEditCtrl::Range range = m_editor->Selection();
        return {range.from, range.to};
    }

    FindMemory m_memory;
    std::unique_ptr<FindBar> m_bar;
};

TEST_F(FindBarTest, EnterLooksOnAndShiftEnterBack) {
    Find("ą ab ab");
    m_bar->Open(false);
    EXPECT_TRUE(m_bar->isVisible());
    Enter("AB");
    PressIn("Szukany tekst", Qt::Key_Return);
    EXPECT_EQ(Selected(), std::pair(3, 5));
    PressIn("Szukany tekst", Qt::Key_Enter);
    EXPECT_EQ(Selected(), std::pair(6, 8));
    PressIn("Szukany tekst", Qt::Key_Return);
    EXPECT_EQ(Selected(), std::pair(3, 5));
    PressIn("Szukany tekst", Qt::Key_Return, Qt::ShiftModifier);
    EXPECT_EQ(Selected(), std::pair(6, 8));
    EXPECT_EQ(Failure(), "");
    Click("Znajdź poprzedni");
    EXPECT_EQ(Selected(), std::pair(3, 5));
    Click("Znajdź następny");
    EXPECT_EQ(Selected(), std::pair(6, 8));
}

TEST_F(FindBarTest, EscapeClosesFromEachField) {
    Find("a");
    m_bar->Open(true);
    PressIn("Szukany tekst", Qt::Key_Escape);
    EXPECT_FALSE(m_bar->isVisible());
    m_bar->Open(true);
    PressIn("Zamień na", Qt::Key_Escape);
    EXPECT_FALSE(m_bar->isVisible());
    m_bar->Open(true);
    QTest::keyClick(&Named<QCheckBox>("Tylko całe słowa"), Qt::Key_Escape);
    EXPECT_FALSE(m_bar->isVisible());
}

TEST_F(FindBarTest, OptionsCount) {
    Find("ab AB abc a.b");
    m_bar->Open(false);
    Enter("AB");
    Named<QCheckBox>("Uwzględniaj wielkość liter").setChecked(true);
    m_bar->Find(true);
    EXPECT_EQ(Selected(), std::pair(3, 5));
    Enter("abc?");
    Named<QCheckBox>("Wyrażenie regularne").setChecked(true);
    m_bar->Find(true);
    EXPECT_EQ(Selected(), std::pair(6, 9));
    Named<QCheckBox>("Tylko całe słowa").setChecked(true);
    Enter("ab.?");
    m_bar->Find(true);
    EXPECT_EQ(Selected(), std::pair(0, 2));
}

TEST_F(FindBarTest, FailureIsToldInTheBarOrInABox) {
    Find("abc");
    EXPECT_FALSE(m_bar->Find(true));
    EXPECT_THAT(m_heard, ElementsAre("box Nie podano ciągu znaków do wyszukania"));
    m_bar->Open(false);
    PressIn("Szukany tekst", Qt::Key_Return);
    EXPECT_EQ(Failure(), "Nie podano ciągu znaków do wyszukania");
    Enter("λ%s");
    EXPECT_FALSE(m_bar->Find(true));
    EXPECT_EQ(Failure(), "Nie znaleziono ciągu znaków: λ%s");
    Enter("b");
    EXPECT_TRUE(m_bar->Find(true));
    EXPECT_EQ(Failure(), "");
    Named<QCheckBox>("Wyrażenie regularne").setChecked(true);
    Enter("(");
    EXPECT_FALSE(m_bar->Find(true));
    EXPECT_EQ(Failure(), "Błąd w wyrażeniu regularnym: missing closing parenthesis");
    EXPECT_EQ(m_heard.size(), 1u);
    m_bar->Close();
    m_memory = {{"xyz"}, {}};
    EXPECT_FALSE(m_bar->Find(false));
    EXPECT_EQ(m_heard.back(), "box Nie znaleziono ciągu znaków: xyz");
}

TEST_F(FindBarTest, LastTextIsLookedForWithoutTheBar) {
    Find("a b a");
    m_memory.texts = {"a", "b"};
    EXPECT_TRUE(m_bar->Find(true));
    EXPECT_TRUE(m_bar->Find(true));
    EXPECT_EQ(Selected(), std::pair(4, 5));
    EXPECT_TRUE(m_bar->Find(false));
    EXPECT_EQ(Selected(), std::pair(0, 1));
}

TEST_F(FindBarTest, RecentTextsAreKeptTheNewestFirst) {
    Find("abc");
    m_bar->Open(false);
    for (const char* text : {"a", "nic", "a", "b"}) {
        Enter(text);
        m_bar->Find(true);
    }
    EXPECT_EQ(m_memory.texts, QStringList({"b", "a", "nic"}));
    for (int n = 0; n < 20; ++n) m_memory.Remember(QString::number(n));
    EXPECT_EQ(m_memory.texts.size(), 10);
    EXPECT_EQ(m_memory.texts.front(), "19");
    m_bar->Open(false);
    EXPECT_EQ(Named<QComboBox>("Szukany tekst").count(), 10);
}

TEST_F(FindBarTest, OpensWithWhatIsSelected) {
    Find("abc\nd");
    m_editor->setSelection(0, 1, 0, 3);
    m_bar->Open(false);
    EXPECT_EQ(Named<QComboBox>("Szukany tekst").currentText(), "bc");
    m_editor->SelectAll();
    m_bar->Open(false);
    EXPECT_EQ(Named<QComboBox>("Szukany tekst").currentText(), "bc");
}

TEST_F(FindBarTest, OneIsReplacedAndTheNextFound) {
    Find("ab ab ab");
    m_bar->Open(false);
    EXPECT_FALSE(Named<QComboBox>("Zamień na").isVisible());
    m_bar->Open(true);
    EXPECT_TRUE(Named<QComboBox>("Zamień na").isVisible());
    Enter("ab");
    Named<QComboBox>("Zamień na").setCurrentText("ąą");
    Click("Zamień");
    EXPECT_EQ(Text(), "ab ab ab");
    EXPECT_EQ(Selected(), std::pair(0, 2));
    Click("Zamień");
    EXPECT_EQ(Text(), "ąą ab ab");
    EXPECT_EQ(Selected(), std::pair(5, 7));
    EXPECT_THAT(Undos(), ElementsAre("Zamiana tekstu"));
}

TEST_F(FindBarTest, AllAreReplacedAsOneAction) {
    Find("IF A THEN\nIF B THEN\nENDIF\n");
    m_bar->Open(true);
    Enter("if (.)");
    Named<QCheckBox>("Wyrażenie regularne").setChecked(true);
    Named<QComboBox>("Zamień na").setCurrentText("IF ż\\1");
    Click("Zamień wszystkie");
    EXPECT_EQ(Text(), "IF żA THEN\nIF żB THEN\nENDIF\n");
    EXPECT_EQ(Failure(), "Zamieniono: 2");
    EXPECT_THAT(Undos(), ElementsAre("Zamiana tekstu"));
    ExpectListsAgree();
    Enter("zzz");
    Click("Zamień wszystkie");
    EXPECT_EQ(Failure(), "Nie znaleziono ciągu znaków: zzz");
}

TEST_F(FindBarTest, NothingIsReplacedInAScriptThatIsReadOnly) {
    Find("a a");
    m_document->SetReadOnly(true);
    m_editor->ApplyView();
    m_bar->Open(true);
    Enter("a");
    Click("Zamień wszystkie");
    QCoreApplication::processEvents();
    EXPECT_EQ(Text(), "a a");
    EXPECT_THAT(m_heard, ElementsAre("message Edycja dokumentu nie jest możliwa!"));
}

}  // namespace
}  // namespace kalvex::window
