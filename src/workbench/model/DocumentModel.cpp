#include "workbench/model/DocumentModel.h"

namespace kalvex::workbench {

void DocumentModel::SetText(EditedText& text) {
    m_text = &text;
    text.SetMarkers(&m_markers);
}

void DocumentModel::Tell(DocumentNews news) const {
    if (m_listener) m_listener(news);
}

void DocumentModel::SelectLine(int line) {
    if (line == m_selectedLine) return;
    m_selectedLine = line;
    ++m_revision;
}

void DocumentModel::SetLineMarker(int line, bool set) {
    if (m_markers.Has(line, MarkerCurrentLine) == set) return;
    m_markers.Toggle(line, MarkerCurrentLine);
    Tell(DocumentNews::Marks);
}

void DocumentModel::SetReadOnly(bool readOnly) {
    m_readOnly = readOnly;
    ++m_revision;
    Tell(DocumentNews::ReadOnly);
}

void DocumentModel::RefreshTitle() {
    m_titleWanted = true;
    Tell(DocumentNews::Title);
}

void DocumentModel::ClearAllMarkers() {
    m_markers.DeleteAllMarkers(MarkerBreakpoint | MarkerBreakpointColour | MarkerCurrentLine);
    Tell(DocumentNews::Marks);
}

void DocumentModel::RefreshVariables() {
    m_variablesWanted = true;
    Tell(DocumentNews::Variables);
}

bool DocumentModel::HasBreakpoint(int line) const {
    return m_markers.Has(line, MarkerBreakpoint);
}

}  // namespace kalvex::workbench
