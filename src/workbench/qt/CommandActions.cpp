#include "workbench/qt/CommandActions.h"

#include <QKeySequence>
#include <QMenuBar>
#include <algorithm>
#include <iterator>

#include "workbench/qt/Icons.h"
#include "workbench/qt/Texts.h"

namespace kalvex::window {

using workbench::Command;
using workbench::CommandRow;

namespace {

struct PictureRow {
    Command command;
    IconId icon;
};

constexpr PictureRow kPictures[] = {
    {Command::New, IconId::New},
    {Command::Open, IconId::Open},
    {Command::Save, IconId::Save},
    {Command::SaveAs, IconId::SaveAs},
    {Command::Print, IconId::Print},
    {Command::PrintPreview, IconId::PrintPreview},
    {Command::Undo, IconId::Undo},
    {Command::Redo, IconId::Redo},
    {Command::Cut, IconId::Cut},
    {Command::Copy, IconId::Copy},
    {Command::Paste, IconId::Paste},
    {Command::Delete, IconId::Delete},
    {Command::Find, IconId::Find},
    {Command::FindNext, IconId::FindNext},
    {Command::FindPrevious, IconId::FindPrevious},
    {Command::Replace, IconId::Replace},
    {Command::GoToLine, IconId::GoToLine},
    {Command::ToggleBookmark, IconId::ToggleBookmark},
    {Command::NextBookmark, IconId::NextBookmark},
    {Command::PreviousBookmark, IconId::PreviousBookmark},
    {Command::DeleteBookmarks, IconId::DeleteBookmarks},
    {Command::Indent, IconId::Indent},
    {Command::Unindent, IconId::Unindent},
    {Command::KeywordList, IconId::KeywordList},
    {Command::OutlineToggle, IconId::OutlineExpand},
    {Command::OutlineCollapse, IconId::OutlineCollapse},
    {Command::Variables, IconId::Variables},
    {Command::LogWindow, IconId::Log},
    {Command::Font, IconId::Font},
    {Command::ZoomIn, IconId::ZoomIn},
    {Command::ZoomOut, IconId::ZoomOut},
    {Command::Start, IconId::Start},
    {Command::Stop, IconId::Pause},
    {Command::Step, IconId::Step},
    {Command::Reset, IconId::Reset},
    {Command::ToggleBreakpoint, IconId::ToggleBreakpoint},
    {Command::DeleteBreakpoints, IconId::DeleteBreakpoints},
    {Command::InsertVariables, IconId::InsertVariables},
    {Command::ForgetVariables, IconId::ForgetVariables},
    {Command::TakeSession, IconId::TakeSession},
    {Command::LevelErrors, IconId::Log1},
    {Command::LevelEvents, IconId::Log2},
    {Command::LevelTransmission, IconId::Log3},
    {Command::ClearLog, IconId::ClearLog},
    {Command::AutoScroll, IconId::AutoScroll},
    {Command::Configuration, IconId::Configuration},
    {Command::Sources, IconId::Sources},
    {Command::RenameVariables, IconId::RenameVariables},
    {Command::LogIn, IconId::LogIn},
    {Command::LogOut, IconId::LogOut},
    {Command::Help, IconId::Help},
};

const PictureRow* FindPicture(Command command) {
    const auto row = std::ranges::find(kPictures, command, &PictureRow::command);
    return row == std::end(kPictures) ? nullptr : row;
}

// What stands in the table for a part of a menu that others fill.
bool IsPlace(const CommandRow& row) {
    return row.command == Command::Toolbars || row.command == Command::WindowList;
}

std::string ParentOf(std::string_view menu) {
    const std::size_t slash = menu.rfind('/');
    return std::string(slash == std::string_view::npos ? "" : menu.substr(0, slash));
}

}  // namespace

QString StatusTipOf(const CommandRow& row, const platform::Translator& translator) {
    return Translated(translator, row.tip).section('\n', 0, 0);
}

QString ButtonTipOf(const CommandRow& row, const platform::Translator& translator) {
    return Translated(translator, row.tip).section('\n', 1, 1);
}

CommandActions::CommandActions(QMainWindow& window, const platform::Translator& translator, Run run)
    : m_window(window), m_translator(translator), m_run(std::move(run)) {
    AddMenus();
    for (const CommandRow& row : workbench::Commands()) AddRow(row);
}

// A menu within another comes where its first entry stands in the table.
void CommandActions::AddMenus() {
    for (const CommandRow& row : workbench::Commands()) {
        if (!ParentOf(row.menu).empty() || m_menus.contains(row.menu)) continue;
        for (const workbench::MenuRow& menu : workbench::Menus()) {
            if (menu.menu != row.menu) continue;
            m_menus.emplace(row.menu,
                            m_window.menuBar()->addMenu(Translated(m_translator, menu.text)));
        }
    }
}

void CommandActions::AddRow(const CommandRow& row) {
    const std::string parent = ParentOf(row.menu);
    if (!m_menus.contains(row.menu)) {
        for (const workbench::MenuRow& menu : workbench::Menus()) {
            if (menu.menu != row.menu) continue;
            m_menus.emplace(row.menu,
                            m_menus.at(parent)->addMenu(Translated(m_translator, menu.text)));
        }
    }
    QMenu& menu = *m_menus.find(row.menu)->second;
    if (row.command == Command::None) {
        menu.addSeparator();
        return;
    }
    if (IsPlace(row)) {
        m_actions.emplace(row.command, menu.addSeparator());
        return;
    }
    if (row.command == Command::RecentFiles) {
        QMenu* const files = menu.addMenu(Translated(m_translator, row.text));
        m_menus.emplace("Plik/Ostatnie", files);
        m_actions.emplace(row.command, files->menuAction());
        files->menuAction()->setStatusTip(StatusTipOf(row, m_translator));
        return;
    }
    QAction* const action = menu.addAction(Translated(m_translator, row.text));
    action->setObjectName(QStringLiteral("command%1").arg(workbench::NumberOf(row.command)));
    action->setShortcuts(QKeySequence::listFromString(
        QString::fromLatin1(row.keys).replace(QStringLiteral(", "), QStringLiteral("; "))));
    action->setStatusTip(StatusTipOf(row, m_translator));
    action->setToolTip(ButtonTipOf(row, m_translator));
    if (const PictureRow* picture = FindPicture(row.command)) {
        action->setIcon(MakeIcon(picture->icon));
    }
    action->setCheckable(row.checked);
    action->setMenuRole(QAction::NoRole);
    const Command command = row.command;
    QObject::connect(action, &QAction::triggered, &m_window, [this, command] { m_run(command); });
    m_actions.emplace(command, action);
}

QToolBar* CommandActions::AddToolBar(const char* objectName, const char* name,
                                     const std::vector<Command>& commands) {
    QToolBar* const bar = m_window.addToolBar(Translated(m_translator, name));
    bar->setObjectName(QLatin1String(objectName));
    bar->setIconSize({16, 16});
    for (const Command command : commands) {
        if (command == Command::None) {
            bar->addSeparator();
        } else {
            bar->addAction(Action(command));
        }
    }
    return bar;
}

void CommandActions::Update(const workbench::CommandState& state) {
    for (const CommandRow& row : workbench::Commands()) {
        if (row.command == Command::None || IsPlace(row)) continue;
        Action(row.command)->setEnabled(row.enabled(state));
    }
}

void CommandActions::Check(Command command, bool checked) {
    Action(command)->setChecked(checked);
}

}  // namespace kalvex::window
