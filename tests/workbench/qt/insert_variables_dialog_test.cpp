#include "workbench/qt/InsertVariablesDialog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QScrollBar>
#include <QTreeView>
#include <QtTest>

#include "named_widget.h"
#include "support/hand_server.h"
#include "text/CodePage.h"
#include "workbench/qt/Texts.h"

namespace kalvex::window {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class HandSourceList final : public vantrel::CSourceList {
  public:
    explicit HandSourceList(support::InProcessNetwork& network) : m_network(network) {}

  protected:
    std::unique_ptr<vantrel::CClientConnection> CreateConnection(std::string_view name) override {
        auto connection = std::make_unique<support::HeardConnection>();
        connection->Create(23, name, "Kalvex", m_network, nullptr);
        return connection;
    }

  private:
    support::InProcessNetwork& m_network;
};

vantrel::VariableDefinition Variable(const char* name, const char* path, const char* description) {
    return {name, {{"pa", text::FromUtf8(path)}, {"nd", text::FromUtf8(description)}}};
}

class InsertVariablesDialogTest : public testing::Test {
  protected:
    InsertVariablesDialogTest() {
        m_first.definitions = {
            Variable("Z1_CISN", "Sieć/Z1", "Ciśnienie"),
            Variable("Z1_TEMP", "Sieć/Z1", "Z1_TEMP"),
            Variable("BILANS", "", ""),
            Variable("Z2_CISN", "Sieć/Z2", "Ciśnienie"),
            Variable("P", "Inne", ""),
        };
        m_second.definitions = {Variable("C", "", "")};
        m_network.AddServer("srv", m_first);
        m_network.AddServer("drugi", m_second);
    }

    void Open() {
        m_dialog = new CInsertVarsDlg(
            {m_translator,
             m_variables,
             {"srv", "", "drugi", "nie"},
             m_memory,
             [this](std::string_view text) { m_shown.push_back(text::ToUtf8(text)); },
             [this](const std::vector<std::string>& lines) { m_inserted = lines; }},
            &m_parent);
        m_dialog->show();
    }
    void OpenOn(const char* source) {
        m_memory.source = source;
        Open();
    }
    template <class Kind>
    Kind& Named(const char* name) {
        return *NamedWidget<Kind>(*m_dialog, QString::fromUtf8(name));
    }
    QComboBox& Source() { return Named<QComboBox>("Źródło"); }
    QLineEdit& Filter() { return Named<QLineEdit>("Filtr"); }
    QTreeView& Tree() { return Named<QTreeView>("Zmienne"); }
    QPushButton& Insert() { return Named<QPushButton>("Wstaw"); }

