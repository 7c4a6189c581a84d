// The commands of the window: menus, keys, tips, and when each of them can be given. Everything in
// the window that offers a command is made from these rows. Texts are UTF-8 and Polish, to be
// translated. Any thread.
#pragma once

#include <span>
#include <string_view>

namespace kalvex::workbench {

// Numbers below 1000 have no meaning beyond this table.
enum class Command : int {
    None = 0,
    // Plik
    New,
    Close,
    Save,
    SaveAs,
    Print,
    PrintPreview,
    PrintSetup,
    RecentFiles,
    Quit,
    History,
    // Edycja
    Cut,
    Copy,
    Paste,
    Delete,
    SelectAll,
    ToggleComment,
    MoveLinesUp,
    MoveLinesDown,
    // Widok
    ZoomIn,
    ZoomOut,
    ZoomReset,
    SchemeLight,
    SchemeDark,
    SchemeDesktop,
    StatusBar,
    Toolbars,
    Standing,
    ValuesBeside,
    // Skrypt
    ScheduleProof,
    Trend,
    // Narzędzia, Okno, Pomoc
    LogIn,
    LogOut,
    NextWindow,
    PreviousWindow,
    Cascade,
    Tile,
    Maximise,
    Minimise,
    Restore,
    WindowList,
    Help,
    Parameters,
    About,

    Start = 44000,
    Stop,
    Step,
    Reset,
    Variables,
    LogWindow,
    Font,
    ClearLog,
    Sources = 44011,
    Configuration = 44014,
    Find = 44018,
    FindNext,
    RenameVariables = 44023,
    BackToScript,
    InsertVariables,
    ForgetVariables,
    ToggleBreakpoint,
    DeleteBreakpoints,
    ToggleBookmark,
    NextBookmark,
    PreviousBookmark,
    OutlineCreate,
    OutlineRemove,
    OutlineToggle,
    OutlineToggleAll,
    OutlineCollapse,
    OutlineHide,
    OutlineShow,
    OutlineAutomatic,
    LineNumbers,
    GoToLine,
    DeleteBookmarks,
    Indent,
    Unindent,
    KeywordList,
    FindPrevious,
    TakeSession = 44048,
    AutoScroll,
    LevelTransmission,
    LevelErrors,
    LevelEvents,
    Open = 57601,
    Replace = 57641,
    Undo = 57643,
    Redo = 57644,
};

// What a command needs in order to be given; each flag of the state that it names must be set.
struct CommandState {
    bool closeLevel = false;          // the user may close the program
    bool configurationRight = false;  // of the active user
    bool controlRight = false;
    bool level100 = false;
    bool loggedIn = false;
    bool consoleClient = false;

    bool script = false;  // there is an active one
    bool path = false;    // it has a file
    bool held = false;    // its session is here
    bool running = false;
    bool paused = false;
    bool minimised = false;
    bool readOnly = false;
    bool hasVariablesWindow = false;
    bool hasBreakpoints = false;
    bool editor = false;     // its editor is the active window
    bool selection = false;  // and has one
    bool canUndo = false;
    bool canRedo = false;
    bool clipboard = false;        // holds a text
    bool canComplete = false;      // the list of words has something to offer
    bool variablesActive = false;  // its variables window is the active window
    bool logActive = false;        // the log is
    bool window = false;           // any window is
    bool variablesKept = false;    // the list of a source is not to be loaded anew
    bool scheduleLine = false;     // the caret's line has a schedule
    bool trendable = false;        // there is a variable to draw
};

using CommandRule = bool (*)(const CommandState& state);

struct CommandRow {
    Command command;
    std::string_view menu;  // with "/" before each further level
    const char* text;       // with "&" before its letter
    const char* keys;       // portable, ", " between several; empty: none
    const char* tip;        // a line for the status bar and one for the button
    CommandRule enabled;
    bool checked = false;  // has a check mark
};

// In the order of the menus; a row without a command is a line between entries.
std::span<const CommandRow> Commands();
// The row of a command that the menus have.
const CommandRow& RowOf(Command command);
// The letters of the menus, in their order: "&Plik" and so on, and those of the menus in them.
struct MenuRow {
    std::string_view menu;
    const char* text;
};
std::span<const MenuRow> Menus();

inline int NumberOf(Command command) {
    return static_cast<int>(command);
}

}  // namespace kalvex::workbench
