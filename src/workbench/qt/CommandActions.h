// The commands as entries of menus and buttons of tool bars, made from the table. Main thread.
#pragma once

#include <QAction>
#include <QMainWindow>
#include <QMenu>
#include <QToolBar>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Translator.h"
#include "workbench/model/CommandTable.h"

namespace kalvex::window {

class CommandActions {
  public:
    using Run = std::function<void(workbench::Command)>;

    // Fills the menu bar; the actions live as long as the window. `run` is told of each command
    // that a person gives.
    CommandActions(QMainWindow& window, const platform::Translator& translator, Run run);

    QAction* Action(workbench::Command command) const { return m_actions.at(command); }
    QMenu& Menu(std::string_view menu) const { return *m_menus.at(std::string(menu)); }
    // A tool bar with these commands, None for a line between them; `name` is Polish.
    QToolBar* AddToolBar(const char* objectName, const char* name,
                         const std::vector<workbench::Command>& commands);

    // Every entry can be chosen or not, by its rule.
    void Update(const workbench::CommandState& state);
    void Check(workbench::Command command, bool checked);
    bool IsChecked(workbench::Command command) const { return Action(command)->isChecked(); }

  private:
    void AddMenus();
    void AddRow(const workbench::CommandRow& row);

    QMainWindow& m_window;
    const platform::Translator& m_translator;
    const Run m_run;
    std::map<std::string, QMenu*, std::less<>> m_menus;
    std::map<workbench::Command, QAction*> m_actions;
};

// The lines of a command's tip, translated: for the status bar, and for a button.
QString StatusTipOf(const workbench::CommandRow& row, const platform::Translator& translator);
QString ButtonTipOf(const workbench::CommandRow& row, const platform::Translator& translator);

}  // namespace kalvex::window
