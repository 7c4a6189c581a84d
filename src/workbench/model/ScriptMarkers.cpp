#include "workbench/model/ScriptMarkers.h"

#include <algorithm>

namespace kalvex::workbench {

bool ScriptMarkers::Toggle(int line, Marker marker) {
    ++m_revision;
    if (std::erase(m_entries, Entry{line, marker}) != 0) return false;
    m_entries.push_back({line, marker});
    return true;
}

bool ScriptMarkers::Has(int line, Marker marker) const {
    return std::ranges::find(m_entries, Entry{line, marker}) != m_entries.end();
}

bool ScriptMarkers::HasAny(Marker marker) const {
    return std::ranges::find(m_entries, marker, &Entry::marker) != m_entries.end();
}

void ScriptMarkers::DeleteAllMarkers(unsigned markers) {
    if (std::erase_if(m_entries, [markers](const Entry& entry) {
            return (entry.marker & markers) != 0;
        }) != 0) {
        ++m_revision;
    }
}

std::vector<int> ScriptMarkers::LinesOf(Marker marker) const {
    std::vector<int> lines;
    for (const Entry& entry : m_entries) {
        if (entry.marker == marker) lines.push_back(entry.line);
    }
    return lines;
}

void ScriptMarkers::SetBreakpoint(int line, bool set) {
    if (Has(line, MarkerBreakpoint) == set) return;
    const bool isSet = Toggle(line, MarkerBreakpoint);
    if (Has(line, MarkerBreakpointColour) != isSet) Toggle(line, MarkerBreakpointColour);
}

void ScriptMarkers::LinesInserted(int line, int count) {
    for (Entry& entry : m_entries) {
        if (entry.line < line) continue;
        entry.line += count;
        ++m_revision;
    }
}

void ScriptMarkers::LinesDeleted(int line, int count) {
    const int behind = line + count;
    if (std::erase_if(m_entries, [line, behind](const Entry& entry) {
            return entry.line >= line && entry.line < behind;
        }) != 0) {
        ++m_revision;
    }
    for (Entry& entry : m_entries) {
        if (entry.line < behind) continue;
        entry.line -= count;
        ++m_revision;
    }
}

}  // namespace kalvex::workbench
