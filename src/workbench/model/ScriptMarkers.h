// The marks beside the lines of a script: breakpoints with the colour of their line, the current
// line, bookmarks. They live as long as the open document. Main thread; lines count from 0.
#pragma once

#include <vector>

namespace kalvex::workbench {

enum Marker : unsigned {
    MarkerBookmark = 1,
    MarkerBreakpoint = 0x10000,
    MarkerBreakpointColour = 0x20000,
    MarkerCurrentLine = 0x80000,
};

class ScriptMarkers {
  public:
    // Whether the line has the mark afterwards.
    bool Toggle(int line, Marker marker);
    bool Has(int line, Marker marker) const;
    bool HasAny(Marker marker) const;
    // All marks of the kinds whose bits are set.
    void DeleteAllMarkers(unsigned markers);
    // In the order in which they were set.
    std::vector<int> LinesOf(Marker marker) const;

    // A breakpoint comes and goes with the colour of its line.
    void SetBreakpoint(int line, bool set);

    // The marks from `line` on move by `count`.
    void LinesInserted(int line, int count);
    // The marks of `count` lines go with them, those behind move up.
    void LinesDeleted(int line, int count);

    // Another one after each change.
    unsigned GetRevision() const { return m_revision; }

  private:
    struct Entry {
        int line;
        Marker marker;

        bool operator==(const Entry&) const = default;
    };

    std::vector<Entry> m_entries;
    unsigned m_revision = 0;
};

}  // namespace kalvex::workbench
