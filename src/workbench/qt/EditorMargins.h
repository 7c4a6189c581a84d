// The margins and the marks of the editor by number. Of the marks of a line the highest is on top.
#pragma once

namespace kalvex::window {

enum EditorMargin : int { MarginNumbers, MarginSymbols, MarginOutline };

enum EditorMark : int {
    MarkBreakpointLine,  // these two colour the line
    MarkRunLine,
    MarkBookmark,
    MarkError,
    MarkBreakpoint,
    MarkCurrentLine,
};

inline constexpr int kBlockIndicator = 8;
inline constexpr int kOutlineMarginWidth = 20;

}  // namespace kalvex::window
