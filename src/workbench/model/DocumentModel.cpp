#include "workbench/model/DocumentModel.h"

namespace kalvex::workbench {

void DocumentModel::SetLineMarker(int line, bool set) {
    if (m_markers.Has(line, MarkerCurrentLine) != set) m_markers.Toggle(line, MarkerCurrentLine);
}

void DocumentModel::ClearAllMarkers() {
    m_markers.DeleteAllMarkers(MarkerBreakpoint | MarkerBreakpointColour | MarkerCurrentLine);
}

bool DocumentModel::HasBreakpoint(int line) const {
    return m_markers.Has(line, MarkerBreakpoint);
}

}  // namespace kalvex::workbench
