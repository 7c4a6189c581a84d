// The drawings.
#include "workbench/qt/Icons.h"

namespace kalvex::window {

namespace {

#define KALVEX_LINES(paths) \
    R"(<g fill="none" stroke="@" stroke-width="1.4" stroke-linecap="round">)" paths "</g>"
#define KALVEX_SCRIPT R"(<path d="M3 1.5h6.5l3.5 3.5v9.5h-10z M9.5 1.5v3.5h3.5"/>)"
#define KALVEX_FLAG                                                \
    R"(<path d="M3.5 1v14" stroke="#5A6A8A" stroke-width="1.4"/>)" \
    R"(<path d="M4 2h9l-2.5 3 2.5 3h-9z" fill="#2F6FD0"/>)"
#define KALVEX_DISC \
    R"(<circle cx="8" cy="8" r="5.5" fill="#7F0000" stroke="#D05050" stroke-width="0.8"/>)"
#define KALVEX_GLASS R"(<circle cx="6.5" cy="6.5" r="4.3"/><path d="M9.8 9.8l4.7 4.7"/>)"
#define KALVEX_PROGRAM                                                    \
    R"(<rect x="1" y="1" width="14" height="14" rx="3" fill="#1F5F8B"/>)" \
    R"(<path d="M4.5 4v8 M10.5 4l-5 4 5 4" fill="none" stroke="#FFFFFF" stroke-width="1.9"/>)"

constexpr IconRow kRows[] = {
    {IconId::Program, KALVEX_PROGRAM},
    {IconId::ProgramError, KALVEX_PROGRAM
     R"(<circle cx="11.5" cy="11.5" r="4.3" fill="#D02020" stroke="#FFFFFF" stroke-width="0.8"/>)"
     R"(<path d="M11.5 9v3 M11.5 13.2v0.9" stroke="#FFFFFF" stroke-width="1.3"/>)"},

    {IconId::Log0, R"(<circle cx="8" cy="8" r="3.2" fill="#8A8A8A"/>)"},
    {IconId::Log1,
     R"(<path d="M4 4l8 8 M12 4l-8 8" stroke="#D83030" stroke-width="2.4" stroke-linecap="round"/>)"},
    {IconId::Log2, R"(<circle cx="8" cy="8" r="6.5" fill="#2F6FD0"/>)"
                   R"(<path d="M8 7v4.6 M8 4.2v1.4" stroke="#FFFFFF" stroke-width="1.9"/>)"},
    {IconId::Log3, R"(<path d="M1.5 6.2h6.5v-3.7l6.5 5.5-6.5 5.5v-3.7h-6.5z" fill="#2E9E3E"/>)"},

    {IconId::Breakpoint, KALVEX_DISC},
    {IconId::CurrentLine,
     R"(<path d="M1.5 6h6.5v-3.5l6.5 5.5-6.5 5.5v-3.5h-6.5z" fill="#FFD800" stroke="#7F0000")"
     R"( stroke-width="1.2" stroke-linejoin="round"/>)"},
    {IconId::Bookmark, KALVEX_FLAG},

    {IconId::New, KALVEX_LINES(KALVEX_SCRIPT R"(<path d="M8 7.5v5 M5.5 10h5"/>)")},
    {IconId::Open,
     R"(<path d="M1.5 13.5v-10h4.5l1.5 1.5h6v2.5" fill="none" stroke="#C08A1E" stroke-width="1.4"/>)"
     R"(<path d="M1.5 13.5l2.5-6h11l-2.5 6z" fill="#E0B040"/>)"},
    {IconId::Save, R"(<path d="M1.5 1.5h10.5l2.5 2.5v10.5h-13z" fill="#4A7ABF"/>)"
                   R"(<path d="M4 1.5h6v4h-6z M3.5 9h9v5.5h-9z" fill="#FFFFFF"/>)"},
    {IconId::SaveAs,
     R"(<path d="M1.5 1.5h10.5l2.5 2.5v10.5h-13z" fill="#4A7ABF"/>)"
     R"(<path d="M4 1.5h6v4h-6z" fill="#FFFFFF"/><path d="M7 14l1-3 5-5 2 2-5 5z" fill="#E0B040"/>)"},
    {IconId::Print,
     KALVEX_LINES(R"(<path d="M4 6v-4.5h8v4.5 M4 12h-2.5v-6h13v6h-2.5 M4 9.5h8v5h-8z"/>)")},
    {IconId::PrintPreview,
     KALVEX_LINES(R"(<path d="M8 14.5h-5v-13h6.5l3.5 3.5v2"/><circle cx="10.5" cy="10.5" r="2.5"/>)"
                  R"(<path d="M12.4 12.4l2.3 2.3"/>)")},
    {IconId::Undo,
     KALVEX_LINES(R"(<path d="M5.5 2.5l-3.5 3.5 3.5 3.5 M2 6h7.5a4 4 0 0 1 0 8h-4"/>)")},
    {IconId::Redo,
     KALVEX_LINES(R"(<path d="M10.5 2.5l3.5 3.5-3.5 3.5 M14 6h-7.5a4 4 0 0 0 0 8h4"/>)")},
    {IconId::Cut,
     KALVEX_LINES(R"(<circle cx="4" cy="12" r="2.2"/><circle cx="12" cy="12" r="2.2"/>)"
                  R"(<path d="M5.3 10.2l5.7-8.7 M10.7 10.2l-5.7-8.7"/>)")},
    {IconId::Copy, KALVEX_LINES(R"(<path d="M1.5 1.5h8v9h-8z M6.5 10.5v4h8v-9h-5"/>)")},
    {IconId::Paste,
     KALVEX_LINES(R"(<path d="M5 2.5h-2.5v12h11v-12h-2.5 M5 1.5h6v2.5h-6z M5 8h6 M5 11h6"/>)")},
    {IconId::Delete,
     R"(<path d="M3.5 3.5l9 9 M12.5 3.5l-9 9" stroke="#D83030" stroke-width="2"/>)"},
    {IconId::Find, KALVEX_LINES(KALVEX_GLASS)},
    {IconId::FindNext, KALVEX_LINES(KALVEX_GLASS R"(<path d="M10.5 3.5h4 M12.5 1.5l2 2-2 2"/>)")},
    {IconId::FindPrevious, KALVEX_LINES(KALVEX_GLASS R"(<path d="M15 3.5h-4 M13 1.5l-2 2 2 2"/>)")},
    {IconId::Replace,
     KALVEX_LINES(R"(<path d="M1.5 4.5h11 M10 1.5l3 3-3 3 M14.5 11.5h-11 M6 8.5l-3 3 3 3"/>)")},
    {IconId::GoToLine,
     KALVEX_LINES(
         R"(<path d="M7 2.5h7.5 M7 13.5h7.5 M9 8h5.5 M1.5 8h5 M4.5 5.5l2.5 2.5-2.5 2.5"/>)")},
    {IconId::ToggleBookmark, KALVEX_FLAG},
    {IconId::NextBookmark,
     KALVEX_FLAG KALVEX_LINES(R"(<path d="M10.5 9.5v5 M8.5 12.5l2 2 2-2"/>)")},
    {IconId::PreviousBookmark,
     KALVEX_FLAG KALVEX_LINES(R"(<path d="M10.5 14.5v-5 M8.5 11.5l2-2 2 2"/>)")},
    {IconId::DeleteBookmarks,
     KALVEX_FLAG R"(<path d="M8.5 9.5l5 5 M13.5 9.5l-5 5" stroke="#D83030" stroke-width="1.6"/>)"},
    {IconId::Indent,
     KALVEX_LINES(
         R"(<path d="M1.5 2.5h13 M7.5 6.2h7 M7.5 9.8h7 M1.5 13.5h13 M1.5 6l2.5 2-2.5 2"/>)")},
    {IconId::Unindent,
     KALVEX_LINES(
         R"(<path d="M1.5 2.5h13 M7.5 6.2h7 M7.5 9.8h7 M1.5 13.5h13 M4 6l-2.5 2 2.5 2"/>)")},
    {IconId::KeywordList,
     KALVEX_LINES(R"(<path d="M1.5 1.5h13v13h-13z M4 5h8 M4 8h5 M4 11h6.5"/>)")},
    {IconId::OutlineExpand, KALVEX_LINES(R"(<path d="M2.5 2.5h11v11h-11z M8 5v6 M5 8h6"/>)")},
    {IconId::OutlineCollapse, KALVEX_LINES(R"(<path d="M2.5 2.5h11v11h-11z M5 8h6"/>)")},
    {IconId::Variables,
     KALVEX_LINES(R"(<path d="M1.5 2.5h13v11h-13z M1.5 6h13 M1.5 9.7h13 M6 2.5v11"/>)")},
    {IconId::Log,
     KALVEX_LINES(
         R"(<path d="M5.5 3.5h9 M5.5 8h9 M5.5 12.5h9"/>)") R"(<circle cx="2.5" cy="3.5" r="1.3" fill="#D83030"/>)"
                                                           R"(<circle cx="2.5" cy="8" r="1.3" fill="#2F6FD0"/>)"
                                                           R"(<circle cx="2.5" cy="12.5" r="1.3" fill="#2E9E3E"/>)"},
    {IconId::Font, KALVEX_LINES(R"(<path d="M2.5 13.5l4.5-11h2l4.5 11 M4.3 9.5h7.4"/>)")},
    {IconId::ZoomIn, KALVEX_LINES(KALVEX_GLASS R"(<path d="M6.5 4.5v4 M4.5 6.5h4"/>)")},
    {IconId::ZoomOut, KALVEX_LINES(KALVEX_GLASS R"(<path d="M4.5 6.5h4"/>)")},
    {IconId::Start, R"(<path d="M3.5 1.5l10 6.5-10 6.5z" fill="#2E9E3E"/>)"},
    {IconId::Pause, R"(<path d="M3 2h3.5v12h-3.5z M9.5 2h3.5v12h-3.5z" fill="#2F6FD0"/>)"},
    {IconId::Step, R"(<path d="M2 2h2.5v12h-2.5z" fill="#2F6FD0"/>)"
                   R"(<path d="M6.5 2l8 6-8 6z" fill="#2E9E3E"/>)"},
    {IconId::Reset, R"(<path d="M2.5 2.5h11v11h-11z" fill="#D83030"/>)"},
    {IconId::ToggleBreakpoint, KALVEX_DISC},
    {IconId::DeleteBreakpoints,
     KALVEX_DISC R"(<path d="M2 2l12 12 M14 2l-12 12" stroke="#E0A0A0" stroke-width="1.6"/>)"},
    {IconId::InsertVariables,
     KALVEX_LINES(
         R"(<path d="M1.5 1.5h7v13h-7z M1.5 5.5h7 M1.5 9.5h7"/>)") R"(<path d="M10.5 8h4.5 M12.7 5.7v4.6" stroke="#2E9E3E" stroke-width="1.8"/>)"},
    {IconId::ForgetVariables,
     KALVEX_LINES(
         R"(<path d="M1.5 1.5h7v13h-7z M1.5 5.5h7 M1.5 9.5h7"/>)") R"(<path d="M10.5 6l4 4 M14.5 6l-4 4" stroke="#D83030" stroke-width="1.6"/>)"},
    {IconId::TakeSession,
     KALVEX_LINES(
         R"(<circle cx="5" cy="4" r="2.5"/><path d="M1.5 14v-4.5h7v4.5 M10 8h5 M12.5 5.5l2.5 2.5-2.5 2.5"/>)")},
    {IconId::ClearLog,
     KALVEX_LINES(
         R"(<path d="M1.5 3.5h13 M1.5 8h6 M1.5 12.5h6"/>)") R"(<path d="M9.5 8.5l5 5 M14.5 8.5l-5 5" stroke="#D83030" stroke-width="1.8"/>)"},
    {IconId::AutoScroll,
     KALVEX_LINES(
         R"(<path d="M1.5 3.5h13 M1.5 8h6 M1.5 12.5h6 M12 6.5v8 M9.5 12l2.5 2.5 2.5-2.5"/>)")},
    {IconId::Configuration,
     KALVEX_LINES(
         R"(<circle cx="8" cy="8" r="2.2"/><circle cx="8" cy="8" r="4.8"/>)"
         R"(<path d="M8 1v2 M8 13v2 M1 8h2 M13 8h2 M3 3l1.5 1.5 M11.5 11.5l1.5 1.5 M13 3l-1.5 1.5 M4.5 11.5l-1.5 1.5"/>)")},
    {IconId::Sources,
     KALVEX_LINES(
         R"(<path d="M2.5 3.5v9c0 2.7 11 2.7 11 0v-9c0-2.7-11-2.7-11 0c0 2.7 11 2.7 11 0 M2.5 8c0 2.7 11 2.7 11 0"/>)")},
    {IconId::RenameVariables,
     KALVEX_LINES(R"(<path d="M1.5 3h6v4h-6z M8.5 9h6v4h-6z M10 5h3v2.5 M6 11h-3v-2.5"/>)")},
    {IconId::LogIn,
     KALVEX_LINES(R"(<path d="M7 1.5h7.5v13h-7.5 M1.5 8h8 M7 5.5l2.5 2.5-2.5 2.5"/>)")},
    {IconId::LogOut,
     KALVEX_LINES(R"(<path d="M7 1.5h-5.5v13h5.5 M6.5 8h8 M12 5.5l2.5 2.5-2.5 2.5"/>)")},
    {IconId::Help,
     R"(<circle cx="8" cy="8" r="6.8" fill="#2F6FD0"/>)"
     R"(<path d="M5.8 6.2c0-3 4.4-3 4.4 0c0 1.8-2.2 1.8-2.2 3.6 M8 11.2v1.4" fill="none")"
     R"( stroke="#FFFFFF" stroke-width="1.5"/>)"},
};

#undef KALVEX_LINES
#undef KALVEX_SCRIPT
#undef KALVEX_FLAG
#undef KALVEX_DISC
#undef KALVEX_GLASS
#undef KALVEX_PROGRAM

}  // namespace

std::span<const IconRow> IconTable() {
    return kRows;
}

}  // namespace kalvex::window
