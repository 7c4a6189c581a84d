#include "workbench/model/ScriptMarkers.h"

#include <algorithm>

namespace kalvex::workbench {

bool ScriptMarkers::Toggle(int line, Marker marker) {
    if (std::erase(m_entries, Entry{line, marker}) != 0) return false;
    m_entries.push_back({line, marker});
    return true;
}

bool ScriptMarkers::Has(int line, Marker marker) const {
    return std::ranges::find(m_entries, Entry{line, marker}) != m_entries.end();
}

void ScriptMarkers::DeleteAllMarkers(unsigned markers) {
    std::erase_if(m_entries,
                  [markers](const Entry& entry) { return (entry.marker & markers) != 0; });
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

}  // namespace kalvex::workbench
