// The commands of the table in the window's menus.
#include <gmock/gmock.h>

#include <QMenuBar>
#include <QToolBar>
#include <QToolButton>
#include <algorithm>
#include <string>
#include <string_view>

#include "workbench/qt/Texts.h"
#include "workbench/qt/window_world.h"

namespace kalvex::window {
namespace {

using testing::ElementsAre;
using workbench::Command;

// Entries that others fill.
bool IsFilled(Command command) {
    return command == Command::None || command == Command::RecentFiles ||
           command == Command::Toolbars || command == Command::WindowList;
}

class WindowCommandsTest : public WindowTest {
  protected:
    static QString Plain(QString text) { return text.remove('&'); }
    // The entries of a menu and of those in it, "Menu/Menu/entry".
    void Gather(const QMenu& menu, const std::string& path,
                std::map<QAction*, std::string>& found) {
        for (QAction* const action : menu.actions()) {
            if (action->menu() != nullptr) {
                Gather(*action->menu(), path + "/" + Plain(action->text()).toStdString(), found);
            } else {
                found[action] = path;
            }
        }
    }
};

// The titles of a menu and of those that it is in, as a person reads them.
std::string TitlesOf(std::string_view menu) {
    const std::size_t slash = menu.rfind('/');
    const auto row = std::ranges::find(workbench::Menus(), menu, &workbench::MenuRow::menu);
    const std::string title = QString(row->text).remove('&').toStdString();
    return slash == std::string_view::npos ? title : TitlesOf(menu.substr(0, slash)) + '/' + title;
}

TEST_F(WindowCommandsTest, EachRowIsAnEntryOfItsMenuWithTipsAndKeys) {
    ASSERT_TRUE(Start());
    std::map<QAction*, std::string> entries;
    for (const QAction* const action : Window().menuBar()->actions()) {
        Gather(*action->menu(), Plain(action->text()).toStdString(), entries);
    }
    std::size_t rows = 0;
    for (const workbench::CommandRow& row : workbench::Commands()) {
        if (IsFilled(row.command)) continue;
        ++rows;
        QAction& action = ActionOf(row.command);
        ASSERT_TRUE(entries.contains(&action)) << row.text;
        EXPECT_EQ(entries.at(&action), TitlesOf(row.menu));
        EXPECT_EQ(action.text(), row.text);
        const QStringList tips = QString(row.tip).split('\n');
        EXPECT_EQ(action.statusTip(), tips[0]);
        EXPECT_EQ(action.toolTip(), tips[1]);
        QStringList keys;
        for (const QKeySequence& key : action.shortcuts()) {
            keys.append(key.toString(QKeySequence::PortableText));
        }
        EXPECT_EQ(keys.join(", "), row.keys);
        EXPECT_EQ(action.isCheckable(), row.checked) << row.text;
    }
    EXPECT_GT(rows, 80u);
}

TEST_F(WindowCommandsTest, EachRowHasAHandler) {
    for (const workbench::CommandRow& row : workbench::Commands()) {
        EXPECT_EQ(KalvexWindow::HasHandler(row.command), !IsFilled(row.command)) << row.text;
    }
}

TEST_F(WindowCommandsTest, ButtonsOfTheBarsAreNamedAndPictured) {
    ASSERT_TRUE(Start());
    std::vector<std::string> bars;
    for (const QToolBar* bar : Window().findChildren<QToolBar*>(Qt::FindDirectChildrenOnly)) {
        bars.push_back(bar->windowTitle().toStdString());
        for (QAction* const action : bar->actions()) {
            auto* const button = qobject_cast<QToolButton*>(bar->widgetForAction(action));
            if (button == nullptr) continue;
            EXPECT_FALSE(button->icon().isNull()) << action->text().toStdString();
            EXPECT_FALSE(button->toolTip().isEmpty()) << action->text().toStdString();
            EXPECT_FALSE(button->text().isEmpty() && button->accessibleName().isEmpty());
        }
    }
    EXPECT_THAT(bars, testing::UnorderedElementsAre("Pasek standardowy", "Pasek skryptu",
                                                    "Pasek edycji", "Pasek rejestracji"));
}

TEST_F(WindowCommandsTest, ActionGivesTheCommand) {
    ASSERT_TRUE(Start());
    ActionOf(Command::New).trigger();
    EXPECT_EQ(Count(), 1u);
}

TEST_F(WindowCommandsTest, WithoutAUserHardlyAnythingIsOffered) {
    m_isTrusted = false;
    ASSERT_TRUE(Start({"/NOLOGIN"}));
    for (const Command command :
         {Command::New, Command::Open, Command::Quit, Command::Configuration, Command::Sources}) {
        EXPECT_FALSE(CanRun(command)) << NumberOf(command);
        Run(command);
    }
    EXPECT_EQ(Count(), 0u);
    EXPECT_TRUE(CanRun(Command::LogIn));
    EXPECT_FALSE(CanRun(Command::LogOut));
    Window().close();
    EXPECT_TRUE(Window().isVisible());
    EXPECT_EQ(StatusOf("statusUser"), "");
}

TEST_F(WindowCommandsTest, ViewsAreToggledAndKept) {
    PutScript("a.kx", "a");
    ASSERT_TRUE(Start());
    const engine::CKalvexDoc& script = Open("a.kx");
    Run(Command::LineNumbers);
    EXPECT_FALSE(EditorOf(script).HasLineNumbers());
    EXPECT_FALSE(ActionOf(Command::LineNumbers).isChecked());
    Run(Command::StatusBar);
    EXPECT_FALSE(Child<QWidget>(Window(), "statusCaret").isVisible());
    Run(Command::SchemeDark);
    EXPECT_TRUE(EditorOf(script).IsDark());
    EXPECT_LT(QApplication::palette().color(QPalette::Window).lightness(), 100);
    EXPECT_TRUE(ActionOf(Command::SchemeDark).isChecked());
    EXPECT_FALSE(ActionOf(Command::SchemeDesktop).isChecked());
    Run(Command::ZoomIn);
    const long zoom = EditorOf(script).SendScintilla(QsciScintillaBase::SCI_GETZOOM);
    EXPECT_GT(zoom, 0);
    End();
    ASSERT_TRUE(Start());
    const engine::CKalvexDoc& again = Open("a.kx");
    EXPECT_FALSE(EditorOf(again).HasLineNumbers());
    EXPECT_FALSE(Child<QWidget>(Window(), "statusCaret").isVisible());
    EXPECT_TRUE(EditorOf(again).IsDark());
    EXPECT_EQ(EditorOf(again).SendScintilla(QsciScintillaBase::SCI_GETZOOM), zoom);
    Run(Command::SchemeLight);
    EXPECT_FALSE(EditorOf(again).IsDark());
    EXPECT_GT(QApplication::palette().color(QPalette::Window).lightness(), 200);
}

TEST_F(WindowCommandsTest, RecentFilesAreOfferedAsTheyAreOpened) {
    PutScript("a.kx", "");
    PutScript("b.kx", "");
    ASSERT_TRUE(Start());
    const auto entries = [this] {
        std::vector<std::string> texts;
        for (const QMenu* menu : Window().menuBar()->findChildren<QMenu*>()) {
            if (Plain(menu->title()) != "Ostatnie pliki") continue;
            for (const QAction* action : menu->actions())
                texts.push_back(action->text().toStdString());
        }
        return texts;
    };
    Open("a.kx");
    Open("b.kx");
    const std::vector<std::string> both{m_folder.Path("b.kx"), m_folder.Path("a.kx")};
    EXPECT_TRUE(Until([&] { return entries() == both; }));
    End();
    ASSERT_EQ(::unlink(m_folder.Path("b.kx").c_str()), 0);
    ASSERT_TRUE(Start());
    EXPECT_EQ(entries(), both);
    for (const QMenu* menu : Window().menuBar()->findChildren<QMenu*>()) {
        if (Plain(menu->title()) == "Ostatnie pliki") menu->actions().front()->trigger();
    }
    EXPECT_TRUE(Until([&] { return entries().size() == 1; }));
    EXPECT_THAT(Boxes(), ElementsAre("Nie można otworzyć pliku " + m_folder.Path("b.kx") +
                                     " (No such file or directory) | OK"));
    EXPECT_THAT(entries(), ElementsAre(m_folder.Path("a.kx")));
}

TEST_F(WindowCommandsTest, WithoutAPanelNothingIsHidden) {
    ASSERT_TRUE(Start());
    ASSERT_FALSE(TrayIcon::IsPossible());
    ASSERT_TRUE(App().Configuration().trayIcon);
    Window().showMinimized();
    Settle();
    EXPECT_TRUE(Window().isVisible());
    EXPECT_TRUE(Window().isMinimized());
}

}  // namespace
}  // namespace kalvex::window