    // Rows that can be seen, groups with "-" when they are open and "+" when not; a leaf with its
    // description behind a colon.
    std::vector<std::string> Rows() {
        std::vector<std::string> rows;
        for (QModelIndex index = Tree().model()->index(0, 0); index.isValid();
             index = Tree().indexBelow(index)) {
            std::string row;
            for (QModelIndex parent = index.parent(); parent.isValid(); parent = parent.parent()) {
                row += "  ";
            }
            if (index.model()->hasChildren(index)) row += Tree().isExpanded(index) ? "- " : "+ ";
            row += index.data().toString().toStdString();
            const std::string description =
                index.siblingAtColumn(1).data().toString().toStdString();
            rows.push_back(description.empty() ? row : row + ": " + description);
        }
        return rows;
    }
    void Select(const char* name, QItemSelectionModel::SelectionFlag how) {
        const QModelIndexList found = Tree().model()->match(
            Tree().model()->index(0, 0), Qt::DisplayRole, QString::fromUtf8(name), 1,
            Qt::MatchExactly | Qt::MatchRecursive);
        ASSERT_EQ(found.size(), 1) << name;
        Tree().selectionModel()->select(found.front(), how | QItemSelectionModel::Rows);
    }
    void PressInFilter(Qt::Key key) {
        Filter().setFocus();
        QTest::keyClick(&Filter(), key);
    }
    void Choose(const char* source) {
        const int place = Source().findText(source);
        Source().setCurrentIndex(place);
        emit Source().activated(place);
    }
    std::string State() {
        for (const QLabel* label : m_dialog->findChildren<QLabel*>()) {
            if (label->buddy() == nullptr) return label->text().toStdString();
        }
        return "none";
    }
    void Close() {
        m_dialog->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    platform::Translator m_translator;
    support::InProcessNetwork m_network;
    support::HandServer m_first;
    support::HandServer m_second;
    HandSourceList m_sources{m_network};
    workbench::SourceVariables m_variables{m_sources};
    InsertMemory m_memory;
    std::vector<std::string> m_shown;
    std::vector<std::string> m_inserted;
    QWidget m_parent;
    QPointer<CInsertVarsDlg> m_dialog;
};

const std::vector<std::string> kFirstRows = {"- Sieć", "  + Z1", "  + Z2", "BILANS", "+ Inne"};

TEST_F(InsertVariablesDialogTest, FirstOpeningHasNoSourceAndAsksNobody) {
    Open();
    EXPECT_EQ(m_dialog->windowTitle(), "Zmienne");
    EXPECT_FALSE(m_dialog->isModal());
    EXPECT_EQ(Source().currentIndex(), -1);
    ASSERT_EQ(Source().count(), 3);
    EXPECT_EQ(Source().itemText(0), "srv");
    EXPECT_EQ(Source().itemText(1), "drugi");
    EXPECT_EQ(m_dialog->focusWidget(), &Source());
    EXPECT_THAT(Rows(), IsEmpty());
    EXPECT_FALSE(Insert().isEnabled());
    EXPECT_TRUE(Insert().isDefault());
    EXPECT_THAT(m_first.heard, IsEmpty());
    EXPECT_THAT(m_shown, IsEmpty());
}

TEST_F(InsertVariablesDialogTest, WithoutASourceFilteringSaysSo) {
    Open();
    QTest::mouseClick(&Named<QPushButton>("Filtruj"), Qt::LeftButton);
    EXPECT_THAT(m_shown, ElementsAre("Nie podano nazwy serwera"));
    PressInFilter(Qt::Key_Return);
    EXPECT_EQ(m_shown.size(), 2u);
    EXPECT_TRUE(m_dialog->isVisible());
}

TEST_F(InsertVariablesDialogTest, SourceThatIsChosenIsLoadedAnew) {
    Open();
    Choose("srv");
    EXPECT_EQ(Rows(), kFirstRows);
    EXPECT_EQ(m_memory.source, "srv");
    EXPECT_EQ(State(), "");
    Choose("drugi");
    EXPECT_THAT(Rows(), ElementsAre("C"));
    m_first.definitions.pop_back();
    Choose("srv");
    EXPECT_THAT(Rows(), ElementsAre("- Sieć", "  + Z1", "  + Z2", "BILANS"));
    Choose("srv");
    EXPECT_EQ(m_first.heard.size(), 2u);
}

TEST_F(InsertVariablesDialogTest, SourceThatIsChosenIsLoadedThoughItIsKept) {
    m_variables.Ask("drugi", [](const vantrel::CObjInfoList*) {});
    OpenOn("drugi");
    EXPECT_EQ(m_second.heard.size(), 1u);
    Close();
    m_memory = {};
    Open();
    Choose("drugi");
    EXPECT_THAT(Rows(), ElementsAre("C"));
    EXPECT_EQ(m_second.heard.size(), 2u);
}

TEST_F(InsertVariablesDialogTest, FilterIsAppliedToWhatIsKeptAndKeepsTheFocus) {
    OpenOn("srv");
    EXPECT_EQ(Rows(), kFirstRows);
    Filter().setFocus();
    QTest::keyClicks(&Filter(), "z1_*");
    EXPECT_EQ(Rows(), kFirstRows);
    PressInFilter(Qt::Key_Return);
    EXPECT_THAT(Rows(), ElementsAre("- Sieć", "  + Z1"));
    EXPECT_EQ(m_dialog->focusWidget(), &Filter());
    EXPECT_TRUE(m_dialog->isVisible());
    Filter().setText(QString::fromUtf8("ciśnienie"));
    PressInFilter(Qt::Key_Enter);
    EXPECT_THAT(Rows(), ElementsAre("- Sieć", "  + Z1", "  + Z2"));
    Filter().setText("brak");
    QTest::mouseClick(&Named<QPushButton>("Filtruj"), Qt::LeftButton);
    EXPECT_THAT(Rows(), IsEmpty());
    EXPECT_FALSE(Insert().isEnabled());
    EXPECT_EQ(m_first.heard.size(), 1u);
}

TEST_F(InsertVariablesDialogTest, GroupsOpenByKeys) {
    OpenOn("srv");
    Tree().setCurrentIndex(Tree().model()->index(2, 0));
    QTest::keyClick(&Tree(), Qt::Key_Right);
    EXPECT_THAT(Rows(), ElementsAre("- Sieć", "  + Z1", "  + Z2", "BILANS", "- Inne", "  P"));
    Tree().setCurrentIndex(Tree().model()->index(0, 0));
    QTest::keyClick(&Tree(), Qt::Key_Asterisk);
    EXPECT_THAT(Rows(), ElementsAre("- Sieć", "  - Z1", "    Z1_CISN: Ciśnienie", "    Z1_TEMP",
                                    "  - Z2", "    Z2_CISN: Ciśnienie", "BILANS", "- Inne", "  P"));
}

TEST_F(InsertVariablesDialogTest, InsertIsEnabledBySelectionUntilTheTreeIsBuiltAnew) {
    OpenOn("srv");
    EXPECT_FALSE(Insert().isEnabled());
    Select("BILANS", QItemSelectionModel::Select);
    EXPECT_TRUE(Insert().isEnabled());
    Select("BILANS", QItemSelectionModel::Deselect);
    EXPECT_FALSE(Insert().isEnabled());
    Select("BILANS", QItemSelectionModel::Select);
    PressInFilter(Qt::Key_Return);
    EXPECT_FALSE(Insert().isEnabled());
}

TEST_F(InsertVariablesDialogTest, ChosenVariablesAreInsertedInTheOrderOfTheTree) {
    OpenOn("srv");
    for (const char* name : {"P", "Z1_TEMP", "BILANS", "Z1"}) {
        Select(name, QItemSelectionModel::Select);
    }
    QTest::mouseClick(&Insert(), Qt::LeftButton);
    EXPECT_THAT(m_inserted, ElementsAre("REMOTE Z1_TEMP srv@Z1_TEMP\r\n",
                                        "REMOTE BILANS srv@BILANS\r\n", "REMOTE P srv@P\r\n"));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(m_dialog.isNull());
}

TEST_F(InsertVariablesDialogTest, EnterInTheTreeInserts) {
    OpenOn("drugi");
    Tree().setFocus();
    Tree().setCurrentIndex(Tree().model()->index(0, 0));
    QTest::keyClick(&Tree(), Qt::Key_Return);
    EXPECT_THAT(m_inserted, ElementsAre("REMOTE C drugi@C\r\n"));
}

TEST_F(InsertVariablesDialogTest, GroupAloneInsertsNothing) {
    OpenOn("srv");
    Select("Inne", QItemSelectionModel::Select);
    QTest::mouseClick(&Insert(), Qt::LeftButton);
    EXPECT_THAT(m_inserted, IsEmpty());
    EXPECT_FALSE(m_dialog->isVisible());
}

TEST_F(InsertVariablesDialogTest, NextOpeningShowsTheTreeAsTheInsertionLeftIt) {
    for (int number = 0; number < 300; ++number) {
        m_first.definitions.push_back(Variable(("V" + std::to_string(number)).c_str(), "Inne", ""));
    }
    OpenOn("srv");
    Tree().collapse(Tree().model()->index(0, 0));
    Tree().expand(Tree().model()->index(2, 0));
    const std::vector<std::string> rows = Rows();
    ASSERT_EQ(rows.size(), 304u);
    Tree().verticalScrollBar()->setValue(120);
    const int position = Tree().verticalScrollBar()->value();
    ASSERT_GT(position, 0);
    Close();
    EXPECT_EQ(m_memory.position, -1);
    Open();
    EXPECT_EQ(Rows(), (std::vector<std::string>{"- Sieć", "  + Z1", "  + Z2", "BILANS", "+ Inne"}));
    Tree().collapse(Tree().model()->index(0, 0));
    Tree().expand(Tree().model()->index(2, 0));
    Tree().verticalScrollBar()->setValue(120);
    Select("BILANS", QItemSelectionModel::Select);
    m_dialog->accept();
    Open();
    EXPECT_EQ(Rows(), rows);
    ASSERT_TRUE(QTest::qWaitFor([&] { return Tree().verticalScrollBar()->value() == position; }));
    EXPECT_EQ(m_first.heard.size(), 1u);
}

TEST_F(InsertVariablesDialogTest, WhatIsRememberedIsOfNoOtherSource) {
    m_second.definitions.push_back(Variable("D", "G", ""));
    m_first.answersList = false;
    m_memory = {"srv", "", {}, 0};
    Open();
    Choose("drugi");
    EXPECT_THAT(Rows(), ElementsAre("C", "- G", "  D"));
}

TEST_F(InsertVariablesDialogTest, VeryDeepPathIsNoHindrance) {
    std::string deep;
    for (int level = 0; level < 30'000; ++level) deep += "g/";
    m_second.definitions.push_back(Variable("D", deep.c_str(), ""));
    OpenOn("drugi");
    EXPECT_THAT(Rows(), ElementsAre("C", "- g", "  + g"));
    Tree().setCurrentIndex(Tree().model()->index(0, 0));
    m_dialog->accept();
    EXPECT_THAT(m_inserted, ElementsAre("REMOTE C drugi@C\r\n"));
    EXPECT_THAT(m_memory.openGroups, ElementsAre("g/"));
    Open();
    EXPECT_THAT(Rows(), ElementsAre("C", "- g", "  + g"));
}

TEST_F(InsertVariablesDialogTest, SourceThatCannotBeReachedSaysSo) {
    Open();
    Choose("nie");
    EXPECT_THAT(Rows(), IsEmpty());
    EXPECT_EQ(State(), "Nie można wczytać zmiennych źródła nie");
}

TEST_F(InsertVariablesDialogTest, AnswerMayComeLaterAndWhatWasShownGoesAtOnce) {
    m_first.answersList = false;
    OpenOn("drugi");
    EXPECT_THAT(Rows(), ElementsAre("C"));
    Choose("srv");
    EXPECT_THAT(Rows(), IsEmpty());
    EXPECT_EQ(State(), "Wczytywanie zmiennych źródła srv...");
    Filter().setText("p");
    PressInFilter(Qt::Key_Return);
    EXPECT_EQ(m_first.heard.size(), 1u);
    m_first.listAnswer(m_first.definitions);
    EXPECT_THAT(Rows(), ElementsAre("- Inne", "  P"));
    EXPECT_EQ(State(), "");
    Filter().clear();
    PressInFilter(Qt::Key_Return);
    EXPECT_EQ(Rows(), kFirstRows);
}

TEST_F(InsertVariablesDialogTest, AnswerForASourceThatWasLeftIsNotShown) {
    m_first.answersList = false;
    OpenOn("srv");
    Choose("drugi");
    m_first.listAnswer(m_first.definitions);
    EXPECT_THAT(Rows(), ElementsAre("C"));
}

TEST_F(InsertVariablesDialogTest, AnswerMayComeWhenTheDialogHasGone) {
    m_first.answersList = false;
    OpenOn("srv");
    Close();
    ASSERT_TRUE(m_dialog.isNull());
    m_first.listAnswer(m_first.definitions);
    EXPECT_EQ(m_variables.GetSource(), "srv");
}

TEST_F(InsertVariablesDialogTest, ReloadThatIsMarkedElsewhereIsKept) {
    OpenOn("srv");
    m_variables.MarkReload();
    PressInFilter(Qt::Key_Return);
    EXPECT_EQ(m_first.heard.size(), 2u);
    EXPECT_FALSE(m_variables.IsReloadMarked());
}

}  // namespace
}  // namespace kalvex::window
