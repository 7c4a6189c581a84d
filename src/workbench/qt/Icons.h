// The pictures of the window, drawn as SVG in the program, so sharp at any size. Strokes without a
// colour of their own take that of the text, and so follow the scheme. Main thread.
#pragma once

#include <QByteArray>
#include <QColor>
#include <QIcon>
#include <span>

namespace kalvex::window {

enum class IconId {
    Program,
    ProgramError,
    // lines of the log, by level
    Log0,
    Log1,
    Log2,
    Log3,
    // beside the lines of a script
    Breakpoint,
    CurrentLine,
    Bookmark,
    // commands
    New,
    Open,
    Save,
    SaveAs,
    Print,
    PrintPreview,
    Undo,
    Redo,
    Cut,
    Copy,
    Paste,
    Delete,
    Find,
    FindNext,
    FindPrevious,
    Replace,
    GoToLine,
    ToggleBookmark,
    NextBookmark,
    PreviousBookmark,
    DeleteBookmarks,
    Indent,
    Unindent,
    KeywordList,
    OutlineExpand,
    OutlineCollapse,
    Variables,
    Log,
    Font,
    ZoomIn,
    ZoomOut,
    Start,
    Pause,
    Step,
    Reset,
    ToggleBreakpoint,
    DeleteBreakpoints,
    InsertVariables,
    ForgetVariables,
    TakeSession,
    ClearLog,
    AutoScroll,
    Configuration,
    Sources,
    RenameVariables,
    LogIn,
    LogOut,
    Help,
};

struct IconRow {
    IconId id;
    const char* shapes;  // on a square of 16; "@" stands for the colour of the text
};

std::span<const IconRow> IconTable();

// The whole drawing with that colour for the text.
QByteArray SvgOf(IconId id, const QColor& text);

QIcon MakeIcon(IconId id);
// Of a line of the log; a level that has none looks like the highest.
QIcon LogIcon(int level);
QIcon ProgramIcon(bool error);

}  // namespace kalvex::window
